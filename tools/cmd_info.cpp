// tessmeta info: what a model file holds.
#include <cstdio>
#include <map>

#include "command.h"

namespace tessmeta::tool {
namespace {

void PrintTables(CZmfFile& file) {
    std::printf("\nrows per table:\n");
    for (const SZmfTableDesc* desc : zmf::AllTables()) {
        CTableBase* table = file.GetTable(desc->name);
        const ULONG rows = table ? table->GetCount() : 0;
        file.ReleaseTable(&table, 0);
        if (rows) std::printf("  %-26s %10u\n", desc->name, rows);
    }
}

void PrintObjectsPerType(CGuidMgr& guids) {
    std::map<std::string, std::uint64_t> perType;
    for (POSITION pos = guids.GetUniqueObjectStartPosition(); pos;) {
        const ULONG id = guids.GetNextUniqueObject(pos);
        CString name;
        if (!guids.GetObjectType(id, name)) name.Format("(type %d)", guids.GetObjectTypeId(id));
        ++perType[std::string(name)];
    }
    std::printf("\nobjects per type (%d objects):\n", guids.GetUniqueObjCount());
    for (const auto& [name, count] : perType)
        std::printf("  %-26s %10llu\n", name.c_str(), static_cast<unsigned long long>(count));
}

void PrintDomains(CGuidMgr& guids) {
    CEnhObjectDomainTable* domains = guids.GetEnhObjectDomainTable();
    std::printf("\ndomains (%d):\n", domains->GetCount());
    for (POSITION pos = domains->GetFirstRowPosition(); pos;) {
        const CKelObjectDomain* row = domains->GetNextRow(pos);
        std::printf("  %-6u %-16s %-32s %s%s\n", row->Object_Domain_ID,
                    static_cast<const char*>(row->Domain_Type), static_cast<const char*>(row->GUID),
                    static_cast<const char*>(row->Name),
                    row->Object_Domain_ID == domains->GetModelDomainId() ? "  (model domain)" : "");
    }
}

void PrintUsageTypesInUse(CNameSpaceMgr& names) {
    std::map<DWORD, std::uint64_t> perType;
    CEnhStringUsageTable& usages = names.GetStringUsageTable();
    for (POSITION pos = usages.GetFirstRowPosition(); pos;)
        ++perType[usages.GetNextRow(pos)->String_Usage_Type_ID];
    std::printf("\nusage types in use:\n");
    CEnhStringUsageTypeTable& types = names.GetStringUsageTypeTable();
    for (POSITION pos = types.GetFirstRowPosition(); pos;) {
        const auto* row = types.GetNextRow(pos);
        auto it = perType.find(row->String_Usage_Type_ID);
        if (it == perType.end()) continue;
        std::printf("  %-4u %-40s %10llu\n", row->String_Usage_Type_ID,
                    static_cast<const char*>(row->Name),
                    static_cast<unsigned long long>(it->second));
        perType.erase(it);
    }
    for (const auto& [id, count] : perType)
        std::printf("  %-4u %-40s %10llu\n", id, "(unknown usage type)",
                    static_cast<unsigned long long>(count));
}

}  // namespace

int RunInfo(const std::string& path) {
    auto model = OpenModel(path);
    if (!model) return kExitBadInput;
    std::printf("%s: format version %u\n", zmf::ShownLocation(path).c_str(),
                model->GetLoadedFormatVersion());
    PrintTables(model->GetFile());
    PrintObjectsPerType(model->GetGuidMgr());
    PrintDomains(model->GetGuidMgr());
    PrintUsageTypesInUse(model->GetNameSpaceMgr());
    PrintDictionaryInfo(*model);
    PrintLayoutAndViewSummary(*model);
    PrintRepositoryInfo(*model);
    PrintMetadataInfo(*model);
    return kExitOk;
}

}  // namespace tessmeta::tool
