// The reference manager: bindings of dictionary items with their three walks and
// deletes, and referenced objects by model and by object, through a save.
#include "references/ref_object_mgr.h"

#include <gtest/gtest.h>

#include <vector>

#include "model/model_file.h"
#include "support/test_support.h"

using tessmeta::CModelFile;
using tessmeta::test::TempDir;

namespace {

template <class Row, class Next>
std::vector<DWORD> Keys(Row* first, Next next) {
    std::vector<DWORD> keys;
    for (Row* row = first; row; row = next())
        keys.push_back(row->GetTechKey());
    return keys;
}

TEST(RefObjectMgr, BindingsAreWalkedAndDeletedByItemMetaTableAndObject) {
    TempDir dir;
    const std::string path = dir.File("refs.zmf");
    std::vector<DWORD> b;
    DWORD reference = 0;
    {
        auto model = CModelFile::Create(path, nullptr);
        CRefObjectMgr& refs = model->GetRefObjectMgr();
        // item 10 on meta tables 8 and 9, item 11 on 8; objects 100 and 101.
        b = {refs.InsertBoundDictObject(10, 8, 100, "a"),
             refs.InsertBoundDictObject(10, 9, 100, ""),
             refs.InsertBoundDictObject(10, 8, 101, "c"),
             refs.InsertBoundDictObject(11, 8, 100, "d")};
        reference = refs.InsertReferencedObject(1, 100, 3);
        refs.InsertReferencedObject(2, 100, 3);
        refs.InsertReferencedObject(1, 101, 3);
        ASSERT_TRUE(model->Save());
    }
    auto model = CModelFile::Open(path, nullptr);
    CRefObjectMgr& refs = model->GetRefObjectMgr();
    CEnhBoundDictObjectTbl& bound = *refs.GetBoundDictObjectTable();
    EXPECT_EQ((Keys(bound.GetFirstBoundObjectMetaTableFKRow(10, 8),
                    [&] { return bound.GetNextBoundObjectMetaTableFKRow(); })),
              (std::vector<DWORD>{b[0], b[2]}));
    EXPECT_EQ((Keys(bound.GetFirstObjectFKRow(100), [&] { return bound.GetNextObjectFKRow(); })),
              (std::vector<DWORD>{b[0], b[1], b[3]}));
    CString text;
    EXPECT_TRUE(bound.GetValueOverride(b[2], text));
    EXPECT_EQ(text, CString("c"));
    const DWORD overrideObject = bound.GetRow(b[2])->Global_User_ID;

    EXPECT_EQ(bound.DeleteAllDictObjectMetaTableReferences(10, 8), 2);
    EXPECT_FALSE(model->GetGuidMgr().IsUniqueObjectIdValid(static_cast<LONG>(overrideObject)));
    EXPECT_EQ(bound.GetFirstBoundObjectMetaTableFKRow(10, 8), nullptr);
    EXPECT_EQ(bound.DeleteAllDictObjectReferences(10), 1);  // the one on meta table 9
    EXPECT_EQ(bound.DeleteAllDictObjectReferences(10), 0);
    EXPECT_FALSE(refs.DeleteBoundDictObject(b[0]));

    CEnhReferencedObjectTbl& referenced = *refs.GetReferencedObjectTable();
    EXPECT_EQ(
        (Keys(referenced.GetFirstModelRow(1), [&] { return referenced.GetNextModelRow(); })).size(),
        2u);
    EXPECT_EQ(referenced.GetRow(reference)->Meta_Table_ID, 3u);
    // Object 100 goes: its binding to item 11 and both references to it.
    EXPECT_EQ(refs.DeleteObjectReferences(100), 3);
    EXPECT_EQ(bound.GetCount(), 0);
    EXPECT_EQ(referenced.GetCount(), 1);
    EXPECT_FALSE(refs.DeleteReferencedObject(reference));
}

}  // namespace
