#pragma once

// How the pictures of the comparison views are drawn: the view icons from the view glyphs of
// the element editor, red where the two sides differ, and the warning sign. The pictures are
// kept as files of the dialogs' resources; the program compare_icon_painter draws them again
// after a change here, and the comparison test checks the files against this drawing.

#include <editor/slot_icons.h>

#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QString>
#include <QStringList>

namespace exchange::icons {

struct GlyphIcon
{
    const char* name; // the file name under red/ and clean/, without ".png"
    char16_t glyph;
};

inline const GlyphIcon kGlyphIcons[] = {
    {"up", 0xE574},    {"f", 0xE575},    {"back", 0xE576}, {"left", 0xE577},
    {"right", 0xE578}, {"s_up", 0xE57A}, {"s_f", 0xE57B},  {"s_b", 0xE57C},
    {"s_l", 0xE57D},   {"s_r", 0xE57E},  {"gost", 0xE57F}, {"3d", 0xE579},
};

// Inks readable on the light and the dark style alike.
inline QColor redInk()
{
    return QColor(0xd3, 0x2f, 0x2f);
}
inline QColor cleanInk()
{
    return QColor(0x6a, 0x78, 0x88);
}

inline QImage glyphPicture(const GlyphIcon& icon, bool red)
{
    return edw::glyphIcon(icon.glyph, false, red ? redInk() : cleanInk())
        .pixmap(32, 32)
        .toImage()
        .convertToFormat(QImage::Format_ARGB32);
}

// A yellow triangle with an exclamation mark.
inline QImage warningPicture()
{
    QImage image(32, 32, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath triangle;
    triangle.moveTo(16, 2.5);
    triangle.lineTo(30, 28.5);
    triangle.lineTo(2, 28.5);
    triangle.closeSubpath();
    painter.setPen(QPen(QColor(0x8a, 0x5a, 0x00), 1.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(QColor(0xff, 0xc1, 0x07));
    painter.drawPath(triangle);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0x20, 0x20, 0x20));
    painter.drawRoundedRect(QRectF(14.5, 10, 3, 10), 1.5, 1.5);
    painter.drawEllipse(QPointF(16, 24), 1.8, 1.8);
    painter.end();
    return image;
}

// Every picture with its file name relative to the resources folder.
inline std::vector<std::pair<QString, QImage>> allPictures()
{
    std::vector<std::pair<QString, QImage>> pictures;
    for (const GlyphIcon& icon : kGlyphIcons) {
        pictures.emplace_back("red/" + QString::fromLatin1(icon.name) + ".png",
                              glyphPicture(icon, true));
        pictures.emplace_back("clean/" + QString::fromLatin1(icon.name) + ".png",
                              glyphPicture(icon, false));
    }
    pictures.emplace_back(QStringLiteral("vznak.png"), warningPicture());
    return pictures;
}

} // namespace exchange::icons
