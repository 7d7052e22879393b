// The library-wide message ids: filled at load, in order, and the ids the registry
// gives for the same names.
#include <gtest/gtest.h>

#include "platform/winmsg.h"
#include "repository/repo_messages.h"

namespace {

TEST(RepositoryMessages, ValuesHoldTheRegisteredIds) {
    const UINT loaded = g_nMsgRepositoryCheckOutEnhanced;
    ASSERT_NE(loaded, 0u);
    for (std::size_t i = 0; i < tessmeta::kRepositoryMessageCount; ++i) {
        const tessmeta::SRepositoryMessage& message = tessmeta::kRepositoryMessages[i];
        EXPECT_EQ(*message.id, loaded + i) << message.name;
        EXPECT_EQ(RegisterWindowMessageA(message.name), *message.id) << message.name;
    }
    EXPECT_EQ(g_nMsgRepoCancelGetRepoEvents, loaded + 5);
    tessmeta::RegisterRepositoryMessages();  // again: the same ids
    EXPECT_EQ(g_nMsgRepositoryDelayedCheckOut, loaded + 2);
}

}  // namespace
