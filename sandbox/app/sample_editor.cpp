#include "sample_editor.h"

#include "export_calls.h"

#include "marlouss_library.h"

#include <esdata/esdata.h>

#include <QDir>
#include <QFile>
#include <QLibrary>

#include <vector>

namespace sandbox {
namespace {

QString fromEs(const char16_t* text)
{
    return text ? QString::fromUtf16(text) : QString();
}

std::u16string toEs(const QString& text)
{
    return text.toStdU16String();
}

std::vector<wchar_t> wide(const QString& text)
{
    std::vector<wchar_t> buffer(static_cast<size_t>(text.size()) + 1, 0);
    text.toWCharArray(buffer.data());
    return buffer;
}

const char* const kDescription = R"(<?xml version="1.0" encoding="utf-8"?>
<commands>
  <command name="uss" id="21">
    <categoryList>
      <category id="101" name="Трубы напорные"/>
      <category id="102" name="Трубы безнапорные" electricPrefix="K"/>
    </categoryList>
    <ussControlList>
      <group title="Основные">
        <edit title="Наименование" attribute="Name" required="true" tooltip="Как в спецификации"/>
        <edit title="Диаметр, мм" attribute="Diameter" type="int" value="32"/>
        <edit title="Толщина стенки, мм" attribute="Wall" type="float" value="3,0"/>
        <edit title="Длина, мм" attribute="Length" type="float" value="1000" required="true"/>
      </group>
      <group title="Исполнение">
        <combo title="Материал" attribute="Material" values="ПЭ100|ПЭ80|ПП"/>
        <check title="Теплоизоляция" attribute="Insulated" value="false"/>
      </group>
      <group title="Учёт">
        <edit title="Автор" attribute="USS_AUTHOR" readonly="true"/>
      </group>
      <group title="Служебные" post-hide="true">
        <edit title="Метка" attribute="Mark" value="S"/>
      </group>
    </ussControlList>
  </command>
  <command name="pump" id="22">
    <categoryList>
      <category id="201" name="Насосы центробежные"/>
      <category id="202" name="Насосы вихревые"/>
    </categoryList>
    <views>3D Деталь|Сверху</views>
    <ussControlList>
      <group title="Насос">
        <edit title="Наименование" attribute="Name" required="true"/>
        <edit title="Длина" attribute="Length" type="float" value="0" required="true"/>
      </group>
    </ussControlList>
  </command>
  <command name="valve" id="23">
    <categoryList><category id="301" name="-"/></categoryList>
    <ussControlList>
      <group title="Задвижка"><edit title="Ду" attribute="DN" type="int" value="50"/></group>
    </ussControlList>
  </command>
</commands>
)";

void walk(es_folder_t* folder, const QString& category, es_provider_t* provider)
{
    es_table_t* table = folder_GetTable(folder);
    for (uint32_t i = 0; i < table_GetStdSizeCount(table); ++i) {
        es_stdsize_t* element = table_GetStdSize(table, i);
        auto set = [&](const char16_t* name, const QString& text, uint32_t type) {
            es_attribute_t* a = table_FindAttribute(table, name);
            if (!a) a = table_AddAttribute(table, name, name, type);
            if (type == ES_ATTR_INT)
                stdsize_SetValueI(element, a, text.toInt());
            else
                stdsize_SetValueS(element, a, toEs(text).c_str());
        };
        set(u"ProjectSurfaces", "1", ES_ATTR_INT);
        set(u"USS_CATEGORY_NAME", category, ES_ATTR_TEXT);
    }
    for (uint32_t i = 0; i < folder_GetChildFolderCount(folder); ++i) {
        es_folder_t* child = folder_GetChildFolder(folder, i);
        const QString name = fromEs(folder_GetName(child));
        walk(child, name.startsWith("folder ") ? category : name, provider);
    }
}

} // namespace

QString writeSampleEditorLibrary(const QString& folder)
{
    QDir().mkpath(folder);
    const QString path = folder + QStringLiteral("/uss_sample_tx.xml");
    QFile description(path);
    if (description.open(QIODevice::WriteOnly | QIODevice::Truncate))
        description.write(kDescription);
    QFile library(folder + QStringLiteral("/sample_tx.rtw"));
    if (library.open(QIODevice::WriteOnly | QIODevice::Truncate)) library.write("sample\n");
    return path;
}

