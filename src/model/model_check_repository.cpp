// Checks of the repository bookkeeping: links against relationships, relationships,
// modifications and pending check-outs against the unique objects.
#include <string>
#include <unordered_set>

#include "model/model_check_detail.h"

namespace tessmeta {

void CheckRepository(CZmfFile& file, const std::unordered_set<DWORD>& objects, CReporter& out) {
    std::unordered_set<DWORD> relationships;
    ForEachRow<CInterModelRelationshipBase>(
        file, "InterModelRelationship", [&](const CInterModelRelationshipBase& row) {
            relationships.insert(row.InterModelRelationship_ID);
            if (!objects.count(row.Global_User_ID))
                out.Add(ECheckKind::RelationshipWithoutObject, "InterModelRelationship",
                        "relationship " + std::to_string(row.InterModelRelationship_ID) +
                            ": object " + std::to_string(row.Global_User_ID) +
                            " is not a unique object");
        });
    ForEachRow<CInterModelObjectLinkBase>(
        file, "InterModelObjectLink", [&](const CInterModelObjectLinkBase& row) {
            if (!relationships.count(row.InterModelRelationship_ID))
                out.Add(ECheckKind::LinkWithoutRelationship, "InterModelObjectLink",
                        "link " + std::to_string(row.InterModelObjectLink_ID) + ": relationship " +
                            std::to_string(row.InterModelRelationship_ID) + " does not exist");
        });
    ForEachRow<CObjectModificationBase>(
        file, "ObjectModification", [&](const CObjectModificationBase& row) {
            if (!objects.count(row.Object_ID))
                out.Add(ECheckKind::ModificationOfUnknownObject, "ObjectModification",
                        "modification " + std::to_string(row.ObjectModification_ID) + ": object " +
                            std::to_string(row.Object_ID) + " is not a unique object");
        });
    ForEachRow<CDelayed_CheckoutBase>(
        file, "Delayed_Checkout", [&](const CDelayed_CheckoutBase& row) {
            if (!objects.count(row.Object_ID))
                out.Add(ECheckKind::CheckoutOfUnknownObject, "Delayed_Checkout",
                        "check-out " + std::to_string(row.Delayed_Checkout_ID) + ": object " +
                            std::to_string(row.Object_ID) + " is not a unique object");
        });
}

}  // namespace tessmeta
