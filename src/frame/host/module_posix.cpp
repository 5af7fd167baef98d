// Module primitives over the dynamic loader.

#include "module.h"

#include <dlfcn.h>
#include <unistd.h>

namespace gapi::host {

std::filesystem::path executable_folder()
{
    char buffer[4096];
    const ssize_t n = ::readlink("/proc/self/exe", buffer, sizeof buffer - 1);
    if (n <= 0) return {};
    std::string path(buffer, static_cast<std::size_t>(n));
    const auto cut = path.find_last_of('/');
    if (cut == std::string::npos) return {};
    return std::filesystem::path(path.substr(0, cut + 1));
}

void* open_module(const std::filesystem::path& file)
{
    // The host process keeps its modules for its whole life; the objects taken from one must
    // outlive the library's own reference, so the module is never unmapped.
    return ::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
}

void* module_symbol(void* module, const char* name)
{
    return ::dlsym(module, name);
}

void close_module(void* module)
{
    if (module) ::dlclose(module);
}

} // namespace gapi::host
