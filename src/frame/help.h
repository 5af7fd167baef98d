#pragma once

// The host's compiled HTML help. Qt-free; one implementation file per platform.

#include <cstdint>
#include <string>

namespace help {

// Opens the help file at a context number, owned by the given window. Returns false without
// showing anything when the HTML Help library is not available; the library is looked for once
// per process.
bool show_context(std::uintptr_t owner, const std::u16string& file, unsigned long context);

// How many times the library was looked for in this process (0 or 1).
int load_attempts();

} // namespace help
