// String usage types: the roles in which objects use strings ("Entity Name", ...).
//
// "StringUsageType" rows hold (usage type id, name, a second text that the library
// writes empty). Ids come from the table's own counter, raised at load past every id
// loaded. After loading, every built-in name (usage_types.h) that is missing is
// added in list order, so a new model file numbers them 1 to 121 and an older one
// keeps its ids and numbers the missing names after its largest id.
#pragma once

#include <string_view>

#include "foundation/enh_table.h"
#include "namespace/name_space_maps.h"
#include "platform/cstring.h"
#include "platform/types.h"
#include "zmflib/rows.h"
#include "zmflib/zmf_file.h"

class CEnhStringUsageTypeTable;

class CKelStringUsageType final : public CEnhRow<CStringUsageTypeBase, CEnhStringUsageTypeTable> {};

struct SStringUsageTypeTraits : CEnhTableTraits<CKelStringUsageType> {
    static constexpr EEnhKeySource kKeySource = EEnhKeySource::OwnCounter;
};

class CEnhStringUsageTypeTable : public CEnhTable<SStringUsageTypeTraits> {
  public:
    using NameKey = tessmeta::CNameSpaceTextKey<CKelStringUsageType, &CKelStringUsageType::Name>;
    using NameMap = tessmeta::CNameSpaceRowMap<CKelStringUsageType, NameKey>;

    // Opens "StringUsageType" of `file` (borrowed).
    explicit CEnhStringUsageTypeTable(CZmfFile* file);

    // Loads every row, then adds the missing built-in names.
    using CEnhTable::Init;
    void Init(unsigned int bucketCount) override;

    // The id of the usage type named exactly `name` (the one added last, should the
    // file hold the name twice), or 0.
    DWORD GetUsageTypeId(std::string_view name) const;
    // Adds a usage type with an empty second text; returns its new id.
    DWORD AddUsageType(std::string_view name);

    // Rewrites "StringUsageType" in list order, guarded.
    int Save(CZmfFile* file) { return SaveGuarded(file); }

    const NameMap& GetNameMap() const { return m_byName; }

  protected:
    void AddToExtraIndexes(CKelStringUsageType* row) override { m_byName.Add(row); }
    void RemoveFromExtraIndexes(CKelStringUsageType* row) override { m_byName.Remove(row); }
    void SizeExtraIndexes(UINT bucketCount) override { m_byName.InitHashTable(bucketCount); }

  private:
    NameMap m_byName;
};
