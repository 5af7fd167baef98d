#include "catalog_fixture.h"
#include "catalog_tree.h"
#include "element_ops.h"
#include "element_save.h"
#include "spec_description.h"
#include "stdsize.h"
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
    return createElement(catalog.provider, QStringLiteral("Оборудование\\Насосы"),
                         QStringLiteral("PUMP"), QString(), request);
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
    void copyCarriesValuesByTargetType_data();
    void copyCarriesValuesByTargetType();
    void sizeParametersGetFixedVariableNames_data();
    void sizeParametersGetFixedVariableNames();
    void panelFormulaIsStoredInCatalogForm_data();
    void panelFormulaIsStoredInCatalogForm();
    void panelAddsMissingAttributes();
    void graphicsReplacementLeavesOnlyNewViews();
    void viewKindGivesProjectionAndViewType_data();
    void viewKindGivesProjectionAndViewType();
    void modelThatCannotBeReadFailsTheReplacement();
    void hiddenLayerCountersContinueAfterExisting();
    void hiddenLayersNeedAHost();
    void elementObjectIsSharedAndWritable();
    void missingElementGivesEmptyObject();
    void bookkeepingNamesAuthorAndTime_data();
    void bookkeepingNamesAuthorAndTime();
    void transactionRollsBackUnlessCommitted();
    void representationDataIsCopiedWhole();
    void cloneIsSavedWhole();
    void failedSaveLeavesNoElement();
};

void ElementsTest::copyNeverTakesAttributeEleven()
{
    testing::TempCatalog catalog;
    es_stdsize_t* source = newElement(catalog, "source");
    es_stdsize_t* target = newElement(catalog, "target");
    QVERIFY(source && target);
    const QStringList names{"Ten", "Eleven", "Twelve"};
    for (int i = 0; i < names.size(); ++i) {
        es_attribute_t* a = testing::addAttribute(source, names[i], ES_ATTR_REAL);
        QVERIFY(a);
        attribute_SetNumber(a, 10 + i);
        attribute_SetOldNumber(a, 20 + i);
        attribute_SetMeasure(a, u"мм");
        attribute_SetVarName(a, toEs("v" + names[i]).c_str());
        stdsize_SetValueD(source, a, 1.5 + i);
    }
    attribute_SetFormula(CStdSize(source).attribute("Twelve"), u"{A10}*2");
    SpecDescription spec{QStringLiteral("lib"), 3, 1, 2, {{1, "{A10}"}, {4, ""}}};
    QVERIFY(runCreateSpec({spec}, source));

    QVERIFY(copyElement(source, target));

    const CStdSize copy(target);
    QVERIFY(!copy.hasAttribute("Eleven"));
    QCOMPARE(table_GetAttributeCount(copy.table()), 2u);
    es_attribute_t* twelve = copy.attribute("Twelve");
    QVERIFY(twelve);
    QCOMPARE(attribute_GetNumber(twelve), 12);
    QCOMPARE(attribute_GetOldNumber(twelve), 22);
    QCOMPARE(fromEs(attribute_GetMeasure(twelve)), QStringLiteral("мм"));
    QCOMPARE(fromEs(attribute_GetVarName(twelve)), QStringLiteral("vTwelve"));
    QCOMPARE(fromEs(attribute_GetFormula(twelve)), QStringLiteral("{A10}*2"));
    QCOMPARE(copy.value("Ten"), QStringLiteral("1.5"));
    QCOMPARE(copy.value("Twelve"), QStringLiteral("3.5"));

    const auto specs = copy.specifications();
    QCOMPARE(specs.size(), size_t(1));
    QCOMPARE(specs[0].libName, QStringLiteral("lib"));
    QCOMPARE(specs[0].styleNum, 3);
    QCOMPARE(specs[0].columns.size(), size_t(2));
    QCOMPARE(specs[0].columns[0].formula, QStringLiteral("{A10}"));
    QCOMPARE(specs[0].columns[1].num, 4);
}

