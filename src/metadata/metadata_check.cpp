#include "metadata/metadata_check.h"

#include <string>

namespace tessmeta {
namespace {

template <class Row>
CIdSet StoredKeys(CZmfFile& file) {
    CIdSet keys;
    ForEachRow<Row>(file, Row::Desc().name, [&](const Row& row) { keys.Insert(row.GetTechKey()); });
    return keys;
}

// Reports the rows of Row's table whose `column` is not among `known`, as
// "row <key>: <what> <id> <missing>".
template <class Row>
void CheckReferences(CZmfFile& file, CReporter& out, ECheckKind kind, DWORD Row::*column,
                     const CIdSet& known, const char* what, const char* missing) {
    ForEachRow<Row>(file, Row::Desc().name, [&](const Row& row) {
        if (known.Contains(row.*column)) return;
        out.Add(kind, Row::Desc().name,
                "row " + std::to_string(row.GetTechKey()) + ": " + what + " " +
                    std::to_string(row.*column) + " " + missing);
    });
}

template <class Row>
void CheckCodeObjects(CZmfFile& file, CReporter& out, const CIdSet& objects) {
    CheckReferences<Row>(file, out, ECheckKind::CodeObjectWithoutModel, &Row::Model_ID, objects,
                         "model", "is not a unique object");
}

}  // namespace

void CheckMetadataTables(CZmfFile& file, const CIdSet& objects, CReporter& out) {
    CheckReferences<CMetaClass_MemberBase>(
        file, out, ECheckKind::MemberWithoutMetaTable, &CMetaClass_MemberBase::MetaTable_ID,
        StoredKeys<CMetaTableBase>(file), "meta table", "does not exist");

    const auto properties = StoredKeys<CPropertyBase>(file);
    CheckReferences<CProperty_ValueBase>(file, out, ECheckKind::PropertyValueWithoutProperty,
                                         &CProperty_ValueBase::Property_ID, properties, "property",
                                         "does not exist");
    CheckReferences<CProperty_UsageBase>(file, out, ECheckKind::PropertyValueWithoutProperty,
                                         &CProperty_UsageBase::Property_ID, properties, "property",
                                         "does not exist");

    CheckCodeObjects<CStorage_ObjectBase>(file, out, objects);
    CheckCodeObjects<CProcBase>(file, out, objects);
    CheckCodeObjects<CDbPackageBase>(file, out, objects);
    CheckCodeObjects<CDbTriggerBase>(file, out, objects);
    CheckCodeObjects<CTemplated_ProcBase>(file, out, objects);
}

}  // namespace tessmeta
