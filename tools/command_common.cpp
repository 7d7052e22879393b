#include <cstdio>

#include "command.h"
#include "progress.h"

namespace tessmeta::tool {
namespace {

// The tables a model load reads (and a save writes), for the progress total.
constexpr const char* kModelTables[] = {"ObjectDefinition", "UniqueObject", "Object_Domain",
                                        "SmallString",      "LargeString",  "StringUsage",
                                        "StringUsageType"};

std::uint64_t ExpectedRows(CZmfFile& file) {
    std::uint64_t rows = 0;
    for (const char* name : kModelTables) {
        CTableBase* table = file.GetTable(name);
        if (table) rows += static_cast<std::uint64_t>(table->GetSizeEstimate());
        file.ReleaseTable(&table, 0);
    }
    return rows;
}

}  // namespace

int Fail(const std::string& message, int status) {
    std::fprintf(stderr, "tessmeta: %s\n", message.c_str());
    return status;
}

std::unique_ptr<CModelFile> OpenModel(const std::string& path, const SModelLoadOptions& options) {
    std::string error;
    auto file = CZmfFile::Open(path, &error);
    if (!file) {
        Fail(error);
        return nullptr;
    }
    CProgressBar bar("loading", ExpectedRows(*file));
    file->SetProgressHook([&](std::uint64_t rows) { bar.Update(rows); });
    auto model = CModelFile::Load(std::move(file), options);
    bar.Finish();
    model->GetFile().SetProgressHook(nullptr);
    if (model->GetFile().HasError()) {
        Fail(model->GetFile().GetLastError());
        return nullptr;
    }
    return model;
}

bool SaveModel(CModelFile& model, const SModelSaveOptions& options, const std::string& saveAsPath) {
    CProgressBar bar("saving", ExpectedRows(model.GetFile()));
    const std::uint64_t start = model.GetFile().GetRowsMoved();
    model.GetFile().SetProgressHook([&](std::uint64_t rows) { bar.Update(rows - start); });
    const bool ok = saveAsPath.empty() ? model.Save(options) : model.SaveAs(saveAsPath, options);
    bar.Finish();
    model.GetFile().SetProgressHook(nullptr);
    if (!ok) Fail(model.GetLastError(), kExitProblems);
    return ok;
}

}  // namespace tessmeta::tool
