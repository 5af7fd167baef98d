// HTML Help over hhctrl.ocx, located once: the registered in-process server first, then the
// library by name. Qt-free.

#include "help.h"

#include <windows.h>

#include <mutex>

namespace help {

namespace {

using html_help_fn = HWND(WINAPI*)(HWND, LPCWSTR, UINT, DWORD_PTR);

constexpr UINT help_context = 15;      // display the topic of a context number
constexpr WORD html_help_ordinal = 15; // the wide entry point

int g_attempts = 0;
html_help_fn g_htmlHelp = nullptr;

HMODULE load_registered()
{
    HKEY key = nullptr;
    if (::RegOpenKeyExW(HKEY_CLASSES_ROOT,
                        L"CLSID\\{ADB880A6-D8FF-11CF-9377-00AA003B7A11}\\InprocServer32", 0,
                        KEY_QUERY_VALUE, &key) != ERROR_SUCCESS)
        return nullptr;
    wchar_t value[MAX_PATH] = {};
    DWORD size = sizeof value - sizeof(wchar_t);
    DWORD type = 0;
    const LSTATUS status =
        ::RegQueryValueExW(key, nullptr, nullptr, &type, reinterpret_cast<BYTE*>(value), &size);
    ::RegCloseKey(key);
    if (status != ERROR_SUCCESS || (type != REG_SZ && type != REG_EXPAND_SZ)) return nullptr;
    wchar_t expanded[MAX_PATH] = {};
    const DWORD n = ::ExpandEnvironmentStringsW(value, expanded, MAX_PATH);
    if (n == 0 || n > MAX_PATH) return nullptr;
    return ::LoadLibraryW(expanded);
}

void locate()
{
    ++g_attempts;
    HMODULE module = load_registered();
    if (!module) module = ::LoadLibraryW(L"hhctrl.ocx");
    if (!module) return;
    g_htmlHelp = reinterpret_cast<html_help_fn>(
        reinterpret_cast<void*>(::GetProcAddress(module, MAKEINTRESOURCEA(html_help_ordinal))));
}

} // namespace

bool show_context(std::uintptr_t owner, const std::u16string& file, unsigned long context)
{
    static std::once_flag once;
    std::call_once(once, locate);
    if (!g_htmlHelp) return false;
    g_htmlHelp(reinterpret_cast<HWND>(owner), reinterpret_cast<LPCWSTR>(file.c_str()), help_context,
               static_cast<DWORD_PTR>(context));
    return true;
}

int load_attempts()
{
    return g_attempts;
}

} // namespace help
