// The comparison and property views of import, driven by object name: view buttons, their
// icons and properties, previews drawn by the sandbox host, parameter rows and the choices.

#include "temp_catalog.h"

#include "compare_uss_dialog.h"
#include "compare_views.h"
#include "exportuss.h"
#include "resources/compare_icon_painter.h"
#include "show_prop_uss_dialog.h"

#include <look/look.h>

#include "host_state.h"

#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>
#include <QToolButton>
#include <QTreeWidget>

#include <functional>
#include <memory>

using exchange::CompareUssDialog;
using exchange::ImportArchive;
using exchange::ImportElement;
using exchange::ShowPropUssDialog;
using testing::Attr;
using testing::TempCatalog;

namespace {

const QString kPacket = QStringLiteral("ПЭ_Трубы");
const QString kId = QStringLiteral("E-1");

// A host document whose lines stand for the given layers: distinct layer lists give distinct
// files (and digests).
QString document(const TempCatalog& catalog, const QString& name, const QList<int>& layers,
                 int version = sandbox::host_document_version)
{
    const QString path = catalog.dir.filePath(name);
    return sandbox::write_sample_document(path, layers, {}, version) ? path : QString();
}

bool sameImage(const QIcon& icon, const QString& resource)
{
    return icon.pixmap(32, 32).toImage().convertToFormat(QImage::Format_ARGB32) ==
           QIcon(resource).pixmap(32, 32).toImage().convertToFormat(QImage::Format_ARGB32);
}

// The mean lightness of a picture, 0 black to 255 white.
int lightness(const QImage& image)
{
    qint64 sum = 0;
    for (int y = 0; y < image.height(); y += 2) {
        for (int x = 0; x < image.width(); x += 2)
            sum += qGray(image.pixel(x, y));
    }
    return int(sum / ((image.height() + 1) / 2 * qint64((image.width() + 1) / 2)));
}

// The element of the archive (theirs) and the catalog's element of the same packet and id
// (mine), with views chosen so that every case of a view slot occurs once:
//   qCTop both the same, qCFront both but different, qCLeft mine only, qSFront theirs only,
//   qGostBut theirs made by a later host version, the model the same on both sides, the other
//   slots on neither side.
struct Sides
{
    TempCatalog theirs;
    TempCatalog mine;
    es_stdsize_t* theirElement = nullptr;
    es_stdsize_t* mineElement = nullptr;
    std::unique_ptr<ImportArchive> archive = std::make_unique<ImportArchive>();

    Sides()
    {
        theirElement = theirs.addElement(kPacket, QStringLiteral("Напорные"), kId);
        mineElement = mine.addElement(kPacket, QStringLiteral("Напорные"), kId);
        const QString a = document(theirs, "a.frw", {1});
        testing::addProjection(theirElement, "top", a, {}, 1, 0);
        testing::addProjection(theirElement, "front", document(theirs, "b.frw", {1, 2}), {}, 2, 0);
        testing::addProjection(theirElement, "sfront", document(theirs, "d.frw", {4}), {}, 2, 1);
        testing::addProjection(theirElement, "gost",
                               document(theirs, "e.frw", {5}, sandbox::host_document_version + 1),
                               {}, 1, 2);
        testing::setModel(theirElement, document(theirs, "m.m3d", {7, 8}), {}, "model", 1);

        testing::addProjection(mineElement, "top", document(mine, "a.frw", {1}), {}, 1, 0);
        testing::addProjection(mineElement, "front", document(mine, "b2.frw", {2, 3}), {}, 2, 0);
        testing::addProjection(mineElement, "left", document(mine, "c.frw", {3}), {}, 4, 0);
        testing::addProjection(mineElement, "gost", document(mine, "g.frw", {6}), {}, 1, 2);
        testing::setModel(mineElement, document(mine, "m.m3d", {7, 8}), {}, "model", 1);
    }

    // Exports theirs and opens the archive for the catalog `target`.
    bool open(es_provider_t* target)
    {
        const QString path = theirs.dir.filePath(QStringLiteral("out.uss"));
        return ExportUss::Export(path, {theirElement}, false) &&
               archive->open(path, target) == ImportArchive::Status::Ok &&
               archive->records().size() == 1;
    }
    ImportElement record() const { return archive->element(archive->records().front()); }
};

template <class T> T* child(QWidget* dialog, const QString& name)
{
    T* found = dialog->findChild<T*>(name);
    if (!found) qWarning("no %s", qPrintable(name));
    return found;
}

} // namespace

class CompareDialogTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void viewSlots_data();
    void viewSlots();
    void modelSlot_data();
    void modelSlot();
    void identicalElementsCarryNoWarning();
    void parameterRows_data();
    void parameterRows();
    void rowsAlternateGrey();
    void choice_data();
    void choice();
    void propertyView();
    void resourcePicturesAreTheDrawnOnes();
    void pictures();
};

void CompareDialogTest::init()
{
    qt::set_theme_source([] { return 0; });
}

void CompareDialogTest::viewSlots_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("icon"); // resource the button shows; empty when disabled
    QTest::addColumn<bool>("importedPicture");
    QTest::addColumn<bool>("minePicture");
    QTest::addColumn<bool>("filesGone"); // both files unreadable before the view is chosen
    QTest::newRow("same on both sides") << "qCTop"
                                        << ":/clean/up.png" << true << true << false;
    QTest::newRow("different") << "qCFront"
                               << ":/red/f.png" << true << true << false;
    QTest::newRow("mine only") << "qCLeft"
                               << ":/red/left.png" << false << true << false;
    QTest::newRow("imported only") << "qSFront"
                                   << ":/red/s_f.png" << true << false << false;
    QTest::newRow("imported made by a later version") << "qGostBut"
                                                      << ":/red/gost.png" << false << true << false;
    QTest::newRow("model") << "qM3dBut"
                           << ":/clean/3d.png" << true << true << false;
    QTest::newRow("both files unreadable") << "qCFront"
                                           << ":/red/f.png" << false << false << true;
    QTest::newRow("neither side") << "qCBack"
                                  << "" << false << false << false;
    QTest::newRow("neither, simplified") << "qSTop"
                                         << "" << false << false << false;
}

void CompareDialogTest::viewSlots()
{
    QFETCH(QString, button);
    QFETCH(QString, icon);
    QFETCH(bool, importedPicture);
    QFETCH(bool, minePicture);
    QFETCH(bool, filesGone);
    Sides sides;
    QVERIFY(sides.open(sides.mine.provider));
    CompareUssDialog dialog(sides.mineElement, sides.record(), *sides.archive, false);
    auto* view = child<QToolButton>(&dialog, button);
    QVERIFY(view);
    QCOMPARE(view->isEnabled(), !icon.isEmpty());
    QVERIFY(sameImage(child<QTabWidget>(&dialog, "tabWidget")->tabIcon(0), ":/vznak.png"));
    if (icon.isEmpty()) return;
    QVERIFY(sameImage(view->icon(), icon));
    // The imported side is read from the import's own folder, which goes with the import.
    const QString importFile = view->property("importFile").toString();
    if (!importFile.isEmpty()) QVERIFY(importFile.startsWith(sides.archive->temporaryFolder()));
    if (filesGone) {
        // The host has nothing to draw: the imported file is gone, mine is no document.
        QVERIFY(QFile::remove(importFile));
        QFile mine(view->property("stdFile").toString());
        QVERIFY(mine.open(QIODevice::WriteOnly | QIODevice::Truncate));
        mine.write("not a document");
    }
    view->click();

    const std::pair<const char*, bool> labels[] = {{"qViewImage_Imp", importedPicture},
                                                   {"qViewImageMine", minePicture}};
    for (const auto& [name, picture] : labels) {
        auto* label = child<QLabel>(&dialog, name);
        QCOMPARE(label->pixmap().isNull(), !picture);
        QCOMPARE(label->text(), picture ? QString() : QString("Невозможно отобразить элемент"));
        if (picture) QVERIFY(label->pixmap().width() <= label->width());
    }
    QCOMPARE(sandbox::documents().size(), 0); // the host's documents were closed again
}

void CompareDialogTest::modelSlot_data()
{
    QTest::addColumn<QString>("change"); // what is done to the record before the dialog
    QTest::addColumn<bool>("enabled");
    QTest::addColumn<QString>("icon");
    QTest::newRow("same model") << "" << true << ":/clean/3d.png";
    QTest::newRow("other digest") << "digest" << true << ":/red/3d.png";
    QTest::newRow("mine without model") << "clear mine" << true << ":/red/3d.png";
    QTest::newRow("record without model file") << "no file" << false << "";
    QTest::newRow("record without model") << "no model" << false << "";
}

