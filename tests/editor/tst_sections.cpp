#include "editor/spec_sections.h"

#include <QtTest>

using namespace edw;

// The section lists themselves are fixed data; what is checked is how they are offered: in code
// unit order ("Детали воздуховодов" before "Детали трубопроводов"), nothing for an unknown
// discipline or section.
class SectionsTest : public QObject
{
    Q_OBJECT

private slots:
    void sectionsOffered_data();
    void sectionsOffered();
};

void SectionsTest::sectionsOffered_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QStringList>("sections");
    QTest::newRow("0") << 0 << QStringList();
    QTest::newRow("3") << 3
                       << QStringList{"Арматура", "Детали воздуховодов", "Детали трубопроводов",
                                      "Оборудование", "Прочие элементы"};
    QTest::newRow("4") << 4 << QStringList();
    QTest::newRow("-1") << -1 << QStringList();
}

void SectionsTest::sectionsOffered()
{
    QFETCH(int, code);
    QFETCH(QStringList, sections);
    QStringList offered;
    for (const auto& [section, subsections] : specSections(code)) {
        offered << section;
        QCOMPARE(specSubsections(code, section), subsections);
    }
    QCOMPARE(offered, sections);
    QVERIFY(specSubsections(code, "Нет такого").isEmpty());
    QVERIFY(specSubsections(code, "арматура").isEmpty());
}

QTEST_GUILESS_MAIN(SectionsTest)
#include "tst_sections.moc"
