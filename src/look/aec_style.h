#pragma once

#include <QColor>
#include <QProxyStyle>

#include <array>

namespace qt {

// Colour tables of the two variants, indexed alike.
constexpr int kColorCount = 53;
const std::array<QRgb, kColorCount>& light_colors();
const std::array<QRgb, kColorCount>& dark_colors();

// The proxy style every framed dialog gets: fixed sizes, and check boxes, radio buttons,
// arrows and spin arrows drawn with the library's icons. Wraps a fresh instance of the
// application's style, so the application's own style object is never taken over.
class aec_style : public QProxyStyle
{
    Q_OBJECT
public:
    // The library's own metric: the resize band at the top of the title bar.
    static constexpr PixelMetric PM_TitleBarResizeBand = static_cast<PixelMetric>(0xF0000001);

    explicit aec_style(bool dark, QObject* parent = nullptr);

    bool dark() const { return m_dark; }
    QColor color(int index) const;

    using QProxyStyle::polish;
    void polish(QWidget* widget) override;
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget = nullptr) const override;
    int pixelMetric(PixelMetric metric, const QStyleOption* option = nullptr,
                    const QWidget* widget = nullptr) const override;
    QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                           const QWidget* widget) const override;

    // Resource path of a library icon in this variant (":/aec/name" or ":/aec/name-light").
    QString iconPath(const QString& name) const;

private:
    bool m_dark;
};

} // namespace qt
