#include "look/resizable_frame.h"

#include <QHoverEvent>
#include <QMouseEvent>
#include <QWindow>

namespace qt {

namespace {
// Width of the resize zone along each edge of the test rectangle.
constexpr int kEdgeZone = 6;
} // namespace

resizable_frame::resizable_frame(QWidget* parent) : QFrame(parent)
{
    setObjectName(QStringLiteral("aec_styled_frame"));
    setFrameStyle(QFrame::StyledPanel);
    setAttribute(Qt::WA_Hover);
}

Qt::Edges resizable_frame::edgesAt(const QRect& rect, const QPoint& point)
{
    const QRect zone = rect.adjusted(3, -3, -3, 3);
    Qt::Edges edges;
    if (!zone.contains(point)) return edges;
    if (point.x() < zone.left() + kEdgeZone) edges |= Qt::LeftEdge;
    if (point.x() > zone.right() - kEdgeZone) edges |= Qt::RightEdge;
    if (point.y() < zone.top() + kEdgeZone) edges |= Qt::TopEdge;
    if (point.y() > zone.bottom() - kEdgeZone) edges |= Qt::BottomEdge;
    return edges;
}

Qt::CursorShape resizable_frame::cursorFor(Qt::Edges edges)
{
    const bool left = edges.testFlag(Qt::LeftEdge), right = edges.testFlag(Qt::RightEdge);
    const bool top = edges.testFlag(Qt::TopEdge), bottom = edges.testFlag(Qt::BottomEdge);
    if ((top && left) || (bottom && right)) return Qt::SizeFDiagCursor;
    if ((top && right) || (bottom && left)) return Qt::SizeBDiagCursor;
    if (top || bottom) return Qt::SizeVerCursor;
    if (left || right) return Qt::SizeHorCursor;
    return Qt::ArrowCursor;
}

bool resizable_frame::event(QEvent* event)
{
    switch (event->type()) {
    case QEvent::HoverEnter:
    case QEvent::HoverMove:
    case QEvent::HoverLeave: {
        const auto* hover = static_cast<QHoverEvent*>(event);
        setCursor(cursorFor(edgesAt(rect(), hover->position().toPoint())));
        break;
    }
    default:
        break;
    }
    return QFrame::event(event);
}

void resizable_frame::mousePressEvent(QMouseEvent* event)
{
    QWidget* owner = parentWidget();
    QWindow* window = owner ? owner->windowHandle() : nullptr;
    const Qt::Edges edges = edgesAt(rect(), event->position().toPoint());
    if (window && edges) {
        beginSystemResize(window, edges);
        event->accept();
        return;
    }
    QFrame::mousePressEvent(event);
}

bool resizable_frame::beginSystemResize(QWindow* window, Qt::Edges edges)
{
    return window->startSystemResize(edges);
}

} // namespace qt
