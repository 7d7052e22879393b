// The framework's list and array containers: CList, CPtrList and CPtrArray.
//
// CList is a doubly linked list whose POSITION values are its node pointers, so a
// caller that keeps a position (a table row keeps its own) can unlink the element in
// constant time. Nodes come from blocks of `nBlockSize` nodes (see node_pool.h); freed
// nodes are reused, and all blocks are released when the list becomes empty.
//
// A POSITION stays valid until its own element is removed or the list is emptied;
// adding or removing other elements never moves a node.
#pragma once

#include <cassert>
#include <cstddef>
#include <new>
#include <utility>

#include "platform/node_pool.h"
#include "platform/types.h"

template <class TYPE, class ARG_TYPE = const TYPE&>
class CList {
  public:
    explicit CList(int nBlockSize = 10) : m_pool(sizeof(CNode), nBlockSize) {}
    CList(const CList&) = delete;
    CList& operator=(const CList&) = delete;
    ~CList() { RemoveAll(); }

    int GetCount() const { return m_nCount; }
    int GetSize() const { return m_nCount; }
    bool IsEmpty() const { return m_nCount == 0; }

    // The list must not be empty.
    TYPE& GetHead() { return Checked(m_pNodeHead)->data; }
    const TYPE& GetHead() const { return Checked(m_pNodeHead)->data; }
    TYPE& GetTail() { return Checked(m_pNodeTail)->data; }
    const TYPE& GetTail() const { return Checked(m_pNodeTail)->data; }

    // Remove and return the first or last element. The list must not be empty.
    TYPE RemoveHead() { return Take(Checked(m_pNodeHead)); }
    TYPE RemoveTail() { return Take(Checked(m_pNodeTail)); }

    POSITION AddHead(ARG_TYPE newElement) { return Link(newElement, nullptr, m_pNodeHead); }
    POSITION AddTail(ARG_TYPE newElement) { return Link(newElement, m_pNodeTail, nullptr); }
    // Add copies of every element of `other`, keeping its order, in front of or
    // after this list's elements. `other` may be this list: the walk stops at the
    // element that was last before it started.
    void AddHead(const CList* other) {
        CNode* const end = other->m_pNodeHead;
        for (CNode* n = other->m_pNodeTail; n; n = n->pPrev) {
            AddHead(n->data);
            if (n == end) break;
        }
    }
    void AddTail(const CList* other) {
        CNode* const end = other->m_pNodeTail;
        for (CNode* n = other->m_pNodeHead; n; n = n->pNext) {
            AddTail(n->data);
            if (n == end) break;
        }
    }

    // Destroys every element and releases every block.
    void RemoveAll() {
        for (CNode* n = m_pNodeHead; n;) {
            CNode* next = n->pNext;
            n->~CNode();
            n = next;
        }
        m_nCount = 0;
        m_pNodeHead = m_pNodeTail = nullptr;
        m_pool.Reset();
    }

    POSITION GetHeadPosition() const { return ToPosition(m_pNodeHead); }
    POSITION GetTailPosition() const { return ToPosition(m_pNodeTail); }

    // Return the element at `position` and move it to the next (previous) one; it
    // becomes null after the last (first) element.
    TYPE& GetNext(POSITION& position) { return Step(position, true); }
    const TYPE& GetNext(POSITION& position) const { return Step(position, true); }
    TYPE& GetPrev(POSITION& position) { return Step(position, false); }
    const TYPE& GetPrev(POSITION& position) const { return Step(position, false); }

    TYPE& GetAt(POSITION position) { return ToNode(position)->data; }
    const TYPE& GetAt(POSITION position) const { return ToNode(position)->data; }
    void SetAt(POSITION position, ARG_TYPE newElement) { ToNode(position)->data = newElement; }

    // Constant time; `position` must belong to this list.
    void RemoveAt(POSITION position) {
        CNode* node = ToNode(position);
        (node->pPrev ? node->pPrev->pNext : m_pNodeHead) = node->pNext;
        (node->pNext ? node->pNext->pPrev : m_pNodeTail) = node->pPrev;
        FreeNode(node);
    }

    // A null position inserts at the head (InsertBefore) or the tail (InsertAfter).
    POSITION InsertBefore(POSITION position, ARG_TYPE newElement) {
        if (!position) return AddHead(newElement);
        CNode* node = ToNode(position);
        return Link(newElement, node->pPrev, node);
    }
    POSITION InsertAfter(POSITION position, ARG_TYPE newElement) {
        if (!position) return AddTail(newElement);
        CNode* node = ToNode(position);
        return Link(newElement, node, node->pNext);
    }

