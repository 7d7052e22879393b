#include "model/model_check.h"

#include "model/model_check_detail.h"

#include <memory>
#include <unordered_set>

#include "layout/layout_check.h"
#include "views/view_check.h"
#include "metadata/metadata_check.h"
#include "zmflib/iterators.h"

namespace tessmeta {
namespace {

// A short text under which a string is never purged.
constexpr int kPurgeProofLength = 6;

void CheckDuplicateKeys(CZmfFile& file, CReporter& out) {
    for (const SZmfTableDesc* desc : zmf::AllTables()) {
        CTableBase* handle = file.GetTable(desc->name);
        CIteratorBase it(handle);
        std::unique_ptr<CDbObjectBase> row(desc->createRow());
        std::unordered_set<DWORD> seen;
        while (it.GetNext(row.get())) {
            const DWORD key = zmf::KeyOf(*desc, *row);
            if (!seen.insert(key).second)
                out.Add(ECheckKind::DuplicateKey, desc->name,
                        "key " + std::to_string(key) + " is used by more than one row");
        }
        file.ReleaseTable(&handle, 0);
    }
}

}  // namespace

const char* CheckKindName(ECheckKind kind) {
    static const char* const names[kCheckKindCount] = {
#define TESSMETA_CHECK_KIND_NAME(kind, name) name,
        TESSMETA_CHECK_KINDS(TESSMETA_CHECK_KIND_NAME)
#undef TESSMETA_CHECK_KIND_NAME
    };
    return names[static_cast<int>(kind)];
}

std::size_t SCheckReport::ErrorCount() const {
    std::size_t errors = 0;
    for (int k = 0; k < kCheckKindCount; ++k)
        if (k != static_cast<int>(ECheckKind::PurgeableString)) errors += counts[k];
    return errors;
}

SCheckReport CheckModelFile(CZmfFile& file, std::size_t detailLimit) {
    SCheckReport report;
    CReporter out(report, detailLimit);
    if (!file.Verify()) out.Add(ECheckKind::StoreDamage, "", file.GetLastError());

    std::unordered_set<DWORD> strings, usageTypes, objects, types, domains, usedStrings;
    ForEachRow<CSmallStringBase>(file, "SmallString",
                                 [&](const CSmallStringBase& r) { strings.insert(r.String_ID); });
    ForEachRow<CStringUsageTypeBase>(file, "StringUsageType", [&](const CStringUsageTypeBase& r) {
        usageTypes.insert(r.String_Usage_Type_ID);
    });
    ForEachRow<CObjectDefinitionBase>(
        file, "ObjectDefinition",
        [&](const CObjectDefinitionBase& r) { types.insert(r.Object_Type_ID); });
    ForEachRow<CObject_DomainBase>(file, "Object_Domain", [&](const CObject_DomainBase& r) {
        domains.insert(r.Object_Domain_ID);
    });

    ForEachRow<CUniqueObjectBase>(file, "UniqueObject", [&](const CUniqueObjectBase& r) {
        objects.insert(r.Unique_Object_ID);
        const auto type = static_cast<DWORD>(static_cast<LONG>(r.Object_Type_ID));
        if (!types.count(type))
            out.Add(ECheckKind::ObjectWithUnknownType, "UniqueObject",
                    "object " + std::to_string(r.Unique_Object_ID) + ": type " +
                        std::to_string(static_cast<LONG>(r.Object_Type_ID)) +
                        " is not an object definition");
        if (r.Object_Domain_ID != 0 && !domains.count(r.Object_Domain_ID))
            out.Add(ECheckKind::ObjectWithUnknownDomain, "UniqueObject",
                    "object " + std::to_string(r.Unique_Object_ID) + ": domain " +
                        std::to_string(r.Object_Domain_ID) + " does not exist");
    });

    ForEachRow<CStringUsageBase>(file, "StringUsage", [&](const CStringUsageBase& r) {
        usedStrings.insert(r.String_ID);
        const std::string usage = "usage " + std::to_string(r.String_Usage_ID) + ": ";
        if (!strings.count(r.String_ID))
            out.Add(ECheckKind::UsageWithoutString, "StringUsage",
                    usage + "string " + std::to_string(r.String_ID) + " does not exist");
        if (!usageTypes.count(r.String_Usage_Type_ID))
            out.Add(
                ECheckKind::UsageWithoutUsageType, "StringUsage",
                usage + "usage type " + std::to_string(r.String_Usage_Type_ID) + " does not exist");
        if (!objects.count(r.Object_ID))
            out.Add(ECheckKind::UsageWithoutObject, "StringUsage",
                    usage + "object " + std::to_string(r.Object_ID) + " is not a unique object");
    });

    ForEachRow<CSmallStringBase>(file, "SmallString", [&](const CSmallStringBase& r) {
        if (usedStrings.count(r.String_ID)) return;
        if (r.Text.GetLength() < kPurgeProofLength && static_cast<LONG>(r.Large_Flag) == 0) return;
        out.Add(ECheckKind::PurgeableString, "SmallString",
                "string " + std::to_string(r.String_ID) + " has no usage");
    });

    CheckDictionary(file, out);
    CheckLayoutTables(file, out);
    CheckViewTables(file, out);
    CheckRepository(file, objects, out);
    CheckMetadataTables(file, out);
    CheckDuplicateKeys(file, out);
    return report;
}

}  // namespace tessmeta
