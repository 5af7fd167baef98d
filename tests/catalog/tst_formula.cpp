#include "element_ops.h"
#include "formula.h"
#include "recording_messenger.h"
#include "spec_description.h"
#include "stdsize.h"
#include "temp_catalog.h"

#include <QtTest>

using namespace edw;

namespace {

// An element whose table has Width numbered 4 (real), B numbered 7 (integer) and Name (text).
es_stdsize_t* formulaElement(const testing::TempCatalog& catalog)
{
    es_stdsize_t* element = createElement(catalog.provider, QStringLiteral("Арматура"),
                                          QStringLiteral("VALVE"), QString(), "1");
    attribute_SetNumber(testing::addAttribute(element, "Width", ES_ATTR_REAL), 4);
    attribute_SetNumber(testing::addAttribute(element, "B", ES_ATTR_INT), 7);
    attribute_SetNumber(testing::addAttribute(element, "Name", ES_ATTR_TEXT), 9);
    return element;
}

} // namespace

class FormulaTest : public QObject
{
    Q_OBJECT

private slots:
    void formulaIsConverted_data();
    void formulaIsConverted();
    void failedSpecColumnsAreWarnedAndEmptied();
    void specCommandDocumentText();
    void specificationsReachTheCatalogThroughTheCommand();
    void commandTypeFromDescription();
};

void FormulaTest::formulaIsConverted_data()
{
    QTest::addColumn<QString>("formula");
    QTest::addColumn<QString>("converted");
    QTest::addColumn<QString>("error");
    const struct
    {
        const char *tag, *formula, *converted, *error;
    } rows[] = {
        {"reference", "{Width}", "{A4}", ""},
        {"R reference with text", "L={Width,R}", "L={R(A4)}", ""},
        {"operation kept", "{Width*2}", "{Width*2}", ""},
        {"minus is an operation", "{-Width}", "{-Width}", ""},
        {"nested spliced", "{A{B}C}", "{AA7C}", ""},
        {"no braces", "Width*2", "Width*2", ""},
        {"text reference", "{Name}", "{A9}", ""},
        {"several blocks", "{Width}x{B}мм", "{A4}x{A7}мм", ""},
        {"empty block dropped", "a{}b", "ab", ""},
        {"R reference to text", "{Name,R}", "",
         "Атрибут Name строкого вида и не может использоваться при вычислениях"},
        {"unclosed", "{Width", "", "Не найден закрывающий символ } для {Width"},
        {"unclosed inside", "x={Width}+{B{Width}", "",
         "Не найден закрывающий символ } для x={Width}+{B{Width}"},
        {"unknown attribute", "{Depth}", "", "Блок не является операцией или атрибутом: Depth"},
        {"unknown R reference", "{Depth,R}", "",
         "Блок не является операцией или атрибутом: Depth,R"},
    };
    for (const auto& row : rows)
        QTest::newRow(row.tag) << QString(row.formula) << QString(row.converted)
                               << QString(row.error);
}

void FormulaTest::formulaIsConverted()
{
    QFETCH(QString, formula);
    QFETCH(QString, converted);
    QFETCH(QString, error);
    testing::TempCatalog catalog;
    es_stdsize_t* element = formulaElement(catalog);
    const FormulaResult result = convertFormula(formula, stdsize_GetTable(element));
    QCOMPARE(result.text, converted);
    QCOMPARE(result.error, error);
}

void FormulaTest::failedSpecColumnsAreWarnedAndEmptied()
{
    testing::RecordingMessenger messages;
    testing::TempCatalog catalog;
    es_stdsize_t* element = formulaElement(catalog);
    std::vector<SpecDescription> specs{{"lib", 12, 1, 2, {{1, "{Width}"}, {3, "{Name,R}"}}},
                                       {"lib", 14, 0, 0, {{5, "{Width"}}}};

    convertSpecFormulas(specs, element);

    QCOMPARE(specs[0].columns[0].formula, QStringLiteral("{A4}"));
    QCOMPARE(specs[0].columns[1].formula, QString());
    QCOMPARE(specs[1].columns[0].formula, QString());
    QCOMPARE(messages.texts.size(), 2);
    QCOMPARE(messages.kinds, (QStringList{"warning", "warning"}));
    QCOMPARE(messages.titles.first(), QStringLiteral(" "));
    QCOMPARE(messages.texts[0],
             QStringLiteral("Не смогли сконвертировать формулу для колонки 3 спецификации 12.\n"
                            "Формула: {Name,R}\n"
                            "Ошибка: Атрибут Name строкого вида и не может использоваться при "
                            "вычислениях"));
    QCOMPARE(messages.texts[1],
             QStringLiteral("Не смогли сконвертировать формулу для колонки 5 спецификации 14.\n"
                            "Формула: {Width\n"
                            "Ошибка: Не найден закрывающий символ } для {Width"));
}

