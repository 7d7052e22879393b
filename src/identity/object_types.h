// The meta-classes the library classifies objects by (object_types.def), as data:
// an index per entry, its name and the sets it belongs to.
#pragma once

#include <array>
#include <cstddef>

namespace tessmeta {

// The classification sets, as bits of an entry's `sets`.
enum EObjectTypeSet : unsigned {
    kSetNone = 0,
    kSetDomainRoot = 1u << 0,              // objects of the type own an object domain
    kSetDiagram = 1u << 1,                 // objects belong to a diagram, not a dictionary
    kSetOriginalDictionary = 1u << 2,      // the first dictionary kinds
    kSetProgrammableDictionary = 1u << 3,  // dictionary kinds that hold code
    kSetInternal = 1u << 4,                // the library's own bookkeeping objects
};

#define TESS_SET_NONE ::tessmeta::kSetNone
#define TESS_SET_DOMAIN_ROOT ::tessmeta::kSetDomainRoot
#define TESS_SET_DIAGRAM ::tessmeta::kSetDiagram
#define TESS_SET_ORIGINAL_DICT ::tessmeta::kSetOriginalDictionary
#define TESS_SET_PROGRAMMABLE_DICT ::tessmeta::kSetProgrammableDictionary
#define TESS_SET_INTERNAL ::tessmeta::kSetInternal

// One index per entry of the list, named after its getter: kType_GetEntityObjectTypeId.
enum EObjectTypeIndex : std::size_t {
#define TESS_OBJECT_TYPE(getter, name, sets) kType_##getter,
#include "identity/object_types.def"
#undef TESS_OBJECT_TYPE
    kObjectTypeCount
};

struct SObjectTypeEntry {
    const char* name;  // the meta-class name looked up in "ObjectDefinition"
    unsigned sets;     // EObjectTypeSet bits
};

inline constexpr std::array<SObjectTypeEntry, kObjectTypeCount> kObjectTypes{{
#define TESS_OBJECT_TYPE(getter, name, sets) {name, static_cast<unsigned>(sets)},
#include "identity/object_types.def"
#undef TESS_OBJECT_TYPE
}};

constexpr std::size_t CountObjectTypesIn(unsigned set) {
    std::size_t n = 0;
    for (const auto& entry : kObjectTypes)
        n += (entry.sets & set) ? 1 : 0;
    return n;
}

static_assert(kObjectTypeCount == 74);
static_assert(CountObjectTypesIn(kSetDiagram) == 57);
static_assert(CountObjectTypesIn(kSetDomainRoot) == 2);
static_assert(CountObjectTypesIn(kSetOriginalDictionary) == 9);
static_assert(CountObjectTypesIn(kSetProgrammableDictionary) == 3);
static_assert(CountObjectTypesIn(kSetInternal) == 2);

// The type ids of one model, one per entry, with a getter each. Filled by
// CGuidMgr::InitObjectTypeIds; 0 until then and for names the model lacks.
class CObjectTypeIds {
  public:
    // Path Node is never looked up.
    int GetPathNodeObjectTypeId() const { return 0; }

    // clang-format off
#define TESS_OBJECT_TYPE(getter, name, sets) \
    int getter() const { return m_objectTypeIds[kType_##getter]; }
#include "identity/object_types.def"
#undef TESS_OBJECT_TYPE
    // clang-format on

  protected:
    std::array<int, kObjectTypeCount> m_objectTypeIds{};
};

}  // namespace tessmeta
