#include "editor_fixture.h"

#include "catalog/catalog_tree.h"
#include "catalog/stdsize.h"
#include "catalog/view_folders.h"
#include "catalog/xml_controls.h"
#include "editor/edit_session.h"
#include "editor/parameter_panel.h"
#include "editor/property_tree.h"
#include "editor/uss_dialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QToolButton>
#include <QtTest>

#include <memory>

using namespace edw;

namespace {

struct Setup
{
    Setup() : commands(catalog.writeFile("uss_lib.xml", testing::commandsXml)) {}

    std::unique_ptr<UssDialog> dialog(es_stdsize_t* source, const QStringList& names,
                                      unsigned mode = 0, int discipline = 0,
                                      const QString& selection = {}, const QString& category = {},
                                      const QString& file = {}, const QString& work = {})
    {
        ControlList panel = readControlList(commands, names.size() == 1 ? names[0] : "pipe");
        return std::make_unique<UssDialog>(nullptr, source, panel, file.isEmpty() ? commands : file,
                                           names, selection, QString(), mode,
                                           work.isEmpty() ? catalog.dir.filePath("work") : work,
                                           category, false, discipline, script.environment());
    }

    EditRequest request(es_stdsize_t* source, unsigned mode)
    {
        EditRequest r;
        r.provider = catalog.provider;
        r.mode = mode;
        r.packet = "ПЭ_Трубы";
        r.elementId = CStdSize(source).id();
        r.commandsFile = commands;
        r.commands = {"pipe"};
        r.workRoot = catalog.dir.filePath("work");
        return r;
    }

    testing::TempCatalog catalog;
    QString commands;
    testing::ScriptedEnvironment script;
};

template <typename T> T* child(QWidget* dialog, const QString& name)
{
    T* widget = dialog->findChild<T*>(name);
    if (!widget) qWarning("no widget %s", qPrintable(name));
    return widget;
}

void click(QWidget* dialog, const QString& name)
{
    QTest::mouseClick(child<QAbstractButton>(dialog, name), Qt::LeftButton);
}

int countElements(es_provider_t* provider)
{
    int count = 0;
    std::function<void(es_folder_t*)> walk = [&](es_folder_t* folder) {
        count += int(table_GetStdSizeCount(folder_GetTable(folder)));
        for (const auto& [name, sub] : childFolders(folder))
            walk(sub);
    };
    for (const auto& [name, packet] : packets(provider))
        walk(packet_GetRootFolder(packet));
    return count;
}

// Kinds of the element's views as "projectionType/viewType", model as "model".
QStringList viewsOf(es_stdsize_t* element)
{
    QStringList views;
    es_projections_t* list = stdsize_GetProjections(element);
    for (uint32_t i = 0; i < projections_GetProjectioCount(list); ++i) {
        es_projection_t* p = projections_GetProjection(list, i);
        views << QStringLiteral("%1/%2").arg(projection_GetType(p)).arg(projection_GetViewType(p));
    }
    if (!model_IsEmpty(stdsize_GetModel(element))) views << "model";
    views.sort();
    return views;
}

} // namespace

class UssDialogTest : public QObject
{
    Q_OBJECT

private slots:
    void titleFollowsMode_data();
    void titleFollowsMode();
    void specificationLayoutLeavesTwoViews();
    void categoriesOfACommand_data();
    void categoriesOfACommand();
    void originalsAreExtractedAndOffered();
    void originalIsUnloadedWithoutAWorkingCopy();
    void unreadableDescriptionIsReported();
    void acceptChecksStopWithTheirWarning_data();
    void acceptChecksStopWithTheirWarning();
    void refusedFileKeepsTheSlot();
    void chosenFileIsRememberedAndShown();
    void panelValuesGoBackToControls();
    void roundTripsWriteTheCatalog_data();
    void roundTripsWriteTheCatalog();
    void cancelWritesNothing();
};

void UssDialogTest::titleFollowsMode_data()
{
    QTest::addColumn<unsigned>("mode");
    QTest::addColumn<QString>("title");
    QTest::newRow("create") << 0u << "Создание пользовательского элемента";
    QTest::newRow("clone") << 1u << "Создание пользовательского элемента по образцу";
    QTest::newRow("edit") << 2u << "Редактирование пользовательского элемента";
    QTest::newRow("other") << 3u << "";
}

