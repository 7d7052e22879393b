// tessmeta upgrade / purge: load a model and save it again.
#include <cstdio>
#include <map>

#include "command.h"

namespace tessmeta::tool {

int RunUpgrade(const std::string& path, const std::string& output) {
    auto model = OpenModel(path);
    if (!model) return kExitBadInput;
    const DWORD from = model->GetLoadedFormatVersion();
    if (!SaveModel(*model, {}, output)) return kExitProblems;
    std::printf("%s: format version %u, saved as %u%s%s\n", zmf::ShownLocation(path).c_str(), from,
                model->GetFile().GetFormatVersion(), output.empty() ? "" : " in ",
                zmf::ShownLocation(output).c_str());
    return kExitOk;
}

int RunPurge(const std::string& path) {
    auto model = OpenModel(path);
    if (!model) return kExitBadInput;
    CNameSpaceMgr& names = model->GetNameSpaceMgr();
    std::map<LONG, CString> before;
    LONG id = 0;
    CString text;
    for (POSITION pos = names.GetStringStartPosition(); pos;) {
        names.GetNextString(pos, id, text);
        before.emplace(id, text);
    }
    SModelSaveOptions options;
    options.purgeStrings = 1;
    if (!SaveModel(*model, options)) return kExitProblems;
    for (POSITION pos = names.GetStringStartPosition(); pos;) {
        names.GetNextString(pos, id, text);
        before.erase(id);
    }
    for (const auto& [dropped, value] : before) {
        const bool cut = value.GetLength() > 60;
        std::printf("dropped string %d: \"%s%s\"\n", dropped,
                    static_cast<const char*>(cut ? value.Left(60) : value), cut ? "..." : "");
    }
    std::printf("%s: %zu string%s dropped\n", zmf::ShownLocation(path).c_str(), before.size(),
                before.size() == 1 ? "" : "s");
    return kExitOk;
}

}  // namespace tessmeta::tool
