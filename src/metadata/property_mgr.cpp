#include "metadata/property_mgr.h"

#include <utility>

namespace {

// The rows under one foreign key, collected first so that the caller may search or
// delete in the same table while going through them.
template <class Table>
std::vector<typename Table::Row*> RowsUnder(Table& table, ULONG foreignKey) {
    std::vector<typename Table::Row*> rows;
    for (auto* row = table.GetFirstFKRow(foreignKey); row; row = table.GetNextFKRow())
        rows.push_back(row);
    return rows;
}

// The keys of the rows whose `column` holds `value`, in list order (a walk of the
// whole table, for columns that are not the foreign key).
// A column of the rows of Table (given as a member of the row's base class, too).
template <class Table>
using Column = DWORD Table::Row::*;

template <class Table, class Row = typename Table::Row>
std::vector<ULONG> KeysWhere(const Table& table, Column<Table> column, ULONG value) {
    std::vector<ULONG> keys;
    for (POSITION pos = table.GetFirstRowPosition(); pos;) {
        const Row* row = table.GetNextRow(pos);
        if (row->*column == value) keys.push_back(row->GetTechKey());
    }
    return keys;
}

// The first row under `foreignKey` whose `column` holds `value`, or null.
template <class Table, class Row = typename Table::Row>
Row* FindUnder(Table& table, ULONG foreignKey, Column<Table> column, ULONG value) {
    for (Row* row : RowsUnder(table, foreignKey))
        if (row->*column == value) return row;
    return nullptr;
}

// A link row (foreignKey in `fkColumn`, `value` in `column`): the existing one's key,
// or the key of a new one.
template <class Table, class Row = typename Table::Row>
ULONG Link(Table& table, Column<Table> fkColumn, ULONG foreignKey, Column<Table> column,
           ULONG value) {
    if (const Row* row = FindUnder(table, foreignKey, column, value)) return row->GetTechKey();
    auto row = std::make_unique<Row>();
    row.get()->*fkColumn = foreignKey;
    row.get()->*column = value;
    return table.Insert(std::move(row));
}

template <class Table>
ULONG KeyOf(const typename Table::Row* row) {
    return row ? row->GetTechKey() : 0;
}

// A named definition row; 0 when the name is empty or taken.
template <class Table>
ULONG InsertNamed(Table& table, const CString& name, const CString& description,
                  std::unique_ptr<typename Table::Row> row = nullptr) {
    if (name.IsEmpty() || table.GetRowByName(name.View())) return 0;
    if (!row) row = std::make_unique<typename Table::Row>();
    row->Name = name;
    row->Description = description;
    return table.Insert(std::move(row));
}

}  // namespace

const char* PropertyResultText(EPropertyResult result) {
    switch (result) {
        case EPropertyResult::Done:
            return "done";
        case EPropertyResult::NoSuchObject:
            return "no such object";
        case EPropertyResult::NoSuchProperty:
            return "no such property";
        case EPropertyResult::NotValidForObject:
            return "the property is not valid for this kind of object";
        case EPropertyResult::WrongDataType:
            return "the value does not fit the property's data type";
        case EPropertyResult::NotAllowed:
            return "the value is not one of the property's allowed values";
        case EPropertyResult::AlreadyAllowed:
            return "the value is already allowed";
    }
    return "unknown result";
}

CPropertyMgr::CPropertyMgr(CZmfFile* file, CGuidMgr* guids, CEnhMetaTableTbl* metaTables,
                           CEnhMetaClassMemberTbl* members)
    : m_pMetaTables(metaTables),
      m_pMembers(members),
      m_types(std::make_unique<CEnhPropertyTypeTbl>(nullptr, nullptr, nullptr, file)),
      m_properties(std::make_unique<CEnhPropertyTbl>(nullptr, nullptr, nullptr, file)),
      m_values(std::make_unique<CEnhPropertyValueTbl>(nullptr, nullptr, nullptr, file)),
      m_classes(std::make_unique<CEnhMetaClassTbl>(nullptr, nullptr, nullptr, file)),
      m_classTables(std::make_unique<CEnhValidMetaClassTbl>(nullptr, nullptr, nullptr, file)),
      m_validProperties(std::make_unique<CEnhValidPropertyTbl>(nullptr, nullptr, nullptr, file)),
      m_validValues(std::make_unique<CEnhValidPropertyValueTbl>(nullptr, nullptr, nullptr, file)),
      m_options(std::make_unique<CEnhConfigurationOptionTbl>(nullptr, nullptr, nullptr, file)),
      m_configurations(
          std::make_unique<CEnhMetaTableConfigurationTbl>(nullptr, nullptr, nullptr, file)),
      m_usages(std::make_unique<CEnhPropertyUsageTbl>(nullptr, nullptr, guids, file)) {}

