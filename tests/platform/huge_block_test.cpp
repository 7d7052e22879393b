#include "platform/huge_block.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>
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

// Whether the mapping holding `at` is advised as huge pages: its THPeligible line in
// /proc/self/smaps where the system advises per mapping; -1 where it cannot tell.
int AdvisedHuge(const void* at) {
    std::ifstream mode("/sys/kernel/mm/transparent_hugepage/enabled");
    std::string modes;
    if (!std::getline(mode, modes) || modes.find("[madvise]") == std::string::npos) return -1;
    std::ifstream smaps("/proc/self/smaps");
    const auto address = reinterpret_cast<std::uintptr_t>(at);
    bool inside = false;
    for (std::string line; std::getline(smaps, line);) {
        std::uintptr_t begin = 0, end = 0;
        char dash = 0;
        std::istringstream head(line);
        if (head >> std::hex >> begin >> dash >> end && dash == '-')
            inside = begin <= address && address < end;
        else if (inside && line.rfind("THPeligible:", 0) == 0)
            return line.find('1') != std::string::npos ? 1 : 0;
    }
    return -1;
}

// Blocks stay on small pages while the process holds a gigabyte or less of them;
// the blocks beyond are advised as huge pages, and giving blocks back lowers the
// count again. (Mapped only: nothing here is touched.)
TEST(HugeBlock, OnlyBlocksBeyondTheFirstGigabyteAreAdvisedAsHugePages) {
    void* first = tessmeta::AllocateHugeBlock(kHugeBlockBytes);
    ASSERT_NE(first, nullptr);
    if (AdvisedHuge(first) < 0) {
        tessmeta::FreeHugeBlock(first, kHugeBlockBytes);
        GTEST_SKIP() << "the system does not advise huge pages per mapping";
    }
    void* beyond = tessmeta::AllocateHugeBlock(tessmeta::kSmallPageBlockBytes);
    ASSERT_NE(beyond, nullptr);
    EXPECT_EQ(AdvisedHuge(first) * 10 + AdvisedHuge(beyond), 1);
    tessmeta::FreeHugeBlock(beyond, tessmeta::kSmallPageBlockBytes);
    void* again = tessmeta::AllocateHugeBlock(kHugeBlockBytes);
    EXPECT_EQ(AdvisedHuge(again), 0);
    tessmeta::FreeHugeBlock(again, kHugeBlockBytes);
    tessmeta::FreeHugeBlock(first, kHugeBlockBytes);
}

}  // namespace
