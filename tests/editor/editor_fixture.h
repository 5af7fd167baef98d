#pragma once

// Pieces of the editor tests: a commands description with commands of every kind, a scripted
// environment that records warnings and answers the choosers, and a source element.

#include "../support/fake_host.h"
#include "../support/recording_messenger.h"
#include "../support/temp_catalog.h"
#include "catalog/element_ops.h"
#include "editor/editor_environment.h"

#include <QDir>
#include <QStringList>

namespace testing {

const QByteArray svgDocument =
    "<svg xmlns=\"http://www.w3.org/2000/svg\" data-version=\"231\" width=\"40\" height=\"20\">"
    "<g data-layer=\"0\"><rect x=\"2\" y=\"2\" width=\"36\" height=\"16\" fill=\"none\" "
    "stroke=\"black\"/></g></svg>\n";

// "pipe": two categories, a panel, requires "3D Деталь" and "Сверху"; "valve": the one
// category "-", no views required; "bare": nothing but its name; "odd": names an unknown
// view.
const QByteArray commandsXml = R"(<?xml version="1.0" encoding="utf-8"?>
<commands>
  <command name="pipe" id="12">
    <categoryList>
      <category id="7" name="Трубы напорные" electricPrefix="E"/>
      <category id="9" name="Трубы безнапорные"/>
    </categoryList>
    <views>3D Деталь|Сверху</views>
    <ussControlList>
      <group title="Размеры">
        <edit title="Диаметр" attribute="Diameter" type="int" value="32" required="true"/>
        <edit title="Толщина" attribute="Wall" type="float" value="3,5" tooltip="мм"/>
        <edit title="Длина" attribute="Length" type="float" value="0" required="true"/>
      </group>
      <group title="Описание">
        <edit title="Наименование" attribute="Name" value="Труба" required="true"/>
        <check title="Изоляция" attribute="Insulated" value="true"/>
        <combo title="Материал" attribute="Material" values="ПЭ100|ПЭ80|Сталь"/>
        <edit title="Код" attribute="Code" value="K-1" readonly="true"/>
      </group>
      <group title="Служебные" post-hide="true">
        <edit title="Метка" attribute="Mark" value="m"/>
      </group>
    </ussControlList>
  </command>
  <command name="valve" id="7">
    <categoryList><category id="3" name="-"/></categoryList>
    <ussControlList>
      <group title="Общие"><edit title="Ду" attribute="DN" type="int" value="50"/></group>
    </ussControlList>
  </command>
  <command name="bare" id="8"/>
  <command name="odd" id="9"><views>Сверху|Сбоку</views></command>
</commands>
)";

// Records what the editor would have shown and answers the choosers from a queue.
struct ScriptedEnvironment
{
    QStringList warnings;
    QStringList chosen;  // answers of the open chooser, in order
    QStringList refused; // files the host cannot open
    QHash<QString, QString> settings;
    QStringList chooserTitles;

    edw::EditorEnvironment environment()
    {
        edw::EditorEnvironment e;
        e.readSetting = [this](const QString& key) { return settings.value(key); };
        e.writeSetting = [this](const QString& key, const QString& v) { settings[key] = v; };
        e.openFile = [this](QWidget*, const QString& title, const QString&, const QString&) {
            chooserTitles << title;
            return chosen.isEmpty() ? QString() : chosen.takeFirst();
        };
        e.saveFile = [this](QWidget*, const QString& title, const QString&, const QString&) {
            chooserTitles << title;
            return chosen.isEmpty() ? QString() : chosen.takeFirst();
        };
        e.canOpen = [this](const QString& file) { return !refused.contains(file); };
        e.warn = [this](QWidget*, const QString& text) { warnings << text; };
        return e;
    }
};

// An element with a front view, a standard drawing view and a model, and a few values.
inline es_stdsize_t* sourceElement(const TempCatalog& catalog)
{
    es_stdsize_t* element =
        edw::createElement(catalog.provider, "ПЭ_Трубы\\Напорные", "pipe", QString(), "source");
    const QString front = catalog.writeFile("front.frw", svgDocument);
    const QString gost = catalog.writeFile("gost.frw", svgDocument);
    const QString model = catalog.writeFile("model.m3d", svgDocument);
    edw::replaceGraphics(element, {{1, front, {}, {}}, {10, gost, {}, {}}, {11, model, {}, {}}});
    edw::setValuesByName(element, {});
    auto add = [&](const QString& name, uint32_t type, const QString& text) {
        edw::writeValue(element, addAttribute(element, name, type), text);
    };
    add("Diameter", ES_ATTR_INT, "63");
    add("Wall", ES_ATTR_REAL, "5.8");
    add("Length", ES_ATTR_REAL, "1000");
    add("Name", ES_ATTR_TEXT, "Труба ПЭ100 63");
    add("ProjectSurfaces", ES_ATTR_INT, "1");
    add("UseModelColor", ES_ATTR_INT, "0");
    return element;
}

} // namespace testing
