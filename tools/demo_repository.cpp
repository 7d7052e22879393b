// tessmeta demo: the repository part. Three views stored in the repository are
// modified or deleted locally, tied to objects of other models by one inter-model
// relationship, and two of them wait for a delayed check-out. Deleting the third
// object then shows that its link, its modification row and its pending check-out
// go with it; after reopening, what is left is read back and compared.
#include <cstdio>
#include <string>

#include "command.h"

namespace tessmeta::tool {

struct SRepositoryDemo {
    ULONG modified = 0, deleted = 0, removed = 0;  // the three views
    ULONG relationship = 0;
    std::string relationshipGuid;
};

std::shared_ptr<SRepositoryDemo> BuildRepositoryDemo(CModelFile& model, ULONG modelId) {
    CGuidMgr& guids = model.GetGuidMgr();
    CRepoTableManager& repository = model.GetRepoTableManager();
    CEnhDelayCheckoutTable& checkouts = model.GetDelayCheckoutTable();
    auto demo = std::make_shared<SRepositoryDemo>();
    auto view = [&] {
        const auto id = static_cast<ULONG>(guids.GetNewUniqueId(CString("View"), modelId, 0, 0));
        guids.FlagOnRepoStatus(id, 2, true);  // held in the repository
        return id;
    };
    demo->modified = view();
    demo->deleted = view();
    demo->removed = view();

    repository.InsertObjectModificationRow(demo->modified, CEnhRepoObjModTable::kModified, 0);
    repository.InsertObjectModificationRow(demo->deleted, CEnhRepoObjModTable::kModified, 0);
    repository.InsertObjectModificationRow(demo->deleted, CEnhRepoObjModTable::kDeleted, 0);
    repository.InsertObjectModificationRow(demo->removed, CEnhRepoObjModTable::kModified, 0);

    CList<ULONG> tied;
    for (ULONG id : {demo->modified, demo->deleted, demo->removed})
        tied.AddTail(id);
    demo->relationship = repository.MakeIntermodelRelationshipFromCmpMgr(&tied);
    CString guid;
    repository.GetInterModelRelationshipGUIDFromGlobalId(
        repository.GetInterModelRelationshipTable()->GetIntermodelRelationshipObjGlobalId(
            demo->relationship),
        guid);
    demo->relationshipGuid = guid.GetString();

    checkouts.Insert(demo->modified, 1, 0);
    checkouts.Insert(demo->removed, 1, 0);

    guids.DeleteObject(static_cast<int>(demo->removed), 1);
    std::printf(
        "deleted object %u: link %s, modification %s, pending check-out %s\n", demo->removed,
        repository.GetInterModelRelIDFromUniqueObjectId(demo->removed) ? "kept" : "removed",
        repository.GetObjectModificationTable()->GetFKRow(demo->removed) ? "kept" : "removed",
        checkouts.GetFKRow(demo->removed) ? "kept" : "removed");
    return demo;
}

int VerifyRepositoryDemo(CModelFile& model, const SRepositoryDemo& expected) {
    CRepoTableManager& repository = model.GetRepoTableManager();
    CEnhDelayCheckoutTable& checkouts = model.GetDelayCheckoutTable();
    int problems = 0;
    auto expect = [&](bool ok, const char* what) {
        if (!ok) {
            std::printf("repository: %s\n", what);
            ++problems;
        }
    };
    expect(repository.IsObjectModified(expected.modified) == 1, "modified object not recorded");
    expect(repository.IsObjectDeleted(expected.deleted) == 1,
           "deletion not recorded over the modification");
    expect(!model.GetGuidMgr().IsUniqueObjectIdValid(static_cast<LONG>(expected.removed)),
           "deleted object still exists");
    expect(!repository.GetObjectModificationTable()->GetFKRow(expected.removed),
           "deleted object's modification row left");
    expect(repository.GetInterRelID(expected.relationshipGuid.c_str()) == expected.relationship,
           "relationship not found by its GUID");
    expect(repository.GetInterModelRelIDFromUniqueObjectId(expected.modified) ==
                   expected.relationship &&
               repository.GetInterModelRelIDFromUniqueObjectId(expected.deleted) ==
                   expected.relationship &&
               repository.GetInterModelRelIDFromUniqueObjectId(expected.removed) == 0,
           "links differ");
    expect(checkouts.GetFKRow(expected.modified) && !checkouts.GetFKRow(expected.removed),
           "pending check-outs differ");
    return problems;
}

void PrintRepositorySummary(CModelFile& model) {
    CRepoTableManager& repository = model.GetRepoTableManager();
    const CEnhRepoObjModTable& modifications = *repository.GetObjectModificationTable();
    std::printf("  modifications      %d\n",
                modifications.GetDiagObjCount() + modifications.GetDataDictObjCount());
    std::printf("  relationships      %d (%d links)\n",
                repository.GetInterModelRelationshipTable()->GetCount(),
                repository.GetInterModelObjectLinkTable()->GetCount());
    std::printf("  pending check-outs %d\n", model.GetDelayCheckoutTable().GetRowCount());
}

}  // namespace tessmeta::tool
