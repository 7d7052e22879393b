// The generator's fill of every manager: sound, persistent, and leaving the
// objects of a seed as they were.
#include "model/model_generator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <vector>

#include "model/model_check.h"
#include "support/test_support.h"

using tessmeta::CModelFile;

TEST(ModelGenerator, EveryManagerShareIsSoundSurvivesReopeningAndKeepsTheObjects) {
    tessmeta::test::TempDir dir;
    const std::string path = dir.File("full.zmf");
    std::string error;
    auto model = CModelFile::Create(path, &error);
    ASSERT_TRUE(model) << error;
    const auto summary = tessmeta::GenerateModel(*model, {3000, 4, true});
    auto plain = CModelFile::CreateInMemory();
    const auto plainSummary = tessmeta::GenerateModel(*plain, {3000, 4});
    EXPECT_EQ(summary.objects, plainSummary.objects);
    EXPECT_EQ(summary.usages, plainSummary.usages);
    EXPECT_EQ(summary.dictionaryItems, 30u);
    EXPECT_EQ(summary.dictionaryLinks, 30u);
    EXPECT_GT(summary.overrides, 0u);
    EXPECT_EQ(summary.layoutSettings, 3u);
    auto links = [](CModelFile& model) {
        std::vector<std::array<DWORD, 3>> all;
        CDictObjectMgr& dictionary = model.GetDictObjectMgr();
        for (POSITION pos = dictionary.GetFirstDictObjLinkRowPosition(); pos;) {
            const CKelDictionaryObjectLink* link = dictionary.GetNextDictObjLinkRow(pos);
            all.push_back({link->Parent_ID, link->Child_ID, link->Level});
        }
        return all;
    };
    const auto before = links(*model);
    ASSERT_EQ(before.size(), 30u);
    EXPECT_TRUE(std::any_of(before.begin(), before.end(), [](const auto& l) { return l[2] > 1; }));
    ASSERT_TRUE(model->Save());
    model.reset();

    auto reopened = CModelFile::Open(path, &error);
    ASSERT_TRUE(reopened) << error;
    EXPECT_EQ(tessmeta::CheckModelFile(reopened->GetFile()).ErrorCount(), 0u);
    EXPECT_EQ(reopened->GetDictObjectMgr().GetReferenceValueCount(), 30);
    EXPECT_EQ(links(*reopened), before);
}
