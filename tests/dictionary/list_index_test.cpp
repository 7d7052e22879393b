// The list index behind the walks by kind and by attachment type, against a simple
// model (the keys of each chain in order) over random inserts, deletes, updates
// that keep or change the key, and walks interrupted by deletes.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <random>
#include <vector>

#include "foundation/enh_indexes.h"
#include "foundation/enh_table.h"
#include "zmflib.h"

namespace {

class CProbeTable;

class CKelProbe final : public CEnhRow<CDictionary_ObjectBase, CProbeTable> {
  public:
    SEnhListLink link;
};

struct SProbeTraits : CEnhTableTraits<CKelProbe> {
    static constexpr DWORD Row::*kUniqueId = nullptr;
};

// Rows filed by Dictionary_Object_Type_ID.
class CProbeTable : public CEnhTable<SProbeTraits> {
  public:
    explicit CProbeTable(CZmfFile* file)
        : CEnhTable(nullptr, nullptr, nullptr, file), index(this) {}

    ULONG Add(DWORD key) {
        auto row = std::make_unique<CKelProbe>();
        row->Dictionary_Object_Type_ID = key;
        return InsertIds(std::move(row), 0);
    }
    void SetKey(ULONG row, DWORD key) {
        UpdateRow(row, [&](CKelProbe& probe) { probe.Dictionary_Object_Type_ID = key; });
    }
    std::vector<ULONG> Walk(DWORD key) {
        std::vector<ULONG> rows;
        for (CKelProbe* row = index.GetFirst(key); row; row = index.GetNext())
            rows.push_back(row->GetTechKey());
        return rows;
    }

    static std::int64_t KeyOf(const CKelProbe& row) { return row.Dictionary_Object_Type_ID; }
    CEnhListIndex<CKelProbe, &KeyOf, &CKelProbe::link> index;

  protected:
    void AddToExtraIndexes(CKelProbe* row) override { index.Add(row); }
    void RemoveFromExtraIndexes(CKelProbe* row) override { index.Remove(row); }
    void SizeExtraIndexes(UINT /*bucketCount*/) override { index.MarkLoading(); }
};

TEST(ListIndex, AgreesWithAModelOverRandomEdits) {
    auto file = CZmfFile::OpenMemory(530);
    CProbeTable table(file.get());
    table.Init(0);
    std::map<DWORD, std::vector<ULONG>> model;  // key -> rows in chain order
    std::map<ULONG, DWORD> keyOf;
    std::mt19937 random(11);
    auto pick = [&](std::size_t n) { return static_cast<std::size_t>(random() % n); };
    auto anyRow = [&] {
        return std::next(keyOf.begin(), static_cast<long>(pick(keyOf.size())))->first;
    };
    auto unfile = [&](ULONG row) {
        auto& chain = model[keyOf[row]];
        chain.erase(std::find(chain.begin(), chain.end(), row));
    };

    for (int step = 0; step < 3000; ++step) {
        const DWORD key = 1 + static_cast<DWORD>(pick(4));
        const std::size_t op = keyOf.empty() ? 0 : pick(5);
        if (op <= 1) {
            const ULONG row = table.Add(key);
            model[key].push_back(row);
            keyOf[row] = key;
        } else if (op == 2) {
            const ULONG row = anyRow();
            unfile(row);
            keyOf.erase(row);
            ASSERT_TRUE(table.Delete(row));
        } else if (op == 3) {
            // Same key: the row keeps its place. Another key: it goes last there.
            const ULONG row = anyRow();
            const DWORD newKey = pick(2) ? keyOf[row] : key;
            if (newKey != keyOf[row]) {
                unfile(row);
                model[newKey].push_back(row);
                keyOf[row] = newKey;
            }
            table.SetKey(row, newKey);
        } else {
            // A walk, part done, survives a delete anywhere.
            const std::vector<ULONG> before = model[key];
            const std::size_t done = before.empty() ? 0 : pick(before.size() + 1);
            std::vector<ULONG> walked;
            for (CKelProbe* row = done ? table.index.GetFirst(key) : nullptr; row;
                 row = table.index.GetNext()) {
                walked.push_back(row->GetTechKey());
                if (walked.size() == done) break;
            }
            const ULONG victim = anyRow();
            unfile(victim);
            keyOf.erase(victim);
            ASSERT_TRUE(table.Delete(victim));
            if (done == 0) continue;
            for (CKelProbe* row = table.index.GetNext(); row; row = table.index.GetNext())
                walked.push_back(row->GetTechKey());
            std::vector<ULONG> expected(before.begin(), before.begin() + static_cast<long>(done));
            for (ULONG row : model[key])
                if (std::find(expected.begin(), expected.end(), row) == expected.end())
                    expected.push_back(row);
            ASSERT_EQ(walked, expected) << step;
        }
        for (DWORD k = 1; k <= 4; ++k) {
            ASSERT_EQ(table.Walk(k), model[k]) << step << " key " << k;
            int counted = 0;
            table.index.ForEach(k, [&](CKelProbe*) { ++counted; });
            ASSERT_EQ(static_cast<std::size_t>(counted), model[k].size());
        }
    }
}

// After a load the rows are filed in list order, on first use.
TEST(ListIndex, ALoadFilesTheRowsInListOrder) {
    auto file = CZmfFile::OpenMemory(530);
    std::vector<ULONG> ones;
    {
        CProbeTable table(file.get());
        table.Init(0);
        for (DWORD key : {1u, 2u, 1u, 1u, 2u})
            if (const ULONG row = table.Add(key); key == 1) ones.push_back(row);
        ASSERT_TRUE(table.Save(file.get()));
    }
    CProbeTable loaded(file.get());
    loaded.Init(0);
    EXPECT_TRUE(loaded.Delete(ones[1]));  // before anything was filed
    ones.erase(ones.begin() + 1);
    EXPECT_EQ(loaded.Walk(1), ones);
    EXPECT_EQ(loaded.Walk(2).size(), 2u);
    EXPECT_EQ(loaded.index.GetFirst(3), nullptr);
}

}  // namespace
