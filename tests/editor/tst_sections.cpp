#include "editor/spec_sections.h"

#include <QtTest>

using namespace edw;

class SectionsTest : public QObject
{
    Q_OBJECT

private slots:
    void sectionsAreOfferedInCodeUnitOrder_data();
    void sectionsAreOfferedInCodeUnitOrder();
    void subsectionsKeepTheirOrder_data();
    void subsectionsKeepTheirOrder();
    void spellingsAreKeptApart();
};

void SectionsTest::sectionsAreOfferedInCodeUnitOrder_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QStringList>("sections");
    QTest::newRow("0") << 0 << QStringList();
    QTest::newRow("1") << 1
                       << QStringList{"Арматура", "Детали трубопроводов", "Оборудование",
                                      "Прочие элементы", "Сосуды и аппараты"};
    QTest::newRow("2") << 2
                       << QStringList{"Арматура", "Детали трубопроводов", "Оборудование",
                                      "Прочие элементы"};
    QTest::newRow("3") << 3
                       << QStringList{"Арматура", "Детали воздуховодов", "Детали трубопроводов",
                                      "Оборудование", "Прочие элементы"};
    QTest::newRow("4") << 4 << QStringList();
    QTest::newRow("-1") << -1 << QStringList();
}

void SectionsTest::sectionsAreOfferedInCodeUnitOrder()
{
    QFETCH(int, code);
    QFETCH(QStringList, sections);
    QStringList offered;
    for (const auto& entry : specSections(code))
        offered << entry.first;
    QCOMPARE(offered, sections);
}

void SectionsTest::subsectionsKeepTheirOrder_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("section");
    QTest::addColumn<int>("count");
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("last");
    QTest::newRow("2 pipe parts") << 2 << "Детали трубопроводов" << 19 << "Отводы и Угольники"
                                  << "Штуцеры";
    QTest::newRow("1 vessels") << 1 << "Сосуды и аппараты" << 8 << "Днища"
                               << "Фланцы";
    QTest::newRow("1 equipment") << 1 << "Оборудование" << 4 << "Насосы"
                                 << "Резервуары";
    QTest::newRow("3 equipment") << 3 << "Оборудование" << 11 << "Насосы"
                                 << "Промежуточные емкости";
    QTest::newRow("3 valves") << 3 << "Арматура" << 12 << "Задвижки"
                              << "Трехходовые клапаны";
    QTest::newRow("3 ducts") << 3 << "Детали воздуховодов" << 5 << "Отводы"
                             << "Заглушки";
}

void SectionsTest::subsectionsKeepTheirOrder()
{
    QFETCH(int, code);
    QFETCH(QString, section);
    QFETCH(int, count);
    QFETCH(QString, first);
    QFETCH(QString, last);
    const QStringList subsections = specSubsections(code, section);
    QCOMPARE(subsections.size(), count);
    QCOMPARE(subsections.first(), first);
    QCOMPARE(subsections.last(), last);
    QCOMPARE(specSections(code).at(section), subsections);
}

void SectionsTest::spellingsAreKeptApart()
{
    QVERIFY(specSubsections(1, "Оборудование").contains(QStringLiteral("Ёмкости")));
    QVERIFY(specSubsections(3, "Оборудование").contains(QStringLiteral("Промежуточные емкости")));
    QVERIFY(specSubsections(3, "Детали трубопроводов").contains("Кресты и Крестовины"));
    QVERIFY(specSubsections(3, "Детали воздуховодов").contains("Крестовины"));
    QCOMPARE(specSubsections(2, "Прочие элементы").at(2), QStringLiteral("УГО"));
    QVERIFY(specSubsections(2, "Детали трубопроводов").contains("Отводы-тройники"));
    QVERIFY(specSubsections(1, "Нет такого").isEmpty());
    QVERIFY(specSubsections(0, "Арматура").isEmpty());
}

QTEST_GUILESS_MAIN(SectionsTest)
#include "tst_sections.moc"
