#include "export_uss_dialog.h"

#include "library_groups.h"

#include <look/look.h>

#include <QAbstractItemModel>
#include <QCheckBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QSplitter>
#include <QTreeView>
#include <QVBoxLayout>

namespace exchange {

namespace {

Qt::CheckState checkState(ExportSelection::State state)
{
    switch (state) {
    case ExportSelection::Checked:
        return Qt::Checked;
    case ExportSelection::Partial:
        return Qt::PartiallyChecked;
    default:
        return Qt::Unchecked;
    }
}

} // namespace

// Libraries, packets and folders of the selection, the rows the filter lets through.
class ExportTreeModel : public QAbstractItemModel
{
public:
    ExportTreeModel(ExportSelection& selection, std::function<void()> changed, QObject* parent)
        : QAbstractItemModel(parent), m_selection(selection), m_changed(std::move(changed))
    {
        arrange();
    }

    void rebuild()
    {
        beginResetModel();
        arrange();
        endResetModel();
    }

    int nodeOf(const QModelIndex& index) const
    {
        return index.isValid() ? int(index.internalId()) : -1;
    }

    // Repaints every check: one range per parent.
    void refreshChecks()
    {
        emitRange(QModelIndex(), m_roots.size());
        for (size_t n = 0; n < m_children.size(); ++n)
            if (!m_children[n].empty())
                emitRange(createIndex(m_row[n], 0, quintptr(n)), m_children[n].size());
    }

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override
    {
        const std::vector<int>& rows = childrenOf(parent);
        if (column != 0 || row < 0 || row >= int(rows.size())) return {};
        return createIndex(row, 0, quintptr(rows[size_t(row)]));
    }
    QModelIndex parent(const QModelIndex& child) const override
    {
        if (!child.isValid()) return {};
        const int p = m_selection.node(nodeOf(child)).parent;
        return p < 0 ? QModelIndex() : createIndex(m_row[size_t(p)], 0, quintptr(p));
    }
    int rowCount(const QModelIndex& parent = {}) const override
    {
        return parent.column() > 0 ? 0 : int(childrenOf(parent).size());
    }
    int columnCount(const QModelIndex& = {}) const override { return 1; }

    QVariant data(const QModelIndex& index, int role) const override
    {
        if (!index.isValid()) return {};
        const int node = nodeOf(index);
        const ExportSelection::Node& n = m_selection.node(node);
        switch (role) {
        case Qt::DisplayRole:
            return n.name;
        case Qt::CheckStateRole:
            return int(checkState(m_selection.state(node)));
        case Qt::ToolTipRole:
            return n.command.isEmpty() ? QVariant() : QVariant(commandLabel(n.command));
        default:
            return {};
        }
    }
    Qt::ItemFlags flags(const QModelIndex& index) const override
    {
        if (!index.isValid()) return {};
        Qt::ItemFlags f = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
        const ExportSelection::Node& n = m_selection.node(nodeOf(index));
        if (n.end > n.begin) f |= Qt::ItemIsUserCheckable;
        return f;
    }
    bool setData(const QModelIndex& index, const QVariant& value, int role) override
    {
        if (!index.isValid() || role != Qt::CheckStateRole) return false;
        if (!(flags(index) & Qt::ItemIsUserCheckable)) return false;
        m_selection.setChecked(nodeOf(index), value.toInt() != Qt::Unchecked);
        m_changed();
        return true;
    }

private:
    void arrange()
    {
        const auto& nodes = m_selection.nodes();
        m_children.assign(nodes.size(), {});
        m_row.assign(nodes.size(), 0);
        m_roots.clear();
        for (int root : m_selection.roots())
            if (m_selection.isVisible(root)) {
                m_row[size_t(root)] = int(m_roots.size());
                m_roots.push_back(root);
            }
        for (size_t n = 0; n < nodes.size(); ++n)
            for (int child : nodes[n].children)
                if (m_selection.isVisible(child)) {
                    m_row[size_t(child)] = int(m_children[n].size());
                    m_children[n].push_back(child);
                }
    }
    const std::vector<int>& childrenOf(const QModelIndex& parent) const
    {
        return parent.isValid() ? m_children[size_t(nodeOf(parent))] : m_roots;
    }
    void emitRange(const QModelIndex& parent, size_t rows)
    {
        if (rows == 0) return;
        emit dataChanged(index(0, 0, parent), index(int(rows) - 1, 0, parent),
                         {Qt::CheckStateRole});
    }

