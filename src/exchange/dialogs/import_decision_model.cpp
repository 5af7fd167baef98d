#include "import_decision_model.h"

#include "exchangetexts.h"
#include "library_groups.h"

#include <catalog/esconvert.h>

#include <QIcon>

#include <algorithm>

// The warning sign lives with the comparison's pictures in the dialogs' archive; a program
// linking it statically must register them before use.
static void initImportResources()
{
    Q_INIT_RESOURCE(compare);
}

namespace exchange {

namespace {

const QString authorName = QStringLiteral("USS_AUTHOR");
const QString stampName = QStringLiteral("USS_LAST_CHANGE_DATE");

// Library rows carry no parent; record rows carry their library's number plus one.
constexpr quintptr kTopLevel = 0;

QString catalogValue(es_stdsize_t* element, const QString& name)
{
    if (!element) return {};
    es_value value{};
    stdsize_GetValueByName(element, edw::toEs(name).c_str(), &value);
    return edw::valueToText(value);
}

QString stampText(const QString& author, const QString& date)
{
    return QStringLiteral("Автор: ") + author.toHtmlEscaped() + QStringLiteral("<br>") +
           QStringLiteral("Дата:&nbsp;&nbsp;&nbsp;&nbsp;") + date.toHtmlEscaped();
}

} // namespace

ImportDecisionModel::ImportDecisionModel(ImportRecords& records,
                                         const std::vector<Decision>& decisions,
                                         std::vector<ImportGroup> groups,
                                         std::optional<long long> hostNumber, QObject* parent)
    : QAbstractItemModel(parent), m_records(records), m_groups(std::move(groups))
{
    initImportResources();
    m_groupRows.resize(m_groups.size());
    for (size_t g = 0; g < m_groups.size(); ++g) {
        for (const size_t record : m_groups[g].records) {
            if (record >= records.size() || record >= decisions.size()) continue;
            const Decision decision = decisions[record];
            if (decision != Decision::New && decision != Decision::Conflict) continue;
            Row row;
            row.record = record;
            row.group = int(g);
            row.conflict = decision == Decision::Conflict;
            // New elements are added, conflicts keep mine, until the user says otherwise.
            row.import = !row.conflict;
            row.later = hostNumber && isLaterVersion(records[record], *hostNumber);
            m_groupRows[g].push_back(int(m_rows.size()));
            m_rows.push_back(row);
            m_importCount += row.import;
            m_conflicts += row.conflict;
        }
    }
    // A library none of whose records needs the user is not shown.
    for (size_t g = m_groups.size(); g-- > 0;) {
        if (!m_groupRows[g].empty()) continue;
        m_groups.erase(m_groups.begin() + qsizetype(g));
        m_groupRows.erase(m_groupRows.begin() + qsizetype(g));
        for (Row& row : m_rows)
            if (row.group > int(g)) --row.group;
    }
}

QModelIndex ImportDecisionModel::index(int row, int column, const QModelIndex& parent) const
{
    if (column < 0 || column >= ColumnCount || row < 0) return {};
    if (!parent.isValid()) {
        if (row >= int(m_groups.size())) return {};
        return createIndex(row, column, kTopLevel);
    }
    if (parent.internalId() != kTopLevel) return {};
    const int group = parent.row();
    if (group >= int(m_groupRows.size()) || row >= int(m_groupRows[size_t(group)].size()))
        return {};
    return createIndex(row, column, quintptr(group) + 1);
}

QModelIndex ImportDecisionModel::parent(const QModelIndex& child) const
{
    if (!child.isValid() || child.internalId() == kTopLevel) return {};
    return createIndex(int(child.internalId() - 1), 0, kTopLevel);
}

int ImportDecisionModel::rowCount(const QModelIndex& parent) const
{
    if (!parent.isValid()) return int(m_groups.size());
    if (parent.internalId() != kTopLevel || parent.column() != 0) return 0;
    return int(m_groupRows[size_t(parent.row())].size());
}

int ImportDecisionModel::columnCount(const QModelIndex&) const
{
    return ColumnCount;
}

const ImportDecisionModel::Row* ImportDecisionModel::rowAt(const QModelIndex& index) const
{
    if (!index.isValid() || index.internalId() == kTopLevel || index.model() != this)
        return nullptr;
    const auto& rows = m_groupRows[size_t(index.internalId() - 1)];
    return &m_rows[size_t(rows[size_t(index.row())])];
}

ImportRecord* ImportDecisionModel::recordAt(const QModelIndex& index) const
{
    const Row* row = rowAt(index);
    return row ? &m_records[row->record] : nullptr;
}

QString ImportDecisionModel::choiceText(bool conflict, int column)
{
    if (column == FirstChoiceColumn)
        return conflict ? QStringLiteral("Оставить мой") : QStringLiteral("Добавить");
    if (column == SecondChoiceColumn)
        return conflict ? QStringLiteral("Заменить на импортируемый")
                        : QStringLiteral("Не добавлять");
    return {};
}

QString ImportDecisionModel::sideText(const ImportRecord& record, bool mine) const
{
    if (mine)
        return stampText(catalogValue(record.existing, authorName),
                         catalogValue(record.existing, stampName));
    return stampText(record.value(authorName), record.value(stampName));
}

QVariant ImportDecisionModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid()) return {};
    if (index.internalId() == kTopLevel) {
        const ImportGroup& group = m_groups[size_t(index.row())];
        if (index.column() != ElementColumn) return {};
        switch (role) {
        case Qt::DisplayRole:
            return group.command.isEmpty()
                       ? group.title
                       : group.title + QStringLiteral("    ") + commandLabel(group.command);
        case RecordRole:
            return -1;
        default:
            return {};
        }
    }
    const Row& row = *rowAt(index);
    const ImportRecord& record = m_records[row.record];
    switch (role) {
    case ImportRole:
        return row.import;
    case ConflictRole:
        return row.conflict;
    case LaterVersionRole:
        return row.later;
    case RecordRole:
        return int(row.record);
    case FilterTextRole:
        return record.id + QLatin1Char('\n') + record.packet + QLatin1Char('\n') + record.folder;
    case WarningRole:
        return row.later ? QStringLiteral("<font color='red'>") + texts::laterVersion() +
                               QStringLiteral(" Гравис-3D</font>")
                         : QString();
    default:
        break;
    }
    switch (index.column()) {
    case ElementColumn:
        if (role == Qt::DisplayRole) return record.id;
        if (role == Qt::ToolTipRole)
            return record.packet + QStringLiteral("\\") + record.folder + QStringLiteral("\\") +
                   record.id;
        if (role == Qt::DecorationRole && row.later) return QIcon(QStringLiteral(":/vznak.png"));
        if (role == Qt::UserRole) return record.packet + QStringLiteral("\\") + record.folder;
        return {};
    case FirstChoiceColumn:
    case SecondChoiceColumn:
        if (role == Qt::DisplayRole) return choiceText(row.conflict, index.column());
        if (role == CheckedRole)
            return (index.column() == FirstChoiceColumn) ==
                   (row.conflict ? !row.import : row.import);
        return {};
    case MineColumn:
        if (role == Qt::DisplayRole && row.conflict) return sideText(record, true);
        return {};
    case ImportedColumn:
        if (role == Qt::DisplayRole && row.conflict) return sideText(record, false);
        return {};
    case CompareColumn:
        if (role == Qt::DisplayRole && row.conflict) return QStringLiteral("Сравнить");
        return {};
    default:
        return {};
    }
}

