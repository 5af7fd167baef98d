#pragma once

#include "import_progress_dialog.h"
#include "import_uss_dialog.h"

#include <esdata/esdata.h>

#include <QMessageBox>
#include <QString>

#include <functional>

class QWidget;

namespace exchange {

class ImportWorker;

// What an import asks of its surroundings: the remembered folder, the file chooser, messages,
// the host's version and help. The library's export fills it with the settings file, the
// library's chooser and message box and the host; tests and the sandbox script it.
struct ImportEnvironment
{
    // The setting "uss_import_path".
    std::function<QString(const QString& key)> readSetting;
    std::function<void(const QString& key, const QString& value)> writeSetting;
    // The chosen file, or empty when the user cancelled.
    std::function<QString(QWidget* parent, const QString& title, const QString& folder,
                          const QString& filter)>
        openFile;
    // A message to the user, with the icon of its kind.
    std::function<void(QWidget* parent, QMessageBox::Icon icon, const QString& text)> message;
    // The question of the progress dialog.
    ImportProgressDialog::Question question;
    // The running host's version text ("23.1"); empty when it cannot be read.
    std::function<QString()> hostVersion;
    std::function<void()> help;
    // The host's library root, below which the library configuration files lie.
    QString libraryRoot;
    // The comparison of a conflict; none: CompareUssDialog.
    ImportUssDialog::Compare compare;
    // Called with each dialog just before it runs (the sandbox takes pictures, tests drive).
    std::function<void(ImportWorker& worker)> prepareWorker;
};

// The library's own choices: memory settings, the Qt chooser, the library's message box,
// no host version.
ImportEnvironment defaultImportEnvironment();

// The whole import into the catalog of provider: choose the file, read and check it, let the
// user decide, write with the progress dialog, and say how it ended. True when at least one
// element was written. Throws std::runtime_error("Unknown user database") before anything is
// shown when the catalog is of no known kind.
bool runUssImport(es_provider_t* provider, QWidget* parent, const ImportEnvironment& environment);

} // namespace exchange
