#include "catalog_fixture.h"
#include "catalog_tree.h"
#include "element_ops.h"
#include "stdsize.h"

#include <QtTest>

using namespace edw;

class TreeTest : public QObject
{
    Q_OBJECT

private slots:
    void categoryPathDropsEmptyParts_data();
    void categoryPathDropsEmptyParts();
    void emptyPathCreatesNothing();
    void twoElementsOnOnePathShareFolders();
    void elementIdentifierCarriesPrefixTimeAndRequest();
    void folderPathFollowsSeparators_data();
    void folderPathFollowsSeparators();
    void packetIsFoundOrAdded();
    void providerIsReachedFromElement();
};

void TreeTest::categoryPathDropsEmptyParts_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("packet");
    QTest::addColumn<QString>("folder");
    QTest::newRow("doubled and trailing") << "A\\\\B\\"
                                          << "A"
                                          << "B";
    QTest::newRow("leading") << "\\A\\B"
                             << "A"
                             << "B";
    QTest::newRow("plain") << "A\\B"
                           << "A"
                           << "B";
    QTest::newRow("packet only") << "Насосы"
                                 << "Насосы"
                                 << "";
    QTest::newRow("three levels") << "Арматура\\Клапаны\\Обратные"
                                  << "Арматура"
                                  << "Клапаны\\Обратные";
}

void TreeTest::categoryPathDropsEmptyParts()
{
    QFETCH(QString, path);
    QFETCH(QString, packet);
    QFETCH(QString, folder);

    testing::TempCatalog catalog;
    es_stdsize_t* element = createElement(catalog.provider, path, QStringLiteral("VALVE"),
                                          QString(), QStringLiteral("7"));
    QVERIFY(element);
    const CStdSize wrapped(element);
    QCOMPARE(wrapped.type(), QStringLiteral("VALVE"));
    QCOMPARE(wrapped.packetName(), packet);

    const auto all = packets(catalog.provider);
    QCOMPARE(all.size(), size_t(1));
    QCOMPARE(all.begin()->first, packet);

    // The element sits in its own folder below the category's folders.
    es_folder_t* own = wrapped.folder();
    QCOMPARE(fromEs(folder_GetName(own)), QStringLiteral("folder ") + wrapped.id());
    es_folder_t* category = folder_GetParentFolder(own);
    QCOMPARE(folderPath(category), folder);
    QCOMPARE(categoryPath(category), folder.isEmpty() ? packet : packet + "\\" + folder);
    const QString expectedOwn =
        (folder.isEmpty() ? QString() : folder + "\\") + "folder " + wrapped.id();
    QCOMPARE(folderPath(own), expectedOwn);
}

void TreeTest::emptyPathCreatesNothing()
{
    testing::TempCatalog catalog;
    QVERIFY(!createElement(catalog.provider, QString(), QStringLiteral("T"), QString(),
                           QStringLiteral("1")));
    QVERIFY(!createElement(catalog.provider, QStringLiteral("\\\\"), QStringLiteral("T"), QString(),
                           QStringLiteral("1")));
    QCOMPARE(provider_GetPacketCount(catalog.provider), 0u);
}

void TreeTest::twoElementsOnOnePathShareFolders()
{
    testing::TempCatalog catalog;
    const QString path = QStringLiteral("Оборудование\\Насосы");
    es_stdsize_t* first =
        createElement(catalog.provider, path, QStringLiteral("PUMP"), QString(), "first");
    es_stdsize_t* second =
        createElement(catalog.provider, path, QStringLiteral("PUMP"), QString(), "second");
    QVERIFY(first);
    QVERIFY(second);
    QVERIFY(CStdSize(first).id() != CStdSize(second).id());

    QCOMPARE(provider_GetPacketCount(catalog.provider), 1u);
    es_folder_t* root = packet_GetRootFolder(packets(catalog.provider).at("Оборудование"));
    const auto top = childFolders(root);
    QCOMPARE(top.size(), size_t(1));
    const auto perElement = childFolders(top.at(QStringLiteral("Насосы")));
    QCOMPARE(perElement.size(), size_t(2));
    QVERIFY(perElement.count(QStringLiteral("folder ") + CStdSize(first).id()));
    QVERIFY(perElement.count(QStringLiteral("folder ") + CStdSize(second).id()));
}

