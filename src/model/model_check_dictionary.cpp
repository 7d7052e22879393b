// Checks of the data dictionary: registry rows against the kinds and the data
// dictionaries, the kinds' rows against the registry, valid attachment types and
// attachments against their attachment types, bindings against the registry and,
// for attachments, against the classes their type allows.
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "dictionary/dict_kinds.h"
#include "model/model_check_detail.h"

namespace tessmeta {
namespace {

template <class Row>
void CheckItemsRegistered(CZmfFile& file, const char* table, const CIdSet& registry,
                          CReporter& out) {
    ForEachRow<Row>(file, table, [&](const Row& row) {
        if (!registry.Contains(row.Dictionary_Object_ID))
            out.Add(ECheckKind::DictItemWithoutRegistryRow, table,
                    "row " + std::to_string(row.GetTechKey()) + ": registry id " +
                        std::to_string(row.Dictionary_Object_ID) + " does not exist");
    });
}

// What the attachment tables say about bindings: the attachment type of each
// attachment's registry id, and the binding meta tables each type allows.
struct SAttachmentRules {
    std::unordered_map<DWORD, DWORD> typeOfItem;  // registry id -> Attachment_Type_ID
    std::unordered_map<DWORD, std::unordered_set<DWORD>> allowed;  // type -> meta tables

    // An empty text when a binding of `item` on `metaTable` is allowed or `item` is no
    // attachment; else why not.
    std::string Violation(DWORD item, DWORD metaTable) const {
        const auto attachment = typeOfItem.find(item);
        if (attachment == typeOfItem.end()) return {};
        const auto types = allowed.find(attachment->second);
        if (types != allowed.end() && types->second.count(metaTable)) return {};
        return "attachment type " + std::to_string(attachment->second) +
               " is not valid for meta table " + std::to_string(metaTable);
    }
};

SAttachmentRules CheckAttachments(CZmfFile& file, CReporter& out) {
    CIdSet types;
    ForEachRow<CAttachment_TypeBase>(
        file, "Attachment_Type", [&](const auto& row) { types.Insert(row.Attachment_Type_ID); });
    SAttachmentRules rules;
    ForEachRow<CValid_Attachment_TypeBase>(file, "Valid_Attachment_Type", [&](const auto& row) {
        if (!types.Contains(row.Attachment_Type_ID))
            out.Add(ECheckKind::ValidAttachmentTypeWithoutType, "Valid_Attachment_Type",
                    "row " + std::to_string(row.Valid_Attachment_Type_ID) + ": attachment type " +
                        std::to_string(row.Attachment_Type_ID) + " does not exist");
        rules.allowed[row.Attachment_Type_ID].insert(
            static_cast<DWORD>(BoundMetaTableOfValidType(static_cast<int>(row.Meta_Table_ID))));
    });
    ForEachRow<CAttachmentBase>(file, "Attachment", [&](const auto& row) {
        if (!types.Contains(row.Attachment_Type_ID))
            out.Add(ECheckKind::AttachmentWithoutType, "Attachment",
                    "row " + std::to_string(row.Attachment_ID) + ": attachment type " +
                        std::to_string(row.Attachment_Type_ID) + " does not exist");
        rules.typeOfItem[row.Dictionary_Object_ID] = row.Attachment_Type_ID;
    });
    return rules;
}

}  // namespace

void CheckDictionary(CZmfFile& file, CReporter& out) {
    CIdSet kinds, dictionaries, registry;
    ForEachRow<CDictionary_Object_TypeBase>(file, "Dictionary_Object_Type", [&](const auto& row) {
        kinds.Insert(row.Dictionary_Object_Type_ID);
    });
    ForEachRow<CData_DictionaryBase>(file, "Data_Dictionary", [&](const auto& row) {
        dictionaries.Insert(row.Data_Dictionary_ID);
    });
    ForEachRow<CDictionary_ObjectBase>(file, "Dictionary_Object", [&](const auto& row) {
        registry.Insert(row.Dictionary_Object_ID);
        const std::string id = "registry id " + std::to_string(row.Dictionary_Object_ID);
        if (!kinds.Contains(row.Dictionary_Object_Type_ID))
            out.Add(
                ECheckKind::DictObjectWithUnknownKind, "Dictionary_Object",
                id + ": kind " + std::to_string(row.Dictionary_Object_Type_ID) + " does not exist");
        if (!dictionaries.Contains(row.Data_Dictionary_ID))
            out.Add(ECheckKind::DictObjectWithUnknownDictionary, "Dictionary_Object",
                    id + ": data dictionary " + std::to_string(row.Data_Dictionary_ID) +
                        " does not exist");
    });
    CheckItemsRegistered<CDictionary_LibraryBase>(file, "Dictionary_Library", registry, out);
    CheckItemsRegistered<CDictionary_TriggerBase>(file, "Dictionary_Trigger", registry, out);
    CheckItemsRegistered<CReusable_ProcedureBase>(file, "Reusable_Procedure", registry, out);
    CheckItemsRegistered<CReference_ValueBase>(file, "Reference_Value", registry, out);
    CheckItemsRegistered<CAttachment_TypeBase>(file, "Attachment_Type", registry, out);
    CheckItemsRegistered<CValid_Attachment_TypeBase>(file, "Valid_Attachment_Type", registry, out);
    CheckItemsRegistered<CAttachmentBase>(file, "Attachment", registry, out);
    CheckItemsRegistered<CDictionary_Object_LinkBase>(file, "Dictionary_Object_Link", registry,
                                                      out);
    const SAttachmentRules attachments = CheckAttachments(file, out);
    ForEachRow<CBound_Dictionary_ObjectBase>(file, "Bound_Dictionary_Object", [&](const auto& row) {
        const std::string binding = "binding " + std::to_string(row.Bound_Dictionary_Object_ID);
        if (!registry.Contains(row.Dictionary_Object_ID))
            out.Add(ECheckKind::BindingWithoutDictObject, "Bound_Dictionary_Object",
                    binding + ": registry id " + std::to_string(row.Dictionary_Object_ID) +
                        " does not exist");
        const std::string violation =
            attachments.Violation(row.Dictionary_Object_ID, row.Meta_Table_ID);
        if (!violation.empty())
            out.Add(ECheckKind::AttachmentBoundWhereNotValid, "Bound_Dictionary_Object",
                    binding + ": " + violation);
    });
}

}  // namespace tessmeta