void ElementsTest::copyCarriesValuesByTargetType_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("copied");
    QTest::newRow("integer") << 1 << "17"
                             << "17";
    QTest::newRow("real") << 2 << "2,25"
                          << "2.25";
    QTest::newRow("text") << 3 << "Насос К 80-50"
                          << "Насос К 80-50";
}

void ElementsTest::copyCarriesValuesByTargetType()
{
    QFETCH(int, type);
    QFETCH(QString, text);
    QFETCH(QString, copied);
    testing::TempCatalog catalog;
    es_stdsize_t* source = newElement(catalog, "source");
    es_stdsize_t* target = newElement(catalog, "target");
    QVERIFY(testing::addAttribute(source, "P", type));
    setValuesByName(source, {{"P", text}});
    QVERIFY(copyElement(source, target));
    QCOMPARE(testing::valueOf(target, "P"), copied);
    QCOMPARE(int(testing::kindOf(target, "P")), type);
}

void ElementsTest::sizeParametersGetFixedVariableNames_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("varName");
    QTest::newRow("Width") << "Width"
                           << "W";
    QTest::newRow("Length") << "Length"
                            << "L";
    QTest::newRow("Height") << "Height"
                            << "H";
    QTest::newRow("width keeps its own") << "width"
                                         << "own";
    QTest::newRow("Depth keeps its own") << "Depth"
                                         << "own";
}

void ElementsTest::sizeParametersGetFixedVariableNames()
{
    QFETCH(QString, name);
    QFETCH(QString, varName);
    testing::TempCatalog catalog;
    es_stdsize_t* element = newElement(catalog, "1");
    es_attribute_t* attribute = testing::addAttribute(element, name, ES_ATTR_REAL);
    attribute_SetVarName(attribute, u"own");

    writePanelValues(element, {{name, name, QVariant(300.5), PanelParameter::Value}});

    QCOMPARE(varNameOf(element, name), varName);
    QCOMPARE(testing::valueOf(element, name), QStringLiteral("300.5"));
}

void ElementsTest::panelFormulaIsStoredInCatalogForm_data()
{
    QTest::addColumn<QString>("formula");
    QTest::addColumn<QString>("stored");
    QTest::addColumn<int>("warnings");
    QTest::newRow("reference") << "{Width}*2"
                               << "{A%1}*2" << 0;
    QTest::newRow("unknown attribute") << "{Nope}"
                                       << "" << 1;
    QTest::newRow("unclosed") << "{Width"
                              << "" << 1;
}

void ElementsTest::panelFormulaIsStoredInCatalogForm()
{
    QFETCH(QString, formula);
    QFETCH(QString, stored);
    QFETCH(int, warnings);
    testing::ScopedMessenger messages;
    testing::TempCatalog catalog;
    es_stdsize_t* element = newElement(catalog, "1");
    es_attribute_t* width = testing::addAttribute(element, "Width", ES_ATTR_REAL);
    es_attribute_t* area = testing::addAttribute(element, "Area", ES_ATTR_REAL);
    attribute_SetFormula(area, u"old");

    writePanelValues(element, {{"Area", "Площадь", formula, PanelParameter::Formula}});

    const QString expected =
        stored.contains("%1") ? stored.arg(attribute_GetNumber(width)) : stored;
    QCOMPARE(fromEs(attribute_GetFormula(area)), expected);
    QCOMPARE(messages.texts.size(), warnings);
    if (warnings) {
        QCOMPARE(messages.texts.first(), QStringLiteral("Ошибка преобразования формулы"));
        QCOMPARE(messages.titles.first(), QStringLiteral(" "));
    }
}

