// Every manager of a model on the server backend: a model built through
// CModelFile on a server and the same model in a .zmf file hold the same rows in
// every table, after the first save and after a load and save through every
// manager on each side.
#include <gtest/gtest.h>

#include "model/model_file.h"
#include "model/model_generator.h"
#include "support/pg_test.h"
#include "support/store_checks.h"
#include "support/test_support.h"

using tessmeta::CModelFile;
using tessmeta::test::StoreDifference;

namespace {

std::unique_ptr<CModelFile> OpenModel(const std::string& path) {
    std::string error;
    auto model = CModelFile::Open(path, &error);
    EXPECT_TRUE(model) << error;
    return model;
}

std::string Difference(const std::string& a, const std::string& b) {
    auto left = tessmeta::test::OpenOk(a);
    auto right = tessmeta::test::OpenOk(b);
    if (!left || !right) return "cannot open";
    return StoreDifference(*left, *right);
}

TEST(ModelOnServer, EveryManagerStoresTheSameRowsAsInAFile) {
    tessmeta::test::TempDir dir;
    const std::string uri = tessmeta::test::NewModelUri("model");
    const std::string path = dir.File("model.zmf");
    {
        std::string error;
        auto model = CModelFile::Create(uri, &error);
        ASSERT_TRUE(model) << error;
        tessmeta::GenerateModel(*model, {400, 3});
        ASSERT_TRUE(model->Save()) << model->GetLastError();
        // The same model, saved into a file as well.
        ASSERT_TRUE(model->SaveAs(path)) << model->GetLastError();
    }
    EXPECT_EQ(Difference(uri, path), "");

    // Loaded and saved again by every manager, on each side.
    for (const std::string& where : {uri, path}) {
        auto model = OpenModel(where);
        ASSERT_TRUE(model);
        EXPECT_EQ(model->GetGuidMgr().GetUniqueObjCount(), 400);
        tessmeta::SModelSaveOptions options;
        options.purgeStrings = 1;
        ASSERT_TRUE(model->Save(options)) << model->GetLastError();
    }
    EXPECT_EQ(Difference(uri, path), "");
}

}  // namespace
