// The id sets of the integrity check. The keys of a model's tables count up from 1,
// so a set of them is a bit per id: no node per id, no rehash, one memory read per
// question. A set whose ids turn out sparse (a damaged or foreign file) moves to a
// hash set, so that its memory stays within a small multiple of its size.
#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_set>
#include <vector>

#include "platform/types.h"

namespace tessmeta {

class CIdSet {
  public:
    // Adds `id`; true when it was not in the set yet.
    bool Insert(DWORD id);
    bool Contains(DWORD id) const {
        if (!m_dense) return m_sparse.count(id) != 0;
        const std::size_t word = id >> 6;
        return word < m_bits.size() && (m_bits[word] >> (id & 63) & 1);
    }

  private:
    void MakeSparse();

    std::vector<std::uint64_t> m_bits;   // bit id % 64 of word id / 64, while dense
    std::unordered_set<DWORD> m_sparse;  // every id, once not dense
    std::size_t m_count = 0;
    bool m_dense = true;
};

}  // namespace tessmeta
