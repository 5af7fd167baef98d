#pragma once

// Per-document locks: every call into a host document, from the user-interface thread or the
// import worker, holds its document's lock. A thread may take the lock it already holds.

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>

namespace gapi::sync {

class document_lock
{
public:
    void lock();
    void unlock();
    // Number of holds of the owning thread; 0 when free.
    int holders() const;

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_released;
    std::thread::id m_owner;
    int m_count = 0;
};

// The lock of a document, from a process-wide registry created on first use.
document_lock& lock_of(std::int64_t documentId);

} // namespace gapi::sync
