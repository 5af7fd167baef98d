#pragma once

// The line every export stands on: run the owner, and turn whatever it throws into the
// export's own failure result. Nothing is reported from here; the owners show what the user
// must see.

#include <QString>

#include <cwchar>
#include <utility>

namespace edw {

template <typename Result, typename Owner> Result guarded(Result failure, Owner&& owner) noexcept
{
    try {
        return std::forward<Owner>(owner)();
    } catch (...) {
        return failure;
    }
}

// The whole wide string up to its NUL; empty for a null pointer.
inline QString fromWide(const wchar_t* text)
{
    return text ? QString::fromWCharArray(text, static_cast<qsizetype>(std::wcslen(text)))
                : QString();
}

} // namespace edw
