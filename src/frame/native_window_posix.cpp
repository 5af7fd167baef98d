// Native window operations where the host window is a window of this same process (the
// sandbox host's winId()): the handle is resolved to its widget and Qt does the work.

#include "native_window.h"

#include <QApplication>
#include <QGuiApplication>
#include <QWidget>
#include <QWindow>

namespace native {

static QWidget* widget(handle h)
{
    return h ? QWidget::find(WId(h)) : nullptr;
}

// A native child window would be drawn inside the host window; the owner link of a window
// system without foreign parents is the transient parent.
void make_child_style(handle) {}

void set_parent(handle window, handle parent)
{
    QWidget* child = widget(window);
    QWidget* owner = widget(parent);
    if (!child || !owner || !child->windowHandle())
        return;
    owner = owner->window();
    owner->winId();
    child->windowHandle()->setTransientParent(owner->windowHandle());
}

void enable(handle window, bool enabled)
{
    if (QWidget* w = widget(window))
        w->setEnabled(enabled);
}

bool is_enabled(handle window)
{
    QWidget* w = widget(window);
    return w && w->isEnabled();
}

void set_focus(handle window)
{
    if (QWidget* w = widget(window))
        w->setFocus(Qt::OtherFocusReason);
}

void activate(handle window)
{
    if (QWidget* w = widget(window))
        w->window()->activateWindow();
}

void bring_to_top(handle window)
{
    if (QWidget* w = widget(window))
        w->window()->raise();
}

handle focus_window()
{
    QWidget* focus = QApplication::focusWidget();
    if (!focus)
        return 0;
    return handle(focus->window()->internalWinId());
}

bool mouse_button_down()
{
    return QGuiApplication::mouseButtons() & (Qt::LeftButton | Qt::RightButton);
}

bool shift_down()
{
    return QGuiApplication::queryKeyboardModifiers() & Qt::ShiftModifier;
}

} // namespace native
