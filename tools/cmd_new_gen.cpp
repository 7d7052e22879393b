// tessmeta new / gen: create model files.
#include <cstdio>
#include <utility>

#include "command.h"
#include "model/model_generator.h"

namespace tessmeta::tool {

int RunNew(const std::string& path) {
    std::string error;
    auto model = CModelFile::Create(path, &error);
    if (!model) return Fail(error);
    std::printf("%s: new model file, format version %u\n", zmf::ShownLocation(path).c_str(),
                model->GetFile().GetFormatVersion());
    return kExitOk;
}

namespace {

// The second line of shares: one "count what" pair per generated kind.
void PrintGenerateSummaryOfManagers(const SGenerateSummary& summary) {
    const std::pair<std::uint64_t, const char*> counts[] = {
        {summary.domains, "domains"},
        {summary.defaults, "defaults"},
        {summary.rules, "rules"},
        {summary.userDataTypes, "user data types"},
        {summary.attachments, "attachments"},
        {summary.libraries, "libraries"},
        {summary.triggers, "triggers"},
        {summary.procedures, "procedures"},
        {summary.bindings, "bindings"},
        {summary.propertyValues, "property values"},
        {summary.metaClassMembers, "meta-class members"},
        {summary.views, "views"},
        {summary.viewParts, "view parts"},
        {summary.modifications, "repository modifications"},
    };
    const char* separator = "";
    for (const auto& [count, what] : counts) {
        std::printf("%s%llu %s", separator, static_cast<unsigned long long>(count), what);
        separator = ", ";
    }
    std::printf("\n");
}

}  // namespace

int RunGen(const std::string& path, std::uint64_t objects, std::uint32_t seed, bool everyManager) {
    std::string error;
    auto model = CModelFile::Create(path, &error);
    if (!model) return Fail(error);
    const SGenerateSummary summary = GenerateModel(*model, {objects, seed, everyManager});
    if (!SaveModel(*model)) return kExitProblems;
    std::printf("%s: %llu objects, %llu string usages, %llu long texts\n",
                zmf::ShownLocation(path).c_str(), static_cast<unsigned long long>(summary.objects),
                static_cast<unsigned long long>(summary.usages),
                static_cast<unsigned long long>(summary.longTexts));
    if (everyManager)
        std::printf(
            "%llu dictionary items, %llu dictionary links, %llu overrides, %llu layout "
            "settings\n",
            static_cast<unsigned long long>(summary.dictionaryItems),
            static_cast<unsigned long long>(summary.dictionaryLinks),
            static_cast<unsigned long long>(summary.overrides),
            static_cast<unsigned long long>(summary.layoutSettings));
    if (everyManager) PrintGenerateSummaryOfManagers(summary);
    return kExitOk;
}

}  // namespace tessmeta::tool
