#include "platform/node_pool.h"

#include <algorithm>

namespace {

constexpr std::size_t RoundUp(std::size_t n, std::size_t align) {
    return (n + align - 1) / align * align;
}

}  // namespace

CNodePool::CNodePool(std::size_t nodeSize, int blockSize)
    // A node's size is a multiple of its alignment, so with the block header padded
    // to the largest alignment every node in the block is aligned for its type.
    : m_nodeSize(RoundUp(std::max(nodeSize, sizeof(FreeNode)), alignof(FreeNode))),
      m_blockSize(std::max(blockSize, 1)) {}

void CNodePool::Grow() {
    const std::size_t header = RoundUp(sizeof(Block), alignof(std::max_align_t));
    char* memory = static_cast<char*>(
        ::operator new(header + m_nodeSize * static_cast<std::size_t>(m_blockSize)));
    m_blocks = ::new (memory) Block{m_blocks};
    // Chain the nodes so that they are handed out in address order.
    for (int i = m_blockSize - 1; i >= 0; --i) {
        Free(memory + header + m_nodeSize * static_cast<std::size_t>(i));
    }
}

void CNodePool::Reset() noexcept {
    while (m_blocks) {
        Block* next = m_blocks->next;
        ::operator delete(m_blocks);
        m_blocks = next;
    }
    m_free = nullptr;
}
