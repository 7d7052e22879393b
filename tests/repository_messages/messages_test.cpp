// The repository's window messages are registered while the program loads. This
// program names nothing of the repository, so it also shows that a static link
// keeps the registration.
#include <gtest/gtest.h>

#include "platform/winmsg.h"

namespace {

TEST(RepositoryMessages, RegisteredAtLoadInOrder) {
    // Registered first here, this name comes after the six only if they were
    // registered before the program started.
    EXPECT_EQ(RegisterWindowMessageA("a name of this test"), 0xC006u);
    const char* const names[] = {
        "%$QVMSG_RepositoryCheckOutEnhanced", "%$QVMSG_RepositoryCheckOut",
        "%$QVMSG_RepositoryDelayedCheckOut",  "%$QVMSG_RepositoryGetRepoEvents",
        "%$QVMSG_RepositoryStatusUpdate",     "%$QVMSG_RepoCancelGetRepoEvents"};
    UINT expected = 0xC000;
    for (const char* name : names)
        EXPECT_EQ(RegisterWindowMessageA(name), expected++) << name;
}

}  // namespace
