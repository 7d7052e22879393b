// CEnhDictItemTable: what every table of dictionary items shares, on top of the
// enhanced-table pattern (foundation/enh_table.h).
//
// Every dictionary item is a row of the registry ("Dictionary_Object") plus one row
// of its kind's table, whose foreign key Dictionary_Object_ID is the registry id.
// A kind's table therefore
//   - finds its row by registry id in one hash probe (GetDictObjIDFKRow; one row per
//     registry id, the first loaded answers), and passes the registry id to the
//     identity manager as the model id of a new item's unique object;
//   - numbers its rows in table order (insertion order: load order, then inserts),
//     so that "the first row in table order" can be found without a walk;
//   - keeps an index of its rows by name without case (text column 0), filed on first
//     use, so that the uniqueness tests and lookups by name cost one probe instead of
//     a walk of every item. The index maps the upper-cased name's hash to rows; a
//     search compares the texts, filters by the caller's rule and keeps the row that
//     comes first in table order, which is exactly the row a walk would stop at.
//
// Rows derive from CKelDictItem, which carries the table order and the name index's
// bookkeeping; copies of a row start with fresh bookkeeping.
#pragma once

#include <cstdint>
#include <string_view>
#include <unordered_map>

#include "foundation/enh_table.h"
#include "namespace/name_space_maps.h"
#include "platform/cstring.h"
#include "platform/types.h"

template <class RecordRow, class Table>
class CKelDictItem : public CEnhRow<RecordRow, Table> {
  public:
    CKelDictItem() = default;
    CKelDictItem(const CKelDictItem& other) : CEnhRow<RecordRow, Table>(other) {}
    // Copies the columns and the back pointer; the row keeps its own place.
    CKelDictItem& operator=(const CKelDictItem& other) {
        CEnhRow<RecordRow, Table>::operator=(other);
        return *this;
    }

    // The row's place in its table's order (larger: later); 0 before it enters.
    std::uint64_t GetSequence() const { return m_nSequence; }

  protected:
    // The text of text column `column`, read through the owning table; empty when
    // the row is in no table.
    CString ReadText(int column) const {
        CString text;
        if (const Table* table = this->GetEnhTable())
            table->GetText(static_cast<const typename Table::Row*>(this), column, text);
        return text;
    }

  private:
    template <class>
    friend class CEnhDictItemTable;

    std::uint64_t m_nSequence = 0;
    UINT m_nNameHash = 0;       // the hash it is filed under in the name index
    bool m_bNameFiled = false;  // filed in the name index
};

// Traits defaults of a dictionary item table: foreign key Dictionary_Object_ID,
// indexed by hash map; named by text column 0 unless kNamed is false.
template <class RowT>
struct CEnhDictItemTraits : CEnhTableTraits<RowT> {
    static constexpr DWORD RowT::*kForeignKey = &RowT::Dictionary_Object_ID;
    static constexpr EEnhFKIndex kForeignKeyIndex = EEnhFKIndex::Map;
    static constexpr bool kNamed = true;
};

template <class Traits>
class CEnhDictItemTable : public CEnhTable<Traits> {
    using Base = CEnhTable<Traits>;

  public:
    using Row = typename Traits::Row;
    using Base::Base;

    // The row of registry id `dictObjectId`, or null.
    Row* GetDictObjIDFKRow(DWORD dictObjectId) { return this->GetFKRow(dictObjectId); }

    // The first row in table order whose name equals `name` without case (ASCII
    // upper-casing) and which `accept(const Row&)` takes; null when none, and
    // always without a name space.
    template <class Accept>
    Row* FindFirstByName(std::string_view name, Accept&& accept) requires Traits::kNamed {
        if (!this->GetNameSpace()) return nullptr;
        FileLoadedNames();
        Row* first = nullptr;
        CString text;
        const auto [begin, end] = m_byName.equal_range(tessmeta::HashTextNoCase(name));
        for (auto it = begin; it != end; ++it) {
            Row* row = it->second;
            if (first && row->m_nSequence > first->m_nSequence) continue;
            if (tessmeta::EqualNoCase(NameOf(*row, text), name) &&
                accept(static_cast<const Row&>(*row)))
                first = row;
        }
        return first;
    }

