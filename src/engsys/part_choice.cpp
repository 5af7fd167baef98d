#include "engsys/part_choice.h"

#include <json/json.h>

#include <memory>
#include <string>

namespace edw {
namespace {

Json::Value parse(const QByteArray& json)
{
    Json::CharReaderBuilder builder;
    std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    Json::Value root;
    std::string errors;
    if (!reader->parse(json.constData(), json.constData() + json.size(), &root, &errors))
        return Json::Value();
    return root;
}

} // namespace

PartChoice readPartChoice(const QByteArray& json)
{
    PartChoice choice;
    const Json::Value root = parse(json);
    if (!root.isObject()) return choice;
    const Json::Value& version = root["version"];
    if (version.isIntegral()) choice.version = version.asInt();
    const Json::Value& current = root["curPart"];
    if (current.isString()) choice.curPart = QString::fromStdString(current.asString());
    const Json::Value& parts = root["parts"];
    if (parts.isArray()) {
        for (const Json::Value& part : parts)
            choice.parts << QString::fromStdString(part.asString());
    }
    return choice;
}

QByteArray writePartChoice(const QByteArray& json, const QString& chosen)
{
    Json::Value root = parse(json);
    if (!root.isObject()) root = Json::Value(Json::objectValue);
    root["curPart"] = chosen.toStdString();
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["emitUTF8"] = true;
    return QByteArray::fromStdString(Json::writeString(builder, root));
}

const char* keepPartChoiceResult(const QByteArray& json)
{
    // One buffer for the export, overwritten in place: room for any ordinary record is
    // reserved once, so a caller holding the previous address reads the new record there.
    // Only a record larger than that moves the buffer.
    constexpr size_t ordinaryRecord = 64 * 1024;
    static std::string buffer;
    if (buffer.capacity() < ordinaryRecord) buffer.reserve(ordinaryRecord);
    buffer.assign(json.constData(), static_cast<size_t>(json.size()));
    return buffer.c_str();
}

} // namespace edw
