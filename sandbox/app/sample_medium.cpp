#include "sample_medium.h"

#include <esdata/esdata.h>

#include <QList>
#include <QString>
#include <QStringList>

namespace sandbox {
namespace {

struct Standard
{
    const char* packet;
    QStringList variants; // empty: the packet's elements carry no variant
    QList<int> sizes;     // nominal bores of its elements
};

const QList<Standard>& standards()
{
    static const QList<Standard> list = {
        // Pipes.
        {"ГОСТ 10704-91", {"Сталь 20", "Сталь 09Г2С", "Сталь 10"}, {57, 76, 89, 108}},
        {"ГОСТ 3262-75", {"Сталь 20", "оцинкованная"}, {15, 20, 25, 32}},
        {"ГОСТ 18599-2001", {}, {32, 63, 110}},
        // Bends.
        {"ГОСТ 17375-2001", {"исполнение 1", "исполнение 2"}, {57, 76, 89}},
        {"ГОСТ 30753-2001", {"90°", "60°", "45°"}, {57, 89}},
        // Tees.
        {"ГОСТ 17376-2001", {"равнопроходный", "переходный"}, {57, 76, 89}},
        // Reducers.
        {"ГОСТ 17378-2001", {"концентрический", "эксцентрический"}, {57, 76}},
    };
    return list;
}

const char16_t* u16(const QString& text)
{
    return reinterpret_cast<const char16_t*>(text.utf16());
}

bool hasPacket(es_provider_t* provider, const QString& name)
{
    const uint32_t count = provider_GetPacketCount(provider);
    for (uint32_t i = 0; i < count; ++i) {
        const char16_t* packetName = packet_GetName(provider_GetPacket(provider, i));
        if (packetName && QString::fromUtf16(packetName) == name) return true;
    }
    return false;
}

bool addStandard(es_provider_t* provider, const Standard& standard)
{
    const QString name = QString::fromUtf8(standard.packet);
    es_packet_t* packet = provider_AddPacket(provider, u16(name));
    if (!packet) return false;
    es_table_t* table = folder_GetTable(packet_GetRootFolder(packet));
    es_attribute_t* bore = table_AddAttribute(table, u"DN", u"Условный проход, мм", ES_ATTR_INT);
    es_attribute_t* variant =
        standard.variants.isEmpty()
            ? nullptr
            : table_AddAttribute(table, u"OVK_VARIANT", u"Вариант исполнения", ES_ATTR_TEXT);
    if (!bore) return false;
    // Every size in every variant, as the catalog keeps a standard's elements.
    const QStringList variants =
        standard.variants.isEmpty() ? QStringList{QString()} : standard.variants;
    for (const QString& v : variants) {
        for (int size : standard.sizes) {
            const QString id = QStringLiteral("%1 Ду%2 %3").arg(name).arg(size).arg(v).trimmed();
            es_stdsize_t* element = table_AddStdSize(table, u16(id));
            if (!element || !stdsize_SetValueI(element, bore, size)) return false;
            if (variant && !stdsize_SetValueS(element, variant, u16(v))) return false;
        }
    }
    return true;
}

} // namespace

bool addMediumStandards(es_provider_t* provider)
{
    if (!provider) return false;
    QList<const Standard*> missing;
    for (const Standard& s : standards())
        if (!hasPacket(provider, QString::fromUtf8(s.packet))) missing << &s;
    if (missing.isEmpty()) return true;
    esx_Begin(provider);
    for (const Standard* s : missing) {
        if (!addStandard(provider, *s)) {
            esx_Rollback(provider);
            return false;
        }
    }
    return esx_Commit(provider);
}

} // namespace sandbox
