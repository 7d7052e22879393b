// The row buffer every record-store row class derives from, and the row list that
// in-memory tables keep their rows in.
#pragma once

#include <cassert>

#include "platform/types.h"

class CRowList;

// One row of a record-store table. Generated row classes (C<Table>Base) add the
// columns as public fields and override the key operations below.
//
// The virtual slots come in a fixed order: destructor, Hash, MatchKey, Copy,
// Compare, GetTechKey, SetTechKey, HasTechKey. Code that derives its own in-memory
// rows from a row class relies on that order staying put.
class CDbObjectBase {
  public:
    CDbObjectBase() = default;
    // A copy starts in no list; assignment keeps the target's own links.
    CDbObjectBase(const CDbObjectBase&) {}
    CDbObjectBase& operator=(const CDbObjectBase&) { return *this; }
    virtual ~CDbObjectBase();

    // Hash of the row's key.
    virtual unsigned int Hash() const = 0;
    // Non-zero when `other` (a row of the same table) has the same key.
    virtual int MatchKey(const CDbObjectBase* other) const = 0;
    // Copies every column (not the list links) from a row of the same table.
    virtual void Copy(const CDbObjectBase* other) = 0;
    // <0, 0, >0 as this row's key orders before, with, after the other's.
    virtual int Compare(const CDbObjectBase* other) const = 0;
    // Tables whose key is not a technical key keep these defaults.
    virtual ULONG GetTechKey() const { return 0; }
    virtual void SetTechKey(ULONG /*key*/) {}
    virtual int HasTechKey() const { return 0; }

    // The two pointer-sized links ahead of the columns belong to the CRowList the
    // row is in (an in-memory table's rows); the record store never touches them.
    // The list position slot is the link to the next row: the position a walk of
    // the list moves on to after this row.
    POSITION GetListPosition() const { return reinterpret_cast<POSITION>(m_pNextRow); }
    void SetListPosition(POSITION position) {
        m_pNextRow = reinterpret_cast<CDbObjectBase*>(position);
    }

  private:
    friend class CRowList;
    CDbObjectBase* m_pPrevRow = nullptr;
    CDbObjectBase* m_pNextRow = nullptr;
};

// A doubly linked list of rows whose links are members of the rows themselves, so
// that a row in a list costs no node of its own and leaves the list in constant
// time. A row is in at most one list at a time. The list never owns its rows: the
// table that holds it destroys them.
//
// POSITION is the opaque cursor of a walk: the row it stands on. GetNext returns
// that row and moves on to the next, so the row just returned may leave the list
// (or be destroyed) without ending the walk.
class CRowList {
  public:
    CRowList() = default;
    CRowList(const CRowList&) = delete;
    CRowList& operator=(const CRowList&) = delete;

    int GetCount() const { return m_nCount; }
    bool IsEmpty() const { return m_nCount == 0; }
    CDbObjectBase* GetHead() const { return m_pHead; }
    CDbObjectBase* GetTail() const { return m_pTail; }

    POSITION GetHeadPosition() const { return ToPosition(m_pHead); }
    CDbObjectBase* GetNext(POSITION& position) const {
        assert(position != nullptr);
        CDbObjectBase* row = reinterpret_cast<CDbObjectBase*>(position);
        position = ToPosition(row->m_pNextRow);
        return row;
    }

    // Links `row` (in no list) at the tail.
    void AddTail(CDbObjectBase* row) {
        row->m_pPrevRow = m_pTail;
        row->m_pNextRow = nullptr;
        (m_pTail ? m_pTail->m_pNextRow : m_pHead) = row;
        m_pTail = row;
        ++m_nCount;
    }

    // Whether `row`, which is in this list or in none, is linked.
    bool IsLinked(const CDbObjectBase* row) const {
        return row == m_pHead || row->m_pPrevRow != nullptr;
    }

    // Unlinks `row`, which must be in this list.
    void Remove(CDbObjectBase* row) {
        (row->m_pPrevRow ? row->m_pPrevRow->m_pNextRow : m_pHead) = row->m_pNextRow;
        (row->m_pNextRow ? row->m_pNextRow->m_pPrevRow : m_pTail) = row->m_pPrevRow;
        row->m_pPrevRow = row->m_pNextRow = nullptr;
        --m_nCount;
    }

    // Forgets every row (the rows keep stale links: destroy them first).
    void Clear() {
        m_pHead = m_pTail = nullptr;
        m_nCount = 0;
    }

  private:
    static POSITION ToPosition(CDbObjectBase* row) { return reinterpret_cast<POSITION>(row); }

    CDbObjectBase* m_pHead = nullptr;
    CDbObjectBase* m_pTail = nullptr;
    int m_nCount = 0;
};