CPropertyMgr::~CPropertyMgr() = default;

template <class F>
void CPropertyMgr::ForEachTable(F&& f) {
    f(*m_types);
    f(*m_properties);
    f(*m_values);
    f(*m_classes);
    f(*m_classTables);
    f(*m_validProperties);
    f(*m_validValues);
    f(*m_options);
    f(*m_configurations);
    f(*m_usages);
}

int CPropertyMgr::Init(unsigned int bucketCount) {
    ForEachTable([&](CEnhTableBase& table) { table.Init(bucketCount); });
    return 1;
}

int CPropertyMgr::Save(CZmfFile* file) {
    int result = 1;
    ForEachTable([&](auto& table) {
        if (!table.Save(file)) result = 0;
    });
    return result;
}

void CPropertyMgr::ReleaseStorageTables(int flag) {
    ForEachTable([&](CEnhTableBase& table) { ReleaseSavedTable(table, flag); });
}

// ---- property types and properties ----------------------------------------------------

ULONG CPropertyMgr::InsertPropertyType(const CString& name, const CString& description) {
    return InsertNamed(*m_types, name, description);
}

ULONG CPropertyMgr::GetPropertyTypeId(const CString& name) const {
    return KeyOf<CEnhPropertyTypeTbl>(m_types->GetRowByName(name.View()));
}

int CPropertyMgr::DeletePropertyType(ULONG typeId) {
    if (!m_types->GetRow(typeId)) return 0;
    for (CKelProperty* property : RowsUnder(*m_properties, typeId))
        DeletePropertyDefinition(property->Property_ID);
    return m_types->Delete(typeId);
}

ULONG CPropertyMgr::DefineProperty(ULONG typeId, const CString& name, const CString& description,
                                   EPropertyDataType dataType) {
    if (!m_types->GetRow(typeId) || !IsPropertyDataType(static_cast<DWORD>(dataType))) return 0;
    auto row = std::make_unique<CKelProperty>();
    row->Property_Type_ID = typeId;
    row->Data_Type = static_cast<DWORD>(dataType);
    return InsertNamed(*m_properties, name, description, std::move(row));
}

ULONG CPropertyMgr::GetPropertyId(const CString& name) const {
    return KeyOf<CEnhPropertyTbl>(m_properties->GetRowByName(name.View()));
}

EPropertyDataType CPropertyMgr::GetPropertyDataType(ULONG propertyId) const {
    const CKelProperty* row = m_properties->GetRow(propertyId);
    if (!row || !IsPropertyDataType(row->Data_Type)) return EPropertyDataType::Text;
    return static_cast<EPropertyDataType>(row->Data_Type);
}

int CPropertyMgr::DeletePropertyDefinition(ULONG propertyId) {
    if (!m_properties->GetRow(propertyId)) return 0;
    for (ULONG usage : KeysWhere(*m_usages, &CKelPropertyUsage::Property_ID, propertyId))
        DeleteUsage(usage);
    for (CKelValidProperty* declaration : RowsUnder(*m_validProperties, propertyId))
        RemovePropertyValidity(declaration->Valid_Property_ID);
    for (CKelPropertyValue* value : RowsUnder(*m_values, propertyId))
        DeleteAllowedValue(value->Property_Value_ID);
    return m_properties->Delete(propertyId);
}

EPropertyResult CPropertyMgr::AddAllowedValue(ULONG propertyId, const CString& value,
                                              ULONG* valueId) {
    if (!m_properties->GetRow(propertyId)) return EPropertyResult::NoSuchProperty;
    if (!IsPropertyValueOfType(GetPropertyDataType(propertyId), value.View()))
        return EPropertyResult::WrongDataType;
    for (const CKelPropertyValue* row : RowsUnder(*m_values, propertyId))
        if (row->Value.GetValue() == value) return EPropertyResult::AlreadyAllowed;
    auto row = std::make_unique<CKelPropertyValue>();
    row->Property_ID = propertyId;
    row->Value = value;
    const ULONG key = m_values->Insert(std::move(row));
    if (valueId) *valueId = key;
    return EPropertyResult::Done;
}

int CPropertyMgr::DeleteAllowedValue(ULONG valueId) {
    if (!m_values->GetRow(valueId)) return 0;
    for (ULONG key : KeysWhere(*m_validValues, &CKelValidPropertyValue::Property_Value_ID, valueId))
        m_validValues->Delete(key);
    return m_values->Delete(valueId);
}

