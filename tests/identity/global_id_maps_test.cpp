#include "identity/global_id_maps.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace {

using IdGetter = int (CGlobalIdMaps::*)() const;
using IdSetter = void (CGlobalIdMaps::*)(int);
using MapGetter = CGlobalIdMaps::CIdMap& (CGlobalIdMaps::*)();

#define ID_ACCESSORS(Stem) \
    std::pair<IdSetter, IdGetter>{&CGlobalIdMaps::Set##Stem, &CGlobalIdMaps::Get##Stem},
const std::vector<std::pair<IdSetter, IdGetter>> kIds = {TESS_GLOBAL_IDS(ID_ACCESSORS)};
#undef ID_ACCESSORS
#define MAP_GETTER(Stem) &CGlobalIdMaps::Get##Stem##GlobalIdMap,
const std::vector<MapGetter> kMaps = {TESS_GLOBAL_ID_MAPS(MAP_GETTER)};
#undef MAP_GETTER

TEST(GlobalIdMaps, FreshIdsMapsAndCleaning) {
    ASSERT_EQ(kIds.size(), 14u);
    ASSERT_EQ(kMaps.size(), 13u);
    CGlobalIdMaps maps;
    for (const auto& [set, get] : kIds)
        EXPECT_EQ((maps.*get)(), 0);
    for (MapGetter get : kMaps) {
        EXPECT_TRUE((maps.*get)().IsEmpty());
        EXPECT_EQ((maps.*get)().GetHashTableSize(), 17u);
        EXPECT_EQ((maps.*get)().GetStartPosition(), nullptr);  // no buckets yet
    }
    EXPECT_EQ(maps.GetNameSpaceMgr(), nullptr);
    maps.CleanGlobalIdMaps();  // harmless on a fresh object
    EXPECT_TRUE(maps.GetModelGlobalIdMap().IsEmpty());

    // Each id and map is its own: fill them all with distinct values.
    for (size_t i = 0; i < kIds.size(); ++i)
        (maps.*kIds[i].first)(static_cast<int>(100 + i));
    for (size_t i = 0; i < kMaps.size(); ++i) {
        (maps.*kMaps[i])().SetAt(static_cast<ULONG>(i + 1), static_cast<ULONG>(1000 + i));
        (maps.*kMaps[i])().SetAt(static_cast<ULONG>(i + 1), static_cast<ULONG>(2000 + i));
    }
    auto* nameSpace = reinterpret_cast<CNameSpaceMgr*>(0x1000);
    maps.SetNameSpaceMgr(nameSpace);
    for (size_t i = 0; i < kIds.size(); ++i)
        EXPECT_EQ((maps.*kIds[i].second)(), static_cast<int>(100 + i));
    for (size_t i = 0; i < kMaps.size(); ++i) {
        ULONG value = 0;
        EXPECT_EQ((maps.*kMaps[i])().GetCount(), 1);
        EXPECT_TRUE((maps.*kMaps[i])().Lookup(static_cast<ULONG>(i + 1), value));
        EXPECT_EQ(value, 2000 + i);  // SetAt replaced the value
    }

    maps.GetDomainGlobalIdMap().InitHashTable(5, TRUE);
    maps.GetDomainGlobalIdMap().SetAt(9, 9);
    maps.CleanGlobalIdMaps();
    for (MapGetter get : kMaps)
        EXPECT_TRUE((maps.*get)().IsEmpty());
    EXPECT_EQ(maps.GetDomainGlobalIdMap().GetHashTableSize(), 5u);  // kept for next time
    for (size_t i = 0; i < kIds.size(); ++i)
        EXPECT_EQ((maps.*kIds[i].second)(), static_cast<int>(100 + i));
    EXPECT_EQ(maps.GetNameSpaceMgr(), nameSpace);
}

}  // namespace
