#include "model/model_check_ids.h"

#include <algorithm>
#include <bit>

namespace tessmeta {
namespace {

// The bits may span up to 256 ids per member (32 bytes, about what a hash set spends
// on one), and 8 Mi ids whatever the count, before the set goes sparse.
constexpr std::size_t kIdsPerMember = 256;
constexpr std::size_t kFloorWords = (std::size_t{1} << 23) / 64;

}  // namespace

bool CIdSet::Insert(DWORD id) {
    if (!m_dense) return m_sparse.insert(id).second;
    const std::size_t word = id >> 6;
    if (word >= m_bits.size()) {
        const std::size_t limit = std::max(kFloorWords, (m_count + 1) * kIdsPerMember / 64);
        if (word >= limit) {
            MakeSparse();
            return m_sparse.insert(id).second;
        }
        m_bits.resize(std::min(limit, std::max(word + 1, m_bits.size() * 2)));
    }
    const std::uint64_t bit = std::uint64_t{1} << (id & 63);
    if (m_bits[word] & bit) return false;
    m_bits[word] |= bit;
    ++m_count;
    return true;
}

void CIdSet::MakeSparse() {
    m_sparse.reserve(m_count + 1);
    for (std::size_t word = 0; word < m_bits.size(); ++word)
        for (std::uint64_t bits = m_bits[word]; bits; bits &= bits - 1)
            m_sparse.insert(
                static_cast<DWORD>(word * 64 + static_cast<unsigned>(std::countr_zero(bits))));
    m_bits = {};
    m_dense = false;
}

}  // namespace tessmeta
