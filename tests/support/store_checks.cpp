#include "support/store_checks.h"

#include <gtest/gtest.h>

#include "support/row_values.h"

namespace tessmeta::test {

std::unique_ptr<CZmfFile> OpenOk(const std::string& path) {
    std::string error;
    auto file = CZmfFile::Open(path, &error);
    EXPECT_TRUE(file) << error;
    return file;
}

std::string OpenError(const std::string& path) {
    std::string error;
    auto file = CZmfFile::Open(path, &error);
    EXPECT_FALSE(file);
    return error;
}

void SaveObjects(CZmfFile& file, ULONG count, ULONG offset) {
    CTableBase* t = file.GetEmptyTable("UniqueObject");
    ASSERT_NE(t, nullptr) << file.GetLastError();
    t->SetSizeEstimate(static_cast<LONG>(count));
    for (ULONG k = 1; k <= count; ++k) {
        CUniqueObjectBase row(k);
        row.Model_ID = k + offset;
        row.Object_GUID = "0123456789abcdef0123456789abcdef";
        ASSERT_EQ(t->Insert(&row), 1);
    }
    ASSERT_TRUE(file.Commit()) << file.GetLastError();
}

void ExpectObjects(const std::string& path, ULONG count, ULONG offset) {
    auto file = OpenOk(path);
    ASSERT_TRUE(file);
    CUniqueObjectIterator it(file->GetTable("UniqueObject"));
    CUniqueObjectBase row;
    ULONG n = 0;
    while (it.GetNext(&row)) {
        ++n;
        ASSERT_EQ(row.Unique_Object_ID, n);
        ASSERT_EQ(row.Model_ID, n + offset);
    }
    EXPECT_EQ(n, count);
    EXPECT_FALSE(file->HasError()) << file->GetLastError();
}

std::string StoreDifference(CZmfFile& a, CZmfFile& b) {
    if (a.GetFormatVersion() != b.GetFormatVersion())
        return "format version " + std::to_string(a.GetFormatVersion()) + " vs " +
               std::to_string(b.GetFormatVersion());
    std::string difference;
    a.GetIdentityMgr()->ForEachCounter([&](int kind, ULONG value) {
        if (difference.empty() && b.GetIdentityMgr()->GetKeyValue(kind) != value)
            difference = "key counter " + std::to_string(kind);
    });
    b.GetIdentityMgr()->ForEachCounter([&](int kind, ULONG value) {
        if (difference.empty() && a.GetIdentityMgr()->GetKeyValue(kind) != value)
            difference = "key counter " + std::to_string(kind);
    });
    if (!difference.empty()) return difference;
    for (const SZmfTableDesc* desc : zmf::AllTables()) {
        CIteratorBase left(a.GetTable(desc->name)), right(b.GetTable(desc->name));
        std::unique_ptr<CDbObjectBase> l(desc->createRow()), r(desc->createRow());
        for (std::size_t n = 1;; ++n) {
            const int gotLeft = left.GetNext(l.get()), gotRight = right.GetNext(r.get());
            if (!gotLeft && !gotRight) break;
            if (gotLeft != gotRight)
                return std::string(desc->name) + ": row counts differ after row " +
                       std::to_string(n - 1);
            if (RowText(*desc, *l) != RowText(*desc, *r))
                return std::string(desc->name) + " row " + std::to_string(n) + ": " +
                       RowText(*desc, *l) + " vs " + RowText(*desc, *r);
        }
    }
    if (a.HasError() || b.HasError()) return a.GetLastError() + b.GetLastError();
    return "";
}

}  // namespace tessmeta::test
