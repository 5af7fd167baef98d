#pragma once

#include "catalog/xml_controls.h"

#include <QWidget>

namespace edw {

class PropertyTree;

// The parameter panel of a command in the editor: the controls of its description shown in
// the property tree, one group row per group. What the user enters goes straight back into
// the controls, so collectValues reads the panel as the user left it.
class ParameterPanel : public QWidget
{
    Q_OBJECT
public:
    explicit ParameterPanel(ControlList groups, QWidget* parent = nullptr);

    PropertyTree* tree() const { return m_tree; }
    const ControlList& groups() const { return m_groups; }
    bool isEmpty() const;

    // The message about the first control (in panel order) the element cannot be saved with:
    // a required field left empty, or a required number within 1e-5 of zero. Empty when
    // every control may be saved.
    QString firstOffence() const;
    // Ends an editing in progress so that the controls hold what the user sees.
    void commit();
    // The values to write into the element, in panel order.
    std::vector<PanelParameter> values() const { return collectValues(m_groups); }

private:
    void build();
    void onValueChanged(const QString& name, const QVariant& value);

    ControlList m_groups;
    PropertyTree* m_tree = nullptr;
};

} // namespace edw
