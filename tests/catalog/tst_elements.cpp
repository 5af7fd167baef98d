#include "catalog_tree.h"
#include "element_ops.h"
#include "element_save.h"
#include "fake_host.h"
#include "recording_messenger.h"
#include "stdsize.h"
#include "temp_catalog.h"
#include "transaction_scope.h"

#include <QFileInfo>
#include <QImageReader>
#include <QtTest>

using namespace edw;

namespace {

const QByteArray svgFragment =
    "<svg xmlns=\"http://www.w3.org/2000/svg\" version=\"23.1\" width=\"40\" height=\"20\">"
    "<g id=\"layer0\"><rect x=\"0\" y=\"0\" width=\"40\" height=\"20\" fill=\"blue\"/></g>"
    "</svg>\n";

es_stdsize_t* newElement(const testing::TempCatalog& catalog, const QString& request)
{
    return createElement(catalog.provider, "Оборудование\\Насосы", "PUMP", QString(), request);
}

QString varNameOf(es_stdsize_t* element, const QString& name)
{
    return fromEs(attribute_GetVarName(CStdSize(element).attribute(name)));
}

} // namespace

class ElementsTest : public QObject
{
    Q_OBJECT

private slots:
    void copyNeverTakesAttributeEleven();
    void panelValuesAndSizeVariableNames_data();
    void panelValuesAndSizeVariableNames();
    void graphicsReplacementLeavesOnlyNewViews();
    void hiddenLayerCountersContinueAfterExisting();
    void elementObjectIsSharedAndWritable();
    void bookkeepingNamesAuthorAndTime();
    void cloneIsSavedWhole();
    void failedSaveLeavesNoElement();
};

void ElementsTest::copyNeverTakesAttributeEleven()
{
    testing::TempCatalog catalog;
    es_stdsize_t* source = newElement(catalog, "source");
    es_stdsize_t* target = newElement(catalog, "target");
    const QStringList names{"Ten", "Eleven", "Twelve"};
    for (int i = 0; i < names.size(); ++i) {
        es_attribute_t* a = testing::addAttribute(source, names[i], ES_ATTR_REAL);
        attribute_SetNumber(a, 10 + i);
        attribute_SetOldNumber(a, 20 + i);
        attribute_SetMeasure(a, u"мм");
        attribute_SetVarName(a, toEs("v" + names[i]).c_str());
        stdsize_SetValueD(source, a, 1.5 + i);
    }
    attribute_SetFormula(CStdSize(source).attribute("Twelve"), u"{A10}*2");
    QVERIFY(runCreateSpec({{"lib", 3, 1, 2, {{1, "{A10}"}}}}, source));

    QVERIFY(copyElement(source, target));

    const CStdSize copy(target);
    QVERIFY(!copy.hasAttribute("Eleven"));
    QCOMPARE(table_GetAttributeCount(copy.table()), 2u);
    es_attribute_t* twelve = copy.attribute("Twelve");
    QCOMPARE(attribute_GetNumber(twelve), 12);
    QCOMPARE(attribute_GetOldNumber(twelve), 22);
    QCOMPARE(fromEs(attribute_GetMeasure(twelve)), QStringLiteral("мм"));
    QCOMPARE(varNameOf(target, "Twelve"), QStringLiteral("vTwelve"));
    QCOMPARE(fromEs(attribute_GetFormula(twelve)), QStringLiteral("{A10}*2"));
    QCOMPARE(copy.value("Twelve"), QStringLiteral("3.5"));
    const auto specs = copy.specifications();
    QCOMPARE(specs.size(), size_t(1));
    QCOMPARE(specs[0].columns[0].formula, QStringLiteral("{A10}"));
}

void ElementsTest::panelValuesAndSizeVariableNames_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("stored");  // value, or formula for the formula kind
    QTest::addColumn<QString>("varName"); // "own" when kept
    QTest::addColumn<QString>("warning");
    const int value = PanelParameter::Value;
    const int formula = PanelParameter::Formula;
    const struct
    {
        const char *tag, *name;
        QVariant value;
        int kind;
        const char *stored, *varName, *warning;
    } rows[] = {
        {"Width", "Width", 300.5, value, "300.5", "W", ""},
        {"Length", "Length", 12, value, "12", "L", ""},
        {"Height", "Height", 1.0, value, "1", "H", ""},
        {"width", "width", 2.0, value, "2", "own", ""},
        {"new text", "Mark", "А-1", value, "А-1", "", ""},
        {"new flag", "Flag", true, value, "1", "", ""},
        {"formula", "Area", "{Base}*2", formula, "{A%1}*2", "own", ""},
        {"bad formula", "Area", "{Base", formula, "", "own", "Ошибка преобразования формулы"},
    };
    for (const auto& row : rows)
        QTest::newRow(row.tag) << QString(row.name) << row.value << row.kind << QString(row.stored)
                               << QString(row.varName) << QString(row.warning);
}

