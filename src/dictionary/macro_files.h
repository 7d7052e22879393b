// The macro template files that ship beside the library: where they are and how
// they are read.
//
// The files live in a folder "SysMacros/" beside the module that holds the library:
// the program that links it statically, or the shared object it is built into. The
// folder is found from the module's own path, so it moves with an installation.
#pragma once

#include "platform/cstring.h"

namespace tessmeta {

// "<directory of the module holding the library>/SysMacros/"; "SysMacros/" (the
// current directory's) when the module's path is unknown or holds no '/'.
CString DefaultMacroFolder();

// Reads the text file at `path` line by line into `text`, each line followed by CR
// LF (whatever its own line end was, and also after a last line without one); an
// empty file gives an empty text. A file that cannot be opened shows the message
// box "Macro File: <path> not found" (OK button), leaves `text` untouched and gives
// false.
bool ReadMacroText(const CString& path, CString& text);

}  // namespace tessmeta
