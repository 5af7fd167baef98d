#pragma once

// Host failure codes as std::system_error.

#include "host_api.h"

#include <string>
#include <system_error>

namespace gapi {

const std::error_category& host_category();

// Raises the host's failure code, naming the interface or call that failed.
[[noreturn]] void throw_host_error(abi::result_t code, const std::string& what = {});

// Raises code when it is a failure.
inline void check(abi::result_t code, const char* what = "")
{
    if (abi::failed(code)) throw_host_error(code, what);
}

} // namespace gapi
