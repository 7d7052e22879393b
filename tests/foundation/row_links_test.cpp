// The structures whose links live in the rows, against plain models: CRowList
// against std::list, CIntrusiveMap against a CMap of the same traits (bucket
// counts and walk order) holding row pointers.
#include <gtest/gtest.h>

#include <algorithm>
#include <list>
#include <random>
#include <vector>

#include "platform/cmap.h"
#include "platform/intrusive_map.h"
#include "zmflib/db_object.h"

namespace {

struct TRow final : CDbObjectBase {
    ULONG key = 0;
    CMapLink link;

    unsigned int Hash() const override { return key; }
    int MatchKey(const CDbObjectBase* other) const override {
        return key == static_cast<const TRow*>(other)->key;
    }
    void Copy(const CDbObjectBase* other) override { key = static_cast<const TRow*>(other)->key; }
    int Compare(const CDbObjectBase*) const override { return 0; }
};

std::vector<TRow*> Walk(const CRowList& list) {
    std::vector<TRow*> rows;
    for (POSITION pos = list.GetHeadPosition(); pos;)
        rows.push_back(static_cast<TRow*>(list.GetNext(pos)));
    return rows;
}

TEST(CRowList, RandomOperationsMatchStdList) {
    std::mt19937 rng(7);
    std::vector<TRow> rows(64);
    CRowList list;
    std::list<TRow*> model;
    for (int step = 0; step < 20000; ++step) {
        TRow* row = &rows[rng() % rows.size()];
        const bool inModel = std::find(model.begin(), model.end(), row) != model.end();
        ASSERT_EQ(list.IsLinked(row), inModel);
        const unsigned op = rng() % 10;
        if (op < 5) {
            if (!inModel) {
                list.AddTail(row);
                model.push_back(row);
            }
        } else if (op < 9) {
            if (inModel) {
                list.Remove(row);
                model.remove(row);
            }
        } else {
            // A walk that removes every third row it has just been given.
            int n = 0;
            for (POSITION pos = list.GetHeadPosition(); pos;) {
                auto* current = static_cast<TRow*>(list.GetNext(pos));
                if (++n % 3 == 0) {
                    list.Remove(current);
                    model.remove(current);
                }
            }
        }
        ASSERT_EQ(list.GetCount(), static_cast<int>(model.size()));
        ASSERT_EQ(Walk(list), std::vector<TRow*>(model.begin(), model.end()));
        ASSERT_EQ(list.GetHead(), model.empty() ? nullptr : model.front());
        ASSERT_EQ(list.GetTail(), model.empty() ? nullptr : model.back());
    }
}

// Keys collide in their buckets (hash = key * 3); the map grows.
struct SRowKeyTraits {
    static constexpr bool kGrow = true;
    using Probe = ULONG;
    static CMapLink& Link(TRow* row) { return row->link; }
    static ULONG Of(const TRow* row) { return row->key; }
    static UINT Hash(ULONG key) { return key * 3; }
    static bool Equal(const TRow* stored, ULONG key) { return stored->key == key; }
};
struct SModelTraits {
    static constexpr bool kGrow = true;
    static UINT Hash(ULONG key) { return key * 3; }
    static bool Equal(const ULONG& stored, ULONG key) { return stored == key; }
};

TEST(CIntrusiveMap, RandomOperationsMatchCMap) {
    std::mt19937 rng(11);
    std::vector<TRow> rows(2000);
    CIntrusiveMap<TRow, SRowKeyTraits> map;
    CMap<ULONG, ULONG, TRow*, TRow*, SModelTraits> model;
    auto modelFind = [&](ULONG key) {
        const auto* pair = model.PLookup(key);
        return pair ? pair->value : nullptr;
    };
    UINT largest = 0;
    for (int step = 0; step < 40000; ++step) {
        TRow* row = &rows[rng() % rows.size()];
        const ULONG key = rng() % 1500;
        const unsigned op = rng() % 1000;
        if (op < 450) {
            // A row in no map may take a new key first.
            const bool mapped = modelFind(row->key) == row;
            if (!mapped) row->key = key;
            const bool replace = rng() % 2;
            TRow* before = modelFind(row->key);
            ASSERT_EQ(map.Add(row, replace), before);
            if (!before || replace) model[row->key] = row;
        } else if (op < 600) {
            const bool mapped = modelFind(row->key) == row;
            ASSERT_EQ(map.Remove(row), mapped);
            if (mapped) model.RemoveKey(row->key);
        } else if (op < 750) {
            TRow* found = modelFind(key);
            ASSERT_EQ(map.RemoveKey(key), found);
            if (found) model.RemoveKey(key);
        } else if (op < 998) {
            ASSERT_EQ(map.Find(key), modelFind(key));
        } else {
            const UINT buckets = rng() % 50;
            const BOOL now = rng() % 2;
            map.InitHashTable(buckets, now);
            model.InitHashTable(buckets, now);
        }
        ASSERT_EQ(map.GetCount(), model.GetCount());
        ASSERT_EQ(map.GetHashTableSize(), model.GetHashTableSize());
        largest = std::max(largest, map.GetHashTableSize());
        if (step % 97 == 0 || step > 39900) {
            std::vector<TRow*> walked, expected;
            for (TRow* r = map.GetFirst(); r; r = map.GetNext(r))
                walked.push_back(r);
            for (const auto* pair = model.PGetFirstAssoc(); pair; pair = model.PGetNextAssoc(pair))
                expected.push_back(pair->value);
            ASSERT_EQ(walked, expected) << "step " << step;
        }
    }
    EXPECT_GT(largest, 100u);  // it grew
}

}  // namespace
