#include "look/aec_style.h"

#include "look/look.h"

#include <QApplication>
#include <QComboBox>
#include <QHash>
#include <QMenu>
#include <QPainter>
#include <QPushButton>
#include <QScrollBar>
#include <QStyleOption>
#include <QSvgRenderer>
#include <QTabBar>

namespace qt {

namespace {

// Entries used by the style sheet are fixed; the rest keep the two variants coherent:
// text shades, accents, control surfaces and frames of the proxy style's own drawing.
constexpr std::array<QRgb, kColorCount> kLight = {
    0x333333, // 0 text
    0x000000, // 1 strong text
    0x333333, // 2 scroll handle, hovered
    0xffffff, // 3 selected text
    0xffffff, // 4 input background
    0x666666, // 5 disabled text
    0x999999, // 6 placeholder text
    0x808080, // 7 indicator frame
    0xb2b2b2, // 8 light frame
    0x333333, // 9 dialog border, title bar underline
    0x1a1a1a, // 10 pressed glyph
    0x4d4d4d, // 11 glyph
    0xe0f5f9, // 12 accent, pale
    0x33cce5, // 13 accent, selection
    0x2bb3c9, // 14 accent, pressed
    0xf2f2f2, // 15 window background
    0xfafafa, // 16 alternate row
    0xd9d9d9, // 17 separator
    0xe5e5e5, // 18 disabled background
    0xcccccc, // 19 inactive selection
    0xf7f7f7, // 20 tool tip background
    0xededed, // 21 pressed surface
    0xdadada, // 22 grid lines
    0xbfbfbf, // 23 mid frame
    0xb2b2b2, // 24 control border
    0x999999, // 25 disabled border
    0xf2f2f2, // 26 header background
    0xe5e5e5, // 27 title bar background
    0x333333, // 28 title text
    0xd9d9d9, // 29 pressed title bar button
    0xffffff, // 30 button gradient top
    0xededed, // 31 hovered button gradient top
    0xe0e0e0, // 32 pressed button
    0x999999, // 33 disabled button text
    0xffffff, // 34 check mark background
    0x333333, // 35 check mark
    0x1f7fae, // 36 link
    0x7a4fb3, // 37 visited link
    0xd93a3a, // 38 error text
    0xfbe9e9, // 39 error background
    0xc98b0b, // 40 warning text
    0xfdf3dc, // 41 warning background
    0x3a9b4f, // 42 success text
    0xe6f4e9, // 43 success background
    0xcccccc, // 44 button gradient bottom
    0x666666, // 45 checked flat button, hovered tab
    0xe5e5e5, // 46 flat hover, unselected tab
    0xffffff, // 47 tree background
    0x33cce5, // 48 focus frame
    0xcde9ef, // 49 hovered row
    0x000000, // 50 shadow
    0xffffff, // 51 light
    0xa6a6a6, // 52 dark frame
};

constexpr std::array<QRgb, kColorCount> kDark = {
    0xc0c0c0, // 0 text
    0xffffff, // 1 strong text
    0x000000, // 2 scroll handle, hovered
    0xffffff, // 3 selected text
    0x666666, // 4 input background
    0x666666, // 5 disabled text
    0x8c8c8c, // 6 placeholder text
    0xa6a6a6, // 7 indicator frame
    0x808080, // 8 light frame
    0xf2f2f2, // 9 dialog border, title bar underline
    0xffffff, // 10 pressed glyph
    0xd9d9d9, // 11 glyph
    0x2b4f56, // 12 accent, pale
    0x3b9fb0, // 13 accent, selection
    0x338a99, // 14 accent, pressed
    0x4c4c4c, // 15 window background
    0x595959, // 16 alternate row
    0x404040, // 17 separator
    0x333333, // 18 disabled background
    0x737373, // 19 inactive selection
    0x404040, // 20 tool tip background
    0x595959, // 21 pressed surface
    0x5e5e5e, // 22 grid lines
    0x7a7a7a, // 23 mid frame
    0xc0c0c0, // 24 control border
    0x595959, // 25 disabled border
    0x4c4c4c, // 26 header background
    0x333333, // 27 title bar background
    0xf2f2f2, // 28 title text
    0x595959, // 29 pressed title bar button
    0x4c4c4c, // 30 button gradient top
    0x666666, // 31 hovered button gradient top
    0x404040, // 32 pressed button
    0x8c8c8c, // 33 disabled button text
    0x666666, // 34 check mark background
    0xf2f2f2, // 35 check mark
    0x6cc3d9, // 36 link
    0xb28ce0, // 37 visited link
    0xff7070, // 38 error text
    0x5c2b2b, // 39 error background
    0xf5c45a, // 40 warning text
    0x5c4a20, // 41 warning background
    0x7ccf8c, // 42 success text
    0x2b4f33, // 43 success background
    0x333333, // 44 button gradient bottom
    0x000000, // 45 checked flat button, hovered tab
    0x333333, // 46 flat hover, unselected tab
    0x666666, // 47 tree background
    0x3b9fb0, // 48 focus frame
    0x4a6a70, // 49 hovered row
    0x000000, // 50 shadow
    0x808080, // 51 light
    0x262626, // 52 dark frame
};

// The arrows of spin boxes and menus are drawn in squares of this size.
constexpr int kArrowSquare = 9;

QSvgRenderer* renderer(const QString& path)
{
    // Painting happens on the user-interface thread only; the icons never change.
    static QHash<QString, QSvgRenderer*> cache;
    auto it = cache.find(path);
    if (it == cache.end()) it = cache.insert(path, new QSvgRenderer(path));
    return it.value()->isValid() ? it.value() : nullptr;
}

QRectF centred(const QRect& rect, int side)
{
    const int s = std::min({side, rect.width(), rect.height()});
    return QRectF(rect.x() + (rect.width() - s) / 2, rect.y() + (rect.height() - s) / 2, s, s);
}

// Application style's name, for a fresh instance under the proxy (the proxy owns its base).
QString application_style_key()
{
    const QStyle* app =
        qobject_cast<QApplication*>(QCoreApplication::instance()) ? QApplication::style() : nullptr;
    return app ? app->name() : QStringLiteral("Fusion");
}

} // namespace

const std::array<QRgb, kColorCount>& light_colors()
{
    return kLight;
}

const std::array<QRgb, kColorCount>& dark_colors()
{
    return kDark;
}

aec_style::aec_style(bool dark, QObject* parent)
    : QProxyStyle(application_style_key()), m_dark(dark)
{
    ensure_resources();
    setParent(parent);
}

QColor aec_style::color(int index) const
{
    if (index < 0 || index >= kColorCount) return {};
    return QColor::fromRgb((m_dark ? kDark : kLight)[index]);
}

QString aec_style::iconPath(const QString& name) const
{
    return QStringLiteral(":/aec/") + name + (m_dark ? QStringLiteral("-light") : QString());
}

void aec_style::polish(QWidget* widget)
{
    if (qobject_cast<QComboBox*>(widget) || qobject_cast<QPushButton*>(widget) ||
        qobject_cast<QScrollBar*>(widget) || qobject_cast<QTabBar*>(widget)) {
        widget->setAttribute(Qt::WA_Hover);
    }
    if (qobject_cast<QMenu*>(widget) && !widget->windowFlags().testFlag(Qt::NoDropShadowWindowHint))
        widget->setWindowFlag(Qt::NoDropShadowWindowHint);
    QProxyStyle::polish(widget);
}

void aec_style::drawPrimitive(PrimitiveElement element, const QStyleOption* option,
                              QPainter* painter, const QWidget* widget) const
{
    QString name;
    int side = kArrowSquare;
    switch (element) {
    case PE_IndicatorCheckBox:
        name = option->state.testFlag(State_NoChange) ? QStringLiteral("checkbox-mixed")
               : option->state.testFlag(State_On)     ? QStringLiteral("checkbox-checked")
                                                      : QStringLiteral("checkbox-unchecked");
        side = pixelMetric(PM_IndicatorWidth, option, widget);
        break;
    case PE_IndicatorRadioButton:
        name = option->state.testFlag(State_On) ? QStringLiteral("radiobox-checked")
                                                : QStringLiteral("radiobox-unchecked");
        side = pixelMetric(PM_ExclusiveIndicatorWidth, option, widget);
        break;
    case PE_IndicatorArrowDown:
        name = QStringLiteral("triangle-down");
        break;
    case PE_IndicatorArrowLeft:
        name = QStringLiteral("triangle-left");
        break;
    case PE_IndicatorArrowRight:
        name = QStringLiteral("triangle-right");
        break;
    case PE_IndicatorArrowUp:
        name = QStringLiteral("triangle-up");
        break;
    case PE_IndicatorSpinDown:
        name = QStringLiteral("spinbox-down");
        break;
    case PE_IndicatorSpinUp:
        name = QStringLiteral("spinbox-up");
        break;
    case PE_IndicatorHeaderArrow:
        if (const auto* header = qstyleoption_cast<const QStyleOptionHeader*>(option)) {
            if (header->sortIndicator == QStyleOptionHeader::SortUp)
                name = QStringLiteral("spinbox-up");
            else if (header->sortIndicator == QStyleOptionHeader::SortDown)
                name = QStringLiteral("spinbox-down");
        }
        break;
    default:
        break;
    }
    QSvgRenderer* svg = name.isEmpty() ? nullptr : renderer(iconPath(name));
    if (!svg) {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        return;
    }
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    if (!option->state.testFlag(State_Enabled)) painter->setOpacity(0.5);
    svg->render(painter, centred(option->rect, side));
    painter->restore();
}

int aec_style::pixelMetric(PixelMetric metric, const QStyleOption* option,
                           const QWidget* widget) const
{
    switch (static_cast<unsigned>(metric)) {
    case PM_ScrollBarExtent:
        return 9;
    case PM_TabBarBaseOverlap:
        return 1;
    case PM_MenuPanelWidth:
    case PM_TabBarTabShiftHorizontal:
    case PM_TabBarTabShiftVertical:
        return 0;
    case PM_IndicatorWidth:
    case PM_IndicatorHeight:
    case PM_ExclusiveIndicatorWidth:
    case PM_ExclusiveIndicatorHeight:
    case PM_TreeViewIndentation:
        return 16;
    case PM_HeaderMargin:
    case PM_FocusFrameHMargin:
        return 6;
    case PM_HeaderMarkSize:
        return 15;
    case PM_SmallIconSize:
        return 21;
    case PM_HeaderDefaultSectionSizeVertical:
        return 24;
    case static_cast<unsigned>(PM_TitleBarResizeBand):
        return 6;
    default:
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

QSize aec_style::sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                                  const QWidget* widget) const
{
    QSize result = QProxyStyle::sizeFromContents(type, option, size, widget);
    switch (type) {
    case CT_PushButton:
    case CT_ComboBox:
    case CT_LineEdit:
    case CT_SpinBox:
    case CT_ItemViewItem:
        result.setHeight(24);
        break;
    default:
        break;
    }
    return result;
}

} // namespace qt
