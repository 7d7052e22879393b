#include "platform/huge_block.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <thread>
#include <vector>

namespace {

using tessmeta::kHugeBlockBytes;

// With warmers nested and on two threads at once, blocks from the warmed stock read
// as fresh memory, and a vector on the zeroed allocator, grown in steps from the
// heap onto huge pages, reads null in every new element.
TEST(HugeBlock, WarmedBlocksAndZeroedArraysReadAsFreshMemory) {
    auto work = [](std::uint64_t stamp) {
        const tessmeta::CHugeBlockWarmer outer;
        const tessmeta::CHugeBlockWarmer inner(3);
        for (int round = 0; round < 6; ++round) {
            auto* block = static_cast<std::uint64_t*>(tessmeta::AllocateHugeBlock(kHugeBlockBytes));
            ASSERT_NE(block, nullptr);
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % kHugeBlockBytes, 0u);
            const std::size_t words = kHugeBlockBytes / sizeof(std::uint64_t);
            ASSERT_EQ(std::count(block, block + words, 0u), static_cast<long>(words));
            std::fill(block, block + words, stamp);  // the next block must not see it
            tessmeta::FreeHugeBlock(block, kHugeBlockBytes);
        }
        std::vector<std::uint64_t*, tessmeta::CZeroedArrayAllocator<std::uint64_t*>> slots;
        for (const std::size_t size : {std::size_t{5}, std::size_t{300}, kHugeBlockBytes / 2}) {
            const std::size_t before = slots.size();
            slots.resize(size);
            ASSERT_TRUE(std::all_of(slots.begin() + before, slots.end(),
                                    [](const auto* slot) { return slot == nullptr; }));
            std::fill(slots.begin(), slots.end(), &stamp);
        }
    };
    std::thread other(work, 0x5A5A);
    work(0xA5A5);
    other.join();
}

}  // namespace
