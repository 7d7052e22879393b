#include "schema/schema_object_mgr.h"

namespace {

template <class Table>
std::unique_ptr<Table> Open(CNameSpaceMgr* names, CGuidMgr* guids, CZmfFile* file) {
    return std::make_unique<Table>(names, file ? file->GetIdentityMgr() : nullptr, guids, file);
}

}  // namespace

CSchemaObjectMgr::CSchemaObjectMgr(CNameSpaceMgr* names, CGuidMgr* guids, CZmfFile* file)
    : m_storageObjects(Open<CEnhStorageObjectTable>(names, guids, file)),
      m_procs(Open<CEnhProcTable>(names, guids, file)),
      m_packages(Open<CEnhDbPackageTable>(names, guids, file)),
      m_triggers(Open<CEnhDbTriggerTable>(names, guids, file)),
      m_templatedProcs(Open<CEnhTemplatedProcTable>(names, guids, file)) {}

CSchemaObjectMgr::~CSchemaObjectMgr() = default;

int CSchemaObjectMgr::Init(unsigned int bucketCount) {
    ForEachTable([&](CEnhTableBase& table) { table.Init(bucketCount); });
    return 1;
}

int CSchemaObjectMgr::Save(CZmfFile* file) {
    int result = 1;
    ForEachTable([&](auto& table) {
        if (!table.Save(file)) result = 0;
    });
    return result;
}

void CSchemaObjectMgr::ReleaseStorageTables(int flag) {
    ForEachTable([&](CEnhTableBase& table) { ReleaseSavedTable(table, flag); });
}

int CSchemaObjectMgr::DeleteModelObjects(ULONG modelId) {
    const int before = GetCount();
    ForEachTable([&](auto& table) { table.DeleteAllFKRows(modelId); });
    return before - GetCount();
}

int CSchemaObjectMgr::GetCount() const {
    int count = 0;
    ForEachTable([&](const CEnhTableBase& table) { count += table.GetRowCount(); });
    return count;
}
