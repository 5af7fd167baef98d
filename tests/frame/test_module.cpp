// A module with misbehaving entry points, for the loader's failure paths.

#include "frame/host/host_api.h"

using namespace gapi::abi;

namespace {

// Answers every identity with a fixed code.
class refusing final : public IUnknown
{
public:
    explicit refusing(result_t answer) : m_answer(answer) {}
    result_t GAPI_CALL QueryInterface(const iid_t&, void** out) override
    {
        *out = nullptr;
        return m_answer;
    }
    std::uint32_t GAPI_CALL AddRef() override { return ++m_refs; }
    std::uint32_t GAPI_CALL Release() override
    {
        const std::uint32_t r = --m_refs;
        if (r == 0) delete this;
        return r;
    }

private:
    ~refusing() = default;
    result_t m_answer;
    std::uint32_t m_refs = 1;
};

} // namespace

GAPI_MODULE_ENTRY IUnknown* GAPI_CALL CreateOutOfMemoryObject()
{
    return new refusing(e_outofmemory);
}

GAPI_MODULE_ENTRY IUnknown* GAPI_CALL CreateNoInterfaceObject()
{
    return new refusing(e_nointerface);
}

GAPI_MODULE_ENTRY IUnknown* GAPI_CALL CreateNothing()
{
    return nullptr;
}
