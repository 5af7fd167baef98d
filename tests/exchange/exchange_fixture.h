#pragma once

// Shared pieces of the exchange tests: real catalog files in a temporary folder, elements
// built through the catalog access API, a recording messenger and progress, a scripted host,
// and a text dump of an element that two catalogs can be compared by.

#include <catalog/catalog_tree.h>
#include <catalog/digest.h>
#include <catalog/esconvert.h>
#include <catalog/host.h>
#include <catalog/notify.h>
#include <catalog/spec_description.h>

#include <esdata/esdata.h>

#include <QCryptographicHash>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>
#include <QTemporaryDir>

#include <optional>
#include <vector>

namespace testing {

class RecordingMessenger : public edw::IMessenger
{
public:
    RecordingMessenger() { edw::setMessenger(this); }
    ~RecordingMessenger() override { edw::setMessenger(nullptr); }
    void information(const QString&, const QString& text) override { texts << text; }
    void warning(const QString&, const QString& text) override { texts << text; }
    void critical(const QString&, const QString& text) override { texts << text; }
    QStringList texts;
};

class RecordingProgress : public edw::IProgress
{
public:
    void begin(const QString& c, int maximum) override
    {
        caption = c;
        this->maximum = maximum;
        ++begun;
    }
    void setValue(int value) override { values << value; }
    void keepAlive() override { ++alive; }
    void end() override { ++ended; }
    QString caption;
    int maximum = -1;
    int begun = 0;
    int ended = 0;
    int alive = 0;
    QList<int> values;
};

// A host whose earlier-format save copies the document with a marker in front.
class ConvertingHost : public edw::IHost
{
public:
    ConvertingHost() { edw::setHost(this); }
    ~ConvertingHost() override { edw::setHost(nullptr); }
    std::optional<std::vector<int>> hiddenLayers(const QString&) override { return std::nullopt; }
    bool saveAsPreviousVersion(const QString& source, const QString& target) override
    {
        saved << target;
        if (!works) return false;
        QFile in(source);
        QFile out(target);
        if (!in.open(QIODevice::ReadOnly) || !out.open(QIODevice::WriteOnly)) return false;
        out.write("earlier format\n" + in.readAll());
        return true;
    }
    QString version() override { return hostVersion; }
    bool works = true;
    QString hostVersion = QStringLiteral("23.1");
    QStringList saved;
};

inline std::u16string es(const QString& text)
{
    return edw::toEs(text);
}

class TempCatalog
{
public:
    explicit TempCatalog(const QString& dbName = QStringLiteral("user_tx"))
    {
        path = dir.filePath(QStringLiteral("catalog.db"));
        provider = esx_OpenCatalog(es(path).c_str(), es(dbName).c_str(), true);
    }
    ~TempCatalog()
    {
        if (provider) esx_CloseCatalog(provider);
    }
    TempCatalog(const TempCatalog&) = delete;
    TempCatalog& operator=(const TempCatalog&) = delete;

    QString writeFile(const QString& name, const QByteArray& content) const
    {
        const QString file = dir.filePath(name);
        QFile out(file);
        if (out.open(QIODevice::WriteOnly)) out.write(content);
        return file;
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

inline QString valueOf(es_stdsize_t* element, const QString& name)
{
    es_value value{};
    stdsize_GetValueByName(element, es(name).c_str(), &value);
    return edw::valueToText(value);
}

inline QString md5(const void* data, size_t size)
{
    return QString::fromLatin1(
        QCryptographicHash::hash(QByteArray(static_cast<const char*>(data), qsizetype(size)),
                                 QCryptographicHash::Md5)
            .toHex());
}

// Everything an element carries, as text, without the store's own file paths.
inline QString dump(es_stdsize_t* e)
{
    QStringList out;
    es_folder_t* folder = edw::folderOf(e);
    out << "packet=" + edw::fromEs(packet_GetName(folder_GetPacket(folder)))
        << "folder=" + edw::folderPath(folder) << "id=" + edw::fromEs(stdsize_GetID(e))
        << "type=" + edw::fromEs(stdsize_GetType(e));
    es_table_t* table = stdsize_GetTable(e);
    for (uint32_t i = 0; i < table_GetAttributeCount(table); ++i) {
        es_attribute_t* a = table_GetAttribute(table, i);
        es_value v{};
        stdsize_GetValue(e, a, &v);
        out << QStringLiteral("atr %1 num=%2 old=%3 type=%4 desc=%5 var=%6 measure=%7 "
                              "formula=%8 kind=%9 value=%10")
                   .arg(edw::fromEs(attribute_GetName(a)))
                   .arg(attribute_GetNumber(a))
                   .arg(attribute_GetOldNumber(a))
                   .arg(attribute_GetType(a))
                   .arg(edw::fromEs(attribute_GetDescription(a)),
                        edw::fromEs(attribute_GetVarName(a)), edw::fromEs(attribute_GetMeasure(a)),
                        edw::fromEs(attribute_GetFormula(a)))
                   .arg(int(v.kind))
                   .arg(edw::valueToText(v));
    }
    es_model_t* m = stdsize_GetModel(e);
    if (model_IsEmpty(m)) {
        out << "model empty";
    } else {
        const void* icon = nullptr;
        const size_t iconSize = model_GetIconData(m, &icon);
        out << QStringLiteral("model name=%1 version=%2 digest=%3 icon=%4")
                   .arg(edw::fromEs(model_GetModelName(m)))
                   .arg(model_GetVersion(m))
                   .arg(edw::fromEs(model_GetDigest(m)), iconSize ? md5(icon, iconSize) : "");
    }
    es_projections_t* list = stdsize_GetProjections(e);
    for (uint32_t i = 0; i < projections_GetProjectioCount(list); ++i) {
        es_projection_t* p = projections_GetProjection(list, i);
        const void* icon = nullptr;
        const size_t iconSize = projection_GetIconData(p, &icon);
        out << QStringLiteral("prj name=%1 type=%2 view=%3 digest=%4 icon=%5")
                   .arg(edw::fromEs(projection_GetName(p)))
                   .arg(projection_GetType(p))
                   .arg(projection_GetViewType(p))
                   .arg(edw::fromEs(projection_GetDigest(p)), iconSize ? md5(icon, iconSize) : "");
    }
    const void* repr = nullptr;
    const size_t reprSize = stdsize_GetRepresentationData(e, &repr);
    out << "repr=" + (reprSize ? md5(repr, reprSize) : QString());
    for (const edw::SpecDescription& s : edw::readSpecifications(e)) {
        QString line = QStringLiteral("spec %1 style=%2 first=%3 second=%4")
                           .arg(s.libName)
                           .arg(s.styleNum)
                           .arg(s.firstPart)
                           .arg(s.secondPart);
        for (const edw::SpecColumn& c : s.columns)
            line += QStringLiteral(" [%1:%2]").arg(c.num).arg(c.formula);
        out << line;
    }
    return out.join(QLatin1Char('\n'));
}

} // namespace testing
