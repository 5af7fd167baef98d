#include "exchangetexts.h"
#include "export_entry.h"
#include "export_uss_dialog.h"
#include "exportuss.h"

#include "recording_messenger.h"
#include "temp_catalog.h"

#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeView>

using namespace testing;
using exchange::ExportEnvironment;
using exchange::ExportSelection;
using exchange::ExportUssDialog;

namespace {

// Two packets claimed by the piping library, one left to "Остальные"; twelve elements in
// folders of different sizes, so that every count tells its rows apart.
struct Catalog
{
    Catalog() : catalog(QStringLiteral("user_tx"))
    {
        add("ПЭ_Трубы", "Напорные", {"P-1", "P-2", "P-3"});
        add("ПЭ_Трубы", "Напорные\\Большие", {"P-4", "P-5"});
        add("ПЭ Отводы", "", {"O-1"});
        add("ПЭ Отводы", "Углы", {"O-2", "O-3"});
        add("Краны", "Шаровые", {"K-1", "K-2", "K-3", "K-4"});
        const QString config = root.filePath("EngSys_TX/MarloDB/PipingTX.xml");
        QDir().mkpath(QFileInfo(config).absolutePath());
        QFile file(config);
        if (file.open(QIODevice::WriteOnly))
            file.write(R"(<library name="Трубопроводы"><catalogs><catalog name="ПЭ_Трубы"/>
                <catalog name="ПЭ Отводы"/></catalogs><commands><command name="c"><subcommand>
                <uss-toolbar name="Трубы"/></subcommand></command></commands></library>)");
    }
    void add(const QString& packet, const QString& path, const QStringList& ids)
    {
        es_folder_t* folder =
            edw::ensureFolderPath(edw::findOrAddPacket(catalog.provider, packet), path);
        for (const QString& id : ids)
            table_AddStdSize(folder_GetTable(folder), es(id).c_str());
    }
    TempCatalog catalog;
    QTemporaryDir root;
};

QAbstractItemModel* tree(QWidget* dialog)
{
    return dialog->findChild<QTreeView*>(QStringLiteral("m_treeWidget"))->model();
}

// The tree row at a path of shown names ("Трубопроводы/Трубы/Напорные").
QModelIndex row(QWidget* dialog, const QString& path)
{
    QAbstractItemModel* model = tree(dialog);
    QModelIndex at;
    for (const QString& name : path.split('/')) {
        QModelIndex found;
        for (int r = 0; r < model->rowCount(at) && !found.isValid(); ++r)
            if (model->index(r, 0, at).data().toString() == name) found = model->index(r, 0, at);
        if (!found.isValid()) return {};
        at = found;
    }
    return at;
}

QStringList names(QAbstractItemModel* model, const QModelIndex& parent = {})
{
    QStringList out;
    for (int r = 0; r < model->rowCount(parent); ++r)
        out << model->index(r, 0, parent).data().toString();
    return out;
}

QStringList listed(QWidget* dialog, const QString& list)
{
    return names(dialog->findChild<QListView*>(list)->model());
}

QString label(QWidget* dialog)
{
    return dialog->findChild<QLabel*>(QStringLiteral("m_label"))->text();
}

QCheckBox* box(QWidget* dialog, const QString& name)
{
    return dialog->findChild<QCheckBox*>(name);
}

void setCheck(QWidget* dialog, const QString& path, bool on)
{
    tree(dialog)->setData(row(dialog, path), on ? Qt::Checked : Qt::Unchecked, Qt::CheckStateRole);
}

int checkOf(QWidget* dialog, const QString& path)
{
    return row(dialog, path).data(Qt::CheckStateRole).toInt();
}

void makeCurrent(QWidget* dialog, const QString& path)
{
    dialog->findChild<QTreeView*>(QStringLiteral("m_treeWidget"))
        ->setCurrentIndex(row(dialog, path));
}

} // namespace

