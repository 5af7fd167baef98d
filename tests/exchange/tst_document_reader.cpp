#include "document.h"
#include "documentfast.h"
#include "elementstore.h"
#include "exchangetexts.h"

#include <QRegularExpression>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTest>

#include <climits>
#include <functional>
#include <optional>

// The reader of the exchange document: large documents are read element by element, and what
// it accepts or refuses must not depend on that.
class TestDocumentReader : public QObject
{
    Q_OBJECT

private slots:
    void damagedDocumentGivesNothing_data();
    void damagedDocumentGivesNothing();
    void everyElementReadsAsTheTreeReadsIt_data();
    void everyElementReadsAsTheTreeReadsIt();
    void textsFollowTheHeaderEncoding_data();
    void textsFollowTheHeaderEncoding();
    void documentFedInPartsReadsAsWhole_data();
    void documentFedInPartsReadsAsWhole();
    void storedElementsReadBackTheSame();
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

// In the column of the model's version: the document is refused.
constexpr int refused = INT_MIN;

} // namespace

void TestDocumentReader::damagedDocumentGivesNothing_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("reason"); // how the debug log line goes on after its text

    const QString syntax = QStringLiteral("* Line ");
    auto at = [](int where, const QByteArray& replacement) {
        return [=](int i) { return i == where ? replacement : QByteArray(); };
    };
    QTest::newRow("missing comma between elements") << document(130, {}, "\n") << syntax;
    QTest::newRow("double comma") << document(130, {}, ",,") << syntax;
    QTest::newRow("syntax error in a late element")
        << document(130, at(129, element(129).replace("\"num\" : 1", "\"num\" : "))) << syntax;
    QTest::newRow("number out of range in a late element")
        << document(130, at(100, element(100, "4294967296"))) << "not int type";
    QTest::newRow("element that is not an object")
        << document(130, at(65, "[1, 2]")) << "not object type";
    QTest::newRow("element that is a number") << document(130, at(65, "12")) << "not object type";
    QTest::newRow("unclosed element") << document(130, at(129, "{ \"packet\" : \"P\"")) << syntax;
    QTest::newRow("element nested too deep")
        << document(130, at(5, QByteArray(200, '[') + QByteArray(200, ']')))
        << "Exceeded stackLimit";
    QTest::newRow("text after the document") << document(3) + "x" << syntax;
    QTest::newRow("second document") << document(3) + document(3) << syntax;
    QTest::newRow("list that is not an array")
        << QByteArray("{ \"comment\" : { \"encoding\" : \"utf8\", \"export-date\" : \"d\", "
                      "\"lib-name\" : \"TX\" }, \"std-size\" : { } }")
        << "not array type";
    QTest::newRow("no header") << QByteArray("{ \"std-size\" : [ " + element(0) + " ] }")
                               << "not object type";
    QTest::newRow("unsafe file name in a late element")
        << document(
               130,
               at(128, element(128).replace(
                           "\"prj\" : []",
                           "\"prj\" : [ { \"name\" : \"n\", \"type\" : 1, \"view\" : 1, "
                           "\"file\" : \"..\\\\x.frw\", \"icon\" : \"\", \"digest\" : \"\" } ]")))
        << "unsafe entry name in e128";
    const QByteArray crowded =
        document(int(exchange::maxDocumentElements) + 1, [](int) { return QByteArray("{}"); });
    const QString tooMany =
        QStringLiteral("more elements than %1").arg(exchange::maxDocumentElements);
    QTest::newRow("more elements than allowed") << crowded << tooMany;
    QTest::newRow("more elements than allowed, read whole") << "// whole\n" + crowded << tooMany;
    QTest::newRow("too large to read whole")
        << "// whole\n" + document(1) + QByteArray(64 << 20, ' ')
        << QStringLiteral("document too large to read whole");
}