std::vector<CString> CPropertyMgr::GetAllowedValues(ULONG propertyId) const {
    std::vector<CString> values;
    for (const CKelPropertyValue* row : RowsUnder(*m_values, propertyId))
        values.push_back(row->Value.GetValue());
    return values;
}

// ---- classes and validity ---------------------------------------------------------------

ULONG CPropertyMgr::InsertMetaClass(const CString& name, const CString& description) {
    return InsertNamed(*m_classes, name, description);
}

ULONG CPropertyMgr::GetMetaClassId(const CString& name) const {
    return KeyOf<CEnhMetaClassTbl>(m_classes->GetRowByName(name.View()));
}

ULONG CPropertyMgr::AddMetaClassTable(ULONG metaClassId, ULONG metaTableKey) {
    if (!m_classes->GetRow(metaClassId) || !m_pMetaTables->GetRow(metaTableKey)) return 0;
    return Link(*m_classTables, &CKelValidMetaClass::MetaClass_ID, metaClassId,
                &CKelValidMetaClass::MetaTable_ID, metaTableKey);
}

int CPropertyMgr::RemoveMetaClassTable(ULONG metaClassId, ULONG metaTableKey) {
    const CKelValidMetaClass* row =
        FindUnder(*m_classTables, metaClassId, &CKelValidMetaClass::MetaTable_ID, metaTableKey);
    return row ? m_classTables->Delete(row->Valid_MetaClass_ID) : 0;
}

int CPropertyMgr::DeleteMetaClass(ULONG metaClassId) {
    if (!m_classes->GetRow(metaClassId)) return 0;
    for (ULONG key : KeysWhere(*m_validProperties, &CKelValidProperty::MetaClass_ID, metaClassId))
        RemovePropertyValidity(key);
    m_classTables->DeleteAllFKRows(metaClassId);
    return m_classes->Delete(metaClassId);
}

ULONG CPropertyMgr::GetMetaClassForTable(ULONG metaTableKey) {
    const CKelMetaTable* table = m_pMetaTables->GetRow(metaTableKey);
    if (!table) return 0;
    const CString& name = table->Name.GetValue();
    ULONG classId = GetMetaClassId(name);
    if (!classId) classId = InsertMetaClass(name, CString());
    return AddMetaClassTable(classId, metaTableKey) ? classId : 0;
}

ULONG CPropertyMgr::SetPropertyValid(ULONG propertyId, ULONG metaClassId) {
    if (!m_properties->GetRow(propertyId) || !m_classes->GetRow(metaClassId)) return 0;
    return Link(*m_validProperties, &CKelValidProperty::Property_ID, propertyId,
                &CKelValidProperty::MetaClass_ID, metaClassId);
}

ULONG CPropertyMgr::SetPropertyValidForTable(ULONG propertyId, ULONG metaTableKey) {
    if (!m_properties->GetRow(propertyId)) return 0;
    const ULONG classId = GetMetaClassForTable(metaTableKey);
    return classId ? SetPropertyValid(propertyId, classId) : 0;
}

int CPropertyMgr::RemovePropertyValidity(ULONG validPropertyId) {
    if (!m_validProperties->GetRow(validPropertyId)) return 0;
    m_validValues->DeleteAllFKRows(validPropertyId);
    return m_validProperties->Delete(validPropertyId);
}

ULONG CPropertyMgr::RestrictAllowedValue(ULONG validPropertyId, ULONG propertyValueId) {
    const CKelValidProperty* declaration = m_validProperties->GetRow(validPropertyId);
    const CKelPropertyValue* value = m_values->GetRow(propertyValueId);
    if (!declaration || !value || value->Property_ID != declaration->Property_ID) return 0;
    return Link(*m_validValues, &CKelValidPropertyValue::Valid_Property_ID, validPropertyId,
                &CKelValidPropertyValue::Property_Value_ID, propertyValueId);
}

bool CPropertyMgr::ClassCovers(ULONG metaClassId, ULONG metaTableKey) const {
    return FindUnder(*m_classTables, metaClassId, &CKelValidMetaClass::MetaTable_ID,
                     metaTableKey) != nullptr;
}

bool CPropertyMgr::IsPropertyValidFor(ULONG propertyId, ULONG metaTableKey) const {
    for (const CKelValidProperty* row : RowsUnder(*m_validProperties, propertyId))
        if (ClassCovers(row->MetaClass_ID, metaTableKey)) return true;
    return false;
}

