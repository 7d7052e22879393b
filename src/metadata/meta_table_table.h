// CEnhMetaTableTbl: the kinds of model table that properties can be attached to
// ("MetaTable"), one row per kind with its key and its name.
//
// Every model has a row for each of the 28 names of AltKeyNames: Init adds the
// names a file lacks, with new keys, after loading. A name's position in the list
// is its enumeration value (EAltKey), which GetTechKey turns into the row's key and
// GetStringEnum turns back. Rows are found by key (the key map) and by exact,
// case-sensitive name; when two rows share a key or a name, the first loaded
// answers.
#pragma once

#include <string_view>

#include "foundation/enh_table.h"
#include "platform/cmap.h"
#include "platform/cstring.h"
#include "platform/types.h"
#include "zmflib/rows.h"

class CEnhMetaTableTbl;

// One kind of model table: MetaTable_ID (the key) and Name.
class CKelMetaTable final : public CEnhRow<CMetaTableBase, CEnhMetaTableTbl> {};

struct SMetaTableTraits : CEnhTableTraits<CKelMetaTable> {};

struct SMetaTableNameTraits {
    static constexpr bool kGrow = true;
    static UINT Hash(std::string_view name) { return CMapHashText(name); }
    static bool Equal(const std::string_view& stored, std::string_view name) {
        return stored == name;
    }
};

class CEnhMetaTableTbl : public CEnhTable<SMetaTableTraits> {
  public:
    // The enumeration values of the names of AltKeyNames.
    enum EAltKey {
        Entity,
        Indexes,
        Attribute,
        View,
        Procedure,
        Trigger,
        Package,
        DictionaryTrigger,
        StorageObject,
        Model,
        ForeignKey,
        Diagram,
        Submodel,
        Supertype,
        TemplatedProcedure,
        Default,
        Rule,
        UserDatatype,
        Domain,
        ReferenceValue,
        DataDictionary,
        EntityDisplay,
        ViewDisplay,
        ViewField,
        RelationshipDisplay,
        ViewRelationshipDisplay,
        SupertypeDisplay,
        GraphicObject,
    };
    static constexpr int NumAltKeys = 28;
    static const char* const AltKeyNames[NumAltKeys];

    using NameMap = CMap<std::string_view, std::string_view, CKelMetaTable*, CKelMetaTable*,
                         SMetaTableNameTraits>;

    // Opens the file's "MetaTable" table (borrowed; may be null for an empty one).
    explicit CEnhMetaTableTbl(CZmfFile* file);

    // Loads every stored row, then adds a row for each name of AltKeyNames that no
    // row has, in list order, with a new key.
    using CEnhTable::Init;
    void Init(unsigned int bucketCount) override;

    // The key of the row named AltKeyNames[value]; 0 for a value outside 0..27.
    ULONG GetTechKey(int value) const;
    // The position in AltKeyNames of the name of row `key`; -1 for an unknown key or
    // a name not in the list.
    int GetStringEnum(ULONG key) const;

    using CEnhTable::GetRow;
    CKelMetaTable* GetRow(const CString& name) const { return GetRow(name.View()); }
    CKelMetaTable* GetRow(std::string_view name) const;

    const NameMap& GetNameMap() const { return m_byName; }

  protected:
    void AddToExtraIndexes(CKelMetaTable* row) override;
    void RemoveFromExtraIndexes(CKelMetaTable* row) override;
    void SizeExtraIndexes(UINT bucketCount) override;

  private:
    void InitTable();

    NameMap m_byName{10};  // keys view the rows' own Name texts
};