void ElementsTest::panelValuesAndSizeVariableNames()
{
    QFETCH(QString, name);
    QFETCH(QVariant, value);
    QFETCH(int, kind);
    QFETCH(QString, stored);
    QFETCH(QString, varName);
    QFETCH(QString, warning);
    testing::RecordingMessenger messages;
    testing::TempCatalog catalog;
    es_stdsize_t* element = newElement(catalog, "1");
    const int base = attribute_GetNumber(testing::addAttribute(element, "Base", ES_ATTR_REAL));
    for (const char* existing : {"Width", "Length", "Height", "width", "Area"})
        attribute_SetVarName(testing::addAttribute(element, existing, ES_ATTR_REAL), u"own");

    writePanelValues(element, {{name, "Подпись", value, PanelParameter::Kind(kind)}});

    es_attribute_t* attribute = CStdSize(element).attribute(name);
    QVERIFY(attribute);
    if (kind == PanelParameter::Formula)
        QCOMPARE(fromEs(attribute_GetFormula(attribute)),
                 stored.isEmpty() ? stored : stored.arg(base));
    else
        QCOMPARE(testing::valueOf(element, name), stored);
    QCOMPARE(varNameOf(element, name), varName);
    QCOMPARE(messages.texts.join(""), warning);
    if (varName.isEmpty()) // added: described by its label, typed by its value
        QCOMPARE(fromEs(attribute_GetDescription(attribute)), QStringLiteral("Подпись"));
}

void ElementsTest::graphicsReplacementLeavesOnlyNewViews()
{
    testing::TempCatalog catalog;
    es_stdsize_t* element = newElement(catalog, "1");
    es_projections_t* list = stdsize_GetProjections(element);
    const QString old = catalog.writeFile("old.frw", svgFragment);
    for (uint32_t type : {3u, 1u, 2u})
        QVERIFY(
            projections_AddProjectionEx(list, u"old", toEs(old).c_str(), nullptr, type, u"", 0));

    const QString top = catalog.writeFile("top.frw", svgFragment);
    const QString front = catalog.writeFile("simple front.frw", svgFragment);
    const QString gost = catalog.writeFile("gost.frw", "not a drawing");
    const QString model = catalog.writeFile("pump.m3d", svgFragment);
    QVERIFY(replaceGraphics(element, {{0, top, "Вид сверху", "верх", 0},
                                      {9, front, "", "", 0},
                                      {10, gost, "", "", 0},
                                      {11, model, "Насос", "", 2}}));

    // name, projection type, view type, icon
    const std::tuple<QString, uint32_t, uint32_t, bool> expected[] = {
        {"Вид сверху", 1, 0, true}, {"simple front", 5, 1, true}, {"gost", 1, 2, false}};
    QCOMPARE(projections_GetProjectioCount(list), 3u);
    for (uint32_t i = 0; i < 3; ++i) {
        es_projection_t* p = projections_GetProjection(list, i);
        const void* data = nullptr;
        QCOMPARE(std::make_tuple(fromEs(projection_GetName(p)), projection_GetType(p),
                                 projection_GetViewType(p), projection_GetIconData(p, &data) > 0),
                 expected[i]);
    }
    // Icons lie next to the view files and are real icon images.
    QCOMPARE(QImageReader(catalog.dir.filePath("top.ico")).format(), QByteArray("ico"));
    QVERIFY(QFileInfo::exists(catalog.dir.filePath("pump.ico")));
    QVERIFY(!QFileInfo::exists(catalog.dir.filePath("gost.ico")));
    es_model_t* stored = stdsize_GetModel(element);
    QCOMPARE(fromEs(model_GetModelName(stored)), QStringLiteral("Насос"));
    QCOMPARE(model_GetVersion(stored), 2);
}

void ElementsTest::hiddenLayerCountersContinueAfterExisting()
{
    testing::TempCatalog catalog;
    es_stdsize_t* element = newElement(catalog, "1");
    QVERIFY(testing::addAttribute(element, "hiddenLayer_0", ES_ATTR_REAL));
    QVERIFY(replaceGraphics(element, {{0, catalog.writeFile("top.frw", svgFragment), "", "", 0}}));
    QCOMPARE(recordHiddenLayers(element), 0); // no host, no documents
    const QString stored = fromEs(
        projection_GetFragmentFile(projections_GetProjection(stdsize_GetProjections(element), 0)));
    testing::FakeHost host;
    host.layers.insert(stored, {3, 5});

    QCOMPARE(recordHiddenLayers(element), 2);

    const CStdSize wrapped(element);
    QCOMPARE(varNameOf(element, "hiddenLayer_1"), QStringLiteral("LAYER3"));
    QCOMPARE(varNameOf(element, "hiddenLayer_2"), QStringLiteral("LAYER5"));
    QCOMPARE(attribute_GetType(wrapped.attribute("hiddenLayer_1")), 2u);
    QCOMPARE(wrapped.value("hiddenLayer_2"), QStringLiteral("0"));
    QVERIFY(!wrapped.hasAttribute("hiddenLayer_3"));
}

