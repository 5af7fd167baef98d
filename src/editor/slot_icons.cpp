#include "editor/slot_icons.h"

#include <QHash>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

namespace edw {
namespace {

constexpr int kSize = 32;
const QColor kFilled(0x2f, 0x80, 0xd0);

// Side of the view arrow: 0 top, 1 front, 2 back, 3 left, 4 right.
void drawArrow(QPainter& painter, int side)
{
    QPainterPath arrow;
    switch (side) {
    case 0: // seen from above: arrow pointing down onto the sheet
        arrow.moveTo(16, 2), arrow.lineTo(16, 10), arrow.moveTo(12, 6), arrow.lineTo(16, 10),
            arrow.lineTo(20, 6);
        break;
    case 1: // from the front: arrow from below
        arrow.moveTo(16, 30), arrow.lineTo(16, 22), arrow.moveTo(12, 26), arrow.lineTo(16, 22),
            arrow.lineTo(20, 26);
        break;
    case 2: // from the back: a point in a circle
        painter.drawEllipse(QPointF(16, 16), 4, 4);
        painter.drawPoint(QPointF(16, 16));
        return;
    case 3: // from the left
        arrow.moveTo(2, 16), arrow.lineTo(10, 16), arrow.moveTo(6, 12), arrow.lineTo(10, 16),
            arrow.lineTo(6, 20);
        break;
    default: // from the right
        arrow.moveTo(30, 16), arrow.lineTo(22, 16), arrow.moveTo(26, 12), arrow.lineTo(22, 16),
            arrow.lineTo(26, 20);
        break;
    }
    painter.drawPath(arrow);
}

QPixmap draw(char16_t glyph, bool filled, const QColor& ink)
{
    QPixmap pixmap(kSize, kSize);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor line = filled ? QColor(Qt::white) : ink;
    if (filled) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(kFilled);
        painter.drawRoundedRect(QRectF(0.5, 0.5, kSize - 1, kSize - 1), 5, 5);
    }
    painter.setBrush(Qt::NoBrush);
    QPen pen(line, 1.6);
    const int code = glyph - 0xE574;
    if (glyph == 0xE579) {
        // The 3D model: a cube.
        painter.setPen(pen);
        const QPolygonF front({{7, 12}, {21, 12}, {21, 26}, {7, 26}});
        painter.drawPolygon(front);
        painter.drawPolyline(QPolygonF({{7, 12}, {12, 6}, {26, 6}, {26, 20}, {21, 26}}));
        painter.drawLine(QPointF(21, 12), QPointF(26, 6));
        return pixmap;
    }
    if (glyph == 0xE57F) {
        // The standard drawing view: a sheet with its title block.
        painter.setPen(pen);
        painter.drawRect(QRectF(6, 4, 20, 24));
        painter.drawRect(QRectF(14, 21, 12, 7));
        painter.drawLine(QPointF(14, 24.5), QPointF(26, 24.5));
        return pixmap;
    }
    const bool simplified = glyph >= 0xE57A;
    const int side = simplified ? glyph - 0xE57A : code;
    if (simplified) pen.setStyle(Qt::DashLine);
    painter.setPen(pen);
    painter.drawRect(QRectF(10, 10, 12, 12));
    pen.setStyle(Qt::SolidLine);
    painter.setPen(pen);
    drawArrow(painter, side);
    return pixmap;
}

} // namespace

QIcon glyphIcon(char16_t glyph, bool filled, const QColor& ink)
{
    // Drawn once per glyph, look and ink for the life of the library: every dialog opened
    // afterwards shares the pictures.
    static QHash<quint64, QIcon> drawn;
    const quint64 key = (quint64(glyph) << 33) | (quint64(filled) << 32) | ink.rgba();
    auto found = drawn.constFind(key);
    if (found == drawn.constEnd()) found = drawn.insert(key, QIcon(draw(glyph, filled, ink)));
    return *found;
}

} // namespace edw
