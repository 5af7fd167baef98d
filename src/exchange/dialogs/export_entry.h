#pragma once

// The two ways a user exports elements: everything chosen in the export dialog, or a list
// named by the calling library. Both choose the file, write the archive with the export
// writer and tell the user how it ended. What they need of the host and of the library's
// settings comes in through ExportEnvironment, so that tests and the command line can run
// them without either.

#include <esdata/esdata.h>

#include <QString>

#include <functional>

class QWidget;

namespace edw {
class IProgress;
}

namespace exchange {

class ExportUssDialog;

struct ExportEnvironment
{
    std::function<QString(const QString& key)> readSetting;
    std::function<void(const QString& key, const QString& value)> writeSetting;
    // The save dialog: returns the chosen path, empty when the user cancelled.
    std::function<QString(QWidget* parent, const QString& caption, const QString& startPath,
                          const QString& filter)>
        chooseFile;
    // The host's library root, below which the library configuration files lie.
    QString libraryRoot;
    // Where the save dialog starts when no folder was stored; the user's documents when empty.
    QString documentsFolder;
    std::function<void()> help;
    // Tells the host that a long operation starts (true) or has ended (false).
    std::function<void(bool)> longOperation;
    // Lets the host process its pending messages.
    std::function<void()> processMessages;
    // Runs the dialog modally; exec() when empty.
    std::function<int(ExportUssDialog&)> exec;
    // The progress the writer reports to; the library's progress window when null.
    edw::IProgress* progress = nullptr;
};

// The save dialog of Qt, the user's documents folder, and no host.
ExportEnvironment defaultExportEnvironment();

// Builds the selection from every packet of the catalog, runs the dialog, asks for the file
// and writes the archive. Returns true when an archive was written. Throws
// std::runtime_error("Unknown user database") before any dialog for a catalog of unknown kind.
bool exportAll(es_provider_t* provider, QWidget* parent, const ExportEnvironment& environment);

// list holds packet names and element ids in turn, split at separator (empty parts kept). An
// odd number of parts, or pairs that find nothing, return false at once without a word.
bool exportFromList(const QString& list, const QString& separator, es_provider_t* provider,
                    QWidget* parent, const ExportEnvironment& environment);

// Asks for the archive's file as both exports do, stores its folder, and removes an existing
// file first. Empty when the user cancelled or the existing file could not be removed (the
// user was told).
QString chooseExportFile(es_provider_t* provider, QWidget* parent,
                         const ExportEnvironment& environment);

namespace texts {
inline QString exportDialogCaption()
{
    return QStringLiteral("Экспорт пользовательских элементов");
}
inline QString catalogEmpty()
{
    return QStringLiteral("Каталог не содержит пользовательских элементов");
}
inline QString overwriteFailed()
{
    return QStringLiteral("Не удалось перезаписать файл");
}
} // namespace texts

} // namespace exchange
