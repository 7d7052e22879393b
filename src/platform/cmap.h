// CMap: the framework's chained hash map, with the behaviour the tables rely on.
//
// Layout and invariants:
//   - An array of `GetHashTableSize()` bucket heads; entry e lives in bucket
//     TRAITS::Hash(e.key) % GetHashTableSize(). The size is 17 unless set by
//     InitHashTable, and is never 0 (a requested 0 becomes 1).
//   - The bucket array exists only while the map holds entries or after an
//     InitHashTable(size, TRUE): it is allocated by the first insertion and freed,
//     with every node block, when the count returns to 0. The size is kept for the
//     next allocation.
//   - A new entry goes to the head of its bucket's chain. Iteration visits bucket 0,
//     1, 2, ... and each chain from its head, so the order is fully determined by the
//     keys, their hashes and the order of insertion.
//   - Inserting a key equal to a present one (SetAt, operator[]) keeps the stored key
//     and its place, and replaces only the value.
//   - Nodes come from blocks of `nBlockSize` nodes and more (node_pool.h); the
//     bucket array is a CHashBuckets (hash_buckets.h), shared with CIntrusiveMap.
//
// Costs: a lookup is one hash, one modulo and a walk of one chain, comparing the
// stored full hash before calling TRAITS::Equal; it never allocates. Sizing the
// table to the expected count keeps chains near length one.
//
// The traits contract. TRAITS supplies two static functions:
//     static UINT Hash(ARG_KEY key);
//     static bool Equal(const KEY& stored, ARG_KEY key);
// Keys that are Equal must have the same Hash. Neither may throw or modify the map.
//
// Growth (opt-in). The framework's map never resizes itself: a table sized for the
// rows of its last save keeps that size however much it grows, and a table of a new
// model starts with one bucket, so a million inserts would walk chains a million
// long. Traits that declare `static constexpr bool kGrow = true;` let the map double
// its bucket array (2n + 1, kept odd) whenever it holds more than twice as many
// entries as buckets. Lookups, replacement and removal behave as before; only the
// bucket count and the bucket order of an iteration change, and neither is relied on
// by a map that opts in.
// Tables use their own traits to map rows by a field of the row (a key, a text,
// the upper-cased text), keeping the row pointer itself as the key.
#pragma once

#include <cassert>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <type_traits>

#include "platform/cstring.h"
#include "platform/hash_buckets.h"
#include "platform/node_pool.h"
#include "platform/types.h"

// The framework's text hash: for each byte taken as a signed 8-bit value,
// hash = hash * 33 + byte, in wrapping 32-bit arithmetic; the empty text hashes to 0.
inline UINT CMapHashText(std::string_view text) {
    UINT hash = 0;
    for (char ch : text)
        hash = hash * 33 + static_cast<UINT>(static_cast<signed char>(ch));
    return hash;
}

// The default hashes: integers (and enumerations) shifted right by four after
// conversion to an unsigned value of their own width (so a negative 32-bit key
// hashes as its unsigned 32-bit pattern); pointers by their address shifted right
// by four; texts by CMapHashText.
template <class T>
requires std::is_integral_v<T> || std::is_enum_v<T>
inline UINT CMapHashKey(T key) {
    using U =
        std::make_unsigned_t<typename std::conditional_t<std::is_enum_v<T>, std::underlying_type<T>,
                                                         std::type_identity<T>>::type>;
    return static_cast<UINT>(static_cast<U>(key) >> 4);
}
template <class T>
inline UINT CMapHashKey(T* key) {
    return static_cast<UINT>(reinterpret_cast<std::uintptr_t>(key) >> 4);
}
inline UINT CMapHashKey(const CString& key) {
    return CMapHashText(key.View());
}
inline UINT CMapHashKey(const char* key) {
    return CMapHashText(key ? key : "");
}

template <class KEY, class ARG_KEY>
struct CMapDefaultTraits {
    static UINT Hash(ARG_KEY key) { return CMapHashKey(key); }
    static bool Equal(const KEY& stored, ARG_KEY key) { return stored == key; }
};

// Whether TRAITS opt in to growth (see above).
template <class TRAITS>
inline constexpr bool kMapTraitsGrow = [] {
    if constexpr (requires { TRAITS::kGrow; }) return static_cast<bool>(TRAITS::kGrow);
    return false;
}();

template <class KEY, class ARG_KEY, class VALUE, class ARG_VALUE,
          class TRAITS = CMapDefaultTraits<KEY, ARG_KEY>>
class CMap {
  public:
    struct CPair {
        const KEY key;
        VALUE value;
    };

    explicit CMap(int nBlockSize = 10) : m_pool(sizeof(CAssoc), nBlockSize) {}
    CMap(const CMap&) = delete;
    CMap& operator=(const CMap&) = delete;
    ~CMap() { RemoveAll(); }

    int GetCount() const { return m_nCount; }
    int GetSize() const { return m_nCount; }
    bool IsEmpty() const { return m_nCount == 0; }
    UINT GetHashTableSize() const { return m_buckets.GetSize(); }

