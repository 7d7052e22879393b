// Fixed-size node storage for the linked containers (CList, CMap).
//
// Nodes are carved from blocks of `blockSize` nodes instead of one heap allocation
// each: a table of a million rows then costs a hundred thousand allocations, and an
// emptied container frees everything with one walk over its blocks. A freed node
// goes on the pool's free list and is handed out again before a new block is made;
// blocks are released only by Reset, which the containers call when they become
// empty.
//
// The pool hands out raw storage: the container constructs its node in it and
// destroys the node before giving the storage back.
#pragma once

#include <cstddef>
#include <new>

class CNodePool {
  public:
    // `nodeSize` must be at least a pointer's size; `blockSize` below 1 reads as 1.
    CNodePool(std::size_t nodeSize, int blockSize);
    CNodePool(const CNodePool&) = delete;
    CNodePool& operator=(const CNodePool&) = delete;
    ~CNodePool() { Reset(); }

    // Storage for one node, aligned for any type. Throws std::bad_alloc.
    void* Alloc() {
        if (!m_free) Grow();
        FreeNode* node = m_free;
        m_free = node->next;
        return node;
    }

    // Gives back storage from Alloc whose node has already been destroyed.
    void Free(void* node) noexcept { m_free = ::new (node) FreeNode{m_free}; }

    // Releases every block. Nodes still in use become invalid.
    void Reset() noexcept;

    int GetBlockSize() const { return m_blockSize; }

  private:
    struct FreeNode {
        FreeNode* next;
    };
    struct Block {
        Block* next;
    };

    void Grow();

    Block* m_blocks = nullptr;
    FreeNode* m_free = nullptr;
    std::size_t m_nodeSize;
    int m_blockSize;
};
