// A model file: the record store's tables, key allocator and format version.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>

#include "platform/types.h"
#include "zmflib/identity_mgr.h"
#include "zmflib/table_base.h"

class CZmfReadLane;

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

    // Reading on a second thread: a whole-model load may read two disjoint groups of
    // tables at once. A read lane is a second connection to the same store; a
    // helper thread that enters it (CZmfReadLane::CEntry) opens its cursors and
    // counts through it and keeps its errors and row count there, while the
    // thread that owns the file goes on through the file's own connection. Null
    // when the backend has one connection only (the in-memory store, a server),
    // while a save is open, or when the store cannot be reached again (a file
    // replaced since it was opened).
    //
    // While a lane is open both threads only read, and each its own tables:
    // cursors and counts, no keyed or positional reads, no inserts or saves. The
    // rows a lane reads count in GetRowsMoved() in steps, as the owning thread
    // reaches its progress steps, and all of them once the lane closes; the
    // progress hook is called on the owning thread only. The owning thread closes
    // the lane (destroys it) once the helper has left it; the lane's error, if any,
    // then becomes the file's.
    std::unique_ptr<CZmfReadLane> OpenReadLane();

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
        if (m_lanesOpen.load(std::memory_order_relaxed) != 0 && CountOnLane()) return;
        CountRows(1);
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
    // A second connection for a read lane; the default has none.
    virtual std::unique_ptr<CZmfReadLane> DoOpenReadLane() { return nullptr; }
    // The lane the calling thread has entered, when it is one of this file's.
    CZmfReadLane* CurrentLane() const;

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
    friend class CZmfReadLane;

    CTableBase* TableFor(const char* name);
    bool CountOnLane();
    void CountRows(std::uint64_t rows) {
        if (rows < m_untilProgress) {
            m_rowsMoved += rows;
            m_untilProgress -= rows;
            return;
        }
        // A progress step: rows the lanes have handed over count from here.
        rows += m_laneRows.exchange(0, std::memory_order_relaxed);
        m_rowsMoved += rows;
        m_untilProgress = m_progressEvery - (rows - m_untilProgress) % m_progressEvery;
        if (m_progress) m_progress(m_rowsMoved);
    }

    std::string m_path;
    DWORD m_formatVersion;
    bool m_readOnly;
    bool m_versionDirty = false;
    bool m_saving = false;
    CIdentityMgr m_identity;
    std::unordered_map<const SZmfTableDesc*, std::unique_ptr<CTableBase>> m_tables;
    std::mutex m_tablesLock;  // m_tables, which a read lane's thread may look up
    std::atomic<int> m_lanesOpen{0};
    std::atomic<std::uint64_t> m_laneRows{0};  // read by lanes, not yet counted
    std::string m_lastError;
    ProgressHook m_progress;
    std::uint64_t m_progressEvery = 65536;
    std::uint64_t m_untilProgress = 65536;
    std::uint64_t m_rowsMoved = 0;
};

// A read lane of a file (see CZmfFile::OpenReadLane). Backends derive from it.
class CZmfReadLane {
  public:
    // Call on the file's own thread, after the helper thread has left the lane.
    virtual ~CZmfReadLane();
    CZmfReadLane(const CZmfReadLane&) = delete;
    CZmfReadLane& operator=(const CZmfReadLane&) = delete;

    // Reads of the calling thread go through the lane while an entry lives. A
    // thread enters one lane at a time.
    class CEntry {
      public:
        explicit CEntry(CZmfReadLane& lane);
        ~CEntry();
        CEntry(const CEntry&) = delete;
        CEntry& operator=(const CEntry&) = delete;
    };

  protected:
    explicit CZmfReadLane(CZmfFile& file);

  private:
    friend class CZmfFile;

    CZmfFile& m_file;  // not owned; outlives the lane
    std::uint64_t m_rows = 0;
    std::string m_error;  // the last failure of the lane's reads, as the file words it
};
