#include "process.h"

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>

namespace exchange {

bool processIsRunning(long long pid)
{
    if (pid <= 0 || pid > 0xFFFFFFFFll) return false;
    HANDLE process = ::OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, DWORD(pid));
    if (!process) {
        // A process of another user or a protected one: it exists, we may not look at it.
        return ::GetLastError() == ERROR_ACCESS_DENIED;
    }
    DWORD code = 0;
    const bool running = ::GetExitCodeProcess(process, &code) && code == STILL_ACTIVE;
    ::CloseHandle(process);
    return running;
}

} // namespace exchange