// The export dialog as the user sees it, and both ways of exporting through it, on real
// catalogs: what the tree, lists and label show, what is written and what the user is told.
class TestExportDialog : public QObject
{
    Q_OBJECT

private slots:
    void treeGroupsByLibraryWithShownNames();
    void treeChecksFollowTheRules_data();
    void treeChecksFollowTheRules();
    void elementListFollowsCurrentRow();
    void selectAllIsTriStateOnlyWhilePartial();
    void okGathersChosenOnceWithFlag_data();
    void okGathersChosenOnceWithFlag();
    void filterNarrowsRowsAndKeepsChoices();
    void exportAllWritesAndTells();
    void exportAllStopsBeforeWriting_data();
    void exportAllStopsBeforeWriting();
    void writerFailureLeavesNothing();
    void unknownCatalogFailsBeforeAnyDialog();
    void exportFromListFindsPairs_data();
    void exportFromListFindsPairs();
};

void TestExportDialog::treeGroupsByLibraryWithShownNames()
{
    Catalog c;
    ExportSelection selection(c.catalog.provider, c.root.path());
    ExportUssDialog dialog(selection);
    QCOMPARE(names(tree(&dialog)), (QStringList{"Трубопроводы", "Остальные"}));
    QCOMPARE(names(tree(&dialog), row(&dialog, "Трубопроводы")), (QStringList{"Трубы", "Отводы"}));
    QCOMPARE(names(tree(&dialog), row(&dialog, "Трубопроводы/Трубы/Напорные")),
             QStringList{"Большие"});
    QCOMPARE(names(tree(&dialog), row(&dialog, "Остальные")), QStringList{"Краны"});
    QCOMPARE(row(&dialog, "Трубопроводы").data(Qt::ToolTipRole).toString(),
             QStringLiteral("Команда: Трубы"));
    QCOMPARE(label(&dialog), QStringLiteral("Элементы для экспорта (0/12)"));
}

void TestExportDialog::treeChecksFollowTheRules_data()
{
    QTest::addColumn<QStringList>("checked");   // rows checked in turn
    QTest::addColumn<QStringList>("unchecked"); // then unchecked in turn
    QTest::addColumn<QString>("labelText");
    QTest::addColumn<int>("library");
    QTest::addColumn<int>("packet"); // Трубы
    QTest::addColumn<int>("rest");
    QTest::addColumn<int>("chosenRows");
    const int off = Qt::Unchecked, part = Qt::PartiallyChecked, on = Qt::Checked;
    QTest::newRow("packet checks its folders")
        << QStringList{"Трубопроводы/Трубы"} << QStringList{} << "Элементы для экспорта (5/12)"
        << part << on << off << 5;
    QTest::newRow("nested folder makes parents partial")
        << QStringList{"Трубопроводы/Трубы/Напорные/Большие"} << QStringList{}
        << "Элементы для экспорта (2/12)" << part << part << off << 2;
    QTest::newRow("library checks everything below")
        << QStringList{"Трубопроводы"} << QStringList{} << "Элементы для экспорта (8/12)" << on
        << on << off << 8;
    QTest::newRow("unchecking a folder clears only it")
        << QStringList{"Трубопроводы"} << QStringList{"Трубопроводы/Отводы/Углы"}
        << "Элементы для экспорта (6/12)" << part << on << off << 6;
    QTest::newRow("all children checked make the parent checked")
        << QStringList{"Трубопроводы/Трубы", "Трубопроводы/Отводы"} << QStringList{}
        << "Элементы для экспорта (8/12)" << on << on << off << 8;
    QTest::newRow("checked then cleared")
        << QStringList{"Остальные", "Трубопроводы/Трубы"} << QStringList{"Остальные"}
        << "Элементы для экспорта (5/12)" << part << on << off << 5;
}

