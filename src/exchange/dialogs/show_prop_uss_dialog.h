#pragma once

#include "importarchive.h"
#include "importrecord.h"

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

// One import record on its own: its views and its parameters, and whether to add it.
class ShowPropUssDialog : public QDialog
{
    Q_OBJECT
public:
    enum class Choice
    {
        None,
        Add,
        DontAdd
    };

    ShowPropUssDialog(const ImportElement& imported, ImportArchive& archive,
                      QWidget* parent = nullptr);
    ~ShowPropUssDialog() override;

    // After exec(): addButton gives Add, dontaddButton DontAdd, anything else None.
    Choice choice() const { return m_choice; }

public slots:
    void OnViewButtonClicked();

private:
    void buildWidgets();
    void showSlot(QToolButton* button);

    Choice m_choice = Choice::None;
    std::unique_ptr<PreviewPainter> m_previews;
    QTabWidget* m_tabs = nullptr;
    QLabel* m_image = nullptr;
    QTreeWidget* m_tree = nullptr;
    QPushButton* m_addButton = nullptr;
    QPushButton* m_dontAddButton = nullptr;
    QPushButton* m_closeButton = nullptr;
    std::vector<QToolButton*> m_viewButtons;
};

} // namespace exchange
