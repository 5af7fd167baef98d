#pragma once

// A fresh catalog file in a temporary folder, and elements built through the catalog access
// API: attributes, values, models and projections.

#include <catalog/catalog_tree.h>
#include <catalog/esconvert.h>

#include <esdata/esdata.h>

#include <QFile>
#include <QTemporaryDir>

namespace testing {

inline std::u16string es(const QString& text)
{
    return edw::toEs(text);
}

// Closed again at the end.
class TempCatalog
{
public:
    explicit TempCatalog(const QString& dbName = QStringLiteral("user_tx"))
        : path(dir.filePath(QStringLiteral("catalog.db"))),
          provider(esx_OpenCatalog(es(path).c_str(), es(dbName).c_str(), true))
    {}
    ~TempCatalog()
    {
        if (provider) esx_CloseCatalog(provider);
    }
    TempCatalog(const TempCatalog&) = delete;
    TempCatalog& operator=(const TempCatalog&) = delete;

    // Writes a file into the temporary folder and returns its path.
    QString writeFile(const QString& name, const QByteArray& content) const
    {
        QFile out(dir.filePath(name));
        if (out.open(QIODevice::WriteOnly)) out.write(content);
        return out.fileName();
    }

    // An element in its own folder "folder <id>" below folderPath of packet.
    es_stdsize_t* addElement(const QString& packet, const QString& folderPath, const QString& id,
                             const QString& type = QStringLiteral("PIPE"))
    {
        es_packet_t* p = edw::findOrAddPacket(provider, packet);
        es_folder_t* f = edw::ensureFolderPath(
            p, folderPath.isEmpty() ? QStringLiteral("folder ") + id
                                    : folderPath + QStringLiteral("\\folder ") + id);
        es_stdsize_t* e = table_AddStdSize(folder_GetTable(f), es(id).c_str());
        stdsize_SetType(e, es(type).c_str());
        return e;
    }

    es_stdsize_t* find(const QString& packet, const QString& id) const
    {
        const auto packets = edw::packets(provider);
        const auto it = packets.find(packet);
        return it == packets.end() ? nullptr : packet_FindStdSize(it->second, es(id).c_str());
    }

    QTemporaryDir dir;
    QString path;
    es_provider_t* provider = nullptr;
};

struct Attr
{
    QString name;
    uint32_t type = 3;
    QString value;
    QString formula;
    QString desc; // empty: the name
    QString var;
    QString measure;
    int oldNumberShift = 0;
};

inline es_attribute_t* addAttribute(es_stdsize_t* element, const Attr& a)
{
    es_attribute_t* attribute =
        table_AddAttribute(stdsize_GetTable(element), es(a.name).c_str(),
                           es(a.desc.isEmpty() ? a.name : a.desc).c_str(), a.type);
    if (!a.var.isEmpty()) attribute_SetVarName(attribute, es(a.var).c_str());
    if (!a.measure.isEmpty()) attribute_SetMeasure(attribute, es(a.measure).c_str());
    if (!a.formula.isEmpty()) attribute_SetFormula(attribute, es(a.formula).c_str());
    if (a.oldNumberShift)
        attribute_SetOldNumber(attribute, attribute_GetNumber(attribute) + a.oldNumberShift);
    if (!a.value.isNull()) edw::writeValue(element, attribute, a.value);
    return attribute;
}

inline es_attribute_t* addAttribute(es_stdsize_t* element, const QString& name, uint32_t type)
{
    return table_AddAttribute(stdsize_GetTable(element), es(name).c_str(), es(name).c_str(), type);
}

inline bool setModel(es_stdsize_t* element, const QString& file, const QString& icon,
                     const QString& name, int version)
{
    return model_SetModelEx(stdsize_GetModel(element), es(file).c_str(), es(icon).c_str(),
                            es(name).c_str(), version);
}

inline bool addProjection(es_stdsize_t* element, const QString& name, const QString& file,
                          const QString& icon, uint32_t type, uint32_t view)
{
    return projections_AddProjectionEx(stdsize_GetProjections(element), es(name).c_str(),
                                       es(file).c_str(), es(icon).c_str(), type, u"",
                                       view) != nullptr;
}

inline es_value valueByName(es_stdsize_t* element, const QString& name)
{
    es_value value{};
    stdsize_GetValueByName(element, es(name).c_str(), &value);
    return value;
}

inline QString valueOf(es_stdsize_t* element, const QString& name)
{
    return edw::valueToText(valueByName(element, name));
}

inline es_value_kind kindOf(es_stdsize_t* element, const QString& name)
{
    return valueByName(element, name).kind;
}

} // namespace testing
