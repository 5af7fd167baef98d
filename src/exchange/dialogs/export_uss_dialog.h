#pragma once

#include "export_selection.h"

#include <QDialog>

#include <functional>
#include <vector>

class QCheckBox;
class QLabel;
class QLineEdit;
class QListView;
class QModelIndex;
class QPushButton;
class QTreeView;

namespace exchange {

class ExportTreeModel;
class ExportElementListModel;

// The choice of elements to export: the tree of libraries, packets and folders on the left,
// the elements of the current tree row in the middle, the chosen elements on the right. The
// lists are views over the selection, so choosing all of a large catalog touches no widget
// per element.
class ExportUssDialog : public QDialog
{
    Q_OBJECT
public:
    explicit ExportUssDialog(ExportSelection& selection, QWidget* parent = nullptr);
    ~ExportUssDialog() override;

    // After OK: the chosen elements, each once, and the state of checkBox_PrevVer.
    const std::vector<es_stdsize_t*>& elements() const { return m_elements; }
    bool previousVersion() const { return m_previousVersion; }

    // What helpButton opens.
    void setHelp(std::function<void()> help) { m_help = std::move(help); }

    static QString labelText(int chosen, int total);

public slots:
    void accept() override;

private:
    void build();
    void showElementsOf(const QModelIndex& index);
    void onSelectAllClicked();
    void onFilterChanged(const QString& text);
    // Brings the label, the chosen list, the tree's checks and checkBox_SelectAll up to date.
    void selectionChanged();

    ExportSelection& m_selection;
    ExportTreeModel* m_treeModel = nullptr;
    ExportElementListModel* m_checkModel = nullptr;
    ExportElementListModel* m_chosenModel = nullptr;
    QLineEdit* m_filter = nullptr;
    QTreeView* m_tree = nullptr;
    QListView* m_checkList = nullptr;
    QListView* m_chosenList = nullptr;
    QLabel* m_label = nullptr;
    QCheckBox* m_selectAll = nullptr;
    QCheckBox* m_prevVer = nullptr;
    QPushButton* m_helpButton = nullptr;
    QPushButton* m_okButton = nullptr;
    QPushButton* m_cancelButton = nullptr;
    int m_currentNode = -1;
    std::vector<es_stdsize_t*> m_elements;
    bool m_previousVersion = false;
    std::function<void()> m_help;
};

} // namespace exchange
