// Shared pieces of the repository tests: a model with its repository tables, and
// objects of a diagram type and of a data-dictionary type.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "dictionary/dictionary_test_util.h"
#include "identity/identity_test_util.h"
#include "model/model_file.h"
#include "zmflib.h"

namespace tessmeta::test {

struct SRepoModel {
    explicit SRepoModel(std::unique_ptr<CModelFile> m = CModelFile::CreateInMemory())
        : model(std::move(m)) {}

    std::unique_ptr<CModelFile> model;
    CGuidMgr& guids = model->GetGuidMgr();
    CRepoTableManager& repo = model->GetRepoTableManager();
    CEnhRepoObjModTable& mods = *repo.GetObjectModificationTable();
    CEnhDelayCheckoutTable& checkouts = model->GetDelayCheckoutTable();

    // A new object of the type; held in the repository (not New) unless `isNew`.
    ULONG Object(const char* type, bool isNew = false) {
        const auto id = static_cast<ULONG>(guids.GetNewUniqueId(CString(type), 0, 0, 0));
        if (!isNew) guids.FlagOnRepoStatus(id, 2, true);
        return id;
    }
    ULONG Diagram() { return Object("Entity"); }
    ULONG Dictionary() { return Object("Default"); }

    bool Exists(ULONG id) const { return guids.IsUniqueObjectIdValid(static_cast<LONG>(id)); }
};

// (object id, kind) of the rows of both modification lists: diagram list first.
inline std::vector<std::pair<ULONG, LONG>> ModRows(const CEnhRepoObjModTable& mods) {
    std::vector<std::pair<ULONG, LONG>> rows;
    for (POSITION pos = mods.GetFirstRowPositionDiagObj(); pos;) {
        const auto* row = mods.GetNextRowDiagObj(pos);
        rows.emplace_back(row->Object_ID, row->Modification_Kind);
    }
    for (POSITION pos = mods.GetFirstRowPositionDataDictObj(); pos;) {
        const auto* row = mods.GetNextRowDataDictObj(pos);
        rows.emplace_back(row->Object_ID, row->Modification_Kind);
    }
    return rows;
}

}  // namespace tessmeta::test
