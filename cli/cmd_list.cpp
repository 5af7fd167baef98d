#include "commandline.h"
#include "commands.h"
#include "common.h"

#include <esdata/esdata.h>

namespace ussctl {

namespace {

struct Totals
{
    int packets = 0;
    int folders = 0;
    int elements = 0;
};

void listElements(es_table_t* table, bool print, const QString& indent, Totals& totals)
{
    const uint32_t count = table_GetStdSizeCount(table);
    totals.elements += int(count);
    if (!print) return;
    for (uint32_t i = 0; i < count; ++i) {
        es_stdsize_t* element = table_GetStdSize(table, i);
        out(QString("%1element \"%2\" type \"%3\"\n")
                .arg(indent, fromEs(stdsize_GetID(element)), fromEs(stdsize_GetType(element))));
    }
}

// Depth first in the store's order, so the output is the same for the same catalog.
void listFolder(es_folder_t* folder, const QString& path, bool print, Totals& totals)
{
    const uint32_t children = folder_GetChildFolderCount(folder);
    for (uint32_t i = 0; i < children; ++i) {
        es_folder_t* child = folder_GetChildFolder(folder, i);
        const QString name = fromEs(folder_GetName(child));
        const QString childPath = path.isEmpty() ? name : path + "\\" + name;
        es_table_t* table = folder_GetTable(child);
        const uint32_t count = table_GetStdSizeCount(table);
        ++totals.folders;
        if (print)
            out(QString("  folder \"%1\": %2 element%3\n")
                    .arg(childPath)
                    .arg(count)
                    .arg(count == 1 ? "" : "s"));
        listElements(table, print, "    ", totals);
        listFolder(child, childPath, print, totals);
    }
}

} // namespace

int runList(const QStringList& args)
{
    CommandLine line("list", "[--summary] <catalog>",
                     "Lists the packets, folders and elements of a catalog, in the catalog's\n"
                     "order, and their totals.");
    line.addOption({{"s", "summary"}, "Print the totals only."});
    line.parse(args, 1, 1);
    const bool summary = line.isSet("summary");
    Catalog catalog = Catalog::open(line.positional().at(0), true);
    es_provider_t* provider = catalog.provider();
    const Kind* kind = kindOfDatabase(catalog.databaseName());
    out(QString("database \"%1\" (kind %2)\n")
            .arg(catalog.databaseName(), kind ? kind->name : QString("unknown")));

    Totals totals;
    const uint32_t packets = provider_GetPacketCount(provider);
    for (uint32_t p = 0; p < packets; ++p) {
        es_packet_t* packet = provider_GetPacket(provider, p);
        ++totals.packets;
        if (!summary) out(QString("packet \"%1\"\n").arg(fromEs(packet_GetName(packet))));
        es_folder_t* root = packet_GetRootFolder(packet);
        listElements(folder_GetTable(root), !summary, "  ", totals);
        listFolder(root, QString(), !summary, totals);
    }
    out(QString("total: %1 packets, %2 folders, %3 elements\n")
            .arg(totals.packets)
            .arg(totals.folders)
            .arg(totals.elements));
    return ExitOk;
}

} // namespace ussctl
