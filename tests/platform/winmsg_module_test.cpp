#include <gtest/gtest.h>

#include <dlfcn.h>
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

TEST(GetModuleFileNameTest, PathOfTheModuleHoldingTheLibrary) {
    char expected[PATH_MAX];
#ifdef TESSMETA_SHARED_LIBS
    // The library is a shared object of its own.
    Dl_info info{};
    ASSERT_NE(dladdr(reinterpret_cast<void*>(&GetModuleFileNameA), &info), 0);
    ASSERT_NE(realpath(info.dli_fname, expected), nullptr);
    const auto n = static_cast<ssize_t>(std::strlen(expected));
#else
    // The library is linked statically into this test program.
    const ssize_t n = readlink("/proc/self/exe", expected, sizeof expected - 1);
    ASSERT_GT(n, 0);
    expected[n] = '\0';
#endif
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
