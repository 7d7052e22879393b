#include "platform/hooks.h"

#include <atomic>
#include <cstdio>

namespace tessmeta {
namespace {

int DefaultMessageBox(const char* text, const char* /*caption*/, unsigned int /*flags*/) {
    std::fprintf(stderr, "%s\n", text);
    return 1;  // IDOK
}

void DefaultTrace(const char* /*text*/) {}

// Atomic so that installing a hook from a test thread is race-free; the library
// itself is single-threaded per model.
std::atomic<MessageBoxHook> g_messageBox{&DefaultMessageBox};
std::atomic<TraceHook> g_trace{&DefaultTrace};

}  // namespace

MessageBoxHook SetMessageBoxHook(MessageBoxHook hook) {
    return g_messageBox.exchange(hook ? hook : &DefaultMessageBox);
}

TraceHook SetTraceHook(TraceHook hook) {
    return g_trace.exchange(hook ? hook : &DefaultTrace);
}

int ShowMessageBox(const char* text, const char* caption, unsigned int flags) {
    return g_messageBox.load()(text ? text : "", caption ? caption : "", flags);
}

void Trace(const char* text) {
    g_trace.load()(text ? text : "");
}

}  // namespace tessmeta

int AfxMessageBox(const char* text, unsigned int flags) {
    return tessmeta::ShowMessageBox(text, "", flags);
}
