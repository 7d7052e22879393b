// Forward iterators over a record-store table, one typed class per table.
#pragma once

#include <memory>

#include "zmflib/rows.h"
#include "zmflib/table_base.h"

// Reads the rows of a table in stored order. The iterator keeps its own cursor, so
// several iterators over one table may be open at once.
class CIteratorBase {
  public:
    // A null table gives an iterator that yields nothing.
    explicit CIteratorBase(CTableBase* table);
    virtual ~CIteratorBase();
    CIteratorBase(const CIteratorBase&) = delete;
    CIteratorBase& operator=(const CIteratorBase&) = delete;

    // Copies the next row into `row` and returns non-zero, or returns 0 when no row
    // is left (or the store failed; the file's GetLastError() then says why).
    int GetNext(CDbObjectBase* row);
    // Texts of the rows read from now on may live in `texts` (CZmfCursor).
    void StoreTextsIn(CStringArena* texts);

  private:
    CTableBase* m_table;  // not owned; the file owns it
    std::unique_ptr<CZmfCursor> m_cursor;
};

#define ZMF_TABLE(Table, number, kind, keyMode, Key, COLUMNS)                    \
    class C##Table##Iterator : public CIteratorBase {                            \
      public:                                                                    \
        explicit C##Table##Iterator(CTableBase* table) : CIteratorBase(table) {} \
        int GetNext(C##Table##Base* row) { return CIteratorBase::GetNext(row); } \
    };
#include "zmflib/catalogue.def"
#undef ZMF_TABLE
