#include "host_error.h"

#include <cstdio>

namespace gapi {

namespace {
class category final : public std::error_category
{
public:
    const char* name() const noexcept override { return "gapi"; }
    std::string message(int code) const override
    {
        switch (static_cast<abi::result_t>(code)) {
        case abi::e_pointer:
            return "invalid pointer";
        case abi::e_outofmemory:
            return "out of memory";
        case abi::e_nointerface:
            return "no such interface";
        case abi::e_later_version:
            return "made by a later version";
        default:
            break;
        }
        char text[32];
        std::snprintf(text, sizeof text, "host error 0x%08X", static_cast<unsigned>(code));
        return text;
    }
};
} // namespace

const std::error_category& host_category()
{
    static const category instance;
    return instance;
}

void throw_host_error(abi::result_t code, const std::string& what)
{
    throw std::system_error(static_cast<int>(code), host_category(), what);
}

} // namespace gapi
