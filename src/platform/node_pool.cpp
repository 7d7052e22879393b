#include "platform/node_pool.h"

#include <algorithm>
#include <cstdint>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace {

constexpr std::size_t RoundUp(std::size_t n, std::size_t align) {
    return (n + align - 1) / align * align;
}

// Storage of `bytes` (kMaxBlockBytes) aligned to its own size and advised as a huge
// page, or null where that cannot be had: the caller then takes ordinary storage.
void* MapHugeBlock([[maybe_unused]] std::size_t bytes) noexcept {
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    void* mapped =
        ::mmap(nullptr, 2 * bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) return nullptr;
    const auto begin = reinterpret_cast<std::uintptr_t>(mapped);
    const std::uintptr_t aligned = RoundUp(begin, bytes);
    if (aligned > begin) ::munmap(mapped, aligned - begin);
    if (aligned + bytes < begin + 2 * bytes)
        ::munmap(reinterpret_cast<void*>(aligned + bytes), begin + 2 * bytes - aligned - bytes);
    ::madvise(reinterpret_cast<void*>(aligned), bytes, MADV_HUGEPAGE);
    return reinterpret_cast<void*>(aligned);
#else
    return nullptr;
#endif
}

void UnmapHugeBlock([[maybe_unused]] void* block, [[maybe_unused]] std::size_t bytes) noexcept {
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    ::munmap(block, bytes);
#endif
}

}  // namespace

struct CNodePool::Block {
    Block* next;
    std::size_t bytes;  // the whole block, header included
    bool mapped;        // from MapHugeBlock, else from operator new
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
    std::size_t bytes = kHeader + m_nodeSize * m_nextBlockNodes;
    void* memory = nullptr;
    bool mapped = false;
    if (bytes >= kMaxBlockBytes && m_nodeSize <= kMaxBlockBytes - kHeader) {
        bytes = kMaxBlockBytes;
        memory = MapHugeBlock(bytes);
        mapped = memory != nullptr;
    } else {
        m_nextBlockNodes *= 2;
    }
    if (!memory) memory = ::operator new(bytes);
    m_blocks = ::new (memory) Block{m_blocks, bytes, mapped};
    m_next = static_cast<char*>(memory) + kHeader;
    m_end = m_next + (bytes - kHeader) / m_nodeSize * m_nodeSize;
}

void CNodePool::Reset() noexcept {
    while (m_blocks) {
        Block* block = m_blocks;
        m_blocks = block->next;
        if (block->mapped)
            UnmapHugeBlock(block, block->bytes);
        else
            ::operator delete(block);
    }
    m_free = nullptr;
    m_next = m_end = nullptr;
    m_nextBlockNodes = static_cast<std::size_t>(m_blockSize);
}

bool CNodePool::Owns(const void* p) const noexcept {
    const auto* byte = static_cast<const char*>(p);
    for (const Block* block = m_blocks; block; block = block->next) {
        const auto* begin = reinterpret_cast<const char*>(block);
        if (byte >= begin + kHeader && byte < begin + block->bytes) return true;
    }
    return false;
}
