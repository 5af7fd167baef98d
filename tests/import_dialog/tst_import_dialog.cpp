#include "Libs/zipper/zip.h"
#include "exchange.h"
#include "exchange_fixture.h"
#include "import_environment.h"
#include "import_progress_dialog.h"
#include "import_uss_dialog.h"
#include "modal_answer.h"
#include "ziptestsupport.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QScopeGuard>
#include <QStandardPaths>
#include <QTest>
#include <QTimer>
#include <QTreeView>

#include <deque>
#include <memory>
#include <stdexcept>

using namespace testing;
using exchange::ImportDecisionModel;

namespace {

// Plays the user of the dialogs an import runs, one after the other: each step waits for the
// modal dialog of its object name and acts on it once.
class Play : public QObject
{
public:
    using Act = std::function<void(QWidget*)>;
    Play()
    {
        connect(&m_timer, &QTimer::timeout, this, [this] {
            QWidget* modal = QApplication::activeModalWidget();
            if (!modal || !modal->isVisible() || m_steps.empty() || modal == m_last) return;
            if (modal->objectName() != m_steps.front().first) return;
            m_last = modal;
            const Act act = m_steps.front().second;
            m_steps.pop_front();
            seen << modal->objectName();
            act(modal);
        });
        m_timer.start(10);
    }
    void then(const QString& dialog, Act act) { m_steps.emplace_back(dialog, std::move(act)); }
    int left() const { return int(m_steps.size()); }
    QStringList seen;

private:
    std::deque<std::pair<QString, Act>> m_steps;
    QTimer m_timer;
    QPointer<QWidget> m_last;
};

void click(QWidget* dialog, const QString& name)
{
    auto* button = dialog->findChild<QAbstractButton*>(name);
    QVERIFY2(button, qPrintable(name));
    button->click();
}

// The tree's row of the record id (as the view shows it), at column.
QModelIndex rowOf(QTreeView* tree, const QString& id, int column)
{
    QAbstractItemModel* model = tree->model();
    for (int g = 0; g < model->rowCount(); ++g) {
        const QModelIndex group = model->index(g, 0);
        for (int r = 0; r < model->rowCount(group); ++r)
            if (model->index(r, 0, group).data().toString() == id)
                return model->index(r, column, group);
    }
    return {};
}

// Ids of the rows the tree shows, in order, group by group.
QList<QStringList> groupedIds(QTreeView* tree)
{
    QList<QStringList> groups;
    QAbstractItemModel* model = tree->model();
    for (int g = 0; g < model->rowCount(); ++g) {
        const QModelIndex group = model->index(g, 0);
        groups.append(QStringList());
        for (int r = 0; r < model->rowCount(group); ++r)
            groups.back() << model->index(r, 0, group).data().toString();
    }
    return groups;
}

QStringList shownIds(QTreeView* tree)
{
    QStringList ids;
    for (const QStringList& group : groupedIds(tree))
        ids << group;
    return ids;
}

// A click where the user sees the radio button of record id: "ID:1" first choice, "ID:2"
// second.
void clickChoice(QTreeView* tree, const QString& step)
{
    const QString id = step.section(':', 0, 0);
    const int column = step.section(':', 1, 1).toInt();
    const QModelIndex index = rowOf(tree, id, column);
    QVERIFY2(index.isValid(), qPrintable(id));
    tree->scrollTo(index);
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, tree->visualRect(index).center());
}

QString labelText(QWidget* dialog, const QString& name)
{
    auto* label = dialog->findChild<QLabel*>(name);
    return label ? label->text() : QStringLiteral("<no %1>").arg(name);
}

QStringList idsOf(const exchange::ImportRecords& records)
{
    QStringList ids;
    for (const auto& r : records)
        ids << r.id;
    return ids;
}

// A document with the given header and no element, in an archive of its own.
QString emptyArchive(const QString& path, const QString& libName, bool withElement)
{
    const QByteArray element = R"({"packet": "P", "folder": "F", "id": "X", "type": "T",
        "atr": [], "model": null, "prj": []})";
    zipper::zip z(path);
    z.addBytes(R"({"comment": {"encoding": "utf8", "lib-name": ")" + libName.toUtf8() +
                   R"(", "export-date": "2024.03.05 14:07:31"}, "std-size": [)" +
                   (withElement ? element : QByteArray()) + "]}",
               "TX.json");
    z.commit();
    return path;
}

} // namespace