void CompareDialogTest::modelSlot()
{
    QFETCH(QString, change);
    QFETCH(bool, enabled);
    QFETCH(QString, icon);
    Sides sides;
    QVERIFY(sides.open(sides.mine.provider));
    ImportElement record = sides.record();
    QVERIFY(record.model);
    if (change == "digest") record.model->digest = "0123456789abcdef";
    if (change == "clear mine") model_Clear(stdsize_GetModel(sides.mineElement));
    if (change == "no file") record.model->file.clear();
    if (change == "no model") record.model.reset();
    CompareUssDialog dialog(sides.mineElement, record, *sides.archive, false);

    auto* model = child<QToolButton>(&dialog, "qM3dBut");
    QCOMPARE(model->isEnabled(), enabled);
    if (!enabled) return;
    QVERIFY(sameImage(model->icon(), icon));
    QVERIFY(QFileInfo(model->property("importFile").toString()).isFile());
    QCOMPARE(model->property("stdFile").toString().isEmpty(), change == "clear mine");
}

void CompareDialogTest::identicalElementsCarryNoWarning()
{
    // The archive read back into the catalog it was written from: every slot the same.
    Sides sides;
    QVERIFY(sides.open(sides.theirs.provider));
    CompareUssDialog dialog(sides.theirElement, sides.record(), *sides.archive, false);
    auto* tabs = child<QTabWidget>(&dialog, "tabWidget");
    QVERIFY(tabs->tabIcon(0).isNull());
    QVERIFY(tabs->tabIcon(1).isNull());
    QVERIFY(sameImage(child<QToolButton>(&dialog, "qCFront")->icon(), ":/clean/f.png"));
    QVERIFY(sameImage(child<QToolButton>(&dialog, "qSFront")->icon(), ":/clean/s_f.png"));
    QVERIFY(sameImage(child<QToolButton>(&dialog, "qM3dBut")->icon(), ":/clean/3d.png"));
}

void CompareDialogTest::parameterRows_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("imported");
    QTest::addColumn<QString>("mine"); // written into the catalog by its type, shown as it is
    QTest::addColumn<bool>("differs");
    QTest::newRow("int equal") << 1 << "50"
                               << "50" << false;
    QTest::newRow("int in base 10") << 1 << "050"
                                    << "50" << false;
    QTest::newRow("int differs") << 1 << "50"
                                 << "51" << true;
    QTest::newRow("real within 1e-5") << 2 << "1.000001"
                                      << "1.000009" << false;
    QTest::newRow("real beyond 1e-5") << 2 << "1.0"
                                      << "1.0001" << true;
    QTest::newRow("real with comma") << 2 << "2,5"
                                     << "2.5" << false;
    QTest::newRow("text equal") << 3 << "Труба"
                                << "Труба" << false;
    QTest::newRow("text by case") << 3 << "Труба"
                                  << "труба" << true;
    QTest::newRow("text 1.0 vs 1") << 3 << "1.0"
                                   << "1" << true;
}

void CompareDialogTest::parameterRows()
{
    QFETCH(int, type);
    QFETCH(QString, imported);
    QFETCH(QString, mine);
    QFETCH(bool, differs);
    TempCatalog catalog;
    es_stdsize_t* element = catalog.addElement(kPacket, {}, kId);
    testing::addAttribute(element, Attr{"Wall", uint32_t(type), mine});
    ImportElement record;
    record.atr.push_back({"Wall", 4, type, {}, {}, {}, imported, QString("Толщина стенки")});
    ImportArchive archive;
    CompareUssDialog dialog(element, record, archive, false);

    auto* tree = child<QTreeWidget>(&dialog, "CompareTreeWidget");
    QCOMPARE(tree->topLevelItemCount(), 1);
    const QTreeWidgetItem* row = tree->topLevelItem(0);
    QCOMPARE(row->text(0), QString("Толщина стенки"));
    QCOMPARE(row->text(1), imported);
    QCOMPARE(row->text(2), mine);
    for (int column : {1, 2})
        QCOMPARE(row->foreground(column).color() == QColor(Qt::red), differs);
    QVERIFY(row->foreground(0).color() != QColor(Qt::red));
    auto* tabs = child<QTabWidget>(&dialog, "tabWidget");
    QCOMPARE(sameImage(tabs->tabIcon(1), ":/vznak.png"), differs);
    QVERIFY(tabs->tabIcon(0).isNull()); // no views on either side
}