    // First element equal to `value` (operator==) after `startAfter`, or from the
    // head when it is null; null when there is none. Linear.
    POSITION Find(ARG_TYPE value, POSITION startAfter = nullptr) const {
        CNode* n = startAfter ? ToNode(startAfter)->pNext : m_pNodeHead;
        for (; n; n = n->pNext) {
            if (n->data == value) return ToPosition(n);
        }
        return nullptr;
    }

    // Position of the element at zero-based `index`, or null when out of range.
    POSITION FindIndex(int index) const {
        if (index < 0 || index >= m_nCount) return nullptr;
        CNode* n = m_pNodeHead;
        while (index-- > 0)
            n = n->pNext;
        return ToPosition(n);
    }

  private:
    struct CNode {
        CNode* pNext;
        CNode* pPrev;
        TYPE data;
    };
    static_assert(alignof(CNode) <= alignof(std::max_align_t));

    static POSITION ToPosition(CNode* node) { return reinterpret_cast<POSITION>(node); }
    static CNode* ToNode(POSITION position) {
        assert(position != nullptr);
        return reinterpret_cast<CNode*>(position);
    }
    static CNode* Checked(CNode* node) {
        assert(node != nullptr);
        return node;
    }

    TYPE& Step(POSITION& position, bool forward) const {
        CNode* node = ToNode(position);
        position = ToPosition(forward ? node->pNext : node->pPrev);
        return node->data;
    }

    // Builds a node holding `value` between `prev` and `next` (either may be null
    // at an end of the list).
    POSITION Link(ARG_TYPE value, CNode* prev, CNode* next) {
        void* storage = m_pool.Alloc();
        CNode* node;
        try {
            node = ::new (storage) CNode{next, prev, TYPE(value)};
        } catch (...) {
            m_pool.Free(storage);
            throw;
        }
        (prev ? prev->pNext : m_pNodeHead) = node;
        (next ? next->pPrev : m_pNodeTail) = node;
        ++m_nCount;
        return ToPosition(node);
    }

    void FreeNode(CNode* node) {
        node->~CNode();
        m_pool.Free(node);
        if (--m_nCount == 0) RemoveAll();
    }

    TYPE Take(CNode* node) {
        TYPE value = std::move(node->data);
        RemoveAt(ToPosition(node));
        return value;
    }

    CNode* m_pNodeHead = nullptr;
    CNode* m_pNodeTail = nullptr;
    int m_nCount = 0;
    CNodePool m_pool;
};

// A list of untyped pointers. It never owns what the pointers point to.
class CPtrList : public CList<void*, void*> {
  public:
    explicit CPtrList(int nBlockSize = 10) : CList<void*, void*>(nBlockSize) {}
};

// A growable array of untyped pointers; it never owns what they point to. Indexes
// must lie in [0, GetSize()) except where a member says otherwise. New slots made by
// growing are null.
class CPtrArray {
  public:
    CPtrArray() = default;
    CPtrArray(const CPtrArray&) = delete;
    CPtrArray& operator=(const CPtrArray&) = delete;
    ~CPtrArray();

    int GetSize() const { return m_nSize; }
    int GetCount() const { return m_nSize; }
    bool IsEmpty() const { return m_nSize == 0; }
    int GetUpperBound() const { return m_nSize - 1; }

    // Resizes to `newSize` elements. `growBy` (when not -1) sets how many slots are
    // added at a time when the array has to grow; 0 chooses by the current size.
    // Size 0 releases the storage.
    void SetSize(int newSize, int growBy = -1);
    void FreeExtra();
    void RemoveAll() { SetSize(0); }

    void* GetAt(int index) const { return m_pData[Check(index)]; }
    void SetAt(int index, void* element) { m_pData[Check(index)] = element; }
    void*& ElementAt(int index) { return m_pData[Check(index)]; }
    void* operator[](int index) const { return GetAt(index); }
    void*& operator[](int index) { return ElementAt(index); }
    void** GetData() { return m_pData; }
    void* const* GetData() const { return m_pData; }

    // Sets the element at `index`, growing the array first when needed.
    void SetAtGrow(int index, void* element);
    // Appends; returns the new element's index.
    int Add(void* element) {
        const int index = m_nSize;
        SetAtGrow(index, element);
        return index;
    }
    // Inserts `count` copies of `element` before `index`; an index at or past the
    // end grows the array so that the copies start at `index`.
    void InsertAt(int index, void* element, int count = 1);
    // Removes `count` elements from `index`; the range must lie inside the array.
    void RemoveAt(int index, int count = 1);

  private:
    int Check(int index) const {
        assert(index >= 0 && index < m_nSize);
        return index;
    }

    void** m_pData = nullptr;
    int m_nSize = 0;
    int m_nMaxSize = 0;
    int m_nGrowBy = 0;
};
