// CEnhTableBase: what every in-memory table has in common.
//
// A model's tables live in the record store (zmflib). At load each table copies the
// rows of its record-store table into row objects of its own, indexes them and gives
// the record-store table back; queries and edits then touch memory only; a save
// empties the record-store table and writes every row back. This class holds the
// parts that do not depend on the row type:
//
//   - the owning row list: every row object of the table, in insertion order (load
//     order, then later inserts at the tail). The table owns the rows; the list's
//     links are members of the rows (CRowList, db_object.h), so a row costs no list
//     node and removing one is constant time;
//   - the record-store handle: set while the table holds a record-store table (from
//     construction to the end of Init, and from a save until the owner releases it);
//   - the model file, replaced by the file each save writes to;
//   - a counter for tables that number their rows themselves.
//
// It also supplies the load loop, the plain and guarded saves, and write-through,
// so that each table states only its own columns and indexes. The typed pattern
// built on it is CEnhTable (enh_table.h).
//
// Guarded saves. A save that writes several record-store tables, or builds rows
// while saving, runs inside GuardedSave and inserts with ZMF_CHECKED_INSERT. A
// failed insert ends the save: the source line of the insert is traced as
// "Flush to zmflib Failure at line: <line>" and the save returns 0. Nothing is
// rolled back; rows written before the failure stay in the record-store table.
#pragma once

#include <algorithm>
#include <climits>
#include <cstdint>
#include <memory>
#include <utility>

#include "platform/cobject.h"
#include "platform/collections.h"
#include "platform/cstring.h"
#include "platform/node_pool.h"
#include "platform/types.h"
#include "zmflib/db_object.h"
#include "zmflib/iterators.h"
#include "zmflib/table_base.h"
#include "zmflib/zmf_file.h"

namespace tessmeta {

// Traces "Flush to zmflib Failure at line: <line>\n".
void TraceFlushFailure(int line);

// Runs `work` (a callable returning int) and returns its result. A failed
// ZMF_CHECKED_INSERT inside it ends the work early: the failure is traced and the
// result is 0. Other exceptions (out of memory) pass through.
template <class Work>
int GuardedSave(Work&& work) {
    try {
        return std::forward<Work>(work)();
    } catch (int line) {
        TraceFlushFailure(line);
        return 0;
    }
}

// Inserts `row`; a missing table or a failed insert throws `line` for GuardedSave.
inline void CheckedInsert(CTableBase* table, const CDbObjectBase* row, int line) {
    if (!table || !table->Insert(row)) throw line;
}

}  // namespace tessmeta

// Only inside GuardedSave: inserts `row` into `table`, or ends the save reporting the
// line of this statement.
#define ZMF_CHECKED_INSERT(table, row) ::tessmeta::CheckedInsert((table), (row), __LINE__)

// Destroys a row that is not (or no longer) in a table's row list: a row from the
// table's row pool goes back to the pool, a row in the table's text arena is only
// destroyed (the arena keeps its bytes), any other row is deleted. Rows made with
// std::make_unique convert to CRowPtr with a deleter that deletes.
struct CRowDeleter {
    CNodePool* pool = nullptr;
    bool inArena = false;

    CRowDeleter() = default;
    explicit CRowDeleter(CNodePool* rowPool) : pool(rowPool) {}
    template <class Row>
    CRowDeleter(std::default_delete<Row>) {}
    static CRowDeleter ForArenaRows() {
        CRowDeleter deleter;
        deleter.inArena = true;
        return deleter;
    }

    template <class Row>
    void operator()(Row* row) const {
        if (!pool && !inArena) {
            delete row;
            return;
        }
        row->~Row();
        if (pool) pool->Free(row);
    }
};
template <class Row>
using CRowPtr = std::unique_ptr<Row, CRowDeleter>;

class CEnhTableBase : public CObject {
  public:
    // `file` is the application's; the table never owns it.
    explicit CEnhTableBase(CZmfFile* file);
    // Destroys every row still in the row list.
    ~CEnhTableBase() override;

    // Does nothing here.
    virtual void Init() {}
    // Loads the table; `bucketCount` sizes its hash maps (0: the size the last save
    // recorded). Nothing to load here.
    virtual void Init(unsigned int /*bucketCount*/) {}

    // Advances the row-numbering counter (0 at first) and returns the new value;
    // 0 once the counter has reached the largest int (the keys are exhausted).
    int GetNextKey() { return m_nNextKey == INT_MAX ? 0 : ++m_nNextKey; }

