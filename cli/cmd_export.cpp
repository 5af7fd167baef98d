#include "commandline.h"
#include "commands.h"
#include "common.h"
#include "stderrmessenger.h"
#include "terminalprogress.h"

#include "exchange/exchangetexts.h"
#include "exchange/exportuss.h"

#include <esdata/esdata.h>

#include <QDateTime>
#include <QDir>
#include <QFileInfo>

namespace ussctl {

namespace {

es_packet_t* packetNamed(es_provider_t* provider, const QString& name)
{
    const uint32_t count = provider_GetPacketCount(provider);
    for (uint32_t i = 0; i < count; ++i) {
        es_packet_t* packet = provider_GetPacket(provider, i);
        if (fromEs(packet_GetName(packet)) == name) return packet;
    }
    return nullptr;
}

// The elements named by packet and id pairs; pairs that find nothing are skipped.
std::vector<es_stdsize_t*> listedElements(es_provider_t* provider, const QString& list,
                                          const QString& separator)
{
    const QStringList parts = list.split(separator, Qt::KeepEmptyParts);
    if (parts.size() % 2 != 0) {
        throw CommandError(
            ExitUsage,
            QString("the list must hold packet and id pairs (%1 parts)").arg(parts.size()));
    }
    std::vector<es_stdsize_t*> elements;
    for (qsizetype i = 0; i < parts.size(); i += 2) {
        es_stdsize_t* element =
            packet_FindStdSize(packetNamed(provider, parts[i]), toEs(parts[i + 1]).c_str());
        if (element) elements.push_back(element);
    }
    if (elements.empty()) throw CommandError(ExitFailed, "no element of the list was found");
    return elements;
}

// A folder gets "export.<ext>" inside it; a name without extension gets the kind's one.
QString archivePathFor(const QString& given, const Kind& kind)
{
    const QFileInfo info(given);
    if (info.isDir()) return QDir(given).filePath("export." + kind.extension);
    if (info.suffix().isEmpty()) return given + "." + kind.extension;
    return given;
}

} // namespace

int runExport(const QStringList& args)
{
    CommandLine line(
        "export", "[--list <pairs> [--separator <s>]] [--level <0-9>] <catalog> <archive>",
        "Exports elements of a catalog into an exchange archive: all of them, or those named\n"
        "by --list, a text of packet and element id pairs joined by the separator (\";\" by\n"
        "default). Pairs that find nothing are skipped. An archive name without extension\n"
        "gets the extension of the catalog's kind (vos or uss); a folder gets export.<ext>.\n"
        "The environment variable USSCTL_FIXED_DATE (\"yyyy.MM.dd hh:mm:ss\") replaces the\n"
        "export date written into the archive, for byte-identical archives.");
    line.addOption({{"l", "list"}, "Packet and id pairs to export.", "pairs"});
    line.addOption(
        {{"s", "separator"}, "Separator of the list (default \";\").", "separator", ";"});
    line.addOption({"level", "Deflate level of the entries, 0 to 9 (default 6).", "level"});
    line.parse(args, 2, 2);
    const qint64 level = line.number("level", 6);
    if (level > 9) {
        throw CommandError(ExitUsage, "ussctl export: --level must be 0 to 9\n"
                                      "Try 'ussctl export --help'.");
    }
    if (line.value("separator").isEmpty()) {
        throw CommandError(ExitUsage, "ussctl export: the separator must not be empty\n"
                                      "Try 'ussctl export --help'.");
    }

    const QString fixedDate = qEnvironmentVariable("USSCTL_FIXED_DATE");
    // A date the archive cannot carry would be written as it stands into every export.
    if (!fixedDate.isEmpty() &&
        !QDateTime::fromString(fixedDate, "yyyy.MM.dd HH:mm:ss").isValid()) {
        throw CommandError(ExitUsage, QString("USSCTL_FIXED_DATE '%1' is not a date "
                                              "\"yyyy.MM.dd hh:mm:ss\"")
                                          .arg(fixedDate));
    }
    Catalog catalog = Catalog::open(line.positional().at(0), true);
    const Kind& kind = catalog.kind();
    std::vector<es_stdsize_t*> elements =
        line.isSet("list")
            ? listedElements(catalog.provider(), line.value("list"), line.value("separator"))
            : exchange::collectElements(catalog.provider());
    if (elements.empty())
        throw CommandError(ExitFailed, "Каталог не содержит пользовательских элементов");
    const QString path = archivePathFor(line.positional().at(1), kind);

    StderrMessenger messenger;
    MessengerGuard guard(&messenger);
    TerminalProgress progress(TerminalProgress::stderrIsTerminal());
    ExportUss::Options options;
    options.exportDate = fixedDate;
    options.compressionLevel = int(level);
    if (!ExportUss::Export(path, elements, false, progress, options))
        throw CommandError(ExitFailed, exchange::texts::exportFailed());
    messenger.information(QString(), exchange::texts::exportDone());
    out(QString("exported %1 elements to %2\n").arg(elements.size()).arg(path));
    return ExitOk;
}

} // namespace ussctl
