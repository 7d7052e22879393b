// A model file: the record store's tables, key allocator and format version.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>

#include "platform/types.h"
#include "zmflib/identity_mgr.h"
#include "zmflib/table_base.h"

// One open model file. Three backends exist: SQLite model files on disk (.zmf, the
// default), models on a PostgreSQL server (named by a "postgresql://" URI, see
// zmflib/pg_uri.h) and an in-memory store for tests.
//
// Saving is atomic: the first GetEmptyTable of a save opens one transaction and
// Commit ends it; closing the file without Commit abandons the save and leaves the
// previous content. Inserts made outside a save are written at once.
//
// Failures never throw: open functions return null and fill `error`; the other
// operations return 0/false/null and leave a message naming the file and the cause
// in GetLastError().
class CZmfFile {
  public:
    static constexpr DWORD kCurrentFormatVersion = 530;

    // Creates a new model file, or a new model on a server when `path` is a
    // "postgresql://" URI; fails if it already exists.
    static std::unique_ptr<CZmfFile> Create(const std::string& path,
                                            DWORD formatVersion = kCurrentFormatVersion,
                                            std::string* error = nullptr);
    // Opens an existing model file, or a model on a server when `path` is a
    // "postgresql://" URI. A file whose permission bits allow no writing is opened
    // read-only: it loads, and saving to it fails with a clear error.
    static std::unique_ptr<CZmfFile> Open(const std::string& path, std::string* error = nullptr);
    // A model file that lives in memory only.
    static std::unique_ptr<CZmfFile> OpenMemory(DWORD formatVersion = kCurrentFormatVersion);

    virtual ~CZmfFile();
    CZmfFile(const CZmfFile&) = delete;
    CZmfFile& operator=(const CZmfFile&) = delete;

    // The named table with the rows last saved; null for a name the catalogue does
    // not know. A table absent from the file reads as empty.
    CTableBase* GetTable(const char* name);
    // The named table with all rows removed, ready to be filled again; opens the
    // save transaction if none is open. Null on failure (unknown name, read-only).
    CTableBase* GetEmptyTable(const char* name);
    // Gives a table back and clears the caller's handle. The flag is accepted for
    // compatibility and has no effect here. Returns 0 for a null handle or a table
    // of another file, or when buffered rows could not be written.
    int ReleaseTable(CTableBase** table, int flag);
    // The name of the table with this table number; null if none.
    const char* GetTableName(int tableId) const;

    CIdentityMgr* GetIdentityMgr() { return &m_identity; }

    DWORD GetFormatVersion() const { return m_formatVersion; }
    // Changes the version recorded in the file; stored at the next Commit.
    void SetFormatVersion(DWORD version);

    // Ends the save: writes buffered rows, size estimates, key counters and the
    // format version, and commits. Once it returns true the save is durable.
    bool Commit();
    // Abandons the open save: what it wrote is dropped and the previous content
    // stays (the in-memory store, which has no transactions, keeps what it got).
    // Nothing happens when no save is open.
    void Rollback();
    bool IsSaving() const { return m_saving; }

    // Checks the whole store for damage (slow on large files). True when sound;
    // otherwise GetLastError() describes the damage.
    virtual bool Verify() { return true; }

    // A bulk read (a whole-model load) reads every table once from start to end: a
    // backend with a page cache may then keep only a small one, which it recycles
    // instead of growing, and returns to its usual size when the read ends.
    virtual void BeginBulkRead() {}
    virtual void EndBulkRead() {}

    const std::string& GetPath() const { return m_path; }
    bool IsReadOnly() const { return m_readOnly; }
    const std::string& GetLastError() const { return m_lastError; }
    bool HasError() const { return !m_lastError.empty(); }
    void ClearError() { m_lastError.clear(); }

    // Records a failure as "<path>: <cause>" (used by the backends). For a model on
    // a server the path is its URI without password.
    void SetError(const std::string& cause);

    // Progress of long loads and saves: the hook receives the number of rows read
    // or inserted so far through this file, every `every` rows. Null switches it off.
    using ProgressHook = std::function<void(std::uint64_t rows)>;
    void SetProgressHook(ProgressHook hook, std::uint64_t every = 65536);
    std::uint64_t GetRowsMoved() const { return m_rowsMoved; }
    // Counts one row read or inserted (called by tables and iterators).
    void CountRow() {
        ++m_rowsMoved;
        if (--m_untilProgress == 0) {
            m_untilProgress = m_progressEvery;
            if (m_progress) m_progress(m_rowsMoved);
        }
    }

  protected:
    CZmfFile(std::string path, DWORD formatVersion, bool readOnly);

    virtual std::unique_ptr<CTableBase> CreateTable(const SZmfTableDesc& desc) = 0;
    // Opens the save transaction.
    virtual bool BeginSave() = 0;
    // Persists the bookkeeping (versions, estimates, counters) and commits.
    virtual bool CommitSave() = 0;
    // Abandons an open save (Rollback; also called from the destructor of a backend).
    virtual void AbandonSave() {}

    // Tables created so far, by descriptor.
    template <class F>
    void ForEachTable(F&& f) {
        for (auto& [desc, table] : m_tables)
            f(*table);
    }
    bool IsVersionDirty() const { return m_versionDirty; }
    void ClearVersionDirty() { m_versionDirty = false; }
    void SetSaving(bool saving) { m_saving = saving; }

  private:
    CTableBase* TableFor(const char* name);

    std::string m_path;
    DWORD m_formatVersion;
    bool m_readOnly;
    bool m_versionDirty = false;
    bool m_saving = false;
    CIdentityMgr m_identity;
    std::unordered_map<const SZmfTableDesc*, std::unique_ptr<CTableBase>> m_tables;
    std::string m_lastError;
    ProgressHook m_progress;
    std::uint64_t m_progressEvery = 65536;
    std::uint64_t m_untilProgress = 65536;
    std::uint64_t m_rowsMoved = 0;
};