void ElementsTest::panelAddsMissingAttributes()
{
    testing::TempCatalog catalog;
    es_stdsize_t* element = newElement(catalog, "1");
    writePanelValues(element,
                     {{"Count", "Количество", QVariant(3), PanelParameter::Value},
                      {"Mass", "Масса", QVariant(1.25), PanelParameter::Value},
                      {"Flag", "Флаг", QVariant(true), PanelParameter::Value},
                      {"Mark", "", QVariant(QStringLiteral("А-1")), PanelParameter::Value}});
    const CStdSize wrapped(element);
    QCOMPARE(attribute_GetType(wrapped.attribute("Count")), 1u);
    QCOMPARE(attribute_GetType(wrapped.attribute("Mass")), 2u);
    QCOMPARE(attribute_GetType(wrapped.attribute("Flag")), 1u);
    QCOMPARE(attribute_GetType(wrapped.attribute("Mark")), 3u);
    QCOMPARE(fromEs(attribute_GetDescription(wrapped.attribute("Mass"))), QStringLiteral("Масса"));
    QCOMPARE(fromEs(attribute_GetDescription(wrapped.attribute("Mark"))), QStringLiteral("Mark"));
    QCOMPARE(wrapped.value("Count"), QStringLiteral("3"));
    QCOMPARE(wrapped.value("Mass"), QStringLiteral("1.25"));
    QCOMPARE(wrapped.value("Flag"), QStringLiteral("1"));
    QCOMPARE(wrapped.value("Mark"), QStringLiteral("А-1"));
}

void ElementsTest::graphicsReplacementLeavesOnlyNewViews()
{
    testing::TempCatalog catalog;
    es_stdsize_t* element = newElement(catalog, "1");
    es_projections_t* list = stdsize_GetProjections(element);
    const QString old = catalog.writeFile("old.frw", "<svg xmlns=\"http://www.w3.org/2000/svg\"/>");
    for (uint32_t type = 3; type >= 1; --type)
        QVERIFY(
            projections_AddProjectionEx(list, u"old", toEs(old).c_str(), nullptr, type, u"", 0));
    QCOMPARE(projections_GetProjectioCount(list), 3u);

    const QString top = catalog.writeFile("top.frw", svgFragment);
    const QString front = catalog.writeFile("simple front.frw", svgFragment);
    const QString gost = catalog.writeFile("gost.frw", "not a drawing");
    const QString model = catalog.writeFile("pump.m3d", svgFragment);
    QVERIFY(replaceGraphics(element, {{0, top, "Вид сверху", "верх", 0},
                                      {6, front, "", "", 0},
                                      {10, gost, "", "", 0},
                                      {11, model, "Насос", "", 2}}));

    QCOMPARE(projections_GetProjectioCount(list), 3u);
    struct Expected
    {
        QString name;
        uint32_t type;
        uint32_t viewType;
        bool icon;
    };
    const Expected expected[] = {
        {"Вид сверху", 1, 0, true}, {"simple front", 2, 1, true}, {"gost", 1, 2, false}};
    for (uint32_t i = 0; i < 3; ++i) {
        es_projection_t* p = projections_GetProjection(list, i);
        QCOMPARE(fromEs(projection_GetName(p)), expected[i].name);
        QCOMPARE(projection_GetType(p), expected[i].type);
        QCOMPARE(projection_GetViewType(p), expected[i].viewType);
        const void* data = nullptr;
        QCOMPARE(projection_GetIconData(p, &data) > 0, expected[i].icon);
    }
    QCOMPARE(fromEs(projection_GetDescription(projections_GetProjection(list, 0))),
             QStringLiteral("верх"));
    // Icons lie next to the view files, and they are real icon images.
    QVERIFY(QFileInfo::exists(catalog.dir.filePath("top.ico")));
    QVERIFY(QFileInfo::exists(catalog.dir.filePath("simple front.ico")));
    QVERIFY(!QFileInfo::exists(catalog.dir.filePath("gost.ico")));
    QImageReader icon(catalog.dir.filePath("top.ico"));
    QCOMPARE(icon.format(), QByteArray("ico"));

    es_model_t* stored = stdsize_GetModel(element);
    QVERIFY(!model_IsEmpty(stored));
    QCOMPARE(fromEs(model_GetModelName(stored)), QStringLiteral("Насос"));
    QCOMPARE(model_GetVersion(stored), 2);
    QVERIFY(QFileInfo::exists(catalog.dir.filePath("pump.ico")));
}

