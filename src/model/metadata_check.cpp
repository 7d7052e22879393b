#include "model/metadata_check.h"

#include "zmflib/iterators.h"

namespace tessmeta {
namespace {

// Calls visit(row) for every stored row of Row's table.
template <class Row, class Visit>
void ForEachStored(CZmfFile& file, Visit&& visit) {
    CTableBase* handle = file.GetTable(Row::Desc().name);
    CIteratorBase it(handle);
    Row row;
    while (it.GetNext(&row))
        visit(row);
    file.ReleaseTable(&handle, 0);
}

template <class Row>
std::unordered_set<DWORD> StoredKeys(CZmfFile& file) {
    std::unordered_set<DWORD> keys;
    ForEachStored<Row>(file, [&](const Row& row) { keys.insert(row.GetTechKey()); });
    return keys;
}

template <class Row>
void CheckCodeObjects(CZmfFile& file, const std::unordered_set<DWORD>& objects,
                      const CheckFindingSink& add) {
    ForEachStored<Row>(file, [&](const Row& row) {
        if (objects.count(row.Model_ID)) return;
        add(ECheckKind::CodeObjectWithoutModel, Row::Desc().name,
            "row " + std::to_string(row.GetTechKey()) + ": model " + std::to_string(row.Model_ID) +
                " is not a unique object");
    });
}

template <class Row>
void CheckPropertyReferences(CZmfFile& file, const std::unordered_set<DWORD>& properties,
                             const CheckFindingSink& add) {
    ForEachStored<Row>(file, [&](const Row& row) {
        if (properties.count(row.Property_ID)) return;
        add(ECheckKind::PropertyValueWithoutProperty, Row::Desc().name,
            "row " + std::to_string(row.GetTechKey()) + ": property " +
                std::to_string(row.Property_ID) + " does not exist");
    });
}

}  // namespace

void CheckMetadataTables(CZmfFile& file, const std::unordered_set<DWORD>& objects,
                         const CheckFindingSink& add) {
    const auto metaTables = StoredKeys<CMetaTableBase>(file);
    ForEachStored<CMetaClass_MemberBase>(file, [&](const CMetaClass_MemberBase& row) {
        if (metaTables.count(row.MetaTable_ID)) return;
        add(ECheckKind::MemberWithoutMetaTable, "MetaClass_Member",
            "member " + std::to_string(row.MetaClass_Member_ID) + ": meta table " +
                std::to_string(row.MetaTable_ID) + " does not exist");
    });

    const auto properties = StoredKeys<CPropertyBase>(file);
    CheckPropertyReferences<CProperty_ValueBase>(file, properties, add);
    CheckPropertyReferences<CProperty_UsageBase>(file, properties, add);

    CheckCodeObjects<CStorage_ObjectBase>(file, objects, add);
    CheckCodeObjects<CProcBase>(file, objects, add);
    CheckCodeObjects<CDbPackageBase>(file, objects, add);
    CheckCodeObjects<CDbTriggerBase>(file, objects, add);
    CheckCodeObjects<CTemplated_ProcBase>(file, objects, add);
}

}  // namespace tessmeta
