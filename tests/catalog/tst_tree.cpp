#include "catalog_tree.h"
#include "element_ops.h"
#include "stdsize.h"
#include "temp_catalog.h"

#include <QtTest>

using namespace edw;

class TreeTest : public QObject
{
    Q_OBJECT

private slots:
    void categoryPathDropsEmptyParts_data();
    void categoryPathDropsEmptyParts();
    void twoElementsOnOnePathShareFolders();
    void folderPathFollowsSeparators_data();
    void folderPathFollowsSeparators();
};

void TreeTest::categoryPathDropsEmptyParts_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("category"); // empty: nothing is created
    QTest::newRow("doubled and trailing") << "A\\\\B\\" << QString("A\\B");
    QTest::newRow("leading") << "\\A\\B" << QString("A\\B");
    QTest::newRow("packet only") << "Насосы" << QString("Насосы");
    QTest::newRow("three levels") << "Арматура\\Клапаны\\Обратные"
                                  << QString("Арматура\\Клапаны\\Обратные");
    QTest::newRow("empty") << "" << QString();
    QTest::newRow("separators only") << "\\\\" << QString();
}

void TreeTest::categoryPathDropsEmptyParts()
{
    QFETCH(QString, path);
    QFETCH(QString, category);
    testing::TempCatalog catalog;
    const CStdSize element(createElement(catalog.provider, path, "VALVE", "tx_", "7"));
    QCOMPARE(element.isNull(), category.isEmpty());
    QCOMPARE(provider_GetPacketCount(catalog.provider), category.isEmpty() ? 0u : 1u);
    if (category.isEmpty()) return;
    QCOMPARE(element.type(), QStringLiteral("VALVE"));
    QVERIFY2(QRegularExpression(R"(^tx_USER#\d{4}\.\d\d\.\d\dT\d\d:\d\d:\d\d#7$)")
                 .match(element.id())
                 .hasMatch(),
             qPrintable(element.id()));
    // The element sits in a folder of its own below the category's folders.
    QCOMPARE(fromEs(folder_GetName(element.folder())), "folder " + element.id());
    QCOMPARE(categoryPath(folder_GetParentFolder(element.folder())), category);
    QCOMPARE(categoryPath(element.folder()), category + "\\folder " + element.id());
}

void TreeTest::twoElementsOnOnePathShareFolders()
{
    testing::TempCatalog catalog;
    const QString path = QStringLiteral("Оборудование\\Насосы");
    const CStdSize first(createElement(catalog.provider, path, "PUMP", QString(), "first"));
    const CStdSize second(createElement(catalog.provider, path, "PUMP", QString(), "second"));
    QVERIFY(first && second);
    QCOMPARE(provider_GetPacketCount(catalog.provider), 1u);
    const auto top =
        childFolders(packet_GetRootFolder(packets(catalog.provider).at("Оборудование")));
    QCOMPARE(top.size(), size_t(1));
    const auto perElement = childFolders(top.at(QStringLiteral("Насосы")));
    QCOMPARE(perElement.size(), size_t(2));
    QVERIFY(perElement.count("folder " + first.id()) && perElement.count("folder " + second.id()));
    QCOMPARE(fromEs(esx_CatalogPath(first.provider())), catalog.path);
}

void TreeTest::folderPathFollowsSeparators_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("expected");
    QTest::newRow("backslashes") << "Клапаны\\Обратные" << QString("Клапаны\\Обратные");
    // "/" is part of a name: "Ду 1/2" is one folder.
    QTest::newRow("slash in a name") << "Ду 1/2\\Обратные" << QString("Ду 1/2\\Обратные");
    QTest::newRow("empty parts") << "\\Клапаны\\\\Обратные\\" << QString("Клапаны\\Обратные");
    QTest::newRow("empty is the root") << "" << QString();
}

void TreeTest::folderPathFollowsSeparators()
{
    QFETCH(QString, path);
    QFETCH(QString, expected);
    testing::TempCatalog catalog;
    es_packet_t* packet = findOrAddPacket(catalog.provider, "Арматура");
    QCOMPARE(folderPath(ensureFolderPath(packet, path)), expected);
    // A second time finds the same folders instead of adding new ones.
    QCOMPARE(folderPath(ensureFolderPath(packet, expected)), expected);
    QCOMPARE(childFolders(packet_GetRootFolder(packet)).size(), size_t(expected.isEmpty() ? 0 : 1));
    QCOMPARE(provider_GetPacketCount(catalog.provider), 1u);
}

QTEST_GUILESS_MAIN(TreeTest)
#include "tst_tree.moc"
