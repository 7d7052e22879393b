// CIdSlots: a vector beside an id map that answers lookups by id in one read.
//
// Ids are handed out in order, so the ids of a table are nearly dense: slot `id`
// holds what the map answers for `id` (null for nothing), and a lookup reads the
// slot where the map would hash, read a bucket and walk a node. The map stays the
// authority; the owner reports every change of the map's answer for an id (Set, or
// Sync to read it from the map), and the slots mirror it.
//
// The owner may also file its map later, from the same rows in the same order:
// until then the slots hold the answers of the rows entered so far (SetFirst for a
// map where the first row under an id answers, Set for one where the last does),
// and the owner files the map before anything reads it.
//
// Cost bound: slots cover at most twice the row count plus a few thousand, so they
// cost 8 to 16 bytes a row. An id beyond that (a sparse copied range) is left to the
// map alone; MayBeBeyond then says that a lookup past the slots must ask the map.
//
// A slot may also carry one bit about its row (`Mark`), so that a lookup can choose
// its way before it reaches the row; the bit must not change while the row is in
// the map.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/huge_block.h"
#include "platform/types.h"

// No bit: every slot holds its row alone.
struct SNoSlotMark {
    static constexpr bool kUsed = false;
    template <class Row>
    static bool Of(const Row& /*row*/) {
        return false;
    }
};

// `Mark` has `kUsed` and `static bool Of(const Row&)`, as SNoSlotMark.
template <class Row, class Mark = SNoSlotMark>
class CIdSlots {
  public:
    // The row for `id`: the slot when there is one, else `mapFind(id)` when an id
    // may lie beyond the slots, else null.
    template <class MapFind>
    Row* Find(ULONG id, MapFind&& mapFind) const {
        if (id < m_slots.size()) return RowOf(m_slots[id]);
        return m_beyond ? mapFind(id) : nullptr;
    }

    // The same, and the row's mark, read from the slot without reaching the row
    // (false for no row).
    template <class MapFind>
    Row* FindMarked(ULONG id, bool& marked, MapFind&& mapFind) const {
        if (id < m_slots.size()) {
            marked = (m_slots[id] & kMarkBit) != 0;
            return RowOf(m_slots[id]);
        }
        Row* row = m_beyond ? mapFind(id) : nullptr;
        marked = row && Mark::Of(*row);
        return row;
    }

    // The map's answer for `id` is now `row` (null: removed). `rowCount` is the
    // table's row count, which bounds the slots; `mapFind` answers for the ids that
    // new slots cover when some may have been left to the map before.
    template <class MapFind>
    void Set(ULONG id, Row* row, std::size_t rowCount, MapFind&& mapFind) {
        if (id < m_slots.size()) {
            m_slots[id] = SlotOf(row);
            return;
        }
        if (!row) return;  // not covered, so nothing to forget
        const std::size_t limit = 2 * rowCount + kFirstSlots;
        if (id >= limit) {
            m_beyond = true;
            return;
        }
        const std::size_t covered = m_slots.size();
        m_slots.resize(std::min(limit, std::max<std::size_t>(id + 1, covered + covered / 4 + 64)));
        if (m_beyond) {
            for (std::size_t other = covered; other < m_slots.size(); ++other)
                m_slots[other] = SlotOf(mapFind(static_cast<ULONG>(other)));
        } else {
            m_slots[id] = SlotOf(row);
        }
    }

    // For a map that keeps the first row entered under an id and has not been filed
    // yet (it will be, from the same rows in the same order): `row` is entered, and
    // answers for `id` unless a row did before. False when the slots cannot tell
    // without the map (they would grow over ids some of which may lie beyond): file
    // the map and Set the map's answer instead.
    bool SetFirst(ULONG id, Row* row, std::size_t rowCount) {
        if (id < m_slots.size()) {
            if (!m_slots[id]) m_slots[id] = SlotOf(row);
            return true;
        }
        if (m_beyond && id < 2 * rowCount + kFirstSlots) return false;
        Set(id, row, rowCount, [](ULONG) -> Row* { return nullptr; });  // reads no map
        return true;
    }

    // The map's answer for `id` may have changed: a covered slot reads it again.
    template <class MapFind>
    void Sync(ULONG id, MapFind&& mapFind) {
        if (id < m_slots.size()) m_slots[id] = SlotOf(mapFind(id));
    }

    // Makes room for ids below `count` at once (a load that knows its row count).
    void Reserve(std::size_t count) { m_slots.reserve(count); }

    void Clear() {
        decltype(m_slots)().swap(m_slots);  // frees the storage (the allocator's rule)
        m_beyond = false;
    }

    std::size_t GetCoveredCount() const { return m_slots.size(); }
    bool MayBeBeyond() const { return m_beyond; }

  private:
    static constexpr std::size_t kFirstSlots = 4096;
    // A row is at least 2-aligned, so the pointer's lowest bit is free.
    static constexpr std::uintptr_t kMarkBit = Mark::kUsed ? 1 : 0;
    static_assert(alignof(Row) >= 2);

    static std::uintptr_t SlotOf(Row* row) {
        const auto slot = reinterpret_cast<std::uintptr_t>(row);
        return row && Mark::Of(*row) ? slot | kMarkBit : slot;
    }
    static Row* RowOf(std::uintptr_t slot) { return reinterpret_cast<Row*>(slot & ~kMarkBit); }

    // A row's address and its mark. Grows only (Set), or is emptied by Clear.
    std::vector<std::uintptr_t, tessmeta::CZeroedArrayAllocator<std::uintptr_t>> m_slots;
    bool m_beyond = false;
};
