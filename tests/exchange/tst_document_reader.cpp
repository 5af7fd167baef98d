#include "document.h"

#include <QTest>

#include <functional>
#include <optional>

// The reader of the exchange document: large documents are read element by element, and what
// it accepts or refuses must not depend on that.
class TestDocumentReader : public QObject
{
    Q_OBJECT

private slots:
    void recordsComeInDocumentOrder_data();
    void recordsComeInDocumentOrder();
    void damagedDocumentGivesNothing_data();
    void damagedDocumentGivesNothing();
};

namespace {

QByteArray element(int i, const QByteArray& num = "1")
{
    return "{ \"packet\" : \"P\", \"folder\" : \"F\\\\" + QByteArray::number(i) +
           "\", \"id\" : \"e" + QByteArray::number(i) +
           "\", \"atr\" : [ { \"name\" : \"A\", \"num\" : " + num +
           ", \"type\" : 3, \"val\" : \"v" + QByteArray::number(i) + "\" } ], \"prj\" : [] }";
}

// A document of count elements; element i is replaced by the text special gives for it.
QByteArray document(int count, const std::function<QByteArray(int)>& special = {},
                    const QByteArray& between = ",\n", const QByteArray& list = "std-size")
{
    QByteArray text = "{\n \"comment\" : { \"encoding\" : \"utf8\", \"export-date\" : "
                      "\"2026.01.02 03:04:05\", \"lib-name\" : \"TX\" },\n \"" +
                      list + "\" : [\n";
    for (int i = 0; i < count; ++i) {
        if (i) text += between;
        QByteArray item = special ? special(i) : QByteArray();
        text += item.isNull() ? element(i) : item;
    }
    return text + "\n ]\n}\n";
}

} // namespace

void TestDocumentReader::recordsComeInDocumentOrder_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("count");

    QTest::newRow("no elements") << document(0) << 0;
    QTest::newRow("one") << document(1) << 1;
    QTest::newRow("more than a task") << document(300) << 300;
    QTest::newRow("tight separators") << document(130, {}, ",") << 130;
    QTest::newRow("comment between elements") << document(130, {}, ",\n// the next one\n") << 130;
    QTest::newRow("escaped member name")
        << QByteArray(document(130)).replace("\"std-size\"", "\"std\\u002dsize\"") << 130;
    QTest::newRow("brackets and quotes inside strings") << document(130, [](int i) {
        return i == 70 ? element(i).replace("\"P\"", "\"[{\\\"]}\"") : QByteArray();
    }) << 130;
    QTest::newRow("header after the elements")
        << QByteArray("{ \"std-size\" : [ " + element(0) + ", " + element(1) +
                      " ], \"comment\" : { \"encoding\" : \"utf8\", \"export-date\" : \"d\", "
                      "\"lib-name\" : \"TX\" } }")
        << 2;
}

void TestDocumentReader::recordsComeInDocumentOrder()
{
    QFETCH(QByteArray, text);
    QFETCH(int, count);

    const std::optional<exchange::ParsedDocument> doc = exchange::parseDocument(text);
    QVERIFY(doc);
    QCOMPARE(doc->header.libName, QStringLiteral("TX"));
    QCOMPARE(int(doc->records.size()), count);
    for (int i = 0; i < count; ++i) {
        const exchange::ImportRecord& r = doc->records[size_t(i)];
        QCOMPARE(r.id, QStringLiteral("e%1").arg(i));
        QCOMPARE(r.folder, QStringLiteral("F\\%1").arg(i));
        QCOMPARE(r.value(QStringLiteral("A")), QStringLiteral("v%1").arg(i));
    }
    if (count > 70 && text.contains("[{"))
        QCOMPARE(doc->records[70].packet, QStringLiteral("[{\"]}"));
}

void TestDocumentReader::damagedDocumentGivesNothing_data()
{
    QTest::addColumn<QByteArray>("text");

    auto at = [](int where, const QByteArray& replacement) {
        return [=](int i) { return i == where ? replacement : QByteArray(); };
    };
    QTest::newRow("missing comma between elements") << document(130, {}, "\n");
    QTest::newRow("double comma") << document(130, {}, ",,");
    QTest::newRow("syntax error in a late element")
        << document(130, at(129, element(129).replace("\"num\" : 1", "\"num\" : ")));
    QTest::newRow("number out of range in a late element")
        << document(130, at(100, element(100, "4294967296")));
    QTest::newRow("element that is not an object") << document(130, at(65, "[1, 2]"));
    QTest::newRow("element that is a number") << document(130, at(65, "12"));
    QTest::newRow("unclosed element") << document(130, at(129, "{ \"packet\" : \"P\""));
    QTest::newRow("element nested too deep")
        << document(130, at(5, QByteArray(200, '[') + QByteArray(200, ']')));
    QTest::newRow("text after the document") << document(3) + "x";
    QTest::newRow("second document") << document(3) + document(3);
    QTest::newRow("list that is not an array") << QByteArray(
        "{ \"comment\" : { \"encoding\" : \"utf8\", \"export-date\" : \"d\", \"lib-name\" : "
        "\"TX\" }, \"std-size\" : { } }");
    QTest::newRow("no header") << QByteArray("{ \"std-size\" : [ " + element(0) + " ] }");
    QTest::newRow("unsafe file name in a late element") << document(
        130,
        at(128, element(128).replace("\"prj\" : []",
                                     "\"prj\" : [ { \"name\" : \"n\", \"type\" : 1, \"view\" : 1, "
                                     "\"file\" : \"..\\\\x.frw\", \"icon\" : \"\", \"digest\" : "
                                     "\"\" } ]")));
}

void TestDocumentReader::damagedDocumentGivesNothing()
{
    QFETCH(QByteArray, text);
    QVERIFY(!exchange::parseDocument(text));
}

QTEST_GUILESS_MAIN(TestDocumentReader)
#include "tst_document_reader.moc"
