#pragma once

#include <QString>
#include <QVariant>

namespace edw {

// One value of the parameter panel on its way into an element.
struct PanelParameter
{
    enum Kind
    {
        Value,
        Formula
    };

    QString name;  // the attribute's name
    QString label; // the row's label (the attribute's description when it must be added)
    QVariant value;
    Kind kind = Value;
};

} // namespace edw