void ElementsTest::viewKindGivesProjectionAndViewType_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<uint>("projection");
    QTest::addColumn<uint>("view");
    const uint projections[] = {1, 2, 3, 4, 5, 1, 2, 3, 4, 5, 1};
    const uint views[] = {0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 2};
    for (int kind = 0; kind <= 10; ++kind)
        QTest::addRow("kind %d", kind) << kind << projections[kind] << views[kind];
    QTest::newRow("kind 12") << 12 << 1u << 1u;
}

void ElementsTest::viewKindGivesProjectionAndViewType()
{
    QFETCH(int, kind);
    QFETCH(uint, projection);
    QFETCH(uint, view);
    QCOMPARE(projectionType(kind), projection);
    QCOMPARE(viewType(kind), view);
}

void ElementsTest::modelThatCannotBeReadFailsTheReplacement()
{
    testing::TempCatalog catalog;
    es_stdsize_t* element = newElement(catalog, "1");
    QVERIFY(!replaceGraphics(element, {{11, catalog.dir.filePath("absent.m3d"), "", "", 0}}));
    QVERIFY(model_IsEmpty(stdsize_GetModel(element)));
}

void ElementsTest::hiddenLayerCountersContinueAfterExisting()
{
    testing::FakeHost host;
    testing::TempCatalog catalog;
    es_stdsize_t* element = newElement(catalog, "1");
    QVERIFY(testing::addAttribute(element, "hiddenLayer_0", ES_ATTR_REAL));
    const QString fragment = catalog.writeFile("top.frw", svgFragment);
    QVERIFY(replaceGraphics(element, {{0, fragment, "", "", 0}}));
    const QString stored = fromEs(
        projection_GetFragmentFile(projections_GetProjection(stdsize_GetProjections(element), 0)));
    host.layers.insert(stored, {3, 5});

    QCOMPARE(recordHiddenLayers(element), 2);

    QCOMPARE(host.asked, QStringList{stored});
    const CStdSize wrapped(element);
    QCOMPARE(varNameOf(element, "hiddenLayer_1"), QStringLiteral("LAYER3"));
    QCOMPARE(varNameOf(element, "hiddenLayer_2"), QStringLiteral("LAYER5"));
    QCOMPARE(attribute_GetType(wrapped.attribute("hiddenLayer_1")), 2u);
    QCOMPARE(fromEs(attribute_GetDescription(wrapped.attribute("hiddenLayer_2"))),
             QStringLiteral("hiddenLayer_2"));
    QCOMPARE(wrapped.value("hiddenLayer_1"), QStringLiteral("0"));
    QVERIFY(!wrapped.hasAttribute("hiddenLayer_3"));
}

void ElementsTest::hiddenLayersNeedAHost()
{
    testing::TempCatalog catalog;
    es_stdsize_t* element = newElement(catalog, "1");
    const QString fragment = catalog.writeFile("top.frw", svgFragment);
    QVERIFY(replaceGraphics(element, {{0, fragment, "", "", 0}}));
    QCOMPARE(recordHiddenLayers(element), 0);
    QVERIFY(!CStdSize(element).hasAttribute("hiddenLayer_0"));
}

