#include "foundation/balanced_tree.h"

#include <sys/mman.h>

#include <cstdio>
#include <new>
#include <utility>

#include "platform/hooks.h"

namespace {

// The statistics are 32-bit counters that a long-lived model can push past
// INT32_MAX (search depth grows by ~20 per lookup). Wrap instead of overflowing
// a signed int, which would be undefined.
inline void Bump(LONG& counter, LONG by) {
    counter = static_cast<LONG>(static_cast<DWORD>(counter) + static_cast<DWORD>(by));
}

// One node per 64-byte slot: a node (56 bytes) never straddles two cache lines,
// which is worth the 8 bytes on the million-row indexes.
constexpr std::size_t kSlotAlign = 64;
constexpr std::size_t kSlotSize = (sizeof(CBTreeNode) + kSlotAlign - 1) / kSlotAlign * kSlotAlign;
constexpr std::size_t kFirstBlockSlots = 32;
// Full-size blocks are one huge page each. A search in a million-node index
// touches ~40 nodes scattered over 64 MB; with 4 KB pages nearly every one is
// also a TLB miss.
constexpr std::size_t kHugePage = std::size_t{2} << 20;
constexpr std::size_t kMaxBlockSlots = kHugePage / kSlotSize;

std::byte* AllocateBlock(std::size_t slots) {
    const std::size_t bytes = slots * kSlotSize;
    if (bytes < kHugePage) {
        return static_cast<std::byte*>(::operator new(bytes, std::align_val_t(kSlotAlign)));
    }
    void* block = ::operator new(bytes, std::align_val_t(kHugePage));
    // Only a hint; without transparent huge pages the block still works.
    madvise(block, bytes, MADV_HUGEPAGE);
    return static_cast<std::byte*>(block);
}

void FreeBlock(std::byte* block, std::size_t slots) {
    const std::size_t bytes = slots * kSlotSize;
    ::operator delete(block, std::align_val_t(bytes < kHugePage ? kSlotAlign : kHugePage));
}

}  // namespace

CBalancedTree::CBalancedTree() {
    m_results.reserve(64);
}

CBalancedTree::~CBalancedTree() {
    RemoveAll();
    delete m_pHead;
    delete m_pZ;
}

void CBalancedTree::Init() {
    if (m_pHead != nullptr) {
        RemoveAll();
        delete m_pHead;
        delete m_pZ;
    }
    m_pHead = new CBTreeNode;
    m_pZ = new CBTreeNode;
    m_pHead->SetLeft(m_pZ);
    m_pHead->SetRight(m_pZ);
}

CBTreeNode* CBalancedTree::NewNode() {
    if (m_nFreeSlots == 0) {
        std::size_t slots = m_nNextBlockSlots == 0 ? kFirstBlockSlots : m_nNextBlockSlots;
        std::byte* block = AllocateBlock(slots);
        m_blocks.push_back({block, slots});
        m_pFree = block;
        m_nFreeSlots = slots;
        m_nNextBlockSlots = slots < kMaxBlockSlots ? slots * 2 : kMaxBlockSlots;
    }
    void* slot = m_pFree;
    m_pFree += kSlotSize;
    --m_nFreeSlots;
    return new (slot) CBTreeNode;
}

void CBalancedTree::ReleasePool() {
    for (const Block& block : m_blocks)
        FreeBlock(block.slots, block.count);
    m_blocks.clear();
    m_pFree = nullptr;
    m_nFreeSlots = 0;
    m_nNextBlockSlots = 0;
}

