// CHashBuckets: the bucket array of the chained hash maps (CMap, CIntrusiveMap).
//
// GetSize() bucket heads; a node whose full hash is h lives in bucket h % GetSize(),
// and a new node goes to the head of its chain. The size is 17 until set, never 0.
// The array itself is allocated on demand and freed by Free, which keeps the size
// for the next allocation. An array of two megabytes or more is a huge block
// (huge_block.h).
//
// Walks visit bucket 0, 1, 2, ... and each chain from its head, so their order is
// fully determined by the hashes and the order of insertion.
//
// Growth: Grow moves every node to an array of 2n + 1 buckets (kept odd), relinking
// each chain in walk order at the heads of the new chains. Maps that opt in call
// GrowAfterInsert, which grows when the map holds more than twice as many nodes as
// buckets.
//
// The nodes are the map's own: LINKS supplies
//     static Node* GetNext(const Node* node);
//     static void SetNext(Node* node, Node* next);
//     static UINT GetHash(const Node* node);   // the node's full hash
// and may declare `static constexpr bool kHashIsStored = false;` when GetHash
// computes the hash from the node rather than reading it: lookups then leave the
// hash out and only match (a stored hash is compared first, as it is cheaper than a
// match).
#pragma once

#include <cstddef>

#include "platform/huge_block.h"
#include "platform/types.h"

template <class Node, class LINKS>
class CHashBuckets {
  public:
    CHashBuckets() = default;
    CHashBuckets(const CHashBuckets&) = delete;
    CHashBuckets& operator=(const CHashBuckets&) = delete;
    ~CHashBuckets() { Free(); }

    UINT GetSize() const { return m_nSize; }
    bool IsAllocated() const { return m_pTable != nullptr; }

    // Frees the array and sets the size (0 reads as 1) of the next one.
    void SetSize(UINT size) {
        Free();
        m_nSize = size ? size : 1;
    }
    void Allocate() {
        if (!m_pTable) m_pTable = NewTable(m_nSize);
    }
    void Free() noexcept {
        if (!m_pTable) return;
        FreeTable(m_pTable, m_nSize);
        m_pTable = nullptr;
    }

    // The chain head of `hash`; the array must be allocated.
    Node*& Head(UINT hash) { return m_pTable[hash % m_nSize]; }

    // The first node in the chain of `hash` with that hash and that `match`
    // accepts, or null.
    template <class Match>
    Node* Find(UINT hash, Match&& match) const {
        if (!m_pTable) return nullptr;
        for (Node* node = m_pTable[hash % m_nSize]; node; node = LINKS::GetNext(node)) {
            if (HashMay(node, hash) && match(node)) return node;
        }
        return nullptr;
    }

    // Unlinks the first node `Find` would return and returns it, or null.
    template <class Match>
    Node* Unlink(UINT hash, Match&& match) {
        if (!m_pTable) return nullptr;
        Node* prev = nullptr;
        for (Node* node = m_pTable[hash % m_nSize]; node;
             prev = node, node = LINKS::GetNext(node)) {
            if (HashMay(node, hash) && match(node)) {
                if (prev)
                    LINKS::SetNext(prev, LINKS::GetNext(node));
                else
                    m_pTable[hash % m_nSize] = LINKS::GetNext(node);
                return node;
            }
        }
        return nullptr;
    }

    // Puts `node` (with its hash stored) at the head of its chain, allocating the
    // array first when needed.
    void Push(Node* node) {
        Allocate();
        Node*& head = Head(LINKS::GetHash(node));
        LINKS::SetNext(node, head);
        head = node;
    }

    // Puts `node` in the place `old` holds in its chain (same hash); `old` leaves.
    void Replace(Node* old, Node* node) {
        Node* const next = LINKS::GetNext(old);
        Node*& head = Head(LINKS::GetHash(old));
        if (head == old) {
            head = node;
        } else {
            Node* prev = head;
            while (LINKS::GetNext(prev) != old)
                prev = LINKS::GetNext(prev);
            LINKS::SetNext(prev, node);
        }
        LINKS::SetNext(node, next);
    }

    // The walk: the first node, then the node after `node`; null at the end.
    Node* First() const { return FirstFrom(0); }
    Node* Next(const Node* node) const {
        if (Node* next = LINKS::GetNext(node)) return next;
        return FirstFrom(LINKS::GetHash(node) % m_nSize + 1);
    }

    // Calls `visit(node)` for every node in walk order; `visit` may destroy the
    // node (its link is read first).
    template <class Visit>
    void ForEach(Visit&& visit) {
        if (!m_pTable) return;
        for (UINT bucket = 0; bucket < m_nSize; ++bucket) {
            for (Node* node = m_pTable[bucket]; node;) {
                Node* next = LINKS::GetNext(node);
                visit(node);
                node = next;
            }
        }
    }

    // Grows when `count` nodes are more than twice the buckets.
    void GrowAfterInsert(int count) {
        if (static_cast<UINT>(count) / 2 > m_nSize) Grow();
    }

  private:
    static constexpr bool kHashIsStored = [] {
        if constexpr (requires { LINKS::kHashIsStored; }) return LINKS::kHashIsStored;
        return true;
    }();
    // False when `node` cannot have `hash`; without a stored hash, the match decides.
    static bool HashMay(const Node* node, UINT hash) {
        if constexpr (kHashIsStored) return LINKS::GetHash(node) == hash;
        return true;
    }

    Node* FirstFrom(UINT bucket) const {
        if (!m_pTable) return nullptr;
        for (; bucket < m_nSize; ++bucket) {
            if (m_pTable[bucket]) return m_pTable[bucket];
        }
        return nullptr;
    }

    // Moves every node to 2n + 1 buckets; nodes stay where they are in memory.
    void Grow() {
        const UINT size = m_nSize * 2 + 1;
        Node** table = NewTable(size);
        for (UINT bucket = 0; bucket < m_nSize; ++bucket) {
            for (Node* node = m_pTable[bucket]; node;) {
                Node* next = LINKS::GetNext(node);
                Node*& head = table[LINKS::GetHash(node) % size];
                LINKS::SetNext(node, head);
                head = node;
                node = next;
            }
        }
        FreeTable(m_pTable, m_nSize);
        m_pTable = table;
        m_nSize = size;
    }

    // A zeroed array; a large one from huge blocks (huge_block.h).
    static Node** NewTable(UINT size) {
        return static_cast<Node**>(tessmeta::AllocateArray(sizeof(Node*) * size));
    }
    static void FreeTable(Node** table, UINT size) noexcept {
        tessmeta::FreeArray(table, sizeof(Node*) * size);
    }

    Node** m_pTable = nullptr;
    UINT m_nSize = 17;
};
