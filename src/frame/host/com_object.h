#pragma once

// Reference counting and QueryInterface for an object handed across the host boundary that
// implements the interfaces Is (the first one answers for IUnknown). Objects start with one
// reference, owned by whoever created them, and delete themselves at the last Release.

#include "host_api.h"

#include <atomic>
#include <cstdint>
#include <tuple>

namespace gapi {

template <class... Is> class com_object : public Is...
{
public:
    abi::result_t GAPI_CALL QueryInterface(const abi::iid_t& iid, void** out) override
    {
        if (!out) return abi::e_pointer;
        *out = nullptr;
        if (iid == abi::IUnknown::iid)
            *out = static_cast<abi::IUnknown*>(static_cast<first_t*>(this));
        ((*out == nullptr && iid == Is::iid ? (*out = static_cast<Is*>(this), 0) : 0), ...);
        if (!*out) *out = base_interface(iid);
        if (*out) {
            AddRef();
            return abi::ok;
        }
        *out = other_object(iid);
        return *out ? abi::ok : abi::e_nointerface;
    }
    std::uint32_t GAPI_CALL AddRef() override { return ++m_refs; }
    std::uint32_t GAPI_CALL Release() override
    {
        const std::uint32_t r = --m_refs;
        if (r == 0) delete this;
        return r;
    }

protected:
    using first_t = std::tuple_element_t<0, std::tuple<Is...>>;
    virtual ~com_object() = default;
    // An interface that one of Is derives from (IStringReadOnly of IString): this object
    // cast to it, or null.
    virtual void* base_interface(const abi::iid_t&) { return nullptr; }
    // An interface served by another object (a document's views): a new object, already
    // referenced, or null.
    virtual void* other_object(const abi::iid_t&) { return nullptr; }

private:
    std::atomic<std::uint32_t> m_refs{1};
};

} // namespace gapi
