// tessmeta info: the repository section.
#include <cstdio>
#include <map>

#include "command.h"

namespace tessmeta::tool {
namespace {

const char* KindName(LONG kind) {
    switch (kind) {
        case CEnhRepoObjModTable::kDeleted:
            return "deleted";
        case CEnhRepoObjModTable::kModified:
            return "modified";
        default:
            return nullptr;
    }
}

}  // namespace

void PrintRepositoryInfo(CModelFile& model) {
    CRepoTableManager& repository = model.GetRepoTableManager();
    const CEnhRepoObjModTable& modifications = *repository.GetObjectModificationTable();
    std::map<LONG, int> perKind;
    for (POSITION pos = modifications.GetFirstRowPositionDiagObj(); pos;)
        ++perKind[modifications.GetNextRowDiagObj(pos)->Modification_Kind];
    for (POSITION pos = modifications.GetFirstRowPositionDataDictObj(); pos;)
        ++perKind[modifications.GetNextRowDataDictObj(pos)->Modification_Kind];

    std::printf("\nrepository:\n");
    std::printf("  %-26s %10d (diagram objects %d, data-dictionary objects %d)\n", "modifications",
                modifications.GetDiagObjCount() + modifications.GetDataDictObjCount(),
                modifications.GetDiagObjCount(), modifications.GetDataDictObjCount());
    for (const auto& [kind, count] : perKind) {
        if (const char* name = KindName(kind))
            std::printf("    %-24s %10d\n", name, count);
        else
            std::printf("    kind %-19d %10d\n", kind, count);
    }
    std::printf("  %-26s %10d\n", "inter-model relationships",
                repository.GetInterModelRelationshipTable()->GetCount());
    std::printf("  %-26s %10d\n", "inter-model links",
                repository.GetInterModelObjectLinkTable()->GetCount());
    std::printf("  %-26s %10d\n", "pending check-outs",
                model.GetDelayCheckoutTable().GetRowCount());
}

}  // namespace tessmeta::tool
