#pragma once

// Owning pointer to a reference-counted host interface.

#include "host_api.h"

#include <utility>

namespace gapi {

template <class T> class com_ptr
{
public:
    com_ptr() = default;
    // Takes over a reference the caller already owns.
    static com_ptr attach(T* p)
    {
        com_ptr r;
        r.m_p = p;
        return r;
    }
    // Adds a reference of its own.
    static com_ptr share(T* p)
    {
        if (p) p->AddRef();
        return attach(p);
    }
    com_ptr(const com_ptr& o) : m_p(o.m_p)
    {
        if (m_p) m_p->AddRef();
    }
    com_ptr(com_ptr&& o) noexcept : m_p(std::exchange(o.m_p, nullptr)) {}
    com_ptr& operator=(com_ptr o) noexcept
    {
        std::swap(m_p, o.m_p);
        return *this;
    }
    ~com_ptr() { reset(); }

    void reset()
    {
        if (auto p = std::exchange(m_p, nullptr)) p->Release();
    }
    // Gives up the reference without releasing it.
    T* detach() { return std::exchange(m_p, nullptr); }
    T* get() const { return m_p; }
    T* operator->() const { return m_p; }
    explicit operator bool() const { return m_p != nullptr; }
    // Out-parameter for calls that return a new reference.
    T** put()
    {
        reset();
        return &m_p;
    }

    // Asks the object for another interface; empty when it has none.
    template <class U> com_ptr<U> query() const
    {
        com_ptr<U> r;
        if (m_p) m_p->QueryInterface(U::iid, reinterpret_cast<void**>(r.put()));
        return r;
    }

private:
    T* m_p = nullptr;
};

} // namespace gapi
