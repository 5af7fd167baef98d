#pragma once

// The register of catalog items ("rtw") updated in this process: which items a host library
// asked to bring up to date in the catalog database, so that it can ask later whether a name
// was done and finally have the host reload them all. Ordered by the items' file paths,
// compared as file-system paths.

#include <QList>
#include <QString>

#include <functional>
#include <map>
#include <memory>

namespace edw {

// Paths ordered as the file system sees them: the root name first ("C:", "\\server"), a path
// without a root separator before one with it, then the rest, where every run of "\" and "/"
// is one separator that orders before any other character. Paths that differ only in the kind
// or number of separators are equal.
bool rtwPathLess(const QString& a, const QString& b);

// Names equal in length and, letter by letter, after folding a-z, а-я and ё to capitals.
bool rtwNamesMatch(const QString& a, const QString& b);

// One catalog item of the host, as the register needs it. Every operation throws
// std::system_error with the host's code when the host call fails.
class RtwItem
{
public:
    virtual ~RtwItem() = default;
    virtual QString filePath() = 0;
    virtual QString secondText() = 0;
    // Tells the item that its catalog record is about to be updated.
    virtual void prepareUpdate() = 0;
    // Has the host reload the item, identified by the key and second text it was registered
    // with.
    virtual void reload(const QString& key, const QString& secondText) = 0;
};

// The host's collection of catalog items.
class RtwItems
{
public:
    virtual ~RtwItems() = default;
    // The item of that name, or null when the host has none.
    virtual std::unique_ptr<RtwItem> find(const QString& name) = 0;
};

class RtwHost
{
public:
    virtual ~RtwHost() = default;
    // The item collection, or null when the host gives none.
    virtual std::unique_ptr<RtwItems> items() = 0;
};

struct RtwEntry
{
    QString key; // the item's file path as the host reported it
    QString name;
    QString secondText;
};

class RtwRegister
{
public:
    // Updates the catalog record of the item file; true when the database did it.
    using DatabaseUpdate = std::function<bool(const QString& itemFile)>;

    // Registers the item called name and has the database update it. False when the host has
    // no such item, or when an item with the same path is registered already (then the
    // database is not asked again).
    bool tryUpdate(RtwHost& host, const QString& name, const DatabaseUpdate& updateDatabase);
    // True when a registered entry has that name, letter case aside.
    bool isUpdated(const QString& name) const;
    // Has the host reload every registered item that it still has, in path order, then empties
    // the register. A host failure on the way leaves the register as it was.
    void reloadAll(RtwHost& host);

    // The entries in key order.
    QList<RtwEntry> entries() const;
    void clear() { m_entries.clear(); }

private:
    struct PathLess
    {
        bool operator()(const QString& a, const QString& b) const { return rtwPathLess(a, b); }
    };
    std::map<QString, RtwEntry, PathLess> m_entries;
};

// The process-wide register the exports work on.
RtwRegister& rtwRegister();

// The host's item collection through the new-API application.
RtwHost& hostRtwItems();

// The catalog access library's update of an item file (esUpdateRtw).
bool updateRtwInDatabase(const QString& itemFile);

} // namespace edw
