#include "process.h"

#include <cerrno>
#include <signal.h>
#include <sys/types.h>

namespace exchange {

bool processIsRunning(long long pid)
{
    if (pid <= 0 || pid != static_cast<long long>(static_cast<pid_t>(pid))) return false;
    // Signal 0 only asks: a process of another user answers with EPERM and still runs.
    return ::kill(static_cast<pid_t>(pid), 0) == 0 || errno == EPERM;
}

} // namespace exchange
