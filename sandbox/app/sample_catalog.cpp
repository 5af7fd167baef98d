#include "sample_catalog.h"

#include "host_state.h"
#include "sample_medium.h"
#include "sample_editor.h"

#include <esdata/esdata.h>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace sandbox {
namespace {

// The store speaks UTF-16; these keep the text alive for the duration of the call.
struct Es
{
    explicit Es(const QString& text) : m_text(text) {}
    operator const char16_t*() const { return reinterpret_cast<const char16_t*>(m_text.utf16()); }
    QString m_text;
};

QString fromEs(const char16_t* text)
{
    return text ? QString::fromUtf16(text) : QString();
}

struct SampleElement
{
    const char* id;
    const char* name;
    int diameter;
    double wall;
    QList<int> layers;
    QList<int> hidden;
};

struct SamplePacket
{
    const char* packet;
    const char* category;
    QList<SampleElement> elements;
};

const QList<SamplePacket>& samplePackets()
{
    static const QList<SamplePacket> packets = {
        {"ПЭ_Трубы",
         "Трубы\\Напорные",
         {{"PE100-SDR11-32", "Труба ПЭ100 SDR11 32x3,0", 32, 3.0, {0, 1}, {}},
          {"PE100-SDR11-63", "Труба ПЭ100 SDR11 63x5,8", 63, 5.8, {0, 1, 2}, {2}},
          {"PE100-SDR17-110", "Труба ПЭ100 SDR17 110x6,6", 110, 6.6, {0, 1}, {}}}},
        {"ПЭ_Отводы",
         "Фасонные части\\Отводы",
         {{"OTV-90-63", "Отвод 90° ПЭ100 SDR11 63", 63, 5.8, {0, 1}, {1}},
          {"OTV-45-110", "Отвод 45° ПЭ100 SDR17 110", 110, 6.6, {0}, {}}}},
        {"ПЭ_Задвижки", "Арматура", {{"ZDV-50", "Задвижка клиновая Ду50", 50, 0.0, {0, 1}, {}}}},
    };
    return packets;
}

es_folder_t* childFolder(es_folder_t* parent, const QString& name)
{
    const uint32_t count = folder_GetChildFolderCount(parent);
    for (uint32_t i = 0; i < count; ++i) {
        es_folder_t* child = folder_GetChildFolder(parent, i);
        if (fromEs(folder_GetName(child)) == name) return child;
    }
    return folder_AddChildFolder(parent, Es(name));
}

es_attribute_t* attribute(es_table_t* table, const QString& name, const QString& description,
                          uint32_t type)
{
    if (es_attribute_t* found = table_FindAttribute(table, Es(name))) return found;
    return table_AddAttribute(table, Es(name), Es(description), type);
}

bool addElement(es_folder_t* category, const SampleElement& sample, const QString& filesDir)
{
    const QString id = QString::fromUtf8(sample.id);
    // Each element lives in a folder of its own under its category, as the catalog keeps it.
    es_folder_t* folder = childFolder(category, QStringLiteral("folder ") + id);
    es_table_t* table = folder_GetTable(folder);
    es_stdsize_t* element = table_AddStdSize(table, Es(id));
    if (!element) return false;
    stdsize_SetType(element, Es(QStringLiteral("uss")));

    stdsize_SetValueS(element, attribute(table, "Name", "Наименование", ES_ATTR_TEXT),
                      Es(QString::fromUtf8(sample.name)));
    stdsize_SetValueI(element, attribute(table, "Diameter", "Диаметр, мм", ES_ATTR_INT),
                      sample.diameter);
    stdsize_SetValueD(element, attribute(table, "Wall", "Толщина стенки, мм", ES_ATTR_REAL),
                      sample.wall);
    es_attribute_t* length = attribute(table, "Length", "Длина, мм", ES_ATTR_REAL);
    attribute_SetVarName(length, Es(QStringLiteral("L")));
    attribute_SetMeasure(length, Es(QStringLiteral("мм")));
    stdsize_SetValueD(element, length, 1000.0);
    stdsize_SetValueS(element, attribute(table, "USS_AUTHOR", "Автор", ES_ATTR_TEXT),
                      Es(QStringLiteral("sandbox\\host")));
    stdsize_SetValueS(
        element, attribute(table, "USS_LAST_CHANGE_DATE", "Дата изменения", ES_ATTR_TEXT),
        Es(QDateTime(QDate(2026, 11, 1), QTime(9, 30)).toString("dd.MM.yyyy hh:mm:ss")));

    // A drawing fragment (standard drawing view) and a model per element.
    const QString fragment = filesDir + "/" + id + ".frw";
    const QString model = filesDir + "/" + id + ".m3d";
    if (!write_sample_document(fragment, sample.layers, sample.hidden) ||
        !write_sample_document(model, {0}, {}))
        return false;
    if (!projections_AddProjectionEx(stdsize_GetProjections(element), Es(QStringLiteral("Чертеж")),
                                     Es(fragment), Es(QString()), 0,
                                     Es(QStringLiteral("Стандартный вид")), 10))
        return false;
    return model_SetModelEx(stdsize_GetModel(element), Es(model), Es(QString()),
                            Es(QString::fromUtf8(sample.name)), 1);
}

bool fill(es_provider_t* provider, const QString& filesDir)
{
    for (const SamplePacket& sample : samplePackets()) {
        es_packet_t* packet = provider_AddPacket(provider, Es(QString::fromUtf8(sample.packet)));
        if (!packet) return false;
        es_folder_t* folder = packet_GetRootFolder(packet);
        for (const QString& part :
             QString::fromUtf8(sample.category).split('\\', Qt::SkipEmptyParts))
            folder = childFolder(folder, part);
        for (const SampleElement& element : sample.elements) {
            if (!addElement(folder, element, filesDir)) return false;
        }
    }
    addEditorValues(provider);
    return true;
}

int countBelow(es_folder_t* folder)
{
    int count = static_cast<int>(table_GetStdSizeCount(folder_GetTable(folder)));
    const uint32_t children = folder_GetChildFolderCount(folder);
    for (uint32_t i = 0; i < children; ++i)
        count += countBelow(folder_GetChildFolder(folder, i));
    return count;
}

} // namespace

