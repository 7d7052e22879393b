// CPropertyMgr: user-defined properties of model objects.
//
// What a user does with them:
//   - defines property types (categories) and properties, each property with a data
//     type (property_data_type.h) and, optionally, a list of allowed values;
//   - declares for which classes of model object a property is valid. A class
//     (MetaClass) covers one or more meta tables; SetPropertyValidForTable uses the
//     class named after a meta table, made on first use. A declaration may narrow the
//     allowed values for its class (RestrictAllowedValue);
//   - sets, reads, lists and clears the values of properties on model objects. An
//     object is named by its meta table's key and its row id in that table; its
//     values hang off its meta-class member, which InsertProperty creates when the
//     object has none, named after the kind of object ("Table" for entities,
//     "Index", "View", "Model", "Attribute"; the meta table's own name otherwise);
//   - gives meta tables values of named configuration options.
//
// Rules.
//   - A value is accepted when it is a text of the property's data type, the
//     property is valid for the object's meta table through some class, and, where
//     allowed values apply, it is one of them (byte for byte). Allowed values apply
//     through a declaration that restricts them (its own list), else through the
//     property's list, if it has one; a value passes when any declaration covering
//     the meta table lets it pass.
//   - Names of property types, properties, classes and options are unique without
//     regard to case and not empty. An object holds at most one value per property.
//   - Values are checked when they are set. Deleting a definition deletes what hangs
//     off it: a type its properties; a property its values on objects, declarations
//     and allowed values; an allowed value the restrictions naming it; a declaration
//     its restrictions; a class its meta tables and declarations. Other edits of the
//     definitions (removing a declaration or an allowed value, restricting) leave
//     the values on objects alone: a value the definitions no longer accept stays
//     and is listed with `accepted` false until it is set again or cleared.
//   - A member is deleted with its last value.
//
// Results: keys (0 for failure) and 1/0 as elsewhere; setting values and allowed
// values answer an EPropertyResult that says why a value was refused
// (PropertyResultText gives a sentence). Costs: a value is found through the
// object's member (one tree search) and the member's values; validity walks the
// property's declarations and their classes' meta tables. Deleting a property walks
// every value on every object.
#pragma once

#include <memory>
#include <vector>

#include "identity/guid_mgr.h"
#include "metadata/meta_class_member_table.h"
#include "metadata/meta_table_table.h"
#include "metadata/property_data_type.h"
#include "metadata/property_tables.h"
#include "platform/cstring.h"
#include "platform/types.h"
#include "zmflib/zmf_file.h"

enum class EPropertyResult {
    Done,
    NoSuchObject,       // meta table unknown, or table row id 0
    NoSuchProperty,     // no property (or allowed value) with that id
    NotValidForObject,  // no declaration makes the property valid for the object
    WrongDataType,      // the text is not a value of the property's data type
    NotAllowed,         // the value is not among the allowed values that apply
    AlreadyAllowed,     // the property already has that allowed value
};

// "done", "no such object", "no such property", ...; see property_mgr.cpp.
const char* PropertyResultText(EPropertyResult result);

// One property value of an object, as ListProperties reports it.
struct SObjectProperty {
    ULONG usageId = 0;
    ULONG memberId = 0;
    ULONG propertyId = 0;
    CString propertyName;
    CString propertyTypeName;
    EPropertyDataType dataType = EPropertyDataType::Text;
    CString value;
    bool accepted = true;  // whether the definitions accept the value today
};

class CPropertyMgr {
  public:
    // Opens the property tables of `file`. All pointers are borrowed and must outlive
    // the manager: `metaTables` and `members` are the model's meta-table and member
    // tables, loaded before Init; `guids` may be null (no unique objects then).
    CPropertyMgr(CZmfFile* file, CGuidMgr* guids, CEnhMetaTableTbl* metaTables,
                 CEnhMetaClassMemberTbl* members);
    ~CPropertyMgr();
    CPropertyMgr(const CPropertyMgr&) = delete;
    CPropertyMgr& operator=(const CPropertyMgr&) = delete;

