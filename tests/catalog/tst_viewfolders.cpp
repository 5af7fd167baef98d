#include "fake_host.h"
#include "temp_catalog.h"
#include "view_folders.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

#include <filesystem>
#include <stdexcept>

using namespace edw;

namespace {

ViewFolders allKinds(const QString& base)
{
    ViewFolders folders;
    for (int kind = 0; kind < 12; ++kind)
        folders[kind] = base + QString::number(kind);
    return folders;
}

} // namespace

class ViewFoldersTest : public QObject
{
    Q_OBJECT

private slots:
    void fileLiesUnderTheHostsUserFolder();
    void foldersSurviveSaveAndLoad_data();
    void foldersSurviveSaveAndLoad();
    void damagedFileReadsEmpty_data();
    void damagedFileReadsEmpty();
    void savingWithoutAKindIsRefused();
    void unmakeableFolderNamesTheOperation();
};

// Runs first: the path is fixed on first use for the whole process.
void ViewFoldersTest::fileLiesUnderTheHostsUserFolder()
{
    QTemporaryDir dir;
    testing::FakeHost host;
    host.userFolder = dir.path() + QStringLiteral("/Пользователь");
    const QString expected = host.userFolder + QStringLiteral("/aec/marlouss/settings.json");
    QCOMPARE(settingsFilePath(), expected);

    saveViewFolders(allKinds(QStringLiteral("D:/Фрагменты/")));
    QVERIFY(QFileInfo::exists(expected));
    ViewFolders loaded;
    loadViewFolders(loaded);
    QCOMPARE(loaded, allKinds(QStringLiteral("D:/Фрагменты/")));
}

void ViewFoldersTest::foldersSurviveSaveAndLoad_data()
{
    QTest::addColumn<QString>("base");
    QTest::newRow("cyrillic") << "C:\\Проекты\\Насосная станция\\виды\\";
    QTest::newRow("quotes and unicode") << "D:/\"Ёлка\" № 5/ß/";
}

void ViewFoldersTest::foldersSurviveSaveAndLoad()
{
    QFETCH(QString, base);
    QTemporaryDir dir;
    // The folder does not exist yet: saving makes it.
    const QString file = dir.filePath(QStringLiteral("профиль/aec/marlouss/settings.json"));
    const ViewFolders saved = allKinds(base);
    saveViewFolders(saved, file);
    QVERIFY(QFileInfo::exists(file));

    ViewFolders loaded;
    loadViewFolders(loaded, file);
    QCOMPARE(loaded, saved);

    // The file holds the twelve keys as one JSON object.
    QFile in(file);
    QVERIFY(in.open(QIODevice::ReadOnly));
    const QJsonObject object = QJsonDocument::fromJson(in.readAll()).object();
    QCOMPARE(object.size(), 12);
    QCOMPARE(object.value("m3d_path").toString(), base + "11");
    QCOMPARE(object.value("common_top_path").toString(), base + "0");
}

void ViewFoldersTest::damagedFileReadsEmpty_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("top"); // kind 0; kind 10 has "C:/гост" when top is set
    QTest::newRow("missing keys")
        << QByteArray(R"({"common_top_path": "C:/верх", "gost_path": "C:/гост"})") << "C:/верх";
    QTest::newRow("cut short") << QByteArray("{\"common_top_path\": ") << QString();
}

void ViewFoldersTest::damagedFileReadsEmpty()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, top);
    QTemporaryDir dir;
    const QString file = dir.filePath("settings.json");
    QFile out(file);
    QVERIFY(out.open(QIODevice::WriteOnly));
    out.write(content);
    out.close();
    ViewFolders folders = allKinds("old");
    loadViewFolders(folders, dir.filePath("absent.json"));
    QCOMPARE(folders, allKinds("old")); // no file: nothing changes
    loadViewFolders(folders, file);
    ViewFolders expected;
    for (int kind = 0; kind < 12; ++kind)
        expected[kind] = QString();
    if (!top.isEmpty()) {
        expected[0] = top;
        expected[10] = QStringLiteral("C:/гост");
    }
    QCOMPARE(folders, expected);
    // The next save overwrites it.
    saveViewFolders(allKinds("new"), file);
    loadViewFolders(folders, file);
    QCOMPARE(folders, allKinds("new"));
}

void ViewFoldersTest::savingWithoutAKindIsRefused()
{
    QTemporaryDir dir;
    ViewFolders folders = allKinds("x");
    folders.erase(5);
    QVERIFY_THROWS_EXCEPTION(std::out_of_range,
                             saveViewFolders(folders, dir.filePath("settings.json")));
    QVERIFY(!QFileInfo::exists(dir.filePath("settings.json")));
}

void ViewFoldersTest::unmakeableFolderNamesTheOperation()
{
    QTemporaryDir dir;
    // A plain file stands where the folder should be made.
    QFile blocker(dir.filePath("aec"));
    QVERIFY(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    try {
        saveViewFolders(allKinds("x"), dir.filePath("aec/marlouss/settings.json"));
        QFAIL("saving under a file succeeded");
    } catch (const std::filesystem::filesystem_error& e) {
        QVERIFY2(QString::fromLocal8Bit(e.what()).contains("create_directories"), e.what());
    }
}

QTEST_GUILESS_MAIN(ViewFoldersTest)
#include "tst_viewfolders.moc"
