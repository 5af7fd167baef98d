#include "common.h"

#include "catalog/store_extension.h"
#include "exchange/exchangetexts.h"

#include <esdata/esdata.h>

#include <QFileInfo>

#include <cstdio>

namespace ussctl {

CommandError::CommandError(int code, const QString& message)
    : std::runtime_error(message.toStdString()), m_code(code), m_message(message)
{}

const QList<Kind>& kinds()
{
    static const QList<Kind> table = {
        {0, "vo", "user_vo", "vobject", "vos"},
        {1, "tx", "user_tx", "TX", "uss"},
        {2, "vk", "user_vk", "VK", "uss"},
        {3, "ov", "user_ov", "OV", "uss"},
    };
    return table;
}

const Kind& kindByName(const QString& name)
{
    for (const Kind& kind : kinds()) {
        if (kind.name == name) return kind;
    }
    throw CommandError(ExitUsage,
                       QString("unknown kind '%1' (expected vo, tx, vk or ov)").arg(name));
}

const Kind* kindOfDatabase(const QString& databaseName)
{
    for (const Kind& kind : kinds()) {
        if (databaseName.contains(kind.databaseName, Qt::CaseSensitive)) return &kind;
    }
    return nullptr;
}

void out(const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
}

namespace {
QString lastMessage;
}

bool alreadyPrinted(const QString& message)
{
    return !message.isEmpty() && lastMessage == forTerminal(message);
}

void noteMessage(const QString& message)
{
    lastMessage = message;
}

QString forTerminal(const QString& message)
{
    static const QString help =
        QStringLiteral("\nДля получения информации по устранению проблемы нажмите кнопку Справка.");
    QString text = message;
    return text.remove(help);
}

void err(const QString& text)
{
    std::fflush(stdout);
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stderr);
}

QString fromEs(const char16_t* text)
{
    return text ? QString::fromUtf16(text) : QString();
}

std::u16string toEs(const QString& text)
{
    return std::u16string(reinterpret_cast<const char16_t*>(text.utf16()), size_t(text.size()));
}

Catalog Catalog::open(const QString& path, bool forReading)
{
    if (!QFileInfo(path).isFile())
        throw CommandError(ExitNotFound, QString("catalog not found: %1").arg(path));
    // A store that can open a catalog for reading alone says so with this function; others
    // open every catalog for writing.
    using OpenForReadingFn = es_provider_t* (*)(const char16_t*);
    static const auto openForReading =
        edw::storeFunction<OpenForReadingFn>("esx_OpenCatalogForReading");
    es_provider_t* provider = forReading && openForReading
                                  ? openForReading(toEs(path).c_str())
                                  : esx_OpenCatalog(toEs(path).c_str(), u"", false);
    if (!provider) {
        const QString reason = fromEs(esx_LastError());
        if (!forReading && reason.contains("readonly"))
            throw CommandError(ExitFailed, exchange::texts::catalogReadOnly(path));
        throw CommandError(ExitNotFound, QString("cannot open catalog %1: %2").arg(path, reason));
    }
    return Catalog(provider);
}

Catalog Catalog::create(const QString& path, const Kind& kind)
{
    if (QFileInfo::exists(path))
        throw CommandError(ExitFailed, QString("file already exists: %1").arg(path));
    es_provider_t* provider =
        esx_OpenCatalog(toEs(path).c_str(), toEs(kind.databaseName).c_str(), true);
    if (!provider) {
        throw CommandError(
            ExitFailed, QString("cannot create catalog %1: %2").arg(path, fromEs(esx_LastError())));
    }
    return Catalog(provider);
}

Catalog::Catalog(Catalog&& other) noexcept : m_provider(other.m_provider)
{
    other.m_provider = nullptr;
}

Catalog::~Catalog()
{
    close();
}

void Catalog::close()
{
    if (m_provider) esx_CloseCatalog(m_provider);
    m_provider = nullptr;
}

QString Catalog::databaseName() const
{
    return fromEs(provider_GetDatabaseName(m_provider));
}

const Kind& Catalog::kind() const
{
    const Kind* kind = kindOfDatabase(databaseName());
    if (!kind) {
        throw CommandError(ExitFailed, QString("unknown user database '%1'").arg(databaseName()));
    }
    return *kind;
}

} // namespace ussctl
