#include "platform/module.h"

#include <dlfcn.h>
#include <limits.h>
#include <link.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstring>
#include <string>

namespace {

// An address inside this library: whatever contains it is "our" module.
void AnchorInThisLibrary() {}

std::string ExecutablePath() {
    char path[PATH_MAX];
    const ssize_t n = readlink("/proc/self/exe", path, sizeof path);
    return n > 0 ? std::string(path, static_cast<size_t>(n)) : std::string();
}

std::string ModulePath(const void* address) {
    Dl_info info;
    link_map* map = nullptr;
    if (!dladdr1(address, &info, reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP) || !map) {
        return std::string();
    }
    // The main program's link map has an empty name (dladdr would report argv[0],
    // which may be relative to a directory the process has left).
    if (!map->l_name || !*map->l_name) return ExecutablePath();
    if (map->l_name[0] == '/') return map->l_name;
    char resolved[PATH_MAX];
    return realpath(map->l_name, resolved) ? std::string(resolved) : std::string(map->l_name);
}

}  // namespace

DWORD GetModuleFileNameA(HMODULE module, char* buffer, DWORD size) {
    if (!buffer || size == 0) return 0;
    std::string path = ModulePath(module ? module : reinterpret_cast<void*>(&AnchorInThisLibrary));
    if (path.empty() && !module) path = ExecutablePath();
    if (path.empty()) {
        buffer[0] = '\0';
        return 0;
    }
    if (path.size() >= size) {
        std::memcpy(buffer, path.data(), size - 1);
        buffer[size - 1] = '\0';
        return size;
    }
    std::memcpy(buffer, path.data(), path.size() + 1);
    return static_cast<DWORD>(path.size());
}
