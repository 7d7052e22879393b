// The five code-object tables, one typed test for all: both insert forms, texts in
// the name space, update, the walk by model, delete, and a round trip through a
// real .zmf file.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "model/model_file.h"
#include "schema/schema_object_mgr.h"
#include "support/test_support.h"

using tessmeta::CModelFile;
using tessmeta::test::TempDir;

namespace {

template <class Table>
Table& TableOf(CModelFile& model) {
    Table* found = nullptr;
    model.GetSchemaObjectMgr().ForEachTable([&](auto& table) {
        if constexpr (std::is_same_v<std::remove_cvref_t<decltype(table)>, Table>) found = &table;
    });
    return *found;
}

// Inserts in the text form with texts "<prefix>0", "<prefix>1", ...
template <class Table>
ULONG InsertTexts(Table& table, ULONG model, const std::string& prefix) {
    auto t = [&](int i) { return CString((prefix + std::to_string(i)).c_str()); };
    if constexpr (Table::kTextCount == 5)
        return table.Insert(model, t(0), t(1), t(2), t(3), t(4), 0, 0);
    else
        return table.Insert(model, t(0), t(1), t(2), t(3), 0, 0);
}

template <class Table>
std::vector<std::string> Texts(const Table& table, ULONG key) {
    std::vector<std::string> texts;
    for (int i = 0; i < static_cast<int>(Table::kTextCount); ++i) {
        CString text;
        table.GetText(key, i, text);
        texts.emplace_back(text);
    }
    return texts;
}

template <class Table>
std::vector<ULONG> KeysOfModel(Table& table, ULONG model) {
    std::vector<ULONG> keys;
    for (auto* row = table.GetFirstFKRow(model); row; row = table.GetNextFKRow())
        keys.push_back(row->GetTechKey());
    return keys;
}

template <class Table>
class CodeObjectTable : public ::testing::Test {};

using Tables = ::testing::Types<CEnhStorageObjectTable, CEnhProcTable, CEnhDbPackageTable,
                                CEnhDbTriggerTable, CEnhTemplatedProcTable>;
TYPED_TEST_SUITE(CodeObjectTable, Tables);

TYPED_TEST(CodeObjectTable, EditsWalksAndRoundTrips) {
    using Table = TypeParam;
    TempDir dir;
    auto model = CModelFile::CreateInMemory();
    CGuidMgr& guids = model->GetGuidMgr();
    CNameSpaceMgr& names = model->GetNameSpaceMgr();
    const auto m1 = static_cast<ULONG>(guids.GetNewUniqueId(CString("Model"), 0, 0, 0));
    const auto m2 = static_cast<ULONG>(guids.GetNewUniqueId(CString("Model"), 0, 0, 0));
    Table& table = TableOf<Table>(*model);

    const ULONG a = InsertTexts(table, m1, "a");
    const ULONG b = InsertTexts(table, m2, "b");
    const ULONG c = InsertTexts(table, m1, "c");
    EXPECT_EQ(Texts(table, a)[3], "a3");
    const auto objectA = static_cast<int>(table.GetRow(a)->Global_User_ID);
    LONG type, owner, plex1, plex2;
    guids.GetObjectTypeAndModelIds(objectA, type, owner, plex1, plex2);
    EXPECT_EQ(static_cast<ULONG>(owner), m1);
    // The name is a usage of the row's object in the table's name role.
    EXPECT_EQ(names.GetStringIdFromObjectAndUsageTypeIds(objectA, table.GetUsageTypeId(0)),
              static_cast<int>(table.GetRow(a)->Name));

    // The id form keeps the string ids and registers them for the given object.
    const int name = names.AddConstString("shared");
    std::vector<ULONG> ids(Table::kTextCount, 0);
    ids[0] = static_cast<ULONG>(name);
    ULONG d;
    if constexpr (Table::kTextCount == 5)
        d = table.Insert(m2, ids[0], ids[1], ids[2], ids[3], ids[4], 0, 0);
    else
        d = table.Insert(m2, ids[0], ids[1], ids[2], ids[3], 0, 0);
    EXPECT_EQ(Texts(table, d)[0], "shared");

    // Named accessors by key and by row; update moves a row to another model.
    ASSERT_EQ(table.SetName(c, CString("renamed")), 1);
    CString text;
    ASSERT_EQ(table.GetName(table.GetRow(c), text), 1);
    EXPECT_EQ(text, "renamed");
    EXPECT_EQ(KeysOfModel(table, m1), (std::vector<ULONG>{a, c}));
    const auto* rowC = table.GetRow(c);
    if constexpr (Table::kTextCount == 5)
        ASSERT_EQ(table.Update(c, m2, rowC->Name, 0, 0, 0, 0), 1);
    else
        ASSERT_EQ(table.Update(c, m2, rowC->Name, 0, 0, 0), 1);
    EXPECT_EQ(KeysOfModel(table, m1), (std::vector<ULONG>{a}));
    EXPECT_EQ(KeysOfModel(table, m2), (std::vector<ULONG>{b, d, c}));

    // Delete takes the texts and the (New) object with the row.
    const int objectB = static_cast<int>(table.GetRow(b)->Global_User_ID);
    ASSERT_EQ(table.Delete(b), 1);
    EXPECT_EQ(table.Delete(b), 0);
    EXPECT_FALSE(guids.IsUniqueObjectIdValid(objectB));
    EXPECT_EQ(names.GetStringIdFromObjectAndUsageTypeIds(objectB, table.GetUsageTypeId(0)), 0);

    const auto textsOfA = Texts(table, a);
    ASSERT_TRUE(model->SaveAs(dir.File("s.zmf")));
    model.reset();
    std::string error;
    model = CModelFile::Open(dir.File("s.zmf"), &error);
    ASSERT_TRUE(model) << error;
    Table& reloaded = TableOf<Table>(*model);
    EXPECT_EQ(reloaded.GetCount(), 3);
    EXPECT_EQ(Texts(reloaded, a), textsOfA);
    ASSERT_EQ(reloaded.GetName(c, text), 1);
    EXPECT_EQ(text, "renamed");
    EXPECT_EQ(KeysOfModel(reloaded, m2), (std::vector<ULONG>{c, d}));  // list order now
    EXPECT_EQ(model->GetSchemaObjectMgr().DeleteModelObjects(m2), 2);
    EXPECT_EQ(model->GetSchemaObjectMgr().GetCount(), 1);
}

}  // namespace
