// Ownership over many blocks: every node handed out is owned, the bytes around the
// blocks are not, and nothing is after a reset.
#include <gtest/gtest.h>

#include <vector>

#include "platform/node_pool.h"

TEST(NodePoolRanges, OwnsEveryNodeOfEveryBlockAndNothingElse) {
    CNodePool pool(48, 1);
    std::vector<char*> nodes;
    for (int i = 0; i < 100000; ++i)
        nodes.push_back(static_cast<char*>(pool.Alloc()));
    std::vector<char> heap(64);
    int local = 0;
    EXPECT_FALSE(pool.Owns(heap.data()) || pool.Owns(&local) || pool.Owns(nullptr));
    for (char* node : nodes)
        ASSERT_TRUE(pool.Owns(node) && pool.Owns(node + 47));
    pool.Reset();
    EXPECT_FALSE(pool.Owns(nodes.front()) || pool.Owns(nodes.back()));
}
