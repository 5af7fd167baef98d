#pragma once

#include "importdecision.h"
#include "importrecord.h"

#include <QAbstractItemModel>
#include <QSortFilterProxyModel>
#include <QString>

#include <optional>
#include <vector>

namespace exchange {

// The records of one library, as the import dialog shows them under one top row.
struct ImportGroup
{
    QString title;               // "Каталог: " and the library's name
    QString command;             // the library's toolbar command; empty when it has none
    std::vector<size_t> records; // indexes into the archive's records, in archive order
};

// The decisions of an import as a two-level tree: libraries, then one row per record that
// needs the user (a new element or a conflict). The choices live here, not in widgets, so
// that thousands of rows cost one painted line each.
class ImportDecisionModel : public QAbstractItemModel
{
    Q_OBJECT
public:
    enum Column
    {
        ElementColumn,
        FirstChoiceColumn, // "Добавить" / "Оставить мой"
        SecondChoiceColumn, // "Не добавлять" / "Заменить на импортируемый"
        MineColumn,     // author and date of the catalog's element
        ImportedColumn, // author and date of the incoming record
        CompareColumn,  // the button that opens the comparison
        ColumnCount
    };
    enum Role
    {
        // bool: the record will be written.
        ImportRole = Qt::UserRole + 1,
        // bool: the row is a conflict (else a new element); false for library rows.
        ConflictRole,
        // bool: the record's model comes from a later host version.
        LaterVersionRole,
        // bool: the radio button of this column is the checked one (choice columns only).
        CheckedRole,
        // QString: the red warning of a later-version record, as rich text; empty otherwise.
        WarningRole,
        // QString: the text the filter line is matched against.
        FilterTextRole,
        // int: the record's index in the archive's list; -1 for library rows.
        RecordRole,
    };

    // decisions parallel records. hostNumber is the running host's version as a number;
    // nothing when it could not be read (then no record counts as later).
    ImportDecisionModel(ImportRecords& records, const std::vector<Decision>& decisions,
                        std::vector<ImportGroup> groups, std::optional<long long> hostNumber,
                        QObject* parent = nullptr);

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    // CheckedRole set to true on a choice column takes that choice.
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    // Rows of records (new and conflicts together) and of them those that will be written.
    int rowTotal() const { return int(m_rows.size()); }
    int importCount() const { return m_importCount; }
    int conflictCount() const { return m_conflicts; }
    // Sets every conflict to "Заменить на импортируемый" (true) or "Оставить мой" (false).
    void setAllConflicts(bool replace);
    // The record's row: whether it is written.
    void setImport(size_t rowIndex, bool import);

    // Marks every record the user does not want, and every record without a row, as skipped.
    void applyChoices();

    // The record behind a row index of this model, or null for a library row.
    ImportRecord* recordAt(const QModelIndex& index) const;

    static QString choiceText(bool conflict, int column);

signals:
    // The number of records to be written changed.
    void importCountChanged(int count);

private:
    struct Row
    {
        size_t record = 0;
        int group = 0;
        bool conflict = false;
        bool import = false;
        bool later = false;
    };
    const Row* rowAt(const QModelIndex& index) const;
    QString sideText(const ImportRecord& record, bool mine) const;

    ImportRecords& m_records;
    std::vector<ImportGroup> m_groups;
    std::vector<Row> m_rows;
    // Per group, the indexes of its rows in m_rows.
    std::vector<std::vector<int>> m_groupRows;
    int m_importCount = 0;
    int m_conflicts = 0;
};

// What the tree shows: rows whose element, packet or folder holds the filter text, and only
// the conflicts when asked. Hidden rows keep their choices.
class ImportFilterModel : public QSortFilterProxyModel
{
    Q_OBJECT
public:
    explicit ImportFilterModel(QObject* parent = nullptr);
    void setConflictsOnly(bool on);
    void setText(const QString& text);
    bool conflictsOnly() const { return m_conflictsOnly; }

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const override;

private:
    bool m_conflictsOnly = false;
    QString m_text;
};

} // namespace exchange
