#pragma once

#include <QDoubleSpinBox>

namespace qt {

// A decimal spin box that accepts both "." and "," as the decimal separator: the one the
// system locale does not use is turned into the one it does while the user types.
class DoubleDotSpinBox : public QDoubleSpinBox
{
    Q_OBJECT
public:
    using QDoubleSpinBox::QDoubleSpinBox;

    QValidator::State validate(QString& text, int& pos) const override;
};

} // namespace qt
