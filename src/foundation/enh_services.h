// The two services an in-memory table calls through: the shared name space, which
// holds every text of the model, and the identity of model objects.
//
// Tables receive them as borrowed pointers, either of which may be null; a table
// then makes no call of that kind (see enh_table.h). The name-space manager and the
// unique-object manager implement these interfaces; tests use stand-ins.
#pragma once

#include <string_view>

#include "platform/cstring.h"
#include "platform/types.h"

// Texts, interned once and referred to by string id; a usage records which object
// uses which string in which role (usage type).
class INameSpaceService {
  public:
    // The id of the usage type with this name, or 0 when there is none.
    virtual int GetStringUsageTypeId(const CString& name) = 0;

    // Interns `text` and records its use by `objectId` in the role `usageTypeId`.
    // Returns the string id; 0 for an empty text.
    virtual int AddString(const CString& text, int objectId, int usageTypeId) = 0;
    // Records (or moves) the usage of an existing string for (objectId, usageTypeId).
    virtual int AddOrUpdateString(int stringId, int objectId, int usageTypeId) = 0;
    // Interns `text` and makes it the string of (objectId, usageTypeId), replacing
    // the earlier one. Returns the string id.
    virtual int AddOrUpdateString(const CString& text, int objectId, int usageTypeId) = 0;
    // Removes the usage of (objectId, usageTypeId); the string itself stays.
    virtual int DeleteString(int objectId, int usageTypeId) = 0;

    // The text of a string id: empty for 0, an error text for an unknown id.
    virtual void GetStringFromNameSpace(CString& out, LONG id) = 0;
    // The same text as a view, valid until the string changes or the next call that
    // passes the same `scratch`; a service that keeps its texts returns a view of
    // its own copy and leaves `scratch` alone.
    virtual std::string_view GetStringView(LONG id, CString& scratch) {
        GetStringFromNameSpace(scratch, id);
        return scratch.View();
    }

  protected:
    // Tables never own a service, so they never delete one through this interface.
    ~INameSpaceService() = default;
};

// Unique model objects: every modelled row is one, created and deleted here.
class IObjectIdentityService {
  public:
    // The object type id of a meta-class name, or 0 when the name is unknown.
    virtual int GetObjectTypeId(const CString& name) = 0;
    // Creates a unique object and returns its id (never reused while the model is
    // open).
    virtual int GetNewUniqueId(int typeId, ULONG modelId, ULONG plexId1, ULONG plexId2) = 0;
    // Deletes the object; with reallyDelete 0 only objects never stored in the
    // repository go. Returns non-zero when done.
    virtual int DeleteObject(int id, int reallyDelete) = 0;

  protected:
    ~IObjectIdentityService() = default;
};
