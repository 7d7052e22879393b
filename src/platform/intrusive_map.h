// CIntrusiveMap: a chained hash set of rows whose chain link is a member of the row.
//
// A map entry is the row itself: the row holds one link per map it can be in, so an
// entry costs no node of its own. The link is a CMapLink (the next row in the chain
// and the row's full hash) or, where the hash is cheap to compute again from the
// row's key, a CMapNextLink (the next row only, 8 bytes less).
//
// Otherwise it keeps CMap's rules (cmap.h): the bucket array, its size (17 until
// set, never 0, freed when the last entry leaves), growth for traits that declare
// kGrow, chain order (a new entry at the head of its chain) and walk order all come
// from the same CHashBuckets. What differs: an entry is a row, so a row is
// in a map at most once, and a row that replaces an equal one takes its place in
// the chain (CMap would keep the first key and replace only the value).
//
// TRAITS supplies
//     using Probe = ...;                                // what a lookup passes
//     static CMapLink& Link(Row* row);                   // the row's link for this map
//                                                        // (or CMapNextLink&)
//     static UINT Hash(const Probe& probe);
//     static bool Equal(const Row* stored, const Probe& probe);
//     static Probe Of(const Row* row);                   // the probe of a row's key
// and optionally `static constexpr bool kGrow = true;`. Rows that are Equal must have
// the same hash. The map never owns its rows; a row must leave the map before it is
// destroyed. With a CMapNextLink the row's key must not change while it is in the
// map; with a CMapLink it may: the row stays where its old hash put it, found only
// by a probe of the old hash that its new key matches.
#pragma once

#include "platform/cmap.h"
#include "platform/hash_buckets.h"
#include "platform/types.h"

// The link a row keeps for one map whose hash is computed from the row's key when
// needed. Meaningless while the row is in no map.
struct CMapNextLink {
    void* pNext = nullptr;

    CMapNextLink() = default;
    // A copied row is in no map.
    CMapNextLink(const CMapNextLink&) {}
    CMapNextLink& operator=(const CMapNextLink&) { return *this; }
};

// The link with the row's full hash, as of when the row entered the map.
struct CMapLink : CMapNextLink {
    UINT nHash = 0;
};

template <class Row, class TRAITS>
class CIntrusiveMap {
  public:
    using Probe = typename TRAITS::Probe;
    static constexpr bool kHashIsStored = requires(Row * row) { TRAITS::Link(row).nHash; };

    CIntrusiveMap() = default;
    CIntrusiveMap(const CIntrusiveMap&) = delete;
    CIntrusiveMap& operator=(const CIntrusiveMap&) = delete;

    int GetCount() const { return m_nCount; }
    bool IsEmpty() const { return m_nCount == 0; }
    UINT GetHashTableSize() const { return m_buckets.GetSize(); }

    // Forgets every entry and sets the bucket count (0 reads as 1); with allocNow
    // the array is allocated at once, else at the next insertion.
    void InitHashTable(UINT hashSize, BOOL allocNow = TRUE) {
        RemoveAll();
        m_buckets.SetSize(hashSize);
        if (allocNow) m_buckets.Allocate();
    }
    // Forgets every entry and frees the bucket array; the size is kept.
    void RemoveAll() {
        m_buckets.Free();
        m_nCount = 0;
    }

    Row* Find(const Probe& probe) const { return Find(probe, TRAITS::Hash(probe)); }

    // Enters `row` unless a row with an equal key is in: then with `replace` the new
    // row takes the other's place (the other leaves the map), else nothing changes.
    // Returns the row that was found (null when `row` went in as a new entry).
    Row* Add(Row* row, bool replace) {
        const Probe probe = TRAITS::Of(row);
        const UINT hash = TRAITS::Hash(probe);
        Row* found = Find(probe, hash);
        if (found == row) return found;
        if constexpr (kHashIsStored) TRAITS::Link(row).nHash = hash;
        if (found) {
            if (replace) m_buckets.Replace(found, row);
            return found;
        }
        m_buckets.Push(row);
        ++m_nCount;
        if constexpr (kMapTraitsGrow<TRAITS>) m_buckets.GrowAfterInsert(m_nCount);
        return nullptr;
    }

    // Removes the entry `probe` finds and returns its row, or null.
    Row* RemoveKey(const Probe& probe) {
        Row* row = m_buckets.Unlink(
            TRAITS::Hash(probe), [&](const Row* stored) { return TRAITS::Equal(stored, probe); });
        if (row) Removed();
        return row;
    }
    // Removes `row` when it is the entry its present key finds; false otherwise.
    bool Remove(Row* row) {
        const Probe probe = TRAITS::Of(row);
        const UINT hash = TRAITS::Hash(probe);
        if (Find(probe, hash) != row) return false;
        m_buckets.Unlink(hash, [row](const Row* stored) { return stored == row; });
        Removed();
        return true;
    }

    // The walk in bucket order: the first row, then each next one, then null. The
    // map must not change during a walk, except that the row just returned may be
    // removed.
    Row* GetFirst() const { return m_buckets.First(); }
    Row* GetNext(const Row* row) const { return m_buckets.Next(row); }

  private:
    struct SLinks {
        static constexpr bool kHashIsStored = CIntrusiveMap::kHashIsStored;
        static Row* GetNext(const Row* row) {
            return static_cast<Row*>(TRAITS::Link(const_cast<Row*>(row)).pNext);
        }
        static void SetNext(Row* row, Row* next) { TRAITS::Link(row).pNext = next; }
        static UINT GetHash(const Row* row) {
            if constexpr (kHashIsStored)
                return TRAITS::Link(const_cast<Row*>(row)).nHash;
            else
                return TRAITS::Hash(TRAITS::Of(const_cast<Row*>(row)));
        }
    };

    Row* Find(const Probe& probe, UINT hash) const {
        return m_buckets.Find(hash,
                              [&](const Row* stored) { return TRAITS::Equal(stored, probe); });
    }

    void Removed() {
        if (--m_nCount == 0) m_buckets.Free();
    }

    CHashBuckets<Row, SLinks> m_buckets;
    int m_nCount = 0;
};
