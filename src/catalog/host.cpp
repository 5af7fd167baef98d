#include "host.h"

#include <atomic>

namespace edw {

namespace {
std::atomic<IHost*> currentHost{nullptr};
} // namespace

IHost* host()
{
    return currentHost.load();
}

void setHost(IHost* host)
{
    currentHost.store(host);
}

} // namespace edw
