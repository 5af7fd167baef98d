#include "doc_lock.h"

#include <map>
#include <memory>

namespace gapi::sync {

void document_lock::lock()
{
    std::unique_lock guard(m_mutex);
    const auto self = std::this_thread::get_id();
    if (m_count > 0 && m_owner == self) {
        ++m_count;
        return;
    }
    m_released.wait(guard, [this] { return m_count == 0; });
    m_owner = self;
    m_count = 1;
}

void document_lock::unlock()
{
    std::unique_lock guard(m_mutex);
    if (m_count == 0 || --m_count > 0) return;
    m_owner = {};
    guard.unlock();
    m_released.notify_one();
}

int document_lock::holders() const
{
    std::lock_guard guard(m_mutex);
    return m_count;
}

document_lock& lock_of(std::int64_t documentId)
{
    static std::mutex registryMutex;
    static auto* registry = new std::map<std::int64_t, std::unique_ptr<document_lock>>;
    std::lock_guard guard(registryMutex);
    auto& slot = (*registry)[documentId];
    if (!slot) slot = std::make_unique<document_lock>();
    return *slot;
}

} // namespace gapi::sync