// The import as the user sees it: the decisions, the progress with its question and the
// messages, and what the catalog holds afterwards.
class TestImportDialog : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void rowsShowWhatEachRecordNeeds();
    void choicesDecideWhatIsKept_data();
    void choicesDecideWhatIsKept();
    void comparisonSettlesTheRow_data();
    void comparisonSettlesTheRow();
    void hiddenRowsKeepTheirChoices_data();
    void hiddenRowsKeepTheirChoices();
    void checksTellTheirMessageAndOpenNoDialog_data();
    void checksTellTheirMessageAndOpenNoDialog();
    void unknownCatalogThrowsBeforeTheChooser();
    void chooserStartsInTheRememberedFolder_data();
    void chooserStartsInTheRememberedFolder();
    void unreadableHostVersionIsToldAndMarksNothing();
    void cancelledDecisionsWriteNothing();
    void rowsAreGroupedByLibrary();
    void progressQuestionStopsOnlyOnCancel_data();
    void progressQuestionStopsOnlyOnCancel();
    void libraryQuestionBoxOffersOkOnlyAndResumes();
    void refusedWritesAreCountedAndExplained();

private:
    // Source elements NEW1, CONF, SAME, LATER, NEW2, CONF2 in that order, exported; the target
    // holds CONF and CONF2 older and SAME with the same stamp.
    QString standardArchive();
    QString tenNewArchive();
    // The standard archive opened for the target with its decisions.
    struct Opened
    {
        exchange::ImportArchive archive;
        std::vector<exchange::Decision> decisions;
    };
    std::unique_ptr<Opened> open(const QString& path);
    std::unique_ptr<exchange::ImportUssDialog> dialogFor(Opened& opened);
    // An environment that chooses path, records the messages and answers the question.
    exchange::ImportEnvironment scripted(const QString& path);

    QTemporaryDir m_tmp;
    std::unique_ptr<TempCatalog> m_source;
    std::unique_ptr<TempCatalog> m_target;
    std::unique_ptr<QTemporaryDir> m_out;
    QStringList m_messages;
    QStringList m_questions;
    QHash<QString, QString> m_settings;
};

void TestImportDialog::initTestCase()
{
    QVERIFY(m_tmp.isValid());
    qputenv("TMPDIR", QFile::encodeName(m_tmp.path()));
}

void TestImportDialog::init()
{
    m_source = std::make_unique<TempCatalog>();
    m_target = std::make_unique<TempCatalog>();
    m_out = std::make_unique<QTemporaryDir>();
    QVERIFY(m_source->provider && m_target->provider);
    m_messages.clear();
    m_questions.clear();
    m_settings.clear();
}

void TestImportDialog::cleanup()
{
    m_source.reset();
    m_target.reset();
    m_out.reset();
}

QString TestImportDialog::standardArchive()
{
    TempCatalog& s = *m_source;
    auto element = [&](const QString& id, const QString& folder, const QString& date,
                       const QString& author) {
        es_stdsize_t* e = s.addElement("ПЭ_Трубы", folder, id);
        addAttribute(e, {"USS_LAST_CHANGE_DATE", 3, date});
        addAttribute(e, {"USS_AUTHOR", 3, author});
        return e;
    };
    es_stdsize_t* new1 = element("NEW1", "Стальные", "01.03.2024 10:00:00", "anna");
    es_stdsize_t* conf = element("CONF", "Стальные", "05.03.2024 12:00:00", "vera");
    es_stdsize_t* same = element("SAME", "Стальные", "04.03.2024 09:30:00", "dina");
    es_stdsize_t* later = element("LATER", "Литые", "06.03.2024 16:45:00", "egor");
    setModel(later, s.writeFile("later.m3d", "later model"), {}, "Литая", 240);
    es_stdsize_t* new2 = element("NEW2", "Стальные", "02.03.2024 11:15:00", "boris");
    es_stdsize_t* conf2 = element("CONF2", "Стальные", "07.03.2024 07:05:00", "zoya");
    setModel(conf2, s.writeFile("conf2.m3d", "conf2 model"), {}, "Поздняя", 232);

    auto older = [&](const QString& id, const QString& date, const QString& author) {
        es_stdsize_t* e = m_target->addElement("ПЭ_Трубы", "Стальные", id, "MINE");
        addAttribute(e, {"USS_LAST_CHANGE_DATE", 3, date});
        addAttribute(e, {"USS_AUTHOR", 3, author});
    };
    older("CONF", "01.01.2023 08:00:00", "gleb");
    older("SAME", "04.03.2024 09:30:00", "dina");
    older("CONF2", "02.02.2023 18:20:00", "oleg");

    const QString path = m_out->filePath("standard.uss");
    return ExportUss::Export(path, {new1, conf, same, later, new2, conf2}, false) ? path
                                                                                  : QString();
}

