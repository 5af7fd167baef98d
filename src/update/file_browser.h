#pragma once

// Showing a file in the system's file browser: its folder opened with the file selected. The
// element editor and the comparison views use it too. Silent on every failure.

#include <QString>

namespace edw {

// Nothing happens when path has no folder or no file name.
void showInFileBrowser(const QString& path);

namespace detail {
// The folder (absolute, native separators) and the file of path; false when either is
// missing.
bool fileBrowserTarget(const QString& path, QString& folder, QString& file);
} // namespace detail

} // namespace edw
