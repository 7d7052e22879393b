// tessmeta demo: a small model through every subsystem present, saved, reopened
// and verified.
#include <algorithm>
#include <cstdio>
#include <map>
#include <string>

#include "command.h"
#include "model/model_check.h"

namespace tessmeta::tool {
namespace {

struct SExpected {
    std::string typeName;
    std::string name;
    CString guid;
};

// Builds the demo model; returns what the reopened file must hold, by object id.
std::map<int, SExpected> BuildDemo(CModelFile& model) {
    CGuidMgr& guids = model.GetGuidMgr();
    CNameSpaceMgr& names = model.GetNameSpaceMgr();
    std::map<int, SExpected> expected;

    auto add = [&](const char* type, ULONG modelId, const char* name, const char* usage) {
        const int id = guids.GetNewUniqueId(CString(type), modelId, 0, 0);
        names.AddString(name, id, names.GetStringUsageTypeId(usage));
        CString guid;
        guids.GetObjectGUID(static_cast<unsigned>(id), guid);
        expected[id] = {type, name, guid};
        return id;
    };

    const int modelId = add("Model", 0, "Order entry", "Model Name");
    const int diagram = add("Diagram", 0, "Main diagram", "Diagram Name");
    guids.CreateObjectDomain(static_cast<ULONG>(diagram), "Main diagram", "DIAGRAM",
                             expected[diagram].guid, 0);
    const auto owner = static_cast<ULONG>(modelId);
    const int customer = add("Entity", owner, "CUSTOMER", "Entity Name");
    const int order = add("Entity", owner, "ORDER", "Entity Name");
    add("Attribute", owner, "customer_id", "Attribute Name");
    add("Attribute", owner, "order_date", "Attribute Name");
    add("Relationship", owner, "places", "Relationship Name");

    names.AddString("A person or company that buys from us.", customer,
                    names.GetEntityDefinitionUsageId());
    names.AddString(std::string(300, '*').c_str(), order, names.GetEntityNoteUsageId());
    // A rename leaves the old text without a usage: the purging save drops it.
    names.AddString("ORDER_HEADER", order, names.GetEntityNameUsageId());
    names.AddString("ORDER", order, names.GetEntityNameUsageId());
    guids.FlagOnRepoStatus(static_cast<unsigned>(customer), 2, true);
    return expected;
}

// The first demo object of a type.
ULONG FirstOfType(const std::map<int, SExpected>& expected, const char* type) {
    for (const auto& [id, object] : expected)
        if (object.typeName == type) return static_cast<ULONG>(id);
    return 0;
}

int Verify(CModelFile& model, const std::map<int, SExpected>& expected) {
    CGuidMgr& guids = model.GetGuidMgr();
    CNameSpaceMgr& names = model.GetNameSpaceMgr();
    int problems = 0;
    for (const auto& [id, want] : expected) {
        CString type, guid, name;
        guids.GetObjectType(static_cast<unsigned>(id), type);
        guids.GetObjectGUID(static_cast<unsigned>(id), guid);
        const int usage = names.GetStringUsageTypeId((want.typeName + " Name").c_str());
        names.GetStringFromNameSpace(name, names.GetStringIdFromObjectAndUsageTypeIds(id, usage));
        if (want.typeName != type.GetString() || want.guid != guid ||
            want.name != name.GetString()) {
            std::printf("object %d: expected %s \"%s\" %s, found %s \"%s\" %s\n", id,
                        want.typeName.c_str(), want.name.c_str(), want.guid.GetString(),
                        type.GetString(), name.GetString(), guid.GetString());
            ++problems;
        }
    }
    const SCheckReport report = CheckModelFile(model.GetFile());
    if (report.ErrorCount()) {
        std::printf("check: %zu problems\n", report.ErrorCount());
        ++problems;
    }
    return problems;
}

}  // namespace

int RunDemo(const std::string& path) {
    std::string error;
    auto model = CModelFile::Create(path, &error);
    if (!model) return Fail(error);
    const auto expected = BuildDemo(*model);
    const auto dictionaryDemo = BuildDictionaryDemo(*model, FirstOfType(expected, "Entity"));
    const auto layoutAndView = BuildLayoutViewDemo(*model, FirstOfType(expected, "Model"));
    const auto repositoryDemo = BuildRepositoryDemo(*model, FirstOfType(expected, "Model"));
    const SMetadataDemo metadata = BuildMetadataDemo(*model);
    SModelSaveOptions options;
    options.purgeStrings = 1;
    if (!SaveModel(*model, options)) return kExitProblems;
    model.reset();

    auto reopened = OpenModel(path);
    if (!reopened) return kExitProblems;
    int problems = Verify(*reopened, expected) + VerifyDictionaryDemo(*reopened, *dictionaryDemo) +
                   VerifyLayoutViewDemo(*reopened, layoutAndView) +
                   VerifyRepositoryDemo(*reopened, *repositoryDemo);
    CGuidMgr& guids = reopened->GetGuidMgr();
    int strings = 0;
    LONG id;
    CString text;
    for (POSITION pos = reopened->GetNameSpaceMgr().GetStringStartPosition(); pos; ++strings)
        reopened->GetNameSpaceMgr().GetNextString(pos, id, text);
    std::printf("%s: format version %u\n", zmf::ShownLocation(path).c_str(),
                reopened->GetFile().GetFormatVersion());
    std::printf("  unique objects     %d\n", guids.GetUniqueObjCount());
    std::printf("  object domains     %d (model domain %u)\n",
                guids.GetEnhObjectDomainTable()->GetCount(),
                guids.GetEnhObjectDomainTable()->GetModelDomainId());
    std::printf("  strings            %d\n", strings);
    std::printf("  string usages      %d\n",
                reopened->GetNameSpaceMgr().GetStringUsageTable().GetCount());
    PrintDictionarySummary(*reopened);
    PrintRepositorySummary(*reopened);
    std::printf("  objects in repository state: %s\n", guids.HasRepositoryObject() ? "yes" : "no");
    std::printf("  layout settings    %d parameter values of submodels %u and %u\n",
                reopened->GetAutoLayoutDataMgr().GetAlgorithmPropertyTable().GetCount(),
                layoutAndView.submodels[0], layoutAndView.submodels[1]);
    std::string select(layoutAndView.select.View());
    for (std::size_t at = select.find('\n'); at != std::string::npos; at = select.find('\n', at))
        select.insert(++at, "    ");
    std::printf("  view %u:\n    %s\n", layoutAndView.view, select.c_str());
    problems += VerifyMetadataDemo(*reopened, metadata);
    std::printf("verified: %s\n", problems ? "NO" : "saved, reopened and identical");
    return problems ? kExitProblems : kExitOk;
}

}  // namespace tessmeta::tool