int CBalancedTree::Insert(int64_t key, void* info) {
    if (m_pHead == nullptr) Init();
    Bump(m_nTotalNodes, 1);

    // The descent runs on locals; Split works on the members, so they are
    // synchronised around each (comparatively rare) split. Head sorts below every
    // key, so the descent starts at its right child with head as every ancestor.
    CBTreeNode* const z = m_pZ;
    CBTreeNode* current = m_pHead->GetRight();
    CBTreeNode* parent = m_pHead;
    CBTreeNode* grand = m_pHead;
    CBTreeNode* great = m_pHead;
    for (;;) {
        if (current->GetLeft()->IsRed() && current->GetRight()->IsRed()) {
            m_pCurrent = current;
            m_pParent = parent;
            m_pGrand = grand;
            m_pGreat = great;
            Split(key);
            current = m_pCurrent;
            parent = m_pParent;
        }
        if (current == z) break;
        great = grand;
        grand = parent;
        parent = current;
        current = key < current->GetKey() ? current->GetLeft() : current->GetRight();
    }

    CBTreeNode* node = NewNode();
    node->SetKey(key);
    node->SetInfo(info);
    node->SetLeft(z);
    node->SetRight(z);
    if (Less(key, parent))
        parent->SetLeft(node);
    else
        parent->SetRight(node);
    m_pCurrent = node;
    m_pParent = parent;
    m_pGrand = grand;
    m_pGreat = great;
    Split(key);
    return 1;
}

void CBalancedTree::Split(int64_t key) {
    m_pCurrent->SetColor(CBTreeNode::red);
    m_pCurrent->GetLeft()->SetColor(CBTreeNode::black);
    m_pCurrent->GetRight()->SetColor(CBTreeNode::black);
    if (m_pParent->IsRed()) {
        Bump(m_nTotalSplits, 1);
        m_pGrand->SetColor(CBTreeNode::red);
        // Only the grandparent decides the first rotation (see the header).
        if (Less(key, m_pGrand)) m_pParent = Rotate(key, m_pGrand);
        m_pCurrent = Rotate(key, m_pGreat);
        m_pCurrent->SetColor(CBTreeNode::black);
    }
    m_pHead->GetRight()->SetColor(CBTreeNode::black);
}

CBTreeNode* CBalancedTree::Rotate(int64_t key, CBTreeNode* y) {
    Bump(m_nTotalRotates, 1);
    const bool left = Less(key, y);
    CBTreeNode* c = left ? y->GetLeft() : y->GetRight();
    CBTreeNode* g;
    if (key < c->GetKey()) {
        g = c->GetLeft();
        c->SetLeft(g->GetRight());
        g->SetRight(c);
    } else {
        g = c->GetRight();
        c->SetRight(g->GetLeft());
        g->SetLeft(c);
    }
    if (left)
        y->SetLeft(g);
    else
        y->SetRight(g);
    return g;
}

// Visits exactly the nodes the natural recursion would, in the same order:
//   collect(n): stop at z; count n; if key <= n.key collect(n.left);
//               if n.key == key and n is live, hit(n); if key < n.key stop;
//               collect(n.right).
// Only nodes equal to the key take both branches, so only they are stacked; the
// stack is a member to keep searches free of allocation.
template <class OnHit>
void CBalancedTree::Collect(int64_t key, OnHit onHit) {
    m_results.clear();
    m_nextResult = 0;
    m_nVisitCount = 0;
    if (m_pHead == nullptr) return;

    // Head counts as visited and, sorting below every key, only leads right.
    CBTreeNode* const z = m_pZ;
    CBTreeNode* node = m_pHead->GetRight();
    DWORD visits = 1;
    m_stack.clear();
    for (;;) {
        while (node != z) {
            ++visits;
            const int64_t nodeKey = node->GetKey();
            if (key < nodeKey) {
                node = node->GetLeft();
            } else if (nodeKey < key) {
                node = node->GetRight();
            } else {
                m_stack.push_back(node);
                // The right subtree is walked after the left one; start its load now.
                __builtin_prefetch(node->GetRight());
                node = node->GetLeft();
            }
        }
        if (m_stack.empty()) break;
        CBTreeNode* equal = m_stack.back();
        m_stack.pop_back();
        if (equal->GetDeleted() == 0) onHit(equal);
        node = equal->GetRight();
    }
    m_nVisitCount = static_cast<LONG>(visits);
}

void* CBalancedTree::GetFirst(int64_t key) {
    Bump(m_nTotalSearches, 1);
    Collect(key, [this](CBTreeNode* hit) { m_results.push_back(hit->GetInfo()); });
    Bump(m_nTotalSearchDepth, m_nVisitCount);
    Bump(m_nTotalHits, static_cast<LONG>(m_results.size()));
    if (m_results.empty()) return nullptr;
    m_nextResult = 1;
    return m_results[0];
}