void ElementsTest::elementObjectIsSharedAndWritable()
{
    testing::TempCatalog catalog;
    es_stdsize_t* element = newElement(catalog, "1");
    testing::addAttribute(element, "Dn", ES_ATTR_INT);
    testing::addAttribute(element, "Pn", ES_ATTR_REAL);
    testing::addAttribute(element, "Mark", ES_ATTR_TEXT);
    setValuesByName(element, {{"Dn", "50"}, {"Pn", "1,6"}, {"Mark", "a"}});

    CObject object = openElementObject(libraryIdentifier(libraryKind(catalog.provider)),
                                       QStringLiteral("Оборудование"), CStdSize(element).id());
    QVERIFY(!object.isEmpty());
    QCOMPARE(CStdSize(object.stdSize()).id(), CStdSize(element).id());
    QCOMPARE(object.value("Dn"), QStringLiteral("50"));
    {
        CObject copy = object;
        QCOMPARE(object.useCount(), 2L);
        QVERIFY(objectSetValue(copy, "Dn", int32_t(80)));
        QVERIFY(objectSetValue(copy, "Pn", 2.5));
        QVERIFY(objectSetValue(copy, "Mark", QStringLiteral("б")));
        QVERIFY(!objectSetValue(copy, "Unknown", int32_t(1)));
    }
    QCOMPARE(object.useCount(), 1L);
    QCOMPARE(object.value("Dn"), QStringLiteral("80"));
    QCOMPARE(object.value("Pn"), QStringLiteral("2.5"));
    QCOMPARE(object.value("Mark"), QStringLiteral("б"));
    // The object's writes stay in the object.
    QCOMPARE(testing::valueOf(element, "Dn"), QStringLiteral("50"));
}

void ElementsTest::missingElementGivesEmptyObject()
{
    testing::TempCatalog catalog;
    es_stdsize_t* element = newElement(catalog, "1");
    const QString library = libraryIdentifier(libraryKind(catalog.provider));
    QVERIFY(openElementObject(library, "Оборудование", "no such id").isEmpty());
    QVERIFY(openElementObject(library, "no packet", CStdSize(element).id()).isEmpty());
    QVERIFY(openElementObject("no.library", "Оборудование", CStdSize(element).id()).isEmpty());
    const CObject empty;
    QVERIFY(!objectSetValue(empty, "Dn", int32_t(1)));
    QCOMPARE(empty.value("Dn"), QString());
    QVERIFY(!empty.stdSize());
}

void ElementsTest::bookkeepingNamesAuthorAndTime_data()
{
    QTest::addColumn<QByteArray>("user");
    QTest::addColumn<QByteArray>("computer");
    QTest::addColumn<QString>("author");
    QTest::newRow("both set") << QByteArray("ivanov") << QByteArray("WS-12") << "ivanov\\WS-12";
    QTest::newRow("defaults") << QByteArray() << QByteArray() << "user\\pc";
    QTest::newRow("only user") << QByteArray("petrov") << QByteArray() << "petrov\\pc";
}

void ElementsTest::bookkeepingNamesAuthorAndTime()
{
    QFETCH(QByteArray, user);
    QFETCH(QByteArray, computer);
    QFETCH(QString, author);
    const QByteArray savedUser = qgetenv("USERNAME");
    const QByteArray savedComputer = qgetenv("COMPUTERNAME");
    user.isEmpty() ? qunsetenv("USERNAME") : qputenv("USERNAME", user);
    computer.isEmpty() ? qunsetenv("COMPUTERNAME") : qputenv("COMPUTERNAME", computer);

    testing::TempCatalog catalog;
    es_stdsize_t* element = newElement(catalog, "1");
    writeBookkeeping(element, QDateTime(QDate(2025, 1, 2), QTime(3, 4, 5)));
    QCOMPARE(testing::valueOf(element, "USS_AUTHOR"), author);
    QCOMPARE(testing::valueOf(element, "USS_LAST_CHANGE_DATE"),
             QStringLiteral("02.01.2025 03:04:05"));

    savedUser.isEmpty() ? qunsetenv("USERNAME") : qputenv("USERNAME", savedUser);
    savedComputer.isEmpty() ? qunsetenv("COMPUTERNAME") : qputenv("COMPUTERNAME", savedComputer);
}

