// The in-memory table pattern, on a storage-object table declared here the way the
// product's tables are declared, with stand-in services.
#include "foundation/enh_table.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "support/row_values.h"
#include "support/test_support.h"
#include "zmflib.h"

using tessmeta::test::ReadAll;
using tessmeta::test::RowText;
using tessmeta::test::TempDir;

namespace {

// Both services: strings get ids from 100 up (0 for empty text), unique ids from 1000 up.
class CFakeServices final : public INameSpaceService, public IObjectIdentityService {
  public:
    int GetStringUsageTypeId(const CString&) override { return 11; }
    int AddString(const CString& text, int, int) override { return Intern(text); }
    int AddOrUpdateString(int stringId, int, int) override { return stringId; }
    int AddOrUpdateString(const CString& text, int, int) override { return Intern(text); }
    int DeleteString(int, int) override { return 1; }
    void GetStringFromNameSpace(CString& out, LONG id) override {
        out = id >= 100 && id < m_nextString ? "text" : "?";
    }
    int GetObjectTypeId(const CString&) override { return 42; }
    int GetNewUniqueId(int, ULONG, ULONG, ULONG) override { return m_nextObject++; }
    int DeleteObject(int, int) override { return 1; }

  private:
    int Intern(const CString& text) { return text.IsEmpty() ? 0 : m_nextString++; }

    int m_nextString = 100;
    int m_nextObject = 1000;
};

class CTestStorageTable;
class CKelTestStorage final : public CEnhRow<CStorage_ObjectBase, CTestStorageTable> {};

struct STestStorageTraits : CEnhTableTraits<CKelTestStorage> {
    static constexpr DWORD Row::*kForeignKey = &Row::Model_ID;
    static constexpr std::array kTexts{Text{&Row::Name, "Storage Object Name"},
                                       Text{&Row::Owner, "Storage Object Owner"},
                                       Text{&Row::Description, "Storage Object Description"},
                                       Text{&Row::Value, "Storage Object Value"}};
    static constexpr const char* kObjectType = "Storage Object";
};

class CTestStorageTable : public CEnhTable<STestStorageTraits> {
  public:
    using CEnhTable::CEnhTable;

    ULONG Insert(ULONG modelId, const CString& name, const CString& owner,
                 const CString& description, const CString& value, ULONG uniqueId, ULONG key) {
        return InsertTexts(NewRow(modelId, uniqueId), key, name, owner, description, value);
    }
    ULONG Insert(ULONG modelId, ULONG name, ULONG owner, ULONG description, ULONG value,
                 ULONG uniqueId, ULONG key) {
        auto row = NewRow(modelId, uniqueId);
        SetIds(*row, name, owner, description, value);
        return InsertIds(std::move(row), key);
    }
    int Update(ULONG key, ULONG modelId, ULONG name, ULONG owner, ULONG description, ULONG value) {
        return UpdateRow(key, [&](CKelTestStorage& row) {
            row.Model_ID = modelId;
            SetIds(row, name, owner, description, value);
        });
    }

