#pragma once

// The Windows shell's part of showing a file: Qt-free, so that the cross compiler checks it.

#include <string>

namespace shell {

// Opens folder in Explorer with file (a full path inside it) selected; silent on failure.
void show_item(const std::wstring& folder, const std::wstring& file);

} // namespace shell
