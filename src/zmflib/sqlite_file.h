// The SQLite backend: a model file is one SQLite database (.zmf).
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "zmflib/zmf_file.h"

struct sqlite3;
struct sqlite3_stmt;

// A .zmf model file. One SQL table per catalogue table (columns as in the
// catalogue, rows in insertion order), plus three small tables of the store's own:
// zmf_meta (format version), zmf_table_info (size estimates) and zmf_key_counter
// (the key allocator). docs/file-format.md describes the layout.
class CSqliteZmfFile final : public CZmfFile {
  public:
    static std::unique_ptr<CZmfFile> CreateFile(const std::string& path, DWORD formatVersion,
                                                std::string* error);
    static std::unique_ptr<CZmfFile> OpenFile(const std::string& path, std::string* error);

    ~CSqliteZmfFile() override;

    bool Verify() override;
    void BeginBulkRead() override;
    void EndBulkRead() override;

    // Backend internals, used by its tables.
    sqlite3* Db() const { return m_db; }
    // The connection the calling thread reads through: its read lane's, or Db().
    sqlite3* ReadDb() const;
    bool TableExists(const char* name) const { return m_existing.count(name) != 0; }
    bool EnsureTableExists(const SZmfTableDesc& desc);
    // Whether the stored table lacks an added column (catalogue.def), which then
    // reads as empty; AddLackingColumns adds every such column of the table.
    bool LacksColumn(const char* table, const char* column) const;
    bool AddLackingColumns(const SZmfTableDesc& desc);
    // Prepares `sql`; on failure records the error (with `what`) and returns null.
    sqlite3_stmt* Prepare(const std::string& sql, const char* what);
    // Prepares a read on ReadDb(): the statement is for the calling thread only.
    sqlite3_stmt* PrepareRead(const std::string& sql, const char* what);
    // Records the current error message of ReadDb(), prefixed by `what`.
    void SetDbError(const char* what);
    // Runs `sql`; false (and an error) on failure.
    bool Exec(const char* sql, const char* what);
    // Writes rows inserted outside a save at once, with the key counters they used.
    bool WriteThrough(CTableBase& table);

  protected:
    std::unique_ptr<CTableBase> CreateTable(const SZmfTableDesc& desc) override;
    bool BeginSave() override;
    bool CommitSave() override;
    void AbandonSave() override;
    std::unique_ptr<CZmfReadLane> DoOpenReadLane() override;

  private:
    CSqliteZmfFile(std::string path, DWORD formatVersion, bool readOnly, sqlite3* db);

    bool Configure();
    // Which file the path named when it was opened, to tell it again later.
    void RememberFileIdentity();
    bool IsStillTheFile() const;
    void UseSmallCache(bool small);
    bool CreateSchema();
    bool LoadBookkeeping();
    bool CheckTables();
    bool CheckLength();
    bool PersistBookkeeping();
    bool FlushAll();
    bool ReadSaveGeneration(long long& generation);
    bool StartWriting(const char* what);

    sqlite3* m_db;  // owned; closed with sqlite3_close_v2 so that late statements are safe
    std::unordered_set<std::string> m_existing;  // catalogue tables present in the file
    // Added columns that the stored tables lack, by table name.
    std::unordered_map<std::string, std::unordered_set<std::string>> m_lacking;
    // Saves of the file so far, as this connection last read or wrote it; see StartWriting.
    long long m_saveGeneration = 0;
    std::uint64_t m_device = 0;  // of the file at the path when opened
    std::uint64_t m_inode = 0;
};