void UssDialogTest::titleFollowsMode()
{
    QFETCH(unsigned, mode);
    QFETCH(QString, title);
    Setup setup;
    auto dialog = setup.dialog(nullptr, {"pipe"}, mode);
    QCOMPARE(dialog->windowTitle(), title);
    // Without a source the original cannot be chosen; the first slot is current.
    QVERIFY(child<QRadioButton>(dialog.get(), "qViewPreFileRadio")->isHidden());
    QVERIFY(!child<QRadioButton>(dialog.get(), "qViewSelectionRadio")->isHidden());
    QVERIFY(child<QToolButton>(dialog.get(), "qCTop")->isChecked());
    QVERIFY(child<QRadioButton>(dialog.get(), "qViewNoneRadio")->isChecked());
}

void UssDialogTest::specificationLayoutLeavesTwoViews()
{
    Setup setup;
    auto dialog = setup.dialog(nullptr, {"pipe"}, 0, 2);
    QStringList enabled;
    for (int i = 0; i < kViewSlotCount; ++i) {
        const QString name = QString::fromLatin1(viewSlotSpec(i).button);
        if (child<QToolButton>(dialog.get(), name)->isEnabled()) enabled << name;
    }
    enabled.sort();
    QCOMPARE(enabled, QStringList({"qM3dBut", "qSTop"}));
    QVERIFY(child<QToolButton>(dialog.get(), "qSTop")->isChecked());
    QVERIFY(child<QComboBox>(dialog.get(), "qCategoryBox")->isHidden());
    QVERIFY(child<QLabel>(dialog.get(), "qCategoryBoxLabel")->isHidden());
    auto* first = child<QComboBox>(dialog.get(), "esSpecPartFirst");
    auto* second = child<QComboBox>(dialog.get(), "esSpecPartSecond");
    QCOMPARE(first->count(), 4);
    QCOMPARE(first->currentIndex(), -1);
    first->setCurrentText("Детали трубопроводов");
    QCOMPARE(second->count(), 19);
    QCOMPARE(second->itemText(18), QString("Штуцеры"));
}

void UssDialogTest::categoriesOfACommand_data()
{
    QTest::addColumn<QStringList>("commands");
    QTest::addColumn<QString>("category");
    QTest::addColumn<int>("command");
    QTest::addColumn<QStringList>("items");
    QTest::addColumn<bool>("enabled");
    QTest::addColumn<int>("current");
    const QStringList pipe{"pipe"};
    const QStringList both{"Трубы напорные", "Трубы безнапорные"};
    QTest::newRow("one command, two categories") << pipe << QString() << 0 << both << true << -1;
    QTest::newRow("named category preselected") << pipe << both[1] << 0 << both << true << 1;
    QTest::newRow("near name not preselected") << pipe << "Трубы" << 0 << both << true << -1;
    QTest::newRow("dash category")
        << QStringList{"valve"} << QString() << 0 << QStringList{""} << false << 0;
    QTest::newRow("two commands: none chosen")
        << QStringList{"pipe", "valve"} << both[0] << -1 << QStringList() << false << -1;
    QTest::newRow("no categoryList")
        << QStringList{"bare"} << QString() << -1 << QStringList() << false << -1;
}

void UssDialogTest::categoriesOfACommand()
{
    QFETCH(QStringList, commands);
    QFETCH(QString, category);
    QFETCH(int, command);
    QFETCH(QStringList, items);
    QFETCH(bool, enabled);
    QFETCH(int, current);
    Setup setup;
    auto dialog = setup.dialog(nullptr, commands, 0, 0, {}, category);
    auto* commandBox = child<QComboBox>(dialog.get(), "qCommandBox");
    auto* box = child<QComboBox>(dialog.get(), "qCategoryBox");
    QCOMPARE(commandBox->currentIndex(), command);
    QStringList shown;
    for (int i = 0; i < box->count(); ++i)
        shown << box->itemText(i);
    QCOMPARE(shown, items);
    QCOMPARE(box->isEnabled(), enabled);
    QCOMPARE(box->currentIndex(), current);
    if (current >= 0 && items.size() == 2) {
        QCOMPARE(box->currentData().toString(), QString("9"));
        QCOMPARE(box->itemData(0, kCategoryPrefixRole).toString(), QString("E"));
        QCOMPARE(box->itemData(1, kCategoryPrefixRole).toString(), QString(""));
    }
    QVERIFY(setup.script.warnings.isEmpty());
}