// Refused, with the reader's text in the debug log as it is, followed by the reason.
void TestDocumentReader::damagedDocumentGivesNothing()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, reason);
    QTest::ignoreMessage(
        QtDebugMsg,
        QRegularExpression(
            u'^' + QRegularExpression::escape(exchange::texts::jsonUnparsable() + u' ' + reason)));
    QVERIFY(!exchange::parseDocument(text));
}

void TestDocumentReader::everyElementReadsAsTheTreeReadsIt_data()
{
    QTest::addColumn<QByteArray>("item");
    QTest::addColumn<bool>("plain");  // read without the tree
    QTest::addColumn<int>("version"); // of the model read (0 without one), or refused

    const QByteArray full =
        "{ \"packet\" : \"Трубы\", \"folder\" : \"A\\\\B\", \"id\" : \"T-1\", "
        "\"type\" : \"PIPE\", \"atr\" : [ { \"name\" : \"D\", \"num\" : 3, \"type\" : 2, "
        "\"val\" : \"1.5\", \"var\" : \"d\", \"measure\" : \"мм\", \"desc\" : \"Диаметр\", "
        "\"old-num\" : -7 }, { \"name\" : \"L\", \"num\" : 4, \"type\" : 3, \"formula\" : "
        "\"D*2\" } ], \"model\" : { \"name\" : \"m\", \"version\" : 2, \"file\" : "
        "\"TX\\\\model\\\\1.m3d\", \"icon\" : \"\", \"digest\" : \"ab\" }, \"prj\" : [ { "
        "\"name\" : \"Вид\", \"type\" : 1, \"view\" : 2, \"file\" : \"f.frw\", \"icon\" : "
        "\"i.png\", \"digest\" : \"cd\" } ], \"repPath\" : \"r.xml\", \"spc\" : [ { "
        "\"libName\" : \"L\", \"style\" : 1, \"fPart\" : 2, \"sPart\" : 3, \"column\" : [ { "
        "\"num\" : 1, \"val\" : \"$D\" } ] } ] }";
    auto with = [&](const char* from, const char* to) {
        return QByteArray(full).replace(from, to);
    };

    QTest::newRow("everything") << full << true << 2;
    QTest::newRow("escapes") << with("\"1.5\"", "\"\\\"q\\\" \\/ \\t \\u0416 \\u00e9 \\n\"") << true
                             << 2;
    QTest::newRow("surrogate pair") << with("\"1.5\"", "\"\\ud83d\\ude00\"") << false << 2;
    QTest::newRow("lone surrogate") << with("\"1.5\"", "\"\\ud83d\"") << false << refused;
    QTest::newRow("escaped NUL") << with("\"1.5\"", "\"a\\u0000b\"") << false << 2;
    QTest::newRow("nulls for optional members")
        << QByteArray("{ \"packet\" : \"P\", \"folder\" : \"F\", \"id\" : \"N\", \"type\" : null, "
                      "\"atr\" : [ { \"name\" : \"A\", \"num\" : 1, \"type\" : 3, \"val\" : null, "
                      "\"formula\" : null, \"var\" : null, \"measure\" : null, \"desc\" : null, "
                      "\"old-num\" : null } ], \"model\" : null, \"prj\" : [], \"repPath\" : null, "
                      "\"spc\" : null }")
        << true << 0;
    QTest::newRow("spc that is not an array")
        << with("\"spc\" : [", "\"spc\" : 5, \"s\" : [") << false << 2;
    QTest::newRow("integer written as real") << with("\"num\" : 3", "\"num\" : 3.0") << false << 2;
    QTest::newRow("integer with exponent") << with("\"num\" : 3", "\"num\" : 3e0") << false << 2;
    QTest::newRow("integer with leading zero") << with("\"num\" : 3", "\"num\" : 03") << false << 2;
    QTest::newRow("minus zero") << with("\"num\" : 3", "\"num\" : -0") << false << 2;
    QTest::newRow("largest integer") << with("\"num\" : 3", "\"num\" : 2147483647") << true << 2;
    QTest::newRow("smallest integer") << with("\"num\" : 3", "\"num\" : -2147483648") << true << 2;
    QTest::newRow("integer out of range")
        << with("\"num\" : 3", "\"num\" : 2147483648") << false << refused;
    QTest::newRow("integer as text") << with("\"num\" : 3", "\"num\" : \"3\"") << false << refused;
    QTest::newRow("text as integer")
        << with("\"val\" : \"1.5\"", "\"val\" : 1.5") << false << refused;
    QTest::newRow("boolean") << with("\"val\" : \"1.5\"", "\"val\" : true") << false << refused;
    QTest::newRow("repeated member, the last counts")
        << with("\"type\" : \"PIPE\"", "\"type\" : \"A\", \"type\" : \"B\"") << false << 2;
    QTest::newRow("unknown member")
        << with("\"type\" : \"PIPE\"", "\"type\" : \"PIPE\", \"x\" : [1, {}]") << false << 2;
    QTest::newRow("comment inside")
        << with("\"type\" : \"PIPE\",", "\"type\" : \"PIPE\", /* c */") << false << 2;
    QTest::newRow("trailing comma")
        << with("\"digest\" : \"cd\" }", "\"digest\" : \"cd\", }") << false << 2;
    QTest::newRow("missing id") << with("\"id\" : \"T-1\",", "") << false << refused;
    QTest::newRow("missing num") << with("\"num\" : 4,", "") << false << refused;
    QTest::newRow("missing column")
        << with(", \"column\" : [ { \"num\" : 1, \"val\" : \"$D\" } ]", "") << false << refused;
    QTest::newRow("null name") << with("\"name\" : \"D\"", "\"name\" : null") << false << refused;
    QTest::newRow("name as number") << with("\"name\" : \"D\"", "\"name\" : 7") << false << refused;
    QTest::newRow("model without name") << with("\"name\" : \"m\", ", "") << false << refused;
    QTest::newRow("atr not an array")
        << with("\"atr\" : [", "\"atr\" : {}, \"a\" : [") << false << refused;
    QTest::newRow("no space at all")
        << QByteArray(full).replace(" ", "").replace("Вид", "V") << true << 2;
    QTest::newRow("escaped member name") << with("\"packet\"", "\"pack\\u0065t\"") << false << 2;
    QTest::newRow("empty object") << QByteArray("{}") << false << refused;
    auto version = [&](const char* value) {
        return QByteArray(full).replace("\"version\" : 2", QByteArray("\"version\" : ") + value);
    };
    QTest::newRow("version null") << version("null") << true << 0;
    QTest::newRow("no version") << with("\"version\" : 2, ", "") << true << 0;
    QTest::newRow("version as real") << version("2.9") << false << 2;
    QTest::newRow("negative real version") << version("-1.5") << false << -1;
    QTest::newRow("version with exponent") << version("3e2") << false << 300;
    QTest::newRow("largest real version") << version("2147483647.0") << false << 2147483647;
    QTest::newRow("version true") << version("true") << false << 1;
    QTest::newRow("version out of range") << version("2147483648") << false << refused;
    QTest::newRow("real version out of range") << version("-2147483649.0") << false << refused;
    QTest::newRow("version as text") << version("\"2\"") << false << refused;
    QTest::newRow("version as array") << version("[2]") << false << refused;
}