es_provider_t* openSampleCatalog(const QString& path, QString* error)
{
    const QFileInfo info(path);
    const bool firstRun = !info.exists();
    if (firstRun) QDir().mkpath(info.absolutePath());
    es_provider_t* provider =
        esx_OpenCatalog(Es(info.absoluteFilePath()), Es(QStringLiteral("user_tx")), firstRun);
    if (!provider) {
        if (error) *error = fromEs(esx_LastError());
        return nullptr;
    }
    if (!firstRun) {
        addMediumStandards(provider);
        return provider;
    }

    // The sample's source documents are kept beside the catalog; the store copies them.
    const QString filesDir = info.absoluteFilePath() + ".sources";
    QDir().mkpath(filesDir);
    esx_Begin(provider);
    if (!fill(provider, filesDir)) {
        esx_Rollback(provider);
        if (error)
            *error = QStringLiteral("the sample catalog could not be filled: ") +
                     fromEs(esx_LastError());
        esx_CloseCatalog(provider);
        QFile::remove(info.absoluteFilePath());
        return nullptr;
    }
    esx_Commit(provider);
    addMediumStandards(provider);
    return provider;
}

int elementCount(es_provider_t* provider)
{
    int count = 0;
    const uint32_t packets = provider_GetPacketCount(provider);
    for (uint32_t i = 0; i < packets; ++i)
        count += countBelow(packet_GetRootFolder(provider_GetPacket(provider, i)));
    return count;
}

} // namespace sandbox
