#include "fileregistry.h"

#include <catalog/catalog_tree.h>
#include <catalog/digest.h>
#include <catalog/esconvert.h>
#include <catalog/host.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace exchange {

FileRegistry::FileRegistry(const QString& key, bool previousVersion, const QString& workFolder)
    : m_key(key), m_previousVersion(previousVersion), m_workFolder(workFolder)
{}

const FileRecord& FileRegistry::model(es_model_t* model)
{
    const QString digest = edw::fromEs(model_GetDigest(model));
    if (digest.isEmpty()) return m_empty;
    const auto it = m_records.find(digest.toStdString());
    if (it != m_records.end()) return it->second;
    const void* icon = nullptr;
    const size_t iconSize = model_GetIconData(model, &icon);
    return fileRecord("model", "m3d", digest, edw::fromEs(model_GetModelFile(model)), icon,
                      iconSize);
}

const FileRecord& FileRegistry::fragment(es_projection_t* projection)
{
    const QString digest = edw::fromEs(projection_GetDigest(projection));
    if (digest.isEmpty()) return m_empty;
    const auto it = m_records.find(digest.toStdString());
    if (it != m_records.end()) return it->second;
    const void* icon = nullptr;
    const size_t iconSize = projection_GetIconData(projection, &icon);
    return fileRecord("prj", "frw", digest, edw::fromEs(projection_GetFragmentFile(projection)),
                      icon, iconSize);
}

const FileRecord& FileRegistry::representation(const QByteArray& bytes)
{
    const int n = ++m_counter;
    FileRecord record;
    record.entry = m_key + QStringLiteral("\\repr\\") + QString::number(n) + QStringLiteral(".xml");
    // Parked in the working folder so that thousands of elements do not pile up in memory;
    // kept in memory only when the folder refuses the file.
    const QString parked =
        QDir(m_workFolder)
            .filePath(QStringLiteral("repr_") + QString::number(n) + QStringLiteral(".xml"));
    QFile file(parked);
    if (!m_workFolder.isEmpty() && file.open(QIODevice::WriteOnly | QIODevice::Truncate) &&
        file.write(bytes) == bytes.size() && file.flush())
        record.sourcePath = parked;
    else
        record.content = bytes;
    return m_records[std::to_string(n)] = std::move(record);
}

const FileRecord& FileRegistry::fileRecord(const char* folder, const char* extension,
                                           const QString& digest, const QString& path,
                                           const void* icon, size_t iconSize)
{
    const int n = ++m_counter;
    const QString stem =
        m_key + QLatin1Char('\\') + QLatin1String(folder) + QLatin1Char('\\') + QString::number(n);
    FileRecord record;
    record.entry = stem + QLatin1Char('.') + QLatin1String(extension);
    record.sourcePath = path;
    record.digest = digest;
    if (m_owner) {
        record.id = edw::fromEs(stdsize_GetID(m_owner));
        record.packet = edw::fromEs(packet_GetName(folder_GetPacket(edw::folderOf(m_owner))));
    }
    if (iconSize > 0 && icon) {
        record.icon = QByteArray(static_cast<const char*>(icon), qsizetype(iconSize));
        record.iconEntry = stem + QStringLiteral(".png");
    }
    if (m_previousVersion) {
        const QString converted = convert(path, extension);
        if (!converted.isEmpty()) {
            record.sourcePath = converted;
            record.digest = edw::contentDigest(converted);
        }
    }
    return m_records[digest.toStdString()] = std::move(record);
}

QString FileRegistry::convert(const QString& source, const char* extension)
{
    edw::IHost* host = edw::host();
    if (!host || source.isEmpty()) return {};
    QString target;
    do {
        target = QDir(m_workFolder)
                     .filePath(QStringLiteral("file_") + QString::number(++m_convertCounter) +
                               QLatin1Char('.') + QLatin1String(extension));
    } while (QFileInfo::exists(target));
    if (!host->saveAsPreviousVersion(source, target) || !QFileInfo::exists(target)) return {};
    return target;
}

} // namespace exchange
