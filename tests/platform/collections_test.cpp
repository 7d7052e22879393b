#include "platform/collections.h"

#include <gtest/gtest.h>

#include <list>
#include <random>
#include <vector>

#include "platform/cstring.h"

namespace {

using IntList = CList<int, int>;

// Checks the order both ways, which exercises every next and previous link.
void ExpectOrder(const IntList& list, const std::vector<int>& expected) {
    std::vector<int> forward, backward;
    for (POSITION p = list.GetHeadPosition(); p;)
        forward.push_back(list.GetNext(p));
    for (POSITION p = list.GetTailPosition(); p;)
        backward.insert(backward.begin(), list.GetPrev(p));
    EXPECT_EQ(forward, expected);
    EXPECT_EQ(backward, expected);
    EXPECT_EQ(list.GetCount(), static_cast<int>(expected.size()));
}

TEST(CListTest, RandomEditsMatchStdList) {
    std::mt19937 rng(7);
    IntList list(4);
    std::list<int> model;
    std::vector<std::pair<POSITION, std::list<int>::iterator>> live;
    for (int step = 0; step < 5000; ++step) {
        const unsigned op = rng() % 4;
        const int value = static_cast<int>(rng() % 1000);
        if (op == 0 || live.empty()) {
            live.emplace_back(list.AddHead(value), model.insert(model.begin(), value));
        } else if (op == 1) {
            live.emplace_back(list.AddTail(value), model.insert(model.end(), value));
        } else if (op == 2) {
            const size_t i = rng() % live.size();
            live.emplace_back(list.InsertAfter(live[i].first, value),
                              model.insert(std::next(live[i].second), value));
        } else {
            const size_t i = rng() % live.size();
            list.RemoveAt(live[i].first);
            model.erase(live[i].second);
            live[i] = live.back();
            live.pop_back();
        }
    }
    ExpectOrder(list, std::vector<int>(model.begin(), model.end()));
}

TEST(CPtrArrayTest, GrowInsertRemove) {
    int x[6] = {};
    CPtrArray a;
    EXPECT_EQ(a.GetUpperBound(), -1);
    EXPECT_EQ(a.Add(&x[0]), 0);
    EXPECT_EQ(a.Add(&x[1]), 1);
    a.InsertAt(1, &x[2], 2);  // 0 2 2 1
    a.InsertAt(0, &x[3]);     // 3 0 2 2 1
    EXPECT_EQ(std::vector<void*>(a.GetData(), a.GetData() + a.GetSize()),
              (std::vector<void*>{&x[3], &x[0], &x[2], &x[2], &x[1]}));
    a.RemoveAt(1, 3);  // 3 1
    ASSERT_EQ(a.GetCount(), 2);
    EXPECT_EQ(a[1], &x[1]);

    // Inserting past the end, and growing after a shrink, leave null slots.
    a.InsertAt(4, &x[4]);
    ASSERT_EQ(a.GetSize(), 5);
    EXPECT_EQ(a[3], nullptr);
    EXPECT_EQ(a[4], &x[4]);
    a.ElementAt(2) = &x[5];
    a.SetSize(2);
    a.SetSize(4);
    EXPECT_EQ(a.GetAt(2), nullptr);

    for (int i = 0; i < 10000; ++i)
        a.Add(&x[i % 6]);
    EXPECT_EQ(a.GetUpperBound(), 10003);
    EXPECT_EQ(a[10003], &x[9999 % 6]);
    a.FreeExtra();
    EXPECT_EQ(a[10003], &x[9999 % 6]);
    a.RemoveAll();
    EXPECT_TRUE(a.IsEmpty());
    EXPECT_EQ(a.GetData(), nullptr);
}

}  // namespace