void TestExportDialog::treeChecksFollowTheRules()
{
    QFETCH(QStringList, checked);
    QFETCH(QStringList, unchecked);
    QFETCH(QString, labelText);
    QFETCH(int, library);
    QFETCH(int, packet);
    QFETCH(int, rest);
    QFETCH(int, chosenRows);
    Catalog c;
    ExportSelection selection(c.catalog.provider, c.root.path());
    ExportUssDialog dialog(selection);
    for (const QString& path : checked)
        setCheck(&dialog, path, true);
    for (const QString& path : unchecked)
        setCheck(&dialog, path, false);
    QCOMPARE(label(&dialog), labelText);
    QCOMPARE(checkOf(&dialog, "Трубопроводы"), library);
    QCOMPARE(checkOf(&dialog, "Трубопроводы/Трубы"), packet);
    QCOMPARE(checkOf(&dialog, "Остальные"), rest);
    QCOMPARE(listed(&dialog, "m_listWidget_exp").size(), chosenRows);
}

void TestExportDialog::elementListFollowsCurrentRow()
{
    Catalog c;
    ExportSelection selection(c.catalog.provider, c.root.path());
    ExportUssDialog dialog(selection);
    setCheck(&dialog, "Трубопроводы/Трубы/Напорные/Большие", true);
    makeCurrent(&dialog, "Трубопроводы/Трубы/Напорные");
    QCOMPARE(listed(&dialog, "m_listWidget_check"), (QStringList{"P-1", "P-2", "P-3"}));
    makeCurrent(&dialog, "Трубопроводы/Трубы/Напорные/Большие");
    auto* list = dialog.findChild<QListView*>(QStringLiteral("m_listWidget_check"));
    QCOMPARE(names(list->model()), (QStringList{"P-4", "P-5"}));
    QCOMPARE(list->model()->index(1, 0).data(Qt::CheckStateRole).toInt(), int(Qt::Checked));

    // Unchecking one element takes it off the chosen list and makes its folder partial.
    list->model()->setData(list->model()->index(0, 0), Qt::Unchecked, Qt::CheckStateRole);
    QCOMPARE(listed(&dialog, "m_listWidget_exp"), QStringList{"P-5"});
    QCOMPARE(label(&dialog), QStringLiteral("Элементы для экспорта (1/12)"));
    QCOMPARE(checkOf(&dialog, "Трубопроводы/Трубы/Напорные/Большие"), int(Qt::PartiallyChecked));

    // A packet row lists the elements of its root folder.
    makeCurrent(&dialog, "Трубопроводы/Отводы");
    list->model()->setData(list->model()->index(0, 0), Qt::Checked, Qt::CheckStateRole);
    QCOMPARE(listed(&dialog, "m_listWidget_exp"), (QStringList{"P-5", "O-1"}));
    QCOMPARE(checkOf(&dialog, "Трубопроводы/Отводы"), int(Qt::PartiallyChecked));
}

void TestExportDialog::selectAllIsTriStateOnlyWhilePartial()
{
    Catalog c;
    ExportSelection selection(c.catalog.provider, c.root.path());
    ExportUssDialog dialog(selection);
    QCheckBox* all = box(&dialog, "checkBox_SelectAll");
    QVERIFY(!all->isTristate());

    all->click();
    QCOMPARE(label(&dialog), QStringLiteral("Элементы для экспорта (12/12)"));
    QCOMPARE(checkOf(&dialog, "Остальные"), int(Qt::Checked));
    QCOMPARE(all->checkState(), Qt::Checked);
    QVERIFY(!all->isTristate());

    setCheck(&dialog, "Остальные/Краны", false);
    QCOMPARE(all->checkState(), Qt::PartiallyChecked);
    QVERIFY(all->isTristate());

    // A click on the partial box chooses everything again.
    all->click();
    QCOMPARE(label(&dialog), QStringLiteral("Элементы для экспорта (12/12)"));
    QVERIFY(!all->isTristate());

    all->click();
    QCOMPARE(label(&dialog), QStringLiteral("Элементы для экспорта (0/12)"));
    QCOMPARE(checkOf(&dialog, "Трубопроводы"), int(Qt::Unchecked));
    QCOMPARE(all->checkState(), Qt::Unchecked);
    QVERIFY(listed(&dialog, "m_listWidget_exp").isEmpty());
}

