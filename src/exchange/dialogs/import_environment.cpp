#include "import_environment.h"

#include "archivekind.h"
#include "exchangetexts.h"
#include "importarchive.h"
#include "importdecision.h"
#include "importworker.h"

#include "look/look.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHash>
#include <QStandardPaths>

#include <memory>

namespace exchange {

namespace {

const QString folderKey = QStringLiteral("uss_import_path");

// Every record in one library, in archive order.
std::vector<ImportGroup> catalogGroups(const std::vector<ImportRecord>& records)
{
    ImportGroup group;
    group.title = QStringLiteral("Каталог");
    group.records.reserve(records.size());
    for (size_t i = 0; i < records.size(); ++i)
        group.records.push_back(i);
    return {std::move(group)};
}

} // namespace

QString importCaption()
{
    return QStringLiteral("Импорт пользовательских элементов");
}

QString importFilter(const QString& extension)
{
    return QStringLiteral("Пользовательские элементы (*.%1);;Все файлы (*.*)").arg(extension);
}

ImportEnvironment defaultImportEnvironment()
{
    ImportEnvironment environment;
    auto settings = std::make_shared<QHash<QString, QString>>();
    environment.readSetting = [settings](const QString& key) { return settings->value(key); };
    environment.writeSetting = [settings](const QString& key, const QString& value) {
        settings->insert(key, value);
    };
    environment.openFile = [](QWidget* parent, const QString& title, const QString& folder,
                              const QString& filter) {
        return QFileDialog::getOpenFileName(parent, title, folder, filter);
    };
    environment.message = [](QWidget* parent, QMessageBox::Icon icon, const QString& text) {
        qt::message_box::show(parent, icon, importCaption(), text);
    };
    return environment;
}

bool runUssImport(es_provider_t* provider, QWidget* parent, const ImportEnvironment& environment)
{
    // Before any dialog: a catalog of no known kind throws here.
    const QString extension = archiveExtension(provider);
    auto tell = [&](QMessageBox::Icon icon, const QString& text) {
        if (environment.message) environment.message(parent, icon, text);
    };

    QString folder = environment.readSetting ? environment.readSetting(folderKey) : QString();
    if (folder.isEmpty())
        folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    const QString path =
        environment.openFile
            ? environment.openFile(parent, importCaption(), folder, importFilter(extension))
            : QString();
    if (path.isEmpty()) return false;
    if (environment.writeSetting)
        environment.writeSetting(folderKey, QFileInfo(path).absolutePath());

    ImportArchive archive;
    if (archive.open(path, provider) != ImportArchive::Status::Ok) {
        tell(QMessageBox::Warning, archive.errorText());
        return false;
    }
    const std::vector<Decision> decisions = decide(archive.records(), provider);
    if (!needsDecision(decisions)) {
        tell(QMessageBox::Information, texts::allPresent());
        return false;
    }

    const std::optional<long long> hostNumber =
        hostVersionNumber(environment.hostVersion ? environment.hostVersion() : QString());
    if (!hostNumber) tell(QMessageBox::Warning, texts::hostVersionUnknown());

    {
        ImportUssDialog dialog(archive, decisions, catalogGroups(archive.records()), hostNumber,
                               parent);
        dialog.setHelp(environment.help);
        dialog.setCompare(environment.compare);
        if (dialog.exec() != QDialog::Accepted) return false;
    }
    if (archive.records().empty()) return false;

    ImportWorker worker(archive, provider, std::move(archive.records()));
    if (environment.prepareWorker) environment.prepareWorker(worker);
    {
        ImportProgressDialog progress(worker, parent, environment.question);
        progress.run();
    }
    worker.wait();
    tell(QMessageBox::Information, worker.finishText());
    return worker.written() > 0;
}

} // namespace exchange
