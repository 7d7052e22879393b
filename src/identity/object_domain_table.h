// CEnhObjectDomainTable: the object domains of a model, each grouping the objects of
// one diagram or one data dictionary under a name, a type text and a GUID text.
//
// Rows live in the base's row list (load order, then creation order) and in a map
// by domain id (bucket = id mod count; the first row of an id answers). The first
// row whose type is exactly "DIAGRAM" is the model's own domain: new diagram
// objects are filed under it.
//
// The record-store table is the one numbered 69; its name is asked of the file.
// Domain ids come from the file's key allocator (key kind 60).
#pragma once

#include <memory>

#include "foundation/enh_table.h"
#include "identity/id_traits.h"
#include "platform/cmap.h"
#include "platform/cstring.h"
#include "platform/types.h"
#include "zmflib/identity_mgr.h"
#include "zmflib/rows.h"

class CEnhObjectDomainTable;

// One domain: Object_Domain_ID (the key), Name, Domain_Type, GUID (32 digits).
class CKelObjectDomain final : public CEnhRow<CObject_DomainBase, CEnhObjectDomainTable> {};

class CEnhObjectDomainTable : public CEnhTableBase {
  public:
    static constexpr int kTableNumber = 69;
    static constexpr int kKeyKind = 60;

    using IdMap = CMap<ULONG, ULONG, CKelObjectDomain*, CKelObjectDomain*, SIdHashTraits>;

    // Opens table 69 of `file` (which may be null: an empty table without keys).
    explicit CEnhObjectDomainTable(CZmfFile* file);

    using CEnhTableBase::Init;
    // Loads every stored row. The map gets `bucketCount` buckets, or as many as the
    // stored table has rows (at least 1). Call once, right after construction.
    void Init(unsigned int bucketCount) override;

    // Adds a domain with id `key`, or a newly allocated id when `key` is 0.
    // Returns the id (0 when no id could be allocated).
    ULONG Insert(const CString& name, const CString& type, const CString& guid, ULONG key);

    CKelObjectDomain* GetRow(ULONG id) const;
    // The id of the first "DIAGRAM" domain; 0 when there is none.
    ULONG GetModelDomainId() const { return m_nModelDomainId; }

    int GetCount() const { return GetRowCount(); }
    CKelObjectDomain* GetNextRow(POSITION& position) const {
        return static_cast<CKelObjectDomain*>(CEnhTableBase::GetNextRow(position));
    }

    // Rewrites table 69 of `file` from memory, rows in list order. The result of the
    // last insert (1 when there are no rows); 0 when the table cannot be emptied.
    int Save(CZmfFile* file);

    const IdMap& GetIdMap() const { return m_byId; }

  private:
    void Add(std::unique_ptr<CKelObjectDomain> owned);

    IdMap m_byId{10};
    CIdentityMgr* m_pKeys;  // not owned: the file's
    ULONG m_nModelDomainId = 0;
};
