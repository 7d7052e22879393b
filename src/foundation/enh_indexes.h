// Extra indexes of an in-memory table, beyond the key map and the foreign-key
// index that CEnhTable keeps itself (enh_table.h). A table that needs one declares
// it as a member and calls Add / Remove from its AddToExtraIndexes /
// RemoveFromExtraIndexes hooks; the pattern then keeps it current through every
// insert, update, text change and delete.
//
//   CEnhTreeIndex     rows by a 64-bit key taken from the row, many rows per key,
//                     walked in the tree's order (equal keys in the order filed).
//                     Filed on first use after a load, like the foreign-key tree.
//   CEnhTextKeyIndex  rows by a text of their own, matched byte for byte; the
//                     first row filed under a text answers.
//   CEnhListIndex     rows by a 64-bit key, many rows per key, walked in the order
//                     filed, like CEnhTreeIndex; a row leaves in constant time
//                     (the tree walks every row of its key for that), so deleting
//                     all rows of a key is linear. Each row carries the links.
#pragma once

#include <cstdint>
#include <string_view>
#include <unordered_map>

#include "foundation/balanced_tree.h"
#include "foundation/enh_table_base.h"
#include "platform/cmap.h"
#include "platform/types.h"

// `KeyOf` gives the key a row is filed under; it must not change while the row is
// filed (the table's update hooks re-file a row around every change).
template <class Row, std::int64_t (*KeyOf)(const Row&)>
class CEnhTreeIndex {
  public:
    // `table` owns the rows (borrowed); its row list is read to file a load.
    explicit CEnhTreeIndex(const CEnhTableBase* table) : m_pTable(table) { m_tree.Init(); }
    CEnhTreeIndex(const CEnhTreeIndex&) = delete;
    CEnhTreeIndex& operator=(const CEnhTreeIndex&) = delete;

    // Call before a load's rows enter: they are filed, in list order, only when
    // the index is first searched or changed.
    void MarkLoading() { m_pending = true; }

    void Add(Row* row) {
        if (!m_pending) m_tree.Insert(KeyOf(*row), row);
    }
    void Remove(Row* row) { Tree().Delete(KeyOf(*row), row); }

    // The rows under `key`: the first, then each next one, then null. Any other
    // search or removal on this index ends the walk.
    Row* GetFirst(std::int64_t key) { return static_cast<Row*>(Tree().GetFirst(key)); }
    Row* GetNext() { return static_cast<Row*>(m_tree.GetNext()); }

  private:
    CBalancedTree& Tree() {
        if (m_pending) {
            m_pending = false;
            for (POSITION pos = m_pTable->GetFirstRowPosition(); pos;) {
                Row* row = static_cast<Row*>(m_pTable->GetNextRow(pos));
                m_tree.Insert(KeyOf(*row), row);
            }
        }
        return m_tree;
    }

    const CEnhTableBase* m_pTable;  // not owned
    CBalancedTree m_tree;
    bool m_pending = false;
};

// The map keys view the rows' own texts, so a row's text must not change while it
// is filed (re-file it around a change).
template <class Row, std::string_view (*TextOf)(const Row&)>
class CEnhTextKeyIndex {
  public:
    void Size(UINT bucketCount) { m_map.InitHashTable(bucketCount, TRUE); }
    void Add(Row* row) {
        Row*& mapped = m_map[TextOf(*row)];
        if (!mapped) mapped = row;
    }
    void Remove(Row* row) {
        const std::string_view text = TextOf(*row);
        Row* mapped = nullptr;
        if (m_map.Lookup(text, mapped) && mapped == row) m_map.RemoveKey(text);
    }
    Row* Find(std::string_view text) const {
        Row* row = nullptr;
        m_map.Lookup(text, row);
        return row;
    }
    int GetCount() const { return m_map.GetCount(); }
    UINT GetHashTableSize() const { return m_map.GetHashTableSize(); }

  private:
    struct SKeyTraits {
        static constexpr bool kGrow = true;  // see cmap.h: a growing model stays fast
        static UINT Hash(std::string_view text) { return CMapHashText(text); }
        static bool Equal(const std::string_view& stored, std::string_view text) {
            return stored == text;
        }
    };
    CMap<std::string_view, std::string_view, Row*, Row*, SKeyTraits> m_map{10};
};

// The links of a row in one CEnhListIndex. A copied row starts unlinked.
struct SEnhListLink {
    SEnhListLink() = default;
    SEnhListLink(const SEnhListLink&) {}
    SEnhListLink& operator=(const SEnhListLink&) { return *this; }

    void* prev = nullptr;  // neighbours in the chain of `key` (rows of the index)
    void* next = nullptr;
    std::int64_t key = 0;   // the key it is filed under
    bool filed = false;     // in a chain
    bool detached = false;  // taken out by the index's last Remove
};

