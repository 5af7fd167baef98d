#pragma once

// The engineering-systems dialogs as the exports run them: each one is parented to a native
// host window through a QWinWidget, wears the library's frame and runs modally.

#include <QByteArray>
#include <QString>
#include <QtGlobal>

namespace edw {

// Section choice. request: the JSON record. On acceptance stores the record with the chosen
// "curPart" in the export's result buffer, points *result at it and returns true. A record of
// another version is refused with a message; cancelling gives false.
bool runSelectPartDialog(quintptr parentWindow, const QByteArray& request, const char** result);

// "Drawing exists" question about path: 1 update, 2 create another, 3 cancel.
int runSaveCdwDialog(quintptr parentWindow, const QString& path);

// Folder chooser; the result (empty when cancelled) in the export's buffer.
wchar_t* runDirectoryDialog(quintptr parentWindow);

// File-saving chooser preset with defaultPath; the result with "\" separators (empty when
// cancelled) in the export's buffer.
wchar_t* runFileSavingDialog(quintptr parentWindow, const QString& defaultPath);

} // namespace edw
