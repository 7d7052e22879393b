// tessmeta repo: what the next exchange with the repository would carry: the
// modified and deleted objects, the inter-model relationships with their objects
// and the pending check-outs, each object with its type and GUID.
#include <cstdio>
#include <string>
#include <vector>

#include "command.h"

namespace tessmeta::tool {
namespace {

// "<id>  <type>  <guid>", or a note when the object does not exist.
std::string Describe(CGuidMgr& guids, ULONG objectId) {
    CString type, guid;
    if (!guids.IsUniqueObjectIdValid(static_cast<LONG>(objectId)))
        return std::to_string(objectId) + "  (no such object)";
    if (!guids.GetObjectType(objectId, type))
        type.Format("(type %d)", guids.GetObjectTypeId(objectId));
    guids.GetObjectGUID(objectId, guid);
    char line[160];
    std::snprintf(line, sizeof line, "%-8u %-24s %s", objectId, type.GetString(),
                  guid.IsEmpty() ? "(nil GUID)" : guid.GetString());
    return line;
}

struct SListed {
    const CKelObjectModifications* row;
    bool dataDictionary;
};

void PrintModifications(CGuidMgr& guids, const std::vector<SListed>& rows, LONG kind,
                        const char* title) {
    int count = 0;
    for (const SListed& listed : rows)
        count += listed.row->Modification_Kind == kind;
    std::printf("\n%s objects (%d):\n", title, count);
    for (const SListed& listed : rows)
        if (listed.row->Modification_Kind == kind)
            std::printf("  %s%s\n", Describe(guids, listed.row->Object_ID).c_str(),
                        listed.dataDictionary ? "  [data dictionary]" : "");
}

}  // namespace

int RunRepo(const std::string& path) {
    auto model = OpenModel(path);
    if (!model) return kExitBadInput;
    CGuidMgr& guids = model->GetGuidMgr();
    CRepoTableManager& repository = model->GetRepoTableManager();
    const CEnhRepoObjModTable& modifications = *repository.GetObjectModificationTable();

    // Diagram objects first, then data-dictionary objects, each in recorded order.
    std::vector<SListed> rows;
    for (POSITION pos = modifications.GetFirstRowPositionDiagObj(); pos;)
        rows.push_back({modifications.GetNextRowDiagObj(pos), false});
    for (POSITION pos = modifications.GetFirstRowPositionDataDictObj(); pos;)
        rows.push_back({modifications.GetNextRowDataDictObj(pos), true});
    std::printf("%s: repository exchange\n", zmf::ShownLocation(path).c_str());
    PrintModifications(guids, rows, CEnhRepoObjModTable::kModified, "modified");
    PrintModifications(guids, rows, CEnhRepoObjModTable::kDeleted, "deleted");
    int others = 0;
    for (const SListed& listed : rows) {
        const LONG kind = listed.row->Modification_Kind;
        if (kind == CEnhRepoObjModTable::kModified || kind == CEnhRepoObjModTable::kDeleted)
            continue;
        if (others++ == 0) std::printf("\nother modification kinds:\n");
        std::printf("  kind %-4d %s\n", kind, Describe(guids, listed.row->Object_ID).c_str());
    }

    CEnhRepoInterModelRelationshipTable& relationships =
        *repository.GetInterModelRelationshipTable();
    CEnhRepoInterModelObjectLinkTable& links = *repository.GetInterModelObjectLinkTable();
    std::printf("\ninter-model relationships (%d):\n", relationships.GetCount());
    for (POSITION pos = relationships.GetFirstRowPosition(); pos;) {
        const CKelInterModelRelationship* relationship = relationships.GetNextRow(pos);
        std::printf("  relationship %u: %s\n", relationship->InterModelRelationship_ID,
                    Describe(guids, relationship->Global_User_ID).c_str());
        for (const CKelInterModelObjectLink* link =
                 links.GetFirstInterModelRelationshipIDFKRow(relationship->GetTechKey());
             link; link = links.GetNextInterModelRelationshipIDFKRow())
            std::printf("    %s\n", Describe(guids, link->Object_ID).c_str());
    }

    CEnhDelayCheckoutTable& checkouts = model->GetDelayCheckoutTable();
    std::printf("\npending check-outs (%d):\n", checkouts.GetRowCount());
    for (POSITION pos = checkouts.GetFirstRowPosition(); pos;) {
        const CKelDelayCheckout* row = checkouts.GetNextRow(pos);
        std::printf("  %-6u value %-6u %s\n", row->Delayed_Checkout_ID, row->Request_Value,
                    Describe(guids, row->Object_ID).c_str());
    }
    return kExitOk;
}

}  // namespace tessmeta::tool
