// The tables of user-defined properties, each an in-memory table on the shared
// pattern (foundation/enh_table.h). The property manager (property_mgr.h) owns
// them and keeps them consistent; what each row means:
//
//   Property_Type         a category of properties (Name, Description)
//   Property              a property: its type, Name, Description, Data_Type
//                         (EPropertyDataType)
//   Property_Value        one allowed value of a property (Property_ID, Value)
//   MetaClass             a class of model objects (Name, Description)
//   Valid_MetaClass       a meta table that belongs to a class (MetaClass_ID,
//                         MetaTable_ID)
//   Valid_Property        a property is valid for a class (MetaClass_ID, Property_ID)
//   Valid_Property_Value  on that class only these allowed values apply
//                         (Valid_Property_ID, Property_Value_ID)
//   Configuration_Option  a named option that meta tables can set (Name, Description)
//   MetaTableConfiguration  a meta table's value of an option (MetaTable_ID,
//                         Configuration_Option_ID, Value)
//   Property_Usage        a property's value on a model object: the object's
//                         meta-class member, the property and the Value text; each
//                         usage is a unique object of type "Property Usage"
//
// Keys of new rows come from the file's key allocator. The foreign key of each table
// is the first id column listed after the name above. Tables with a Name find rows by
// name without regard to case (the first loaded answers when two share a name).
#pragma once

#include <memory>
#include <string_view>
#include <utility>

#include "foundation/enh_table.h"
#include "namespace/name_space_maps.h"
#include "platform/cmap.h"
#include "platform/cstring.h"
#include "platform/types.h"
#include "zmflib/rows.h"

// A definition table: rows added and changed whole by the property manager.
template <class Traits>
class CEnhDefinitionTable : public CEnhTable<Traits> {
  public:
    using Row = typename Traits::Row;
    using CEnhTable<Traits>::CEnhTable;

    // Adds a filled row with a new key (and a new unique object when the table has
    // a unique-object column, a type and a CGuidMgr); returns the key.
    ULONG Insert(std::unique_ptr<Row> row) { return this->InsertIds(std::move(row), 0); }
    // Changes columns of row `key` through `assign(Row&)`; 0 when there is no such row.
    template <class Assign>
    int Update(ULONG key, Assign&& assign) {
        return this->UpdateRow(key, std::forward<Assign>(assign));
    }
};

struct SNoCaseNameTraits {
    static constexpr bool kGrow = true;
    static UINT Hash(std::string_view name) { return tessmeta::HashTextNoCase(name); }
    static bool Equal(const std::string_view& stored, std::string_view name) {
        return tessmeta::EqualNoCase(stored, name);
    }
};

// A definition table whose rows have a Name, found without regard to case.
template <class Traits>
class CEnhNamedTable : public CEnhDefinitionTable<Traits> {
  public:
    using Row = typename Traits::Row;
    using CEnhDefinitionTable<Traits>::CEnhDefinitionTable;

    // The row named `name` (any case), or null.
    Row* GetRowByName(std::string_view name) const {
        Row* row = nullptr;
        return m_byName.Lookup(name, row) ? row : nullptr;
    }

  protected:
    void AddToExtraIndexes(Row* row) override {
        Row*& mapped = m_byName[NameOf(row)];
        if (!mapped) mapped = row;
    }
    void RemoveFromExtraIndexes(Row* row) override {
        Row* mapped = nullptr;
        if (m_byName.Lookup(NameOf(row), mapped) && mapped == row) m_byName.RemoveKey(NameOf(row));
    }
    void SizeExtraIndexes(UINT bucketCount) override { m_byName.InitHashTable(bucketCount, TRUE); }

  private:
    static std::string_view NameOf(const Row* row) { return row->Name.GetValue().View(); }

    // Keys view the rows' own Name texts.
    CMap<std::string_view, std::string_view, Row*, Row*, SNoCaseNameTraits> m_byName{10};
};

class CEnhPropertyTypeTbl;
class CKelPropertyType final : public CEnhRow<CProperty_TypeBase, CEnhPropertyTypeTbl> {};
struct SPropertyTypeTraits : CEnhTableTraits<CKelPropertyType> {};
class CEnhPropertyTypeTbl : public CEnhNamedTable<SPropertyTypeTraits> {
  public:
    using CEnhNamedTable::CEnhNamedTable;
};

class CEnhPropertyTbl;
class CKelProperty final : public CEnhRow<CPropertyBase, CEnhPropertyTbl> {};
struct SPropertyTraits : CEnhTableTraits<CKelProperty> {
    static constexpr DWORD Row::*kForeignKey = &Row::Property_Type_ID;
};
class CEnhPropertyTbl : public CEnhNamedTable<SPropertyTraits> {
  public:
    using CEnhNamedTable::CEnhNamedTable;
};

