#pragma once

#include "marlouss_library.h"

#include <QMainWindow>

typedef struct es_provider es_provider_t;
typedef struct es_folder es_folder_t;
class QPlainTextEdit;
class QTreeWidget;
class QTreeWidgetItem;

namespace sandbox {

// The sandbox host's main window: the catalog as a tree, one menu action per export of the
// library, and a log of every call with what was passed and what came back.
class MainWindow : public QMainWindow
{
    Q_OBJECT
public:
    MainWindow(MarloUssLibrary& library, es_provider_t* provider, const QString& workFolder,
               QWidget* parent = nullptr);

    QTreeWidget* catalogTree() const { return m_tree; }
    es_provider_t* provider() const { return m_provider; }
    void log(const QString& line);

private:
    void fillTree();
    void addFolder(QTreeWidgetItem* parent, es_folder_t* folder);
    void addActions();

    MarloUssLibrary& m_library;
    es_provider_t* m_provider = nullptr;
    QString m_workFolder;
    QTreeWidget* m_tree = nullptr;
    QPlainTextEdit* m_log = nullptr;
};

} // namespace sandbox
