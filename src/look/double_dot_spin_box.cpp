#include "look/double_dot_spin_box.h"

#include <QLocale>

namespace qt {

QValidator::State DoubleDotSpinBox::validate(QString& text, int& pos) const
{
    const QString point = QLocale::system().decimalPoint();
    const QString other = point.size() == 1 && point != QLatin1String(".") ? QStringLiteral(".")
                          : point.size() == 1                              ? QStringLiteral(",")
                                                                           : QStringLiteral(".");
    if (!point.isEmpty() && other != point) {
        // Keep the cursor after the same character when the separator changes length.
        const qsizetype before = text.left(pos).count(other);
        text.replace(other, point);
        pos += static_cast<int>(before * (point.size() - other.size()));
    }
    return QDoubleSpinBox::validate(text, pos);
}

} // namespace qt
