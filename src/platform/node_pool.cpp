#include "platform/node_pool.h"

#include "platform/huge_block.h"

#include <algorithm>
#include <cstdint>
#include <functional>

namespace {

constexpr std::size_t RoundUp(std::size_t n, std::size_t align) {
    return (n + align - 1) / align * align;
}

}  // namespace

// Each block starts with this header; the blocks themselves are listed by m_ranges.
struct CNodePool::Block {
    std::size_t bytes;  // the whole block, header included
    bool mapped;        // from AllocateHugeBlock, else from operator new
};

namespace {
constexpr std::size_t kHeader = (sizeof(void*) * 3 + alignof(std::max_align_t) - 1) /
                                alignof(std::max_align_t) * alignof(std::max_align_t);
}  // namespace

CNodePool::CNodePool(std::size_t nodeSize, int blockSize)
    // A node's size is a multiple of its alignment, so with the block header padded
    // to the largest alignment every node in the block is aligned for its type.
    : m_nodeSize(RoundUp(std::max(nodeSize, sizeof(FreeNode)), alignof(FreeNode))),
      m_nextBlockNodes(static_cast<std::size_t>(std::max(blockSize, 1))),
      m_blockSize(std::max(blockSize, 1)) {
    static_assert(kHeader >= sizeof(Block));
}

void CNodePool::Grow() {
    m_ranges.reserve(m_ranges.size() + 1);  // may throw; nothing allocated yet
    std::size_t bytes = kHeader + m_nodeSize * m_nextBlockNodes;
    void* memory = nullptr;
    bool mapped = false;
    if (bytes >= kMaxBlockBytes && m_nodeSize <= kMaxBlockBytes - kHeader) {
        bytes = kMaxBlockBytes;
        memory = tessmeta::AllocateHugeBlock(bytes);
        mapped = memory != nullptr;
    } else {
        m_nextBlockNodes *= 2;
    }
    if (!memory) memory = ::operator new(bytes);
    ::new (memory) Block{bytes, mapped};
    m_next = static_cast<char*>(memory) + kHeader;
    m_end = m_next + (bytes - kHeader) / m_nodeSize * m_nodeSize;
    const std::pair<const char*, const char*> range{m_next, static_cast<char*>(memory) + bytes};
    m_ranges.insert(std::upper_bound(m_ranges.begin(), m_ranges.end(), range), range);
}

void CNodePool::ExpectNodes(std::size_t count) noexcept {
    if (!m_ranges.empty()) return;
    // One node more than a huge page holds asks Grow for a huge page.
    const std::size_t hugeNodes = kMaxBlockBytes / m_nodeSize + 1;
    m_nextBlockNodes = std::max(m_nextBlockNodes, std::min(count, hugeNodes));
}

void CNodePool::Reset() noexcept {
    for (const auto& range : m_ranges) {
        auto* block = reinterpret_cast<Block*>(const_cast<char*>(range.first) - kHeader);
        if (block->mapped)
            tessmeta::FreeHugeBlock(block, block->bytes);
        else
            ::operator delete(block);
    }
    m_ranges.clear();
    m_free = nullptr;
    m_next = m_end = nullptr;
    m_nextBlockNodes = static_cast<std::size_t>(m_blockSize);
}

bool CNodePool::Owns(const void* p) const noexcept {
    const auto* byte = static_cast<const char*>(p);
    // The last block starting at or before `byte`.
    auto after = std::upper_bound(
        m_ranges.begin(), m_ranges.end(), byte,
        [](const char* address, const auto& range) { return std::less<>()(address, range.first); });
    if (after == m_ranges.begin()) return false;
    --after;
    return std::less_equal<>()(after->first, byte) && std::less<>()(byte, after->second);
}
