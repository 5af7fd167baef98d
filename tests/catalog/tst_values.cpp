#include "catalog_fixture.h"
#include "catalog_tree.h"
#include "digest.h"
#include "element_ops.h"
#include "esconvert.h"

#include <QtTest>

#include <stdexcept>

using namespace edw;

class ValuesTest : public QObject
{
    Q_OBJECT

private slots:
    void textWrittenByAttributeType_data();
    void textWrittenByAttributeType();
    void storedValueReadsBackAsText_data();
    void storedValueReadsBackAsText();
    void unknownTypeCodeIsNotWritten();
    void nullTextReadsAsEmpty();
    void databaseNameGivesLibraryKind_data();
    void databaseNameGivesLibraryKind();
    void unknownDatabaseIsRefused();
    void digestIsLowerCaseMd5_data();
    void digestIsLowerCaseMd5();
};

void ValuesTest::textWrittenByAttributeType_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("storedKind");
    QTest::addColumn<QString>("stored");

    QTest::newRow("real with comma") << 2 << "3,75" << int(ES_VALUE_REAL) << "3.75";
    QTest::newRow("real with dot") << 2 << "2.5" << int(ES_VALUE_REAL) << "2.5";
    QTest::newRow("real with two commas") << 2 << "3,75,1" << int(ES_VALUE_REAL) << "0";
    QTest::newRow("real with unit") << 2 << "2,5 mm" << int(ES_VALUE_REAL) << "0";
    QTest::newRow("real negative") << 2 << "-0,125" << int(ES_VALUE_REAL) << "-0.125";
    QTest::newRow("integer") << 1 << "42" << int(ES_VALUE_INT) << "42";
    QTest::newRow("integer with letter") << 1 << "12a" << int(ES_VALUE_INT) << "0";
    QTest::newRow("integer from real text") << 1 << "12.5" << int(ES_VALUE_INT) << "0";
    QTest::newRow("text as it stands") << 3 << "3,75 мм" << int(ES_VALUE_TEXT) << "3,75 мм";
}

void ValuesTest::textWrittenByAttributeType()
{
    QFETCH(int, type);
    QFETCH(QString, text);
    QFETCH(int, storedKind);
    QFETCH(QString, stored);

    testing::TempCatalog catalog;
    QVERIFY(catalog.provider);
    es_stdsize_t* element = createElement(catalog.provider, QStringLiteral("Трубы\\Стальные"),
                                          QStringLiteral("PIPE"), QString(), QStringLiteral("1"));
    QVERIFY(element);
    es_attribute_t* attribute = testing::addAttribute(element, QStringLiteral("Value"), type);
    QVERIFY(attribute);

    setValuesByName(element, {{QStringLiteral("Value"), text}});

    QCOMPARE(int(testing::kindOf(element, QStringLiteral("Value"))), storedKind);
    QCOMPARE(testing::valueOf(element, QStringLiteral("Value")), stored);
}

void ValuesTest::storedValueReadsBackAsText_data()
{
    QTest::addColumn<double>("real");
    QTest::addColumn<QString>("text");
    QTest::newRow("short decimal") << 0.1 << "0.1";
    QTest::newRow("whole") << 250.0 << "250";
    QTest::newRow("third") << 1.0 / 3.0 << "0.3333333333333333";
    QTest::newRow("negative") << -12.75 << "-12.75";
}

void ValuesTest::storedValueReadsBackAsText()
{
    QFETCH(double, real);
    QFETCH(QString, text);
    es_value value{};
    value.kind = ES_VALUE_REAL;
    value.d = real;
    QCOMPARE(valueToText(value), text);
    // The text reads back to the very same double.
    QCOMPARE(textToReal(valueToText(value)), real);

    es_value empty{};
    QCOMPARE(valueToText(empty), QString());
}

void ValuesTest::unknownTypeCodeIsNotWritten()
{
    testing::TempCatalog catalog;
    es_stdsize_t* element = createElement(catalog.provider, QStringLiteral("A"),
                                          QStringLiteral("T"), QString(), QStringLiteral("1"));
    QVERIFY(element);
    es_attribute_t* odd = testing::addAttribute(element, QStringLiteral("Odd"), 7);
    if (!odd) QSKIP("the store refuses attributes of type 7");
    QVERIFY(!writeValue(element, odd, QStringLiteral("5")));
    QCOMPARE(int(testing::kindOf(element, QStringLiteral("Odd"))), int(ES_VALUE_EMPTY));
}

void ValuesTest::nullTextReadsAsEmpty()
{
    QCOMPARE(fromEs(nullptr), QString());
    const QString text = QStringLiteral("Отвод 90°");
    QCOMPARE(fromEs(toEs(text).c_str()), text);
}

void ValuesTest::databaseNameGivesLibraryKind_data()
{
    QTest::addColumn<QString>("dbName");
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("identifier");
    QTest::newRow("vo") << "user_vo" << 0 << "orvik.aec.vobject";
    QTest::newRow("tx") << "user_tx" << 1 << "orvik.aec.engsystx";
    QTest::newRow("vk") << "user_vk" << 2 << "orvik.aec.engsysvk";
    QTest::newRow("ov") << "user_ov" << 3 << "orvik.aec.engsysov";
    QTest::newRow("marker inside") << "my_user_vk_2024" << 2 << "orvik.aec.engsysvk";
    QTest::newRow("first marker wins") << "user_ov_user_tx" << 1 << "orvik.aec.engsystx";
}

void ValuesTest::databaseNameGivesLibraryKind()
{
    QFETCH(QString, dbName);
    QFETCH(int, kind);
    QFETCH(QString, identifier);
    testing::TempCatalog catalog(dbName);
    QVERIFY(catalog.provider);
    QCOMPARE(libraryKind(catalog.provider), kind);
    QCOMPARE(libraryIdentifier(kind), identifier);
}

void ValuesTest::unknownDatabaseIsRefused()
{
    try {
        libraryKind(QStringLiteral("USER_TX"));
        QFAIL("an unknown database name was accepted");
    } catch (const std::runtime_error& e) {
        QCOMPARE(QString::fromUtf8(e.what()), QStringLiteral("Unknown user database"));
    }
    QCOMPARE(libraryIdentifier(4), QString());
    QCOMPARE(libraryIdentifier(-1), QString());
}

void ValuesTest::digestIsLowerCaseMd5_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("digest");
    QTest::newRow("empty") << QByteArray() << "d41d8cd98f00b204e9800998ecf8427e";
    QTest::newRow("abc") << QByteArray("abc") << "900150983cd24fb0d6963f7d28e17f72";
}

void ValuesTest::digestIsLowerCaseMd5()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, digest);
    QCOMPARE(contentDigest(content), digest);
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("модель.m3d"));
    QFile out(file);
    QVERIFY(out.open(QIODevice::WriteOnly));
    out.write(content);
    out.close();
    QCOMPARE(contentDigest(file), digest);
    QCOMPARE(contentDigest(dir.filePath(QStringLiteral("missing"))), QString());
}

QTEST_GUILESS_MAIN(ValuesTest)
#include "tst_values.moc"
