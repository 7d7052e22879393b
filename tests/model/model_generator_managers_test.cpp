// The generator's dictionary, metadata, view and repository shares: a small
// generated model saves, reopens clean and keeps rows in each table they fill.
#include <gtest/gtest.h>

#include "model/model_check.h"
#include "model/model_generator.h"
#include "support/test_support.h"

using tessmeta::CModelFile;

TEST(ModelGeneratorManagers, FilledTablesSurviveReopeningCleanAndRepeatWithTheSeed) {
    constexpr const char* kTables[] = {
        "Dictionary_Object",  "Bound_Dictionary_Object", "Attachment",       "Dictionary_Library",
        "Dictionary_Trigger", "Property_Usage",          "MetaClass_Member", "ObjectModification",
        "View_Table",         "View_Component",          "View_Column",      "View_Field",
        "View_Field_Column",  "View_Column_Usage"};
    tessmeta::test::TempDir dir;
    std::string error;
    auto counts = [&](CModelFile& model) {
        std::vector<int> all;
        for (const char* name : kTables) {
            CTableBase* table = model.GetFile().GetTable(name);
            all.push_back(table ? table->GetCount() : -1);
        }
        return all;
    };
    std::vector<int> first;
    for (const char* name : {"a.zmf", "b.zmf"}) {
        const std::string path = dir.File(name);
        auto model = CModelFile::Create(path, &error);
        ASSERT_TRUE(model) << error;
        const auto summary = tessmeta::GenerateModel(*model, {12000, 3, true});
        EXPECT_GT(summary.domains * summary.bindings * summary.propertyValues *
                      summary.metaClassMembers * summary.views * summary.modifications,
                  0u);
        ASSERT_TRUE(model->Save());
        model.reset();
        auto reopened = CModelFile::Open(path, &error);
        ASSERT_TRUE(reopened) << error;
        EXPECT_EQ(tessmeta::CheckModelFile(reopened->GetFile()).ErrorCount(), 0u);
        const auto rows = counts(*reopened);
        for (std::size_t i = 0; i < rows.size(); ++i)
            EXPECT_GT(rows[i], 0) << kTables[i];
        if (first.empty())
            first = rows;
        else
            EXPECT_EQ(rows, first);
    }
}