void* CBalancedTree::GetFirst() {
    m_results.clear();
    m_nextResult = 0;
    if (m_pHead == nullptr) return nullptr;

    // Plain in-order walk from head, so head itself is an entry.
    CBTreeNode* const z = m_pZ;
    CBTreeNode* node = m_pHead;
    m_stack.clear();
    for (;;) {
        while (node != z) {
            m_stack.push_back(node);
            node = node->GetLeft();
        }
        if (m_stack.empty()) break;
        CBTreeNode* next = m_stack.back();
        m_stack.pop_back();
        m_results.push_back(next->GetInfo());
        node = next->GetRight();
    }
    m_nextResult = 1;
    return m_results[0];
}

void* CBalancedTree::GetNext() {
    if (m_nextResult >= m_results.size()) return nullptr;
    return m_results[m_nextResult++];
}

void CBalancedTree::Delete(int64_t key, void* info) {
    CBTreeNode* victim = nullptr;
    Collect(key, [&](CBTreeNode* hit) {
        m_results.push_back(hit->GetInfo());
        if (victim == nullptr && hit->GetInfo() == info) victim = hit;
    });
    if (victim != nullptr) victim->SetDeleted(1);
}

void CBalancedTree::RemoveAll() {
    m_results.clear();
    m_nextResult = 0;
    if (m_pHead == nullptr) return;

    // Post-order, left subtree first. Iterative: a degenerate tree must not
    // exhaust the call stack. The second member says "children already done".
    CBTreeNode* const z = m_pZ;
    std::vector<std::pair<CBTreeNode*, bool>> pending;
    for (CBTreeNode* subtree : {m_pHead->GetRight(), m_pHead->GetLeft()})
        if (subtree != z) pending.emplace_back(subtree, false);
    while (!pending.empty()) {
        auto [node, childrenDone] = pending.back();
        pending.pop_back();
        if (childrenDone) {
            node->~CBTreeNode();
            continue;
        }
        pending.emplace_back(node, true);
        if (node->GetRight() != z) pending.emplace_back(node->GetRight(), false);
        if (node->GetLeft() != z) pending.emplace_back(node->GetLeft(), false);
    }
    ReleasePool();
    m_pHead->SetLeft(z);
    m_pHead->SetRight(z);
}

void CBalancedTree::CalcMetrics() {
    m_fAvgSearchDepth =
        static_cast<float>(m_nTotalSearchDepth) / static_cast<float>(m_nTotalSearches);
    m_fAvgSearchDepthPerHit =
        static_cast<float>(m_nTotalSearchDepth) / static_cast<float>(m_nTotalHits);
    m_fAvgSplits = static_cast<float>(m_nTotalSplits) / static_cast<float>(m_nTotalNodes);
    m_fAvgRotates = static_cast<float>(m_nTotalRotates) / static_cast<float>(m_nTotalNodes);

    // One buffer, each line replacing the last; the hook decides what to keep.
    char text[96];
    auto trace = [&text](const char* format, auto value) {
        std::snprintf(text, sizeof text, format, value);
        tessmeta::Trace(text);
    };
    trace("Total Number of Nodes: %d\n", m_nTotalNodes);
    trace("Total Searches: %d\n", m_nTotalSearches);
    trace("Total Hits Searches: %d\n", m_nTotalHits);
    trace("Total Search Depth: %d\n", m_nTotalSearchDepth);
    trace("Total Splits: %d\n", m_nTotalSplits);
    trace("Total Rotates: %d\n", m_nTotalRotates);
    trace("Average Search Depth: %5.3f\n", static_cast<double>(m_fAvgSearchDepth));
    trace("Average Search Depth Per Hit: %5.3f\n", static_cast<double>(m_fAvgSearchDepthPerHit));
    trace("Average Splits: %5.3f\n", static_cast<double>(m_fAvgSplits));
    trace("Average Rotates: %5.3f\n", static_cast<double>(m_fAvgRotates));
}
