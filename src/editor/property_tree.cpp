#include "editor/property_tree.h"

#include "look/double_dot_spin_box.h"

#include <QComboBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QSpinBox>
#include <QStyledItemDelegate>

#include <limits>

namespace edw {
namespace {

constexpr int kDecimals = 6;
constexpr double kDoubleRange = 1e15;

PropertyTree::Type typeOf(const QModelIndex& index)
{
    return static_cast<PropertyTree::Type>(index.data(PropertyTree::TypeRole).toInt());
}

// Editors of the value column, made when a row is edited and named after the row's property,
// so that scripts find them.
class ValueDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override
    {
        QWidget* editor = nullptr;
        switch (typeOf(index)) {
        case PropertyTree::Int: {
            auto* spin = new QSpinBox(parent);
            spin->setRange(std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
            editor = spin;
            break;
        }
        case PropertyTree::Double: {
            auto* spin = new qt::DoubleDotSpinBox(parent);
            spin->setDecimals(kDecimals);
            spin->setRange(-kDoubleRange, kDoubleRange);
            editor = spin;
            break;
        }
        case PropertyTree::Enum: {
            auto* combo = new QComboBox(parent);
            combo->addItems(index.data(PropertyTree::ChoicesRole).toStringList());
            editor = combo;
            break;
        }
        case PropertyTree::String:
            editor = new QLineEdit(parent);
            break;
        case PropertyTree::Bool:
            return nullptr; // the cell's own check box
        }
        Q_UNUSED(option);
        editor->setObjectName(index.data(PropertyTree::NameRole).toString());
        editor->setAutoFillBackground(true);
        return editor;
    }

    void setEditorData(QWidget* editor, const QModelIndex& index) const override
    {
        const QVariant value = index.data(Qt::EditRole);
        if (auto* spin = qobject_cast<QSpinBox*>(editor))
            spin->setValue(value.toInt());
        else if (auto* real = qobject_cast<QDoubleSpinBox*>(editor))
            real->setValue(value.toDouble());
        else if (auto* combo = qobject_cast<QComboBox*>(editor))
            combo->setCurrentIndex(combo->findText(value.toString()));
        else if (auto* line = qobject_cast<QLineEdit*>(editor))
            line->setText(value.toString());
    }

    void setModelData(QWidget* editor, QAbstractItemModel* model,
                      const QModelIndex& index) const override
    {
        QVariant value;
        if (auto* spin = qobject_cast<QSpinBox*>(editor)) {
            spin->interpretText();
            value = spin->value();
        } else if (auto* real = qobject_cast<QDoubleSpinBox*>(editor)) {
            real->interpretText();
            value = real->value();
        } else if (auto* combo = qobject_cast<QComboBox*>(editor)) {
            value = combo->currentText();
        } else if (auto* line = qobject_cast<QLineEdit*>(editor)) {
            value = line->text();
        }
        model->setData(index, value, Qt::EditRole);
    }

