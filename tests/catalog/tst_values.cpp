#include "catalog_tree.h"
#include "digest.h"
#include "element_ops.h"
#include "temp_catalog.h"

#include <QtTest>

#include <stdexcept>

using namespace edw;

class ValuesTest : public QObject
{
    Q_OBJECT

private slots:
    void textWrittenByAttributeType_data();
    void textWrittenByAttributeType();
    void databaseNameGivesLibraryKind_data();
    void databaseNameGivesLibraryKind();
    void digestIsLowerCaseMd5();
};

void ValuesTest::textWrittenByAttributeType_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("stored");
    // A number is the whole text or nothing: no blanks, units or words around it.
    const struct
    {
        const char* tag;
        int type;
        const char *text, *stored;
    } rows[] = {
        {"real with comma", 2, "3,75", "3.75"},
        {"real with two commas", 2, "3,75,1", "0"},
        {"real with unit", 2, "2,5 mm", "0"},
        {"real shortest text", 2, "0.1", "0.1"},
        {"integer", 1, "42", "42"},
        {"integer with letter", 1, "12a", "0"},
        {"integer after a blank", 1, " 12", "0"},
        {"integer before a blank", 1, "12 ", "0"},
        {"integer with sign", 1, "-7", "-7"},
        {"real after a blank", 2, " 2,5", "0"},
        {"real not a number", 2, "nan", "0"},
        {"real infinite", 2, "inf", "0"},
        {"real with exponent", 2, "1,5e3", "1500"},
        {"text as it stands", 3, "3,75 мм", "3,75 мм"},
        {"unknown type not written", 7, "5", ""},
    };
    for (const auto& row : rows)
        QTest::newRow(row.tag) << row.type << QString(row.text) << QString(row.stored);
}

void ValuesTest::textWrittenByAttributeType()
{
    QFETCH(int, type);
    QFETCH(QString, text);
    QFETCH(QString, stored);
    testing::TempCatalog catalog;
    es_stdsize_t* element =
        createElement(catalog.provider, "Трубы\\Стальные", "PIPE", QString(), "1");
    QVERIFY(testing::addAttribute(element, "Value", type));
    setValuesByName(element, {{"Value", text}, {"Unknown", text}});
    QCOMPARE(testing::valueOf(element, "Value"), stored);
    QCOMPARE(int(testing::kindOf(element, "Value")), type <= 3 ? type : int(ES_VALUE_EMPTY));
}

void ValuesTest::databaseNameGivesLibraryKind_data()
{
    QTest::addColumn<QString>("dbName");
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("identifier");
    QTest::newRow("vo") << "user_vo" << 0 << "orvik.aec.vobject";
    QTest::newRow("tx") << "user_tx" << 1 << "orvik.aec.engsystx";
    QTest::newRow("vk inside") << "my_user_vk_2024" << 2 << "orvik.aec.engsysvk";
    QTest::newRow("ov") << "user_ov" << 3 << "orvik.aec.engsysov";
    QTest::newRow("first marker wins") << "user_ov_user_tx" << 1 << "orvik.aec.engsystx";
    QTest::newRow("case matters") << "USER_TX" << -1 << "";
}

void ValuesTest::databaseNameGivesLibraryKind()
{
    QFETCH(QString, dbName);
    QFETCH(int, kind);
    QFETCH(QString, identifier);
    testing::TempCatalog catalog(dbName);
    QVERIFY(catalog.provider);
    try {
        QCOMPARE(libraryKind(catalog.provider), kind);
        QVERIFY2(kind >= 0, "an unknown database name was accepted");
    } catch (const std::runtime_error& e) {
        QCOMPARE(kind, -1);
        QCOMPARE(QString::fromUtf8(e.what()), QStringLiteral("Unknown user database"));
    }
    QCOMPARE(libraryIdentifier(kind), identifier);
}

void ValuesTest::digestIsLowerCaseMd5()
{
    QCOMPARE(contentDigest(QByteArray("abc")), QStringLiteral("900150983cd24fb0d6963f7d28e17f72"));
    testing::TempCatalog catalog;
    QCOMPARE(contentDigest(catalog.writeFile("модель.m3d", "abc")),
             QStringLiteral("900150983cd24fb0d6963f7d28e17f72"));
    QCOMPARE(contentDigest(catalog.dir.filePath("missing")), QString());
}

QTEST_GUILESS_MAIN(ValuesTest)
#include "tst_values.moc"