    // Sets the bucket count (0 reads as 1) and frees the current bucket array; with
    // allocNow the new array is allocated at once, else at the next insertion. Called
    // on a map that holds entries, it drops them all first: entries cannot stay in
    // buckets computed for another size.
    void InitHashTable(UINT hashSize, BOOL allocNow = TRUE) {
        RemoveAll();
        m_buckets.SetSize(hashSize);
        if (allocNow) m_buckets.Allocate();
    }

    BOOL Lookup(ARG_KEY key, VALUE& value) const {
        const CAssoc* assoc = Find(key, TRAITS::Hash(key));
        if (!assoc) return FALSE;
        value = assoc->value;
        return TRUE;
    }
    const CPair* PLookup(ARG_KEY key) const { return Find(key, TRAITS::Hash(key)); }
    CPair* PLookup(ARG_KEY key) { return Find(key, TRAITS::Hash(key)); }

    // The value stored under `key`, inserting a value-initialised one when absent.
    VALUE& operator[](ARG_KEY key) {
        const UINT hash = TRAITS::Hash(key);
        if (CAssoc* assoc = Find(key, hash)) return assoc->value;
        return Insert(key, hash)->value;
    }
    void SetAt(ARG_KEY key, ARG_VALUE newValue) { (*this)[key] = newValue; }

    // Removes the entry equal to `key`; FALSE when there is none. Removing the last
    // entry frees the bucket array and the node blocks.
    BOOL RemoveKey(ARG_KEY key) {
        CAssoc* assoc = m_buckets.Unlink(
            TRAITS::Hash(key), [&](const CAssoc* a) { return TRAITS::Equal(a->key, key); });
        if (!assoc) return FALSE;
        FreeAssoc(assoc);
        return TRUE;
    }

    // Destroys every entry and frees the bucket array and node blocks; the bucket
    // count is kept.
    void RemoveAll() {
        m_buckets.ForEach([](CAssoc* assoc) { assoc->~CAssoc(); });
        m_buckets.Free();
        m_nCount = 0;
        m_pool.Reset();
    }

    // Iteration in bucket order. The map must not change between the calls, except
    // that the entry just returned may be removed.
    POSITION GetStartPosition() const { return ToPosition(m_buckets.First()); }
    void GetNextAssoc(POSITION& position, KEY& key, VALUE& value) const {
        assert(position != nullptr);
        const CAssoc* assoc = reinterpret_cast<const CAssoc*>(position);
        key = assoc->key;
        value = assoc->value;
        position = ToPosition(m_buckets.Next(assoc));
    }
    // The same walk without copying keys and values; null at the end.
    CPair* PGetFirstAssoc() { return m_buckets.First(); }
    const CPair* PGetFirstAssoc() const { return m_buckets.First(); }
    CPair* PGetNextAssoc(const CPair* pair) {
        return m_buckets.Next(static_cast<const CAssoc*>(pair));
    }
    const CPair* PGetNextAssoc(const CPair* pair) const {
        return m_buckets.Next(static_cast<const CAssoc*>(pair));
    }

  private:
    struct CAssoc : CPair {
        CAssoc* pNext;
        UINT nHashValue;  // full hash: a cheap filter before Equal, and the bucket
    };
    static_assert(alignof(CAssoc) <= alignof(std::max_align_t));
    struct SLinks {
        static CAssoc* GetNext(const CAssoc* assoc) { return assoc->pNext; }
        static void SetNext(CAssoc* assoc, CAssoc* next) { assoc->pNext = next; }
        static UINT GetHash(const CAssoc* assoc) { return assoc->nHashValue; }
    };

    static POSITION ToPosition(const CAssoc* assoc) {
        return reinterpret_cast<POSITION>(const_cast<CAssoc*>(assoc));
    }

    CAssoc* Find(ARG_KEY key, UINT hash) const {
        return m_buckets.Find(hash, [&](const CAssoc* a) { return TRAITS::Equal(a->key, key); });
    }

    CAssoc* Insert(ARG_KEY key, UINT hash) {
        m_buckets.Allocate();
        void* storage = m_pool.Alloc();
        CAssoc* assoc;
        try {
            assoc = ::new (storage) CAssoc{{KEY(key), VALUE()}, nullptr, hash};
        } catch (...) {
            m_pool.Free(storage);
            throw;
        }
        m_buckets.Push(assoc);
        ++m_nCount;
        if constexpr (kMapTraitsGrow<TRAITS>) m_buckets.GrowAfterInsert(m_nCount);
        return assoc;
    }

    void FreeAssoc(CAssoc* assoc) {
        assoc->~CAssoc();
        m_pool.Free(assoc);
        if (--m_nCount == 0) RemoveAll();
    }

    CHashBuckets<CAssoc, SLinks> m_buckets;
    int m_nCount = 0;
    CNodePool m_pool;
};
