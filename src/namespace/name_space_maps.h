// The hashes and maps of the name space.
//
// Texts are hashed with the framework's text hash (CMapHashText): for each byte,
// taken as a signed 8-bit value, hash = hash * 33 + byte in wrapping 32-bit
// arithmetic. The no-case maps hash the text upper-cased by the ASCII rule of
// CString::MakeUpper and compare two texts by that same rule. Both are computed
// over the caller's bytes as they stand: a lookup never copies or allocates.
//
// CNameSpaceRowMap is the map every name-space index is built on: rows keyed by a
// field (or fields) of the row, in a CMap from row to row or, where the row keeps a
// link for the map, in a CIntrusiveMap of the rows themselves, with these invariants:
//   - the row added last among rows with equal keys is the one found;
//   - no entry ever refers to a row that has left the map, even though CMap keeps
//     the key of the first row added under a key when a later row replaces it (in
//     the intrusive map the later row takes the earlier one's place).
// Costs: one hash and one chain walk per operation; a removal that finds the
// removed row still serving as another entry's stored key re-files that entry.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>

#include "platform/cmap.h"
#include "platform/intrusive_map.h"
#include "platform/types.h"

namespace tessmeta {

// Plain ASCII upper-casing of one byte (the rule of CString::MakeUpper).
inline char ToUpperAscii(char ch) {
    const auto byte = static_cast<unsigned char>(ch);
    return static_cast<char>(byte - ((static_cast<unsigned char>(byte - 'a') < 26) << 5));
}

namespace detail {

// hash * 33 + byte, byte taken as signed, folded by `fold` first. Eight bytes per
// step: h * 33^8 + b0 * 33^7 + ... + b7 is the same value modulo 2^32 as eight
// single steps, and its eight products do not wait on each other.
template <class Fold>
inline UINT HashBytes(std::string_view text, Fold fold) {
    auto b = [&](size_t i) { return static_cast<UINT>(static_cast<signed char>(fold(text[i]))); };
    constexpr UINT p1 = 33, p2 = p1 * 33, p3 = p2 * 33, p4 = p3 * 33, p5 = p4 * 33, p6 = p5 * 33,
                   p7 = p6 * 33, p8 = p7 * 33;
    UINT hash = 0;
    size_t i = 0;
    for (const size_t n = text.size(); i + 8 <= n; i += 8) {
        hash = hash * p8 + b(i) * p7 + b(i + 1) * p6 + b(i + 2) * p5 + b(i + 3) * p4 +
               b(i + 4) * p3 + b(i + 5) * p2 + b(i + 6) * p1 + b(i + 7);
    }
    for (; i < text.size(); ++i)
        hash = hash * 33 + b(i);
    return hash;
}

}  // namespace detail

// The text hash of the exact-text maps; the same value as CMapHashText.
inline UINT HashText(std::string_view text) {
    return detail::HashBytes(text, [](char ch) { return ch; });
}

// The text hash of the upper-cased text, without making the upper-cased copy.
inline UINT HashTextNoCase(std::string_view text) {
    return detail::HashBytes(text, [](char ch) { return ToUpperAscii(ch); });
}

namespace detail {

// ToUpperAscii on eight bytes at once. Per byte: bit 7 of `atLeastA` is set when the
// low seven bits are 'a' or above, of `aboveZ` when they are above 'z'; neither sum
// carries into the next byte. Bytes with bit 7 set are no letters.
inline std::uint64_t UpperAscii8(std::uint64_t bytes) {
    constexpr std::uint64_t kOnes = 0x0101010101010101ull, kHighs = 0x8080808080808080ull;
    const std::uint64_t low7 = bytes & ~kHighs;
    const std::uint64_t atLeastA = low7 + (0x80 - 'a') * kOnes;
    const std::uint64_t aboveZ = low7 + (0x80 - 'z' - 1) * kOnes;
    const std::uint64_t lower = atLeastA & ~aboveZ & ~bytes & kHighs;
    return bytes - (lower >> 2);  // 0x80 >> 2 is the 0x20 between the cases
}

}  // namespace detail

inline bool EqualNoCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    size_t i = 0;
    for (; i + 8 <= a.size(); i += 8) {
        std::uint64_t x, y;
        std::memcpy(&x, a.data() + i, 8);
        std::memcpy(&y, b.data() + i, 8);
        if (x != y && detail::UpperAscii8(x) != detail::UpperAscii8(y)) return false;
    }
    for (; i < a.size(); ++i) {
        if (a[i] != b[i] && ToUpperAscii(a[i]) != ToUpperAscii(b[i])) return false;
    }
    return true;
}

// The hash of a string usage's (object, usage type) key.
inline UINT HashStringUsage(DWORD objectId, DWORD usageTypeId) {
    return usageTypeId * 33 + objectId;
}