bool ImportDecisionModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    const Row* row = rowAt(index);
    if (!row || role != CheckedRole || !value.toBool()) return false;
    if (index.column() != FirstChoiceColumn && index.column() != SecondChoiceColumn) return false;
    // "Добавить" and "Заменить на импортируемый" write the record.
    const bool first = index.column() == FirstChoiceColumn;
    setImport(size_t(row - m_rows.data()), row->conflict ? !first : first);
    return true;
}

void ImportDecisionModel::setImport(size_t rowIndex, bool import)
{
    Row& row = m_rows[rowIndex];
    if (row.import == import) return;
    row.import = import;
    m_importCount += import ? 1 : -1;
    const auto& siblings = m_groupRows[size_t(row.group)];
    const int at =
        int(std::find(siblings.begin(), siblings.end(), int(rowIndex)) - siblings.begin());
    const QModelIndex parent = index(row.group, 0);
    emit dataChanged(index(at, FirstChoiceColumn, parent), index(at, SecondChoiceColumn, parent),
                     {CheckedRole, ImportRole});
    emit importCountChanged(m_importCount);
}

void ImportDecisionModel::setAllConflicts(bool replace)
{
    bool changed = false;
    for (Row& row : m_rows) {
        if (!row.conflict || row.import == replace) continue;
        row.import = replace;
        m_importCount += replace ? 1 : -1;
        changed = true;
    }
    if (!changed) return;
    // One change per library: the view repaints what it shows once.
    for (int g = 0; g < int(m_groups.size()); ++g) {
        const QModelIndex parent = index(g, 0);
        const int last = rowCount(parent) - 1;
        emit dataChanged(index(0, FirstChoiceColumn, parent),
                         index(last, SecondChoiceColumn, parent), {CheckedRole, ImportRole});
    }
    emit importCountChanged(m_importCount);
}

void ImportDecisionModel::applyChoices()
{
    for (ImportRecord& record : m_records)
        record.skip = true;
    for (const Row& row : m_rows)
        m_records[row.record].skip = !row.import;
}

QVariant ImportDecisionModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
    switch (section) {
    case ElementColumn:
        return QStringLiteral("Элемент");
    case FirstChoiceColumn:
    case SecondChoiceColumn:
        return section == FirstChoiceColumn ? QStringLiteral("Действие") : QString();
    case MineColumn:
        return QStringLiteral("Мой элемент");
    case ImportedColumn:
        return QStringLiteral("Импортируемый элемент");
    default:
        return {};
    }
}

Qt::ItemFlags ImportDecisionModel::flags(const QModelIndex& index) const
{
    if (!index.isValid()) return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable;
}

ImportFilterModel::ImportFilterModel(QObject* parent) : QSortFilterProxyModel(parent)
{
    setRecursiveFilteringEnabled(true);
}

void ImportFilterModel::setConflictsOnly(bool on)
{
    if (on == m_conflictsOnly) return;
    m_conflictsOnly = on;
    invalidate();
}

void ImportFilterModel::setText(const QString& text)
{
    const QString trimmed = text.trimmed();
    if (trimmed == m_text) return;
    m_text = trimmed;
    invalidate();
}

bool ImportFilterModel::filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const
{
    const QModelIndex index = sourceModel()->index(sourceRow, 0, sourceParent);
    if (!sourceParent.isValid()) {
        // A library stays while one of its rows does (recursive filtering asks them).
        return !m_conflictsOnly && m_text.isEmpty();
    }
    if (m_conflictsOnly && !index.data(ImportDecisionModel::ConflictRole).toBool()) return false;
    return m_text.isEmpty() || index.data(ImportDecisionModel::FilterTextRole)
                                   .toString()
                                   .contains(m_text, Qt::CaseInsensitive);
}

} // namespace exchange