class CEnhPropertyValueTbl;
class CKelPropertyValue final : public CEnhRow<CProperty_ValueBase, CEnhPropertyValueTbl> {};
struct SPropertyValueTraits : CEnhTableTraits<CKelPropertyValue> {
    static constexpr DWORD Row::*kForeignKey = &Row::Property_ID;
};
class CEnhPropertyValueTbl : public CEnhDefinitionTable<SPropertyValueTraits> {
  public:
    using CEnhDefinitionTable::CEnhDefinitionTable;
};

class CEnhMetaClassTbl;
class CKelMetaClass final : public CEnhRow<CMetaClassBase, CEnhMetaClassTbl> {};
struct SMetaClassTraits : CEnhTableTraits<CKelMetaClass> {};
class CEnhMetaClassTbl : public CEnhNamedTable<SMetaClassTraits> {
  public:
    using CEnhNamedTable::CEnhNamedTable;
};

class CEnhValidMetaClassTbl;
class CKelValidMetaClass final : public CEnhRow<CValid_MetaClassBase, CEnhValidMetaClassTbl> {};
struct SValidMetaClassTraits : CEnhTableTraits<CKelValidMetaClass> {
    static constexpr DWORD Row::*kForeignKey = &Row::MetaClass_ID;
};
class CEnhValidMetaClassTbl : public CEnhDefinitionTable<SValidMetaClassTraits> {
  public:
    using CEnhDefinitionTable::CEnhDefinitionTable;
};

class CEnhValidPropertyTbl;
class CKelValidProperty final : public CEnhRow<CValid_PropertyBase, CEnhValidPropertyTbl> {};
struct SValidPropertyTraits : CEnhTableTraits<CKelValidProperty> {
    static constexpr DWORD Row::*kForeignKey = &Row::Property_ID;
};
class CEnhValidPropertyTbl : public CEnhDefinitionTable<SValidPropertyTraits> {
  public:
    using CEnhDefinitionTable::CEnhDefinitionTable;
};

class CEnhValidPropertyValueTbl;
class CKelValidPropertyValue final
    : public CEnhRow<CValid_Property_ValueBase, CEnhValidPropertyValueTbl> {};
struct SValidPropertyValueTraits : CEnhTableTraits<CKelValidPropertyValue> {
    static constexpr DWORD Row::*kForeignKey = &Row::Valid_Property_ID;
};
class CEnhValidPropertyValueTbl : public CEnhDefinitionTable<SValidPropertyValueTraits> {
  public:
    using CEnhDefinitionTable::CEnhDefinitionTable;
};

class CEnhConfigurationOptionTbl;
class CKelConfigurationOption final
    : public CEnhRow<CConfiguration_OptionBase, CEnhConfigurationOptionTbl> {};
struct SConfigurationOptionTraits : CEnhTableTraits<CKelConfigurationOption> {};
class CEnhConfigurationOptionTbl : public CEnhNamedTable<SConfigurationOptionTraits> {
  public:
    using CEnhNamedTable::CEnhNamedTable;
};

class CEnhMetaTableConfigurationTbl;
class CKelMetaTableConfiguration final
    : public CEnhRow<CMetaTableConfigurationBase, CEnhMetaTableConfigurationTbl> {};
struct SMetaTableConfigurationTraits : CEnhTableTraits<CKelMetaTableConfiguration> {
    static constexpr DWORD Row::*kForeignKey = &Row::MetaTable_ID;
};
class CEnhMetaTableConfigurationTbl : public CEnhDefinitionTable<SMetaTableConfigurationTraits> {
  public:
    using CEnhDefinitionTable::CEnhDefinitionTable;
};

class CEnhPropertyUsageTbl;
class CKelPropertyUsage final : public CEnhRow<CProperty_UsageBase, CEnhPropertyUsageTbl> {};
struct SPropertyUsageTraits : CEnhTableTraits<CKelPropertyUsage> {
    static constexpr DWORD Row::*kForeignKey = &Row::MetaClass_Member_ID;
    static constexpr const char* kObjectType = "Property Usage";
};
class CEnhPropertyUsageTbl : public CEnhDefinitionTable<SPropertyUsageTraits> {
  public:
    using CEnhDefinitionTable::CEnhDefinitionTable;

    // A new usage; its unique object has model and plex ids 0. Returns its key.
    ULONG Insert(ULONG memberId, ULONG propertyId, const CString& value) {
        auto row = std::make_unique<CKelPropertyUsage>();
        row->MetaClass_Member_ID = memberId;
        row->Property_ID = propertyId;
        row->Value = value;
        if (GetIdentity())
            row->Global_User_ID =
                static_cast<DWORD>(GetIdentity()->GetNewUniqueId(GetObjectTypeId(), 0, 0, 0));
        return CEnhDefinitionTable::Insert(std::move(row));
    }
};
