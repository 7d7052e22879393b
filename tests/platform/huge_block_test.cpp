#include "platform/huge_block.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <thread>
#include <vector>

namespace {

using tessmeta::kHugeBlockBytes;

bool AllBytesAre(const unsigned char* bytes, std::size_t count, unsigned char value) {
    for (std::size_t i = 0; i < count; ++i)
        if (bytes[i] != value) return false;
    return true;
}

// Blocks from the warmed stock and large arrays must read exactly as fresh memory
// and keep what the owner writes, with warmers nested and on two threads at once.
TEST(HugeBlock, WarmedBlocksAndArraysReadAsFreshMemory) {
    auto work = [](unsigned char stamp) {
        const tessmeta::CHugeBlockWarmer outer;
        const tessmeta::CHugeBlockWarmer inner(3);
        for (int round = 0; round < 6; ++round) {
            auto* block = static_cast<unsigned char*>(tessmeta::AllocateHugeBlock(kHugeBlockBytes));
            ASSERT_NE(block, nullptr);
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % kHugeBlockBytes, 0u);
            EXPECT_TRUE(AllBytesAre(block, kHugeBlockBytes, 0));
            block[0] = block[kHugeBlockBytes - 1] = stamp;
            tessmeta::FreeHugeBlock(block, kHugeBlockBytes);

            std::vector<unsigned char, tessmeta::CZeroedArrayAllocator<unsigned char>> filled(
                3 * kHugeBlockBytes + 5, stamp);
            EXPECT_TRUE(AllBytesAre(filled.data(), filled.size(), stamp));
            auto* dropped = tessmeta::AllocateArray(4 * kHugeBlockBytes, false);
            tessmeta::FreeArray(dropped, 4 * kHugeBlockBytes);
            auto* zeroed =
                static_cast<unsigned char*>(tessmeta::AllocateArray(kHugeBlockBytes + 1, true));
            EXPECT_TRUE(AllBytesAre(zeroed, kHugeBlockBytes + 1, 0));
            tessmeta::FreeArray(zeroed, kHugeBlockBytes + 1);
        }
    };
    std::thread other(work, 0x5A);
    work(0xA5);
    other.join();
    // Grown in steps, on the heap and then on huge pages: new elements read null.
    std::vector<int*, tessmeta::CZeroedArrayAllocator<int*>> slots;
    int anything = 0;
    for (const std::size_t size : {std::size_t{5}, std::size_t{300}, kHugeBlockBytes / 2}) {
        const std::size_t before = slots.size();
        slots.resize(size);
        for (std::size_t i = before; i < size; ++i)
            ASSERT_EQ(slots[i], nullptr) << size << " " << i;
        std::fill(slots.begin(), slots.end(), &anything);
    }
    void* small = tessmeta::AllocateArray(100, true);
    EXPECT_TRUE(AllBytesAre(static_cast<unsigned char*>(small), 100, 0));
    tessmeta::FreeArray(small, 100);
}

}  // namespace
