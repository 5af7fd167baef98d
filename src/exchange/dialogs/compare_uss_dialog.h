#pragma once

#include "importarchive.h"
#include "importrecord.h"

#include <esdata/esdata.h>

#include <QDialog>

#include <memory>
#include <vector>

class QLabel;
class QPushButton;
class QTabWidget;
class QToolButton;
class QTreeWidget;

namespace exchange {

class PreviewPainter;

// Side by side, an element of the catalog (mine) and the import record of the same packet and
// id (imported): the views of both, with the slots whose files differ marked, and their
// parameters, with the values that differ in red. The user may settle the conflict from here.
class CompareUssDialog : public QDialog
{
    Q_OBJECT
public:
    enum class Choice
    {
        None,
        Imported,
        Mine
    };

    // laterVersion: the record was made by a later host version and cannot replace mine.
    CompareUssDialog(es_stdsize_t* mine, const ImportElement& imported, ImportArchive& archive,
                     bool laterVersion, QWidget* parent = nullptr);
    ~CompareUssDialog() override;

    // After exec(): impButton gives Imported, mineButton Mine, anything else None.
    Choice choice() const { return m_choice; }

public slots:
    void OnViewButtonClicked();

private:
    void buildWidgets();
    void fillViews(es_stdsize_t* mine, const ImportElement& imported, ImportArchive& archive);
    void fillParameters(es_stdsize_t* mine, const ImportElement& imported);
    void showSlot(QToolButton* button);

    Choice m_choice = Choice::None;
    std::unique_ptr<PreviewPainter> m_previews;
    QTabWidget* m_tabs = nullptr;
    QLabel* m_imageImported = nullptr;
    QLabel* m_imageMine = nullptr;
    QTreeWidget* m_tree = nullptr;
    QPushButton* m_impButton = nullptr;
    QPushButton* m_mineButton = nullptr;
    QPushButton* m_closeButton = nullptr;
    std::vector<QToolButton*> m_viewButtons;
};

} // namespace exchange
