// Module primitives over the Windows loader. Qt-free.

#include "module.h"

#include <windows.h>

namespace gapi::host {

std::filesystem::path executable_folder()
{
    wchar_t buffer[MAX_PATH];
    const DWORD n = ::GetModuleFileNameW(nullptr, buffer, MAX_PATH);
    if (n == 0 || n >= MAX_PATH) return {};
    std::wstring path(buffer, n);
    const auto cut = path.find_last_of(L"\\/");
    if (cut == std::wstring::npos) return {};
    return std::filesystem::path(path.substr(0, cut + 1));
}

void* open_module(const std::filesystem::path& file)
{
    return reinterpret_cast<void*>(::LoadLibraryW(file.c_str()));
}

void* module_symbol(void* module, const char* name)
{
    return reinterpret_cast<void*>(::GetProcAddress(static_cast<HMODULE>(module), name));
}

void close_module(void* module)
{
    if (module) ::FreeLibrary(static_cast<HMODULE>(module));
}

} // namespace gapi::host
