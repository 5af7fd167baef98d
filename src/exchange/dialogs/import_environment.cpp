#include "import_environment.h"

#include "archivekind.h"
#include "exchangetexts.h"
#include "importarchive.h"
#include "importdecision.h"
#include "importworker.h"
#include "library_groups.h"

#include <catalog/catalog_tree.h>

#include "look/look.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHash>
#include <QStandardPaths>

#include <memory>

namespace exchange {

namespace {


// The records by library: the packets the records name, in the order they first appear,
// grouped by the library configuration files; each group's records in archive order.
std::vector<ImportGroup> libraryGroups(const ImportRecords& records, int kind,
                                       const QString& libraryRoot, QStringList* errors)
{
    QStringList packets;
    QHash<QString, int> packetIndex;
    std::vector<int> recordPacket;
    recordPacket.reserve(records.size());
    for (const ImportRecord& record : records) {
        auto it = packetIndex.constFind(record.packet);
        if (it == packetIndex.constEnd()) {
            it = packetIndex.insert(record.packet, int(packets.size()));
            packets << record.packet;
        }
        recordPacket.push_back(*it);
    }
    const LibraryGrouping grouping = groupPackets(packets, kind, libraryRoot);
    *errors << grouping.errors;
    std::vector<int> groupOfPacket(size_t(packets.size()), -1);
    std::vector<ImportGroup> groups;
    for (const LibraryGroup& library : grouping.groups) {
        for (const int packet : library.packets)
            groupOfPacket[size_t(packet)] = int(groups.size());
        groups.push_back({QStringLiteral("Каталог: ") + library.name, library.command, {}});
    }
    for (size_t i = 0; i < records.size(); ++i) {
        const int group = groupOfPacket[size_t(recordPacket[i])];
        if (group >= 0) groups[size_t(group)].records.push_back(i);
    }
    return groups;
}

} // namespace

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
        qt::message_box::show(parent, icon, texts::importCaption(), text);
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

    QString folder = environment.readSetting ? environment.readSetting(texts::archiveFolderSetting()) : QString();
    if (folder.isEmpty())
        folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    const QString path =
        environment.openFile
            ? environment.openFile(parent, texts::importCaption(), folder, texts::archiveFilter(extension))
            : QString();
    if (path.isEmpty()) return false;
    if (environment.writeSetting)
        environment.writeSetting(texts::archiveFolderSetting(), QFileInfo(path).absolutePath());

    ImportArchive archive;
    if (const ImportArchive::Status status = archive.open(path, provider);
        status != ImportArchive::Status::Ok) {
        // Why the temporary folder refused is the user's to know: a full disk is theirs to
        // free.
        tell(QMessageBox::Warning,
             status == ImportArchive::Status::TemporaryFailed
                 ? archive.errorText() + QLatin1Char('\n') + archive.detailText()
                 : archive.errorText());
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
        QStringList errors;
        std::vector<ImportGroup> groups = libraryGroups(
            archive.records(), edw::libraryKind(provider), environment.libraryRoot, &errors);
        for (const QString& error : errors)
            tell(QMessageBox::Warning, error);
        ImportUssDialog dialog(archive, decisions, std::move(groups), hostNumber, parent);
        dialog.setHelp(environment.help);
        if (environment.compare) dialog.setCompare(environment.compare);
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
    // Why elements were not written, when the catalog refused them rather than the user.
    if (!worker.failureText().isEmpty()) tell(QMessageBox::Warning, worker.failureText());
    return worker.written() > 0;
}

} // namespace exchange