    ExportSelection& m_selection;
    std::function<void()> m_changed;
    std::vector<int> m_roots;
    std::vector<std::vector<int>> m_children;
    std::vector<int> m_row;
};

// A list of elements of the selection by index: the elements of a tree row (checkable) or
// the chosen ones.
class ExportElementListModel : public QAbstractListModel
{
public:
    ExportElementListModel(ExportSelection& selection, bool checkable,
                           std::function<void()> changed, QObject* parent)
        : QAbstractListModel(parent), m_selection(selection), m_checkable(checkable),
          m_changed(std::move(changed))
    {}

    void setElements(std::vector<int> elements)
    {
        beginResetModel();
        m_elements = std::move(elements);
        endResetModel();
    }
    void refreshChecks()
    {
        if (!m_elements.empty())
            emit dataChanged(index(0), index(int(m_elements.size()) - 1), {Qt::CheckStateRole});
    }

    int rowCount(const QModelIndex& parent = {}) const override
    {
        return parent.isValid() ? 0 : int(m_elements.size());
    }
    QVariant data(const QModelIndex& index, int role) const override
    {
        if (!index.isValid() || index.row() >= int(m_elements.size())) return {};
        const int element = m_elements[size_t(index.row())];
        if (role == Qt::DisplayRole) return m_selection.elementId(element);
        if (role == Qt::CheckStateRole && m_checkable)
            return int(m_selection.isChosen(element) ? Qt::Checked : Qt::Unchecked);
        return {};
    }
    Qt::ItemFlags flags(const QModelIndex& index) const override
    {
        if (!index.isValid()) return {};
        Qt::ItemFlags f = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
        if (m_checkable) f |= Qt::ItemIsUserCheckable;
        return f;
    }
    bool setData(const QModelIndex& index, const QVariant& value, int role) override
    {
        if (!m_checkable || !index.isValid() || role != Qt::CheckStateRole) return false;
        m_selection.setElementChosen(m_elements[size_t(index.row())], value.toInt() == Qt::Checked);
        m_changed();
        return true;
    }

private:
    ExportSelection& m_selection;
    bool m_checkable;
    std::function<void()> m_changed;
    std::vector<int> m_elements;
};

ExportUssDialog::ExportUssDialog(ExportSelection& selection, QWidget* parent)
    : QDialog(parent), m_selection(selection)
{
    build();
    qt::attach_styled_frame(this);
}

ExportUssDialog::~ExportUssDialog() = default;

QString ExportUssDialog::labelText(int chosen, int total)
{
    return QStringLiteral("Элементы для экспорта (%1/%2)").arg(chosen).arg(total);
}

void ExportUssDialog::build()
{
    setObjectName(QStringLiteral("ExportUssDialog"));
    setWindowTitle(QStringLiteral("Экспорт пользовательских элементов"));
    auto* layout = new QVBoxLayout(this);

    m_filter = new QLineEdit(this);
    m_filter->setObjectName(QStringLiteral("m_lineEdit_filter"));
    m_filter->setPlaceholderText(QStringLiteral("Фильтр по имени пакета, папки или элемента"));
    m_filter->setClearButtonEnabled(true);
    layout->addWidget(m_filter);

    auto* splitter = new QSplitter(Qt::Horizontal, this);
    m_tree = new QTreeView(splitter);
    m_tree->setObjectName(QStringLiteral("m_treeWidget"));
    m_tree->setHeaderHidden(true);
    m_tree->setUniformRowHeights(true);
    m_checkList = new QListView(splitter);
    m_checkList->setObjectName(QStringLiteral("m_listWidget_check"));
    m_checkList->setUniformItemSizes(true);
    m_chosenList = new QListView(splitter);
    m_chosenList->setObjectName(QStringLiteral("m_listWidget_exp"));
    m_chosenList->setUniformItemSizes(true);
    splitter->setStretchFactor(0, 2);
    splitter->setStretchFactor(1, 1);
    splitter->setStretchFactor(2, 1);
    layout->addWidget(splitter, 1);

    m_label = new QLabel(labelText(0, m_selection.total()), this);
    m_label->setObjectName(QStringLiteral("m_label"));
    layout->addWidget(m_label);

    auto* checks = new QHBoxLayout;
    m_selectAll = new QCheckBox(QStringLiteral("Выбрать все"), this);
    m_selectAll->setObjectName(QStringLiteral("checkBox_SelectAll"));
    m_prevVer = new QCheckBox(QStringLiteral("Сохранить в формате предыдущей версии"), this);
    m_prevVer->setObjectName(QStringLiteral("checkBox_PrevVer"));
    checks->addWidget(m_selectAll);
    checks->addWidget(m_prevVer);
    checks->addStretch(1);
    layout->addLayout(checks);

    auto* buttons = new QHBoxLayout;
    m_helpButton = new QPushButton(QStringLiteral("Справка"), this);
    m_helpButton->setObjectName(QStringLiteral("helpButton"));
    m_okButton = new QPushButton(QStringLiteral("OK"), this);
    m_okButton->setObjectName(QStringLiteral("okButton"));
    m_okButton->setDefault(true);
    m_cancelButton = new QPushButton(QStringLiteral("Отмена"), this);
    m_cancelButton->setObjectName(QStringLiteral("cancelButton"));
    buttons->addWidget(m_helpButton);
    buttons->addStretch(1);
    buttons->addWidget(m_okButton);
    buttons->addWidget(m_cancelButton);
    layout->addLayout(buttons);

    const auto changed = [this] { selectionChanged(); };
    m_treeModel = new ExportTreeModel(m_selection, changed, this);
    m_checkModel = new ExportElementListModel(m_selection, true, changed, this);
    m_chosenModel = new ExportElementListModel(m_selection, false, changed, this);
    m_tree->setModel(m_treeModel);
    m_checkList->setModel(m_checkModel);
    m_chosenList->setModel(m_chosenModel);
    // Libraries open on their packets; folders open on demand.
    m_tree->expandToDepth(0);

    connect(m_tree->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex& current) { showElementsOf(current); });
    connect(m_selectAll, &QCheckBox::clicked, this, &ExportUssDialog::onSelectAllClicked);
    connect(m_filter, &QLineEdit::textChanged, this, &ExportUssDialog::onFilterChanged);
    connect(m_okButton, &QPushButton::clicked, this, &ExportUssDialog::accept);
    connect(m_cancelButton, &QPushButton::clicked, this, &ExportUssDialog::reject);
    connect(m_helpButton, &QPushButton::clicked, this, [this] {
        if (m_help) m_help();
    });