void CompareDialogTest::rowsAlternateGrey()
{
    TempCatalog catalog;
    es_stdsize_t* element = catalog.addElement(kPacket, {}, kId);
    ImportElement record;
    const QStringList names{"A", "B", "C", "D", "E"};
    for (int i = 0; i < names.size(); ++i) {
        testing::addAttribute(element, Attr{names[i], 1, QString::number(i * 10)});
        record.atr.push_back({names[i], i, 1, {}, {}, {}, QString::number(i * 10)});
    }
    record.atr[2].val.reset();
    record.atr[2].formula = QStringLiteral("{1}*2");
    ImportArchive archive;
    CompareUssDialog dialog(element, record, archive, false);

    // Headers and tool tips are checked by the sandbox's import run.
    auto* tree = child<QTreeWidget>(&dialog, "CompareTreeWidget");
    QCOMPARE(tree->topLevelItemCount(), 5);
    for (int i = 0; i < 5; ++i) {
        const QTreeWidgetItem* row = tree->topLevelItem(i);
        QCOMPARE(row->text(0), names[i]); // no description: the name
        for (int column = 0; column < 3; ++column)
            QCOMPARE(row->background(column).color() == QColor(246, 246, 246), i % 2 == 1);
    }
    QCOMPARE(tree->topLevelItem(2)->text(1), QString("{1}*2")); // a formula instead of a value
}

void CompareDialogTest::choice_data()
{
    QTest::addColumn<QString>("dialog"); // "compare", "later" (of a later version), "property"
    QTest::addColumn<QString>("button");
    QTest::addColumn<int>("choice");
    QTest::addColumn<int>("result");
    const int accepted = QDialog::Accepted;
    const int rejected = QDialog::Rejected;
    QTest::newRow("replace") << "compare"
                             << "impButton" << int(CompareUssDialog::Choice::Imported) << accepted;
    QTest::newRow("keep mine") << "compare"
                               << "mineButton" << int(CompareUssDialog::Choice::Mine) << accepted;
    QTest::newRow("close") << "compare"
                           << "closeButton" << int(CompareUssDialog::Choice::None) << rejected;
    QTest::newRow("later version: replace is off")
        << "later"
        << "impButton" << int(CompareUssDialog::Choice::None) << -1;
    QTest::newRow("later version: keep mine")
        << "later"
        << "mineButton" << int(CompareUssDialog::Choice::Mine) << accepted;
    QTest::newRow("property view: add")
        << "property"
        << "addButton" << int(ShowPropUssDialog::Choice::Add) << accepted;
    QTest::newRow("property view: skip")
        << "property"
        << "dontaddButton" << int(ShowPropUssDialog::Choice::DontAdd) << accepted;
    QTest::newRow("property view: close")
        << "property"
        << "closeButton" << int(ShowPropUssDialog::Choice::None) << rejected;
}

void CompareDialogTest::choice()
{
    QFETCH(QString, dialog);
    QFETCH(QString, button);
    QFETCH(int, choice);
    QFETCH(int, result);
    Sides sides;
    QVERIFY(sides.open(sides.mine.provider));
    std::unique_ptr<QDialog> shown;
    std::function<int()> chosen;
    if (dialog == "property") {
        auto* d = new ShowPropUssDialog(sides.record(), *sides.archive);
        chosen = [d] { return int(d->choice()); };
        shown.reset(d);
        QCOMPARE(child<QPushButton>(d, "addButton")->text(), "Добавить");
        QCOMPARE(child<QPushButton>(d, "dontaddButton")->text(), "Не добавлять");
    } else {
        // The comparison's title and button texts are checked by the sandbox's import run.
        auto* d = new CompareUssDialog(sides.mineElement, sides.record(), *sides.archive,
                                       dialog == "later");
        chosen = [d] { return int(d->choice()); };
        shown.reset(d);
        QCOMPARE(child<QPushButton>(d, "impButton")->isEnabled(), dialog != "later");
        QVERIFY(child<QPushButton>(d, "mineButton")->isEnabled());
    }

    shown->setResult(-1);
    shown->show();
    QTest::mouseClick(child<QPushButton>(shown.get(), button), Qt::LeftButton);
    QCOMPARE(chosen(), choice);
    QCOMPARE(shown->result(), result);
    QCOMPARE(shown->isVisible(), result == -1);
}

