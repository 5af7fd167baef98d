// The shared library is assembled from the subsystem archives; this unit holds what belongs to
// the module itself: its entry routine on Windows.
#if defined(_WIN32)
#include <windows.h>

#include "frame/host/gapi.h"

namespace {
HINSTANCE g_moduleInstance = nullptr;
}

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID)
{
    if (reason == DLL_PROCESS_ATTACH) {
        g_moduleInstance = instance;
        DisableThreadLibraryCalls(instance);
    } else if (reason == DLL_PROCESS_DETACH) {
        // The host may already be gone: forget its application interface, never release it.
        gapi::forget_application7();
    }
    return TRUE;
}
#endif
