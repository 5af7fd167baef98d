#include "update/version_names.h"

#include "frame/session.h"

#include <QDir>
#include <QFile>
#include <QTextStream>

#include <iterator>
#include <optional>

namespace edw {
namespace {

struct Pair
{
    const char* code;
    const char* name;
};

// The host's releases: 0xMMmmBBBB with the major and minor version and the build.
constexpr Pair kBuiltIn[] = {
    {"0x0D000062", "13.0b1"}, {"0x0D000063", "13.0b2"}, {"0x0D000100", "13.0"},
    {"0x0D000120", "13.0.1"}, {"0x0D010100", "13.1"},   {"0x0E000062", "14.0b1"},
    {"0x0E000063", "14.0b2"}, {"0x0E000100", "14.0"},   {"0x0E000120", "14.0.1"},
    {"0x0E010100", "14.1"},   {"0x0F000062", "15.0b1"}, {"0x0F000063", "15.0b2"},
    {"0x0F000100", "15.0"},   {"0x0F000120", "15.0.1"}, {"0x0F010100", "15.1"},
    {"0x10000062", "16.0b1"}, {"0x10000063", "16.0b2"}, {"0x10000100", "16.0"},
    {"0x10000120", "16.0.1"}, {"0x10010100", "16.1"},   {"0x11000062", "17.0b1"},
    {"0x11000063", "17.0b2"}, {"0x11000100", "17.0"},   {"0x11000120", "17.0.1"},
    {"0x11010100", "17.1"},   {"0x12000062", "18.0b1"}, {"0x12000063", "18.0b2"},
    {"0x12000100", "18.0"},   {"0x12000120", "18.0.1"}, {"0x12010100", "18.1"},
    {"0x13000062", "19.0b1"}, {"0x13000063", "19.0b2"}, {"0x13000100", "19.0"},
    {"0x13000120", "19.0.1"}, {"0x13010100", "19.1"},   {"0x14000062", "20.0b1"},
    {"0x14000063", "20.0b2"}, {"0x14000100", "20.0"},   {"0x14000120", "20.0.1"},
    {"0x14010100", "20.1"},   {"0x15000062", "21.0b1"}, {"0x15000063", "21.0b2"},
    {"0x15000100", "21.0"},   {"0x15000120", "21.0.1"}, {"0x15010100", "21.1"},
    {"0x16000062", "22.0b1"}, {"0x16000063", "22.0b2"}, {"0x16000100", "22.0"},
    {"0x16000120", "22.0.1"}, {"0x16010100", "22.1"},   {"0x17000062", "23.0b1"},
    {"0x17000063", "23.0b2"}, {"0x17000100", "23.0"},   {"0x17000120", "23.0.1"},
    {"0x17010100", "23.1"},
};

std::optional<quint64> codeValue(const QString& code)
{
    bool ok = false;
    const quint64 value = code.trimmed().toULongLong(&ok, 16);
    if (!ok) return std::nullopt;
    return value;
}

} // namespace

VersionNames::VersionNames(const QString& datFile)
{
    for (const Pair& p : kBuiltIn)
        m_names.insert(QString::fromLatin1(p.code), QString::fromUtf8(p.name));
    QFile file(datFile);
    if (datFile.isEmpty() || !file.open(QIODevice::ReadOnly | QIODevice::Text)) return;
    QTextStream in(&file);
    while (!in.atEnd()) {
        // "<code> <name>": split at the first blank; lines without one carry nothing.
        const QString line = in.readLine();
        const qsizetype blank = line.indexOf(u' ');
        if (blank <= 0) continue;
        m_names.insert(line.left(blank), line.mid(blank + 1).trimmed());
    }
}

QString VersionNames::name(const QString& code)
{
    std::lock_guard lock(m_mutex);
    if (const auto it = m_names.constFind(code); it != m_names.constEnd()) return it.value();
    // An intermediate build carries the name of the release it leads to, never of the one
    // before it.
    QString answer;
    if (const std::optional<quint64> value = codeValue(code)) {
        std::optional<quint64> best;
        for (auto it = m_names.constBegin(); it != m_names.constEnd(); ++it) {
            const std::optional<quint64> key = codeValue(it.key());
            if (key && *key > *value && (!best || *key < *best)) {
                best = key;
                answer = it.value();
            }
        }
    }
    m_names.insert(code, answer);
    return answer;
}

QString versionName(const QString& code)
{
    static VersionNames* table = [] {
        const QString folder = host_folder(5);
        return new VersionNames(
            folder.isEmpty() ? QString() : QDir(folder).filePath(QStringLiteral("gVer.dat")));
    }();
    return table->name(code);
}

} // namespace edw
