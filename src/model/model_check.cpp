#include "model/model_check.h"

#include "model/model_check_detail.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include "layout/layout_check.h"
#include "metadata/metadata_check.h"
#include "views/view_check.h"
#include "zmflib/iterators.h"

namespace tessmeta {
namespace {

// A short text under which a string is never purged.
constexpr int kPurgeProofLength = 6;

// The keys a table holds more than once, in stored order: filled by the pass that
// reads the table anyway, so that the duplicate-key pass need not read it again.
struct SRepeatedKeys {
    const char* table;
    std::vector<DWORD> keys;
};

void CheckDuplicateKeys(CZmfFile& file, const std::vector<SRepeatedKeys>& known, CReporter& out) {
    auto report = [&](const char* table, DWORD key) {
        out.Add(ECheckKind::DuplicateKey, table,
                "key " + std::to_string(key) + " is used by more than one row");
    };
    for (const SZmfTableDesc* desc : zmf::AllTables()) {
        const auto found = std::find_if(known.begin(), known.end(), [&](const SRepeatedKeys& k) {
            return std::strcmp(k.table, desc->name) == 0;
        });
        if (found != known.end()) {
            for (const DWORD key : found->keys)
                report(desc->name, key);
            continue;
        }
        CTableBase* handle = file.GetTable(desc->name);
        CIteratorBase it(handle);
        std::unique_ptr<CDbObjectBase> row(desc->createRow());
        CIdSet seen;
        while (it.GetNext(row.get())) {
            const DWORD key = zmf::KeyOf(*desc, *row);
            if (!seen.Insert(key)) report(desc->name, key);
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

    // SmallString, StringUsage and UniqueObject are read once each; what the later
    // passes need of them is kept here.
    std::vector<SRepeatedKeys> repeated = {
        {"SmallString", {}}, {"StringUsage", {}}, {"UniqueObject", {}}};
    std::vector<DWORD>& repeatedStrings = repeated[0].keys;
    std::vector<DWORD>& repeatedUsages = repeated[1].keys;
    std::vector<DWORD>& repeatedObjects = repeated[2].keys;
    CIdSet strings, usages, usageTypes, objects, types, domains, usedStrings;
    std::vector<DWORD> unprotected;  // strings only a usage keeps, in stored order
    ForEachRow<CSmallStringBase>(file, "SmallString", [&](const CSmallStringBase& r) {
        if (!strings.Insert(r.String_ID)) repeatedStrings.push_back(r.String_ID);
        if (r.Text.GetLength() >= kPurgeProofLength || static_cast<LONG>(r.Large_Flag) != 0)
            unprotected.push_back(r.String_ID);
    });
    ForEachRow<CStringUsageTypeBase>(file, "StringUsageType", [&](const CStringUsageTypeBase& r) {
        usageTypes.Insert(r.String_Usage_Type_ID);
    });
    ForEachRow<CObjectDefinitionBase>(
        file, "ObjectDefinition",
        [&](const CObjectDefinitionBase& r) { types.Insert(r.Object_Type_ID); });
    ForEachRow<CObject_DomainBase>(file, "Object_Domain", [&](const CObject_DomainBase& r) {
        domains.Insert(r.Object_Domain_ID);
    });

    ForEachRow<CUniqueObjectBase>(file, "UniqueObject", [&](const CUniqueObjectBase& r) {
        if (!objects.Insert(r.Unique_Object_ID)) repeatedObjects.push_back(r.Unique_Object_ID);
        const auto type = static_cast<DWORD>(static_cast<LONG>(r.Object_Type_ID));
        if (!types.Contains(type))
            out.Add(ECheckKind::ObjectWithUnknownType, "UniqueObject",
                    "object " + std::to_string(r.Unique_Object_ID) + ": type " +
                        std::to_string(static_cast<LONG>(r.Object_Type_ID)) +
                        " is not an object definition");
        if (r.Object_Domain_ID != 0 && !domains.Contains(r.Object_Domain_ID))
            out.Add(ECheckKind::ObjectWithUnknownDomain, "UniqueObject",
                    "object " + std::to_string(r.Unique_Object_ID) + ": domain " +
                        std::to_string(r.Object_Domain_ID) + " does not exist");
    });

    ForEachRow<CStringUsageBase>(file, "StringUsage", [&](const CStringUsageBase& r) {
        if (!usages.Insert(r.String_Usage_ID)) repeatedUsages.push_back(r.String_Usage_ID);
        usedStrings.Insert(r.String_ID);
        if (strings.Contains(r.String_ID) && usageTypes.Contains(r.String_Usage_Type_ID) &&
            objects.Contains(r.Object_ID))
            return;
        const std::string usage = "usage " + std::to_string(r.String_Usage_ID) + ": ";
        if (!strings.Contains(r.String_ID))
            out.Add(ECheckKind::UsageWithoutString, "StringUsage",
                    usage + "string " + std::to_string(r.String_ID) + " does not exist");
        if (!usageTypes.Contains(r.String_Usage_Type_ID))
            out.Add(
                ECheckKind::UsageWithoutUsageType, "StringUsage",
                usage + "usage type " + std::to_string(r.String_Usage_Type_ID) + " does not exist");
        if (!objects.Contains(r.Object_ID))
            out.Add(ECheckKind::UsageWithoutObject, "StringUsage",
                    usage + "object " + std::to_string(r.Object_ID) + " is not a unique object");
    });

    for (const DWORD string : unprotected)
        if (!usedStrings.Contains(string))
            out.Add(ECheckKind::PurgeableString, "SmallString",
                    "string " + std::to_string(string) + " has no usage");

    CheckDictionary(file, out);
    CheckLayoutTables(file, out);
    CheckViewTables(file, out);
    CheckRepository(file, objects, out);
    CheckMetadataTables(file, objects, out);
    CheckDuplicateKeys(file, repeated, out);
    return report;
}

}  // namespace tessmeta
