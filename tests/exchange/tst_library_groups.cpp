#include "library_groups.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

using namespace exchange;

// Grouping of a catalog's packets by the library configuration files of the host's library
// root, as both exchange trees show it.
class TestLibraryGroups : public QObject
{
    Q_OBJECT

private slots:
    void displayNameDropsPrefixesInOrder_data();
    void displayNameDropsPrefixesInOrder();
    void packetsGoToTheirLibraryAndRestLast_data();
    void packetsGoToTheirLibraryAndRestLast();
    void firstLibraryInTableWinsSharedPacket();
    void unreadableFileIsReportedAndClaimsNothing_data();
    void unreadableFileIsReportedAndClaimsNothing();

private:
    static void write(const QString& path, const QByteArray& content)
    {
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile out(path);
        QVERIFY(out.open(QIODevice::WriteOnly));
        out.write(content);
    }
    // "name [command]: packet, packet" per group, so that a row can name the whole tree.
    static QStringList describe(const LibraryGrouping& grouping, const QStringList& packets)
    {
        QStringList out;
        for (const LibraryGroup& g : grouping.groups) {
            QStringList names;
            for (int i : g.packets)
                names << packets[i];
            out << g.name + " [" + g.command + "]: " + names.join(", ");
        }
        return out;
    }
};

void TestLibraryGroups::displayNameDropsPrefixesInOrder_data()
{
    QTest::addColumn<QString>("packet");
    QTest::addColumn<QString>("shown");
    QTest::newRow("underscore") << "ПЭ_Трубы"
                                << "Трубы";
    QTest::newRow("blank") << "ПЭ Отводы"
                           << "Отводы";
    QTest::newRow("bare") << "ПЭКраны"
                          << "Краны";
    // "ПЭ_" goes before "ПЭ", so no underscore is left behind.
    QTest::newRow("underscore before bare") << "ПЭПЭ_Муфты"
                                            << "Муфты";
    QTest::newRow("every occurrence") << "ПЭ_Тройники ПЭ_равные ПЭ"
                                      << "Тройники равные ";
    QTest::newRow("no prefix") << "Задвижки"
                               << "Задвижки";
    QTest::newRow("latin PE kept") << "PE_Трубы"
                                   << "PE_Трубы";
}

void TestLibraryGroups::displayNameDropsPrefixesInOrder()
{
    QFETCH(QString, packet);
    QFETCH(QString, shown);
    QCOMPARE(packetDisplayName(packet), shown);
}

void TestLibraryGroups::packetsGoToTheirLibraryAndRestLast_data()
{
    QTest::addColumn<QByteArray>("config");
    QTest::addColumn<QStringList>("groups");
    const QByteArray two = R"(<library name="Трубопроводы"><catalogs>
        <catalog name="ПЭ_Отводы" view="v" grid="g"/><catalog name="ПЭ_Трубы"/></catalogs>
        <commands><command name="c"><subcommand>
        <uss-toolbar name="Трубы ТХ"/></subcommand></command></commands></library>)";
    QTest::newRow("two claimed, two left")
        << two
        << QStringList{"Трубопроводы [Трубы ТХ]: ПЭ_Трубы, ПЭ_Отводы",
                       "Остальные []: ПЭ_Задвижки, Краны"};
    const QByteArray viaToolbar = R"(<lib><commands><command name="Команда 7"><subcommand>
        <uss-toolbar catalog="Краны"/></subcommand></command></commands></lib>)";
    QTest::newRow("toolbar claims, command's name, file's name")
        << viaToolbar
        << QStringList{"PipingTX [Команда 7]: Краны",
                       "Остальные []: ПЭ_Трубы, ПЭ_Задвижки, ПЭ_Отводы"};
    const QByteArray all = R"(<l name="Все"><catalogs><catalog name="Краны"/>
        <catalog name="ПЭ_Задвижки"/><catalog name="ПЭ_Трубы"/><catalog name="ПЭ_Отводы"/>
        <catalog name="Нет в каталоге"/></catalogs></l>)";
    QTest::newRow("all claimed, no rest")
        << all << QStringList{"Все []: ПЭ_Трубы, ПЭ_Задвижки, ПЭ_Отводы, Краны"};
    const QByteArray none = R"(<l name="Чужая"><catalogs><catalog name="Другое"/></catalogs></l>)";
    QTest::newRow("library claiming nothing is left out")
        << none << QStringList{"Остальные []: ПЭ_Трубы, ПЭ_Задвижки, ПЭ_Отводы, Краны"};
    // Only the first toolbar names the command; a repeated packet is claimed once; toolbars
    // outside the command path are not read.
    const QByteArray firstToolbar = R"(<lib name="Библиотека"><catalogs><catalog name="Краны"/>
        <catalog name="ПЭ_Трубы"/></catalogs><catalogs><catalog name="Краны"/></catalogs>
        <uss-toolbar name="Не та" catalog="ПЭ_Задвижки"/>
        <commands><command name="c1"><subcommand><uss-toolbar name="Первая" catalog="ПЭ_Отводы"/>
        </subcommand></command><command name="c2"><subcommand>
        <uss-toolbar name="Вторая" catalog="ПЭ_Трубы"/></subcommand></command></commands></lib>)";
    QTest::newRow("first toolbar, packets once")
        << firstToolbar
        << QStringList{"Библиотека [Первая]: ПЭ_Трубы, ПЭ_Отводы, Краны",
                       "Остальные []: ПЭ_Задвижки"};
}

