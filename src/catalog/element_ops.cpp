#include "element_ops.h"

#include "catalog_tree.h"
#include "esconvert.h"
#include "formula.h"
#include "host.h"
#include "notify.h"
#include "spec_description.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImage>
#include <QImageWriter>
#include <QLocale>
#include <QPainter>
#include <QStringList>
#include <QSvgRenderer>

#include <cmath>
#include <limits>

namespace edw {

CObject openElementObject(const QString& libraryId, const QString& packetName,
                          const QString& elementId)
{
    const std::u16string library = toEs(libraryId);
    es_pool_t* pool = esGetLibraryProviderPool(library.c_str());
    if (!pool) return {};
    es_packet_t* packet = pool_FindPacket(pool, toEs(packetName).c_str());
    if (!packet) return {};
    es_stdsize_t* element = packet_FindStdSize(packet, toEs(elementId).c_str());
    if (!element) return {};
    return CObject(pool_CreateObject(pool, element, library.c_str()));
}

QString makeElementId(const QString& prefix, const QString& request, const QDateTime& now)
{
    return prefix + QStringLiteral("USER#%1#%2")
                        .arg(now.toString(QStringLiteral("yyyy.MM.ddThh:mm:ss")), request);
}

es_stdsize_t* createElement(es_provider_t* provider, const QString& categoryPath,
                            const QString& type, const QString& idPrefix, const QString& request)
{
    const QString id = makeElementId(idPrefix, request);
    const QStringList parts = categoryPath.split(QLatin1Char('\\'), Qt::SkipEmptyParts);
    if (parts.isEmpty()) return nullptr;
    es_packet_t* packet = findOrAddPacket(provider, parts.first());
    if (!packet) return nullptr;
    es_folder_t* folder = packet_GetRootFolder(packet);
    for (qsizetype i = 1; i < parts.size() && folder; ++i)
        folder = findOrAddChildFolder(folder, parts.at(i));
    es_folder_t* own = findOrAddChildFolder(folder, QStringLiteral("folder ") + id);
    if (!own) return nullptr;
    es_stdsize_t* element = table_AddStdSize(folder_GetTable(own), toEs(id).c_str());
    if (element) stdsize_SetType(element, toEs(type).c_str());
    return element;
}

void setValuesByName(es_stdsize_t* element, const std::vector<std::pair<QString, QString>>& values)
{
    es_table_t* table = stdsize_GetTable(element);
    for (const auto& [name, text] : values) {
        if (es_attribute_t* attribute = table_FindAttribute(table, toEs(name).c_str()))
            writeValue(element, attribute, text);
    }
}

namespace {

es_attribute_t* objectAttribute(const CObject& object, const QString& name)
{
    if (object.isEmpty()) return nullptr;
    return table_FindAttribute(stdsize_GetTable(object.stdSize()), toEs(name).c_str());
}

} // namespace

bool objectSetValue(const CObject& object, const QString& name, int32_t value)
{
    es_attribute_t* attribute = objectAttribute(object, name);
    return attribute && object_SetValueI(object.handle(), attribute, value);
}

bool objectSetValue(const CObject& object, const QString& name, double value)
{
    es_attribute_t* attribute = objectAttribute(object, name);
    return attribute && object_SetValueD(object.handle(), attribute, value);
}

bool objectSetValue(const CObject& object, const QString& name, const QString& value)
{
    es_attribute_t* attribute = objectAttribute(object, name);
    return attribute && object_SetValueS(object.handle(), attribute, toEs(value).c_str());
}

namespace {

// The number of the attribute that is never carried from one element into another.
constexpr int32_t notCopiedNumber = 11;

int32_t truncatedToInt(double value)
{
    if (std::isnan(value)) return 0;
    if (value >= static_cast<double>(std::numeric_limits<int32_t>::max()))
        return std::numeric_limits<int32_t>::max();
    if (value <= static_cast<double>(std::numeric_limits<int32_t>::min()))
        return std::numeric_limits<int32_t>::min();
    return static_cast<int32_t>(value);
}

void copyValue(es_stdsize_t* source, es_attribute_t* from, es_stdsize_t* target, es_attribute_t* to)
{
    es_value value{};
    stdsize_GetValue(source, from, &value);
    switch (attribute_GetType(to)) {
    case ES_ATTR_INT: {
        int32_t i = 0;
        if (value.kind == ES_VALUE_INT)
            i = value.i;
        else if (value.kind == ES_VALUE_REAL)
            i = truncatedToInt(value.d);
        else if (value.kind == ES_VALUE_TEXT)
            i = textToInt(fromEs(value.s));
        stdsize_SetValueI(target, to, i);
        break;
    }
    case ES_ATTR_REAL: {
        double d = 0.0;
        if (value.kind == ES_VALUE_REAL)
            d = value.d;
        else if (value.kind == ES_VALUE_INT)
            d = value.i;
        else if (value.kind == ES_VALUE_TEXT)
            d = textToReal(fromEs(value.s));
        stdsize_SetValueD(target, to, d);
        break;
    }
    case ES_ATTR_TEXT:
        stdsize_SetValueS(target, to, toEs(valueToText(value)).c_str());
        break;
    default:
        break;
    }
}

} // namespace

bool copyElement(es_stdsize_t* source, es_stdsize_t* target)
{
    if (!source || !target) return false;
    es_table_t* from = stdsize_GetTable(source);
    es_table_t* to = stdsize_GetTable(target);
    const uint32_t count = table_GetAttributeCount(from);
    for (uint32_t i = 0; i < count; ++i) {
        es_attribute_t* attribute = table_GetAttribute(from, i);
        if (!attribute || attribute_GetNumber(attribute) == notCopiedNumber) continue;
        const std::u16string name = toEs(fromEs(attribute_GetName(attribute)));
        es_attribute_t* copy = table_AddAttribute(
            to, name.c_str(), attribute_GetDescription(attribute), attribute_GetType(attribute));
        // A target that already has the name keeps its attribute and takes the rest.
        if (!copy) copy = table_FindAttribute(to, name.c_str());
        if (!copy) continue;
        attribute_SetNumber(copy, attribute_GetNumber(attribute));
        attribute_SetOldNumber(copy, attribute_GetOldNumber(attribute));
        attribute_SetMeasure(copy, toEs(fromEs(attribute_GetMeasure(attribute))).c_str());
        attribute_SetVarName(copy, toEs(fromEs(attribute_GetVarName(attribute))).c_str());
        copyValue(source, attribute, target, copy);
        const QString formula = fromEs(attribute_GetFormula(attribute));
        if (!formula.isEmpty()) attribute_SetFormula(copy, toEs(formula).c_str());
    }
    return runCreateSpec(readSpecifications(source), target);
}

bool copyRepresentationData(es_stdsize_t* source, es_stdsize_t* target)
{
    const void* data = nullptr;
    const size_t size = stdsize_GetRepresentationData(source, &data);
    const QByteArray copy(static_cast<const char*>(data), static_cast<qsizetype>(size));
    return stdsize_SetRepresentationData(target, copy.constData(), size);
}

uint32_t projectionType(int kind)
{
    if (kind >= 0 && kind <= 9) return static_cast<uint32_t>(kind % 5 + 1);
    return 1;
}

uint32_t viewType(int kind)
{
    if ((kind >= 0 && kind <= 4) || kind == 11) return 0;
    if (kind == 10) return 2;
    return 1;
}

QString iconPathFor(const QString& viewFile)
{
    const QFileInfo info(viewFile);
    const QString suffix = info.suffix();
    const QString stem =
        suffix.isEmpty() ? viewFile : viewFile.left(viewFile.size() - suffix.size() - 1);
    return stem + QStringLiteral(".ico");
}

bool writeIcon(const QString& documentFile, const QString& iconFile)
{
    // Rendering needs the GUI side of Qt (fonts of text in the drawing); headless callers such
    // as the command line go without icons.
    if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance())) return false;
    QFile file(documentFile);
    if (!file.open(QIODevice::ReadOnly)) return false;
    const QByteArray content = file.readAll();
    if (!content.contains("<svg")) return false;
    QSvgRenderer renderer(content);
    if (!renderer.isValid()) return false;
    constexpr int side = 64;
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    {
        QPainter painter(&image);
        QSizeF size = renderer.defaultSize();
        if (size.isEmpty()) size = QSizeF(side, side);
        size.scale(side, side, Qt::KeepAspectRatio);
        const QRectF target((side - size.width()) / 2, (side - size.height()) / 2, size.width(),
                            size.height());
        renderer.render(&painter, target);
    }
    QImageWriter writer(iconFile, "ico");
    if (writer.write(image)) return true;
    QFile::remove(iconFile);
    return false;
}

