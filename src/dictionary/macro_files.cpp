#include "dictionary/macro_files.h"

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

#include "platform/hooks.h"
#include "platform/module.h"

namespace tessmeta {

namespace {

constexpr const char* kMacroFolderName = "SysMacros/";
constexpr DWORD kMaxModulePath = 260;

struct SFileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

}  // namespace

CString DefaultMacroFolder() {
    char path[kMaxModulePath + 1] = {};
    const DWORD length = GetModuleFileNameA(nullptr, path, sizeof path);
    CString folder(path, length > kMaxModulePath ? static_cast<int>(kMaxModulePath)
                                                 : static_cast<int>(length));
    const int slash = folder.ReverseFind('/');
    folder = slash < 0 ? CString() : folder.Left(slash + 1);
    folder += kMacroFolderName;
    return folder;
}

bool ReadMacroText(const CString& path, CString& text) {
    std::unique_ptr<std::FILE, SFileCloser> file(std::fopen(path.GetString(), "r"));
    std::string read;
    if (file) {
        char chunk[4096];
        std::size_t count = 0;
        while ((count = std::fread(chunk, 1, sizeof chunk, file.get())) > 0)
            read.append(chunk, count);
    }
    // A folder opens but cannot be read: it is no file either.
    if (!file || std::ferror(file.get())) {
        CString message;
        message.Format("Macro File: %s not found", path.GetString());
        AfxMessageBox(message, MB_OK);
        return false;
    }
    text.Empty();
    std::string_view rest(read);
    while (!rest.empty()) {
        const std::size_t end = rest.find('\n');
        std::string_view line = rest.substr(0, end);
        if (end != std::string_view::npos && !line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        text += line;
        text += "\r\n";
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    }
    return true;
}

}  // namespace tessmeta