QString TestImportDialog::tenNewArchive()
{
    std::vector<es_stdsize_t*> elements;
    for (int i = 0; i < 10; ++i) {
        es_stdsize_t* e = m_source->addElement("P", "F", QStringLiteral("E%1").arg(i));
        addAttribute(e, {"USS_LAST_CHANGE_DATE", 3, QStringLiteral("0%1.01.2024").arg(i)});
        elements.push_back(e);
    }
    const QString path = m_out->filePath("ten.uss");
    return ExportUss::Export(path, elements, false) ? path : QString();
}

std::unique_ptr<TestImportDialog::Opened> TestImportDialog::open(const QString& path)
{
    auto opened = std::make_unique<Opened>();
    if (opened->archive.open(path, m_target->provider) != exchange::ImportArchive::Status::Ok)
        return nullptr;
    opened->decisions = exchange::decide(opened->archive.records(), m_target->provider);
    return opened;
}

std::unique_ptr<exchange::ImportUssDialog> TestImportDialog::dialogFor(Opened& opened)
{
    exchange::ImportGroup group;
    group.title = "Каталог";
    for (size_t i = 0; i < opened.archive.records().size(); ++i)
        group.records.push_back(i);
    auto dialog = std::make_unique<exchange::ImportUssDialog>(
        opened.archive, opened.decisions, std::vector<exchange::ImportGroup>{group},
        exchange::hostVersionNumber("23.1"));
    dialog->show();
    return dialog;
}

exchange::ImportEnvironment TestImportDialog::scripted(const QString& path)
{
    exchange::ImportEnvironment environment;
    environment.readSetting = [this](const QString& key) { return m_settings.value(key); };
    environment.writeSetting = [this](const QString& key, const QString& value) {
        m_settings[key] = value;
    };
    environment.openFile = [path](QWidget*, const QString&, const QString&, const QString&) {
        return path;
    };
    environment.message = [this](QWidget*, QMessageBox::Icon, const QString& text) {
        m_messages << text;
    };
    environment.question = [this](QWidget*, const QString& text) {
        m_questions << text;
        return QMessageBox::Ok;
    };
    environment.hostVersion = [] { return QStringLiteral("23.1"); };
    return environment;
}

void TestImportDialog::rowsShowWhatEachRecordNeeds()
{
    using M = ImportDecisionModel;
    auto opened = open(standardArchive());
    QVERIFY(opened);
    auto dialog = dialogFor(*opened);
    QTreeView* tree = dialog->findChild<QTreeView*>("treeWidget");
    QVERIFY(tree);
    // The record with the same stamp gets no row; which choices are made is the choices' test.
    QCOMPARE(shownIds(tree), QStringList({"NEW1", "CONF", "LATER", "NEW2", "CONF2"}));
    auto cell = [&](const QString& id, int column, int role = Qt::DisplayRole) {
        return rowOf(tree, id, column).data(role);
    };
    QCOMPARE(cell("NEW1", M::FirstChoiceColumn).toString(), "Добавить");
    QCOMPARE(cell("NEW1", M::SecondChoiceColumn).toString(), "Не добавлять");
    QCOMPARE(cell("CONF", M::FirstChoiceColumn).toString(), "Оставить мой");
    QCOMPARE(cell("CONF", M::SecondChoiceColumn).toString(), "Заменить на импортируемый");

    // Both sides of a conflict, with their own authors and dates.
    QCOMPARE(cell("CONF", M::MineColumn).toString(),
             "Автор: gleb<br>Дата:&nbsp;&nbsp;&nbsp;&nbsp;01.01.2023 08:00:00");
    QCOMPARE(cell("CONF", M::ImportedColumn).toString(),
             "Автор: vera<br>Дата:&nbsp;&nbsp;&nbsp;&nbsp;05.03.2024 12:00:00");
    QCOMPARE(cell("CONF2", M::MineColumn).toString(),
             "Автор: oleg<br>Дата:&nbsp;&nbsp;&nbsp;&nbsp;02.02.2023 18:20:00");
    QVERIFY(!cell("CONF", M::CompareColumn).toString().isEmpty());
    QVERIFY(cell("NEW1", M::CompareColumn).toString().isEmpty());
    QVERIFY(cell("NEW1", M::MineColumn).toString().isEmpty());

    // Only the records of a later host version are marked.
    QCOMPARE(cell("LATER", 0, M::WarningRole).toString(),
             "<font color='red'>Элемент создан в более поздней версии Гравис-3D</font>");
    QVERIFY(!cell("LATER", 0, Qt::DecorationRole).value<QIcon>().isNull());
    QVERIFY(cell("CONF2", 0, M::LaterVersionRole).toBool());
    QVERIFY(!cell("CONF", 0, M::LaterVersionRole).toBool());
    QVERIFY(cell("NEW2", 0, M::WarningRole).toString().isEmpty());
    QVERIFY(cell("NEW2", 0, Qt::DecorationRole).isNull());
}

