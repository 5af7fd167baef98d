#pragma once

#include <QHash>
#include <QStringList>
#include <QTreeWidget>
#include <QVariant>

#include <vector>

class QStyledItemDelegate;

namespace edw {

// The editor's property browser: a tree of group rows with property rows under them, a label
// column and a value column. A value is edited in place with the editor that fits its type:
// a spin box for integers, the look's decimal spin box (either separator) for reals, a line
// edit for texts, a check box for booleans and a drop-down list for choices.
class PropertyTree : public QTreeWidget
{
    Q_OBJECT
public:
    enum Type
    {
        Int,
        Double,
        String,
        Bool,
        Enum
    };

    struct Property
    {
        QString name; // the key the caller knows the row by (unique in the tree)
        QString label;
        Type type = String;
        QVariant value; // Enum: the chosen text
        QStringList choices;
        QString toolTip;
        bool readOnly = false;
        bool required = false;
    };

    // Item data roles of a property row's value cell.
    static constexpr int TypeRole = Qt::UserRole + 1;
    static constexpr int ChoicesRole = Qt::UserRole + 2;
    static constexpr int NameRole = Qt::UserRole + 3;
    static constexpr int RequiredRole = Qt::UserRole + 4;

    explicit PropertyTree(QWidget* parent = nullptr);

    // A group row at the top level; its rows follow with addProperty.
    QTreeWidgetItem* addGroup(const QString& title);
    QTreeWidgetItem* addProperty(QTreeWidgetItem* group, const Property& property);

    // Many groups at once: their rows are made outside the tree and go in together, so the
    // tree lays itself out once instead of once per row.
    struct Group
    {
        QString title;
        std::vector<Property> properties;
        bool hidden = false; // built like the others, then hidden
    };
    void addGroups(const std::vector<Group>& groups);

    QTreeWidgetItem* findProperty(const QString& name) const;
    // The row's value: int, double, QString or bool by its type; invalid for an unknown name.
    QVariant value(const QString& name) const;
    // Sets a row's value as if the user had entered it (read-only rows are set as well).
    bool setValue(const QString& name, const QVariant& value);
    // Ends an editing in progress, keeping what the user typed.
    void commitEditing();

    // Whether the row can be edited by the user.
    static bool isReadOnly(const QTreeWidgetItem* item);

signals:
    // A row's value changed (by the user or by setValue).
    void valueChanged(const QString& name, const QVariant& value);

private:
    QTreeWidgetItem* makeGroup(const QString& title) const;
    QTreeWidgetItem* makeProperty(const Property& property);
    void onItemChanged(QTreeWidgetItem* item, int column);
    void showValue(QTreeWidgetItem* item, const QVariant& value);

    bool m_filling = false;
    QHash<QString, QTreeWidgetItem*> m_byName;
};

} // namespace edw
