#include "repository/repo_messages.h"

#include "platform/winmsg.h"

UINT g_nMsgRepositoryCheckOutEnhanced = 0;
UINT g_nMsgRepositoryCheckOut = 0;
UINT g_nMsgRepositoryDelayedCheckOut = 0;
UINT g_nMsgRepositoryGetRepoEvents = 0;
UINT g_nMsgRepositoryStatusUpdate = 0;
UINT g_nMsgRepoCancelGetRepoEvents = 0;

namespace tessmeta {

const SRepositoryMessage kRepositoryMessages[kRepositoryMessageCount] = {
    {"%$QVMSG_RepositoryCheckOutEnhanced", &g_nMsgRepositoryCheckOutEnhanced},
    {"%$QVMSG_RepositoryCheckOut", &g_nMsgRepositoryCheckOut},
    {"%$QVMSG_RepositoryDelayedCheckOut", &g_nMsgRepositoryDelayedCheckOut},
    {"%$QVMSG_RepositoryGetRepoEvents", &g_nMsgRepositoryGetRepoEvents},
    {"%$QVMSG_RepositoryStatusUpdate", &g_nMsgRepositoryStatusUpdate},
    {"%$QVMSG_RepoCancelGetRepoEvents", &g_nMsgRepoCancelGetRepoEvents},
};

void RegisterRepositoryMessages() {
    for (const SRepositoryMessage& message : kRepositoryMessages)
        *message.id = RegisterWindowMessageA(message.name);
}

namespace {

// Registers the names while the program (or the shared object) is being loaded.
const struct SRegisterAtLoad {
    SRegisterAtLoad() { RegisterRepositoryMessages(); }
} registerAtLoad;

}  // namespace
}  // namespace tessmeta

// The symbol the linker is told to keep (see repo_messages.h); it pulls this object
// file, and with it the initialiser above, into every program linked with the library.
extern "C" {
extern const int tessmeta_repository_messages;
const int tessmeta_repository_messages = 1;
}
