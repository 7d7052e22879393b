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
    /* registry rows whose kind or data dictionary is missing, item rows without a     */         \
    /* registry row, bindings whose item is missing                                     */        \
    X(DictObjectWithUnknownKind, "dictionary-object-with-unknown-kind")                           \
    X(DictItemWithoutRegistryRow, "dictionary-item-without-registry-row")                         \
    X(DictObjectWithUnknownDictionary, "dictionary-object-with-unknown-data-dictionary")          \
    X(BindingWithoutDictObject, "binding-without-dictionary-object")                              \
    /* layout parameter values whose submodel algorithm, name or data type is missing */          \
    X(AlgorithmPropertyWithoutSubmodelAlgorithm, "algorithm-property-without-submodel-algorithm") \
    X(AlgorithmPropertyWithoutName, "algorithm-property-without-name")                            \
    X(AlgorithmPropertyWithoutDataType, "algorithm-property-without-data-type")                   \
    /* a row of a view's metadata names no view */                                                \
    X(ViewRowWithoutView, "view-row-without-view")                                                \
    /* valid attachment types and attachments whose attachment type is missing; an      */        \
    /* attachment bound on a meta table its type does not allow                          */       \
    X(ValidAttachmentTypeWithoutType, "valid-attachment-type-without-attachment-type")            \
    X(AttachmentWithoutType, "attachment-without-attachment-type")                                \
    X(AttachmentBoundWhereNotValid, "attachment-bound-where-not-valid")                           \
    /* inter-model links whose relationship is missing, relationships whose object is  */         \
    /* missing, modifications and pending check-outs of unknown objects                 */        \
    X(LinkWithoutRelationship, "link-without-relationship")                                       \
    X(RelationshipWithoutObject, "relationship-without-object")                                   \
    X(ModificationOfUnknownObject, "modification-of-unknown-object")                              \
    X(CheckoutOfUnknownObject, "checkout-of-unknown-object")                                      \
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