void CompareDialogTest::propertyView()
{
    Sides sides;
    QVERIFY(sides.open(sides.mine.provider));
    ImportElement record = sides.record();
    record.atr.push_back({"Name", 1, 3, {}, {}, {}, QString("Труба ПЭ"), QString("Наименование")});
    record.atr.push_back({"DN", 2, 1, {}, {}, {}, QString("110")});
    record.model->file.clear();
    ShowPropUssDialog dialog(record, *sides.archive);

    // Only the record's side: every slot it has is enabled and clean.
    const std::pair<const char*, const char*> present[] = {
        {"qCTop", "up"}, {"qCFront", "f"}, {"qSFront", "s_f"}, {"qGostBut", "gost"}};
    for (const auto& [name, icon] : present) {
        auto* button = child<QToolButton>(&dialog, name);
        QVERIFY2(button->isEnabled(), name);
        QVERIFY2(sameImage(button->icon(), QString(":/clean/%1.png").arg(icon)), name);
        QVERIFY(QFileInfo(button->property("importFile").toString()).isFile());
        QCOMPARE(button->property("stdFile").toString(), QString());
    }
    for (const char* name : {"qCLeft", "qCBack", "qM3dBut"})
        QVERIFY2(!child<QToolButton>(&dialog, name)->isEnabled(), name);
    auto* tabs = child<QTabWidget>(&dialog, "tabWidget");
    QVERIFY(tabs->tabIcon(0).isNull() && tabs->tabIcon(1).isNull());

    auto* image = child<QLabel>(&dialog, "qViewImage");
    child<QToolButton>(&dialog, "qCFront")->click();
    QVERIFY(!image->pixmap().isNull());
    child<QToolButton>(&dialog, "qGostBut")->click();
    QCOMPARE(image->text(), QString("Невозможно отобразить элемент"));

    auto* tree = child<QTreeWidget>(&dialog, "treeWidget");
    QCOMPARE(tree->headerItem()->text(0), QString("Свойство"));
    QCOMPARE(tree->topLevelItemCount(), int(record.atr.size()));
    const QTreeWidgetItem* last = tree->topLevelItem(tree->topLevelItemCount() - 1);
    QCOMPARE(last->text(0), QString("DN"));
    QCOMPARE(last->text(1), QString("110"));
    QCOMPARE(tree->topLevelItem(tree->topLevelItemCount() - 2)->text(0), QString("Наименование"));
}

void CompareDialogTest::resourcePicturesAreTheDrawnOnes()
{
    exchange::ensureCompareResources();
    for (const auto& [name, drawn] : exchange::icons::allPictures()) {
        const QImage stored = QImage(":/" + name).convertToFormat(QImage::Format_ARGB32);
        QVERIFY2(!stored.isNull(), qPrintable(name));
        QVERIFY2(stored == drawn, qPrintable(name + " differs from its drawing: run "
                                                    "compare_icon_painter"));
    }
    for (const auto& icon : exchange::icons::kGlyphIcons) {
        const QString name = QString::fromLatin1(icon.name);
        QVERIFY(QImage(":/red/" + name + ".png") != QImage(":/clean/" + name + ".png"));
    }
}

void CompareDialogTest::pictures()
{
    // Pictures of both dialogs in both looks, for people to look at.
    const QString folder = QDir(QStringLiteral(COMPARE_SHOT_FOLDER)).absolutePath();
    QVERIFY(QDir().mkpath(folder));
    Sides sides;
    QVERIFY(sides.open(sides.mine.provider));
    ImportElement record = sides.record();
    record.atr.push_back({"Name", 1, 3, {}, {}, {}, QString("Труба ПЭ"), QString("Наименование")});
    testing::addAttribute(sides.mineElement, Attr{"Name", 3, "Труба ПЭ100"});
    record.atr.push_back({"DN", 2, 1, {}, {}, {}, QString("110")});
    testing::addAttribute(sides.mineElement, Attr{"DN", 1, "110"});
    record.atr.push_back({"Wall", 3, 2, {}, {}, {}, QString("6.6")});
    testing::addAttribute(sides.mineElement, Attr{"Wall", 2, "6.6000001"});

    int light[2][2] = {};
    for (int dark : {0, 1}) {
        qt::set_theme_source([dark] { return dark ? 2 : 0; });
        CompareUssDialog compare(sides.mineElement, record, *sides.archive, false);
        ShowPropUssDialog show(record, *sides.archive);
        QDialog* dialogs[] = {&compare, &show};
        const char* names[] = {"compare", "showprop"};
        for (int d = 0; d < 2; ++d) {
            dialogs[d]->show();
            // A view with a picture on one side only.
            child<QToolButton>(dialogs[d], "qGostBut")->click();
            auto* tabs = child<QTabWidget>(dialogs[d], "tabWidget");
            for (int tab = 0; tab < 2; ++tab) {
                tabs->setCurrentIndex(tab);
                const QImage image = dialogs[d]->grab().toImage();
                QVERIFY(!image.isNull());
                const QString path = QDir(folder).filePath(
                    QString("%1-%2-%3.png")
                        .arg(names[d], tab ? "params" : "views", dark ? "dark" : "light"));
                QVERIFY(image.save(path));
                if (tab == 0) light[d][dark] = lightness(image);
            }
        }
    }
    QVERIFY(light[0][1] < light[0][0]);
    QVERIFY(light[1][1] < light[1][0]);
}

QTEST_MAIN(CompareDialogTest)
#include "tst_compare_dialog.moc"