    // The record-store table currently held, or null.
    operator CTableBase*() const { return m_pTable; }
    // For CZmfFile::ReleaseTable, which clears the handle through it.
    CTableBase** GetTablePtrAddr() { return &m_pTable; }

    // Reads the stored row with `row`'s key into `row` (CTableBase::Get on the
    // handle); 0 when absent or when no record-store table is held.
    int Get(CDbObjectBase* row);
    // Unlinks a row of this table from the row list and destroys it (a row from the
    // row pool goes back to the pool).
    void Remove(CDbObjectBase* row);

    // The row list, in order. A position is an opaque cursor; the row just returned
    // may be removed without ending the walk.
    int GetRowCount() const { return m_rows.GetCount(); }
    POSITION GetFirstRowPosition() const { return m_rows.GetHeadPosition(); }
    // The row at `position`; moves `position` on (null after the last row).
    CDbObjectBase* GetNextRow(POSITION& position) const { return m_rows.GetNext(position); }

    CZmfFile* GetFile() const { return m_pFile; }

  protected:
    // Also opens the named record-store table as the handle.
    CEnhTableBase(CZmfFile* file, const char* tableName);

    // Takes ownership of `row` (from the row pool or the heap) and appends it.
    void AddRow(CDbObjectBase* row) { m_rows.AddTail(row); }

    // An index filed on first use: when `pending` is set, clears it and hands every
    // listed row, in list order, to `file`. That makes the same entries in the same
    // order as filing each row as it entered the table.
    template <class Row, class File>
    void FileListedRows(bool& pending, File&& file) const {
        if (!pending) return;
        pending = false;
        for (POSITION pos = GetFirstRowPosition(); pos;)
            file(static_cast<Row*>(GetNextRow(pos)));
    }

    // Raises the row-numbering counter to `key` if it is below (for loaded rows of
    // tables that number their own rows).
    void RaiseNextKey(ULONG key) {
        // A key past the largest int (only a damaged file holds one) exhausts the
        // counter rather than wrapping it onto keys in use.
        const std::int64_t wanted = std::min<std::int64_t>(key, INT_MAX);
        if (wanted > m_nNextKey) m_nNextKey = static_cast<int>(wanted);
    }

    // The bucket count a load uses: `requested`, else the size figure of the held
    // record-store table; never 0. A large figure is checked against the rows the
    // table really holds, so a damaged figure cannot ask for gigabytes of buckets.
    UINT LoadBucketCount(unsigned int requested);
    // The same rule for a load that sizes its indexes after reading: taken before
    // the read, it gives the bucket count from the stored row count, which the
    // records read are (or a count, for an index filed while the load reads).
    struct SLoadSize {
        unsigned int requested = 0;
        LONG figure = 0;
        bool hasFigure = false;
        // Whether Buckets reads its argument.
        bool NeedsRows() const;
        UINT Buckets(ULONG storedRows) const;
    };
    SLoadSize LoadSize(unsigned int requested) const;

    // The load loop: reads every stored row into a fresh Row object and passes it to
    // `enter` (which takes ownership), then releases the record-store table.
    template <class Row, class Enter>
    void LoadRows(Enter&& enter);
    // The same with rows from the table's row pool: `enter` takes a CRowPtr<Row>,
    // which gives the row back to the pool if it is dropped; the texts read may live
    // in the table's text arena. Rows of a table that loads this way must leave it
    // only through Remove (or the table's end). Returns the number of records read:
    // after a full read, the count of the stored rows.
    template <class Row, class Enter>
    std::size_t LoadPooledRows(Enter&& enter);
    // The row count the held record-store table's last save wrote, 0 without one:
    // a hint for storage, never a count (reading it costs no query).
    std::size_t StoredRowFigure() const;
    // Storage for the texts of loaded rows (cstring.h): kept until the table goes,
    // after every row.
    CStringArena& TextArena();
    // An empty row in the table's row pool (every row of a table has one type), or
    // in its text arena for a table that keeps rows beside their texts.
    template <class Row>
    CRowPtr<Row> NewPooledRow();
    // From now on every new row goes to the text arena, right before the texts the
    // row's load or its owner stores next: a row and its text are then read from
    // one place in memory. The arena keeps a removed row's bytes until the table
    // goes, as it keeps its texts; for tables whose rows are seldom removed. Every
    // row of such a table must come from NewPooledRow or LoadPooledRows.
    void KeepRowsBesideTexts() { m_rowsBesideTexts = true; }
    // The load loop of tables that turn stored records into rows of another shape:
    // reads every stored row into one reused Record (its text fields keep their
    // storage from row to row) and passes it to `enter` by const reference, then
    // releases the record-store table. Returns the number of records read.
    template <class Record, class Enter>
    std::size_t LoadRecords(Enter&& enter);

