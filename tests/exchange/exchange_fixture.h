#pragma once

// The exchange tests' text dump of an element, that two catalogs can be compared by, over the
// shared test support.

#include "fake_host.h"
#include "recording_messenger.h"
#include "temp_catalog.h"

#include <catalog/digest.h>
#include <catalog/spec_description.h>

#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

namespace testing {

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
