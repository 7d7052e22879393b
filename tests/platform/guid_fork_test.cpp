#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <vector>

#include "platform/guid.h"

namespace {

// GUIDs come from a buffered random pool: a forked child must not hand out the
// bytes its parent still holds, and every GUID keeps its version and variant.
TEST(GuidForkTest, ParentAndChildGuidsDifferAndAreVersion4) {
    constexpr int kEach = 300;  // more than one pool's worth
    GUID first{};
    ASSERT_EQ(UuidCreate(&first), RPC_S_OK);  // the parent's pool is now filled

    int fds[2];
    ASSERT_EQ(pipe(fds), 0);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        close(fds[0]);
        for (int i = 0; i < kEach; ++i) {
            GUID g{};
            if (UuidCreate(&g) != RPC_S_OK || write(fds[1], &g, sizeof g) != sizeof g) _exit(1);
        }
        _exit(0);
    }
    close(fds[1]);
    std::vector<GUID> all{first};
    for (int i = 0; i < kEach; ++i) {
        GUID g{};
        ASSERT_EQ(UuidCreate(&g), RPC_S_OK);
        all.push_back(g);
    }
    GUID g{};
    while (read(fds[0], &g, sizeof g) == static_cast<ssize_t>(sizeof g))
        all.push_back(g);
    close(fds[0]);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    ASSERT_EQ(all.size(), 1u + 2 * kEach);

    auto less = [](const GUID& a, const GUID& b) { return std::memcmp(&a, &b, sizeof a) < 0; };
    std::set<GUID, decltype(less)> distinct(less);
    for (const GUID& each : all) {
        EXPECT_EQ(each.Data3 >> 12, 4);
        EXPECT_EQ(each.Data4[0] & 0xC0, 0x80);
        distinct.insert(each);
    }
    EXPECT_EQ(distinct.size(), all.size());
}

}  // namespace
