// Native window operations where the host window is a window of this same process (the
// sandbox host's winId()): the handle is resolved to its widget and Qt does the work.

#include "native_window.h"

#include <QApplication>
#include <QGuiApplication>
#include <QHash>
#include <QPointer>
#include <QWidget>
#include <QWindow>

namespace native {

static QWidget* widget(handle h)
{
    return h ? QWidget::find(WId(h)) : nullptr;
}

// A native child window would be drawn inside the host window; the owner link of a window
// system without foreign parents is the transient parent.
void make_child_style(handle)
{}

void set_parent(handle window, handle parent)
{
    QWidget* child = widget(window);
    QWidget* owner = widget(parent);
    if (!child || !owner || !child->windowHandle()) return;
    owner = owner->window();
    owner->winId();
    child->windowHandle()->setTransientParent(owner->windowHandle());
}

// The embedding widget stays hidden, so a dialog transient for it would have no visible owner.
void adopt_window(handle window, handle parent)
{
    QWidget* child = widget(window);
    QWidget* owner = widget(parent);
    if (!child || !owner || !child->windowHandle() || !owner->window()->windowHandle()) return;
    child->windowHandle()->setTransientParent(owner->window()->windowHandle());
}

// A disabled native window keeps its focused control; a disabled widget loses it, so it is
// remembered here and given back when the window is enabled again.
static QHash<QWidget*, QPointer<QWidget>>& focus_before_disable()
{
    static QHash<QWidget*, QPointer<QWidget>> saved;
    return saved;
}

void enable(handle window, bool enabled)
{
    QWidget* w = widget(window);
    if (!w) return;
    if (!enabled) {
        if (w->isEnabled()) focus_before_disable().insert(w, w->focusWidget());
        w->setEnabled(false);
        return;
    }
    w->setEnabled(true);
    const QPointer<QWidget> focus = focus_before_disable().take(w);
    if (focus && w->focusWidget() != focus && focus->isEnabled())
        focus->setFocus(Qt::OtherFocusReason);
}

bool is_enabled(handle window)
{
    QWidget* w = widget(window);
    return w && w->isEnabled();
}

void set_focus(handle window)
{
    QWidget* w = widget(window);
    if (!w) return;
    // A window given focus passes it on to the control that had it last.
    if (w->isWindow() && w->focusWidget()) w = w->focusWidget();
    w->setFocus(Qt::OtherFocusReason);
}

void activate(handle window)
{
    if (QWidget* w = widget(window)) w->window()->activateWindow();
}

void bring_to_top(handle window)
{
    if (QWidget* w = widget(window)) w->window()->raise();
}

handle focus_window()
{
    QWidget* focus = QApplication::focusWidget();
    if (!focus) return 0;
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