void TestExportDialog::okGathersChosenOnceWithFlag_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("previous");
    QTest::addColumn<QStringList>("ids");
    QTest::newRow("folder, current version")
        << "Трубопроводы/Отводы/Углы" << false << QStringList{"O-2", "O-3"};
    QTest::newRow("packet, previous version")
        << "Остальные/Краны" << true << QStringList{"K-1", "K-2", "K-3", "K-4"};
}

void TestExportDialog::okGathersChosenOnceWithFlag()
{
    QFETCH(QString, path);
    QFETCH(bool, previous);
    QFETCH(QStringList, ids);
    Catalog c;
    ExportSelection selection(c.catalog.provider, c.root.path());
    ExportUssDialog dialog(selection);
    setCheck(&dialog, path, true);
    // Checking a row again changes nothing: every element is gathered once.
    setCheck(&dialog, path, true);
    box(&dialog, "checkBox_PrevVer")->setChecked(previous);
    QTest::mouseClick(dialog.findChild<QWidget*>(QStringLiteral("okButton")), Qt::LeftButton);
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QStringList got;
    for (es_stdsize_t* e : dialog.elements())
        got << edw::fromEs(stdsize_GetID(e));
    QCOMPARE(got, ids);
    QCOMPARE(dialog.previousVersion(), previous);
}

void TestExportDialog::filterNarrowsRowsAndKeepsChoices()
{
    Catalog c;
    ExportSelection selection(c.catalog.provider, c.root.path());
    ExportUssDialog dialog(selection);
    setCheck(&dialog, "Остальные/Краны", true);
    auto* filter = dialog.findChild<QLineEdit*>(QStringLiteral("m_lineEdit_filter"));

    // A packet's name: its library above it, all of it below.
    filter->setText(QStringLiteral("отв"));
    QCOMPARE(names(tree(&dialog)), QStringList{"Трубопроводы"});
    QCOMPARE(names(tree(&dialog), row(&dialog, "Трубопроводы")), QStringList{"Отводы"});
    QCOMPARE(names(tree(&dialog), row(&dialog, "Трубопроводы/Отводы")), QStringList{"Углы"});

    // An element's id: its folder, and only it in the list.
    filter->setText(QStringLiteral("K-3"));
    QCOMPARE(names(tree(&dialog)), QStringList{"Остальные"});
    makeCurrent(&dialog, "Остальные/Краны/Шаровые");
    QCOMPARE(listed(&dialog, "m_listWidget_check"), QStringList{"K-3"});
    auto* list = dialog.findChild<QListView*>(QStringLiteral("m_listWidget_check"));
    list->model()->setData(list->model()->index(0, 0), Qt::Unchecked, Qt::CheckStateRole);

    filter->setText(QStringLiteral("нет такого"));
    QCOMPARE(tree(&dialog)->rowCount(), 0);

    // Hidden rows kept their choices.
    filter->clear();
    QCOMPARE(names(tree(&dialog)), (QStringList{"Трубопроводы", "Остальные"}));
    QCOMPARE(listed(&dialog, "m_listWidget_exp"), (QStringList{"K-1", "K-2", "K-4"}));
    QCOMPARE(label(&dialog), QStringLiteral("Элементы для экспорта (3/12)"));
}

namespace {

// An environment whose save dialog answers with a given path and records what it was asked.
struct Environment
{
    Environment(const QString& answer, const QString& libraryRoot)
    {
        env.libraryRoot = libraryRoot;
        env.readSetting = [this](const QString& key) { return settings.value(key); };
        env.writeSetting = [this](const QString& key, const QString& value) {
            settings[key] = value;
        };
        env.chooseFile = [this, answer](QWidget*, const QString& caption, const QString& start,
                                        const QString& filter) {
            asked << caption << start << filter;
            return answer;
        };
        env.documentsFolder = QStringLiteral("/home/user/Документы");
        env.longOperation = [this](bool started) { notices << started; };
        env.exec = [this](ExportUssDialog& dialog) {
            ++dialogs;
            if (!choose) return int(QDialog::Rejected);
            choose(dialog);
            dialog.accept();
            return dialog.result();
        };
    }
    ExportEnvironment env;
    QHash<QString, QString> settings;
    QStringList asked;
    QList<bool> notices;
    int dialogs = 0;
    std::function<void(ExportUssDialog&)> choose = [](ExportUssDialog& d) {
        setCheck(&d, "Трубопроводы/Трубы", true);
    };
};

} // namespace

