// Integrity check of a model file, made on the stored tables themselves so that it
// works on files the managers would refuse or repair.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "zmflib/zmf_file.h"

namespace tessmeta {

// The kinds of finding, each with its stable lower-case name, in report order.
// Subsystems add theirs at the end.
#define TESSMETA_CHECK_KINDS(X)                                                                   \
    /* the database itself is damaged */                                                          \
    X(StoreDamage, "store-damage")                                                                \
    /* a string usage names a string id, a usage type or an object that does not exist */         \
    X(UsageWithoutString, "usage-without-string")                                                 \
    X(UsageWithoutUsageType, "usage-without-usage-type")                                          \
    X(UsageWithoutObject, "usage-without-object")                                                 \
    /* a unique object's type is not in "ObjectDefinition", its domain does not exist */          \
    X(ObjectWithUnknownType, "object-with-unknown-type")                                          \
    X(ObjectWithUnknownDomain, "object-with-unknown-domain")                                      \
    /* two rows of one table share a key */                                                       \
    X(DuplicateKey, "duplicate-key")                                                              \
    /* a string no usage keeps: a purging save drops it (not an error) */                         \
    X(PurgeableString, "purgeable-string")                                                        \
    /* a member's meta table, the property of an allowed value or of an object's value, */        \
    /* or the model of a code object does not exist                                    */         \
    X(MemberWithoutMetaTable, "member-without-meta-table")                                        \
    X(PropertyValueWithoutProperty, "property-value-without-property")                            \
    X(CodeObjectWithoutModel, "code-object-without-model")

enum class ECheckKind {
#define TESSMETA_CHECK_KIND_ENUM(kind, name) kind,
    TESSMETA_CHECK_KINDS(TESSMETA_CHECK_KIND_ENUM)
#undef TESSMETA_CHECK_KIND_ENUM
        kCheckKindCount
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
    std::size_t counts[static_cast<int>(ECheckKind::kCheckKindCount)] = {};  // by kind

    std::size_t Count(ECheckKind kind) const { return counts[static_cast<int>(kind)]; }
    // Everything but purgeable strings.
    std::size_t ErrorCount() const;
};

// Checks every table of the file. Keeps the details of at most `detailLimit`
// findings of each kind (all are counted).
SCheckReport CheckModelFile(CZmfFile& file, std::size_t detailLimit = 20);

}  // namespace tessmeta
