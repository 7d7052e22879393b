// Shared pieces of the identity tests: stored rows written straight into a model
// file, and a repository stand-in that logs what the identity manager asks of it.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "identity/guid_mgr.h"
#include "identity/object_types.h"
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

// Replaces the stored rows of table `name` and commits.
template <class Row>
void Store(CZmfFile& file, const char* name, const std::vector<Row>& rows) {
    CTableBase* table = file.GetEmptyTable(name);
    ASSERT_NE(table, nullptr);
    for (const Row& row : rows)
        ASSERT_NE(table->Insert(&row), 0);
    ASSERT_TRUE(file.Commit());
}

inline void StoreObjects(CZmfFile& file, const std::vector<CUniqueObjectBase>& rows) {
    Store(file, "UniqueObject", rows);
}

inline void StoreDefinitions(CZmfFile& file,
                             const std::vector<std::pair<ULONG, std::string>>& defs) {
    std::vector<CObjectDefinitionBase> rows;
    for (const auto& [id, name] : defs) {
        rows.emplace_back(id);
        rows.back().Name = name.c_str();
    }
    Store(file, "ObjectDefinition", rows);
}

inline CObject_DomainBase StoredDomain(ULONG id, const char* name, const char* type,
                                       const char* guid = "") {
    CObject_DomainBase row(id);
    row.Name = name;
    row.Domain_Type = type;
    row.GUID = guid;
    return row;
}

template <class Row>
std::vector<Row> ReadAll(CZmfFile& file, const char* name) {
    std::vector<Row> rows;
    CIteratorBase it(file.GetTable(name));
    Row row;
    while (it.GetNext(&row))
        rows.push_back(row);
    return rows;
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
        log.push_back("Link(" + std::to_string(objectId) + "," + std::to_string(deleteObject) +
                      ")");
        if (onLinkDelete) onLinkDelete(objectId);
    }
    void RemoveObjectModificationFKRow(ULONG objectId) override {
        log.push_back("Mod(" + std::to_string(objectId) + ")");
    }
    int IsObjectModified(ULONG objectId) override {
        log.push_back("Modified?(" + std::to_string(objectId) + ")");
        return Has(modified, objectId);
    }
    int IsObjectDeleted(ULONG objectId) override {
        log.push_back("Deleted?(" + std::to_string(objectId) + ")");
        return Has(deleted, objectId);
    }
    void DeleteFKRow(ULONG objectId) override {
        log.push_back("Checkout(" + std::to_string(objectId) + ")");
    }

  private:
    static int Has(const std::vector<ULONG>& ids, ULONG id) {
        for (ULONG x : ids)
            if (x == id) return 1;
        return 0;
    }
};

inline CList<ULONG>* Fill(CList<ULONG>& list, std::initializer_list<ULONG> ids) {
    for (ULONG id : ids)
        list.AddTail(id);
    return &list;
}

}  // namespace tessmeta::test