    // Makes `file` the model file without touching its tables (a save that leaves
    // the stored table as it is still moves the table to the file saved to).
    void SetFile(CZmfFile* file) { m_pFile = file; }

    // Makes `file` the model file and holds its emptied table `tableName` with the
    // size estimate given. Returns the handle; null on failure.
    CTableBase* BeginSave(CZmfFile* file, const char* tableName, LONG sizeEstimate);
    // The plain save: every row, in list order, into the emptied table. Returns the
    // result of the last insert (1 when there are no rows); a failed insert does
    // not stop the loop. 0 when the table cannot be emptied. The handle is kept.
    int SaveRows(CZmfFile* file, const char* tableName);
    // The same inside GuardedSave: the first failed insert ends it with result 0.
    int SaveRowsGuarded(CZmfFile* file, const char* tableName);

    // Write-through: insert or update `row` in the record-store table at once (the
    // held handle, else the file's table `tableName`). The record store's result.
    int WriteThroughInsert(const CDbObjectBase* row, const char* tableName);
    int WriteThroughUpdate(const CDbObjectBase* row, const char* tableName);

  private:
    void ReleaseHandle();
    CTableBase* StorageTable(const char* tableName);
    void DestroyRow(CDbObjectBase* row);

    int m_nNextKey = 0;
    CTableBase* m_pTable = nullptr;  // not owned: the file owns its tables
    CRowList m_rows;                 // every row; the table owns them
    CZmfFile* m_pFile;               // not owned
    // Storage of loaded rows: a table's rows are many objects of one size, carved
    // from a few large blocks and freed with them when the table goes.
    std::unique_ptr<CNodePool> m_pRowPool;
    std::unique_ptr<CStringArena> m_pTextArena;
    bool m_rowsBesideTexts = false;
};

template <class Row, class Enter>
void CEnhTableBase::LoadRows(Enter&& enter) {
    CIteratorBase stored(m_pTable);
    auto row = std::make_unique<Row>();
    while (stored.GetNext(row.get())) {
        enter(std::move(row));
        row = std::make_unique<Row>();
    }
    row.reset();  // the spare row the last, failed read went into
    ReleaseHandle();
}

template <class Row>
CRowPtr<Row> CEnhTableBase::NewPooledRow() {
    if (m_rowsBesideTexts) {
        // Should the constructor throw, the arena keeps the bytes, as it keeps a
        // removed row's.
        void* storage = TextArena().Allocate(sizeof(Row), alignof(Row));
        return CRowPtr<Row>(::new (storage) Row(), CRowDeleter::ForArenaRows());
    }
    // The first block holds 64 rows; each further one twice as many (node_pool.h).
    if (!m_pRowPool) {
        m_pRowPool = std::make_unique<CNodePool>(sizeof(Row), 64);
        m_pRowPool->ExpectNodes(StoredRowFigure());
    }
    void* storage = m_pRowPool->Alloc();
    try {
        return CRowPtr<Row>(::new (storage) Row(), CRowDeleter(m_pRowPool.get()));
    } catch (...) {
        m_pRowPool->Free(storage);
        throw;
    }
}

template <class Row, class Enter>
std::size_t CEnhTableBase::LoadPooledRows(Enter&& enter) {
    CIteratorBase stored(m_pTable);
    // Pooled rows leave only through Remove or the table's end, and the arena
    // outlives them both: their texts need no heap block each.
    stored.StoreTextsIn(&TextArena());
    std::size_t read = 0;
    for (;; ++read) {
        CRowPtr<Row> row = NewPooledRow<Row>();
        if (!stored.GetNext(row.get())) break;  // the spare row goes back to the pool
        enter(std::move(row));
    }
    ReleaseHandle();
    return read;
}

template <class Record, class Enter>
std::size_t CEnhTableBase::LoadRecords(Enter&& enter) {
    CIteratorBase stored(m_pTable);
    Record record;
    std::size_t read = 0;
    for (; stored.GetNext(&record); ++read)
        enter(static_cast<const Record&>(record));
    ReleaseHandle();
    return read;
}
