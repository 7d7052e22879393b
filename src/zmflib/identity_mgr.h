// The key allocator of a model file: one counter per key kind.
#pragma once

#include <cstddef>
#include <map>
#include <vector>

#include "platform/types.h"

// Hands out technical keys. A key kind is the id a table allocates under (see the
// catalogue); it is not the table number. Key 0 never names a row.
//
// Each counter holds the largest key allocated or declared so far; the next
// allocation is one above it. Counters persist with the model file.
class CIdentityMgr {
  public:
    // A fresh key for the kind, above every key allocated or declared for it.
    // Returns 0 when the kind is negative or its keys are exhausted.
    ULONG AllocKeyValue(int tableId);
    // Declares that `key` is in use, so that later allocations go past it. Returns
    // the kind's counter afterwards (0 for a negative kind).
    ULONG SetKeyValue(int tableId, ULONG key);
    // The kind's counter: the largest key allocated or declared (0 if none).
    ULONG GetKeyValue(int tableId) const;

    // Persistence support: every kind with a non-zero counter, and whether any
    // counter changed since the last ClearDirty.
    template <class F>
    void ForEachCounter(F&& f) const {
        for (std::size_t kind = 0; kind < m_counters.size(); ++kind)
            if (m_counters[kind] != 0) f(static_cast<int>(kind), m_counters[kind]);
        for (const auto& [kind, counter] : m_sparse)
            if (counter != 0) f(kind, counter);
    }
    bool IsDirty() const { return m_dirty; }
    void ClearDirty() { m_dirty = false; }

  private:
    ULONG& Counter(int tableId);

    // Kinds below kDenseKinds (every kind the catalogue uses) index a vector; a
    // larger kind, which only a damaged or foreign file declares, goes to a map so
    // that it cannot make the vector huge.
    static constexpr std::size_t kDenseKinds = 1 << 12;
    std::vector<ULONG> m_counters;  // indexed by key kind
    std::map<int, ULONG> m_sparse;  // kinds of kDenseKinds and above
    bool m_dirty = false;
};
