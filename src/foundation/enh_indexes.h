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
#pragma once

#include <cstdint>
#include <string_view>

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
