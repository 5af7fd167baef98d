#pragma once

// Names of the host's versions by their codes ("0x0F000062" -> "15.0b1"): the host's release
// history built in, extended and overridden by the host's "gVer.dat", and an unknown build
// named after the first known release that follows it.

#include <QHash>
#include <QString>

#include <mutex>

namespace edw {

class VersionNames
{
public:
    // The built-in pairs, then every line "<code> <name>" of the file at datFile (when it can
    // be read) sets code's name.
    explicit VersionNames(const QString& datFile);

    // The name of code; for an unknown code the name of the smallest known code above it
    // (empty when there is none), remembered for the next request.
    QString name(const QString& code);

private:
    mutable std::mutex m_mutex;
    QHash<QString, QString> m_names;
};

// The process-wide table over the host's "gVer.dat" (host installation folder of kind 5),
// built on first use.
QString versionName(const QString& code);

} // namespace edw
