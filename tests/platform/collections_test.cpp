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

}  // namespace
