// Fixed-size node storage for the linked containers (CList, CMap) and the row
// objects of the in-memory tables.
//
// Nodes are carved from blocks instead of one heap allocation each. The first block
// holds `blockSize` nodes and each further block twice as many as the one before,
// up to kMaxBlockBytes: a container of ten entries costs one small block, a table
// of a million rows a few dozen large ones, and an emptied container frees
// everything with one walk over its blocks. Nodes are handed out in address order
// from the newest block, so a block's pages are first touched only when its nodes
// are; blocks of the largest size are huge blocks (huge_block.h: aligned to two
// megabytes, and advised as huge pages once the process holds many). A freed node
// goes on the pool's free list and is handed out again before any fresh one; blocks
// are released only by Reset (which the containers call when they become empty)
// and by the destructor.
//
// The pool hands out raw storage: the owner constructs its node in it and destroys
// the node before giving the storage back.
#pragma once

#include <cstddef>
#include <new>
#include <utility>
#include <vector>

class CNodePool {
  public:
    // The largest block, in bytes (a huge page).
    static constexpr std::size_t kMaxBlockBytes = std::size_t{2} << 20;  // kHugeBlockBytes

    // `nodeSize` is the size of the node type (a multiple of its alignment);
    // `blockSize` below 1 reads as 1.
    CNodePool(std::size_t nodeSize, int blockSize);
    CNodePool(const CNodePool&) = delete;
    CNodePool& operator=(const CNodePool&) = delete;
    ~CNodePool() { Reset(); }

    // Storage for one node, aligned for any type. Throws std::bad_alloc.
    void* Alloc() {
        if (m_free) {
            FreeNode* node = m_free;
            m_free = node->next;
            return node;
        }
        if (m_next == m_end) Grow();
        void* node = m_next;
        m_next += m_nodeSize;
        return node;
    }

    // A hint before the first node: about `count` nodes are coming (a load that
    // knows its row count), so the first block holds them all, or is a huge page
    // at once where they fill one. Ignored once the pool has a block.
    void ExpectNodes(std::size_t count) noexcept;

    // Gives back storage from Alloc whose node has already been destroyed.
    void Free(void* node) noexcept { m_free = ::new (node) FreeNode{m_free}; }

    // Releases every block. Nodes still in use become invalid; the next block is
    // again of `blockSize` nodes.
    void Reset() noexcept;

    // Whether `p` lies in storage of this pool (a binary search of the blocks'
    // address ranges: a table freeing each of its rows asks once per row).
    bool Owns(const void* p) const noexcept;

    int GetBlockSize() const { return m_blockSize; }
    std::size_t GetNodeSize() const { return m_nodeSize; }

  private:
    struct FreeNode {
        FreeNode* next;
    };
    struct Block;

    void Grow();

    // [first node, end of block) of every block, ordered by address: the one list
    // of the pool's blocks.
    std::vector<std::pair<const char*, const char*>> m_ranges;
    FreeNode* m_free = nullptr;
    char* m_next = nullptr;  // fresh nodes of the newest block: [m_next, m_end)
    char* m_end = nullptr;
    std::size_t m_nodeSize;
    std::size_t m_nextBlockNodes;
    int m_blockSize;
};