    // Loads every table (maps sized by `bucketCount`, 0: the last save's figures).
    int Init(unsigned int bucketCount);
    // Rewrites every table into `file`; 1 when every row was written.
    int Save(CZmfFile* file);
    void ReleaseStorageTables(int flag);

    // ---- property types and properties --------------------------------------------

    // 0 when the name is empty or taken.
    ULONG InsertPropertyType(const CString& name, const CString& description);
    ULONG GetPropertyTypeId(const CString& name) const;
    // Deletes the type and its properties (as DeletePropertyDefinition). 0 if unknown.
    int DeletePropertyType(ULONG typeId);

    // 0 when the type is unknown, the name empty or taken, or the data type unknown.
    ULONG DefineProperty(ULONG typeId, const CString& name, const CString& description,
                         EPropertyDataType dataType);
    ULONG GetPropertyId(const CString& name) const;
    // The property's data type; Text for an unknown id or a code of a newer file.
    EPropertyDataType GetPropertyDataType(ULONG propertyId) const;
    // Deletes the property with its values on objects, its declarations and its
    // allowed values. 0 if unknown.
    int DeletePropertyDefinition(ULONG propertyId);

    // Adds an allowed value (NoSuchProperty, WrongDataType, AlreadyAllowed, Done);
    // `valueId` receives its key when given.
    EPropertyResult AddAllowedValue(ULONG propertyId, const CString& value,
                                    ULONG* valueId = nullptr);
    // Deletes an allowed value and the restrictions naming it. 0 if unknown.
    int DeleteAllowedValue(ULONG valueId);
    // The property's allowed values in the order added.
    std::vector<CString> GetAllowedValues(ULONG propertyId) const;

    // ---- classes and validity -------------------------------------------------------

    // 0 when the name is empty or taken.
    ULONG InsertMetaClass(const CString& name, const CString& description);
    ULONG GetMetaClassId(const CString& name) const;
    // Adds a meta table to a class; the existing row's key when it is in already.
    // 0 when the class or the meta table is unknown.
    ULONG AddMetaClassTable(ULONG metaClassId, ULONG metaTableKey);
    // 0 when the meta table was not in the class.
    int RemoveMetaClassTable(ULONG metaClassId, ULONG metaTableKey);
    // Deletes the class, its meta tables and the declarations for it. 0 if unknown.
    int DeleteMetaClass(ULONG metaClassId);
    // The class named as the meta table, made (or completed) so that it covers it;
    // 0 for an unknown meta table.
    ULONG GetMetaClassForTable(ULONG metaTableKey);

    // Declares the property valid for the class; the existing declaration's key when
    // there is one. 0 when either is unknown.
    ULONG SetPropertyValid(ULONG propertyId, ULONG metaClassId);
    ULONG SetPropertyValidForTable(ULONG propertyId, ULONG metaTableKey);
    // 0 for an unknown declaration.
    int RemovePropertyValidity(ULONG validPropertyId);
    // Narrows the declaration to the given allowed value (one call per value); the
    // existing row's key when already there. 0 when the declaration is unknown or the
    // value is not an allowed value of its property.
    ULONG RestrictAllowedValue(ULONG validPropertyId, ULONG propertyValueId);
    // Whether the property is valid for objects of the meta table.
    bool IsPropertyValidFor(ULONG propertyId, ULONG metaTableKey) const;
    // Whether `value` would be accepted for an object of the meta table.
    EPropertyResult CheckValue(ULONG propertyId, ULONG metaTableKey, const CString& value) const;

    // ---- values on objects -----------------------------------------------------------

    // Sets (or replaces) the property's value on the object; `usageId` receives the
    // value's key when given.
    EPropertyResult InsertProperty(ULONG metaTableKey, ULONG tableRowId, ULONG propertyId,
                                   const CString& value, ULONG* usageId = nullptr);
    // 1 with the value in `out`; 0 (out untouched) when the object has no value.
    int GetProperty(ULONG metaTableKey, ULONG tableRowId, ULONG propertyId, CString& out) const;
    // Removes one value; 0 when there was none.
    int ClearProperty(ULONG metaTableKey, ULONG tableRowId, ULONG propertyId);
    // Every value of the object, member by member, in the order set.
    std::vector<SObjectProperty> ListProperties(ULONG metaTableKey, ULONG tableRowId) const;
    // Removes every value of the object and its members (when the object is
    // deleted). Returns the number of values removed.
    int DeleteObjectProperties(ULONG metaTableKey, ULONG tableRowId);

