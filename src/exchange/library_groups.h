#pragma once

// Which library of the host's library set each packet of a catalog belongs to. Export and
// import both show their trees grouped this way: one group per library whose configuration
// file claims packets of the catalog, then the packets no library claims under "Остальные".

#include <QString>
#include <QStringList>

#include <vector>

namespace exchange {

// A library as its configuration file describes it.
struct LibraryConfig
{
    QString name;        // the root element's name attribute, else the file's base name
    QString command;     // the library's toolbar command; empty when it names none
    QStringList packets; // packets the library claims, in file order, without repeats
};

// One group of the tree.
struct LibraryGroup
{
    QString name;
    QString command;
    QString file;             // the configuration file; empty for "Остальные"
    std::vector<int> packets; // indices into the grouped packet list, in its order
};

struct LibraryGrouping
{
    std::vector<LibraryGroup> groups;
    // One text per configuration file that exists but could not be read, for the user.
    QStringList errors;
};

// The relative configuration paths of a database kind (0..3), as the host's library set
// lays them out: one path for kind 1, thirteen for kind 0, none for the others.
QStringList libraryConfigPaths(int kind);
// The configuration paths of a kind resolved against the host's library root.
QStringList libraryConfigFiles(int kind, const QString& libraryRoot);

// Reads one configuration file. On failure returns false and sets error to the text the user
// is shown.
bool readLibraryConfig(const QString& path, LibraryConfig& config, QString* error);

// Groups packets (names as the catalog holds them) by the configuration files of kind found
// below libraryRoot. A packet claimed by two libraries goes to the first in the path table.
// Libraries that claim no packet of the list are left out; "Остальные" comes last and only
// when some packet is unclaimed.
LibraryGrouping groupPackets(const QStringList& packets, int kind, const QString& libraryRoot);

// The packet's name as the trees show it: "ПЭ_", then "ПЭ ", then "ПЭ" removed.
QString packetDisplayName(const QString& packet);

// The group of unclaimed packets.
QString otherLibraryName();
// The label a library's toolbar command is shown with.
QString commandLabel(const QString& command);

namespace texts {
// %1 file, %2 parser's description, %3 byte offset.
QString xmlReadFailed(const QString& file, const QString& description, qint64 offset);
QString xmlUnknownFailure(const QString& file);
QString xmlBadStructure(const QString& file, const QString& what);
} // namespace texts

} // namespace exchange