// A key read from a row. KeyTraits supplies:
//   struct Probe { Row* row; ...key fields...; operator Row*() const { return row; } };
//   static Probe Of(Row* row);               // the key of a row
//   static UINT Hash(const Probe& probe);
//   static bool Equal(const Row* stored, const Probe& probe);
// A probe built without a row (row null) looks a key up. Key traits that also give
// the row's link for the map (`static CMapLink& Link(Row* row);`, or CMapNextLink)
// make the map a CIntrusiveMap whose entries are the rows themselves; the others
// make it a CMap from row to row.
template <class Row, class KeyTraits>
class CNameSpaceRowMap {
  public:
    using Probe = typename KeyTraits::Probe;
    static constexpr bool kIntrusive = requires(Row * row) { KeyTraits::Link(row); };
    using Map = std::conditional_t<kIntrusive, CIntrusiveMap<Row, KeyTraits>,
                                   CMap<Row*, const Probe&, Row*, Row*, KeyTraits>>;

    // Empties the map and gives it `bucketCount` buckets (0 reads as 1).
    void InitHashTable(UINT bucketCount) {
        m_map.InitHashTable(bucketCount, TRUE);
        m_replaced = 0;
    }

    Row* Find(const Probe& probe) const {
        if constexpr (kIntrusive) {
            return m_map.Find(probe);
        } else {
            const auto* pair = m_map.PLookup(probe);
            return pair ? pair->value : nullptr;
        }
    }

    // Maps the row's key to the row, replacing the row found so far.
    void Add(Row* row) {
        if constexpr (kIntrusive) {
            Row* found = m_map.Add(row, true);
            if (found && found != row) ++m_replaced;
        } else {
            Row*& slot = m_map[KeyTraits::Of(row)];
            if (slot && slot != row) ++m_replaced;
            slot = row;
        }
    }

    // Makes sure no entry refers to `row`. True when the entry found under the row's
    // key was removed while some row may still be shadowed under that key (the
    // caller decides whether to find it a place again).
    bool Remove(Row* row) {
        if constexpr (kIntrusive) {
            // A replaced row left the map when it was replaced.
            return m_map.Remove(row) && m_replaced != 0;
        } else {
            const Probe probe = KeyTraits::Of(row);
            auto* pair = m_map.PLookup(probe);
            if (!pair) return false;
            if (pair->value == row) {
                m_map.RemoveKey(probe);
                return m_replaced != 0;
            }
            if (pair->key == row) {
                // The row found under this key is another one: keep it, under its own key.
                Row* winner = pair->value;
                m_map.RemoveKey(probe);
                m_map[KeyTraits::Of(winner)] = winner;
            }
            return false;
        }
    }

    // Removes the entry that `probe` finds and returns the row it held, or null.
    // For rows whose key fields may have changed since they were added: the entry
    // is found by the key asked for, not by the row's present fields.
    Row* TakeFound(const Probe& probe) {
        if constexpr (kIntrusive) {
            return m_map.RemoveKey(probe);
        } else {
            const auto* pair = m_map.PLookup(probe);
            if (!pair) return nullptr;
            Row* row = pair->value;
            m_map.RemoveKey(probe);
            return row;
        }
    }

    int GetCount() const { return m_map.GetCount(); }
    UINT GetHashTableSize() const { return m_map.GetHashTableSize(); }

  private:
    Map m_map;
    // How many times an add replaced another row (since the last InitHashTable).
    // While it is 0 no row is shadowed, and a removal never leaves one behind.
    int m_replaced = 0;
};

// Rows by an unsigned 32-bit field; hash = the field's value.
template <class Row, auto Field>
struct CNameSpaceIdKey {
    static constexpr bool kGrow = true;  // see cmap.h: a growing model stays fast
    struct Probe {
        Row* row;
        DWORD id;
        operator Row*() const { return row; }
    };
    static Probe Of(Row* row) { return {row, row->*Field}; }
    static Probe Lookup(DWORD id) { return {nullptr, id}; }
    static UINT Hash(const Probe& probe) { return probe.id; }
    static bool Equal(const Row* stored, const Probe& probe) { return stored->*Field == probe.id; }
};

// Rows by a text field, byte for byte.
template <class Row, auto Field>
struct CNameSpaceTextKey {
    static constexpr bool kGrow = true;  // see cmap.h: a growing model stays fast
    struct Probe {
        Row* row;
        std::string_view text;
        operator Row*() const { return row; }
    };
    static std::string_view TextOf(const Row* row) { return (row->*Field).GetValue().View(); }
    static Probe Of(Row* row) { return {row, TextOf(row)}; }
    static Probe Lookup(std::string_view text) { return {nullptr, text}; }
    static UINT Hash(const Probe& probe) { return HashText(probe.text); }
    static bool Equal(const Row* stored, const Probe& probe) {
        return TextOf(stored) == probe.text;
    }
};

// Rows by a text field without regard to case.
template <class Row, auto Field>
struct CNameSpaceNoCaseKey {
    static constexpr bool kGrow = true;  // see cmap.h: a growing model stays fast
    using Probe = typename CNameSpaceTextKey<Row, Field>::Probe;
    static std::string_view TextOf(const Row* row) { return (row->*Field).GetValue().View(); }
    static Probe Of(Row* row) { return {row, TextOf(row)}; }
    static Probe Lookup(std::string_view text) { return {nullptr, text}; }
    static UINT Hash(const Probe& probe) { return HashTextNoCase(probe.text); }
    static bool Equal(const Row* stored, const Probe& probe) {
        return EqualNoCase(TextOf(stored), probe.text);
    }
};

}  // namespace tessmeta
