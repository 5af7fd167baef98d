#pragma once

// Native window operations behind the embedding widget, one implementation file per platform.
// Handles are the platform's window handles (on Windows an HWND, elsewhere the winId() of a
// window of this process). Failures are ignored.

#include <cstdint>

namespace native {

using handle = std::uintptr_t;

// Makes the window a clipping child window (style exactly child, clip siblings, clip children).
void make_child_style(handle window);
// Makes parent the native parent (owner) of window.
void set_parent(handle window, handle parent);
// Makes a top-level window of the library (a dialog being shown) belong to parent where the
// embedding parent alone does not give it that owner.
void adopt_window(handle window, handle parent);
void enable(handle window, bool enabled);
bool is_enabled(handle window);
// Gives keyboard focus to the window without activating it.
void set_focus(handle window);
// Makes the window the active window.
void activate(handle window);
void bring_to_top(handle window);
// The window that has keyboard focus; 0 for none.
handle focus_window();

// Key state used when the native focus message arrives.
bool mouse_button_down();
bool shift_down();

#if defined(_WIN32)
// The large icon of the window's class (an HICON); null when it has none.
void* class_icon(handle window);
#endif

} // namespace native
