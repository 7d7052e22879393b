// Checks of the repository bookkeeping: links against relationships, relationships,
// modifications and pending check-outs against the unique objects.
#include <string>

#include "model/model_check_detail.h"

namespace tessmeta {
namespace {

// Rows of `table` whose Object_ID is not a unique object.
template <class Row>
void CheckObjectKnown(CZmfFile& file, const char* table, const char* noun, ECheckKind kind,
                      const CIdSet& objects, CReporter& out) {
    ForEachRow<Row>(file, table, [&](const Row& row) {
        if (!objects.Contains(row.Object_ID))
            out.Add(kind, table,
                    std::string(noun) + " " + std::to_string(row.GetTechKey()) + ": object " +
                        std::to_string(row.Object_ID) + " is not a unique object");
    });
}

}  // namespace

void CheckRepository(CZmfFile& file, const CIdSet& objects, CReporter& out) {
    CIdSet relationships;
    ForEachRow<CInterModelRelationshipBase>(
        file, "InterModelRelationship", [&](const CInterModelRelationshipBase& row) {
            relationships.Insert(row.InterModelRelationship_ID);
            if (!objects.Contains(row.Global_User_ID))
                out.Add(ECheckKind::RelationshipWithoutObject, "InterModelRelationship",
                        "relationship " + std::to_string(row.InterModelRelationship_ID) +
                            ": object " + std::to_string(row.Global_User_ID) +
                            " is not a unique object");
        });
    ForEachRow<CInterModelObjectLinkBase>(
        file, "InterModelObjectLink", [&](const CInterModelObjectLinkBase& row) {
            if (!relationships.Contains(row.InterModelRelationship_ID))
                out.Add(ECheckKind::LinkWithoutRelationship, "InterModelObjectLink",
                        "link " + std::to_string(row.InterModelObjectLink_ID) + ": relationship " +
                            std::to_string(row.InterModelRelationship_ID) + " does not exist");
        });
    CheckObjectKnown<CObjectModificationBase>(file, "ObjectModification", "modification",
                                              ECheckKind::ModificationOfUnknownObject, objects,
                                              out);
    CheckObjectKnown<CDelayed_CheckoutBase>(file, "Delayed_Checkout", "check-out",
                                            ECheckKind::CheckoutOfUnknownObject, objects, out);
}

}  // namespace tessmeta
