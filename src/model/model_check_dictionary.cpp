// Checks of the data dictionary: registry rows against the kinds and the data
// dictionaries, the kinds' rows against the registry, bindings against the registry.
#include <string>
#include <unordered_set>

#include "model/model_check_detail.h"

namespace tessmeta {
namespace {

using CIdSet = std::unordered_set<DWORD>;

template <class Row>
void CheckItemsRegistered(CZmfFile& file, const char* table, const CIdSet& registry,
                          CReporter& out) {
    ForEachRow<Row>(file, table, [&](const Row& row) {
        if (!registry.count(row.Dictionary_Object_ID))
            out.Add(ECheckKind::DictItemWithoutRegistryRow, table,
                    "row " + std::to_string(row.GetTechKey()) + ": registry id " +
                        std::to_string(row.Dictionary_Object_ID) + " does not exist");
    });
}

}  // namespace

void CheckDictionary(CZmfFile& file, CReporter& out) {
    CIdSet kinds, dictionaries, registry;
    ForEachRow<CDictionary_Object_TypeBase>(file, "Dictionary_Object_Type", [&](const auto& row) {
        kinds.insert(row.Dictionary_Object_Type_ID);
    });
    ForEachRow<CData_DictionaryBase>(file, "Data_Dictionary", [&](const auto& row) {
        dictionaries.insert(row.Data_Dictionary_ID);
    });
    ForEachRow<CDictionary_ObjectBase>(file, "Dictionary_Object", [&](const auto& row) {
        registry.insert(row.Dictionary_Object_ID);
        const std::string id = "registry id " + std::to_string(row.Dictionary_Object_ID);
        if (!kinds.count(row.Dictionary_Object_Type_ID))
            out.Add(
                ECheckKind::DictObjectWithUnknownKind, "Dictionary_Object",
                id + ": kind " + std::to_string(row.Dictionary_Object_Type_ID) + " does not exist");
        if (!dictionaries.count(row.Data_Dictionary_ID))
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
    ForEachRow<CBound_Dictionary_ObjectBase>(file, "Bound_Dictionary_Object", [&](const auto& row) {
        if (!registry.count(row.Dictionary_Object_ID))
            out.Add(ECheckKind::BindingWithoutDictObject, "Bound_Dictionary_Object",
                    "binding " + std::to_string(row.Bound_Dictionary_Object_ID) + ": registry id " +
                        std::to_string(row.Dictionary_Object_ID) + " does not exist");
    });
}

}  // namespace tessmeta
