#pragma once

#include "import_decision_model.h"
#include "importdecision.h"

#include <QDialog>

#include <functional>
#include <optional>
#include <vector>

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QToolButton;
class QTreeView;

namespace exchange {

class ImportArchive;
class ImportRowDelegate;

// Where the user decides, record by record, what an import writes: new elements are added or
// not, conflicts keep the catalog's element or take the imported one. Rows are grouped by
// library. OK leaves in the archive's list only the records to write, in their order.
class ImportUssDialog : public QDialog
{
    Q_OBJECT
public:
    // What the comparison of a conflict answers: take the imported element (true), keep mine
    // (false), or nothing.
    using Compare =
        std::function<std::optional<bool>(QWidget* parent, const ImportRecord& record, bool later)>;

    // decisions parallel archive.records(). hostNumber: the running host's version as a
    // number, nothing when unknown.
    ImportUssDialog(ImportArchive& archive, const std::vector<Decision>& decisions,
                    std::vector<ImportGroup> groups, std::optional<long long> hostNumber,
                    QWidget* parent = nullptr);
    ~ImportUssDialog() override;

    void setHelp(std::function<void()> help) { m_help = std::move(help); }
    // Replaces the comparison view (CompareUssDialog by default).
    void setCompare(Compare compare) { m_compare = std::move(compare); }

    ImportDecisionModel* decisions() const { return m_model; }
    ImportFilterModel* filter() const { return m_filter; }
    QTreeView* tree() const { return m_tree; }

public slots:
    void ShowConflictsOnly(int state);
    void OnClickHelpButton();
    void OnToggleRadioButton(bool checked);
    // Opens the comparison of the conflict whose compare button was pressed last.
    void OnClickEqualButton();
    void OnFilterTextChanged(const QString& text);
    // Every conflict to "Оставить мой" or to "Заменить на импортируемый".
    void OnKeepAllMine();
    void OnReplaceAllImported();
    void accept() override;

private:
    void buildWidgets();
    void showTree();

    ImportArchive& m_archive;
    ImportDecisionModel* m_model = nullptr;
    ImportFilterModel* m_filter = nullptr;
    ImportRowDelegate* m_delegate = nullptr;
    QTreeView* m_tree = nullptr;
    QLineEdit* m_filterEdit = nullptr;
    QCheckBox* m_showConf = nullptr;
    QToolButton* m_applyAll = nullptr;
    QLabel* m_impCount = nullptr;
    QPushButton* m_helpButton = nullptr;
    QPushButton* m_okButton = nullptr;
    QPushButton* m_cancelButton = nullptr;
    // The row (of the tree's model) whose compare button was pressed.
    QPersistentModelIndex m_compared;
    std::function<void()> m_help;
    Compare m_compare;
};

} // namespace exchange
