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
#include "platform/hash_buckets.h"
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
// (Row*, the index's link, owned by the index while the row is filed). The bucket
// array, chain order and growth are those of every chained map (hash_buckets.h);
// the hash is not stored but recomputed from the row's GUID.
template <class Row>
class CGuidIndex {
  public:
    CGuidIndex() = default;
    CGuidIndex(const CGuidIndex&) = delete;
    CGuidIndex& operator=(const CGuidIndex&) = delete;

    int GetCount() const { return m_nCount; }
    UINT GetHashTableSize() const { return m_buckets.GetSize(); }

    // Drops every entry and allocates `size` buckets (0 reads as 1).
    void InitHashTable(UINT size) {
        RemoveAll();
        m_buckets.SetSize(size);
        m_buckets.Allocate();
    }
    // Drops every entry (the rows stay as they are) and frees the bucket array; the
    // size is kept.
    void RemoveAll() {
        m_buckets.Free();
        m_nCount = 0;
    }

    // The row filed under `guid`; null when there is none.
    Row* Find(const GUID& guid) const {
        return m_buckets.Find(SGuidHashTraits::Hash(guid), [&](const Row* row) {
            return SGuidHashTraits::Equal(row->ObjectGuid, guid);
        });
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
        Row* found = Find(row->ObjectGuid);
        if (!found)
            Insert(row);
        else if (found->Unique_Object_ID == 0 && row->Unique_Object_ID != 0)
            Replace(found, row);
    }
    // Files `row` under its GUID, in place of the row holding it if there is one.
    void Refile(Row* row) {
        if (Row* found = Find(row->ObjectGuid))
            Replace(found, row);
        else
            Insert(row);
    }
    // Takes the entry under `guid` out; FALSE when there is none. The last entry
    // takes the bucket array with it.
    BOOL Remove(const GUID& guid) {
        Row* row = m_buckets.Unlink(SGuidHashTraits::Hash(guid), [&](const Row* stored) {
            return SGuidHashTraits::Equal(stored->ObjectGuid, guid);
        });
        if (!row) return FALSE;
        row->NextByGuid = nullptr;
        if (--m_nCount == 0) RemoveAll();
        return TRUE;
    }

  private:
    struct SLinks {
        static Row* GetNext(const Row* row) { return row->NextByGuid; }
        static void SetNext(Row* row, Row* next) { row->NextByGuid = next; }
        static UINT GetHash(const Row* row) { return SGuidHashTraits::Hash(row->ObjectGuid); }
    };

    void Insert(Row* row) {
        m_buckets.Push(row);
        m_buckets.GrowAfterInsert(++m_nCount);
    }
    void Replace(Row* old, Row* row) {
        m_buckets.Replace(old, row);
        old->NextByGuid = nullptr;
    }

    CHashBuckets<Row, SLinks> m_buckets;
    int m_nCount = 0;
};
