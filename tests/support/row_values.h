// Fills rows of any catalogue table with values derived from a seed, and renders
// rows as text, so that tests can cover every table generically.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "zmflib.h"

namespace tessmeta::test {

// A new row of the table whose every column depends on `seed` (key = `key`).
// Texts vary in length (some empty, some of 300 bytes); dates cycle through the
// valid, null and invalid statuses.
std::unique_ptr<CDbObjectBase> MakeRow(const SZmfTableDesc& desc, ULONG key, int seed);

// Every column of the row, as "name=value|..." text, for exact comparisons.
std::string RowText(const SZmfTableDesc& desc, const CDbObjectBase& row);

// Every stored row of table `name`, in stored order.
template <class Row>
std::vector<Row> ReadAll(CZmfFile& file, const char* name) {
    std::vector<Row> rows;
    CTableBase* table = file.GetTable(name);
    CIteratorBase it(table);
    Row row;
    while (it.GetNext(&row))
        rows.push_back(row);
    file.ReleaseTable(&table, 0);
    return rows;
}

// Replaces the stored rows of table `name` and commits; false when any step fails.
template <class Row>
bool Store(CZmfFile& file, const char* name, const std::vector<Row>& rows) {
    CTableBase* table = file.GetEmptyTable(name);
    bool ok = table != nullptr;
    for (const Row& row : rows)
        ok = ok && table->Insert(&row) != 0;
    return ok && file.Commit();
}

}  // namespace tessmeta::test
