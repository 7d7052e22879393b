#include "platform/winmsg.h"

#include <mutex>
#include <string>
#include <unordered_map>

namespace {

constexpr UINT kFirstId = 0xC000;
constexpr UINT kLastId = 0xFFFF;

struct Registry {
    std::mutex mutex;
    std::unordered_map<std::string, UINT> ids;
};

// Built on first use, so that registrations made by other static initialisers find
// it ready; never destroyed, so that registrations made during exit still work.
Registry& GetRegistry() {
    static Registry* registry = new Registry;
    return *registry;
}

}  // namespace

UINT RegisterWindowMessageA(const char* name) {
    if (!name || !*name) return 0;
    Registry& registry = GetRegistry();
    std::lock_guard<std::mutex> lock(registry.mutex);
    auto found = registry.ids.find(name);
    if (found != registry.ids.end()) return found->second;
    const UINT id = kFirstId + static_cast<UINT>(registry.ids.size());
    if (id > kLastId) return 0;
    registry.ids.emplace(name, id);
    return id;
}