void FormulaTest::specCommandDocumentText()
{
    const std::vector<SpecDescription> specs{
        {"Трубопроводы", 3, 1, 2, {{1, "{A4}"}, {2, "R(A7)<2"}}}, {"lib", 5, 0, 0, {}}};
    const QString text = createSpecDocument(specs, "Арматура", "USER#1");
    const QString expected = QStringLiteral(
        "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
        "<commands>\n"
        "\t<command type=\"create_spec\">\n"
        "\t\t<stdSize packet=\"Арматура\" id=\"USER#1\" />\n"
        "\t\t<spec styleNum=\"3\" libName=\"Трубопроводы\" firstPart=\"1\" secondPart=\"2\">\n"
        "\t\t\t<column num=\"1\" formula=\"{A4}\" />\n"
        "\t\t\t<column num=\"2\" formula=\"R(A7)&lt;2\" />\n"
        "\t\t</spec>\n"
        "\t\t<spec styleNum=\"5\" libName=\"lib\" firstPart=\"0\" secondPart=\"0\" />\n"
        "\t</command>\n"
        "</commands>\n");
    QCOMPARE(text, expected);
    // Without descriptions the command still names the element.
    QVERIFY(createSpecDocument({}, "P", "X")
                .endsWith("\t<command type=\"create_spec\">\n\t\t<stdSize packet=\"P\" id=\"X\" "
                          "/>\n\t</command>\n</commands>\n"));
}

void FormulaTest::specificationsReachTheCatalogThroughTheCommand()
{
    testing::TempCatalog catalog;
    es_stdsize_t* element = formulaElement(catalog);
    std::vector<SpecDescription> specs{{"Вентиляция", 7, 3, 4, {{1, "{Width}"}, {2, "{B}+1"}}}};
    convertSpecFormulas(specs, element);
    QVERIFY(runCreateSpec(specs, element));

    const auto stored = readSpecifications(element);
    QCOMPARE(stored.size(), size_t(1));
    QCOMPARE(stored[0].libName, QStringLiteral("Вентиляция"));
    QCOMPARE(stored[0].styleNum, 7);
    QCOMPARE(stored[0].firstPart, 3);
    QCOMPARE(stored[0].secondPart, 4);
    QCOMPARE(stored[0].columns.size(), size_t(2));
    QCOMPARE(stored[0].columns[0].formula, QStringLiteral("{A4}"));
    QCOMPARE(stored[0].columns[1].num, 2);
    QCOMPARE(stored[0].columns[1].formula, QStringLiteral("{A7}+1"));

    // A second run replaces what the first wrote.
    QVERIFY(runCreateSpec({}, element));
    QCOMPARE(readSpecifications(element).size(), size_t(0));
    QVERIFY(!runCreateSpec({}, nullptr));
}

void FormulaTest::commandTypeFromDescription()
{
    testing::RecordingMessenger messages;
    testing::TempCatalog files;
    const QString file =
        files.writeFile("uss_library.xml", "<library><command name=\"pump\" type=\"PUMP_TYPE\"/>"
                                           "<command name=\"valve\"/></library>");
    QCOMPARE(commandType(file, "pump"), QStringLiteral("PUMP_TYPE"));
    QCOMPARE(commandType(file, "valve"), QStringLiteral("NONE"));
    QCOMPARE(commandType(file, "absent"), QStringLiteral("NONE"));
    QCOMPARE(commandType(file, "a'b"), QString()); // the query itself fails
    QVERIFY(messages.texts.isEmpty());

    const QString broken = files.writeFile("broken.xml", "<library><command></library>");
    QCOMPARE(commandType(broken, "pump"), QString());
    QCOMPARE(messages.texts.size(), 1);
    QVERIFY2(QRegularExpression("^Ошибка чтения xml\nfile: " + QRegularExpression::escape(broken) +
                                "\ndesc: .+\noffset: \\d+$")
                 .match(messages.texts[0])
                 .hasMatch(),
             qPrintable(messages.texts[0]));
}

QTEST_GUILESS_MAIN(FormulaTest)
#include "tst_formula.moc"