void TestLibraryGroups::packetsGoToTheirLibraryAndRestLast()
{
    QFETCH(QByteArray, config);
    QFETCH(QStringList, groups);
    QTemporaryDir root;
    write(root.filePath("EngSys_TX/MarloDB/PipingTX.xml"), config);
    const QStringList packets{"ПЭ_Трубы", "ПЭ_Задвижки", "ПЭ_Отводы", "Краны"};
    const LibraryGrouping grouping = groupPackets(packets, 1, root.path());
    QCOMPARE(grouping.errors, QStringList());
    QCOMPARE(describe(grouping, packets), groups);
}

void TestLibraryGroups::firstLibraryInTableWinsSharedPacket()
{
    QTemporaryDir root;
    const QStringList files = libraryConfigFiles(0, root.path());
    // The third and the last library both claim "Лестницы"; the third comes first.
    write(files[2], R"(<l name="Третья"><catalogs><catalog name="Лестницы"/>
                      <catalog name="Кровли"/></catalogs></l>)");
    write(files[12], R"(<l name="Последняя"><catalogs><catalog name="Лестницы"/>
                      <catalog name="Марки"/></catalogs></l>)");
    const QStringList packets{"Марки", "Лестницы", "Кровли", "Стены"};
    const LibraryGrouping grouping = groupPackets(packets, 0, root.path());
    QCOMPARE(
        describe(grouping, packets),
        (QStringList{"Третья []: Лестницы, Кровли", "Последняя []: Марки", "Остальные []: Стены"}));
    QCOMPARE(grouping.groups[0].file, files[2]);
    QVERIFY(grouping.groups[2].file.isEmpty());
}

void TestLibraryGroups::unreadableFileIsReportedAndClaimsNothing_data()
{
    QTest::addColumn<QByteArray>("config");
    QTest::addColumn<bool>("asFolder");
    QTest::addColumn<QString>("error");
    QTest::newRow("unclosed tag")
        << QByteArray("<l><catalogs><catalog name=\"ПЭ_Трубы\"/></l>")
        << false
        // The offset counts bytes of the file (two per Cyrillic letter).
        << "Ошибка чтения xml\nfile: %1\ndesc: Start-end tags mismatch\noffset: 48";
    QTest::newRow("empty file") << QByteArray() << false
                                << "Ошибка чтения xml\nfile: %1\ndesc: No document element "
                                   "found\noffset: 0";
    QTest::newRow("catalog without name")
        << QByteArray("<l><catalogs><catalog name=\"ПЭ_Трубы\"/><catalog view=\"x\"/>"
                      "</catalogs></l>")
        << false << "Неверная структура xml\nfile: %1\nwhat: catalog without name at offset 47";
    QTest::newRow("folder in place of the file")
        << QByteArray() << true << "Неизвестная ошибка чтения xml\nfile: %1";
}

void TestLibraryGroups::unreadableFileIsReportedAndClaimsNothing()
{
    QFETCH(QByteArray, config);
    QFETCH(bool, asFolder);
    QFETCH(QString, error);
    QTemporaryDir root;
    const QString file = root.filePath("EngSys_TX/MarloDB/PipingTX.xml");
    if (asFolder)
        QVERIFY(QDir().mkpath(file));
    else
        write(file, config);
    const QStringList packets{"ПЭ_Трубы", "ПЭ_Отводы"};
    const LibraryGrouping grouping = groupPackets(packets, 1, root.path());
    QCOMPARE(grouping.errors, QStringList{error.arg(QDir::toNativeSeparators(file))});
    QCOMPARE(describe(grouping, packets), QStringList{"Остальные []: ПЭ_Трубы, ПЭ_Отводы"});
}

QTEST_GUILESS_MAIN(TestLibraryGroups)
#include "tst_library_groups.moc"