void TreeTest::elementIdentifierCarriesPrefixTimeAndRequest()
{
    const QDateTime when(QDate(2024, 3, 5), QTime(7, 8, 9));
    QCOMPARE(makeElementId(QStringLiteral("tx_"), QStringLiteral("42"), when),
             QStringLiteral("tx_USER#2024.03.05T07:08:09#42"));

    testing::TempCatalog catalog;
    es_stdsize_t* element = createElement(catalog.provider, QStringLiteral("A"),
                                          QStringLiteral("T"), "pre_", QStringLiteral("req"));
    const QString id = CStdSize(element).id();
    QVERIFY2(
        QRegularExpression(QStringLiteral(R"(^pre_USER#\d{4}\.\d\d\.\d\dT\d\d:\d\d:\d\d#req$)"))
            .match(id)
            .hasMatch(),
        qPrintable(id));
}

void TreeTest::folderPathFollowsSeparators_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("expected");
    QTest::newRow("backslashes") << "Клапаны\\Обратные"
                                 << "Клапаны\\Обратные";
    QTest::newRow("slashes") << "Клапаны/Обратные"
                             << "Клапаны\\Обратные";
    QTest::newRow("mixed and empty parts") << "/Клапаны\\\\Обратные/"
                                           << "Клапаны\\Обратные";
    QTest::newRow("empty is root") << ""
                                   << "";
}

void TreeTest::folderPathFollowsSeparators()
{
    QFETCH(QString, path);
    QFETCH(QString, expected);
    testing::TempCatalog catalog;
    es_packet_t* packet = findOrAddPacket(catalog.provider, QStringLiteral("Арматура"));
    QVERIFY(packet);
    es_folder_t* folder = ensureFolderPath(packet, path);
    QVERIFY(folder);
    QCOMPARE(folderPath(folder), expected);
    // A second time finds the same folders instead of adding new ones.
    es_folder_t* again = ensureFolderPath(packet, expected);
    QCOMPARE(folderPath(again), expected);
    QCOMPARE(childFolders(packet_GetRootFolder(packet)).size(), size_t(expected.isEmpty() ? 0 : 1));
}

void TreeTest::packetIsFoundOrAdded()
{
    testing::TempCatalog catalog;
    es_packet_t* added = findOrAddPacket(catalog.provider, QStringLiteral("Опоры"));
    QVERIFY(added);
    es_packet_t* found = findOrAddPacket(catalog.provider, QStringLiteral("Опоры"));
    QCOMPARE(fromEs(packet_GetName(found)), QStringLiteral("Опоры"));
    QCOMPARE(provider_GetPacketCount(catalog.provider), 1u);
    QVERIFY(!findOrAddPacket(catalog.provider, QString()));
    findOrAddPacket(catalog.provider, QStringLiteral("опоры"));
    QCOMPARE(provider_GetPacketCount(catalog.provider), 2u);
}

void TreeTest::providerIsReachedFromElement()
{
    testing::TempCatalog catalog;
    es_stdsize_t* element = createElement(catalog.provider, QStringLiteral("A\\B"),
                                          QStringLiteral("T"), QString(), "1");
    es_provider_t* provider = providerOf(element);
    QVERIFY(provider);
    QCOMPARE(fromEs(esx_CatalogPath(provider)), fromEs(esx_CatalogPath(catalog.provider)));
    QVERIFY(!providerOf(nullptr));
}

QTEST_GUILESS_MAIN(TreeTest)
#include "tst_tree.moc"
