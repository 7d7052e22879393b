#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "platform/cstring.h"

namespace {

// Every change of a stored string gives the same result as on an ordinary string and
// leaves the arena's other texts (stored right after it) as they were.
TEST(CStringArenaTest, ChangesMoveTheTextOutAndMatchOrdinaryStrings) {
    const std::vector<std::function<void(CString&)>> changes = {
        [](CString& s) { s.SetAt(1, 'X'); },
        [](CString& s) { s.MakeUpper(); },
        [](CString& s) { s.MakeLower(); },
        [](CString& s) { s.Remove('b'); },
        [](CString& s) { s.Delete(0, 2); },
        [](CString& s) { s.Replace('a', 'z'); },
        [](CString& s) { s.Replace("ab", "_"); },
        [](CString& s) { s.TrimLeft("a"); },
        [](CString& s) { s.TrimRight(); },
        [](CString& s) { s.Insert(1, "--"); },
        [](CString& s) { s += "tail"; },
        [](CString& s) { s = "other"; },
        [](CString& s) { s = ""; },
        [](CString& s) { s.Empty(); },
        [](CString& s) {
            s.GetBuffer(40)[0] = 'Q';
            s.ReleaseBuffer();
        },
        [](CString& s) { s.ReleaseBuffer(3); },
        [](CString& s) { s.Format("%s!", s.GetString()); },
    };
    for (std::size_t i = 0; i < changes.size(); ++i) {
        CStringArena arena;
        CString stored = arena.Store("abcAB b ");
        CString next = arena.Store("neighbour");
        CString plain("abcAB b ");
        changes[i](stored);
        changes[i](plain);
        EXPECT_EQ(stored, plain) << "change " << i;
        EXPECT_EQ(next, "neighbour") << "change " << i;
        EXPECT_EQ(arena.Store("abcAB b "), "abcAB b ") << "change " << i;
    }
}

// Texts and raw allocations share the blocks: each allocation is aligned, none
// overlaps another, a text stored right after an allocation lies right behind it,
// and copies and moves of the texts outlive the arena.
TEST(CStringArenaTest, CopiesAndMovesOutliveNothingButTheArena) {
    CString copy;
    {
        CStringArena arena;
        const std::string big(100000, 'x');  // larger than a block
        std::vector<CString> texts;
        std::vector<std::pair<unsigned char*, std::size_t>> raw;
        for (int i = 0; i < 5000; ++i) {
            const std::size_t bytes = static_cast<std::size_t>(i % 7) * 9 + 1;
            const std::size_t align = std::size_t{1} << (i % 5);
            auto* at = static_cast<unsigned char*>(arena.Allocate(bytes, align));
            ASSERT_EQ(reinterpret_cast<std::uintptr_t>(at) % align, 0u);
            std::memset(at, i & 0xFF, bytes);
            raw.emplace_back(at, bytes);
            texts.push_back(arena.Store(i % 1000 == 0 ? big : std::to_string(i)));
            if (i > 0 && i < 40) {  // within the first block
                const std::ptrdiff_t gap = texts.back().GetString() - reinterpret_cast<char*>(at);
                EXPECT_TRUE(gap >= static_cast<std::ptrdiff_t>(bytes) &&
                            gap < static_cast<std::ptrdiff_t>(bytes) + 16)
                    << i;
            }
        }
        EXPECT_TRUE(arena.Store("").IsEmpty());
        for (int i = 0; i < 5000; ++i) {
            ASSERT_EQ(texts[static_cast<std::size_t>(i)].View(),
                      i % 1000 == 0 ? big : std::to_string(i));
            const auto [at, bytes] = raw[static_cast<std::size_t>(i)];
            ASSERT_EQ(std::count(at, at + bytes, static_cast<unsigned char>(i & 0xFF)),
                      static_cast<std::ptrdiff_t>(bytes));
        }
        copy = texts[42];
        CString moved = std::move(texts[43]);
        EXPECT_EQ(moved, "43");
    }
    EXPECT_EQ(copy, "42");  // a copy owns its text
}

}  // namespace
