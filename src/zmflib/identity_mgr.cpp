#include "zmflib/identity_mgr.h"

#include <limits>

ULONG& CIdentityMgr::Counter(int tableId) {
    const auto index = static_cast<std::size_t>(tableId);
    if (index >= m_counters.size()) m_counters.resize(index + 1, 0);
    return m_counters[index];
}

ULONG CIdentityMgr::AllocKeyValue(int tableId) {
    if (tableId < 0) return 0;
    ULONG& counter = Counter(tableId);
    if (counter == std::numeric_limits<ULONG>::max()) return 0;
    m_dirty = true;
    return ++counter;
}

ULONG CIdentityMgr::SetKeyValue(int tableId, ULONG key) {
    if (tableId < 0) return 0;
    ULONG& counter = Counter(tableId);
    if (key > counter) {
        counter = key;
        m_dirty = true;
    }
    return counter;
}

ULONG CIdentityMgr::GetKeyValue(int tableId) const {
    const auto index = static_cast<std::size_t>(tableId);
    return tableId >= 0 && index < m_counters.size() ? m_counters[index] : 0;
}