// Read element by element, the document gives exactly what the whole tree gives: the same
// records, or nothing for both.
void TestDocumentReader::everyElementReadsAsTheTreeReadsIt()
{
    QFETCH(QByteArray, item);
    QFETCH(bool, plain);
    QFETCH(int, version);
    exchange::ImportElement record;
    QCOMPARE(exchange::readPlainElement(item.constData(), item.constData() + item.size(), record),
             plain);
    const QByteArray split = document(3, [&](int i) { return i == 1 ? item : QByteArray(); });
    // A comment before the document keeps it from being split: it is read as one tree.
    const QByteArray whole = "// whole\n" + split;
    const std::optional<exchange::ParsedDocument> a = exchange::parseDocument(split);
    const std::optional<exchange::ParsedDocument> b = exchange::parseDocument(whole);
    QCOMPARE(bool(a), bool(b));
    QCOMPARE(bool(a), version != refused);
    if (!a) return;
    QCOMPARE(a->records[1].model ? a->records[1].model->version : 0, version);
    QCOMPARE(a->records.size(), b->records.size());
    for (size_t i = 0; i < a->records.size(); ++i)
        QCOMPARE(a->records[i].describe(), b->records[i].describe());
}

void TestDocumentReader::textsFollowTheHeaderEncoding_data()
{
    QTest::addColumn<QByteArray>("encoding"); // the header's member, or nothing
    QTest::addColumn<QByteArray>("texts");    // packet, attribute name and value as written
    QTest::addColumn<QString>("read");

    const QString words = QStringLiteral("Отвод|Диаметр|Ёмкость №5");
    // The same words in Windows-1251.
    const QByteArray codePage = "\xce\xf2\xe2\xee\xe4|\xc4\xe8\xe0\xec\xe5\xf2\xf0|"
                                "\xa8\xec\xea\xee\xf1\xf2\xfc\x20\xb9\x35";
    QTest::newRow("no encoding, code page") << QByteArray() << codePage << words;
    QTest::newRow("another encoding, code page")
        << QByteArray("\"encoding\" : \"cp1251\", ") << codePage << words;
    QTest::newRow("code page text ending as a UTF-8 sequence begins")
        << QByteArray() << QByteArray("P|N|M12-\xc2") << QStringLiteral("P|N|M12-В");
    QTest::newRow("no encoding, UTF-8 text") << QByteArray() << words.toUtf8() << words;
    QTest::newRow("utf8") << QByteArray("\"encoding\" : \"utf8\", ") << words.toUtf8() << words;
}

