#pragma once

#include <QFrame>

class QWindow;

namespace qt {

// The outer border of a framed dialog (object name "aec_styled_frame"). Its edges resize the
// dialog's window through the window manager; hovering an edge shows the resize cursor.
class resizable_frame : public QFrame
{
    Q_OBJECT
public:
    explicit resizable_frame(QWidget* parent = nullptr);

    // Edges of `rect` hit by `point`. The test rectangle is adjusted unevenly on purpose:
    // the vertical zones reach 3 px beyond the frame, the horizontal ones start 3 px inside.
    static Qt::Edges edgesAt(const QRect& rect, const QPoint& point);
    // The cursor shown over the given edges.
    static Qt::CursorShape cursorFor(Qt::Edges edges);

protected:
    bool event(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    // Starts the window manager's resize; returns whether it began.
    virtual bool beginSystemResize(QWindow* window, Qt::Edges edges);
};

} // namespace qt