// `KeyOf` gives the key a row is filed under; `Link` is the row's member that holds
// its links. The table's hooks call Remove before a row changes and Add after it:
// a row taken out and put back with the same key, with nothing filed or removed
// in between, returns to its place, so updates never reorder a chain. A row whose
// key changed goes to the end of its new key's chain, as a new row does.
//
// Costs: Add and Remove O(1); GetFirst one hash probe; GetNext O(1). A walk stays
// valid while rows are removed (the removed row is stepped over) and sees rows
// added to the end of its chain.
template <class Row, std::int64_t (*KeyOf)(const Row&), SEnhListLink Row::*Link>
class CEnhListIndex {
  public:
    // `table` owns the rows (borrowed); its row list is read to file a load.
    explicit CEnhListIndex(const CEnhTableBase* table) : m_pTable(table) {}
    CEnhListIndex(const CEnhListIndex&) = delete;
    CEnhListIndex& operator=(const CEnhListIndex&) = delete;

    // Call before a load's rows enter: they are filed, in list order, only when
    // the index is first searched.
    void MarkLoading() {
        m_chains.clear();
        m_pending = true;
        m_pCursor = m_pDetached = m_pCursorDetached = nullptr;
    }

    void Add(Row* row) {
        if (m_pending) return;
        SEnhListLink& link = row->*Link;
        if (row == m_pDetached && link.detached && link.key == KeyOf(*row)) {
            Relink(row);
        } else if (!link.filed) {
            Append(row);
        }
        m_pDetached = m_pCursorDetached = nullptr;
    }
    void Remove(Row* row) {
        if (m_pending) return;
        SEnhListLink& link = row->*Link;
        if (!link.filed) return;
        m_pCursorDetached = nullptr;
        if (m_pCursor == row) {
            m_pCursor = Next(row);
            m_pCursorDetached = row;
        }
        Unlink(row);
        link.detached = true;
        m_pDetached = row;
    }

    // The rows under `key`: the first, then each next one, then null. One walk at
    // a time.
    Row* GetFirst(std::int64_t key) {
        FileLoaded();
        const auto it = m_chains.find(key);
        m_pCursor = it == m_chains.end() ? nullptr : it->second.head;
        return GetNext();
    }
    Row* GetNext() {
        Row* row = m_pCursor;
        if (row) m_pCursor = Next(row);
        return row;
    }
    // Calls f(row) for each row under `key`, leaving the walk's cursor alone; f must
    // not add or remove rows.
    template <class F>
    void ForEach(std::int64_t key, F&& f) {
        FileLoaded();
        const auto it = m_chains.find(key);
        for (Row* row = it == m_chains.end() ? nullptr : it->second.head; row; row = Next(row))
            f(row);
    }

  private:
    struct SChain {
        Row* head = nullptr;
        Row* tail = nullptr;
    };
    static Row* Next(const Row* row) { return static_cast<Row*>((row->*Link).next); }
    static Row* Prev(const Row* row) { return static_cast<Row*>((row->*Link).prev); }

    void FileLoaded() {
        if (!m_pending) return;
        m_pending = false;
        for (POSITION pos = m_pTable->GetFirstRowPosition(); pos;)
            Append(static_cast<Row*>(m_pTable->GetNextRow(pos)));
    }
    void Append(Row* row) {
        SEnhListLink& link = row->*Link;
        link.key = KeyOf(*row);
        SChain& chain = m_chains[link.key];
        link.prev = chain.tail;
        link.next = nullptr;
        if (chain.tail)
            (chain.tail->*Link).next = row;
        else
            chain.head = row;
        chain.tail = row;
        link.filed = true;
        link.detached = false;
    }
    // Back between the neighbours it had when removed, which are still adjacent.
    void Relink(Row* row) {
        SEnhListLink& link = row->*Link;
        SChain& chain = m_chains[link.key];
        if (Row* prev = Prev(row))
            (prev->*Link).next = row;
        else
            chain.head = row;
        if (Row* next = Next(row))
            (next->*Link).prev = row;
        else
            chain.tail = row;
        link.filed = true;
        link.detached = false;
        if (row == m_pCursorDetached) m_pCursor = row;
    }
    // Out of its chain; its own links keep naming the former neighbours.
    void Unlink(Row* row) {
        SEnhListLink& link = row->*Link;
        const auto it = m_chains.find(link.key);
        SChain& chain = it->second;
        if (Row* prev = Prev(row))
            (prev->*Link).next = link.next;
        else
            chain.head = Next(row);
        if (Row* next = Next(row))
            (next->*Link).prev = link.prev;
        else
            chain.tail = Prev(row);
        link.filed = false;
        if (!chain.head) m_chains.erase(it);
    }

    const CEnhTableBase* m_pTable;  // not owned
    std::unordered_map<std::int64_t, SChain> m_chains;
    bool m_pending = false;
    Row* m_pCursor = nullptr;          // the walk's next row
    Row* m_pDetached = nullptr;        // the row the last Remove took out
    Row* m_pCursorDetached = nullptr;  // ... when the walk was about to return it
};
