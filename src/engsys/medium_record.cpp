#include "engsys/medium_record.h"

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

void read(const Json::Value& root, const char* key, QString& out)
{
    const Json::Value& v = root[key];
    if (v.isString()) out = QString::fromStdString(v.asString());
}

void read(const Json::Value& root, const char* key, QStringList& out)
{
    const Json::Value& v = root[key];
    if (!v.isArray()) return;
    for (const Json::Value& item : v)
        if (item.isString()) out << QString::fromStdString(item.asString());
}

Json::Value list(const QStringList& items)
{
    Json::Value array(Json::arrayValue);
    for (const QString& item : items)
        array.append(item.toStdString());
    return array;
}

} // namespace

MediumRecord readMediumRecord(const QByteArray& json)
{
    MediumRecord r;
    const Json::Value root = parse(json);
    if (!root.isObject()) return r;
    if (root["version"].isIntegral()) r.version = root["version"].asInt();
    read(root, "sysName", r.sysName);
    read(root, "prefix", r.prefix);
    if (root["protoch"].isBool()) r.protoch = root["protoch"].asBool();
    if (root["color"].isIntegral()) r.color = root["color"].asInt();
    read(root, "systems", r.systems);
    read(root, "curSeg", r.curSeg);
    read(root, "varSeg", r.varSeg);
    read(root, "segs", r.segs);
    read(root, "curOtvod", r.curOtvod);
    read(root, "varOtvod", r.varOtvod);
    read(root, "otvods", r.otvods);
    read(root, "curTrk", r.curTrk);
    read(root, "varTrk", r.varTrk);
    read(root, "trks", r.trks);
    read(root, "curPrh", r.curPrh);
    read(root, "varPrh", r.varPrh);
    read(root, "prhs", r.prhs);
    read(root, "currentIsoSegment", r.currentIsoSegment);
    read(root, "currentIsoBend", r.currentIsoBend);
    read(root, "currentIsoTee", r.currentIsoTee);
    read(root, "currentIsoTransition", r.currentIsoTransition);
    read(root, "isoSegments", r.isoSegments);
    read(root, "isoBends", r.isoBends);
    read(root, "isoTees", r.isoTees);
    read(root, "isoTransitions", r.isoTransitions);
    read(root, "cat", r.cat);
    read(root, "cats", r.cats);
    read(root, "temp", r.temp);
    read(root, "density", r.density);
    read(root, "maxP", r.maxP);
    read(root, "chmHelp", r.chmHelp);
    if (root["helpId"].isIntegral()) r.helpId = root["helpId"].asInt();
    if (root["provider"].isIntegral()) r.provider = root["provider"].asInt64();
    return r;
}

QByteArray writeMediumRecord(const MediumRecord& r)
{
    Json::Value root(Json::objectValue);
    root["version"] = r.version;
    root["sysName"] = r.sysName.toStdString();
    root["prefix"] = r.prefix.toStdString();
    root["protoch"] = r.protoch;
    root["color"] = r.color;
    root["systems"] = list(r.systems);
    root["curSeg"] = r.curSeg.toStdString();
    root["varSeg"] = r.varSeg.toStdString();
    root["segs"] = list(r.segs);
    root["curOtvod"] = r.curOtvod.toStdString();
    root["varOtvod"] = r.varOtvod.toStdString();
    root["otvods"] = list(r.otvods);
    root["curTrk"] = r.curTrk.toStdString();
    root["varTrk"] = r.varTrk.toStdString();
    root["trks"] = list(r.trks);
    root["curPrh"] = r.curPrh.toStdString();
    root["varPrh"] = r.varPrh.toStdString();
    root["prhs"] = list(r.prhs);
    root["currentIsoSegment"] = r.currentIsoSegment.toStdString();
    root["currentIsoBend"] = r.currentIsoBend.toStdString();
    root["currentIsoTee"] = r.currentIsoTee.toStdString();
    root["currentIsoTransition"] = r.currentIsoTransition.toStdString();
    root["isoSegments"] = list(r.isoSegments);
    root["isoBends"] = list(r.isoBends);
    root["isoTees"] = list(r.isoTees);
    root["isoTransitions"] = list(r.isoTransitions);
    root["cat"] = r.cat.toStdString();
    root["cats"] = list(r.cats);
    root["temp"] = r.temp.toStdString();
    root["density"] = r.density.toStdString();
    root["maxP"] = r.maxP.toStdString();
    root["chmHelp"] = r.chmHelp.toStdString();
    root["helpId"] = r.helpId;
    root["provider"] = Json::Int64(r.provider);
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["emitUTF8"] = true;
    return QByteArray::fromStdString(Json::writeString(builder, root));
}

const char* keepMediumResult(const QByteArray& json)
{
    // One buffer for the export: the caller copies the text before calling again.
    static std::string buffer;
    buffer.assign(json.constData(), static_cast<size_t>(json.size()));
    return buffer.c_str();
}

} // namespace edw
