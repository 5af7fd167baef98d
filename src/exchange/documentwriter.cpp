#include "document.h"

#include "fileregistry.h"

#include <catalog/catalog_tree.h>
#include <catalog/esconvert.h>

#include <QDateTime>
#include <QDebug>

#include <json/json.h>

namespace exchange {

namespace {

std::string utf8(const char16_t* text)
{
    return edw::fromEs(text).toStdString();
}

Json::Value attributeValue(es_stdsize_t* element, es_attribute_t* attribute)
{
    Json::Value atr(Json::objectValue);
    const std::string name = utf8(attribute_GetName(attribute));
    const int num = attribute_GetNumber(attribute);
    atr["name"] = name;
    atr["num"] = num;
    atr["type"] = Json::Int(attribute_GetType(attribute));
    const std::string var = utf8(attribute_GetVarName(attribute));
    if (!var.empty()) atr["var"] = var;
    const std::string measure = utf8(attribute_GetMeasure(attribute));
    if (!measure.empty()) atr["measure"] = measure;
    const std::string formula = utf8(attribute_GetFormula(attribute));
    if (formula.empty()) {
        es_value value{};
        stdsize_GetValue(element, attribute, &value);
        atr["val"] = edw::valueToText(value).toStdString();
    } else {
        atr["formula"] = formula;
    }
    const std::string desc = utf8(attribute_GetDescription(attribute));
    if (desc != name) atr["desc"] = desc;
    const int oldNum = attribute_GetOldNumber(attribute);
    if (oldNum != num) atr["old-num"] = oldNum;
    return atr;
}

void putFile(Json::Value& object, const FileRecord& record)
{
    object["file"] = record.entry.toStdString();
    object["icon"] = record.iconEntry.toStdString();
    object["digest"] = record.digest.toStdString();
}

Json::Value elementValue(es_stdsize_t* element, FileRegistry& registry)
{
    Json::Value item(Json::objectValue);
    es_folder_t* folder = edw::folderOf(element);
    item["packet"] = utf8(packet_GetName(folder_GetPacket(folder)));
    item["folder"] = edw::folderPath(folder).toStdString();
    item["id"] = utf8(stdsize_GetID(element));
    item["type"] = utf8(stdsize_GetType(element));

    es_table_t* table = stdsize_GetTable(element);
    Json::Value atr(Json::arrayValue);
    const uint32_t attributeCount = table_GetAttributeCount(table);
    for (uint32_t i = 0; i < attributeCount; ++i)
        atr.append(attributeValue(element, table_GetAttribute(table, i)));
    item["atr"] = std::move(atr);

    // Registry numbers are handed out in this order: model, fragments, representation.
    registry.setOwner(element);
    es_model_t* model = stdsize_GetModel(element);
    if (model && !model_IsEmpty(model)) {
        const FileRecord& record = registry.model(model);
        Json::Value m(Json::objectValue);
        m["name"] = utf8(model_GetModelName(model));
        m["version"] = model_GetVersion(model);
        putFile(m, record);
        item["model"] = std::move(m);
    } else {
        item["model"] = Json::Value(Json::nullValue);
    }

    es_projections_t* list = stdsize_GetProjections(element);
    Json::Value prj(Json::arrayValue);
    const uint32_t projectionCount = projections_GetProjectioCount(list);
    for (uint32_t i = 0; i < projectionCount; ++i) {
        es_projection_t* projection = projections_GetProjection(list, i);
        const FileRecord& record = registry.fragment(projection);
        Json::Value p(Json::objectValue);
        p["name"] = utf8(projection_GetName(projection));
        p["type"] = Json::Int(projection_GetType(projection));
        p["view"] = Json::Int(projection_GetViewType(projection));
        putFile(p, record);
        prj.append(std::move(p));
    }
    item["prj"] = std::move(prj);

    const void* data = nullptr;
    const size_t size = stdsize_GetRepresentationData(element, &data);
    if (size > 0 && data) {
        const FileRecord& record =
            registry.representation(QByteArray(static_cast<const char*>(data), qsizetype(size)));
        item["repPath"] = record.entry.toStdString();
    }

    const uint32_t specCount = stdsize_GetSpecificationCount(element);
    if (specCount > 0) {
        Json::Value spc(Json::arrayValue);
        for (uint32_t i = 0; i < specCount; ++i) {
            es_spec_t* spec = stdsize_GetSpecification(element, i);
            Json::Value s(Json::objectValue);
            s["libName"] = utf8(spec_LibName(spec));
            s["style"] = spec_Style(spec);
            s["fPart"] = spec_FirstPart(spec);
            s["sPart"] = spec_SecondPart(spec);
            Json::Value columns(Json::arrayValue);
            const uint32_t columnCount = spec_ColumnCount(spec);
            for (uint32_t c = 0; c < columnCount; ++c) {
                Json::Value column(Json::objectValue);
                column["num"] = spec_ColumnNumber(spec, c);
                column["val"] = utf8(spec_ColumnFormula(spec, c));
                columns.append(std::move(column));
            }
            s["column"] = std::move(columns);
            spc.append(std::move(s));
        }
        item["spc"] = std::move(spc);
    }
    return item;
}

} // namespace

QByteArray writeDocument(const QString& key, const std::vector<es_stdsize_t*>& elements,
                         FileRegistry& registry, const std::function<void(int)>& progress,
                         const QString& exportDate)
{
    try {
        Json::Value root(Json::objectValue);
        Json::Value& comment = root["comment"];
        comment["encoding"] = "utf8";
        comment["lib-name"] = key.toStdString();
        const QString date =
            exportDate.isEmpty()
                ? QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyy.MM.dd HH:mm:ss"))
                : exportDate;
        comment["export-date"] = date.toStdString();
        comment["item-count"] = Json::UInt(elements.size());

        Json::Value list(Json::arrayValue);
        for (size_t i = 0; i < elements.size(); ++i) {
            if (progress) progress(int(i));
            list.append(elementValue(elements[i], registry));
        }
        root["std-size"] = std::move(list);

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
        Json::StyledWriter writer;
        const std::string text = writer.write(root);
#pragma GCC diagnostic pop
        return QByteArray(text.data(), qsizetype(text.size()));
    } catch (const std::exception& e) {
        qDebug() << "exchange document:" << e.what();
        return {};
    }
}

} // namespace exchange