    QString displayText(const QVariant& value, const QLocale& locale) const override
    {
        // Reals as the user typed them, without the fixed decimals of the editor.
        if (value.userType() == QMetaType::Double)
            return locale.toString(value.toDouble(), 'g', 15);
        return QStyledItemDelegate::displayText(value, locale);
    }
};

QVariant normalised(PropertyTree::Type type, const QVariant& value)
{
    switch (type) {
    case PropertyTree::Int:
        return value.toInt();
    case PropertyTree::Double:
        return value.toDouble();
    case PropertyTree::Bool:
        return value.toBool();
    case PropertyTree::String:
    case PropertyTree::Enum:
        break;
    }
    return value.toString();
}

} // namespace

PropertyTree::PropertyTree(QWidget* parent) : QTreeWidget(parent)
{
    setObjectName(QStringLiteral("propertyTree"));
    setColumnCount(2);
    setHeaderLabels({QStringLiteral("Свойство"), QStringLiteral("Значение")});
    header()->setSectionResizeMode(0, QHeaderView::Interactive);
    header()->setStretchLastSection(true);
    header()->resizeSection(0, 200);
    // The library's style sheet colours rows alike in both themes; alternating rows would take
    // the platform's light alternate colour under dark text.
    setAlternatingRowColors(false);
    setRootIsDecorated(true);
    setUniformRowHeights(true);
    setEditTriggers(QAbstractItemView::AllEditTriggers);
    setItemDelegateForColumn(1, new ValueDelegate(this));
    connect(this, &QTreeWidget::itemChanged, this, &PropertyTree::onItemChanged);
}

QTreeWidgetItem* PropertyTree::makeGroup(const QString& title) const
{
    auto* group = new QTreeWidgetItem({title});
    group->setFlags(Qt::ItemIsEnabled);
    QFont font;
    font.setBold(true);
    group->setFont(0, font);
    return group;
}

// A row not yet in the tree: filling it announces nothing.
QTreeWidgetItem* PropertyTree::makeProperty(const Property& property)
{
    auto* item = new QTreeWidgetItem;
    item->setText(0, property.required ? property.label + QStringLiteral(" *") : property.label);
    item->setData(1, TypeRole, property.type);
    item->setData(1, NameRole, property.name);
    item->setData(1, RequiredRole, property.required);
    item->setData(1, ChoicesRole, property.choices);
    item->setToolTip(0, property.toolTip);
    item->setToolTip(1, property.toolTip);

    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (!property.readOnly)
        flags |= property.type == Bool ? Qt::ItemIsUserCheckable : Qt::ItemIsEditable;
    item->setFlags(flags);
    if (property.readOnly) {
        item->setForeground(0, palette().brush(QPalette::Disabled, QPalette::Text));
        item->setForeground(1, palette().brush(QPalette::Disabled, QPalette::Text));
    }
    if (property.required) {
        QFont font;
        font.setBold(true);
        item->setFont(0, font);
    }
    showValue(item, property.value);
    m_byName.insert(property.name, item);
    return item;
}

QTreeWidgetItem* PropertyTree::addGroup(const QString& title)
{
    QTreeWidgetItem* group = makeGroup(title);
    addTopLevelItem(group);
    group->setFirstColumnSpanned(true);
    group->setExpanded(true);
    return group;
}

QTreeWidgetItem* PropertyTree::addProperty(QTreeWidgetItem* group, const Property& property)
{
    QTreeWidgetItem* item = makeProperty(property);
    m_filling = true;
    if (group)
        group->addChild(item);
    else
        addTopLevelItem(item);
    m_filling = false;
    return item;
}

void PropertyTree::addGroups(const std::vector<Group>& groups)
{
    QList<QTreeWidgetItem*> rows;
    rows.reserve(qsizetype(groups.size()));
    for (const Group& group : groups) {
        QTreeWidgetItem* row = makeGroup(group.title);
        QList<QTreeWidgetItem*> children;
        children.reserve(qsizetype(group.properties.size()));
        for (const Property& property : group.properties)
            children.push_back(makeProperty(property));
        row->addChildren(children);
        rows.push_back(row);
    }
    const bool updates = updatesEnabled();
    setUpdatesEnabled(false);
    m_filling = true;
    addTopLevelItems(rows);
    for (qsizetype i = 0; i < rows.size(); ++i) {
        rows[i]->setFirstColumnSpanned(true);
        rows[i]->setExpanded(true);
        rows[i]->setHidden(groups[size_t(i)].hidden);
    }
    m_filling = false;
    setUpdatesEnabled(updates);
}

void PropertyTree::showValue(QTreeWidgetItem* item, const QVariant& value)
{
    const Type type = static_cast<Type>(item->data(1, TypeRole).toInt());
    if (type == Bool) {
        item->setData(1, Qt::CheckStateRole, value.toBool() ? Qt::Checked : Qt::Unchecked);
        item->setData(1, Qt::DisplayRole,
                      value.toBool() ? QStringLiteral("Да") : QStringLiteral("Нет"));
    } else {
        item->setData(1, Qt::EditRole, normalised(type, value));
    }
}

QTreeWidgetItem* PropertyTree::findProperty(const QString& name) const
{
    return m_byName.value(name, nullptr);
}

QVariant PropertyTree::value(const QString& name) const
{
    const QTreeWidgetItem* item = findProperty(name);
    if (!item) return {};
    const Type type = static_cast<Type>(item->data(1, TypeRole).toInt());
    if (type == Bool) return item->data(1, Qt::CheckStateRole).toInt() == Qt::Checked;
    return normalised(type, item->data(1, Qt::EditRole));
}

bool PropertyTree::setValue(const QString& name, const QVariant& value)
{
    QTreeWidgetItem* item = findProperty(name);
    if (!item) return false;
    showValue(item, value);
    return true;
}

void PropertyTree::commitEditing()
{
    // The open editor of the current cell hands its text to the row, then closes.
    if (QWidget* editor = indexWidget(currentIndex())) {
        commitData(editor);
        closeEditor(editor, QAbstractItemDelegate::NoHint);
    }
}

bool PropertyTree::isReadOnly(const QTreeWidgetItem* item)
{
    return !(item->flags() & (Qt::ItemIsEditable | Qt::ItemIsUserCheckable));
}

void PropertyTree::onItemChanged(QTreeWidgetItem* item, int column)
{
    if (m_filling || column != 1 || !item->parent()) return;
    const Type type = static_cast<Type>(item->data(1, TypeRole).toInt());
    if (type == Bool) {
        // Keep the shown word in step with the box without announcing the change twice.
        const bool checked = item->data(1, Qt::CheckStateRole).toInt() == Qt::Checked;
        const QString word = checked ? QStringLiteral("Да") : QStringLiteral("Нет");
        if (item->data(1, Qt::DisplayRole).toString() != word) {
            m_filling = true;
            item->setData(1, Qt::DisplayRole, word);
            m_filling = false;
        }
    }
    emit valueChanged(item->data(1, NameRole).toString(),
                      value(item->data(1, NameRole).toString()));
}

} // namespace edw
