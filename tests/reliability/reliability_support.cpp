#include "reliability_support.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "model/model_check.h"
#include "model/model_generator.h"
#include "support/store_checks.h"

namespace tessmeta::test {

void WriteBaseModel(const std::string& path, std::uint64_t objects) {
    std::string error;
    auto model = CModelFile::Create(path, &error);
    ASSERT_TRUE(model) << error;
    SGenerateOptions options;
    options.objects = objects;
    GenerateModel(*model, options);
    model->GetDictObjectMgr().CreateDataDictionary("Shared", "shared items");
    CPropertyMgr& properties = model->GetPropertyMgr();
    const ULONG type = properties.InsertPropertyType("Audit", "audit data");
    properties.DefineProperty(type, "Owner", "who owns it", EPropertyDataType::Text);
    ASSERT_TRUE(model->Save()) << model->GetLastError();
}

void EditModel(CModelFile& model, int variant) {
    CGuidMgr& guids = model.GetGuidMgr();
    CNameSpaceMgr& names = model.GetNameSpaceMgr();
    CPropertyMgr& properties = model.GetPropertyMgr();
    const ULONG owner = properties.GetPropertyId("Owner");
    const int definition = names.GetEntityDefinitionUsageId();
    std::vector<ULONG> ids;
    for (POSITION pos = guids.GetUniqueObjectStartPosition(); pos;)
        ids.push_back(guids.GetNextUniqueObject(pos));
    const std::string suffix = "_v" + std::to_string(variant);
    for (std::size_t i = 0; i < ids.size(); ++i) {
        const int id = static_cast<int>(ids[i]);
        if (i > 10 && i % 7 == 3) {  // as a host deletes: the texts, then the object
            for (POSITION pos = names.GetStringUsageTypeTable().GetFirstRowPosition(); pos;)
                names.DeleteString(
                    id, static_cast<int>(
                            names.GetStringUsageTypeTable().GetNextRow(pos)->String_Usage_Type_ID));
            guids.DeleteObject(id, 1);
            continue;
        }
        names.AddOrUpdateString(("OBJ_" + std::to_string(id) + suffix).c_str(), id,
                                names.GetEntityNameUsageId());
        if (i % 5 == 0) names.DeleteString(id, definition);
        if (i % 11 == 0) properties.InsertProperty(1, ids[i], owner, CString(suffix.c_str()));
        if (i % 13 == 0) guids.FlagOnRepoStatus(ids[i], 2, true);
    }
}

std::string SaveEdit(CModelFile& model) {
    SModelSaveOptions options;
    options.purgeStrings = 1;
    return model.Save(options) ? "" : model.GetLastError();
}

std::string EditAndSave(const std::string& path, int variant) {
    std::string error;
    auto model = CModelFile::Open(path, &error);
    if (!model) return error;
    EditModel(*model, variant);
    return SaveEdit(*model);
}

void CopyFile(const std::string& from, const std::string& to) {
    std::filesystem::copy_file(from, to, std::filesystem::copy_options::overwrite_existing);
}

std::string SameAsOneOf(const std::string& path, const std::vector<std::string>& expected) {
    std::string error;
    auto file = CZmfFile::Open(path, &error);
    if (!file) return "does not open: " + error;
    const SCheckReport report = CheckModelFile(*file);
    if (report.ErrorCount()) return std::to_string(report.ErrorCount()) + " check findings";
    std::string differences;
    for (const std::string& other : expected) {
        auto reference = CZmfFile::Open(other, &error);
        if (!reference) return "reference does not open: " + error;
        const std::string difference = StoreDifference(*file, *reference);
        if (difference.empty()) return "";
        differences += "\n  vs " + other + ": " + difference;
    }
    return "equals none of the expected models:" + differences;
}

}  // namespace tessmeta::test