// A document that does not say it is UTF-8 comes from a writer of the code page of Russian
// Windows installations; one that says so is read as UTF-8.
void TestDocumentReader::textsFollowTheHeaderEncoding()
{
    QFETCH(QByteArray, encoding);
    QFETCH(QByteArray, texts);
    QFETCH(QString, read);
#ifdef Q_OS_WIN
    QSKIP("Windows reads such documents in the code page of the installation");
#endif
    const QList<QByteArray> written = texts.split('|');
    const QStringList expected = read.split(u'|');
    const QByteArray item = "{ \"packet\" : \"" + written[0] +
                            "\", \"folder\" : \"F\", \"id\" : \"e1\", \"atr\" : [ { \"name\" : \"" +
                            written[1] + "\", \"num\" : 1, \"type\" : 3, \"val\" : \"" +
                            written[2] + "\" } ], \"prj\" : [] }";
    const QByteArray text = document(3, [&](int i) {
                                return i == 1 ? item : QByteArray();
                            }).replace("\"encoding\" : \"utf8\", ", encoding);
    for (const QByteArray& form : {text, "// whole\n" + text}) {
        const std::optional<exchange::ParsedDocument> doc = exchange::parseDocument(form);
        QVERIFY(doc);
        QCOMPARE(doc->records.size(), size_t(3));
        QCOMPARE(doc->records[1].packet, expected[0]);
        QCOMPARE(doc->records[1].value(expected[1]), expected[2]);
        QCOMPARE(doc->records[2].value(QStringLiteral("A")), QStringLiteral("v2"));
    }
}