void TestExportDialog::exportAllWritesAndTells()
{
    Catalog c;
    QTemporaryDir out;
    const QString path = out.filePath("выгрузка.uss");
    Environment e(path, c.root.path());
    RecordingMessenger messenger;
    // A previous file of that name is replaced.
    QFile old(path);
    QVERIFY(old.open(QIODevice::WriteOnly) && old.write("old") == 3);
    old.close();

    QVERIFY(exchange::exportAll(c.catalog.provider, nullptr, e.env));
    QCOMPARE(e.dialogs, 1);
    QCOMPARE(e.asked,
             (QStringList{"Экспорт пользовательских элементов", "/home/user/Документы/export.uss",
                          "Пользовательские элементы (*.uss);;Все файлы (*.*)"}));
    QCOMPARE(messenger.texts, QStringList{exchange::texts::exportDone()});
    QCOMPARE(e.settings.value("uss_import_path"), out.path());
    QCOMPARE(e.notices, (QList<bool>{true, false}));
    QVERIFY(QFileInfo(path).size() > 3);

    // The next export starts in the folder stored.
    Environment again(QString(), c.root.path());
    again.settings["uss_import_path"] = out.path();
    QVERIFY(!exchange::exportAll(c.catalog.provider, nullptr, again.env));
    QCOMPARE(again.asked.value(1), out.path() + "/export.uss");
    QCOMPARE(messenger.texts.size(), 1);
}

void TestExportDialog::exportAllStopsBeforeWriting_data()
{
    QTest::addColumn<bool>("emptyCatalog");
    QTest::addColumn<bool>("cancel");
    QTest::addColumn<bool>("lockedTarget");
    QTest::addColumn<int>("dialogs");
    QTest::addColumn<int>("choosers");
    QTest::addColumn<QStringList>("texts");
    QTest::newRow("catalog without elements")
        << true << false << false << 0 << 0
        << QStringList{"Каталог не содержит пользовательских элементов"};
    QTest::newRow("dialog cancelled") << false << true << false << 1 << 0 << QStringList{};
    QTest::newRow("target cannot be removed")
        << false << false << true << 1 << 1 << QStringList{"Не удалось перезаписать файл"};
}

void TestExportDialog::exportAllStopsBeforeWriting()
{
    QFETCH(bool, emptyCatalog);
    QFETCH(bool, cancel);
    QFETCH(bool, lockedTarget);
    QFETCH(int, dialogs);
    QFETCH(int, choosers);
    QFETCH(QStringList, texts);
    Catalog c;
    TempCatalog empty;
    QTemporaryDir out;
    // A folder with content in place of the file: it cannot be deleted like a file.
    const QString path = out.filePath("held.uss");
    QVERIFY(QDir().mkpath(path + "/inside"));
    Environment e(lockedTarget ? path : out.filePath("new.uss"), c.root.path());
    if (cancel) e.choose = nullptr;
    RecordingMessenger messenger;

    QVERIFY(
        !exchange::exportAll(emptyCatalog ? empty.provider : c.catalog.provider, nullptr, e.env));
    QCOMPARE(e.dialogs, dialogs);
    QCOMPARE(e.asked.size() / 3, choosers);
    QCOMPARE(messenger.texts, texts);
    QVERIFY(e.notices.isEmpty());
    QCOMPARE(QDir(out.path()).entryList(QDir::NoDotAndDotDot | QDir::AllEntries),
             QStringList{"held.uss"});
    QVERIFY(QFileInfo(path + "/inside").isDir());
}

