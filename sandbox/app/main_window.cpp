#include "main_window.h"

#include "headless_export.h"
#include "headless_import.h"
#include "headless_update.h"
#include "host_calls.h"
#include "sample_editor.h"

#include <esdata/esdata.h>

#include <QMenuBar>
#include <QPlainTextEdit>
#include <QSplitter>
#include <QStatusBar>
#include <QTreeWidget>

namespace sandbox {
namespace {

QString fromEs(const char16_t* text)
{
    return text ? QString::fromUtf16(text) : QString();
}

QString elementName(es_stdsize_t* element)
{
    es_value value{};
    if (stdsize_GetValueByName(element, u"Name", &value) && value.kind == ES_VALUE_TEXT)
        return fromEs(value.s);
    return {};
}

} // namespace

MainWindow::MainWindow(MarloUssLibrary& library, es_provider_t* provider, const QString& workFolder,
                       QWidget* parent)
    : QMainWindow(parent), m_library(library), m_provider(provider), m_workFolder(workFolder)
{
    setObjectName(QStringLiteral("sandboxMainWindow"));
    setWindowTitle(QStringLiteral("MarloUss — песочница ГРАВИС"));

    auto* splitter = new QSplitter(Qt::Vertical, this);
    m_tree = new QTreeWidget(splitter);
    m_tree->setObjectName(QStringLiteral("catalogTree"));
    m_tree->setHeaderLabels({QStringLiteral("Каталог"), QStringLiteral("Наименование")});
    m_log = new QPlainTextEdit(splitter);
    m_log->setObjectName(QStringLiteral("callLog"));
    m_log->setReadOnly(true);
    splitter->setStretchFactor(0, 3);
    splitter->setStretchFactor(1, 1);
    setCentralWidget(splitter);

    fillTree();
    addActions();
    statusBar()->showMessage(QStringLiteral("Каталог: %1").arg(fromEs(esx_CatalogPath(provider))));
    resize(820, 560);
}

void MainWindow::log(const QString& line)
{
    m_log->appendPlainText(line);
}

void MainWindow::fillTree()
{
    auto* root = new QTreeWidgetItem(m_tree, {fromEs(provider_GetDatabaseName(m_provider))});
    const uint32_t packets = provider_GetPacketCount(m_provider);
    for (uint32_t i = 0; i < packets; ++i) {
        es_packet_t* packet = provider_GetPacket(m_provider, i);
        auto* item = new QTreeWidgetItem(root, {fromEs(packet_GetName(packet))});
        addFolder(item, packet_GetRootFolder(packet));
    }
    m_tree->expandAll();
    m_tree->resizeColumnToContents(0);
}

void MainWindow::addFolder(QTreeWidgetItem* parent, es_folder_t* folder)
{
    const uint32_t children = folder_GetChildFolderCount(folder);
    for (uint32_t i = 0; i < children; ++i) {
        es_folder_t* child = folder_GetChildFolder(folder, i);
        auto* item = new QTreeWidgetItem(parent, {fromEs(folder_GetName(child))});
        addFolder(item, child);
    }
    es_table_t* table = folder_GetTable(folder);
    const uint32_t elements = table_GetStdSizeCount(table);
    for (uint32_t i = 0; i < elements; ++i) {
        es_stdsize_t* element = table_GetStdSize(table, i);
        new QTreeWidgetItem(parent, {fromEs(stdsize_GetID(element)), elementName(element)});
    }
}

void MainWindow::addActions()
{
    QMenu* menu = menuBar()->addMenu(QStringLiteral("Вызовы MarloUss"));
    const auto add = [this, menu](const QString& text, bool available, auto call) {
        QAction* action = menu->addAction(text);
        action->setEnabled(available);
        connect(action, &QAction::triggered, this, [this, call] { log(call().line); });
    };
    add(QStringLiteral("LIBRARYNAMEW"), m_library.libraryName != nullptr,
        [this] { return callLibraryName(m_library); });
    add(QStringLiteral("uss_get_command_id"), m_library.getCommandId != nullptr, [this] {
        unsigned int id = 0, idcat = 0;
        return callCommandId(m_library, writeSampleCommandLibrary(m_workFolder + "/engsys"),
                             QStringLiteral("pipe"), &id, &idcat);
    });
    add(QStringLiteral("engsys_select_part_dialog"), m_library.selectPart != nullptr,
        [this] { return callSelectPart(m_library, winId(), selectPartRequest()); });
    add(QStringLiteral("OPEN_SAVE_CDW_DIALOG"), m_library.saveCdw != nullptr,
        [this] { return callSaveCdw(m_library, QStringLiteral("D:\\work\\plan.cdw")); });
    add(QStringLiteral("OPEN_CHOSE_DIRECTORY_DIALOG"), m_library.chooseDirectory != nullptr,
        [this] { return callChooseDirectory(m_library); });
    add(QStringLiteral("OPEN_FILE_SAVING_DIALOG"), m_library.fileSaving != nullptr, [this] {
        return callFileSaving(m_library, m_workFolder + QStringLiteral("/drawings/plan.cdw"));
    });
    add(QStringLiteral("SelectionPanel::CallBackP"), m_library.pointCallback != nullptr,
        [this] { return callPointCallback(m_library, 7); });
    add(QStringLiteral("engsys_medium_dialog"), m_library.mediumDialog != nullptr,
        [this] { return callMediumDialog(m_library, winId(), true, false, mediumRequest(false)); });
    add(QStringLiteral("engsys_medium_dialog (вентиляция)"), m_library.mediumDialog != nullptr,
        [this] { return callMediumDialog(m_library, winId(), false, true, mediumRequest(true)); });
    add(QStringLiteral("uss_show_update_dialog"), m_library.showUpdateDialog != nullptr, [this] {
        static bool popup = false;
        return callShowUpdateDialog(m_library, winId(), &popup);
    });
    add(QStringLiteral("uss_try_update_rtw"), m_library.tryUpdateRtw != nullptr, [this] {
        addSampleItems(m_workFolder + QStringLiteral("/rtw"));
        return callTryUpdateRtw(m_library, QStringLiteral("Кран шаровый"));
    });
    add(QStringLiteral("uss_is_rtw_updated"), m_library.isRtwUpdated != nullptr,
        [this] { return callIsRtwUpdated(m_library, QStringLiteral("КРАН ШАРОВЫЙ")); });
    add(QStringLiteral("uss_reload_updated_rtw"), m_library.reloadUpdatedRtw != nullptr,
        [this] { return callReloadUpdatedRtw(m_library); });
    // Export: everything chosen in the dialog, and the element selected in the tree as a list.
    add(QStringLiteral("uss_export_all"), true,
        [this] { return callExportAll(m_library, winId(), m_provider); });
    add(QStringLiteral("uss_export_from_list"), true, [this] {
        QString packet, id;
        QTreeWidgetItem* item = m_tree->currentItem();
        for (QTreeWidgetItem* at = item; at && at->parent(); at = at->parent())
            packet = at->text(0);
        if (item && item->childCount() == 0) id = item->text(0);
        return callExportFromList(m_library, packet + QStringLiteral(";") + id,
                                  QStringLiteral(";"), m_provider);
    });
    add(QStringLiteral("uss_import"), true, [this] {
        const CallResult result = callImport(m_library, winId(), m_provider);
        if (result.value == 1) {
            m_tree->clear();
            fillTree();
        }
        return result;
    });
    // The element editor on the element selected in the tree (its packet is the tree's second
    // level); the tree is read again after an element was written.
    for (const auto& [text, mode] : {std::pair{"create", 0u}, {"clone", 1u}, {"edit", 2u}}) {
        add(QStringLiteral("uss_create_clone_edit: ") + text, true, [this, mode = mode] {
            EditCall call{mode, {}, {}, {"uss", "pump", "valve"}, "uss", {}, {}, {}, 0};
            QTreeWidgetItem* item = m_tree->currentItem();
            for (QTreeWidgetItem* at = item; at && at->parent(); at = at->parent())
                call.packet = at->text(0);
            if (item && item->childCount() == 0) call.elementId = item->text(0);
            if (mode == 0 && !call.packet.isEmpty()) call.categoryPath = call.packet;
            const CallResult result = callCreateCloneEdit(m_library, winId(), m_provider,
                                                          m_workFolder, call);
            if (result.value == 1) {
                m_tree->clear();
                fillTree();
            }
            return result;
        });
    }
}

} // namespace sandbox
