// CEnhObjectDefinitionTable: the model file's meta-classes ("ObjectDefinition"), one
// row per object type with its id and its name.
//
// Object type ids are not constants of the program: each model file numbers its
// meta-classes itself, and the library learns the ids by name at load. The table
// answers both directions with a hash map each: by id (the enhanced table's key
// map, bucket = id mod count) and by name (the framework's text hash, exact
// case-sensitive match). When two rows share an id or a name, the first loaded
// answers.
//
// The name map refers to each row's own name text, so a row's Name must not be
// reassigned while the row is in the table.
#pragma once

#include <string_view>

#include "foundation/enh_indexes.h"
#include "foundation/enh_table.h"
#include "platform/cstring.h"
#include "platform/types.h"
#include "zmflib/rows.h"

class CEnhObjectDefinitionTable;

// One meta-class: Object_Type_ID (the key) and Name.
class CKelObjectDefinition final
    : public CEnhRow<CObjectDefinitionBase, CEnhObjectDefinitionTable> {};

struct SObjectDefinitionTraits : CEnhTableTraits<CKelObjectDefinition> {};

class CEnhObjectDefinitionTable : public CEnhTable<SObjectDefinitionTraits> {
  public:
    static std::string_view NameOf(const CKelObjectDefinition& row) {
        return row.Name.GetValue().View();
    }
    using NameIndex = CEnhTextKeyIndex<CKelObjectDefinition, &NameOf>;

    // Opens the file's "ObjectDefinition" table; keys are declared to the file's
    // key allocator. `file` may be null (an empty table).
    explicit CEnhObjectDefinitionTable(CZmfFile* file);

    // The id of the meta-class named exactly `name`; 0 when the model has none.
    int GetObjectTypeId(std::string_view name) const;
    // Puts the name of type `typeId` into `name` and returns 1; 0 (name untouched)
    // for an unknown id.
    int GetObjectTypeString(int typeId, CString& name) const;

    // Adds a meta-class; `typeId` 0 allocates one. Returns the id. A model built
    // from scratch registers its meta-classes this way before CGuidMgr::Init.
    ULONG Insert(const CString& name, ULONG typeId);

    const NameIndex& GetNameIndex() const { return m_byName; }

  protected:
    void AddToExtraIndexes(CKelObjectDefinition* row) override;
    void RemoveFromExtraIndexes(CKelObjectDefinition* row) override;
    void SizeExtraIndexes(UINT bucketCount) override;

  private:
    NameIndex m_byName;  // keys view the rows' own Name texts
};
