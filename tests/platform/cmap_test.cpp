#include "platform/cmap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <unordered_map>
#include <vector>

namespace {

using UlongMap = CMap<ULONG, ULONG, ULONG, ULONG>;

TEST(CMapTest, RandomOperationsMatchUnorderedMap) {
    std::mt19937 rng(12345);
    UlongMap map(3);
    std::unordered_map<ULONG, ULONG> model;
    UINT buckets = 17;
    for (int step = 0; step < 20000; ++step) {
        const ULONG key = rng() % 300 * (rng() % 2 ? 1u : 16u);
        const ULONG value = rng();
        const unsigned op = rng() % 1000;
        if (op < 300) {
            map.SetAt(key, value);
            model[key] = value;
        } else if (op < 400) {
            map[key] += value;
            model[key] += value;
        } else if (op < 700) {
            ASSERT_EQ(map.RemoveKey(key), model.erase(key) == 1 ? TRUE : FALSE);
        } else if (op < 997) {
            ULONG got = 0;
            ASSERT_EQ(map.Lookup(key, got), model.count(key) ? TRUE : FALSE);
            if (model.count(key)) {
                ASSERT_EQ(got, model[key]);
            }
        } else if (op < 999) {
            buckets = rng() % 40;
            map.InitHashTable(buckets, rng() % 2);
            model.clear();
            buckets = std::max(buckets, 1u);
        } else {
            map.RemoveAll();
            model.clear();
        }
        ASSERT_EQ(map.GetCount(), static_cast<int>(model.size()));
    }
    EXPECT_EQ(map.GetHashTableSize(), buckets);
    // Every entry once, in nondecreasing bucket order.
    std::unordered_map<ULONG, ULONG> seen;
    UINT lastBucket = 0;
    for (POSITION p = map.GetStartPosition(); p;) {
        ULONG k, v;
        map.GetNextAssoc(p, k, v);
        const UINT bucket = CMapHashKey(k) % buckets;
        EXPECT_GE(bucket, lastBucket);
        lastBucket = bucket;
        EXPECT_TRUE(seen.emplace(k, v).second);
    }
    EXPECT_EQ(seen, model);
}

}  // namespace

namespace {

struct SGrowingTraits {
    static constexpr bool kGrow = true;
    static UINT Hash(ULONG key) { return key; }
    static bool Equal(const ULONG& stored, ULONG key) { return stored == key; }
};

// A map that opts in doubles its buckets past two entries per bucket and keeps
// every entry reachable; one that does not keeps its size whatever it holds.
TEST(CMapGrowth, OptInMapsGrowOthersKeepTheirSize) {
    CMap<ULONG, ULONG, ULONG, ULONG, SGrowingTraits> growing;
    growing.InitHashTable(1);
    CMap<ULONG, ULONG, ULONG, ULONG> fixed;
    fixed.InitHashTable(1);
    ULONG& first = growing[1];
    first = 10;
    for (ULONG k = 2; k <= 1000; ++k) {
        growing[k] = k * 10;
        fixed[k] = k;
    }
    EXPECT_EQ(fixed.GetHashTableSize(), 1u);
    EXPECT_GE(growing.GetHashTableSize(), 255u);
    EXPECT_LE(growing.GetCount(), static_cast<int>(2 * growing.GetHashTableSize()));
    EXPECT_EQ(growing.GetHashTableSize() % 2, 1u);
    EXPECT_EQ(&first, &growing[1]);  // nodes do not move
    for (ULONG k = 1; k <= 1000; ++k) {
        ULONG value = 0;
        ASSERT_TRUE(growing.Lookup(k, value));
        EXPECT_EQ(value, k * 10);
    }
}

}  // namespace
