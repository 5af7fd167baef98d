#include "library_groups.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <pugixml.hpp>

#include <algorithm>
#include <unordered_map>

namespace exchange {

namespace {

// Sibling libraries of the object library set, each configured in its own folder.
const char* const objectLibraryPaths[] = {
    "Arch\\ArchObjects.xml",         "Walls\\WallObjects.xml",       "Roofs\\RoofObjects.xml",
    "Stairs\\StairObjects.xml",      "Openings\\OpeningObjects.xml", "Steel\\SteelObjects.xml",
    "Concrete\\ConcreteObjects.xml", "Timber\\TimberObjects.xml",    "Found\\FoundObjects.xml",
    "Interior\\InteriorObjects.xml", "Site\\SiteObjects.xml",        "Equip\\EquipObjects.xml",
    "Marks\\MarkObjects.xml",
};
const char* const objectLibraryFolder = "Grundo/Sys";
const char* const pipingLibraryPath = "EngSys_TX/MarloDB/PipingTX.xml";

const char* const toolbarPath = "/*/commands/command/subcommand/uss-toolbar";

QString fromUtf8(const char* text)
{
    return QString::fromUtf8(text);
}

void claim(QStringList& packets, const QString& packet)
{
    if (!packet.isEmpty() && !packets.contains(packet)) packets << packet;
}

} // namespace

QStringList libraryConfigPaths(int kind)
{
    QStringList paths;
    if (kind == 0) {
        for (const char* path : objectLibraryPaths)
            paths << fromUtf8(objectLibraryFolder) + QLatin1Char('/') + fromUtf8(path);
    } else if (kind == 1) {
        paths << fromUtf8(pipingLibraryPath);
    }
    return paths;
}

QStringList libraryConfigFiles(int kind, const QString& libraryRoot)
{
    QStringList files;
    const QString root = QDir::fromNativeSeparators(libraryRoot);
    for (QString path : libraryConfigPaths(kind)) {
        // The table keeps the library set's own separators; every platform reads "/".
        path.replace(QLatin1Char('\\'), QLatin1Char('/'));
        files << (root.isEmpty() ? path : root + QLatin1Char('/') + path);
    }
    return files;
}

bool readLibraryConfig(const QString& path, LibraryConfig& config, QString* error)
{
    const auto fail = [error](const QString& text) {
        if (error) *error = text;
        return false;
    };
    const QString shown = QDir::toNativeSeparators(path);

    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return fail(texts::xmlUnknownFailure(shown));
    const QByteArray bytes = file.readAll();

    pugi::xml_document doc;
    const pugi::xml_parse_result parsed = doc.load_buffer(bytes.constData(), size_t(bytes.size()));
    switch (parsed.status) {
    case pugi::status_ok:
        break;
    case pugi::status_file_not_found:
    case pugi::status_io_error:
    case pugi::status_out_of_memory:
    case pugi::status_internal_error:
        return fail(texts::xmlUnknownFailure(shown));
    default:
        return fail(
            texts::xmlReadFailed(shown, fromUtf8(parsed.description()), qint64(parsed.offset)));
    }

    const pugi::xml_node root = doc.document_element();
    if (!root) return fail(texts::xmlBadStructure(shown, QStringLiteral("no root element")));

    LibraryConfig read;
    read.name = fromUtf8(root.attribute("name").value());
    if (read.name.isEmpty()) read.name = QFileInfo(path).completeBaseName();

    for (pugi::xml_node catalogs : root.children("catalogs")) {
        for (pugi::xml_node catalog : catalogs.children("catalog")) {
            const QString name = fromUtf8(catalog.attribute("name").value());
            if (name.isEmpty())
                return fail(texts::xmlBadStructure(
                    shown, QStringLiteral("catalog without name at offset %1")
                               .arg(catalog.offset_debug())));
            claim(read.packets, name);
        }
    }

    try {
        for (const pugi::xpath_node& hit : root.select_nodes(toolbarPath)) {
            const pugi::xml_node toolbar = hit.node();
            // The toolbar names its command; a toolbar without a name takes the command's.
            QString command = fromUtf8(toolbar.attribute("name").value());
            if (command.isEmpty())
                command = fromUtf8(toolbar.parent().parent().attribute("name").value());
            if (read.command.isEmpty()) read.command = command;
            claim(read.packets, fromUtf8(toolbar.attribute("catalog").value()));
        }
    } catch (const pugi::xpath_exception& e) {
        return fail(texts::xmlBadStructure(shown, fromUtf8(e.what())));
    }

    config = std::move(read);
    return true;
}

LibraryGrouping groupPackets(const QStringList& packets, int kind, const QString& libraryRoot)
{
    LibraryGrouping grouping;
    std::unordered_map<QString, std::vector<int>> byName;
    for (int i = 0; i < packets.size(); ++i)
        byName[packets[i]].push_back(i);
    std::vector<bool> claimed(size_t(packets.size()), false);

    for (const QString& path : libraryConfigFiles(kind, libraryRoot)) {
        if (!QFileInfo::exists(path)) continue;
        LibraryConfig config;
        QString error;
        if (!readLibraryConfig(path, config, &error)) {
            grouping.errors << error;
            continue;
        }
        LibraryGroup group{config.name, config.command, path, {}};
        for (const QString& name : config.packets) {
            const auto it = byName.find(name);
            if (it == byName.end()) continue;
            for (int index : it->second) {
                if (claimed[size_t(index)]) continue;
                claimed[size_t(index)] = true;
                group.packets.push_back(index);
            }
        }
        if (group.packets.empty()) continue;
        std::sort(group.packets.begin(), group.packets.end());
        grouping.groups.push_back(std::move(group));
    }

    LibraryGroup rest{otherLibraryName(), {}, {}, {}};
    for (int i = 0; i < packets.size(); ++i)
        if (!claimed[size_t(i)]) rest.packets.push_back(i);
    if (!rest.packets.empty()) grouping.groups.push_back(std::move(rest));
    return grouping;
}

QString packetDisplayName(const QString& packet)
{
    QString name = packet;
    name.remove(QStringLiteral("ПЭ_"));
    name.remove(QStringLiteral("ПЭ "));
    name.remove(QStringLiteral("ПЭ"));
    return name;
}

QString otherLibraryName()
{
    return QStringLiteral("Остальные");
}

QString commandLabel(const QString& command)
{
    return QStringLiteral("Команда: ") + command;
}

namespace texts {

QString xmlReadFailed(const QString& file, const QString& description, qint64 offset)
{
    return QStringLiteral("Ошибка чтения xml\nfile: %1\ndesc: %2\noffset: %3")
        .arg(file, description)
        .arg(offset);
}

QString xmlUnknownFailure(const QString& file)
{
    return QStringLiteral("Неизвестная ошибка чтения xml\nfile: %1").arg(file);
}

QString xmlBadStructure(const QString& file, const QString& what)
{
    return QStringLiteral("Неверная структура xml\nfile: %1\nwhat: %2").arg(file, what);
}

} // namespace texts

} // namespace exchange