void TestImportDialog::choicesDecideWhatIsKept_data()
{
    QTest::addColumn<QStringList>("steps"); // "ID:column" clicks, or "keep"/"replace" for all
    QTest::addColumn<QString>("count");
    QTest::addColumn<QStringList>("kept");
    QTest::newRow("defaults") << QStringList() << "3 из 5" << QStringList{"NEW1", "LATER", "NEW2"};
    QTest::newRow("a new one left out")
        << QStringList{"NEW1:2"} << "2 из 5" << QStringList{"LATER", "NEW2"};
    QTest::newRow("a new one left out and taken again")
        << QStringList{"NEW2:2", "NEW2:1"} << "3 из 5" << QStringList{"NEW1", "LATER", "NEW2"};
    QTest::newRow("one conflict replaced")
        << QStringList{"CONF2:2"} << "4 из 5" << QStringList{"NEW1", "LATER", "NEW2", "CONF2"};
    QTest::newRow("every conflict replaced")
        << QStringList{"replace"} << "5 из 5"
        << QStringList{"NEW1", "CONF", "LATER", "NEW2", "CONF2"};
    QTest::newRow("every conflict replaced, then one kept")
        << QStringList{"replace", "CONF:1"} << "4 из 5"
        << QStringList{"NEW1", "LATER", "NEW2", "CONF2"};
    QTest::newRow("one replaced, then every conflict kept")
        << QStringList{"CONF:2", "LATER:2", "keep"} << "2 из 5" << QStringList{"NEW1", "NEW2"};
}

void TestImportDialog::choicesDecideWhatIsKept()
{
    QFETCH(QStringList, steps);
    QFETCH(QString, count);
    QFETCH(QStringList, kept);
    auto opened = open(standardArchive());
    QVERIFY(opened);
    auto dialog = dialogFor(*opened);
    QTreeView* tree = dialog->findChild<QTreeView*>("treeWidget");
    for (const QString& step : steps) {
        if (step == "keep" || step == "replace") {
            auto* action = dialog->findChild<QAction*>(step == "keep" ? "keepAllMineAction"
                                                                      : "replaceAllImportedAction");
            QVERIFY(action);
            action->trigger();
        } else {
            clickChoice(tree, step);
        }
    }
    QCOMPARE(labelText(dialog.get(), "impCount"), "Количество элементов для импорта: " + count);
    click(dialog.get(), "okButton");
    QCOMPARE(dialog->result(), int(QDialog::Accepted));
    // What stays, in the archive's order.
    QCOMPARE(idsOf(opened->archive.records()), kept);
}

void TestImportDialog::comparisonSettlesTheRow_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<int>("start");      // the row's choice column before the comparison
    QTest::addColumn<QString>("button"); // pressed in the comparison
    QTest::addColumn<int>("checked");    // the row's checked choice column afterwards
    QTest::addColumn<bool>("replaceable");
    QTest::newRow("imported replaces") << "CONF" << 1 << "impButton" << 2 << true;
    QTest::newRow("mine keeps") << "CONF" << 2 << "mineButton" << 1 << true;
    QTest::newRow("close changes nothing") << "CONF" << 2 << "closeButton" << 2 << true;
    // A record of a later host version cannot replace mine.
    QTest::newRow("later version") << "CONF2" << 1 << "closeButton" << 1 << false;
}

void TestImportDialog::comparisonSettlesTheRow()
{
    QFETCH(QString, id);
    QFETCH(int, start);
    QFETCH(QString, button);
    QFETCH(int, checked);
    QFETCH(bool, replaceable);
    auto opened = open(standardArchive());
    QVERIFY(opened);
    auto dialog = dialogFor(*opened);
    QTreeView* tree = dialog->findChild<QTreeView*>("treeWidget");
    clickChoice(tree, id + ":" + QString::number(start));
    QString title;
    bool impEnabled = !replaceable;
    ModalAnswer answer([&](QWidget* compare) {
        title = compare->windowTitle();
        impEnabled = compare->findChild<QPushButton*>("impButton")->isEnabled();
        click(compare, button);
    });
    clickChoice(tree, id + ":" + QString::number(ImportDecisionModel::CompareColumn));
    QVERIFY(answer.answered());
    QCOMPARE(title, "Сравнение параметров пользовательских элементов");
    QCOMPARE(impEnabled, replaceable);
    QVERIFY(rowOf(tree, id, checked).data(ImportDecisionModel::CheckedRole).toBool());
    QVERIFY(!rowOf(tree, id, 3 - checked).data(ImportDecisionModel::CheckedRole).toBool());
    // The other conflict is left as it was.
    QVERIFY(rowOf(tree, id == "CONF" ? "CONF2" : "CONF", 1)
                .data(ImportDecisionModel::CheckedRole)
                .toBool());
    QCOMPARE(labelText(dialog.get(), "impCount"),
             QStringLiteral("Количество элементов для импорта: %1 из 5").arg(checked == 2 ? 4 : 3));
}