void addEditorValues(es_provider_t* provider)
{
    for (uint32_t i = 0; i < provider_GetPacketCount(provider); ++i) {
        es_packet_t* packet = provider_GetPacket(provider, i);
        walk(packet_GetRootFolder(packet), fromEs(packet_GetName(packet)), provider);
    }
}

CallResult callCreateCloneEdit(const MarloUssLibrary& library, quintptr window,
                               es_provider_t* provider, const QString& workFolder,
                               const EditCall& call)
{
    CallResult result;
    QLibrary loaded(library.path());
    auto run =
        reinterpret_cast<decltype(&uss_create_clone_edit)>(loaded.resolve("uss_create_clone_edit"));
    if (!run) {
        result.line = QStringLiteral("uss_create_clone_edit: not exported by the library");
        result.value = -1;
        return result;
    }
    const QString description = writeSampleEditorLibrary(workFolder + "/library");
    std::vector<std::vector<wchar_t>> commandTexts;
    std::vector<const wchar_t*> commands;
    for (const QString& name : call.commands)
        commandTexts.push_back(wide(name));
    for (const auto& text : commandTexts)
        commands.push_back(text.data());
    const auto packet = wide(call.packet), id = wide(call.elementId), file = wide(description),
               command = wide(call.command), category = wide(call.category),
               path = wide(call.categoryPath), requestText = wide(call.requestText);

    marlouss_edit_request_t request{};
    request.size = sizeof(request);
    request.mode = call.mode;
    request.provider = provider;
    request.parent = window;
    request.packet = packet.data();
    request.element_id = id.data();
    request.commands_file = file.data();
    request.commands = commands.data();
    request.command_count = static_cast<uint32_t>(commands.size());
    request.command = call.command.isEmpty() ? nullptr : command.data();
    request.category = category.data();
    request.category_path = call.categoryPath.isEmpty() ? nullptr : path.data();
    request.request_text = requestText.data();
    request.discipline = call.discipline;

    const bool written = run(&request);
    noteExportCalled(QStringLiteral("uss_create_clone_edit()"));
    result.value = written;
    result.text =
        written && request.written_id ? QString::fromWCharArray(request.written_id) : QString();
    static const char* const modes[] = {"create", "clone", "edit"};
    result.line =
        QStringLiteral("uss_create_clone_edit(%1 %2 %3, commands %4) -> %5")
            .arg(QString::fromLatin1(modes[call.mode % 3]), call.packet, call.elementId,
                 call.commands.join('|'),
                 written ? QStringLiteral("true, ") + result.text : QStringLiteral("false"));
    return result;
}

QString describeElement(es_provider_t* provider, const QString& packetName, const QString& id)
{
    es_packet_t* packet = nullptr;
    for (uint32_t i = 0; i < provider_GetPacketCount(provider); ++i) {
        if (fromEs(packet_GetName(provider_GetPacket(provider, i))) == packetName)
            packet = provider_GetPacket(provider, i);
    }
    es_stdsize_t* element = packet ? packet_FindStdSize(packet, toEs(id).c_str()) : nullptr;
    if (!element) return QStringLiteral("no element %1 in %2").arg(id, packetName);
    QStringList values;
    es_table_t* table = stdsize_GetTable(element);
    for (uint32_t i = 0; i < table_GetAttributeCount(table); ++i) {
        es_attribute_t* attribute = table_GetAttribute(table, i);
        es_value value{};
        stdsize_GetValue(element, attribute, &value);
        const QString text = value.kind == ES_VALUE_INT    ? QString::number(value.i)
                             : value.kind == ES_VALUE_REAL ? QString::number(value.d)
                             : value.kind == ES_VALUE_TEXT ? fromEs(value.s)
                                                           : QString();
        values << fromEs(attribute_GetName(attribute)) + "=" + text;
    }
    QStringList views;
    es_projections_t* list = stdsize_GetProjections(element);
    for (uint32_t i = 0; i < projections_GetProjectioCount(list); ++i) {
        es_projection_t* p = projections_GetProjection(list, i);
        views << QStringLiteral("%1 %2/%3")
                     .arg(fromEs(projection_GetName(p)))
                     .arg(projection_GetType(p))
                     .arg(projection_GetViewType(p));
    }
    es_model_t* model = stdsize_GetModel(element);
    return QStringLiteral("id: %1 (type %2)\n    values: %3\n    views: %4; model: %5")
        .arg(id, fromEs(stdsize_GetType(element)), values.join(", "), views.join(", "),
             model_IsEmpty(model) ? QStringLiteral("none") : fromEs(model_GetModelName(model)));
}

} // namespace sandbox
