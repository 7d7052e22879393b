// Replaceable output hooks.
//
// The library shows almost nothing to a user: two message-box texts and a few
// diagnostic traces. Both go through a function pointer so that a host program can
// route them (a GUI, a log) and tests can capture the exact texts.
#pragma once

namespace tessmeta {

// Receives the text of a message box. The return value mimics the button pressed;
// the library never looks at it. Default: writes the text and a newline to stderr.
using MessageBoxHook = int (*)(const char* text, const char* caption, unsigned int flags);

// Receives a diagnostic trace text (already formatted). Default: does nothing.
using TraceHook = void (*)(const char* text);

// Install a hook; nullptr restores the default. Returns the previous hook.
MessageBoxHook SetMessageBoxHook(MessageBoxHook hook);
TraceHook SetTraceHook(TraceHook hook);

// Call the installed hook.
int ShowMessageBox(const char* text, const char* caption = "", unsigned int flags = 0);
void Trace(const char* text);

}  // namespace tessmeta

// The framework's spelling of a message box with an OK button, used by the library's
// two user-visible messages.
#define MB_OK 0x00000000u
int AfxMessageBox(const char* text, unsigned int flags = MB_OK);
