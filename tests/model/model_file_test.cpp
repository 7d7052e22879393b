// The composition root: create, load, save, save as, and the generator.
#include "model/model_file.h"

#include <gtest/gtest.h>

#include <vector>

#include "identity/identity_test_util.h"
#include "model/model_check.h"
#include "model/model_generator.h"
#include "support/store_checks.h"
#include "support/test_support.h"

using tessmeta::CModelFile;
using tessmeta::test::ObjectGuid;
using tessmeta::test::TempDir;

namespace {

TEST(ModelFile, ANewModelHasTypesAndUsageTypesAndSurvivesReopening) {
    TempDir dir;
    const std::string path = dir.File("m.zmf");
    std::string error;
    auto model = CModelFile::Create(path, &error);
    ASSERT_TRUE(model) << error;
    CGuidMgr& guids = model->GetGuidMgr();
    EXPECT_EQ(guids.GetDiagramObjectTypeId(), 1);
    EXPECT_EQ(guids.GetTreeLayoutObjectTypeId(), 74);
    EXPECT_EQ(model->GetNameSpaceMgr().GetEntityNameUsageId(), 1);
    const int entity = guids.GetNewUniqueId(CString("Entity"), 0, 0, 0);
    model->GetNameSpaceMgr().AddString("CUSTOMER", entity,
                                       model->GetNameSpaceMgr().GetEntityNameUsageId());
    const CString guid = ObjectGuid(guids, static_cast<ULONG>(entity));
    ASSERT_TRUE(model->Save());
    model.reset();

    EXPECT_FALSE(CModelFile::Create(path, &error));  // never over an existing file
    model = CModelFile::Open(path, &error);
    ASSERT_TRUE(model) << error;
    CNameSpaceMgr& names = model->GetNameSpaceMgr();
    CString name;
    names.GetStringFromNameSpace(
        name, names.GetStringIdFromObjectAndUsageTypeIds(entity, names.GetEntityNameUsageId()));
    EXPECT_EQ(name, "CUSTOMER");
    EXPECT_EQ(ObjectGuid(model->GetGuidMgr(), static_cast<ULONG>(entity)), guid);
    EXPECT_EQ(model->GetGuidMgr().GetNewUniqueId(CString("Entity"), 0, 0, 0), entity + 1);
    EXPECT_EQ(tessmeta::CheckModelFile(model->GetFile()).ErrorCount(), 0u);
}

TEST(ModelFile, SaveAsWritesVersion530AndKeepsKeysAhead) {
    TempDir dir;
    auto model = CModelFile::CreateInMemory();
    model->GetFile().SetFormatVersion(502);
    model->GetFile().GetIdentityMgr()->SetKeyValue(74, 40);
    ASSERT_TRUE(model->SaveAs(dir.File("copy.zmf")));
    EXPECT_EQ(model->GetFile().GetPath(), dir.File("copy.zmf"));
    EXPECT_FALSE(model->SaveAs(dir.File("copy.zmf")));  // exists
    EXPECT_NE(model->GetLastError().find("already exists"), std::string::npos);

    auto copy = CZmfFile::Open(dir.File("copy.zmf"));
    ASSERT_TRUE(copy);
    EXPECT_EQ(copy->GetFormatVersion(), 530u);
    EXPECT_EQ(copy->GetIdentityMgr()->AllocKeyValue(74), 41u);
}

TEST(ModelFile, GeneratedModelsAreSoundAndRepeatable) {
    auto first = CModelFile::CreateInMemory();
    auto second = CModelFile::CreateInMemory();
    const auto summary = tessmeta::GenerateModel(*first, {500, 9});
    tessmeta::GenerateModel(*second, {500, 9});
    EXPECT_EQ(summary.objects, 500u);
    EXPECT_EQ(first->GetGuidMgr().GetUniqueObjCount(), 500);
    EXPECT_GT(summary.longTexts, 0u);
    auto texts = [](CModelFile& model) {
        std::vector<std::string> all;
        LONG id;
        CString text;
        for (POSITION pos = model.GetNameSpaceMgr().GetStringStartPosition(); pos;) {
            model.GetNameSpaceMgr().GetNextString(pos, id, text);
            all.emplace_back(text);
        }
        return all;
    };
    EXPECT_EQ(texts(*first), texts(*second));
    EXPECT_GT(texts(*first).size(), 500u);
    EXPECT_EQ(first->GetGuidMgr().GetModelDomainId(), 2u);  // after the dictionary's
    ASSERT_TRUE(first->Save());
    EXPECT_EQ(tessmeta::CheckModelFile(first->GetFile()).ErrorCount(), 0u);
}

// The name space loaded on a second thread: the model saves as the same file as
// one loaded on one thread, or with its usages read on after the load.
TEST(ModelFile, LoadsTheSameOnOneThreadAndOnTwo) {
    TempDir dir;
    std::string error;
    {
        auto model = CModelFile::Create(dir.File("m.zmf"), &error);
        ASSERT_TRUE(model) << error;
        tessmeta::GenerateModel(*model, {400, 3, true});
        ASSERT_TRUE(model->Save());
    }
    tessmeta::SModelLoadOptions oneThread;
    oneThread.parallelRead = 0;
    tessmeta::SModelLoadOptions deferred;  // its usages read on after the load
    deferred.deferUsageLoad = 1;
    auto two = CModelFile::Open(dir.File("m.zmf"), &error);
    auto one = CModelFile::Open(dir.File("m.zmf"), &error, oneThread);
    auto later = CModelFile::Open(dir.File("m.zmf"), &error, deferred);
    ASSERT_TRUE(two && one && later) << error;
    ASSERT_TRUE(two->SaveAs(dir.File("two.zmf")) && one->SaveAs(dir.File("one.zmf")) &&
                later->SaveAs(dir.File("later.zmf")));
    EXPECT_EQ(tessmeta::test::StoreDifference(two->GetFile(), one->GetFile()), "");
    EXPECT_EQ(tessmeta::test::StoreDifference(later->GetFile(), one->GetFile()), "");
}

}  // namespace
