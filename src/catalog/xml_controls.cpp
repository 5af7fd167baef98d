#include "xml_controls.h"

#include "esconvert.h"
#include "xml_file_p.h"

#include <pugixml.hpp>

#include <set>
#include <sstream>

namespace edw {

void xml_edit_control::setText(const QString& text)
{
    switch (valueType) {
    case Int:
        value = textToInt(text);
        break;
    case Real:
        value = textToReal(text);
        break;
    case Text:
        value = text;
        break;
    }
}

namespace {

QString attributeText(const pugi::xml_node& node, const char* name)
{
    return QString::fromUtf8(node.attribute(name).value());
}

void readCommon(xml_control& control, const pugi::xml_node& node)
{
    control.title = attributeText(node, "title");
    control.attribute = attributeText(node, "attribute");
    control.tooltip = attributeText(node, "tooltip");
    control.readonly = node.attribute("readonly").as_bool(false);
    control.required = node.attribute("required").as_bool(false);
}

std::shared_ptr<xml_control> makeControl(const pugi::xml_node& node)
{
    const std::string kind = node.name();
    if (kind == "edit") {
        auto edit = std::make_shared<xml_edit_control>();
        readCommon(*edit, node);
        const std::string type = node.attribute("type").value();
        edit->valueType = type == "int"     ? xml_edit_control::Int
                          : type == "float" ? xml_edit_control::Real
                                            : xml_edit_control::Text;
        edit->setText(attributeText(node, "value"));
        return edit;
    }
    if (kind == "check") {
        auto check = std::make_shared<xml_check_control>();
        readCommon(*check, node);
        check->value = node.attribute("value").as_bool(false);
        return check;
    }
    if (kind == "combo") {
        auto combo = std::make_shared<xml_combo_control>();
        readCommon(*combo, node);
        combo->choices = attributeText(node, "values").split(QLatin1Char('|'));
        combo->value = QString();
        return combo;
    }
    return nullptr;
}

} // namespace

ControlList readControlList(const QString& descriptionFile, const QString& command)
{
    ControlList groups;
    pugi::xml_document doc;
    if (!loadXmlFile(doc, descriptionFile)) return groups;
    pugi::xml_node list;
    try {
        const QString query = QStringLiteral("/*/command[@name='%1']/ussControlList").arg(command);
        list = doc.select_node(query.toStdString().c_str()).node();
    } catch (const pugi::xpath_exception&) {
        return groups;
    }
    std::set<QString> used;
    for (const pugi::xml_node& groupNode : list.children("group")) {
        xml_group group;
        group.postHide = groupNode.attribute("post-hide").as_bool(false);
        group.title = attributeText(groupNode, "title");
        for (const pugi::xml_node& node : groupNode.children()) {
            if (node.type() != pugi::node_element) continue;
            const QString attribute = attributeText(node, "attribute");
            if (used.count(attribute)) continue;
            if (auto control = makeControl(node)) {
                used.insert(attribute);
                group.controls.push_back(std::move(control));
            }
        }
        groups.push_back(std::move(group));
    }
    return groups;
}

void fillValues(ControlList& groups, es_stdsize_t* element)
{
    for (xml_group& group : groups) {
        for (const auto& control : group.controls) {
            es_value value{};
            if (!stdsize_GetValueByName(element, toEs(control->attribute).c_str(), &value))
                continue;
            const QString text = valueToText(value);
            if (auto* edit = dynamic_cast<xml_edit_control*>(control.get())) {
                edit->setText(text);
            } else if (dynamic_cast<xml_check_control*>(control.get())) {
                control->value = value.kind == ES_VALUE_REAL
                                     ? value.d != 0.0
                                     : textToInt(text) != 0 || text == QLatin1String("true");
            } else {
                control->value = text;
            }
        }
    }
}

bool isComputed(es_stdsize_t* element, const QString& attribute)
{
    es_attribute_t* found = table_FindAttribute(stdsize_GetTable(element), toEs(attribute).c_str());
    return found && !fromEs(attribute_GetFormula(found)).isEmpty();
}

QString writeProperties(const ControlList& groups)
{
    pugi::xml_document doc;
    doc.load_string("<?xml version=\"1.0\" encoding=\"utf-8\"?><properties></properties>",
                    pugi::parse_default | pugi::parse_declaration);
    pugi::xml_node root = doc.child("properties");
    for (const xml_group& group : groups) {
        pugi::xml_node groupNode = root.append_child("group");
        groupNode.append_attribute("name") = group.title.toStdString().c_str();
        for (const auto& control : group.controls) {
            const char* name = dynamic_cast<const xml_edit_control*>(control.get())    ? "edit"
                               : dynamic_cast<const xml_check_control*>(control.get()) ? "check"
                                                                                       : "combo";
            pugi::xml_node node = groupNode.append_child(name);
            node.append_attribute("title") = control->title.toStdString().c_str();
            node.append_attribute("param") = control->attribute.toStdString().c_str();
            if (auto* combo = dynamic_cast<const xml_combo_control*>(control.get()))
                node.append_attribute("values") =
                    combo->choices.join(QLatin1Char('|')).toStdString().c_str();
            if (control->readonly) node.append_attribute("readonly") = true;
        }
    }
    std::ostringstream out;
    doc.save(out, "\t", pugi::format_default, pugi::encoding_utf8);
    return QString::fromStdString(out.str());
}

std::vector<PanelParameter> collectValues(const ControlList& groups)
{
    std::vector<PanelParameter> records;
    for (const xml_group& group : groups) {
        for (const auto& control : group.controls) {
            PanelParameter record;
            record.name = control->attribute;
            record.label = control->title.isEmpty() ? control->attribute : control->title;
            if (auto* edit = dynamic_cast<const xml_edit_control*>(control.get())) {
                switch (edit->valueType) {
                case xml_edit_control::Int:
                    record.value = control->value.toInt();
                    break;
                case xml_edit_control::Real:
                    record.value = control->value.toDouble();
                    break;
                case xml_edit_control::Text:
                    record.value = control->value.toString();
                    break;
                }
            } else if (dynamic_cast<const xml_check_control*>(control.get())) {
                record.value = control->value.toBool();
            } else {
                record.value = control->value.toString();
            }
            records.push_back(std::move(record));
        }
    }
    return records;
}

} // namespace edw
