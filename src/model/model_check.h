// Integrity check of a model file, made on the stored tables themselves so that it
// works on files the managers would refuse or repair.
#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "zmflib/iterators.h"
#include "zmflib/zmf_file.h"

namespace tessmeta {

enum class ECheckKind {
    StoreDamage,              // the database itself is damaged
    UsageWithoutString,       // a string usage names a string id that does not exist
    UsageWithoutUsageType,    // ... a usage type that does not exist
    UsageWithoutObject,       // ... an object that is not a unique object
    ObjectWithUnknownType,    // a unique object's type is not in "ObjectDefinition"
    ObjectWithUnknownDomain,  // a unique object's domain id names no domain
    DuplicateKey,             // two rows of one table share a key
    PurgeableString,          // a string no usage keeps: a purging save drops it (not an error)
    AlgorithmPropertyWithoutSubmodelAlgorithm,  // a layout parameter value's submodel
                                                // algorithm does not exist
    AlgorithmPropertyWithoutName,               // ... its parameter name does not exist
    AlgorithmPropertyWithoutDataType,           // ... its data type does not exist
    ViewRowWithoutView,                         // a row of a view's metadata names no view
    KindCount                                   // keep last: the number of kinds
};

// The stable, lower-case name of a kind ("usage-without-string", ...).
const char* CheckKindName(ECheckKind kind);

struct SCheckFinding {
    ECheckKind kind;
    std::string table;   // the table the finding is about
    std::string detail;  // e.g. "usage 12: string 40 does not exist"
};

struct SCheckReport {
    std::vector<SCheckFinding> findings;  // at most `detailLimit` per kind
    std::size_t counts[static_cast<std::size_t>(ECheckKind::KindCount)] = {};  // by kind

    std::size_t Count(ECheckKind kind) const { return counts[static_cast<int>(kind)]; }
    // Everything but purgeable strings.
    std::size_t ErrorCount() const;
};

// Checks every table of the file. Keeps the details of at most `detailLimit`
// findings of each kind (all are counted).
SCheckReport CheckModelFile(CZmfFile& file, std::size_t detailLimit = 20);

// ---- for the checks of each subsystem ---------------------------------------------

// Adds findings to a report: every one is counted, the details of at most `limit`
// of each kind are kept.
class CCheckReporter {
  public:
    CCheckReporter(SCheckReport& report, std::size_t limit) : m_report(report), m_limit(limit) {}

    void Add(ECheckKind kind, const char* table, std::string detail) {
        std::size_t& count = m_report.counts[static_cast<int>(kind)];
        if (count++ < m_limit) m_report.findings.push_back({kind, table, std::move(detail)});
    }

  private:
    SCheckReport& m_report;
    std::size_t m_limit;
};

// Calls visit(row) for every stored row of `table` (absent: none), in stored order.
template <class Row, class Iterator, class Visit>
void ForEachStoredRow(CZmfFile& file, const char* table, Visit&& visit) {
    CTableBase* handle = file.GetTable(table);
    Iterator it(handle);
    Row row;
    while (it.GetNext(&row))
        visit(static_cast<const Row&>(row));
    file.ReleaseTable(&handle, 0);
}

}  // namespace tessmeta
