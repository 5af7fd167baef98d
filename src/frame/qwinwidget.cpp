#include "qwinwidget.h"

#include "native_window.h"

#include <QApplication>
#include <QChildEvent>
#include <QFocusEvent>
#include <QVariant>
#include <QWindow>

#if defined(_WIN32)
#include <windows.h>
#endif

QWinWidget::QWinWidget(quintptr parentWindow, QObject*, Qt::WindowFlags flags)
    : QWidget(nullptr, flags), m_parentWindow(parentWindow)
{
    if (!m_parentWindow) return;
    setProperty("_q_embedded_native_parent_handle",
                QVariant::fromValue<qulonglong>(m_parentWindow));
    const WId own = winId();
    native::make_child_style(native::handle(own));
    if (QWindow* window = windowHandle()) {
        native::set_parent(native::handle(window->winId()), m_parentWindow);
        window->setFlags(window->flags() | Qt::FramelessWindowHint);
    }
    QEvent embedding(QEvent::EmbeddingControl);
    QApplication::sendEvent(this, &embedding);
}

QWinWidget::~QWinWidget()
{
    // Children still alive are deleted below without telling us; the host window must not
    // stay disabled.
    restoreParent();
}

void QWinWidget::restoreParent()
{
    if (!m_reenableParent) return;
    m_reenableParent = false;
    native::enable(m_parentWindow, true);
}

void QWinWidget::childEvent(QChildEvent* event)
{
    QObject* child = event->child();
    if (child->isWidgetType()) {
        if (event->added()) {
            child->installEventFilter(this);
        } else if (event->removed() && m_reenableParent) {
            restoreParent();
            // A child being destroyed is no longer a widget here and drops its filters itself.
            if (QWidget* widget = qobject_cast<QWidget*>(child)) widget->removeEventFilter(this);
        }
    }
    QWidget::childEvent(event);
}

bool QWinWidget::eventFilter(QObject* watched, QEvent* event)
{
    QWidget* child = qobject_cast<QWidget*>(watched);
    if (!child) return QWidget::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::Show:
        if (child->isWindow()) {
            if (!m_previousFocus) {
                m_previousFocus = native::focus_window();
                if (!m_previousFocus) m_previousFocus = m_parentWindow;
            }
            hide();
            if (m_parentWindow && child->internalWinId())
                native::adopt_window(native::handle(child->internalWinId()), m_parentWindow);
            if (child->isModal() && !m_reenableParent) {
                native::enable(m_parentWindow, false);
                m_reenableParent = true;
            }
        }
        break;
    case QEvent::Hide:
        restoreParent();
        native::set_focus(m_previousFocus ? m_previousFocus : m_parentWindow);
        if (child->testAttribute(Qt::WA_DeleteOnClose) && child->isWindow()) deleteLater();
        break;
    case QEvent::Close:
        native::activate(m_parentWindow);
        if (child->testAttribute(Qt::WA_DeleteOnClose)) deleteLater();
        break;
    case QEvent::WindowDeactivate:
        if (child->isModal() && child->isHidden()) native::bring_to_top(m_parentWindow);
        break;
    default:
        break;
    }
    return QWidget::eventFilter(watched, event);
}

void QWinWidget::focusInEvent(QFocusEvent* event)
{
    const Qt::FocusReason reason = event->reason();
    if (reason != Qt::TabFocusReason && reason != Qt::BacktabFocusReason) return;
    QWidget* candidate = this;
    while (!(candidate->focusPolicy() & Qt::TabFocus)) {
        candidate = candidate->nextInFocusChain();
        if (candidate == this) {
            candidate = nullptr;
            break;
        }
    }
    if (!candidate) return;
    candidate->setFocus(reason);
    candidate->setAttribute(Qt::WA_KeyboardFocusChange);
    candidate->window()->setAttribute(Qt::WA_KeyboardFocusChange);
    if (reason == Qt::BacktabFocusReason) QWidget::focusNextPrevChild(false);
}

bool QWinWidget::focusNextPrevChild(bool next)
{
    QWidget* current = focusWidget();
    if (!current) current = this;
    if (next) {
        QWidget* walk = current;
        for (;;) {
            walk = walk->nextInFocusChain();
            if (walk->isWindow()) break;
            if (walk->focusPolicy() & Qt::TabFocus) return QWidget::focusNextPrevChild(true);
        }
    } else if (!current->isWindow()) {
        // Is there a window in the chain with no focusable widget after it?
        QWidget* walk = current->nextInFocusChain();
        QWidget* lastWindow = nullptr;
        while (walk != current) {
            if (walk->focusPolicy() & Qt::TabFocus)
                lastWindow = nullptr;
            else if (walk->isWindow())
                lastWindow = walk;
            walk = walk->nextInFocusChain();
        }
        if (!lastWindow) return QWidget::focusNextPrevChild(false);
    }
    native::set_focus(m_parentWindow);
    return true;
}

bool QWinWidget::nativeEvent(const QByteArray& eventType, void* message, qintptr* result)
{
#if defined(_WIN32)
    const MSG* msg = static_cast<const MSG*>(message);
    if (msg && msg->message == WM_SETFOCUS) {
        const Qt::FocusReason reason = native::mouse_button_down() ? Qt::MouseFocusReason
                                       : native::shift_down()      ? Qt::BacktabFocusReason
                                                                   : Qt::TabFocusReason;
        QFocusEvent focusIn(QEvent::FocusIn, reason);
        QApplication::sendEvent(this, &focusIn);
    }
#else
    Q_UNUSED(message)
#endif
    Q_UNUSED(eventType)
    Q_UNUSED(result)
    return false;
}