bool replaceGraphics(es_stdsize_t* element, const std::vector<ViewFile>& views)
{
    if (!element) return false;
    es_projections_t* list = stdsize_GetProjections(element);
    while (projections_GetProjectioCount(list) != 0) {
        if (!projections_DeleteProjection(list, projections_GetProjection(list, 0))) return false;
    }
    es_model_t* model = stdsize_GetModel(element);
    model_Clear(model);

    bool ok = true;
    const ViewFile* modelView = nullptr;
    for (const ViewFile& view : views) {
        if (view.kind == 11) {
            modelView = &view;
            continue;
        }
        QString icon = iconPathFor(view.file);
        if (!writeIcon(view.file, icon)) icon.clear();
        const QString name =
            view.name.isEmpty() ? QFileInfo(view.file).completeBaseName() : view.name;
        if (!projections_AddProjectionEx(list, toEs(name).c_str(), toEs(view.file).c_str(),
                                         toEs(icon).c_str(), projectionType(view.kind),
                                         toEs(view.description).c_str(), viewType(view.kind)))
            ok = false;
    }
    if (modelView) {
        QString icon = iconPathFor(modelView->file);
        if (!writeIcon(modelView->file, icon)) icon.clear();
        const QString name = modelView->name.isEmpty()
                                 ? QFileInfo(modelView->file).completeBaseName()
                                 : modelView->name;
        if (!model_SetModelEx(model, toEs(modelView->file).c_str(), toEs(icon).c_str(),
                              toEs(name).c_str(), modelView->version))
            ok = false;
    }
    return ok;
}

