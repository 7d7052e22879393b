// CGlobalIdMaps: the id-to-id maps a host application fills for one save.
//
// The host builds one of these, fills it through the getters and setters, and hands
// it to CGuidMgr::Save, which only reads it (and only for model files of version 510
// and below). Each map pairs the id of an object of one kind with another id; the
// type ids (and two usage ids) say which unique objects each map speaks for.
//
// The maps are the framework's CMap with its default integer hash (key >> 4, then
// modulo the bucket count), 17 buckets until the host sizes them, and node blocks of
// 10; a map allocates its bucket array at the first insertion. Hosts that iterate a
// map see that bucket order.
//
// Not polymorphic, not copyable. Nothing here is owned beyond the maps themselves:
// the name-space manager is borrowed.
#pragma once

#include "platform/cmap.h"
#include "platform/types.h"

class CNameSpaceMgr;

// clang-format off
// The thirteen maps, in member order: X(getter stem).
#define TESS_GLOBAL_ID_MAPS(X) \
    X(Model)                   \
    X(ViewColumn)              \
    X(ColumnUsage)             \
    X(FieldColumn)             \
    X(CheckConstraint)         \
    X(UserDatatype)            \
    X(ViewInstance)            \
    X(ViewComponent)           \
    X(Proc)                    \
    X(Domain)                  \
    X(Default)                 \
    X(Rule)                    \
    X(ViewRelationInstance)

// The fourteen ids, in member order: X(Set/Get stem).
#define TESS_GLOBAL_IDS(X)                    \
    X(UserDataTypeObjectTypeId)               \
    X(UserDataTypeUsageId)                    \
    X(ViewInstanceObjectTypeId)               \
    X(ViewComponentObjectTypeId)              \
    X(ViewColumnObjectTypeId)                 \
    X(ViewColumnUsageObjectTypeId)            \
    X(ViewFieldColumnObjectTypeId)            \
    X(ProcObjectTypeId)                       \
    X(CheckConstraintInstanceObjectTypeId)    \
    X(DomainObjectTypeId)                     \
    X(DefaultObjectTypeId)                    \
    X(RuleObjectTypeId)                       \
    X(ViewRelationInstanceObjectTypeId)       \
    X(ProcOwnerUsageId)
// clang-format on

class CGlobalIdMaps {
  public:
    using CIdMap = CMap<ULONG, ULONG, ULONG, ULONG>;

    CGlobalIdMaps() = default;
    // Empties every map.
    ~CGlobalIdMaps();
    CGlobalIdMaps(const CGlobalIdMaps&) = delete;
    CGlobalIdMaps& operator=(const CGlobalIdMaps&) = delete;

    void SetNameSpaceMgr(CNameSpaceMgr* nameSpace) { m_pNameSpaceMgr = nameSpace; }
    CNameSpaceMgr* GetNameSpaceMgr() const { return m_pNameSpaceMgr; }

    // Empties all thirteen maps, freeing their buckets and nodes; each keeps its
    // bucket count for the next insertion. Ids and the name-space pointer stay.
    void CleanGlobalIdMaps();

    // One getter per map and a setter and getter per id, in the order of the lists.
    // clang-format off
#define TESS_MAP_GETTER(Stem) CIdMap& Get##Stem##GlobalIdMap() { return m_map##Stem; }
    TESS_GLOBAL_ID_MAPS(TESS_MAP_GETTER)
#undef TESS_MAP_GETTER

#define TESS_ID_ACCESSORS(Stem)                \
    void Set##Stem(int id) { m_n##Stem = id; } \
    int Get##Stem() const { return m_n##Stem; }
    TESS_GLOBAL_IDS(TESS_ID_ACCESSORS)
#undef TESS_ID_ACCESSORS
    // clang-format on

  private:
    // clang-format off
#define TESS_MAP_MEMBER(Stem) CIdMap m_map##Stem{10};
    TESS_GLOBAL_ID_MAPS(TESS_MAP_MEMBER)
#undef TESS_MAP_MEMBER

#define TESS_ID_MEMBER(Stem) int m_n##Stem = 0;
    TESS_GLOBAL_IDS(TESS_ID_MEMBER)
#undef TESS_ID_MEMBER
    // clang-format on

    CNameSpaceMgr* m_pNameSpaceMgr = nullptr;  // not owned
};
