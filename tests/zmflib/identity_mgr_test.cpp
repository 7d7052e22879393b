// The key allocator.
#include <gtest/gtest.h>

#include <limits>

#include "zmflib.h"

TEST(IdentityMgr, CountersPerKindTheirChangesAndExhaustion) {
    CIdentityMgr keys;
    EXPECT_FALSE(keys.IsDirty());
    keys.SetKeyValue(4, 0);
    EXPECT_FALSE(keys.IsDirty());
    keys.AllocKeyValue(4);
    EXPECT_TRUE(keys.IsDirty());
    keys.ClearDirty();
    keys.SetKeyValue(9, 12);
    int seen = 0;
    keys.ForEachCounter([&](int kind, ULONG value) {
        ++seen;
        EXPECT_TRUE((kind == 4 && value == 1) || (kind == 9 && value == 12));
    });
    EXPECT_EQ(seen, 2);

    // Allocations stay above every declared key, per kind.
    EXPECT_EQ(keys.AllocKeyValue(10), 1u);
    EXPECT_EQ(keys.AllocKeyValue(10), 2u);
    EXPECT_EQ(keys.SetKeyValue(10, 7), 7u);
    EXPECT_EQ(keys.SetKeyValue(10, 3), 7u);  // a lower key never lowers the counter
    EXPECT_EQ(keys.AllocKeyValue(10), 8u);
    EXPECT_EQ(keys.AllocKeyValue(11), 1u);  // kinds are independent
    EXPECT_EQ(keys.GetKeyValue(10), 8u);
    EXPECT_EQ(keys.GetKeyValue(500), 0u);

    // Bad kinds and exhaustion give no key.
    EXPECT_EQ(keys.AllocKeyValue(-1), 0u);
    EXPECT_EQ(keys.SetKeyValue(-1, 5), 0u);
    EXPECT_EQ(keys.GetKeyValue(-1), 0u);
    const ULONG max = std::numeric_limits<ULONG>::max();
    keys.SetKeyValue(3, max - 1);
    EXPECT_EQ(keys.AllocKeyValue(3), max);
    EXPECT_EQ(keys.AllocKeyValue(3), 0u);  // never wraps to a key in use
}