void ElementsTest::elementObjectIsSharedAndWritable()
{
    testing::TempCatalog catalog;
    es_stdsize_t* element = newElement(catalog, "1");
    testing::addAttribute(element, "Dn", ES_ATTR_INT);
    testing::addAttribute(element, "Pn", ES_ATTR_REAL);
    setValuesByName(element, {{"Dn", "50"}, {"Pn", "1,6"}});
    const QString library = libraryIdentifier(libraryKind(catalog.provider));
    const QString id = CStdSize(element).id();
    QVERIFY(openElementObject(library, "Оборудование", "no such id").isEmpty());
    QVERIFY(openElementObject("no.library", "Оборудование", id).isEmpty());
    QVERIFY(!objectSetValue(CObject(), "Dn", int32_t(1)));

    CObject object = openElementObject(library, "Оборудование", id);
    QCOMPARE(CStdSize(object.stdSize()).id(), id);
    {
        CObject copy = object;
        QCOMPARE(object.useCount(), 2L);
        QVERIFY(objectSetValue(copy, "Dn", int32_t(80)));
        QVERIFY(objectSetValue(copy, "Pn", 2.5));
        QVERIFY(!objectSetValue(copy, "Unknown", QStringLiteral("x")));
    }
    QCOMPARE(object.useCount(), 1L);
    QCOMPARE(object.value("Dn"), QStringLiteral("80"));
    QCOMPARE(object.value("Pn"), QStringLiteral("2.5"));
    // The object's writes stay in the object.
    QCOMPARE(testing::valueOf(element, "Dn"), QStringLiteral("50"));
}

void ElementsTest::bookkeepingNamesAuthorAndTime()
{
    const QByteArray savedUser = qgetenv("USERNAME");
    const QByteArray savedComputer = qgetenv("COMPUTERNAME");
    qputenv("USERNAME", "ivanov");
    qunsetenv("COMPUTERNAME");
    testing::TempCatalog catalog;
    es_stdsize_t* element = newElement(catalog, "1");
    writeBookkeeping(element, QDateTime(QDate(2025, 1, 2), QTime(3, 4, 5)));
    QCOMPARE(testing::valueOf(element, "USS_AUTHOR"), QStringLiteral("ivanov\\pc"));
    QCOMPARE(testing::valueOf(element, "USS_LAST_CHANGE_DATE"),
             QStringLiteral("02.01.2025 03:04:05"));
    qunsetenv("USERNAME");
    QCOMPARE(ussAuthor(), QStringLiteral("user\\pc"));
    savedUser.isEmpty() ? qunsetenv("USERNAME") : qputenv("USERNAME", savedUser);
    savedComputer.isEmpty() ? qunsetenv("COMPUTERNAME") : qputenv("COMPUTERNAME", savedComputer);
}

void ElementsTest::cloneIsSavedWhole()
{
    testing::RecordingMessenger messages;
    testing::TempCatalog catalog;
    es_stdsize_t* templ = newElement(catalog, "template");
    testing::addAttribute(templ, "Width", ES_ATTR_REAL);
    testing::addAttribute(templ, "USS_CATEGORY_NAME", ES_ATTR_TEXT);
    setValuesByName(templ, {{"Width", "40"}, {"USS_CATEGORY_NAME", "Насосы\\Центробежные"}});
    QVERIFY(stdsize_SetRepresentationData(templ, "rep", 3));

    ElementSaveRequest request;
    request.provider = catalog.provider;
    request.categoryPath = templateCategory(templ);
    request.type = "PUMP";
    request.request = "clone";
    request.templateElement = templ;
    request.parameters = {{"Width", "Ширина", QVariant(55.5), PanelParameter::Value}};
    request.views = {{0, catalog.writeFile("top.frw", svgFragment), "", "", 0}};
    request.specifications = {{"lib", 1, 2, 3, {{1, "{Width}"}}}};
    const CStdSize element(saveElement(request));
    QVERIFY(element);

    QCOMPARE(categoryPath(folder_GetParentFolder(element.folder())),
             QStringLiteral("Насосы\\Центробежные"));
    QCOMPARE(element.value("Width"), QStringLiteral("55.5"));
    QCOMPARE(projections_GetProjectioCount(element.projections()), 1u);
    QCOMPARE(element.specifications().at(0).columns.at(0).formula,
             QStringLiteral("{A%1}").arg(attribute_GetNumber(element.attribute("Width"))));
    QCOMPARE(element.value("USS_AUTHOR").isEmpty(), false);
    const void* data = nullptr;
    QCOMPARE(stdsize_GetRepresentationData(element.handle(), &data), size_t(3));
    QVERIFY(messages.texts.isEmpty());
}

void ElementsTest::failedSaveLeavesNoElement()
{
    if (!TransactionScope::supported()) QSKIP("the loaded catalog library has no transactions");
    testing::TempCatalog catalog;
    ElementSaveRequest request;
    request.provider = catalog.provider;
    request.categoryPath = "Насосы";
    request.request = "broken";
    request.views = {{11, catalog.dir.filePath("absent.m3d"), "", "", 0}};
    QVERIFY(!saveElement(request));
    QCOMPARE(provider_GetPacketCount(catalog.provider), 0u);
}

QTEST_MAIN(ElementsTest)
#include "tst_elements.moc"