void TestImportDialog::hiddenRowsKeepTheirChoices_data()
{
    QTest::addColumn<bool>("conflictsOnly");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("shown");
    QTest::newRow("conflicts only") << true << "" << QStringList{"CONF", "CONF2"};
    QTest::newRow("id, letter case aside") << false << "new" << QStringList{"NEW1", "NEW2"};
    QTest::newRow("folder") << false << "Литые" << QStringList{"LATER"};
    QTest::newRow("conflicts with a text") << true << "2" << QStringList{"CONF2"};
    QTest::newRow("nothing matches") << false << "no such element" << QStringList();
}

void TestImportDialog::hiddenRowsKeepTheirChoices()
{
    QFETCH(bool, conflictsOnly);
    QFETCH(QString, text);
    QFETCH(QStringList, shown);
    auto opened = open(standardArchive());
    QVERIFY(opened);
    auto dialog = dialogFor(*opened);
    QTreeView* tree = dialog->findChild<QTreeView*>("treeWidget");
    clickChoice(tree, "NEW1:2");
    clickChoice(tree, "CONF:2");

    auto* showConf = dialog->findChild<QCheckBox*>("showConf");
    auto* filter = dialog->findChild<QLineEdit*>("filterEdit");
    QVERIFY(showConf && filter);
    showConf->setChecked(conflictsOnly);
    filter->setText(text); // typed: textChanged, as from the keyboard
    QCOMPARE(shownIds(tree), shown);
    QCOMPARE(labelText(dialog.get(), "impCount"), "Количество элементов для импорта: 3 из 5");

    showConf->setChecked(false);
    filter->clear();
    QCOMPARE(shownIds(tree), QStringList({"NEW1", "CONF", "LATER", "NEW2", "CONF2"}));
    QVERIFY(rowOf(tree, "NEW1", 2).data(ImportDecisionModel::CheckedRole).toBool());
    QVERIFY(rowOf(tree, "CONF", 2).data(ImportDecisionModel::CheckedRole).toBool());
    click(dialog.get(), "okButton");
    QCOMPARE(idsOf(opened->archive.records()), QStringList({"CONF", "LATER", "NEW2"}));
}

void TestImportDialog::checksTellTheirMessageAndOpenNoDialog_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("message");
    QTest::newRow("not an archive") << "garbage" << exchange::texts::notExportFile();
    QTest::newRow("no elements") << "empty"
                                 << "Файл не содержит пользовательских элементов";
    QTest::newRow("another library")
        << "other"
        << "Вы пытаетесь импортировать элементы, принадлежащие другой библиотеке.";
    QTest::newRow("everything present") << "present"
                                        << "Все импортируемые элементы присутствуют в базе.";
    QTest::newRow("no temporary folder")
        << "no folder"
        << "Не удалось записать временные файлы импорта в папку %1.\nНе удалось создать папку.";
}

