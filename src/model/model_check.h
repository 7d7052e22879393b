// Integrity check of a model file, made on the stored tables themselves so that it
// works on files the managers would refuse or repair.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

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
    MemberWithoutMetaTable,   // a meta-class member's meta table does not exist
    PropertyValueWithoutProperty,  // an allowed value or an object's value names no property
    CodeObjectWithoutModel,        // a code object's model is not a unique object
    Count                          // the number of kinds; keep last
};

constexpr int kCheckKindCount = static_cast<int>(ECheckKind::Count);

// The stable, lower-case name of a kind ("usage-without-string", ...).
const char* CheckKindName(ECheckKind kind);

struct SCheckFinding {
    ECheckKind kind;
    std::string table;   // the table the finding is about
    std::string detail;  // e.g. "usage 12: string 40 does not exist"
};

struct SCheckReport {
    std::vector<SCheckFinding> findings;       // at most `detailLimit` per kind
    std::size_t counts[kCheckKindCount] = {};  // every finding, by kind (ECheckKind order)

    std::size_t Count(ECheckKind kind) const { return counts[static_cast<int>(kind)]; }
    // Everything but purgeable strings.
    std::size_t ErrorCount() const;
};

// Checks every table of the file. Keeps the details of at most `detailLimit`
// findings of each kind (all are counted).
SCheckReport CheckModelFile(CZmfFile& file, std::size_t detailLimit = 20);

}  // namespace tessmeta
