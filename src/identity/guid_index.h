// CGuidIndex: unique objects by object GUID, a chained hash map whose entries are
// the rows themselves.
//
// It answers as a map from GUID to id would that is kept beside the rows: entry
// GUID -> the id of the row filed under it, 0 for none. A row is filed under its
// own ObjectGuid and chained through its own link (NextByGuid), so an entry costs
// the row 8 bytes and no node of its own. The row's GUID must not change while it
// is filed: take it out (Remove), change the GUID, file it again.
//
// The map's rules, which the unique-object table relies on:
//   - Bucket = SGuidHashTraits::Hash(guid) % GetHashTableSize(); the size is the
//     one asked for (0 reads as 1) and doubles to 2n + 1 whenever the index holds
//     more than twice as many entries as buckets.
//   - File keeps the row filed first under a GUID, except that a row filed with id
//     0 (which reads as "none") gives way to the next row with a non-zero id, in its
//     place in the chain. Refile always puts the new row in the old one's place.
//   - New entries go to the head of their chain; the bucket array exists while the
//     index holds entries or after InitHashTable, and goes with the last entry.
//   - A bucket array of two megabytes or more is a huge block (huge_block.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "platform/guid.h"
#include "platform/huge_block.h"
#include "platform/types.h"

// Hash of the GUID index: the two 64-bit halves, multiplied apart and folded. Any
// change of any byte moves the hash; random GUIDs spread evenly over the buckets.
// (Also usable as CMap traits.)
struct SGuidHashTraits {
    static constexpr bool kGrow = true;
    static UINT Hash(const GUID& guid) {
        std::uint64_t low;
        std::uint64_t high;
        std::memcpy(&low, &guid, sizeof low);
        std::memcpy(&high, reinterpret_cast<const unsigned char*>(&guid) + sizeof low, sizeof high);
        std::uint64_t h = low * 0x9E3779B97F4A7C15ull ^ high * 0xC2B2AE3D27D4EB4Full;
        h ^= h >> 29;
        return static_cast<UINT>(h ^ (h >> 32));
    }
    static bool Equal(const GUID& stored, const GUID& guid) {
        return std::memcmp(&stored, &guid, sizeof(GUID)) == 0;
    }
};

// Row: ObjectGuid (GUID), Unique_Object_ID (convertible to ULONG) and NextByGuid
// (Row*, the index's link, owned by the index while the row is filed).
template <class Row>
class CGuidIndex {
  public:
    CGuidIndex() = default;
    CGuidIndex(const CGuidIndex&) = delete;
    CGuidIndex& operator=(const CGuidIndex&) = delete;
    ~CGuidIndex() { FreeTable(); }

    int GetCount() const { return m_nCount; }
    UINT GetHashTableSize() const { return m_nSize; }

    // Drops every entry and allocates `size` buckets (0 reads as 1).
    void InitHashTable(UINT size) {
        RemoveAll();
        m_nSize = size ? size : 1;
        AllocateTable();
    }
    // Drops every entry (the rows stay as they are) and frees the bucket array; the
    // size is kept.
    void RemoveAll() {
        FreeTable();
        m_nCount = 0;
    }

    // The row filed under `guid`; null when there is none.
    Row* Find(const GUID& guid) const {
        if (!m_pTable) return nullptr;
        for (Row* row = m_pTable[SGuidHashTraits::Hash(guid) % m_nSize]; row; row = row->NextByGuid)
            if (SGuidHashTraits::Equal(row->ObjectGuid, guid)) return row;
        return nullptr;
    }
    // The id filed under `guid` in `id`; FALSE (id untouched) when there is none.
    BOOL Lookup(const GUID& guid, ULONG& id) const {
        const Row* row = Find(guid);
        if (!row) return FALSE;
        id = row->Unique_Object_ID;
        return TRUE;
    }

    // Files `row` under its GUID unless a row with a non-zero id holds it.
    void File(Row* row) {
        Row** link = LinkOf(row->ObjectGuid);
        if (!link || !*link)
            Insert(row);
        else if ((*link)->Unique_Object_ID == 0 && row->Unique_Object_ID != 0)
            Replace(link, row);
    }
    // Files `row` under its GUID, in place of the row holding it if there is one.
    void Refile(Row* row) {
        Row** link = LinkOf(row->ObjectGuid);
        if (link && *link)
            Replace(link, row);
        else
            Insert(row);
    }
    // Takes the entry under `guid` out; FALSE when there is none. The last entry
    // takes the bucket array with it.
    BOOL Remove(const GUID& guid) {
        Row** link = LinkOf(guid);
        if (!link || !*link) return FALSE;
        Row* row = *link;
        *link = row->NextByGuid;
        row->NextByGuid = nullptr;
        if (--m_nCount == 0) RemoveAll();
        return TRUE;
    }

  private:
    // The link that points at the row filed under `guid`, or the null link at the
    // end of its chain; null without a bucket array.
    Row** LinkOf(const GUID& guid) {
        if (!m_pTable) return nullptr;
        Row** link = &m_pTable[SGuidHashTraits::Hash(guid) % m_nSize];
        while (*link && !SGuidHashTraits::Equal((*link)->ObjectGuid, guid))
            link = &(*link)->NextByGuid;
        return link;
    }

    void Insert(Row* row) {
        if (!m_pTable) AllocateTable();
        Row*& head = m_pTable[SGuidHashTraits::Hash(row->ObjectGuid) % m_nSize];
        row->NextByGuid = head;
        head = row;
        if (static_cast<UINT>(++m_nCount) / 2 > m_nSize) Grow();
    }
    static void Replace(Row** link, Row* row) {
        Row* old = *link;
        row->NextByGuid = old->NextByGuid;
        old->NextByGuid = nullptr;
        *link = row;
    }

    // Every entry to 2n + 1 buckets, bucket by bucket, each chain from its head.
    void Grow() {
        const UINT size = m_nSize * 2 + 1;
        bool huge = false;
        Row** table = NewTable(size, huge);
        for (UINT bucket = 0; bucket < m_nSize; ++bucket) {
            for (Row* row = m_pTable[bucket]; row;) {
                Row* next = row->NextByGuid;
                Row*& head = table[SGuidHashTraits::Hash(row->ObjectGuid) % size];
                row->NextByGuid = head;
                head = row;
                row = next;
            }
        }
        FreeTable();
        m_pTable = table;
        m_bHuge = huge;
        m_nSize = size;
    }

    void AllocateTable() { m_pTable = NewTable(m_nSize, m_bHuge); }
    static std::size_t HugeBytes(UINT size) {
        const std::size_t bytes = sizeof(Row*) * size;
        if (bytes < tessmeta::kHugeBlockBytes) return 0;
        return (bytes + tessmeta::kHugeBlockBytes - 1) / tessmeta::kHugeBlockBytes *
               tessmeta::kHugeBlockBytes;
    }
    static Row** NewTable(UINT size, bool& huge) {
        huge = false;
        if (const std::size_t bytes = HugeBytes(size)) {
            if (void* block = tessmeta::AllocateHugeBlock(bytes)) {
                huge = true;
                return static_cast<Row**>(block);
            }
        }
        return new Row*[size]();
    }
    void FreeTable() noexcept {
        if (!m_pTable) return;
        if (m_bHuge)
            tessmeta::FreeHugeBlock(m_pTable, HugeBytes(m_nSize));
        else
            delete[] m_pTable;
        m_pTable = nullptr;
        m_bHuge = false;
    }

    Row** m_pTable = nullptr;
    UINT m_nSize = 17;
    int m_nCount = 0;
    bool m_bHuge = false;
};
