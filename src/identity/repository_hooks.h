// What the identity manager asks of the repository tables.
//
// Deleting a unique object must also remove what the repository bookkeeping holds
// for it, and the save that drops unreferenced objects must not drop one the
// repository still tracks. The repository manager and the delayed check-out table
// implement these interfaces (the methods carry their own names), so that
// CGuidMgr::SetRepoTableMgr(repoTableManager) and SetEnhDelayedCheckOutTable(table)
// take them as they are. Both are borrowed; CGuidMgr works without them.
//
// Calls may come back into CGuidMgr: removing an object's last inter-model link
// deletes the relationship's own unique object through CGuidMgr::DeleteObject.
#pragma once

#include "platform/types.h"

class IRepositoryHooks {
  public:
    // Removes the object's inter-model link; when that was the relationship's last
    // link, the relationship goes too (and its object when deleteObject is 1).
    virtual void DeleteInterModelObjectLinkFKRow(ULONG objectId, int deleteObject) = 0;
    // Unlinks the object's modification row, if it has one.
    virtual void RemoveObjectModificationFKRow(ULONG objectId) = 0;
    // 1 when the object has a modification row of kind "modified" / "deleted".
    virtual int IsObjectModified(ULONG objectId) = 0;
    virtual int IsObjectDeleted(ULONG objectId) = 0;

  protected:
    ~IRepositoryHooks() = default;
};

class IDelayedCheckoutHooks {
  public:
    // Removes the object's pending check-out request, if any.
    virtual void DeleteFKRow(ULONG objectId) = 0;

  protected:
    ~IDelayedCheckoutHooks() = default;
};