void TestImportDialog::checksTellTheirMessageAndOpenNoDialog()
{
    QFETCH(QString, kind);
    QFETCH(QString, message);
    QString path = m_out->filePath("archive.uss");
    if (kind == "garbage") {
        ziptest::writeFile(path, "not a zip at all");
    } else if (kind == "empty") {
        emptyArchive(path, "TX", false);
    } else if (kind == "other") {
        emptyArchive(path, "VK", true);
    } else if (kind == "no folder") {
        emptyArchive(path, "TX", true);
    } else {
        es_stdsize_t* e = m_source->addElement("P", "F", "SAME");
        addAttribute(e, {"USS_LAST_CHANGE_DATE", 3, "04.03.2024"});
        addAttribute(m_target->addElement("P", "F", "SAME"),
                     {"USS_LAST_CHANGE_DATE", 3, "04.03.2024"});
        QVERIFY(ExportUss::Export(path, {e}, false));
    }
    const QString before = dump(m_target->addElement("Мои", "F", "KEEP"));
    const QByteArray tmp = qgetenv("TMPDIR");
    const auto restore = qScopeGuard([&] { qputenv("TMPDIR", tmp); });
    if (kind == "no folder") {
        // A file where the temporary folder should be: nothing can be made in it.
        ziptest::writeFile(m_out->filePath("tmp"), "not a folder");
        qputenv("TMPDIR", QFile::encodeName(m_out->filePath("tmp")));
        message = message.arg(QDir::toNativeSeparators(m_out->filePath("tmp")));
    }
    Play play;
    play.then("ImportUssDialog", [](QWidget* d) { d->close(); });
    QVERIFY(!exchange::runUssImport(m_target->provider, nullptr, scripted(path)));
    QCOMPARE(m_messages, QStringList{message});
    QVERIFY(play.seen.isEmpty());
    QCOMPARE(dump(m_target->find("Мои", "KEEP")), before);
    QVERIFY(!m_target->find("P", "X"));
}

void TestImportDialog::unknownCatalogThrowsBeforeTheChooser()
{
    TempCatalog unknown(QStringLiteral("user_zz"));
    QVERIFY(unknown.provider);
    exchange::ImportEnvironment environment = scripted(standardArchive());
    bool chooserOpened = false;
    environment.openFile = [&](QWidget*, const QString&, const QString&, const QString&) {
        chooserOpened = true;
        return QString();
    };
    try {
        exchange::runUssImport(unknown.provider, nullptr, environment);
        QFAIL("no exception");
    } catch (const std::runtime_error& e) {
        QCOMPARE(QString::fromUtf8(e.what()), "Unknown user database");
    }
    QVERIFY(!chooserOpened);
    QVERIFY(m_messages.isEmpty());
}

void TestImportDialog::chooserStartsInTheRememberedFolder_data()
{
    QTest::addColumn<QString>("remembered");
    QTest::addColumn<bool>("choose");
    QTest::newRow("nothing remembered, cancelled") << "" << false;
    QTest::newRow("remembered, cancelled") << "/srv/exchange/old" << false;
    QTest::newRow("remembered, chosen") << "/srv/exchange/old" << true;
}

void TestImportDialog::chooserStartsInTheRememberedFolder()
{
    QFETCH(QString, remembered);
    QFETCH(bool, choose);
    const QString path = choose ? emptyArchive(m_out->filePath("e.uss"), "TX", false) : QString();
    if (!remembered.isEmpty()) m_settings["uss_import_path"] = remembered;
    exchange::ImportEnvironment environment = scripted(path);
    QStringList chooser; // title, folder, filter
    environment.openFile = [&](QWidget*, const QString& title, const QString& folder,
                               const QString& filter) {
        chooser << title << folder << filter;
        return path;
    };
    QVERIFY(!exchange::runUssImport(m_target->provider, nullptr, environment));
    QCOMPARE(chooser.size(), 3);
    QCOMPARE(chooser[0], "Импорт пользовательских элементов");
    QCOMPARE(chooser[2], "Пользовательские элементы (*.uss);;Все файлы (*.*)");
    QCOMPARE(chooser[1], remembered.isEmpty()
                             ? QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation)
                             : remembered);
    // The chosen file's folder is kept; a cancelled choice changes nothing and says nothing.
    QCOMPARE(m_settings.value("uss_import_path"),
             choose ? QFileInfo(path).absolutePath() : remembered);
    QCOMPARE(m_messages.size(), choose ? 1 : 0);
}

void TestImportDialog::unreadableHostVersionIsToldAndMarksNothing()
{
    exchange::ImportEnvironment environment = scripted(standardArchive());
    environment.hostVersion = [] { return QString(); };
    bool marked = true;
    Play play;
    play.then("ImportUssDialog", [&](QWidget* d) {
        auto* tree = d->findChild<QTreeView*>("treeWidget");
        marked = rowOf(tree, "LATER", 0).data(ImportDecisionModel::LaterVersionRole).toBool();
        click(d, "cancelButton");
    });
    QVERIFY(!exchange::runUssImport(m_target->provider, nullptr, environment));
    QCOMPARE(play.seen, QStringList{"ImportUssDialog"});
    QCOMPARE(m_messages, QStringList{"Ошибка при определении версии Грависа"});
    QVERIFY(!marked);
}