void UssDialogTest::unreadableDescriptionIsReported()
{
    Setup setup;
    // The panel comes from the good file; the categories are read from a broken one.
    const QString broken = setup.catalog.writeFile("broken.xml", "<commands><command name=");
    auto dialog = setup.dialog(nullptr, {"pipe"}, 0, 0, {}, {}, broken);
    QCOMPARE(setup.script.warnings.size(), 1);
    QVERIFY2(setup.script.warnings[0].startsWith("Ошибка чтения xml\nfile: " + broken + "\ndesc: "),
             qPrintable(setup.script.warnings[0]));
    QVERIFY(setup.script.warnings[0].contains("\noffset: "));
    QCOMPARE(child<QComboBox>(dialog.get(), "qCategoryBox")->count(), 0);
    QVERIFY(!child<QComboBox>(dialog.get(), "qCategoryBox")->isEnabled());
}

void UssDialogTest::originalsAreExtractedAndOffered()
{
    Setup setup;
    es_stdsize_t* source = testing::sourceElement(setup.catalog);
    auto dialog = setup.dialog(source, {"pipe"}, 1);
    const auto& all = dialog->viewSlots();
    QStringList originals;
    for (const ViewSlot& slot : all) {
        if (!slot.originalPath.isEmpty()) originals << QFileInfo(slot.originalPath).fileName();
        QCOMPARE(slot.state, slot.originalPath.isEmpty() ? int(SourceNone) : int(SourceOriginal));
    }
    QCOMPARE(originals, QStringList({"clone_1.frw", "clone_10.frw", "clone_11.m3d"}));
    // The first slot with an original is current; the selection radio is hidden.
    QVERIFY(child<QToolButton>(dialog.get(), "qCFront")->isChecked());
    QVERIFY(child<QRadioButton>(dialog.get(), "qViewPreFileRadio")->isChecked());
    QVERIFY(child<QRadioButton>(dialog.get(), "qViewSelectionRadio")->isHidden());
    QVERIFY(child<QCheckBox>(dialog.get(), "projectSurfacesCheck")->isChecked());
    QVERIFY(!child<QCheckBox>(dialog.get(), "useModelColorCheck")->isChecked());
    QVERIFY(child<QGroupBox>(dialog.get(), "modelGroup")->isEnabled());
    // Writing the original to disk copies it where the user says.
    const QString saved = setup.catalog.dir.filePath("out/front.frw");
    QDir().mkpath(QFileInfo(saved).absolutePath());
    setup.script.chosen << saved;
    click(dialog.get(), "qViewPreFileBut");
    QCOMPARE(setup.script.chooserTitles, QStringList{"Сохранить фрагмент"});
    QFile file(saved);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), testing::svgDocument);
    QCOMPARE(setup.script.settings.value("FragmentPath"), QFileInfo(saved).absolutePath());
}

void UssDialogTest::originalIsUnloadedWithoutAWorkingCopy()
{
    // The working folder cannot be made (a file stands in its way): the original is still
    // offered, and unloading it writes the element's image from the catalog.
    Setup setup;
    es_stdsize_t* source = testing::sourceElement(setup.catalog);
    const QString blocker = setup.catalog.writeFile("blocker", "not a folder");
    auto dialog = setup.dialog(source, {"pipe"}, 1, 0, {}, {}, {}, QDir(blocker).filePath("work"));
    QVERIFY(child<QRadioButton>(dialog.get(), "qViewPreFileRadio")->isChecked());
    const QString saved = setup.catalog.dir.filePath("front.frw");
    setup.script.chosen << saved;
    click(dialog.get(), "qViewPreFileBut");
    QFile file(saved);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), testing::svgDocument);
    QVERIFY(!QFileInfo::exists(QDir(blocker).filePath("work")));
}