void TestDocumentReader::documentFedInPartsReadsAsWhole_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("count"); // records of the whole reading, in order; -1 refused
    QTest::addColumn<bool>("fed");  // read by the feed; otherwise it gives up and gives nothing

    auto at = [](int where, const QByteArray& replacement) {
        return [=](int i) { return i == where ? replacement : QByteArray(); };
    };
    QTest::newRow("writer's form") << document(300) << 300 << true;
    QTest::newRow("no elements") << document(0) << 0 << true;
    QTest::newRow("tight separators") << document(130, {}, ",") << 130 << true;
    // More than one batch of the feed.
    QTest::newRow("several batches") << document(4500) << 4500 << true;
    QTest::newRow("brackets and quotes inside strings")
        << document(130, at(70, element(70).replace("\"P\"", "\"[{\\\"]}\""))) << 130 << true;
    QTest::newRow("member after the list")
        << QByteArray(document(5)).replace("\n ]\n}", "\n ], \"extra\" : [1, {\"a\" : 2}]\n}") << 5
        << true;
    QTest::newRow("comment between elements") << document(130, {}, ",\n// c\n") << 130 << false;
    QTest::newRow("header after the elements")
        << QByteArray("{ \"std-size\" : [ " + element(0) + ", " + element(1) +
                      " ], \"comment\" : { \"encoding\" : "
                      "\"utf8\", \"export-date\" : \"d\", \"lib-name\" : \"TX\" } }")
        << 2 << false;
    QTest::newRow("escaped member name")
        << QByteArray(document(130)).replace("\"std-size\"", "\"std\\u002dsize\"") << 130 << false;
    QTest::newRow("header given twice")
        << QByteArray(document(3))
               .replace("\n}\n", ", \"comment\" : { \"encoding\" : \"cp1251\", "
                                 "\"export-date\" : \"d\", \"lib-name\" : \"VK\" }\n}\n")
        << 3 << false;
    QTest::newRow("missing comma between elements") << document(130, {}, "\n") << -1 << false;
    QTest::newRow("syntax error in a late element")
        << document(130, at(129, element(129).replace("\"num\" : 1", "\"num\" : "))) << -1 << false;
    QTest::newRow("element that is a number") << document(130, at(65, "12")) << -1 << false;
    QTest::newRow("text after the document") << document(3) + "x" << -1 << false;
    QTest::newRow("cut off") << document(3).chopped(4) << -1 << false;
    QTest::newRow("unsafe file name")
        << document(3, at(1, element(1).replace("\"prj\" : []",
                                                "\"prj\" : [ { \"name\" : \"n\", \"type\" : 1, "
                                                "\"view\" : 1, \"file\" : \"..\\\\x\", \"icon\" : "
                                                "\"\", \"digest\" : \"\" } ]")))
        << -1 << false;
}

// The whole reading gives the records in document order; fed in parts of any size, a document
// gives what the whole reading gives, or the feed gives up and the whole reading decides; the
// writer's form is never given up.
void TestDocumentReader::documentFedInPartsReadsAsWhole()
{
    QFETCH(QByteArray, text);
    QFETCH(int, count);
    QFETCH(bool, fed);
    // The whole reading logs why it refuses; the feed says nothing of its own.
    static int logged = 0;
    logged = 0;
    const QtMessageHandler previous = qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext&, const QString&) { ++logged; });
    auto restore = qScopeGuard([&] { qInstallMessageHandler(previous); });
    const std::optional<exchange::ParsedDocument> whole = exchange::parseDocument(text);
    const int wholeLogged = logged;
    QCOMPARE(whole ? int(whole->records.size()) : -1, count);
    for (int i = 0; i < count; ++i) {
        const exchange::ImportElement& r = whole->records[size_t(i)];
        QCOMPARE(r.id, QStringLiteral("e%1").arg(i));
        QCOMPARE(r.folder, QStringLiteral("F\\%1").arg(i));
        QCOMPARE(r.value(QStringLiteral("A")), QStringLiteral("v%1").arg(i));
    }
    if (text.contains("[{")) QCOMPARE(whole->records[70].packet, QStringLiteral("[{\"]}"));
    for (const int part : {1, 7, 4096, int(text.size())}) {
        exchange::DocumentFeed feed;
        bool taken = true;
        for (qsizetype at = 0; taken && at < text.size(); at += part)
            taken = feed.feed(text.constData() + at,
                              size_t(std::min<qsizetype>(part, text.size() - at)));
        const std::optional<exchange::ParsedDocument> doc = feed.finish();
        QCOMPARE(logged, wholeLogged);
        QVERIFY2(bool(doc) == fed, qPrintable(QStringLiteral("parts of %1").arg(part)));
        if (!doc) continue;
        QCOMPARE(doc->header.libName, QStringLiteral("TX"));
        QCOMPARE(doc->header.exportDate, whole->header.exportDate);
        QCOMPARE(doc->records.size(), whole->records.size());
        for (size_t i = 0; i < doc->records.size(); ++i)
            QCOMPARE(doc->records[i].describe(), whole->records[i].describe());
    }
}

