// CBalancedTree: an ordered multi-map from a signed 64-bit key to an untyped row
// pointer, used as the foreign-key index of every in-memory table.
//
// Shape. A top-down red-black tree (splits on the way down, no parent pointers)
// with two sentinels: `head`, whose key is -1 and whose right child holds the tree,
// and `z`, one shared node that stands for every empty child. Going left always
// means "key < node key"; equal keys go right, so a run of equal keys reads back
// in insertion order.
//
// Deviation from the textbook, kept on purpose: a split's first rotation is
// chosen by comparing the key with the grandparent only, not by whether the path
// bends. Ascending insertion still builds a valid red-black tree; other orders
// leave some red nodes with red children and uneven black heights. Paths run
// longer: shuffled keys gave heights of 3.2 to 3.7 log2 n (n up to 10^6), where
// a red-black tree stays under 2 log2 n; sorted, descending and interleaved
// orders stay under 1.5 log2 n. The search statistics depend on the exact
// shape, so the shape is part of the contract.
//
// Head's key field holds -1, but head takes part in no comparison: it sorts below
// every key, so the whole tree hangs off its right child and its left child is
// always z. Every int64_t key, negative ones included, is an ordinary key.
//
// Deletion is lazy: Delete only flags a node; nodes go away in RemoveAll or with
// the tree.
//
// Results. A keyed search copies every hit's info into the result set, so
// GetNext() is an array read. Delete and both GetFirst overloads refill that set;
// a walk in progress is invalidated by any of them on the same tree.
//
// Costs. Insert and search are O(log n) on the path plus the size of the subtree
// of equal keys. Nodes come from a block pool owned by the tree: an insert is a
// bump allocation, and RemoveAll returns all blocks at once. Blocks grow to 2 MB
// huge blocks (huge_block.h), which keeps TLB misses off the lookups of large
// indexes once huge pages back them.
//
// Not thread-safe: a tree and its result set belong to one caller at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/types.h"

class CBTreeNode {
  public:
    enum NODE_COLOR { red = 1, black = 2 };

    // A fresh node is its own left and right child, black, key -1, no info.
    CBTreeNode() : m_pLeft(this), m_pRight(this) {}
    virtual ~CBTreeNode() = default;

    CBTreeNode(const CBTreeNode&) = delete;
    CBTreeNode& operator=(const CBTreeNode&) = delete;

    void SetLeft(CBTreeNode* node) { m_pLeft = node; }
    CBTreeNode* GetLeft() const { return m_pLeft; }
    void SetRight(CBTreeNode* node) { m_pRight = node; }
    CBTreeNode* GetRight() const { return m_pRight; }
    void SetColor(NODE_COLOR color) { m_color = color; }
    NODE_COLOR GetColor() const { return m_color; }
    bool IsRed() const { return m_color == red; }
    void SetKey(int64_t key) { m_key = key; }
    int64_t GetKey() const { return m_key; }
    // The row the node indexes; never owned.
    void SetInfo(void* info) { m_pInfo = info; }
    void* GetInfo() const { return m_pInfo; }
    void SetDeleted(int deleted) { m_deleted = deleted; }
    int GetDeleted() const { return m_deleted; }

  private:
    CBTreeNode* m_pLeft;
    CBTreeNode* m_pRight;
    NODE_COLOR m_color = black;
    int64_t m_key = -1;
    void* m_pInfo = nullptr;
    int m_deleted = 0;
};

class CBalancedTree {
  public:
    CBalancedTree();
    // Destroys every node and both sentinels; the rows the nodes point at are the
    // caller's.
    virtual ~CBalancedTree();

    CBalancedTree(const CBalancedTree&) = delete;
    CBalancedTree& operator=(const CBalancedTree&) = delete;

    // Creates head and z. Call once before use; a second call empties the tree.
    // (Insert calls it itself if it was forgotten.)
    void Init();

    // Adds a node for (key, info); duplicates are welcome. Always returns 1.
    int Insert(int64_t key, void* info);