    // ---- configuration options of meta tables ------------------------------------------

    // 0 when the name is empty or taken.
    ULONG InsertConfigurationOption(const CString& name, const CString& description);
    ULONG GetConfigurationOptionId(const CString& name) const;
    // Deletes the option and every meta table's value of it. 0 if unknown.
    int DeleteConfigurationOption(ULONG optionId);
    // Sets the meta table's value of the option; 0 when either is unknown.
    int SetMetaTableOption(ULONG metaTableKey, ULONG optionId, const CString& value);
    // 1 with the value; 0 (out untouched) when the meta table has no value of it.
    int GetMetaTableOption(ULONG metaTableKey, ULONG optionId, CString& out) const;
    int ClearMetaTableOption(ULONG metaTableKey, ULONG optionId);

    // ---- the tables, for inspection ---------------------------------------------------

    CEnhPropertyTypeTbl& GetPropertyTypeTbl() const { return *m_types; }
    CEnhPropertyTbl& GetPropertyTbl() const { return *m_properties; }
    CEnhPropertyValueTbl& GetPropertyValueTbl() const { return *m_values; }
    CEnhMetaClassTbl& GetMetaClassTbl() const { return *m_classes; }
    CEnhValidMetaClassTbl& GetValidMetaClassTbl() const { return *m_classTables; }
    CEnhValidPropertyTbl& GetValidPropertyTbl() const { return *m_validProperties; }
    CEnhValidPropertyValueTbl& GetValidPropertyValueTbl() const { return *m_validValues; }
    CEnhConfigurationOptionTbl& GetConfigurationOptionTbl() const { return *m_options; }
    CEnhMetaTableConfigurationTbl& GetMetaTableConfigurationTbl() const {
        return *m_configurations;
    }
    CEnhPropertyUsageTbl& GetPropertyUsageTbl() const { return *m_usages; }

  private:
    template <class F>
    void ForEachTable(F&& f);

    // The member rows of an object (first by key order of the walk).
    std::vector<CKelMetaClassMember*> MembersOf(ULONG metaTableKey, ULONG tableRowId) const;
    CKelPropertyUsage* FindUsage(ULONG memberId, ULONG propertyId) const;
    // Deletes a usage, and its member when it was the member's last one.
    void DeleteUsage(ULONG usageKey);
    // The member name InsertProperty gives an object of the meta table.
    CString MemberName(ULONG metaTableKey) const;
    bool ClassCovers(ULONG metaClassId, ULONG metaTableKey) const;
    // Whether the declaration lets `value` pass (its restriction, else the
    // property's list, else anything).
    bool DeclarationAccepts(const CKelValidProperty& declaration, const CString& value) const;
    CKelMetaTableConfiguration* FindOption(ULONG metaTableKey, ULONG optionId) const;

    CEnhMetaTableTbl* m_pMetaTables;     // not owned
    CEnhMetaClassMemberTbl* m_pMembers;  // not owned
    std::unique_ptr<CEnhPropertyTypeTbl> m_types;
    std::unique_ptr<CEnhPropertyTbl> m_properties;
    std::unique_ptr<CEnhPropertyValueTbl> m_values;
    std::unique_ptr<CEnhMetaClassTbl> m_classes;
    std::unique_ptr<CEnhValidMetaClassTbl> m_classTables;
    std::unique_ptr<CEnhValidPropertyTbl> m_validProperties;
    std::unique_ptr<CEnhValidPropertyValueTbl> m_validValues;
    std::unique_ptr<CEnhConfigurationOptionTbl> m_options;
    std::unique_ptr<CEnhMetaTableConfigurationTbl> m_configurations;
    std::unique_ptr<CEnhPropertyUsageTbl> m_usages;
};
