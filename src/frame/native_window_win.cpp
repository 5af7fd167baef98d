// Native window operations over Win32. Qt-free.

#include "native_window.h"

#include <windows.h>

namespace native {

static HWND hwnd(handle h)
{
    return reinterpret_cast<HWND>(h);
}

void make_child_style(handle window)
{
    if (window)
        ::SetWindowLongPtrW(hwnd(window), GWL_STYLE,
                            LONG_PTR(WS_CHILD | WS_CLIPSIBLINGS | WS_CLIPCHILDREN));
}

void set_parent(handle window, handle parent)
{
    if (window) ::SetParent(hwnd(window), hwnd(parent));
}

// The dialog's owner chain already runs through the embedded child window.
void adopt_window(handle, handle)
{}

void enable(handle window, bool enabled)
{
    if (window) ::EnableWindow(hwnd(window), enabled ? TRUE : FALSE);
}

bool is_enabled(handle window)
{
    return window && ::IsWindowEnabled(hwnd(window));
}

void set_focus(handle window)
{
    if (window) ::SetFocus(hwnd(window));
}

void activate(handle window)
{
    if (window) ::SetActiveWindow(hwnd(window));
}

void bring_to_top(handle window)
{
    if (window) ::BringWindowToTop(hwnd(window));
}

handle focus_window()
{
    return reinterpret_cast<handle>(::GetFocus());
}

bool mouse_button_down()
{
    return (::GetKeyState(VK_LBUTTON) & 0x8000) || (::GetKeyState(VK_RBUTTON) & 0x8000);
}

bool shift_down()
{
    return (::GetKeyState(VK_SHIFT) & 0x8000) != 0;
}

// The large icon of the window's class (for the application icon); null when it has none.
void* class_icon(handle window)
{
    if (!window) return nullptr;
    return reinterpret_cast<void*>(::GetClassLongPtrW(hwnd(window), GCLP_HICON));
}

} // namespace native
