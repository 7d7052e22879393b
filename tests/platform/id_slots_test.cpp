#include "platform/id_slots.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <vector>

namespace {

struct SRow {
    ULONG id;
};

// Random adds and removals against a plain map (the authority the slots mirror):
// after every step each id, dense or far beyond the rows, reads as the map answers,
// and the slots never cover more than twice the rows and a few thousand.
TEST(IdSlots, MirrorTheMapThroughAddsRemovalsAndSparseIds) {
    struct SCase {
        ULONG idRange;    // ids drawn from [0, idRange)
        int sparseEvery;  // one id in this many far beyond the rows (0: none)
    };
    for (const SCase c : {SCase{50, 0}, SCase{3000, 0}, SCase{3000, 7}, SCase{20000, 3}}) {
        std::mt19937 random(c.idRange + c.sparseEvery);
        std::vector<SRow> rows(4000);
        std::map<ULONG, SRow*> map;
        std::size_t rowCount = 0;
        CIdSlots<SRow> slots;
        auto mapFind = [&](ULONG id) {
            auto it = map.find(id);
            return it == map.end() ? nullptr : it->second;
        };
        for (std::size_t step = 0; step < rows.size(); ++step) {
            ULONG id = random() % c.idRange;
            if (c.sparseEvery && step % c.sparseEvery == 0) id += 1'000'000;
            if (random() % 4 == 0) {
                map.erase(id);
                slots.Set(id, nullptr, rowCount, mapFind);
            } else {
                rows[step].id = id;
                map[id] = &rows[step];  // the row added last answers
                ++rowCount;
                slots.Set(id, &rows[step], rowCount, mapFind);
            }
            ASSERT_LE(slots.GetCoveredCount(), 2 * rowCount + 4096);
        }
        for (ULONG id = 0; id < c.idRange; ++id) {
            ASSERT_EQ(slots.Find(id, mapFind), mapFind(id)) << id;
            ASSERT_EQ(slots.Find(id + 1'000'000, mapFind), mapFind(id + 1'000'000)) << id;
        }
        EXPECT_EQ(slots.MayBeBeyond(), c.sparseEvery != 0);
    }
}

}  // namespace