void UssDialogTest::acceptChecksStopWithTheirWarning_data()
{
    QTest::addColumn<QStringList>("commands");
    QTest::addColumn<int>("discipline");
    QTest::addColumn<QStringList>("clicks");
    QTest::addColumn<QString>("category");
    QTest::addColumn<QString>("warning");
    QTest::addColumn<int>("tab");
    QTest::newRow("no command") << QStringList{"pipe", "valve"} << 0 << QStringList() << QString()
                                << "Невозможно создать элемент, выберите команду" << 1;
    QTest::newRow("no category") << QStringList{"pipe"} << 0 << QStringList() << QString()
                                 << "Невозможно создать элемент, выберите категорию" << 1;
    QTest::newRow("required views missing")
        << QStringList{"pipe"} << 0 << QStringList() << "Трубы напорные"
        << "Невозможно создать элемент, задайте изображение: Сверху, 3D Деталь" << 0;
    QTest::newRow("one required view missing")
        << QStringList{"pipe"} << 0 << QStringList{"qCTop"} << "Трубы напорные"
        << "Невозможно создать элемент, задайте изображение: 3D Деталь" << 0;
    QTest::newRow("no view at all")
        << QStringList{"valve"} << 0 << QStringList() << QString()
        << "Невозможно создать элемент, задайте изображение хотя бы для одной проекции элемента"
        << 0;
    QTest::newRow("unknown view named")
        << QStringList{"odd"} << 0 << QStringList() << QString()
        << "Неизвестное название изображения 'Сбоку' указано в xml '%1', command = 'odd'" << 0;
    QTest::newRow("specification parts")
        << QStringList{"valve"} << 3 << QStringList{"qSTop"} << QString()
        << "Невозможно создать элемент, выберите разделы спецификации" << 1;
    QTest::newRow("zero length") << QStringList{"pipe"} << 0 << QStringList{"qCTop", "qM3dBut"}
                                 << "Трубы напорные"
                                 << "Свойство \"Длина\" не должно быть нулевым" << 1;
}

void UssDialogTest::acceptChecksStopWithTheirWarning()
{
    QFETCH(QStringList, commands);
    QFETCH(int, discipline);
    QFETCH(QStringList, clicks);
    QFETCH(QString, category);
    QFETCH(QString, warning);
    QFETCH(int, tab);
    Setup setup;
    const QString selection = setup.catalog.writeFile("selection.frw", testing::svgDocument);
    auto dialog = setup.dialog(nullptr, commands, 0, discipline, {}, category);
    // A command without a panel is not preselected: the user picks it.
    auto* commandBox = child<QComboBox>(dialog.get(), "qCommandBox");
    if (commands.size() == 1 && commandBox->currentIndex() < 0) commandBox->setCurrentIndex(0);
    // Each clicked slot gets the selection as a file.
    for (const QString& name : clicks) {
        click(dialog.get(), name);
        setup.script.chosen << selection;
        click(dialog.get(), "qViewFileBut");
    }
    auto* tabs = child<QTabWidget>(dialog.get(), "qViewTab");
    tabs->setCurrentIndex(1 - tab);
    click(dialog.get(), "okButton");
    QCOMPARE(setup.script.warnings.size(), 1);
    QCOMPARE(setup.script.warnings[0],
             warning.contains("%1") ? warning.arg(setup.commands) : warning);
    QCOMPARE(tabs->currentIndex(), tab);
    QCOMPARE(dialog->result(), int(QDialog::Rejected));
}

void UssDialogTest::refusedFileKeepsTheSlot()
{
    Setup setup;
    const QString newer = setup.catalog.writeFile("newer.frw", testing::svgDocument);
    const QString selection = setup.catalog.writeFile("sel.frw", testing::svgDocument);
    auto dialog = setup.dialog(nullptr, {"pipe"}, 0, 0, selection);
    // The selection fills the current slot at start.
    QVERIFY(child<QRadioButton>(dialog.get(), "qViewSelectionRadio")->isChecked());
    setup.script.refused << newer;
    setup.script.chosen << newer;
    click(dialog.get(), "qViewFileBut");
    QCOMPARE(setup.script.warnings,
             QStringList{"Невозможно открыть документ, так как он создан в более поздней версии "
                         "ГРАВИС-3D"});
    QCOMPARE(dialog->viewSlots()[0].state, int(SourceSelection));
    QVERIFY(dialog->viewSlots()[0].filePath.isEmpty());
    QVERIFY(setup.script.settings.isEmpty());
}

