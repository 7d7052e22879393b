// The row buffer every record-store row class derives from.
#pragma once

#include "platform/types.h"

// One row of a record-store table. Generated row classes (C<Table>Base) add the
// columns as public fields and override the key operations below.
//
// The virtual slots come in a fixed order: destructor, Hash, MatchKey, Copy,
// Compare, GetTechKey, SetTechKey, HasTechKey. Code that derives its own in-memory
// rows from a row class relies on that order staying put.
class CDbObjectBase {
  public:
    CDbObjectBase() = default;
    CDbObjectBase(const CDbObjectBase&) = default;
    CDbObjectBase& operator=(const CDbObjectBase&) = default;
    virtual ~CDbObjectBase();

    // Hash of the row's key.
    virtual unsigned int Hash() const = 0;
    // Non-zero when `other` (a row of the same table) has the same key.
    virtual int MatchKey(const CDbObjectBase* other) const = 0;
    // Copies every column (not the list slot) from a row of the same table.
    virtual void Copy(const CDbObjectBase* other) = 0;
    // <0, 0, >0 as this row's key orders before, with, after the other's.
    virtual int Compare(const CDbObjectBase* other) const = 0;
    // Tables whose key is not a technical key keep these defaults.
    virtual ULONG GetTechKey() const { return 0; }
    virtual void SetTechKey(ULONG /*key*/) {}
    virtual int HasTechKey() const { return 0; }

    // The pointer-sized slot ahead of the columns. The record store never touches
    // it; in-memory tables keep the row's position in their owning list here so
    // that a row can be unlinked without a search.
    POSITION GetListPosition() const { return m_listPosition; }
    void SetListPosition(POSITION position) { m_listPosition = position; }

  private:
    POSITION m_listPosition = nullptr;
};
