// CSchemaObjectMgr: owns the five code-object tables of a model (code_object_tables.h)
// and loads, saves and releases them together.
#pragma once

#include <memory>

#include "identity/guid_mgr.h"
#include "namespace/name_space_mgr.h"
#include "schema/code_object_tables.h"
#include "zmflib/zmf_file.h"

class CSchemaObjectMgr {
  public:
    // Opens the five tables of `file`. All pointers are borrowed; the name space and
    // the identity manager may be null (see foundation/enh_table.h for what the
    // tables then leave out). Build it after the name space is loaded: the tables
    // look their usage types up by name.
    CSchemaObjectMgr(CNameSpaceMgr* names, CGuidMgr* guids, CZmfFile* file);
    ~CSchemaObjectMgr();
    CSchemaObjectMgr(const CSchemaObjectMgr&) = delete;
    CSchemaObjectMgr& operator=(const CSchemaObjectMgr&) = delete;

    int Init(unsigned int bucketCount);
    // Rewrites the five tables; 1 when every row was written.
    int Save(CZmfFile* file);
    void ReleaseStorageTables(int flag);

    CEnhStorageObjectTable& GetStorageObjectTable() const { return *m_storageObjects; }
    CEnhProcTable& GetProcTable() const { return *m_procs; }
    CEnhDbPackageTable& GetDbPackageTable() const { return *m_packages; }
    CEnhDbTriggerTable& GetDbTriggerTable() const { return *m_triggers; }
    CEnhTemplatedProcTable& GetTemplatedProcTable() const { return *m_templatedProcs; }

    // Deletes every code object of the model (when the model is deleted); returns
    // how many.
    int DeleteModelObjects(ULONG modelId);
    // Code objects in all five tables.
    int GetCount() const;

    // Calls f(table) for each table, in the order above.
    template <class F>
    void ForEachTable(F&& f) const {
        f(*m_storageObjects);
        f(*m_procs);
        f(*m_packages);
        f(*m_triggers);
        f(*m_templatedProcs);
    }

  private:
    std::unique_ptr<CEnhStorageObjectTable> m_storageObjects;
    std::unique_ptr<CEnhProcTable> m_procs;
    std::unique_ptr<CEnhDbPackageTable> m_packages;
    std::unique_ptr<CEnhDbTriggerTable> m_triggers;
    std::unique_ptr<CEnhTemplatedProcTable> m_templatedProcs;
};
