// CRefObjectMgr: the references of one open model.
//
// It owns two tables:
//   - the bound dictionary objects (CEnhBoundDictObjectTbl): which model object uses
//     which dictionary item, with an optional value override; the data dictionary
//     reads them to compare items and removes them when items go;
//   - the referenced objects (CEnhReferencedObjectTbl): which objects of other
//     tables a model refers to.
// Life cycle as every manager: construct (tables open their record-store tables),
// Init once, work in memory, Save into the file being written, ReleaseStorageTables.
#pragma once

#include <memory>

#include "identity/guid_mgr.h"
#include "namespace/name_space_mgr.h"
#include "platform/cstring.h"
#include "platform/types.h"
#include "references/bound_dict_object_table.h"
#include "references/referenced_object_table.h"
#include "zmflib/zmf_file.h"

class CRefObjectMgr {
  public:
    // All pointers borrowed; `names` and `guids` may be null.
    CRefObjectMgr(CNameSpaceMgr* names, CGuidMgr* guids, CZmfFile* file);
    ~CRefObjectMgr();
    CRefObjectMgr(const CRefObjectMgr&) = delete;
    CRefObjectMgr& operator=(const CRefObjectMgr&) = delete;

    // Loads both tables. Always 1.
    int Init();
    // Writes the referenced objects, then the bindings. 1 when both were written.
    int Save(CZmfFile* file);
    void ReleaseStorageTables();

    CEnhBoundDictObjectTbl* GetBoundDictObjectTable() const { return m_pBound.get(); }
    CEnhReferencedObjectTbl* GetReferencedObjectTable() const { return m_pReferenced.get(); }

    // Binds item `dictObjectId` to model object `objectId` of meta table
    // `metaTableKey`, with an override text (empty: none). Returns the binding's key.
    DWORD InsertBoundDictObject(DWORD dictObjectId, DWORD metaTableKey, DWORD objectId,
                                const CString& valueOverride);
    // FALSE for an unknown key.
    BOOL DeleteBoundDictObject(DWORD key);

    // Records that model `modelId` refers to object `objectId` of meta table
    // `metaTableId`. Returns the reference's key.
    DWORD InsertReferencedObject(DWORD modelId, DWORD objectId, DWORD metaTableId);
    // FALSE for an unknown key.
    BOOL DeleteReferencedObject(DWORD key);

    // A model object goes: its bindings and the references to it go too. Returns how
    // many rows went.
    int DeleteObjectReferences(DWORD objectId);

  private:
    std::unique_ptr<CEnhReferencedObjectTbl> m_pReferenced;
    std::unique_ptr<CEnhBoundDictObjectTbl> m_pBound;
    CZmfFile* m_pFile;  // not owned; the file loaded or last saved to
};
