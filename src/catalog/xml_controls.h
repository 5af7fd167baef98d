#pragma once

#include "panel_parameter.h"

#include <esdata/esdata.h>

#include <QString>
#include <QStringList>
#include <QVariant>

#include <memory>
#include <vector>

namespace edw {

// A control of the parameter panel, as a host library describes it in its command
// description XML: which attribute of the element it edits and how.
class xml_control
{
public:
    virtual ~xml_control() = default;

    QString title;
    QString attribute;
    QString tooltip;
    bool readonly = false;
    bool required = false;
    QVariant value;
};

// "edit": an integer, real or text value.
class xml_edit_control : public xml_control
{
public:
    enum ValueType
    {
        Text,
        Int,
        Real
    };
    ValueType valueType = Text;

    // Stores text converted to the control's value type.
    void setText(const QString& text);
};

// "check": a boolean value.
class xml_check_control : public xml_control
{
};

// "combo": a choice among fixed texts; the value is the current choice's text.
class xml_combo_control : public xml_control
{
public:
    QStringList choices;
};

struct xml_group
{
    QString title;
    bool postHide = false;
    std::vector<std::shared_ptr<xml_control>> controls;
};

using ControlList = std::vector<xml_group>;

// The panel of the command named command in the description file; empty when the file cannot
// be read or the command has no panel. An attribute already used by an earlier control (of any
// group) is not given a second control.
ControlList readControlList(const QString& descriptionFile, const QString& command);

// Sets each control's value from the element, for the attributes the element has.
void fillValues(ControlList& groups, es_stdsize_t* element);

// The element's table has the attribute and it carries a formula (its value is computed).
bool isComputed(es_stdsize_t* element, const QString& attribute);

// The "properties" document of the panel: UTF-8 XML, tab indented.
QString writeProperties(const ControlList& groups);

// One record per control in panel order: attribute name, label (title, or the attribute name
// when there is none) and value.
std::vector<PanelParameter> collectValues(const ControlList& groups);

} // namespace edw
