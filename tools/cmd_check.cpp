// tessmeta check: integrity report; exit status 1 when anything is wrong.
#include <cstdio>

#include "command.h"
#include "model/model_check.h"

namespace tessmeta::tool {

int RunCheck(const std::string& path) {
    std::string error;
    auto file = CZmfFile::Open(path, &error);
    if (!file) return Fail(error);
    const SCheckReport report = CheckModelFile(*file);
    for (const SCheckFinding& f : report.findings) {
        std::printf("%s: %s%s%s\n", CheckKindName(f.kind), f.table.c_str(),
                    f.table.empty() ? "" : ": ", f.detail.c_str());
    }
    for (int k = 0; k < static_cast<int>(ECheckKind::kCheckKindCount); ++k) {
        const auto kind = static_cast<ECheckKind>(k);
        if (report.Count(kind)) std::printf("%-28s %zu\n", CheckKindName(kind), report.Count(kind));
    }
    const std::size_t errors = report.ErrorCount();
    std::printf("%s: %zu problem%s, %zu string%s a purge would drop\n",
                zmf::ShownLocation(path).c_str(), errors, errors == 1 ? "" : "s",
                report.Count(ECheckKind::PurgeableString),
                report.Count(ECheckKind::PurgeableString) == 1 ? "" : "s");
    return errors ? kExitProblems : kExitOk;
}

}  // namespace tessmeta::tool