// Elements kept in the store read back as parsed, the empty and the absent texts kept apart;
// their records keep what the decision and the dialogs show, and share the names they repeat.
void TestDocumentReader::storedElementsReadBackTheSame()
{
    const QByteArray item =
        "{ \"packet\" : \"Трубы\", \"folder\" : \"A\\\\B\", \"id\" : \"T-%1\", \"type\" : \"\", "
        "\"atr\" : [ { \"name\" : \"USS_AUTHOR\", \"num\" : 3, \"type\" : 3, \"val\" : \"ivan\", "
        "\"var\" : \"d\", \"measure\" : \"мм\", \"desc\" : \"\" }, { \"name\" : \"L\", \"num\" : "
        "4, \"type\" : 3, \"formula\" : \"D*2\", \"old-num\" : 9 }, { \"name\" : "
        "\"USS_LAST_CHANGE_DATE\", \"num\" : 5, \"type\" : 3, \"val\" : \"0%1.01.2024\" } ], "
        "\"model\" : { \"name\" : \"m\", \"version\" : 2%1, \"file\" : \"f.m3d\", \"icon\" : \"\", "
        "\"digest\" : \"ab\" }, \"prj\" : [ { \"name\" : \"v\", \"type\" : 1, \"view\" : 2, "
        "\"file\" "
        ": \"v.frw\", \"icon\" : \"v.png\", \"digest\" : \"cd\" } ], \"repPath\" : \"r.xml\", "
        "\"spc\" "
        ": [ { \"libName\" : \"L\", \"style\" : 1, \"fPart\" : 2, \"sPart\" : 3, \"column\" : [ { "
        "\"num\" : 1, \"val\" : \"$D\" } ] } ] }";
    const QByteArray text =
        document(3, [&](int i) { return QByteArray(item).replace("%1", QByteArray::number(i)); });
    std::optional<exchange::ParsedDocument> doc = exchange::parseDocument(text);
    QVERIFY(doc);
    QTemporaryDir dir;
    exchange::ElementStore store;
    QVERIFY(store.open(dir.filePath("elements")));
    exchange::ImportRecords records;
    exchange::TextPool pool;
    for (const exchange::ImportElement& e : doc->records) {
        records.push_back(exchange::ImportRecord::of(e));
        QVERIFY(store.append(e, records.back()));
        pool.compact(records.back());
    }
    QVERIFY(store.flush());
    // Read back out of order, as the dialogs do.
    for (size_t i : {size_t(2), size_t(0), size_t(1)}) {
        const exchange::ImportElement back = store.read(records[i]);
        QCOMPARE(back.describe(), doc->records[i].describe());
        QVERIFY(back.atr[0].desc && back.atr[0].desc->isEmpty());
        QVERIFY(!back.atr[1].val && !back.atr[1].desc);
        QCOMPARE(records[i].author, "ivan");
        QCOMPARE(records[i].stamp, QString("0%1.01.2024").arg(i));
        QCOMPARE(records[i].modelVersion, std::optional<int>(20 + int(i)));
        QCOMPARE(records[i].value("L"), QString()); // a record keeps no other value
    }
    QCOMPARE(records[0].packet.constData(), records[2].packet.constData());
    // A place the store does not hold is refused, not read as something else.
    exchange::ImportRecord beyond = records[2];
    beyond.offset += 1;
    QVERIFY_THROWS_EXCEPTION(std::runtime_error, store.read(beyond));
    exchange::ImportRecord shortened = records[1];
    shortened.size -= 1;
    QVERIFY_THROWS_EXCEPTION(std::runtime_error, store.read(shortened));
}

QTEST_GUILESS_MAIN(TestDocumentReader)
#include "tst_document_reader.moc"
