#include <gtest/gtest.h>

#include <unistd.h>

#include <climits>
#include <cstring>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/module.h"
#include "platform/winmsg.h"

namespace {

TEST(RegisterWindowMessageTest, StableIdsFromC000AcrossThreads) {
    EXPECT_EQ(RegisterWindowMessageA(nullptr), 0u);
    EXPECT_EQ(RegisterWindowMessageA(""), 0u);

    // Names unique to this test, so other registrations in the process do not matter.
    const std::string prefix = "%$TEST_WINMSG_" + std::to_string(getpid()) + "_";
    std::mutex mutex;
    std::map<std::string, std::vector<UINT>> seen;
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&, t] {
            for (int round = 0; round < 200; ++round) {
                const std::string name = prefix + std::to_string((round + t) % 25);
                const UINT id = RegisterWindowMessageA(name.c_str());
                std::lock_guard<std::mutex> lock(mutex);
                seen[name].push_back(id);
            }
        });
    }
    for (auto& thread : threads)
        thread.join();

    ASSERT_EQ(seen.size(), 25u);
    std::map<UINT, std::string> owners;
    for (const auto& [name, ids] : seen) {
        for (UINT id : ids)
            EXPECT_EQ(id, ids.front()) << name;
        EXPECT_GE(ids.front(), 0xC000u);
        EXPECT_LE(ids.front(), 0xFFFFu);
        EXPECT_TRUE(owners.emplace(ids.front(), name).second) << "id shared by two names";
        EXPECT_EQ(RegisterWindowMessageA(name.c_str()), ids.front());
    }
    // Ids rise by one per new name, with no gaps.
    EXPECT_EQ(owners.rbegin()->first - owners.begin()->first, 24u);
    const UINT next = RegisterWindowMessageA((prefix + "fresh").c_str());
    EXPECT_GT(next, owners.rbegin()->first);
    // Comparison is exact: a change of case is another name.
    EXPECT_NE(RegisterWindowMessageA((prefix + "FRESH").c_str()), next);
}

TEST(GetModuleFileNameTest, PathOfTheModuleHoldingTheLibrary) {
    // The library is linked statically into this test program.
    char expected[PATH_MAX];
    const ssize_t n = readlink("/proc/self/exe", expected, sizeof expected - 1);
    ASSERT_GT(n, 0);
    expected[n] = '\0';
    const DWORD length = static_cast<DWORD>(n);

    char buffer[PATH_MAX];
    EXPECT_EQ(GetModuleFileNameA(nullptr, buffer, sizeof buffer), length);
    EXPECT_STREQ(buffer, expected);
    // Any address inside a module names it.
    EXPECT_EQ(
        GetModuleFileNameA(reinterpret_cast<HMODULE>(&GetModuleFileNameA), buffer, sizeof buffer),
        length);
    EXPECT_STREQ(buffer, expected);

    // Exactly enough room, one byte short, tiny and zero-sized buffers.
    EXPECT_EQ(GetModuleFileNameA(nullptr, buffer, length + 1), length);
    EXPECT_STREQ(buffer, expected);
    EXPECT_EQ(GetModuleFileNameA(nullptr, buffer, length), length);
    EXPECT_EQ(std::strlen(buffer), length - 1);
    EXPECT_EQ(std::strncmp(buffer, expected, length - 1), 0);
    EXPECT_EQ(GetModuleFileNameA(nullptr, buffer, 1), 1u);
    EXPECT_STREQ(buffer, "");
    buffer[0] = 'x';
    EXPECT_EQ(GetModuleFileNameA(nullptr, buffer, 0), 0u);
    EXPECT_EQ(buffer[0], 'x');

    // An address in no module.
    int onStack = 0;
    EXPECT_EQ(GetModuleFileNameA(&onStack, buffer, sizeof buffer), 0u);
}

}  // namespace