    resize(860, 540);
}

void ExportUssDialog::showElementsOf(const QModelIndex& index)
{
    m_currentNode = m_treeModel->nodeOf(index);
    m_checkModel->setElements(m_currentNode < 0 ? std::vector<int>()
                                                : m_selection.listedElements(m_currentNode));
}

void ExportUssDialog::onSelectAllClicked()
{
    // A click on a partial box goes on to checked: everything is chosen.
    m_selection.setAllChosen(m_selectAll->checkState() != Qt::Unchecked);
    selectionChanged();
}

void ExportUssDialog::onFilterChanged(const QString& text)
{
    m_selection.setFilter(text);
    m_treeModel->rebuild();
    if (!text.isEmpty()) m_tree->expandAll();
    showElementsOf(QModelIndex());
}

void ExportUssDialog::selectionChanged()
{
    m_label->setText(labelText(m_selection.chosenCount(), m_selection.total()));
    m_chosenModel->setElements(m_selection.chosenIndexes());
    m_treeModel->refreshChecks();
    m_checkModel->refreshChecks();
    const ExportSelection::State state = m_selection.overallState();
    m_selectAll->setTristate(state == ExportSelection::Partial);
    m_selectAll->setCheckState(checkState(state));
}

void ExportUssDialog::accept()
{
    m_elements = m_selection.chosenElements();
    m_previousVersion = m_prevVer->checkState() == Qt::Checked;
    QDialog::accept();
}

} // namespace exchange
