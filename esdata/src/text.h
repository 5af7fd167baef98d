// Small text helpers shared by the store: the C API carries NUL-terminated UTF-16.
#ifndef ESDATA_TEXT_H
#define ESDATA_TEXT_H

#include <QString>

#include <cstdint>
#include <string>
#include <string_view>

namespace esdata {

// A null text reads as an empty one.
inline std::u16string_view view(const char16_t* s)
{
    return s ? std::u16string_view(s) : std::u16string_view();
}

inline QString toQString(std::u16string_view s)
{
    return QString::fromUtf16(s.data(), static_cast<qsizetype>(s.size()));
}

inline std::u16string fromQString(const QString& s)
{
    return std::u16string(reinterpret_cast<const char16_t*>(s.utf16()),
                          static_cast<size_t>(s.size()));
}

std::u16string numberText(int64_t v);
std::u16string numberText(double v);

} // namespace esdata

#endif