void TestExportDialog::writerFailureLeavesNothing()
{
    Catalog c;
    // An element whose stored model file has gone from the catalog's folder.
    QTemporaryDir files;
    const QString model = files.filePath("model.m3d");
    QFile m(model);
    QVERIFY(m.open(QIODevice::WriteOnly) && m.write("model body") > 0);
    m.close();
    es_stdsize_t* element = c.catalog.find("Краны", "K-2");
    QVERIFY(setModel(element, model, QString(), "Кран", 1));
    const QString stored = edw::fromEs(model_GetModelFile(stdsize_GetModel(element)));
    QVERIFY(QFile::remove(stored));

    QTemporaryDir out;
    Environment e(out.filePath("broken.uss"), c.root.path());
    e.choose = [](ExportUssDialog& d) { box(&d, "checkBox_SelectAll")->click(); };
    RecordingMessenger messenger;
    QVERIFY(!exchange::exportAll(c.catalog.provider, nullptr, e.env));
    QCOMPARE(messenger.texts.size(), 2);
    QVERIFY2(messenger.texts[0].contains("K-2"), qPrintable(messenger.texts[0]));
    QCOMPARE(messenger.texts[1], exchange::texts::exportFailed());
    QCOMPARE(QDir(out.path()).entryList(QDir::NoDotAndDotDot | QDir::AllEntries), QStringList());
    QCOMPARE(e.notices, (QList<bool>{true, false}));
}

void TestExportDialog::unknownCatalogFailsBeforeAnyDialog()
{
    TempCatalog other(QStringLiteral("user_xx"));
    table_AddStdSize(folder_GetTable(edw::ensureFolderPath(
                         edw::findOrAddPacket(other.provider, "ПЭ_Трубы"), "A")),
                     u"X-1");
    Environment e(QStringLiteral("/tmp/never.uss"), QString());
    RecordingMessenger messenger;
    QVERIFY_THROWS_EXCEPTION(std::runtime_error,
                             exchange::exportAll(other.provider, nullptr, e.env));
    QCOMPARE(e.dialogs, 0);
    QVERIFY(messenger.texts.isEmpty());
}

void TestExportDialog::exportFromListFindsPairs_data()
{
    QTest::addColumn<QString>("list");
    QTest::addColumn<QString>("separator");
    QTest::addColumn<int>("found"); // 0: false without a dialog
    QTest::newRow("odd number of parts") << "ПЭ_Трубы;P-1;Краны"
                                         << ";" << 0;
    QTest::newRow("nothing found") << "ПЭ_Нет|P-1|Краны|P-1"
                                   << "|" << 0;
    QTest::newRow("empty list") << ""
                                << ";" << 0;
    QTest::newRow("unmatched pairs skipped") << "Краны;K-9;Краны;K-4;ПЭ Отводы;O-3"
                                             << ";" << 2;
    QTest::newRow("empty parts kept") << "ПЭ_Трубы;;Краны;K-1"
                                      << ";" << 1;
    QTest::newRow("a pair named twice") << "Краны##K-1##Краны##K-1"
                                        << "##" << 1;
}

void TestExportDialog::exportFromListFindsPairs()
{
    QFETCH(QString, list);
    QFETCH(QString, separator);
    QFETCH(int, found);
    Catalog c;
    QTemporaryDir out;
    Environment e(out.filePath("list.uss"), c.root.path());
    RecordingProgress progress;
    e.env.progress = &progress;
    RecordingMessenger messenger;
    QCOMPARE(exchange::exportFromList(list, separator, c.catalog.provider, nullptr, e.env),
             found > 0);
    QCOMPARE(e.dialogs, 0);
    QCOMPARE(e.asked.size(), found > 0 ? 3 : 0);
    QCOMPARE(progress.maximum, found > 0 ? 2 * found : -1);
    QCOMPARE(messenger.texts,
             found > 0 ? QStringList{exchange::texts::exportDone()} : QStringList());
    QCOMPARE(QFileInfo::exists(out.filePath("list.uss")), found > 0);
}

QTEST_MAIN(TestExportDialog)
#include "tst_export_dialog.moc"
