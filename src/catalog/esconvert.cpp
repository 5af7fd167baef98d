#include "esconvert.h"

#include <QLocale>

namespace edw {

QString fromEs(const char16_t* text)
{
    if (!text) return {};
    return QString::fromUtf16(text);
}

std::u16string toEs(const QString& text)
{
    return std::u16string(reinterpret_cast<const char16_t*>(text.utf16()),
                          static_cast<size_t>(text.size()));
}

QString valueToText(const es_value& value)
{
    switch (value.kind) {
    case ES_VALUE_INT:
        return QString::number(value.i);
    case ES_VALUE_REAL:
        return QString::number(value.d, 'g', QLocale::FloatingPointShortest);
    case ES_VALUE_TEXT:
        return fromEs(value.s);
    case ES_VALUE_EMPTY:
        break;
    }
    return {};
}

int32_t textToInt(const QString& text)
{
    bool ok = false;
    const int result = text.toInt(&ok, 10);
    return ok ? result : 0;
}

double textToReal(const QString& text)
{
    QString dotted = text;
    dotted.replace(QLatin1Char(','), QLatin1Char('.'));
    bool ok = false;
    const double result = dotted.toDouble(&ok);
    return ok ? result : 0.0;
}

bool writeValue(es_stdsize_t* element, es_attribute_t* attribute, const QString& text)
{
    switch (attribute_GetType(attribute)) {
    case ES_ATTR_INT:
        return stdsize_SetValueI(element, attribute, textToInt(text));
    case ES_ATTR_REAL:
        return stdsize_SetValueD(element, attribute, textToReal(text));
    case ES_ATTR_TEXT:
        return stdsize_SetValueS(element, attribute, toEs(text).c_str());
    default:
        return false;
    }
}

} // namespace edw