void UssDialogTest::chosenFileIsRememberedAndShown()
{
    Setup setup;
    const QString model = setup.catalog.writeFile("part.m3d", testing::svgDocument);
    auto dialog = setup.dialog(nullptr, {"pipe"});
    click(dialog.get(), "qM3dBut");
    setup.script.chosen << model;
    click(dialog.get(), "qViewFileBut");
    QCOMPARE(setup.script.chooserTitles, QStringList{"Выбрать деталь"});
    QCOMPARE(setup.script.settings.value("3DModelPath"), QFileInfo(model).absolutePath());
    QVERIFY(!setup.script.settings.contains("FragmentPath"));
    QCOMPARE(child<QLineEdit>(dialog.get(), "qViewFileEdit")->text(), model);
    QVERIFY(child<QRadioButton>(dialog.get(), "qViewFileRadio")->isChecked());
    QVERIFY(!child<QLabel>(dialog.get(), "qViewImage")->pixmap().isNull());
    // Back to another view and again: each slot keeps its own state.
    click(dialog.get(), "qCTop");
    QVERIFY(child<QRadioButton>(dialog.get(), "qViewNoneRadio")->isChecked());
    QVERIFY(child<QLineEdit>(dialog.get(), "qViewFileEdit")->text().isEmpty());
    click(dialog.get(), "qM3dBut");
    QVERIFY(child<QRadioButton>(dialog.get(), "qViewFileRadio")->isChecked());
    click(dialog.get(), "qViewNoneRadio");
    QCOMPARE(dialog->viewSlots()[kModelSlot].state, int(SourceNone));
}

void UssDialogTest::panelValuesGoBackToControls()
{
    Setup setup;
    auto dialog = setup.dialog(nullptr, {"pipe"});
    PropertyTree* tree = dialog->parameterPanel()->tree();
    // Groups in order, the post-hide one hidden; read-only and required rows.
    QCOMPARE(tree->topLevelItemCount(), 3);
    QVERIFY(!tree->topLevelItem(0)->isHidden());
    QVERIFY(tree->topLevelItem(2)->isHidden());
    QVERIFY(PropertyTree::isReadOnly(tree->findProperty("Code")));
    QVERIFY(!PropertyTree::isReadOnly(tree->findProperty("Wall")));
    QCOMPARE(tree->findProperty("Wall")->toolTip(1), QString("мм"));
    QCOMPARE(tree->findProperty("Diameter")->text(0), QString("Диаметр *"));

    // A real typed with a comma in the editor the tree opens for it.
    QTreeWidgetItem* wall = tree->findProperty("Wall");
    tree->setCurrentItem(wall, 1);
    tree->editItem(wall, 1);
    auto* spin = tree->findChild<QDoubleSpinBox*>("Wall");
    QVERIFY(spin);
    QVERIFY(spin->inherits("qt::DoubleDotSpinBox"));
    auto* line = spin->findChild<QLineEdit*>();
    line->selectAll();
    QTest::keyClicks(line, "4,25");
    dialog->parameterPanel()->commit();
    QCOMPARE(tree->value("Wall").toDouble(), 4.25);

    tree->setValue("Diameter", 40);
    tree->findProperty("Insulated")->setCheckState(1, Qt::Unchecked);
    tree->setValue("Material", "Сталь");
    QHash<QString, QVariant> values;
    for (const PanelParameter& p : dialog->parameterPanel()->values())
        values[p.name] = p.value;
    QCOMPARE(values["Wall"].toDouble(), 4.25);
    QCOMPARE(values["Diameter"].toInt(), 40);
    QCOMPARE(values["Insulated"].toBool(), false);
    QCOMPARE(values["Material"].toString(), QString("Сталь"));
    QCOMPARE(values["Code"].toString(), QString("K-1"));
    QCOMPARE(values.size(), 8);
}

void UssDialogTest::roundTripsWriteTheCatalog_data()
{
    QTest::addColumn<unsigned>("mode");
    QTest::newRow("create") << 0u;
    QTest::newRow("clone") << 1u;
    QTest::newRow("edit") << 2u;
}