bool CPropertyMgr::DeclarationAccepts(const CKelValidProperty& declaration,
                                      const CString& value) const {
    const auto restriction = RowsUnder(*m_validValues, declaration.Valid_Property_ID);
    if (!restriction.empty()) {
        for (const CKelValidPropertyValue* row : restriction) {
            const CKelPropertyValue* allowed = m_values->GetRow(row->Property_Value_ID);
            if (allowed && allowed->Value.GetValue() == value) return true;
        }
        return false;
    }
    const auto list = RowsUnder(*m_values, declaration.Property_ID);
    if (list.empty()) return true;
    for (const CKelPropertyValue* allowed : list)
        if (allowed->Value.GetValue() == value) return true;
    return false;
}

EPropertyResult CPropertyMgr::CheckValue(ULONG propertyId, ULONG metaTableKey,
                                         const CString& value) const {
    if (!m_properties->GetRow(propertyId)) return EPropertyResult::NoSuchProperty;
    if (!IsPropertyValueOfType(GetPropertyDataType(propertyId), value.View()))
        return EPropertyResult::WrongDataType;
    bool valid = false;
    for (const CKelValidProperty* declaration : RowsUnder(*m_validProperties, propertyId)) {
        if (!ClassCovers(declaration->MetaClass_ID, metaTableKey)) continue;
        valid = true;
        if (DeclarationAccepts(*declaration, value)) return EPropertyResult::Done;
    }
    return valid ? EPropertyResult::NotAllowed : EPropertyResult::NotValidForObject;
}

// ---- values on objects --------------------------------------------------------------------

std::vector<CKelMetaClassMember*> CPropertyMgr::MembersOf(ULONG metaTableKey,
                                                          ULONG tableRowId) const {
    std::vector<CKelMetaClassMember*> members;
    for (auto* row = m_pMembers->GetFirstRow(metaTableKey, tableRowId); row;
         row = m_pMembers->GetNextRow())
        members.push_back(row);
    return members;
}

CKelPropertyUsage* CPropertyMgr::FindUsage(ULONG memberId, ULONG propertyId) const {
    return FindUnder(*m_usages, memberId, &CKelPropertyUsage::Property_ID, propertyId);
}

void CPropertyMgr::DeleteUsage(ULONG usageKey) {
    const CKelPropertyUsage* usage = m_usages->GetRow(usageKey);
    if (!usage) return;
    const ULONG memberId = usage->MetaClass_Member_ID;
    m_usages->Delete(usageKey);
    if (!m_usages->GetFirstFKRow(memberId)) m_pMembers->Delete(memberId);
}

CString CPropertyMgr::MemberName(ULONG metaTableKey) const {
    switch (m_pMetaTables->GetStringEnum(metaTableKey)) {
        case CEnhMetaTableTbl::Entity:
            return "Table";
        case CEnhMetaTableTbl::Indexes:
            return "Index";
        case CEnhMetaTableTbl::View:
            return "View";
        case CEnhMetaTableTbl::Model:
            return "Model";
        case CEnhMetaTableTbl::Attribute:
            return "Attribute";
        default:
            return m_pMetaTables->GetRow(metaTableKey)->Name.GetValue();
    }
}

EPropertyResult CPropertyMgr::InsertProperty(ULONG metaTableKey, ULONG tableRowId, ULONG propertyId,
                                             const CString& value, ULONG* usageId) {
    if (tableRowId == 0 || !m_pMetaTables->GetRow(metaTableKey))
        return EPropertyResult::NoSuchObject;
    const EPropertyResult check = CheckValue(propertyId, metaTableKey, value);
    if (check != EPropertyResult::Done) return check;
    const auto members = MembersOf(metaTableKey, tableRowId);
    for (const CKelMetaClassMember* member : members) {
        if (CKelPropertyUsage* usage = FindUsage(member->MetaClass_Member_ID, propertyId)) {
            usage->Value = value;
            if (usageId) *usageId = usage->Property_Usage_ID;
            return EPropertyResult::Done;
        }
    }
    const ULONG memberId =
        members.empty()
            ? m_pMembers->Insert(metaTableKey, MemberName(metaTableKey), tableRowId, nullptr, 0)
            : members.front()->MetaClass_Member_ID;
    const ULONG key = m_usages->Insert(memberId, propertyId, value);
    if (usageId) *usageId = key;
    return EPropertyResult::Done;
}

int CPropertyMgr::GetProperty(ULONG metaTableKey, ULONG tableRowId, ULONG propertyId,
                              CString& out) const {
    for (const CKelMetaClassMember* member : MembersOf(metaTableKey, tableRowId)) {
        if (const CKelPropertyUsage* usage = FindUsage(member->MetaClass_Member_ID, propertyId)) {
            out = usage->Value.GetValue();
            return 1;
        }
    }
    return 0;
}

