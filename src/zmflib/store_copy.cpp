#include "zmflib/store_copy.h"

#include <memory>

#include "zmflib/db_object.h"
#include "zmflib/iterators.h"

namespace zmf {
namespace {

bool CopyTable(const SZmfTableDesc& desc, CZmfFile& from, CZmfFile& to) {
    CTableBase* source = from.GetTable(desc.name);
    CTableBase* target = to.GetEmptyTable(desc.name);
    bool ok = source && target;
    if (ok && source->HasStoredSizeEstimate()) target->SetSizeEstimate(source->GetSizeEstimate());
    std::unique_ptr<CDbObjectBase> row(desc.createRow());
    for (CIteratorBase it(ok ? source : nullptr); ok && it.GetNext(row.get());)
        ok = target->Insert(row.get()) != 0;
    from.ReleaseTable(&source, 0);
    ok = to.ReleaseTable(&target, 0) && ok;
    return ok && !from.HasError() && !to.HasError();
}

}  // namespace

bool CopyStore(CZmfFile& from, CZmfFile& to, std::string& error) {
    from.ClearError();
    to.ClearError();
    bool ok = true;
    for (const SZmfTableDesc* desc : AllTables())
        if (ok) ok = CopyTable(*desc, from, to);
    if (ok) {
        from.GetIdentityMgr()->ForEachCounter(
            [&](int kind, ULONG value) { to.GetIdentityMgr()->SetKeyValue(kind, value); });
        to.SetFormatVersion(from.GetFormatVersion());
        ok = to.Commit();
    }
    if (ok) return true;
    error = from.HasError() ? from.GetLastError() : to.GetLastError();
    if (error.empty()) error = to.GetPath() + ": cannot save: a row was refused";
    to.Rollback();
    return false;
}

}  // namespace zmf