void UssDialogTest::roundTripsWriteTheCatalog()
{
    QFETCH(unsigned, mode);
    Setup setup;
    testing::RecordingMessenger messages;
    testing::FakeHost host;
    host.userFolder = setup.catalog.dir.filePath("user");
    es_stdsize_t* source = testing::sourceElement(setup.catalog);
    const QString top = setup.catalog.writeFile("top.frw", testing::svgDocument);
    const QString part = setup.catalog.writeFile("part.m3d", testing::svgDocument);
    const int before = countElements(setup.catalog.provider);

    EditRequest request = setup.request(source, mode);
    request.category = "Трубы безнапорные";
    request.requestText = "round";

    QString written;
    const bool ok = runElementEditor(request, nullptr, setup.script.environment(), &written,
                                     [&](UssDialog& dialog) {
                                         // Top view from a file, the model from a file when there
                                         // is none; the front view of the source is dropped.
                                         click(&dialog, "qCTop");
                                         setup.script.chosen << top;
                                         click(&dialog, "qViewFileBut");
                                         click(&dialog, "qM3dBut");
                                         if (mode == 0) {
                                             setup.script.chosen << part;
                                             click(&dialog, "qViewFileBut");
                                         }
                                         if (mode != 0) {
                                             click(&dialog, "qCFront");
                                             click(&dialog, "qViewNoneRadio");
                                         }
                                         PropertyTree* tree = dialog.parameterPanel()->tree();
                                         tree->setValue("Length", 2500.5);
                                         tree->setValue("Name", "Труба " + QString::number(mode));
                                         click(&dialog, "okButton");
                                         return dialog.result();
                                     });
    QVERIFY2(ok, qPrintable(setup.script.warnings.join("; ") + messages.texts.join("; ")));
    QVERIFY(setup.script.warnings.isEmpty());
    QCOMPARE(countElements(setup.catalog.provider), before + (mode == 2 ? 0 : 1));

    es_stdsize_t* element =
        packet_FindStdSize(packets(setup.catalog.provider)["ПЭ_Трубы"], toEs(written).c_str());
    QVERIFY(element);
    QCOMPARE(element == source, mode == 2);
    if (mode != 2) QVERIFY(written.endsWith("#round"));
    const CStdSize stored(element);
    QCOMPARE(stored.type(), QString("pipe"));
    QCOMPARE(stored.value("Length"), QString("2500.5"));
    QCOMPARE(stored.value("Name"), "Труба " + QString::number(mode));
    // The panel came from the source when there is one, from the description otherwise.
    QCOMPARE(stored.value("Diameter"), mode == 0 ? QString("32") : QString("63"));
    QCOMPARE(stored.value("USS_CATEGORY_NAME"), QString("Трубы безнапорные"));
    QCOMPARE(stored.value("USS_CATEGORY_ID"), QString("9"));
    QCOMPARE(stored.value("ProjectSurfaces"), mode == 0 ? QString("0") : QString("1"));
    QVERIFY(!stored.value("USS_AUTHOR").isEmpty());
    QVERIFY(!stored.value("USS_LAST_CHANGE_DATE").isEmpty());
    // Top view (1/0) and the model everywhere; the drawing view (1/2) kept from the source.
    QCOMPARE(viewsOf(element),
             mode == 0 ? QStringList({"1/0", "model"}) : QStringList({"1/0", "1/2", "model"}));
    if (mode == 1) QCOMPARE(viewsOf(source), QStringList({"1/2", "2/0", "model"}));
    // The folders of the chosen files are remembered by view kind for the next session.
    ViewFolders folders;
    loadViewFolders(folders);
    QCOMPARE(folders[0], QFileInfo(top).absolutePath());
    QCOMPARE(folders[11], mode == 0 ? QFileInfo(part).absolutePath() : QString());
    QCOMPARE(folders[5], QString());
    // The working folder is gone.
    QCOMPARE(QDir(request.workRoot).entryList(QDir::NoDotAndDotDot | QDir::AllEntries),
             QStringList());
}

void UssDialogTest::cancelWritesNothing()
{
    Setup setup;
    es_stdsize_t* source = testing::sourceElement(setup.catalog);
    const int before = countElements(setup.catalog.provider);
    const EditRequest request = setup.request(source, 2);
    bool extracted = false;
    const bool ok = runElementEditor(request, nullptr, setup.script.environment(), nullptr,
                                     [&](UssDialog& dialog) {
                                         extracted = !dialog.viewSlots()[1].originalPath.isEmpty();
                                         dialog.parameterPanel()->tree()->setValue("Length", 7.0);
                                         click(&dialog, "qCFront");
                                         click(&dialog, "qViewNoneRadio");
                                         click(&dialog, "cancelButton");
                                         return dialog.result();
                                     });
    QVERIFY(!ok);
    QVERIFY(extracted);
    QCOMPARE(countElements(setup.catalog.provider), before);
    QCOMPARE(CStdSize(source).value("Length"), QString("1000"));
    QCOMPARE(viewsOf(source), QStringList({"1/2", "2/0", "model"}));
    QCOMPARE(QDir(request.workRoot).entryList(QDir::NoDotAndDotDot | QDir::AllEntries),
             QStringList());
}

QTEST_MAIN(UssDialogTest)
#include "tst_uss_dialog.moc"
