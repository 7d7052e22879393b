// The PostgreSQL backend: models kept in a database on a server, many models per
// database, opened by several users at once.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "zmflib/pg_uri.h"
#include "zmflib/zmf_file.h"

typedef struct pg_conn PGconn;
typedef struct pg_result PGresult;

namespace zmf::pg {
class CPgTable;
class CPgCursor;
struct SResultDeleter {
    void operator()(PGresult* result) const;
};
using Result = std::unique_ptr<PGresult, SResultDeleter>;
}  // namespace zmf::pg

// A model in a PostgreSQL database, named by a URI (see zmflib/pg_uri.h). The
// database holds a registry of its models (zmf.models) and one schema per model
// whose tables are those of a .zmf file; docs/file-format.md describes the layout.
//
// Concurrency is optimistic: every model has a version, bumped by each save and
// each write-through change, and a generation, bumped by each save. A save checks
// that the model still has the version this file knows (nobody saved or changed it
// since this file opened or last saved it) and fails, naming the model, when it
// has not. Reads and write-through changes, which are row by row and shared at
// once, check the generation: the stored model must be the one this file loaded.
// Reads take a shared lock on the model (an advisory lock), saves and changes an
// exclusive one, so that a table is never read half-way through another user's
// save.
//
// A save is one transaction: tables are emptied with TRUNCATE and refilled with
// binary COPY (tables left empty are emptied with DELETE); Commit commits. Inserts, updates and
// deletes outside a save are written at once, each in a transaction of its own. Reads stream rows
// with COPY. A lost connection ends the current save or change with an error that says whether the
// previous model is intact; the next operation reconnects.
class CPgZmfFile final : public CZmfFile {
  public:
    // Creates the model (and the registry, in a database that has none yet); fails
    // if a model of that name exists.
    static std::unique_ptr<CZmfFile> CreateModel(const std::string& uri, DWORD formatVersion,
                                                 std::string* error);
    static std::unique_ptr<CZmfFile> OpenModel(const std::string& uri, std::string* error);

    ~CPgZmfFile() override;

    // Checks that every table of the model has the columns of the catalogue.
    bool Verify() override;

    const std::string& GetModelName() const { return m_location.model; }

    // ---- backend internals, used by its tables and cursors ----------------------
    PGconn* Conn() const { return m_conn; }
    const std::string& Schema() const { return m_schemaSql; }
    bool TableExists(const char* name) const { return m_existing.count(name) != 0; }
    bool EnsureTableExists(const SZmfTableDesc& desc);
    bool InChange() const { return m_txn == ETxn::Change; }
    bool ChangeBroken() const { return m_changeBroken; }

    // Runs `sql` (one or more statements); the last result when all succeeded,
    // otherwise null with the failure recorded under `what`.
    zmf::pg::Result Exec(const std::string& sql, const std::string& what);
    // Runs one statement with binary parameters; the result in `resultFormat`.
    zmf::pg::Result ExecParams(const std::string& sql, int count, const char* const* values,
                               const int* lengths, const int* formats, int resultFormat,
                               const std::string& what);
    // Records a failure of the server or the connection under `what`.
    void RecordFailure(const std::string& what, const PGresult* result);

    // Frees the connection for a new statement: a streaming cursor reads the rest
    // of its rows into memory, an open COPY into a table ends.
    bool Idle();
    // Starts reading: outside a save or change, a transaction with the model's
    // registry row share-locked and its version checked. EndRead ends it once no
    // cursor streams.
    bool BeginRead(const std::string& what);
    void EndRead();
    // A change outside a save: runs `change` in a transaction of its own, with the
    // version check and the bookkeeping. `change` returns 1 (done), 0 (nothing to
    // do: rolled back, no error) or -1 (failed).
    int WriteThrough(const std::string& what, const std::function<int()>& change);

    // Binary COPY into a table during a save.
    bool CopyingInto(const zmf::pg::CPgTable* table) const { return m_copyIn == table; }
    bool StartCopyIn(zmf::pg::CPgTable& table, bool freeze);
    bool EndCopyIn();
    // Empties the table before the next statement on it (TRUNCATE), or at the
    // commit when it got no rows (DELETE).
    void QueueTruncate(zmf::pg::CPgTable& table);
    bool FlushTruncate(zmf::pg::CPgTable& table);

    // Cursor bookkeeping: the cursor whose COPY occupies the connection.
    void SetStreaming(zmf::pg::CPgCursor* cursor) { m_streaming = cursor; }
    void AddCursor(zmf::pg::CPgCursor* cursor) { m_cursors.insert(cursor); }
    void RemoveCursor(zmf::pg::CPgCursor* cursor);

  protected:
    std::unique_ptr<CTableBase> CreateTable(const SZmfTableDesc& desc) override;
    bool BeginSave() override;
    bool CommitSave() override;
    void AbandonSave() override;

  private:
    enum class ETxn { None, Read, Change };

    explicit CPgZmfFile(zmf::SPgLocation location);

    bool Connect(std::string* error);
    bool Configure();
    bool EnsureConnected(const std::string& what);
    void OnConnectionLost();
    std::string Cause(const PGresult* result) const;
    void Fail(const std::string& message);
    void FailToStart(const std::string& what, const PGresult* result);

    bool CreateInServer(DWORD formatVersion);
    bool LoadFromServer();
    bool CheckTables(const std::string& what);
    bool LoadBookkeeping();

    bool BeginChange(const std::string& what, bool save);
    bool FinishChange(const std::string& what);
    void AbortChange();
    bool ResolveLostCommit(const std::string& what);
    bool EmptyRemainingTables();
    bool PersistBookkeeping(const std::string& what);
    bool BookkeepingDirty();
    template <class F>
    void ForEachPgTable(F&& f);

    zmf::SPgLocation m_location;
    PGconn* m_conn = nullptr;  // owned
    int m_backendPid = 0;
    std::int64_t m_modelId = 0;
    std::int64_t m_version = 0;     // the model's version as this file knows it
    std::int64_t m_generation = 0;  // ... and its generation (number of saves)
    std::int64_t m_newVersion = 0;  // what the open change will commit
    std::int64_t m_newGeneration = 0;
    bool m_changeIsSave = false;
    std::int64_t m_txid = 0;  // the open change's transaction id
    std::string m_schemaSql;  // the model's schema, quoted
    std::string m_schemaName;
    ETxn m_txn = ETxn::None;
    bool m_changeBroken = false;
    std::unordered_set<std::string> m_existing;  // catalogue tables present on the server
    std::vector<std::string> m_createdInTxn;     // ... created by the open change
    std::vector<zmf::pg::CPgTable*> m_truncates;
    zmf::pg::CPgTable* m_copyIn = nullptr;              // the table whose COPY FROM is open
    zmf::pg::CPgCursor* m_streaming = nullptr;          // the cursor whose COPY TO is open
    std::unordered_set<zmf::pg::CPgCursor*> m_cursors;  // not owned: live cursors
};
