// What the checks of the subsystems share: the reporter and the stored-row walk.
#pragma once

#include <cstddef>
#include <string>
#include <utility>

#include "model/model_check.h"
#include "model/model_check_ids.h"
#include "zmflib/iterators.h"
#include "zmflib/rows.h"

namespace tessmeta {

constexpr int kCheckKindCount = static_cast<int>(ECheckKind::kCheckKindCount);

// Counts every finding and keeps the details of the first `limit` of each kind.
class CReporter {
  public:
    CReporter(SCheckReport& report, std::size_t limit) : m_report(report), m_limit(limit) {}

    void Add(ECheckKind kind, const char* table, std::string detail) {
        std::size_t& count = m_report.counts[static_cast<int>(kind)];
        if (count++ < m_limit) m_report.findings.push_back({kind, table, std::move(detail)});
    }

  private:
    SCheckReport& m_report;
    std::size_t m_limit;
};

// Calls visit(row) for every stored row of `table`, in stored order.
template <class Row, class Visit>
void ForEachRow(CZmfFile& file, const char* table, Visit&& visit) {
    CTableBase* handle = file.GetTable(table);
    CIteratorBase it(handle);
    Row row;
    while (it.GetNext(&row))
        visit(static_cast<const Row&>(row));
    file.ReleaseTable(&handle, 0);
}

// The checks of the data dictionary and its bindings.
void CheckDictionary(CZmfFile& file, CReporter& out);
// The checks of the repository bookkeeping; `objects` holds every unique object id.
void CheckRepository(CZmfFile& file, const CIdSet& objects, CReporter& out);

}  // namespace tessmeta
