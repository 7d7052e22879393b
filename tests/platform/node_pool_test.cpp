#include "platform/node_pool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

namespace {

struct SNode {
    std::uint64_t words[5];  // 40 bytes: 52,000 of them fill two-megabyte blocks
};

// Random allocations and frees against a list of live nodes: every live node keeps
// its contents, is aligned and owned, and a freed node is the next one handed out.
TEST(CNodePoolTest, LiveNodesKeepTheirContentsAndFreedNodesComeBackFirst) {
    std::mt19937 rng(7);
    CNodePool pool(sizeof(SNode), 3);
    std::vector<SNode*> live;
    std::uint64_t stamp = 0;
    auto check = [&](const SNode* node) {
        ASSERT_EQ(reinterpret_cast<std::uintptr_t>(node) % alignof(SNode), 0u);
        ASSERT_TRUE(pool.Owns(node));
        for (std::uint64_t word : node->words)
            ASSERT_EQ(word, node->words[0]);
    };
    for (int step = 0; step < 200000; ++step) {
        if (live.empty() || rng() % 5 != 0) {
            auto* node = static_cast<SNode*>(pool.Alloc());
            ++stamp;
            for (std::uint64_t& word : node->words)
                word = stamp;
            live.push_back(node);
        } else {
            const std::size_t index = rng() % live.size();
            SNode* node = live[index];
            check(node);
            live[index] = live.back();
            live.pop_back();
            pool.Free(node);
            ASSERT_EQ(pool.Alloc(), node);  // reused at once...
            pool.Free(node);                // ...and given back again
        }
    }
    ASSERT_GT(live.size() * sizeof(SNode), 2 * CNodePool::kMaxBlockBytes);
    for (const SNode* node : live)
        check(node);
    SNode outside{};
    EXPECT_FALSE(pool.Owns(&outside));

    pool.Reset();
    EXPECT_FALSE(pool.Owns(live.front()));
    void* fresh = pool.Alloc();
    std::memset(fresh, 0xAB, sizeof(SNode));
    EXPECT_TRUE(pool.Owns(fresh));
}

// A pool told how many nodes come carves them from one block, in address order.
TEST(CNodePoolTest, ExpectedNodesComeFromOneBlock) {
    for (const std::size_t expected : {std::size_t{1000}, std::size_t{60000}}) {
        CNodePool pool(sizeof(SNode), 3);
        pool.ExpectNodes(expected);
        const std::size_t inOneBlock =
            std::min(expected, CNodePool::kMaxBlockBytes / sizeof(SNode) - 1);
        auto* first = static_cast<char*>(pool.Alloc());
        for (std::size_t i = 1; i < inOneBlock; ++i)
            ASSERT_EQ(pool.Alloc(), first + i * sizeof(SNode)) << expected << " " << i;
    }
}

TEST(CNodePoolTest, NodesSmallerThanALinkAndHugeNodesWork) {
    CNodePool tiny(1, 0);
    void* a = tiny.Alloc();
    void* b = tiny.Alloc();
    EXPECT_NE(a, b);
    EXPECT_TRUE(tiny.Owns(a) && tiny.Owns(b));

    CNodePool huge(CNodePool::kMaxBlockBytes, 1);  // larger than a block's room
    auto* node = static_cast<char*>(huge.Alloc());
    node[0] = node[CNodePool::kMaxBlockBytes - 1] = 1;
    EXPECT_TRUE(huge.Owns(node + CNodePool::kMaxBlockBytes - 1));
}

}  // namespace