    // Collects every live node with `key` into the result set and returns the
    // first one's info, or null when there is none. Counts one search.
    void* GetFirst(int64_t key);
    // Every node, head first and deleted ones included, in key order; returns
    // head's info, i.e. null. GetNext() then yields the smallest key's info.
    // Touches no statistics.
    void* GetFirst();
    // The next entry of the current result set, or null when it is used up.
    void* GetNext();
    // Number of entries in the current result set.
    int GetCount() const { return static_cast<int>(m_results.size()); }

    // Flags the first live node with `key` whose info is `info` (in key order).
    // Does nothing if there is none. Refills the result set with that key's live
    // nodes as found before the flag was set.
    void Delete(int64_t key, void* info);

    // Destroys every node below head and clears the result set. Head, z and the
    // statistics stay.
    void RemoveAll();

    // Computes the four averages and hands the ten statistics lines, one after
    // the other, to tessmeta::Trace. With no searches (or nodes) the averages are
    // inf or nan.
    void CalcMetrics();

    // Statistics. Counters wrap around on overflow rather than trap.
    LONG GetTotalNodes() const { return m_nTotalNodes; }
    LONG GetTotalSearches() const { return m_nTotalSearches; }
    LONG GetTotalHits() const { return m_nTotalHits; }
    LONG GetTotalSearchDepth() const { return m_nTotalSearchDepth; }
    LONG GetTotalSplits() const { return m_nTotalSplits; }
    LONG GetTotalRotates() const { return m_nTotalRotates; }
    // Valid after CalcMetrics; 0 before the first call.
    float GetAverageSearchDepth() const { return m_fAvgSearchDepth; }
    float GetAverageSearchDepthPerHit() const { return m_fAvgSearchDepthPerHit; }
    float GetAverageSplits() const { return m_fAvgSplits; }
    float GetAverageRotates() const { return m_fAvgRotates; }

    // The sentinels, for inspection (tests, diagnostics). Null before Init.
    // The tree proper is GetHead()->GetRight(); GetZ() marks every empty child.
    CBTreeNode* GetHead() const { return m_pHead; }
    CBTreeNode* GetZ() const { return m_pZ; }

  private:
    // Key order for the rebalancing steps, where head may take part: head
    // sorts below every key.
    bool Less(int64_t key, const CBTreeNode* node) const {
        return node != m_pHead && key < node->GetKey();
    }
    void Split(int64_t key);
    CBTreeNode* Rotate(int64_t key, CBTreeNode* y);
    CBTreeNode* NewNode();
    void ReleasePool();
    template <class OnHit>
    void Collect(int64_t key, OnHit onHit);

    CBTreeNode* m_pHead = nullptr;
    CBTreeNode* m_pZ = nullptr;

    // Search path of the insert in progress.
    CBTreeNode* m_pCurrent = nullptr;
    CBTreeNode* m_pParent = nullptr;
    CBTreeNode* m_pGrand = nullptr;
    CBTreeNode* m_pGreat = nullptr;

    // Result set: infos of the last search, and the read cursor into it.
    std::vector<void*> m_results;
    std::size_t m_nextResult = 0;
    // Pending equal-key nodes of a search; kept to avoid allocating per search.
    std::vector<CBTreeNode*> m_stack;

    LONG m_nTotalNodes = 0;
    LONG m_nTotalSearches = 0;
    LONG m_nTotalHits = 0;
    LONG m_nTotalSearchDepth = 0;
    LONG m_nTotalSplits = 0;
    LONG m_nTotalRotates = 0;
    LONG m_nVisitCount = 0;

    float m_fAvgSearchDepth = 0.0f;
    float m_fAvgSearchDepthPerHit = 0.0f;
    float m_fAvgSplits = 0.0f;
    float m_fAvgRotates = 0.0f;

    // Node pool: raw blocks of node-sized slots, bump-allocated. Blocks double in
    // size up to a cap so that the many small tables stay small and the big ones
    // make few allocations.
    struct Block {
        std::byte* slots;
        std::size_t count;
    };
    std::vector<Block> m_blocks;
    std::byte* m_pFree = nullptr;  // next free slot in the newest block
    std::size_t m_nFreeSlots = 0;  // slots left in the newest block
    std::size_t m_nNextBlockSlots = 0;
};
