// The window messages of the repository exchange.
//
// The host and its repository client notify each other under six named messages
// (check-out, enhanced check-out, delayed check-out, fetching repository events, a
// status update, cancelling the fetch). The library registers the names when it is
// loaded, before any manager exists, in the order below, so that every module of the
// process that registers the same names obtains the same ids; the library itself
// never posts, sends or reads them. Each id is kept in a library-wide value.
//
// Registration runs in a static initialiser of repo_messages.cpp. So that a static
// link keeps that object file even in a program that never names anything in it,
// the CMake target tells the linker to require its symbol
// tessmeta_repository_messages (a program linked by hand passes
// -Wl,--undefined=tessmeta_repository_messages). The values are 0 until the
// initialiser has run: a host reading them from a static initialiser of its own
// should call RegisterRepositoryMessages() first.
#pragma once

#include <cstddef>

#include "platform/types.h"

extern UINT g_nMsgRepositoryCheckOutEnhanced;  // "%$QVMSG_RepositoryCheckOutEnhanced"
extern UINT g_nMsgRepositoryCheckOut;          // "%$QVMSG_RepositoryCheckOut"
extern UINT g_nMsgRepositoryDelayedCheckOut;   // "%$QVMSG_RepositoryDelayedCheckOut"
extern UINT g_nMsgRepositoryGetRepoEvents;     // "%$QVMSG_RepositoryGetRepoEvents"
extern UINT g_nMsgRepositoryStatusUpdate;      // "%$QVMSG_RepositoryStatusUpdate"
extern UINT g_nMsgRepoCancelGetRepoEvents;     // "%$QVMSG_RepoCancelGetRepoEvents"

namespace tessmeta {

struct SRepositoryMessage {
    const char* name;
    UINT* id;  // the library-wide value
};
// The six messages in registration order.
inline constexpr std::size_t kRepositoryMessageCount = 6;
extern const SRepositoryMessage kRepositoryMessages[kRepositoryMessageCount];

// Registers the six names in order (again: the registry hands back the same ids)
// and fills the values. Runs once at load; safe to call again at any time.
void RegisterRepositoryMessages();

}  // namespace tessmeta
