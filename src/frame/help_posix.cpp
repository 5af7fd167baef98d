// There is no HTML Help library outside Windows: the one attempt to load it fails and is
// remembered.

#include "help.h"

#include <dlfcn.h>
#include <mutex>

namespace help {

namespace {
int g_attempts = 0;
void* g_library = nullptr;
} // namespace

bool show_context(std::uintptr_t, const std::u16string&, unsigned long)
{
    static std::once_flag once;
    std::call_once(once, [] {
        ++g_attempts;
        g_library = ::dlopen("hhctrl.ocx", RTLD_NOW | RTLD_LOCAL);
    });
    // Even if something answered the name, it would not speak the HTML Help protocol here.
    return false;
}

int load_attempts()
{
    return g_attempts;
}

} // namespace help