  private:
    static std::unique_ptr<CKelTestStorage> NewRow(ULONG modelId, ULONG uniqueId) {
        auto row = std::make_unique<CKelTestStorage>();
        row->Model_ID = modelId;
        row->Global_User_ID = uniqueId;
        return row;
    }
    static void SetIds(CKelTestStorage& row, ULONG name, ULONG owner, ULONG description,
                       ULONG value) {
        row.Name = name;
        row.Owner = owner;
        row.Description = description;
        row.Value = value;
    }
};

constexpr int kKind = 77;  // key kind of Storage_Object

// A stored row: key, model, and the unique id; text columns are key * 10 + column.
CStorage_ObjectBase StoredRow(ULONG key, ULONG model, ULONG uniqueId) {
    CStorage_ObjectBase row(key);
    row.Model_ID = model;
    row.Name = key * 10 + 1;
    row.Owner = key * 10 + 2;
    row.Description = key * 10 + 3;
    row.Value = key * 10 + 4;
    row.Global_User_ID = uniqueId;
    return row;
}

// Every column of the stored rows of Storage_Object, in stored order.
std::vector<std::string> StoredRows(CZmfFile& file) {
    std::vector<std::string> out;
    for (const auto& row : ReadAll<CStorage_ObjectBase>(file, "Storage_Object"))
        out.push_back(RowText(row.Desc(), row));
    return out;
}

std::vector<ULONG> ListKeys(const CTestStorageTable& table) {
    std::vector<ULONG> keys;
    for (POSITION pos = table.GetFirstRowPosition(); pos;)
        keys.push_back(table.GetNextRow(pos)->GetTechKey());
    return keys;
}

std::vector<ULONG> FKUniqueIds(CTestStorageTable& table, ULONG model) {
    std::vector<ULONG> ids;
    for (auto* row = table.GetFirstFKRow(model); row; row = table.GetNextFKRow())
        ids.push_back(row->Global_User_ID);
    return ids;
}

std::unique_ptr<CTestStorageTable> Load(CZmfFile& file, unsigned int buckets = 0,
                                        INameSpaceService* ns = nullptr,
                                        IObjectIdentityService* ids = nullptr) {
    auto table = std::make_unique<CTestStorageTable>(ns, file.GetIdentityMgr(), ids, &file);
    table->Init(buckets);
    return table;
}

TEST(EnhTable, LoadGivesKeyZeroAFreshKeyAndKeepsDuplicateKeys) {
    auto file = CZmfFile::OpenMemory();
    ASSERT_TRUE(tessmeta::test::Store(*file, "Storage_Object",
                                      std::vector{StoredRow(5, 1, 501), StoredRow(0, 1, 502),
                                                  StoredRow(5, 2, 503), StoredRow(3, 2, 504)}));
    auto table = Load(*file);

    EXPECT_EQ(static_cast<CTableBase*>(*table), nullptr);  // released after the load
    EXPECT_EQ(ListKeys(*table), (std::vector<ULONG>{5, 6, 5, 3}));
    EXPECT_EQ(file->GetIdentityMgr()->GetKeyValue(kKind), 6u);
    EXPECT_EQ(table->GetRow(5)->Global_User_ID, 501u);  // the first of the two
    EXPECT_EQ(table->GetRow(6)->Global_User_ID, 502u);
    EXPECT_EQ(table->GetRow(6)->GetEnhTable(), table.get());
    EXPECT_EQ(table->GetKeyMap().GetCount(), 3);
    EXPECT_EQ(table->GetRow(4), nullptr);
    // The duplicate is not in the key map but stays in the foreign-key index.
    EXPECT_EQ(FKUniqueIds(*table, 2), (std::vector<ULONG>{503, 504}));
    EXPECT_EQ(FKUniqueIds(*table, 9), std::vector<ULONG>{});

    ASSERT_EQ(table->Save(file.get()), 1);
    EXPECT_EQ(static_cast<CTableBase*>(*table), file->GetTable("Storage_Object"));  // kept
    auto renumbered = StoredRow(0, 1, 502);
    renumbered.Storage_Object_ID = 6;
    const auto stored = StoredRows(*file);
    ASSERT_EQ(stored.size(), 4u);
    EXPECT_EQ(stored[1], RowText(renumbered.Desc(), renumbered));
    EXPECT_EQ(stored[2], RowText(renumbered.Desc(), StoredRow(5, 2, 503)));

    // A later insert with key 0 goes past every key loaded.
    EXPECT_EQ(table->Insert(3, 0u, 0u, 0u, 0u, 9, 0), 7u);
}

TEST(EnhTable, RoundTripThroughAModelFile) {
    TempDir dir;
    const std::string path = dir.File("round.zmf");
    std::vector<std::string> saved;
    {
        auto file = CZmfFile::Create(path);
        ASSERT_TRUE(file);
        CFakeServices fake;
        auto table = Load(*file, 0, &fake, &fake);
        for (ULONG i = 0; i < 12; ++i)
            table->Insert(i % 3 + 1, CString("n"), CString("o"), CString("d"), CString("v"), 0, 0);
        table->Delete(5);
        ASSERT_EQ(table->Save(file.get()), 1);
        ASSERT_EQ(file->ReleaseTable(table->GetTablePtrAddr(), 0), 1);
        ASSERT_TRUE(file->Commit()) << file->GetLastError();
        saved = StoredRows(*file);
    }
    ASSERT_EQ(saved.size(), 11u);

    auto file = CZmfFile::Open(path);
    ASSERT_TRUE(file);
    auto table = Load(*file);
    EXPECT_EQ(table->GetKeyMap().GetHashTableSize(), 11u);
    ASSERT_EQ(table->GetCount(), 11);
    size_t i = 0;
    for (POSITION pos = table->GetFirstRowPosition(); pos; ++i) {
        const auto* r = table->GetNextRow(pos);
        EXPECT_EQ(RowText(r->Desc(), *r), saved[i]);
        EXPECT_EQ(table->GetRow(r->Storage_Object_ID), r);
    }
    EXPECT_EQ(table->GetRow(5), nullptr);
    // Model 2 had keys 2, 5, 8, 11 (unique ids 1001, 1004, 1007, 1010); 5 was deleted.
    EXPECT_EQ(FKUniqueIds(*table, 2), (std::vector<ULONG>{1001, 1007, 1010}));
    EXPECT_EQ(table->Insert(1, 0u, 0u, 0u, 0u, 0, 0), 13u);  // the counter persisted
}

// The key map and the index of loaded rows are filed on first use; until then,
// inserts and updates must leave them as if they had been filed at load.
TEST(EnhTable, IndexesFiledLateMatchOnesFiledAtLoad) {
    auto file = CZmfFile::OpenMemory();
    ASSERT_TRUE(tessmeta::test::Store(*file, "Storage_Object",
                                      std::vector{StoredRow(1, 7, 101), StoredRow(2, 8, 102),
                                                  StoredRow(3, 7, 103), StoredRow(3, 9, 105)}));
    CFakeServices fake;
    auto table = Load(*file, 0, &fake, &fake);
    table->Insert(9, 0, 0, 0, 0, 106, 1);  // a loaded key: the loaded row keeps it
    table->Insert(7, 0, 0, 0, 0, 104, 4);  // joins model 7 behind the loaded rows
    table->Update(3, 8, 0, 0, 0, 0);       // moves from model 7 to 8: last there
    table->Update(2, 8, 5, 0, 0, 0);       // same model: keeps its place
    EXPECT_EQ(FKUniqueIds(*table, 7), (std::vector<ULONG>{101, 104}));
    EXPECT_EQ(FKUniqueIds(*table, 8), (std::vector<ULONG>{102, 103}));
    EXPECT_EQ(table->GetRow(1)->Global_User_ID, 101u);
    EXPECT_EQ(table->Delete(1), 1);
    EXPECT_EQ(table->GetRow(1), nullptr);  // the later row under 1 was never mapped
    EXPECT_EQ(FKUniqueIds(*table, 7), (std::vector<ULONG>{104}));
}

}  // namespace
