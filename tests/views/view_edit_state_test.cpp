// The edit state word: its halves, the setters' masking and the folding of a user
// edit into the plex state.
#include "views/view_edit_state.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

// The plex half after folding, written from the rules as stated per user code.
ULONG ReferencePlexAfter(ULONG user, ULONG plex) {
    const ULONG userCode = user & 0x7FFF, plexCode = plex & 0x7FFF;
    switch (userCode) {
        case 1:
            return plexCode == 2 ? plex : user;
        case 2:
            return plexCode == 3 ? 0 : user;
        case 3:
            return plexCode == 2 ? (user & 0x8000) | 4 : plexCode == 4 ? plex : user;
        default:
            return plex;
    }
}

// Every user half and plex half made of the codes 0 to 6 and 0x7FFF, with and
// without the flag, against the reference.
TEST(ViewEditState, FoldingFollowsTheTransitionRulesForEveryCodeAndFlag) {
    std::vector<ULONG> halves;
    for (ULONG flag : {0x0u, 0x8000u}) {
        for (ULONG code = 0; code <= 6; ++code)
            halves.push_back(flag | code);
        halves.push_back(flag | 0x7FFF);
    }
    for (ULONG user : halves) {
        for (ULONG plex : halves) {
            SCOPED_TRACE(testing::Message() << std::hex << "user " << user << " plex " << plex);
            CViewEditState state;
            state.SetEditState(plex << 16 | user);
            EXPECT_EQ(state.GetAndUpdateEditState(), user);
            const ULONG plexAfter = ReferencePlexAfter(user, plex);
            EXPECT_EQ(state.GetPlexEditState(), plexAfter);
            EXPECT_EQ(state.GetUserEditState(), user & 0x8000);  // the code is cleared
            // With the user code cleared, a second fold changes nothing.
            EXPECT_EQ(state.GetAndUpdateEditState(), user & 0x8000);
            EXPECT_EQ(state.GetEditState(), plexAfter << 16 | (user & 0x8000));
        }
    }
}

}  // namespace