int recordHiddenLayers(es_stdsize_t* element)
{
    IHost* documents = host();
    if (!documents || !element) return 0;
    es_table_t* table = stdsize_GetTable(element);
    es_projections_t* list = stdsize_GetProjections(element);
    // Read every fragment first: adding attributes must not disturb the projection texts.
    std::vector<int> hidden;
    const uint32_t count = projections_GetProjectioCount(list);
    for (uint32_t i = 0; i < count; ++i) {
        const QString fragment =
            fromEs(projection_GetFragmentFile(projections_GetProjection(list, i)));
        if (const auto layers = documents->hiddenLayers(fragment))
            hidden.insert(hidden.end(), layers->begin(), layers->end());
    }
    int added = 0;
    int counter = 0;
    for (const int layer : hidden) {
        QString name;
        do {
            name = QStringLiteral("hiddenLayer_") + QString::number(counter++);
        } while (table_FindAttribute(table, toEs(name).c_str()));
        const std::u16string text = toEs(name);
        es_attribute_t* attribute = table_AddAttribute(table, text.c_str(), text.c_str(), 2);
        if (!attribute) continue;
        attribute_SetVarName(attribute,
                             toEs(QStringLiteral("LAYER") + QString::number(layer)).c_str());
        stdsize_SetValueI(element, attribute, 0);
        ++added;
    }
    return added;
}

namespace {

QString parameterText(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::Bool:
        return value.toBool() ? QStringLiteral("1") : QStringLiteral("0");
    case QMetaType::Double:
    case QMetaType::Float:
        return QString::number(value.toDouble(), 'g', QLocale::FloatingPointShortest);
    default:
        return value.toString();
    }
}

uint32_t attributeTypeFor(const PanelParameter& parameter)
{
    if (parameter.kind == PanelParameter::Formula) return ES_ATTR_REAL;
    switch (parameter.value.typeId()) {
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::UInt:
        return ES_ATTR_INT;
    case QMetaType::Double:
    case QMetaType::Float:
        return ES_ATTR_REAL;
    default:
        return ES_ATTR_TEXT;
    }
}

} // namespace

void writePanelValues(es_stdsize_t* element, const std::vector<PanelParameter>& parameters)
{
    es_table_t* table = stdsize_GetTable(element);
    if (!table) return;
    for (const PanelParameter& parameter : parameters) {
        const std::u16string name = toEs(parameter.name);
        es_attribute_t* attribute = table_FindAttribute(table, name.c_str());
        if (!attribute) {
            const QString description =
                parameter.label.isEmpty() ? parameter.name : parameter.label;
            attribute = table_AddAttribute(table, name.c_str(), toEs(description).c_str(),
                                           attributeTypeFor(parameter));
        }
        if (!attribute) continue;
        if (parameter.kind == PanelParameter::Formula) {
            const FormulaResult converted = convertFormula(parameter.value.toString(), table);
            if (converted.text.isEmpty())
                messenger().warning(QStringLiteral(" "),
                                    QStringLiteral("Ошибка преобразования формулы"));
            attribute_SetFormula(attribute, toEs(converted.text).c_str());
        } else {
            writeValue(element, attribute, parameterText(parameter.value));
        }
    }
    static const std::pair<const char16_t*, const char16_t*> sizeNames[] = {
        {u"Length", u"L"}, {u"Height", u"H"}, {u"Width", u"W"}};
    for (const PanelParameter& parameter : parameters) {
        for (const auto& [name, varName] : sizeNames) {
            if (parameter.name == QString::fromUtf16(name)) {
                attribute_SetVarName(table_FindAttribute(table, name), varName);
            }
        }
    }
}

QString ussAuthor()
{
    QString user = qEnvironmentVariable("USERNAME");
    QString computer = qEnvironmentVariable("COMPUTERNAME");
    if (user.isEmpty()) user = QStringLiteral("user");
    if (computer.isEmpty()) computer = QStringLiteral("pc");
    return user + QLatin1Char('\\') + computer;
}

void writeBookkeeping(es_stdsize_t* element, const QDateTime& now)
{
    es_table_t* table = stdsize_GetTable(element);
    const std::pair<QString, QString> values[] = {
        {QStringLiteral("USS_AUTHOR"), ussAuthor()},
        {QStringLiteral("USS_LAST_CHANGE_DATE"),
         now.toString(QStringLiteral("dd.MM.yyyy hh:mm:ss"))}};
    for (const auto& [name, text] : values) {
        const std::u16string key = toEs(name);
        es_attribute_t* attribute = table_FindAttribute(table, key.c_str());
        if (!attribute)
            attribute = table_AddAttribute(table, key.c_str(), key.c_str(), ES_ATTR_TEXT);
        if (attribute) writeValue(element, attribute, text);
    }
}

} // namespace edw