    // The texts most item tables share: Name (column 0), Description (1) and Value
    // (2), by key or by row. Same results as GetText / SetText.
    int GetName(ULONG key, CString& out) const requires(Base::kTextCount >= 1) {
        return this->GetText(key, 0, out);
    }
    int GetName(const Row* row, CString& out) const requires(Base::kTextCount >= 1) {
        return this->GetText(row, 0, out);
    }
    int SetName(ULONG key, const CString& text) requires(Base::kTextCount >= 1) {
        return this->SetText(key, 0, text);
    }
    int SetName(Row* row, const CString& text) requires(Base::kTextCount >= 1) {
        return this->SetText(row, 0, text);
    }
    int GetDescription(ULONG key, CString& out) const requires(Base::kTextCount >= 2) {
        return this->GetText(key, 1, out);
    }
    int GetDescription(const Row* row, CString& out) const requires(Base::kTextCount >= 2) {
        return this->GetText(row, 1, out);
    }
    int SetDescription(ULONG key, const CString& text) requires(Base::kTextCount >= 2) {
        return this->SetText(key, 1, text);
    }
    int SetDescription(Row* row, const CString& text) requires(Base::kTextCount >= 2) {
        return this->SetText(row, 1, text);
    }
    int GetValue(ULONG key, CString& out) const requires(Base::kTextCount >= 3) {
        return this->GetText(key, 2, out);
    }
    int GetValue(const Row* row, CString& out) const requires(Base::kTextCount >= 3) {
        return this->GetText(row, 2, out);
    }
    int SetValue(ULONG key, const CString& text) requires(Base::kTextCount >= 3) {
        return this->SetText(key, 2, text);
    }
    int SetValue(Row* row, const CString& text) requires(Base::kTextCount >= 3) {
        return this->SetText(row, 2, text);
    }

    // Makes `globalId` the row's unique object: its texts' usages move from the old
    // owner to `globalId`. The old object itself is left to the caller.
    void AdoptGlobalId(Row& row, DWORD globalId) {
        const DWORD oldId = row.*Traits::kUniqueId;
        if (oldId == globalId) return;
        if (INameSpaceService* names = this->GetNameSpace()) {
            for (std::size_t i = 0; i < Base::kTextCount; ++i) {
                const int usage = this->GetUsageTypeId(static_cast<int>(i));
                if (const DWORD id = row.*Traits::kTexts[i].column)
                    names->AddOrUpdateString(static_cast<int>(id), static_cast<int>(globalId),
                                             usage);
                if (oldId) names->DeleteString(static_cast<int>(oldId), usage);
            }
        }
        // Through the update so that an index keyed by the unique id re-files it.
        this->UpdateRow(&row, [&](Row& changed) { changed.*Traits::kUniqueId = globalId; });
    }

  protected:
    // Tables with indexes of their own override these and call them first.
    void AddToExtraIndexes(Row* row) override {
        if (!row->m_nSequence) row->m_nSequence = ++m_nNextSequence;
        if constexpr (Traits::kNamed) {
            if (m_namesFiled) FileName(row);
        }
    }
    void RemoveFromExtraIndexes(Row* row) override {
        if constexpr (Traits::kNamed) {
            if (row->m_bNameFiled) UnfileName(row);
        }
    }
    void SizeExtraIndexes(UINT /*bucketCount*/) override {
        m_byName.clear();
        m_namesFiled = false;
    }

  private:
    std::string_view NameOf(const Row& row, CString& scratch) {
        return this->GetNameSpace()->GetStringView(static_cast<LONG>(row.*Traits::kTexts[0].column),
                                                   scratch);
    }
    void FileLoadedNames() {
        if (m_namesFiled) return;
        m_namesFiled = true;
        m_byName.reserve(static_cast<std::size_t>(this->GetCount()));
        for (POSITION pos = this->GetFirstRowPosition(); pos;)
            FileName(this->GetNextRow(pos));
    }
    void FileName(Row* row) {
        CString scratch;
        row->m_nNameHash = tessmeta::HashTextNoCase(NameOf(*row, scratch));
        row->m_bNameFiled = true;
        m_byName.emplace(row->m_nNameHash, row);
    }
    void UnfileName(Row* row) {
        const auto [begin, end] = m_byName.equal_range(row->m_nNameHash);
        for (auto it = begin; it != end; ++it) {
            if (it->second == row) {
                m_byName.erase(it);
                break;
            }
        }
        row->m_bNameFiled = false;
    }

    std::unordered_multimap<UINT, Row*> m_byName;  // no-case name hash -> rows
    bool m_namesFiled = false;                     // the index holds every row
    std::uint64_t m_nNextSequence = 0;
};