int CPropertyMgr::ClearProperty(ULONG metaTableKey, ULONG tableRowId, ULONG propertyId) {
    for (const CKelMetaClassMember* member : MembersOf(metaTableKey, tableRowId)) {
        if (const CKelPropertyUsage* usage = FindUsage(member->MetaClass_Member_ID, propertyId)) {
            DeleteUsage(usage->Property_Usage_ID);
            return 1;
        }
    }
    return 0;
}

std::vector<SObjectProperty> CPropertyMgr::ListProperties(ULONG metaTableKey,
                                                          ULONG tableRowId) const {
    std::vector<SObjectProperty> list;
    for (const CKelMetaClassMember* member : MembersOf(metaTableKey, tableRowId)) {
        for (const CKelPropertyUsage* usage : RowsUnder(*m_usages, member->MetaClass_Member_ID)) {
            SObjectProperty item;
            item.usageId = usage->Property_Usage_ID;
            item.memberId = member->MetaClass_Member_ID;
            item.propertyId = usage->Property_ID;
            item.value = usage->Value.GetValue();
            if (const CKelProperty* property = m_properties->GetRow(usage->Property_ID)) {
                item.propertyName = property->Name.GetValue();
                item.dataType = GetPropertyDataType(usage->Property_ID);
                if (const CKelPropertyType* type = m_types->GetRow(property->Property_Type_ID))
                    item.propertyTypeName = type->Name.GetValue();
            }
            item.accepted =
                CheckValue(usage->Property_ID, metaTableKey, item.value) == EPropertyResult::Done;
            list.push_back(std::move(item));
        }
    }
    return list;
}

int CPropertyMgr::DeleteObjectProperties(ULONG metaTableKey, ULONG tableRowId) {
    int removed = 0;
    for (const CKelMetaClassMember* member : MembersOf(metaTableKey, tableRowId)) {
        const ULONG memberId = member->MetaClass_Member_ID;
        for (const CKelPropertyUsage* usage : RowsUnder(*m_usages, memberId)) {
            m_usages->Delete(usage->Property_Usage_ID);
            ++removed;
        }
        m_pMembers->Delete(memberId);
    }
    return removed;
}

// ---- configuration options --------------------------------------------------------------

ULONG CPropertyMgr::InsertConfigurationOption(const CString& name, const CString& description) {
    return InsertNamed(*m_options, name, description);
}

ULONG CPropertyMgr::GetConfigurationOptionId(const CString& name) const {
    return KeyOf<CEnhConfigurationOptionTbl>(m_options->GetRowByName(name.View()));
}

int CPropertyMgr::DeleteConfigurationOption(ULONG optionId) {
    if (!m_options->GetRow(optionId)) return 0;
    for (ULONG key : KeysWhere(*m_configurations,
                               &CKelMetaTableConfiguration::Configuration_Option_ID, optionId))
        m_configurations->Delete(key);
    return m_options->Delete(optionId);
}

CKelMetaTableConfiguration* CPropertyMgr::FindOption(ULONG metaTableKey, ULONG optionId) const {
    return FindUnder(*m_configurations, metaTableKey,
                     &CKelMetaTableConfiguration::Configuration_Option_ID, optionId);
}

int CPropertyMgr::SetMetaTableOption(ULONG metaTableKey, ULONG optionId, const CString& value) {
    if (!m_pMetaTables->GetRow(metaTableKey) || !m_options->GetRow(optionId)) return 0;
    if (CKelMetaTableConfiguration* row = FindOption(metaTableKey, optionId)) {
        row->Value = value;
        return 1;
    }
    auto row = std::make_unique<CKelMetaTableConfiguration>();
    row->MetaTable_ID = metaTableKey;
    row->Configuration_Option_ID = optionId;
    row->Value = value;
    m_configurations->Insert(std::move(row));
    return 1;
}

int CPropertyMgr::GetMetaTableOption(ULONG metaTableKey, ULONG optionId, CString& out) const {
    const CKelMetaTableConfiguration* row = FindOption(metaTableKey, optionId);
    if (!row) return 0;
    out = row->Value.GetValue();
    return 1;
}

int CPropertyMgr::ClearMetaTableOption(ULONG metaTableKey, ULONG optionId) {
    const CKelMetaTableConfiguration* row = FindOption(metaTableKey, optionId);
    return row ? m_configurations->Delete(row->MetaTableConfiguration_ID) : 0;
}
