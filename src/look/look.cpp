#include "look/look.h"

#include "look/aec_style.h"
#include "look/look_p.h"

#include <QCoreApplication>
#include <QDebug>
#include <QFile>
#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

#include <cmath>
#include <mutex>

// Resource registration has to happen outside any namespace.
static void register_look_resources()
{
    Q_INIT_RESOURCE(aec_icons);
    Q_INIT_RESOURCE(aec_style);
    Q_INIT_RESOURCE(aec_pictures);
}

namespace {

std::function<int()>& theme_source()
{
    static std::function<int()> source;
    return source;
}

QString& template_path()
{
    static QString path = QStringLiteral(":/aec/aec_style.qss");
    return path;
}

QString hex(QRgb rgb)
{
    return QStringLiteral("#%1").arg(rgb & 0xffffffu, 6, 16, QLatin1Char('0')).toLower();
}

// The library's resources are registered when the library is loaded, before any export runs.
[[maybe_unused]] const bool resources_registered = (qt::ensure_resources(), true);

} // namespace

namespace qt {

void ensure_resources()
{
    static std::once_flag once;
    std::call_once(once, register_look_resources);
}

void set_theme_source(std::function<int()> source)
{
    theme_source() = std::move(source);
}

bool dark_theme()
{
    const auto& source = theme_source();
    return source && source() == 2;
}

QString style_sheet(bool dark)
{
    ensure_resources();
    QFile file(detail::style_template_path());
    if (!file.open(QIODevice::ReadOnly)) {
        qDebug() << "style sheet template cannot be read:" << file.fileName();
        return {};
    }
    return detail::fill_placeholders(QString::fromUtf8(file.readAll()),
                                     detail::style_sheet_values(dark));
}

QPointer<styled_dialog> attach_styled_frame(QWidget* widget, const QString& closeIcon)
{
    if (!widget) return {};
    ensure_resources();
    const bool dark = dark_theme();
    widget->setWindowFlags(widget->windowFlags() | Qt::FramelessWindowHint);
    QPointer<styled_dialog> frame = new styled_dialog(dark, widget, closeIcon);
    auto* style = new aec_style(dark, widget);
    widget->setStyle(style);
    return frame;
}

namespace detail {

QString fill_placeholders(const QString& text, const QStringList& values)
{
    const qsizetype count = values.size();
    QString out;
    out.reserve(text.size() + text.size() / 4);
    const qsizetype n = text.size();
    for (qsizetype i = 0; i < n; ++i) {
        const QChar c = text.at(i);
        if (c == QLatin1Char('%') && i + 1 < n && text.at(i + 1).isDigit()) {
            // All the digits make the number, as in QString::arg; an unknown number stays.
            qsizetype end = i + 1;
            while (end < n && text.at(end).isDigit())
                ++end;
            const qsizetype digits = end - i - 1;
            const int number = digits <= 3 ? QStringView(text).mid(i + 1, digits).toInt() : 0;
            if (number >= 1 && number <= count) {
                out += values.at(number - 1);
                i = end - 1;
                continue;
            }
        }
        out += c;
    }
    return out;
}

QStringList style_sheet_values(bool dark)
{
    const auto& colors = dark ? dark_colors() : light_colors();
    const auto color = [&](int index) { return hex(colors[index]); };
    const auto icon = [&](const char* name) {
        return QStringLiteral(":/aec/") + QLatin1String(name) +
               (dark ? QStringLiteral("-light") : QString());
    };
    return {
        color(15),                             // %1 window background
        color(24),                             // %2 borders
        color(0),                              // %3 text
        color(4),                              // %4 input background
        color(13),                             // %5 selection, accent
        color(3),                              // %6 selected text
        QStringLiteral("24"),                  // %7 control height
        color(46),                             // %8 flat hover
        QStringLiteral("6"),                   // %9 menu and combo arrow size
        color(2),                              // %10 scroll handle hover
        QStringLiteral("aec_styled_frame"),    // %11
        QStringLiteral("aec_styled_titlebar"), // %12
        color(9),                              // %13 frame border
        color(27),                             // %14 title bar background
        color(30),                             // %15 button gradient top
        color(44),                             // %16 button gradient bottom
        color(31),                             // %17 hovered button gradient top
        QStringLiteral("22"),                  // %18 title bar height
        icon("triangle-right"),                // %19
        icon("triangle-down"),                 // %20
        icon("spinbox-up"),                    // %21
        icon("spinbox-down"),                  // %22
        QStringLiteral("9"),                   // %23 spin arrow size
        QStringLiteral("6"),                   // %24 horizontal padding
        color(18),                             // %25 disabled background
        color(5),                              // %26 disabled text
        QStringLiteral("15"),                  // %27 progress bar height
        color(45),                             // %28 checked flat button, hovered tab
        icon("checkbox-checked"),              // %29
        icon("checkbox-mixed"),                // %30
        icon("checkbox-unchecked"),            // %31
        QStringLiteral("16"),                  // %32 indicator size
        QStringLiteral("12"),                  // %33 group box title offset
        icon("radiobox-checked"),              // %34
        icon("radiobox-unchecked"),            // %35
        QStringLiteral("8"),                   // %36 radio corner radius
        QStringLiteral("20"),                  // %37 title bar button height
        QStringLiteral("2"),                   // %38 title bar bottom border
        QStringLiteral("9"),                   // %39 scroll bar thickness
        QStringLiteral("4"),                   // %40 menu indicator size
    };
}

QString style_template_path()
{
    return template_path();
}

void set_style_template_path(const QString& path)
{
    template_path() = path;
}

int screen_scaled(int pixels)
{
    static const qreal ratio = [] {
        const QScreen* screen = qobject_cast<QGuiApplication*>(QCoreApplication::instance())
                                    ? QGuiApplication::primaryScreen()
                                    : nullptr;
        return screen ? screen->devicePixelRatio() : 1.0;
    }();
    return static_cast<int>(std::floor(pixels * ratio));
}

} // namespace detail
} // namespace qt
