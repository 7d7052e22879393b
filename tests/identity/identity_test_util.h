// Shared pieces of the identity tests: stored rows written straight into a model
// file, and a repository stand-in that logs what the identity manager asks of it.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "identity/guid_mgr.h"
#include "identity/object_types.h"
#include "support/row_values.h"
#include "zmflib.h"

namespace tessmeta::test {

// The meta-classes of object_types.def with ids 10, 11, ... in list order.
inline std::vector<std::pair<ULONG, std::string>> StandardDefinitions() {
    std::vector<std::pair<ULONG, std::string>> defs;
    for (size_t i = 0; i < kObjectTypeCount; ++i)
        defs.emplace_back(static_cast<ULONG>(10 + i), kObjectTypes[i].name);
    return defs;
}
// The id StandardDefinitions gives a meta-class.
inline int StandardTypeId(const char* name) {
    for (size_t i = 0; i < kObjectTypeCount; ++i)
        if (std::string(kObjectTypes[i].name) == name) return static_cast<int>(10 + i);
    return 0;
}

// A distinct 32-digit GUID text for a small number.
inline std::string GuidTextFor(unsigned n) {
    char text[40];
    std::snprintf(text, sizeof text, "%08x000040008000%012x", n, n * 7919u);
    return text;
}

inline CUniqueObjectBase StoredObject(ULONG id, LONG type, DWORD status = 1, const char* guid = "",
                                      const char* version = "") {
    CUniqueObjectBase row(id);
    row.Object_Type_ID = type;
    row.Repository_Status = status;
    row.Object_GUID = guid;
    row.Version_GUID = version;
    return row;
}

inline void StoreObjects(CZmfFile& file, const std::vector<CUniqueObjectBase>& rows) {
    ASSERT_TRUE(Store(file, "UniqueObject", rows));
}

inline void StoreDefinitions(CZmfFile& file,
                             const std::vector<std::pair<ULONG, std::string>>& defs) {
    std::vector<CObjectDefinitionBase> rows;
    for (const auto& [id, name] : defs) {
        rows.emplace_back(id);
        rows.back().Name = name.c_str();
    }
    ASSERT_TRUE(Store(file, "ObjectDefinition", rows));
}

inline CObject_DomainBase StoredDomain(ULONG id, const char* name, const char* type,
                                       const char* guid = "") {
    CObject_DomainBase row(id);
    row.Name = name;
    row.Domain_Type = type;
    row.GUID = guid;
    return row;
}

inline std::vector<CUniqueObjectBase> ReadObjects(CZmfFile& file) {
    return ReadAll<CUniqueObjectBase>(file, "UniqueObject");
}

// Both repository hooks, logging every call as "Name(args)". The answers of
// IsObjectModified / IsObjectDeleted come from the two id lists; onLinkDelete runs
// inside DeleteInterModelObjectLinkFKRow (to call back into the manager).
class CRepositoryStandIn final : public IRepositoryHooks, public IDelayedCheckoutHooks {
  public:
    std::vector<std::string> log;
    std::vector<ULONG> modified;
    std::vector<ULONG> deleted;
    std::function<void(ULONG)> onLinkDelete;

    void DeleteInterModelObjectLinkFKRow(ULONG objectId, int deleteObject) override {
        Log("Link", std::to_string(objectId) + "," + std::to_string(deleteObject));
        if (onLinkDelete) onLinkDelete(objectId);
    }
    void RemoveObjectModificationFKRow(ULONG objectId) override { Log("Mod", objectId); }
    int IsObjectModified(ULONG objectId) override {
        Log("Modified?", objectId);
        return std::count(modified.begin(), modified.end(), objectId) != 0;
    }
    int IsObjectDeleted(ULONG objectId) override {
        Log("Deleted?", objectId);
        return std::count(deleted.begin(), deleted.end(), objectId) != 0;
    }
    void DeleteFKRow(ULONG objectId) override { Log("Checkout", objectId); }

  private:
    void Log(const char* name, ULONG id) { Log(name, std::to_string(id)); }
    void Log(const char* name, const std::string& args) {
        log.push_back(std::string(name) + "(" + args + ")");
    }
};

// A list of object ids written as a braced list.
struct CIdList : CList<ULONG> {
    CIdList(std::initializer_list<ULONG> ids) {
        for (ULONG id : ids)
            AddTail(id);
    }
};

// The object GUID of `id`, empty when there is none.
inline CString ObjectGuid(CGuidMgr& guids, ULONG id) {
    CString text;
    guids.GetObjectGUID(id, text);
    return text;
}

// The manager over `file`, loaded as a file of `version` would be.
inline std::unique_ptr<CGuidMgr> LoadGuids(CZmfFile& file, ULONG version = 530, int keepGuidMap = 1,
                                           unsigned int hashSize = 0) {
    auto mgr = std::make_unique<CGuidMgr>(&file, keepGuidMap);
    EXPECT_EQ(mgr->Init(hashSize, version), 1);
    return mgr;
}

}  // namespace tessmeta::test
