#include "foundation/balanced_tree.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>
#include <vector>

namespace {

void* P(intptr_t n) {
    return reinterpret_cast<void*>(n);
}

// Every result of the current walk, GetFirst's included.
std::vector<void*> Walk(CBalancedTree& tree, void* first) {
    std::vector<void*> out;
    for (void* p = first; p != nullptr; p = tree.GetNext())
        out.push_back(p);
    return out;
}

// Black height of the subtree, or -1 when two paths disagree; counts red nodes
// with a red child on the way.
int BlackHeight(const CBTreeNode* n, const CBTreeNode* z, int& redReds) {
    if (n == z) return 1;
    if (n->IsRed() && (n->GetLeft()->IsRed() || n->GetRight()->IsRed())) ++redReds;
    int l = BlackHeight(n->GetLeft(), z, redReds), r = BlackHeight(n->GetRight(), z, redReds);
    return l != r || l < 0 ? -1 : l + (n->IsRed() ? 0 : 1);
}

}  // namespace

static_assert(CBTreeNode::red == 1 && CBTreeNode::black == 2);

// Ascending 1..7, counted by hand: 3, 5 and 7 each land under a red parent on a
// straight right path: one split and one single rotation each.
// Final shape: 2B(1B, 4R(3B, 6B(5R, 7R))).
TEST(BalancedTree, AscendingStatisticsAndShape) {
    CBalancedTree t;
    t.Init();
    for (int k = 1; k <= 7; ++k)
        EXPECT_EQ(t.Insert(k, P(k)), 1);
    EXPECT_EQ(t.GetTotalNodes(), 7);
    EXPECT_EQ(t.GetTotalSplits(), 3);
    EXPECT_EQ(t.GetTotalRotates(), 3);
    CBTreeNode* root = t.GetHead()->GetRight();
    EXPECT_EQ(root->GetKey(), 2);
    EXPECT_TRUE(root->GetRight()->IsRed());
    EXPECT_EQ(root->GetRight()->GetRight()->GetKey(), 6);
    // GetFirst(4) visits head, 2, 4, 3 (left of the equal node), 6, 5.
    EXPECT_EQ(Walk(t, t.GetFirst(4)), std::vector<void*>{P(4)});
    EXPECT_EQ(t.GetTotalSearches(), 1);
    EXPECT_EQ(t.GetTotalHits(), 1);
    EXPECT_EQ(t.GetTotalSearchDepth(), 6);
}

// Ascending and all-equal input keep every red-black rule (other orders need
// not, see FirstRotationDecidedByGrandparent).
TEST(BalancedTree, SortedInputKeepsRedBlackRules) {
    for (bool equal : {false, true}) {
        CBalancedTree t;
        t.Init();
        for (int k = 0; k < 5000; ++k)
            t.Insert(equal ? 7 : k, P(k + 1));
        int redReds = 0;
        EXPECT_GT(BlackHeight(t.GetHead()->GetRight(), t.GetZ(), redReds), 0);
        EXPECT_EQ(redReds, 0);
    }
}

TEST(BalancedTree, MatchesMultimap) {
    std::mt19937_64 rng(20240611);
    // Long runs of equal keys, keys differing only above bit 31, keys around
    // zero and -1, and anything at all.
    auto key = [&]() -> int64_t {
        unsigned kind = rng() % 4;
        int64_t small = static_cast<int64_t>(rng() % 8);
        return kind == 0   ? small
               : kind == 1 ? small << 32 | 5
               : kind == 2 ? small - 5
                           : static_cast<int64_t>(rng());
    };
    for (int round = 0; round < 20; ++round) {
        CBalancedTree t;
        t.Init();
        std::multimap<int64_t, intptr_t> ref;
        LONG searches = 0, hits = 0;
        intptr_t next = 1;
        for (int op = 0; op < 3000; ++op) {
            int64_t k = key();
            auto [lo, hi] = ref.equal_range(k);
            unsigned what = rng() % 10;
            if (what < 5) {
                t.Insert(k, P(next));
                ref.emplace(k, next++);
            } else if (what < 7) {  // a present row half the time, else an absent one
                auto n = std::distance(lo, hi);
                intptr_t info = n && rng() % 2 ? std::next(lo, rng() % n)->second : next + 1;
                t.Delete(k, P(info));
                for (auto it = lo; it != hi; ++it)
                    if (it->second == info) {
                        ref.erase(it);
                        break;
                    }
            } else {
                std::vector<void*> want;
                for (auto it = lo; it != hi; ++it)
                    want.push_back(P(it->second));
                ++searches;
                hits += static_cast<LONG>(want.size());
                void* first = t.GetFirst(k);
                ASSERT_EQ(t.GetCount(), static_cast<int>(want.size()));
                ASSERT_EQ(Walk(t, first), want) << "key " << k;
            }
        }
        EXPECT_EQ(t.GetTotalSearches(), searches);
        EXPECT_EQ(t.GetTotalHits(), hits);
        t.GetFirst();
        EXPECT_EQ(t.GetCount(), next);  // head plus every node, deleted ones too
        EXPECT_EQ(t.GetZ()->GetRight(), t.GetZ());
    }
}
