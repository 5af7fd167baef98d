#include "esconvert.h"

#include <QLocale>

#include <charconv>
#include <cmath>
#include <string>

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

namespace {

// The text as plain ASCII with a leading "+" dropped, or empty when it holds anything else:
// blanks around a number, other digits and signs make it no number at all.
std::string numberChars(const QString& text)
{
    std::string out;
    out.reserve(size_t(text.size()));
    for (QChar c : text) {
        if (c.unicode() > 0x7f) return {};
        out.push_back(char(c.unicode()));
    }
    if (out.size() > 1 && out[0] == '+' && out[1] != '-') out.erase(0, 1);
    return out;
}

} // namespace

int32_t textToInt(const QString& text)
{
    const std::string chars = numberChars(text);
    int32_t result = 0;
    const auto [end, error] = std::from_chars(chars.data(), chars.data() + chars.size(), result);
    return chars.empty() || error != std::errc() || end != chars.data() + chars.size() ? 0 : result;
}

double textToReal(const QString& text)
{
    QString dotted = text;
    dotted.replace(QLatin1Char(','), QLatin1Char('.'));
    const std::string chars = numberChars(dotted);
    double result = 0.0;
    const auto [end, error] = std::from_chars(chars.data(), chars.data() + chars.size(), result);
    if (chars.empty() || error != std::errc() || end != chars.data() + chars.size() ||
        !std::isfinite(result))
        return 0.0;
    return result;
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