// Choices made and then cancelled write nothing; the choices written on OK are the sandbox's
// import run (a conflict replaced by its comparison, a new element left out).
void TestImportDialog::cancelledDecisionsWriteNothing()
{
    const QString path = standardArchive();
    const QString before = dump(m_target->find("ПЭ_Трубы", "CONF"));
    Play play;
    play.then("ImportUssDialog", [](QWidget* d) {
        auto* tree = d->findChild<QTreeView*>("treeWidget");
        clickChoice(tree, "NEW2:2");
        clickChoice(tree, "CONF:2");
        click(d, "cancelButton");
    });
    QVERIFY(!exchange::runUssImport(m_target->provider, nullptr, scripted(path)));
    QCOMPARE(play.left(), 0);
    QVERIFY(m_messages.isEmpty());
    QVERIFY(m_questions.isEmpty());
    for (const char* id : {"NEW1", "LATER", "NEW2"})
        QVERIFY2(!m_target->find("ПЭ_Трубы", id), id);
    QCOMPARE(dump(m_target->find("ПЭ_Трубы", "CONF")), before);
}

void TestImportDialog::rowsAreGroupedByLibrary()
{
    // The library claims the pipes; the valves of another packet are claimed by none.
    QTemporaryDir root;
    QDir().mkpath(root.filePath("EngSys_TX/MarloDB"));
    ziptest::writeFile(root.filePath("EngSys_TX/MarloDB/PipingTX.xml"),
                       R"(<?xml version="1.0" encoding="utf-8"?>
<library name="Трубопроводы"><catalogs><catalog name="ПЭ_Трубы" view="table" grid="1"/>
</catalogs><commands><command name="piping"><subcommand name="s">
<uss-toolbar name="Пользовательские трубопроводы" catalog="ПЭ_Трубы"/></subcommand></command>
</commands></library>)");
    es_stdsize_t* valve = m_source->addElement("Арматура", "Краны", "VALVE");
    const QString path = standardArchive();
    QVERIFY(ExportUss::Export(
        path, {valve, m_source->find("ПЭ_Трубы", "NEW1"), m_source->find("ПЭ_Трубы", "CONF")},
        false));
    exchange::ImportEnvironment environment = scripted(path);
    environment.libraryRoot = root.path();
    QStringList libraries;
    QList<QStringList> rows;
    Play play;
    play.then("ImportUssDialog", [&](QWidget* d) {
        auto* tree = d->findChild<QTreeView*>("treeWidget");
        for (int g = 0; g < tree->model()->rowCount(); ++g)
            libraries << tree->model()->index(g, 0).data().toString();
        rows = groupedIds(tree);
        click(d, "cancelButton");
    });
    QVERIFY(!exchange::runUssImport(m_target->provider, nullptr, environment));
    QCOMPARE(libraries, QStringList({"Каталог: Трубопроводы    Команда: Пользовательские "
                                     "трубопроводы",
                                     "Каталог: Остальные"}));
    QCOMPARE(rows, QList<QStringList>({{"NEW1", "CONF"}, {"VALVE"}}));
}

void TestImportDialog::progressQuestionStopsOnlyOnCancel_data()
{
    QTest::addColumn<int>("at");     // records written when the user presses Escape
    QTest::addColumn<int>("answer"); // to the question, were it asked
    QTest::addColumn<bool>("asked");
    QTest::addColumn<QString>("message");
    QTest::addColumn<int>("written");
    const QString done = "Импорт пользовательских элементов завершен.";
    QTest::newRow("cancel stops") << 3 << int(QMessageBox::Cancel) << true
                                  << "Импорт прерван.\nИмпортировано 3 из 10." << 3;
    QTest::newRow("ok resumes") << 3 << int(QMessageBox::Ok) << true << done << 10;
    QTest::newRow("no answer resumes") << 3 << int(QMessageBox::NoButton) << true << done << 10;
    QTest::newRow("cancel before the first record")
        << 0 << int(QMessageBox::Cancel) << true << "Импорт прерван.\nИмпортировано 0 из 10." << 0;
    // On the last record nothing is asked: the dialog stays and the worker runs on.
    QTest::newRow("last record") << 9 << int(QMessageBox::Cancel) << false << done << 10;
}

