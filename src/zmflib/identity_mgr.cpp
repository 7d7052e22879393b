#include "zmflib/identity_mgr.h"

#include <limits>

ULONG& CIdentityMgr::Counter(int tableId) {
    const auto index = static_cast<std::size_t>(tableId);
    if (index >= kDenseKinds) return m_sparse[tableId];
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
    if (tableId < 0) return 0;
    const auto index = static_cast<std::size_t>(tableId);
    if (index < m_counters.size()) return m_counters[index];
    if (index < kDenseKinds) return 0;
    const auto it = m_sparse.find(tableId);
    return it == m_sparse.end() ? 0 : it->second;
}
