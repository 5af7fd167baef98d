#include "editor/parameter_panel.h"

#include "editor/property_tree.h"

#include <QVBoxLayout>

#include <cmath>

namespace edw {
namespace {

constexpr double kZero = 1e-5;

PropertyTree::Property propertyOf(const xml_control& control)
{
    PropertyTree::Property property;
    property.name = control.attribute;
    property.label = control.title.isEmpty() ? control.attribute : control.title;
    property.toolTip = control.tooltip;
    property.readOnly = control.readonly;
    property.required = control.required;
    property.value = control.value;
    if (auto* edit = dynamic_cast<const xml_edit_control*>(&control)) {
        property.type = edit->valueType == xml_edit_control::Int    ? PropertyTree::Int
                        : edit->valueType == xml_edit_control::Real ? PropertyTree::Double
                                                                    : PropertyTree::String;
    } else if (dynamic_cast<const xml_check_control*>(&control)) {
        property.type = PropertyTree::Bool;
    } else if (auto* combo = dynamic_cast<const xml_combo_control*>(&control)) {
        property.type = PropertyTree::Enum;
        property.choices = combo->choices;
    }
    return property;
}

} // namespace

ParameterPanel::ParameterPanel(ControlList groups, QWidget* parent)
    : QWidget(parent), m_groups(std::move(groups))
{
    setObjectName(QStringLiteral("parameterPanel"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    m_tree = new PropertyTree(this);
    layout->addWidget(m_tree);
    build();
    connect(m_tree, &PropertyTree::valueChanged, this, &ParameterPanel::onValueChanged);
}

bool ParameterPanel::isEmpty() const
{
    for (const xml_group& group : m_groups) {
        if (!group.controls.empty()) return false;
    }
    return true;
}

void ParameterPanel::build()
{
    std::vector<PropertyTree::Group> groups;
    groups.reserve(m_groups.size());
    for (const xml_group& group : m_groups) {
        PropertyTree::Group rows;
        rows.title = group.title;
        rows.hidden = group.postHide;
        rows.properties.reserve(group.controls.size());
        for (const auto& control : group.controls)
            rows.properties.push_back(propertyOf(*control));
        groups.push_back(std::move(rows));
    }
    m_tree->addGroups(groups);
}

void ParameterPanel::onValueChanged(const QString& name, const QVariant& value)
{
    for (xml_group& group : m_groups) {
        for (const auto& control : group.controls) {
            if (control->attribute == name) {
                control->value = value;
                return;
            }
        }
    }
}

QString ParameterPanel::firstOffence() const
{
    for (const xml_group& group : m_groups) {
        for (const auto& control : group.controls) {
            if (!control->required) continue;
            const auto* edit = dynamic_cast<const xml_edit_control*>(control.get());
            if (edit && edit->valueType != xml_edit_control::Text) {
                if (std::abs(control->value.toDouble()) < kZero) {
                    const QString name =
                        control->title.isEmpty() ? control->attribute : control->title;
                    return QStringLiteral("Свойство \"%1\" не должно быть нулевым").arg(name);
                }
            } else if (!dynamic_cast<const xml_check_control*>(control.get()) &&
                       control->value.toString().isEmpty()) {
                return QStringLiteral(
                    "Невозможно создать элемент, заполните все обязательные поля");
            }
        }
    }
    return {};
}

void ParameterPanel::commit()
{
    m_tree->commitEditing();
}

} // namespace edw