void TestImportDialog::progressQuestionStopsOnlyOnCancel()
{
    QFETCH(int, at);
    QFETCH(int, answer);
    QFETCH(bool, asked);
    QFETCH(QString, message);
    QFETCH(int, written);
    exchange::ImportEnvironment environment = scripted(tenNewArchive());
    int doneAtQuestion = -1;
    exchange::ImportWorker* running = nullptr;
    environment.question = [&](QWidget*, const QString& text) {
        m_questions << text;
        doneAtQuestion = running->done();
        return QMessageBox::StandardButton(answer);
    };
    // The worker is held once `at` records are written (as the dialog's pause would hold
    // it) until the user's Escape has been handled.
    environment.prepareWorker = [&running, at](exchange::ImportWorker& worker) {
        running = &worker;
        if (at == 0) worker.setState(exchange::ImportWorker::Pause);
        QObject::connect(
            &worker, &exchange::ImportWorker::progress, &worker,
            [&worker, at](int done) {
                if (done == at) worker.setState(exchange::ImportWorker::Pause);
            },
            Qt::DirectConnection);
        QObject::connect(&worker, &exchange::ImportWorker::progress, &worker,
                         [&worker, at](int done) {
                             if (done != at) return;
                             QWidget* modal = QApplication::activeModalWidget();
                             QTest::keyClick(modal, Qt::Key_Escape);
                             if (at != 9) return;
                             // The refused Escape left the dialog up and the worker running.
                             QVERIFY(modal->isVisible());
                             QCOMPARE(worker.state(), int(exchange::ImportWorker::Run));
                         });
    };
    Play play;
    play.then("ImportUssDialog", [](QWidget* d) { click(d, "okButton"); });
    if (at == 0)
        play.then("ImportProgressDialog", [](QWidget* d) { QTest::keyClick(d, Qt::Key_Escape); });
    QCOMPARE(exchange::runUssImport(m_target->provider, nullptr, environment), written > 0);
    QCOMPARE(m_questions,
             asked ? QStringList{exchange::ImportProgressDialog::questionText()} : QStringList());
    if (asked) QCOMPARE(doneAtQuestion, at);
    QCOMPARE(m_messages, QStringList{message});
    for (int i = 0; i < 10; ++i)
        QCOMPARE(m_target->find("P", QStringLiteral("E%1").arg(i)) != nullptr, i < written);
}

void TestImportDialog::libraryQuestionBoxOffersOkOnlyAndResumes()
{
    exchange::ImportEnvironment environment = scripted(tenNewArchive());
    environment.question = {}; // the library's own message box
    environment.prepareWorker = [](exchange::ImportWorker& worker) {
        QObject::connect(
            &worker, &exchange::ImportWorker::progress, &worker,
            [&worker](int done) {
                if (done == 2) worker.setState(exchange::ImportWorker::Pause);
            },
            Qt::DirectConnection);
        QObject::connect(&worker, &exchange::ImportWorker::progress, &worker, [](int done) {
            if (done == 2) QApplication::activeModalWidget()->close();
        });
    };
    QString text, title = "unset";
    bool cancelOffered = true;
    Play play;
    play.then("ImportUssDialog", [](QWidget* d) { click(d, "okButton"); });
    play.then("aec_message_box", [&](QWidget* box) {
        text = labelText(box, "textLabel");
        title = box->windowTitle();
        cancelOffered = box->findChild<QPushButton*>("cancelButton") != nullptr;
        click(box, "okButton");
    });
    QVERIFY(exchange::runUssImport(m_target->provider, nullptr, environment));
    QCOMPARE(play.left(), 0);
    QCOMPARE(text, "Вы действительно хотите прервать импорт пользовательских элементов?");
    QCOMPARE(title, QString());
    QVERIFY(!cancelOffered);
    QCOMPARE(m_messages, QStringList{"Импорт пользовательских элементов завершен."});
    QVERIFY(m_target->find("P", "E9"));
}

void TestImportDialog::refusedWritesAreCountedAndExplained()
{
    exchange::ImportEnvironment environment = scripted(tenNewArchive());
    // The catalog refuses every write, as a full disk would.
    environment.prepareWorker = [](exchange::ImportWorker& worker) { worker.failWriteAt(1, true); };
    Play play;
    play.then("ImportUssDialog", [](QWidget* d) { click(d, "okButton"); });
    const bool result = exchange::runUssImport(m_target->provider, nullptr, environment);
    int present = 0;
    for (int i = 0; i < 10; ++i)
        present += m_target->find("P", QStringLiteral("E%1").arg(i)) != nullptr;
    QCOMPARE(present, 0);
    QVERIFY(!result);
    QVERIFY(m_questions.isEmpty());
    // The count of what stands, then why the rest does not.
    QCOMPARE(m_messages.size(), 2);
    QCOMPARE(m_messages[0], "Импорт прерван.\nИмпортировано 0 из 10.");
    QVERIFY2(m_messages[1].contains(QStringLiteral("не записан")), qPrintable(m_messages[1]));
}

QTEST_MAIN(TestImportDialog)
#include "tst_import_dialog.moc"
