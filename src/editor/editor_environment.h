#pragma once

#include <QString>

#include <functional>

class QWidget;

namespace edw {

// What the editor asks of its surroundings: remembered folders, file choosers, the host's
// test opening of a document, warnings and help. The library's export fills it with the
// settings file, the library's choosers and message box and the host; tests script it.
struct EditorEnvironment
{
    // Settings of the group "common" ("FragmentPath", "3DModelPath").
    std::function<QString(const QString& key)> readSetting;
    std::function<void(const QString& key, const QString& value)> writeSetting;
    // Choosers: the chosen path, or empty when the user cancelled.
    std::function<QString(QWidget* parent, const QString& title, const QString& folder,
                          const QString& filter)>
        openFile;
    std::function<QString(QWidget* parent, const QString& title, const QString& path,
                          const QString& filter)>
        saveFile;
    // Whether the host can open the document (opened invisibly and closed again).
    std::function<bool(const QString& file)> canOpen;
    // A warning about the user's input (the title is a single blank).
    std::function<void(QWidget* parent, const QString& text)> warn;
    std::function<void()> help;
    // The folder of a file chosen for a view kind (0..11), kept for the next session.
    std::function<void(int kind, const QString& folder)> rememberViewFolder;
};

// Settings kept in memory for the process, the library's file choosers and message box, and
// the installed host (every document opens when there is none).
EditorEnvironment defaultEnvironment();

} // namespace edw
