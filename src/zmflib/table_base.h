// A table of the record store, as handed out by CZmfFile.
#pragma once

#include <memory>
#include <vector>

#include "platform/types.h"
#include "zmflib/catalogue.h"

class CDbObjectBase;
class CStringArena;
class CZmfFile;

// A forward read position over a table's stored rows (used by the iterators).
class CZmfCursor {
  public:
    virtual ~CZmfCursor() = default;
    // Copies the next row into `row`: 1, or 0 at the end or on a store failure.
    virtual int Next(CDbObjectBase* row) = 0;
    // From now on the texts of the rows read may be stored in `texts` (which must
    // outlive those rows) rather than each in a heap block of its own. A store
    // that reads texts in place takes the hint; others may ignore it.
    void StoreTextsIn(CStringArena* texts) { m_texts = texts; }

  protected:
    CStringArena* m_texts = nullptr;  // not owned
};

// One stored table. The file owns its table objects; a handle stays valid until the
// file is closed, even after ReleaseTable. Rows passed in and out must be of the
// table's row class (C<Table>Base or a class derived from it).
//
// Rows are kept in insertion order and keys need not be unique: Get, Update and
// Delete act on the first stored row whose key matches.
class CTableBase {
  public:
    virtual ~CTableBase();
    CTableBase(const CTableBase&) = delete;
    CTableBase& operator=(const CTableBase&) = delete;

    const SZmfTableDesc& GetDesc() const { return m_desc; }
    const char* GetName() const { return m_desc.name; }
    CZmfFile* GetFile() const { return m_file; }

    // Adds a copy of the row at the end; non-zero on success.
    int Insert(const CDbObjectBase* row);
    // Replace / remove the first stored row with the row's key; non-zero on success.
    int Update(const CDbObjectBase* row);
    int Delete(const CDbObjectBase* row);
    // Copies the first stored row with the key set in `row` into `row`; 0 if absent.
    int Get(CDbObjectBase* row);

    // Positional walk in stored order; a null POSITION means no (more) rows.
    POSITION GetStartPosition();
    void GetNext(POSITION& pos, CDbObjectBase* row);

    ULONG GetCount();

    // The number of rows a save is about to insert. It is kept with the table and
    // read back at the next load to size in-memory hash maps. A table that was never
    // given one reports its row count, and at least 1.
    void SetSizeEstimate(LONG n);
    LONG GetSizeEstimate();

    // A new read cursor over the stored rows (the caller owns it).
    std::unique_ptr<CZmfCursor> OpenCursor();

    // Test support: make the Insert calls numbered in `calls` (1 = the next call
    // from now) fail with result 0. Replaces any earlier setting for this table.
    void FailInsertCalls(std::vector<ULONG> calls);

  protected:
    CTableBase(CZmfFile* file, const SZmfTableDesc& desc);

    virtual int DoInsert(const CDbObjectBase* row) = 0;
    virtual int DoUpdate(const CDbObjectBase* row) = 0;
    virtual int DoDelete(const CDbObjectBase* row) = 0;
    virtual int DoGet(CDbObjectBase* row) = 0;
    virtual POSITION DoGetStartPosition() = 0;
    virtual void DoGetNext(POSITION& pos, CDbObjectBase* row) = 0;
    virtual ULONG DoGetCount() = 0;
    virtual std::unique_ptr<CZmfCursor> DoOpenCursor() = 0;

  public:
    // Backend bookkeeping, used by CZmfFile.
    bool HasStoredSizeEstimate() const { return m_hasSizeEstimate; }
    bool IsSizeEstimateDirty() const { return m_sizeEstimateDirty; }
    void LoadSizeEstimate(LONG n) {
        m_sizeEstimate = n;
        m_hasSizeEstimate = true;
    }
    void ClearSizeEstimateDirty() { m_sizeEstimateDirty = false; }
    // Flushes buffered work to the store; false on failure (see the file's error).
    virtual bool Flush() { return true; }
    // Removes every stored row (the start of a save).
    virtual bool Clear() = 0;

  private:
    CZmfFile* m_file;  // not owned: the file owns this table
    const SZmfTableDesc& m_desc;
    LONG m_sizeEstimate = 0;
    bool m_hasSizeEstimate = false;
    bool m_sizeEstimateDirty = false;
    std::vector<ULONG> m_failCalls;  // sorted call numbers that must fail
    ULONG m_insertCalls = 0;         // Insert calls since FailInsertCalls
};