void ElementsTest::transactionRollsBackUnlessCommitted()
{
    if (!TransactionScope::supported()) QSKIP("the loaded catalog library has no transactions");
    testing::TempCatalog catalog;
    {
        TransactionScope scope(catalog.provider);
        QVERIFY(scope.active());
        QVERIFY(newElement(catalog, "dropped"));
    }
    QCOMPARE(provider_GetPacketCount(catalog.provider), 0u);
    {
        TransactionScope scope(catalog.provider);
        QVERIFY(newElement(catalog, "kept"));
        QVERIFY(scope.commit());
        QVERIFY(!scope.active());
    }
    QCOMPARE(provider_GetPacketCount(catalog.provider), 1u);
}

void ElementsTest::representationDataIsCopiedWhole()
{
    testing::TempCatalog catalog;
    es_stdsize_t* source = newElement(catalog, "source");
    es_stdsize_t* target = newElement(catalog, "target");
    const QByteArray blob("\x00\x01representation\xff", 17);
    QVERIFY(stdsize_SetRepresentationData(source, blob.constData(), size_t(blob.size())));
    QVERIFY(copyRepresentationData(source, target));
    const void* data = nullptr;
    const size_t size = stdsize_GetRepresentationData(target, &data);
    QCOMPARE(QByteArray(static_cast<const char*>(data), qsizetype(size)), blob);
}

void ElementsTest::cloneIsSavedWhole()
{
    testing::ScopedMessenger messages;
    testing::FakeHost host;
    testing::TempCatalog catalog;
    es_stdsize_t* templ = newElement(catalog, "template");
    testing::addAttribute(templ, "Width", ES_ATTR_REAL);
    testing::addAttribute(templ, "USS_CATEGORY_NAME", ES_ATTR_TEXT);
    setValuesByName(templ, {{"Width", "40"}, {"USS_CATEGORY_NAME", "Насосы\\Центробежные"}});
    QVERIFY(stdsize_SetRepresentationData(templ, "rep", 3));
    const QString top = catalog.writeFile("top.frw", svgFragment);

    ElementSaveRequest request;
    request.provider = catalog.provider;
    request.categoryPath = templateCategory(templ);
    request.type = "PUMP";
    request.request = "clone";
    request.templateElement = templ;
    request.parameters = {{"Width", "Ширина", QVariant(55.5), PanelParameter::Value}};
    request.views = {{0, top, "", "", 0}};
    request.specifications = {{"lib", 1, 2, 3, {{1, "{Width}"}}}};
    es_stdsize_t* saved = saveElement(request);
    QVERIFY(saved);

    const CStdSize element(saved);
    QCOMPARE(element.packetName(), QStringLiteral("Насосы"));
    QCOMPARE(folderPath(folder_GetParentFolder(element.folder())), QStringLiteral("Центробежные"));
    QCOMPARE(element.value("Width"), QStringLiteral("55.5"));
    QCOMPARE(varNameOf(saved, "Width"), QStringLiteral("W"));
    QCOMPARE(projections_GetProjectioCount(element.projections()), 1u);
    const auto specs = element.specifications();
    QCOMPARE(specs.size(), size_t(1));
    QCOMPARE(specs[0].columns[0].formula,
             QStringLiteral("{A%1}").arg(attribute_GetNumber(element.attribute("Width"))));
    QVERIFY(!element.value("USS_AUTHOR").isEmpty());
    QVERIFY(!element.value("USS_LAST_CHANGE_DATE").isEmpty());
    const void* data = nullptr;
    QCOMPARE(stdsize_GetRepresentationData(saved, &data), size_t(3));
    QVERIFY(messages.texts.isEmpty());
}

void ElementsTest::failedSaveLeavesNoElement()
{
    if (!TransactionScope::supported()) QSKIP("the loaded catalog library has no transactions");
    testing::TempCatalog catalog;
    ElementSaveRequest request;
    request.provider = catalog.provider;
    request.categoryPath = "Насосы";
    request.type = "PUMP";
    request.request = "broken";
    request.views = {{11, catalog.dir.filePath("absent.m3d"), "", "", 0}};
    QVERIFY(!saveElement(request));
    QCOMPARE(provider_GetPacketCount(catalog.provider), 0u);
}

QTEST_MAIN(ElementsTest)
#include "tst_elements.moc"
