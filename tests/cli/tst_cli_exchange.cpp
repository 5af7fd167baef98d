// Export, import and verify through the real ussctl binary: round trips, the element list,
// the dry run, the conflict policy and rejected archives.
#include "clitestsupport.h"

#include "Libs/zipper/unzip.h"
#include "Libs/zipper/zip.h"

#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <csignal>
#include <sqlite3.h>
#include <sys/resource.h>
#include <unistd.h>

using namespace clitest;

namespace {

// As it reads on a terminal: without the sentence about a dialog's help button.
const QString notExportFile =
    QStringLiteral("Файл не является файлом экспортированных элементов.\n");

QString listWithoutHeader(const QString& catalog)
{
    const Run run = ussctl({"list", catalog});
    return run.out.section('\n', 1);
}

} // namespace

class CliExchange : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void roundTripRecreatesTheCatalog();
    void exportWritesOnlyListedElements_data();
    void exportWritesOnlyListedElements();
    void exportAddsExtensionOfKind();
    void dryRunReportsEachRecordAndWritesNothing();
    void repeatedElementIsReportedAndImportedOnce();
    void conflictPolicy_data();
    void conflictPolicy();
    void rejectedArchives_data();
    void rejectedArchives();
    void verifyAcceptsWrittenArchive();
    void verifyRejectsDamagedEntry();
    void importCountsOnlyWrittenElements();
    void writeFaultsAreToldAndLoseNothing_data();
    void writeFaultsAreToldAndLoseNothing();
    void readOnlyCatalogIsRefusedBeforeAnyWork();
    void exportNamesTheElementOfAMissingFile();
    void interruptStopsAfterTheElementInHand();
    void progressBarOnlyOnTerminal_data();
    void progressBarOnlyOnTerminal();

private:
    QString path(const QString& name) const { return m_dir.filePath(name); }
    // Source catalog: packet "Трубы" with X1..X3, packet "Опоры" with S1; X1 and X2 share one
    // model file.
    QString makeSource(const QString& name, const QString& x2Date, double x2Length);
    // An archive of the source whose model entry, shared by X1 and X2, has a damaged byte.
    QString damagedArchive(const QString& name);

    QTemporaryDir m_dir;
    QString m_modelFile;
};

void CliExchange::initTestCase()
{
    QVERIFY(m_dir.isValid());
    m_modelFile = path("bend.m3d");
    QByteArray model;
    for (int i = 0; i < 2000; ++i)
        model += "<g data-layer=\"" + QByteArray::number(i) + "\"/>\n";
    writeFile(m_modelFile, model);
}

QString CliExchange::makeSource(const QString& name, const QString& x2Date, double x2Length)
{
    const QString file = path(name);
    TestCatalog catalog(file, "user_tx");
    catalog.addElement("Трубы", "Отводы\\90", "X1", "01.02.2024 10:00:00", "ivan\\pc1", 1.5,
                       m_modelFile);
    catalog.addElement("Трубы", "Отводы\\90", "X2", x2Date, "ivan\\pc1", x2Length, m_modelFile);
    catalog.addElement("Трубы", "Тройники", "X3", "01.02.2024 10:00:00", "ivan\\pc1", 3);
    catalog.addElement("Опоры", "", "S1", "01.02.2024 10:00:00", "ivan\\pc1", 4);
    return file;
}

void CliExchange::roundTripRecreatesTheCatalog()
{
    const QString source = makeSource("round_source.db", "01.02.2024 10:00:00", 2.5);
    const QString archive = path("round.uss");
    const Run exported = ussctl({"export", source, archive});
    QCOMPARE(exported.exitCode, 0);
    QCOMPARE(exported.out, QString("exported 4 elements to %1\n").arg(archive));

    const QString target = path("round_target.db");
    QCOMPARE(ussctl({"create", "--kind", "tx", target}).exitCode, 0);
    const Run imported = ussctl({"import", target, archive});
    QVERIFY2(imported.exitCode == 0, qPrintable(imported.err));
    QCOMPARE(imported.out, QString("imported 4 of 4 (new 4, replaced 0)\n"));
    QVERIFY2(imported.err.contains("Импорт пользовательских элементов завершен."),
             qPrintable(imported.err));

    QCOMPARE(listWithoutHeader(target), listWithoutHeader(source));
    QCOMPARE(valueOf(target, "Трубы", "X2", "Length"), QString("2.5"));
    QCOMPARE(valueOf(target, "Опоры", "S1", "USS_AUTHOR"), QString("ivan\\pc1"));

    // Once more: everything is there already, even replacing writes nothing.
    const QByteArray before = readFile(target);
    const Run again = ussctl({"import", target, archive, "--policy", "replace"});
    QCOMPARE(again.exitCode, 0);
    QVERIFY2(again.err.contains("Все импортируемые элементы присутствуют в базе."),
             qPrintable(again.err));
    QCOMPARE(again.out, QString("imported 0 of 0 (new 0, replaced 0)\n"));
    QCOMPARE(readFile(target), before);
}

void CliExchange::exportWritesOnlyListedElements_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("expected");
    QTest::newRow("one pair") << QStringList{"--list", "Трубы;X3"} << 0 << "exported 1 elements to";
    QTest::newRow("two pairs, own separator")
        << QStringList{"--list", "Трубы|X1|Опоры|S1", "--separator", "|"} << 0
        << "exported 2 elements to";
    QTest::newRow("unknown pair skipped")
        << QStringList{"--list", "Трубы;X1;Трубы;nothing"} << 0 << "exported 1 elements to";
    QTest::newRow("odd list") << QStringList{"--list", "Трубы;X1;Опоры"} << 2
                              << "the list must hold packet and id pairs (3 parts)";
    QTest::newRow("nothing matches")
        << QStringList{"--list", "Трубы;nothing"} << 1 << "no element of the list was found";
}

void CliExchange::exportWritesOnlyListedElements()
{
    QFETCH(QStringList, options);
    QFETCH(int, exitCode);
    QFETCH(QString, expected);
    const QString source = path("list_source.db");
    if (!QFile::exists(source)) makeSource("list_source.db", "01.02.2024 10:00:00", 2.5);
    const QString archive = path("listed.uss");
    QFile::remove(archive);
    const Run run = ussctl(QStringList{"export", source, archive} + options);
    QCOMPARE(run.exitCode, exitCode);
    QVERIFY2((run.out + run.err).contains(expected), qPrintable(run.out + run.err));
    QCOMPARE(QFile::exists(archive), exitCode == 0);
}

void CliExchange::exportAddsExtensionOfKind()
{
    const QString source = path("ext_source.db");
    {
        TestCatalog catalog(source, "user_vo");
        catalog.addElement("P", "F", "E1", "d", "a", 1);
    }
    const Run run = ussctl({"export", source, path("noext")});
    QCOMPARE(run.exitCode, 0);
    QVERIFY(QFile::exists(path("noext.vos")));
    const Run verified = ussctl({"verify", path("noext.vos")});
    QCOMPARE(verified.exitCode, 0);
    QVERIFY2(verified.out.contains("kind vo, document vobject.json"), qPrintable(verified.out));
}

void CliExchange::dryRunReportsEachRecordAndWritesNothing()
{
    const QString source = makeSource("dry_source.db", "05.05.2024 12:00:00", 7);
    {
        // Counts that differ from each other: 3 new, 2 same, 1 conflict.
        TestCatalog catalog(source, "user_tx");
        catalog.addElement("Опоры", "", "S2", "01.02.2024 10:00:00", "ivan\\pc1", 5);
        catalog.addElement("Опоры", "", "S3", "01.02.2024 10:00:00", "ivan\\pc1", 6);
    }
    const QString archive = path("dry.uss");
    QCOMPARE(ussctl({"export", source, archive}).exitCode, 0);

    const QString target = path("dry_target.db");
    {
        TestCatalog catalog(target, "user_tx");
        catalog.addElement("Трубы", "Отводы\\90", "X1", "01.02.2024 10:00:00", "ivan\\pc1", 1.5);
        catalog.addElement("Трубы", "Отводы\\90", "X2", "01.02.2024 10:00:00", "petr\\pc2", 2);
        catalog.addElement("Трубы", "Тройники", "X3", "01.02.2024 10:00:00", "petr\\pc2", 30);
    }
    const QByteArray before = readFile(target);
    const Run run = ussctl({"import", "--dry-run", target, archive});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.out, QString::fromUtf8(readFile(QFINDTESTDATA("golden/dry_run.txt"))));
    QCOMPARE(valueOf(target, "Опоры", "S1", "Length"), QString());
    QCOMPARE(valueOf(target, "Трубы", "X2", "Length"), QString("2"));
    QCOMPARE(readFile(target), before);
}

void CliExchange::repeatedElementIsReportedAndImportedOnce()
{
    const QString source = makeSource("repeat_source.db", "01.02.2024 10:00:00", 2.5);
    const QString archive = path("repeat.uss");
    // Export writes every listed pair, a pair listed twice as well.
    QCOMPARE(ussctl({"export", "--list", "Трубы;X3;Опоры;S1;Трубы;X3", source, archive}).exitCode,
             0);
    const QString target = path("repeat_target.db");
    QCOMPARE(ussctl({"create", "--kind", "tx", target}).exitCode, 0);

    const Run dry = ussctl({"import", "--dry-run", target, archive});
    QCOMPARE(dry.exitCode, 0);
    QCOMPARE(dry.out, QString("new      \"Трубы\" \"X3\"\n"
                              "new      \"Опоры\" \"S1\"\n"
                              "repeated \"Трубы\" \"X3\"\n"
                              "dry run: new 2, same 0, conflict 0, repeated 1; nothing written\n"));

    const Run run = ussctl({"import", target, archive});
    QVERIFY2(run.exitCode == 0, qPrintable(run.err));
    QCOMPARE(run.out, QString("imported 2 of 2 (new 2, replaced 0)\n"));
    QVERIFY2(run.err.contains("Импорт пользовательских элементов завершен."), qPrintable(run.err));
    QCOMPARE(valueOf(target, "Трубы", "X3", "Length"), QString("3"));
}

void CliExchange::conflictPolicy_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("x2Length");
    QTest::addColumn<QString>("x2Author");
    QTest::addColumn<QString>("summary");
    QTest::newRow("default keeps") << QStringList{} << "2"
                                   << "petr\\pc2"
                                   << "imported 2 of 2 (new 2, replaced 0)\n";
    QTest::newRow("keep") << QStringList{"--policy", "keep"} << "2"
                          << "petr\\pc2"
                          << "imported 2 of 2 (new 2, replaced 0)\n";
    QTest::newRow("replace") << QStringList{"--policy", "replace"} << "7"
                             << "ivan\\pc1"
                             << "imported 3 of 3 (new 2, replaced 1)\n";
}

void CliExchange::conflictPolicy()
{
    QFETCH(QStringList, options);
    QFETCH(QString, x2Length);
    QFETCH(QString, x2Author);
    QFETCH(QString, summary);
    const QString tag = QString::fromLatin1(QTest::currentDataTag()).replace(' ', '_');
    const QString source = makeSource("policy_source_" + tag + ".db", "05.05.2024 12:00:00", 7);
    const QString archive = path("policy_" + tag + ".uss");
    QCOMPARE(ussctl({"export", source, archive}).exitCode, 0);
    const QString target = path("policy_target_" + tag + ".db");
    {
        TestCatalog catalog(target, "user_tx");
        catalog.addElement("Трубы", "Отводы\\90", "X1", "01.02.2024 10:00:00", "ivan\\pc1", 1.5);
        catalog.addElement("Трубы", "Отводы\\90", "X2", "01.02.2024 10:00:00", "petr\\pc2", 2);
    }
    const Run run = ussctl(QStringList{"import", target, archive} + options);
    QVERIFY2(run.exitCode == 0, qPrintable(run.err));
    QCOMPARE(run.out, summary);
    QCOMPARE(valueOf(target, "Трубы", "X2", "Length"), x2Length);
    QCOMPARE(valueOf(target, "Трубы", "X2", "USS_AUTHOR"), x2Author);
    QCOMPARE(valueOf(target, "Трубы", "X3", "Length"), QString("3"));
    QCOMPARE(valueOf(target, "Опоры", "S1", "Length"), QString("4"));
}

void CliExchange::rejectedArchives_data()
{
    const QString source = makeSource("reject_source.db", "01.02.2024 10:00:00", 2.5);
    const QString txArchive = path("reject_tx.uss");
    QCOMPARE(ussctl({"export", source, txArchive}).exitCode, 0);
    const QString text = path("reject_text.uss");
    writeFile(text, "PK but not really an archive");
    const QString truncated = path("reject_truncated.uss");
    writeFile(truncated, readFile(txArchive).left(readFile(txArchive).size() / 2));
    const QString missing = path("reject_missing.uss");

    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("archive");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("message");
    QTest::newRow("missing file") << "tx" << missing << 3 << "archive not found: " + missing;
    QTest::newRow("not an archive") << "tx" << text << 1 << notExportFile;
    QTest::newRow("truncated archive") << "tx" << truncated << 1 << notExportFile;
    QTest::newRow("other kind's archive")
        << "vk" << txArchive << 1
        << "Архив выгружен из каталога другого вида: TX (документ TX.json), а каталог этого вида "
           "читает VK.json.";
}

void CliExchange::rejectedArchives()
{
    QFETCH(QString, kind);
    QFETCH(QString, archive);
    QFETCH(int, exitCode);
    QFETCH(QString, message);
    const QString target = path("rejecting_" + kind + ".db");
    if (!QFile::exists(target)) QCOMPARE(ussctl({"create", "--kind", kind, target}).exitCode, 0);
    const QByteArray before = readFile(target);
    const Run run = ussctl({"import", target, archive});
    QCOMPARE(run.exitCode, exitCode);
    QVERIFY2(run.err.contains(message), qPrintable(run.err));
    QVERIFY2(!run.err.contains("Справка"), qPrintable(run.err));
    // Lines of the debug log are marked as such.
    const bool logged = kind == "vk";
    QCOMPARE(run.err.contains("ussctl: debug: Не смогли найти json\n"), logged);
    QCOMPARE(readFile(target), before);
    QCOMPARE(ussctl({"list", "--summary", target}).out.section('\n', 1),
             QString("total: 0 packets, 0 folders, 0 elements\n"));
}

void CliExchange::verifyAcceptsWrittenArchive()
{
    const QString source = makeSource("verify_source.db", "01.02.2024 10:00:00", 2.5);
    const QString archive = path("verify.uss");
    QCOMPARE(ussctl({"export", source, archive}).exitCode, 0);
    // The elements are kept in a temporary folder while they are checked: without one,
    // verify says so and fails.
    const QString noFolder = path("verify_tmp_is_a_file");
    writeFile(noFolder, "not a folder");
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("TMPDIR", noFolder);
    const Run refused = ussctl({"verify", archive}, env);
    QCOMPARE(refused.exitCode, 1);
    QVERIFY2(refused.out.contains("Не удалось записать временные файлы импорта в папку " +
                                  noFolder + ".\nFAILED\n"),
             qPrintable(refused.out));
    // Entries are read through, never extracted, and nothing stays behind.
    const QString folder = path("verify_tmp");
    QVERIFY(QDir().mkpath(folder));
    env.insert("TMPDIR", folder);
    const Run run = ussctl({"verify", archive}, env);
    QVERIFY2(run.exitCode == 0, qPrintable(run.out + run.err));
    QCOMPARE(QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList());
    QCOMPARE(run.out, QString::fromUtf8(readFile(QFINDTESTDATA("golden/verify.txt"))).arg(archive));

    // X2 names the model shared with X1 with the other separator: still one entry.
    const QString mixed = path("verify_mixed.uss");
    {
        zipper::unzip in(archive);
        QByteArray document = in.readAll("TX.json", 1 << 20);
        const QByteArray backslashed = "TX\\\\model\\\\1.m3d";
        const qsizetype second = document.indexOf(backslashed, document.indexOf(backslashed) + 1);
        QVERIFY(second > 0);
        document.replace(second, backslashed.size(), "TX/model/1.m3d");
        zipper::zip out(mixed);
        out.addBytes(document, "TX.json");
        out.addBytes(in.readAll("TX\\model\\1.m3d", 1 << 20), "TX\\model\\1.m3d");
        out.commit();
    }
    const Run once = ussctl({"verify", mixed});
    QCOMPARE(once.exitCode, 0);
    QVERIFY2(once.out.contains("entries 1 referenced, 1 read"), qPrintable(once.out));
}

QString CliExchange::damagedArchive(const QString& name)
{
    const QString source = makeSource(name + "_source.db", "01.02.2024 10:00:00", 2.5);
    const QString archive = path(name + ".uss");
    if (ussctl({"export", source, archive}).exitCode != 0) return {};
    QByteArray bytes = readFile(archive);
    // One byte in the middle of the model's compressed data.
    const auto [data, compressed] = ziptest::entryData(bytes, "TX\\model\\1.m3d");
    if (data < 0 || compressed <= 4) return {};
    bytes[data + compressed / 2] = char(bytes[data + compressed / 2] ^ 0x5a);
    const QString damaged = path(name + "_damaged.uss");
    writeFile(damaged, bytes);
    return damaged;
}

void CliExchange::verifyRejectsDamagedEntry()
{
    const QString damaged = damagedArchive("crc");
    QVERIFY(!damaged.isEmpty());
    const Run run = ussctl({"verify", damaged});
    QCOMPARE(run.exitCode, 1);
    QVERIFY2(run.out.contains("TX\\model\\1.m3d: "), qPrintable(run.out));
    QVERIFY2(run.out.endsWith("FAILED\n"), qPrintable(run.out));
}

void CliExchange::importCountsOnlyWrittenElements()
{
    const QString damaged = damagedArchive("counted");
    QVERIFY(!damaged.isEmpty());
    // X1 and X2 (new and to be replaced) fail on the damaged model; X3 replaces, S1 is new.
    const QString target = path("counted_target.db");
    {
        TestCatalog catalog(target, "user_tx");
        catalog.addElement("Трубы", "Отводы\\90", "X2", "01.01.2024 10:00:00", "petr\\pc2", 2);
        catalog.addElement("Трубы", "Тройники", "X3", "01.01.2024 10:00:00", "petr\\pc2", 30);
    }
    const Run run = ussctl({"import", "--policy", "replace", target, damaged});
    QCOMPARE(run.exitCode, 1);
    QCOMPARE(run.out, QString("imported 2 of 4 (new 1, replaced 1)\n"));
    QVERIFY2(run.err.contains("Импорт прерван.\nИмпортировано 2 из 4."), qPrintable(run.err));
    QCOMPARE(valueOf(target, "Трубы", "X1", "Length"), QString());
    QCOMPARE(valueOf(target, "Трубы", "X2", "Length"), QString("2"));
    QCOMPARE(valueOf(target, "Трубы", "X3", "Length"), QString("3"));
    QCOMPARE(valueOf(target, "Опоры", "S1", "Length"), QString("4"));
}

void CliExchange::writeFaultsAreToldAndLoseNothing_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QString>("message");
    // The store cannot take the model: the elements naming it fail, the others are written.
    QTest::newRow("file-size limit") << "limit"
                                     << "не записан";
    QTest::newRow("file folder unusable") << "files"
                                          << "только для чтения";
    QTest::newRow("catalog locked") << "lock"
                                    << "database is locked";
}

void CliExchange::writeFaultsAreToldAndLoseNothing()
{
    QFETCH(QString, fault);
    QFETCH(QString, message);
    const QString source = makeSource("fault_source_" + fault + ".db", "05.05.2024 12:00:00", 7);
    const QString archive = path("fault_" + fault + ".uss");
    QCOMPARE(ussctl({"export", source, archive}).exitCode, 0);
    const QString target = path("fault_target_" + fault + ".db");
    {
        TestCatalog catalog(target, "user_tx");
        catalog.addElement("Трубы", "Отводы\\90", "X2", "01.02.2024 10:00:00", "petr\\pc2", 2,
                           m_modelFile);
    }
    const QString files = target + ".files";
    std::function<void()> inChild;
    sqlite3* other = nullptr;
    const auto close = qScopeGuard([&] { sqlite3_close(other); });
    if (fault == "limit") {
        // Smaller than the model, larger than the store's shared-memory file.
        inChild = [] {
            const rlimit limit{40000, 40000};
            setrlimit(RLIMIT_FSIZE, &limit);
        };
    } else if (fault == "files") {
        QVERIFY(QDir(files).removeRecursively());
        writeFile(files, "not a folder");
    } else {
        QCOMPARE(sqlite3_open(QFile::encodeName(target).constData(), &other), SQLITE_OK);
        QCOMPARE(sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
    }
    const Run run = ussctl({"import", "--policy", "replace", target, archive}, {}, inChild);
    QCOMPARE(run.exitCode, 1); // not ended by a signal
    QVERIFY2(run.err.contains(message), qPrintable(run.err));
    QCOMPARE(run.err.count(message), 1);
    sqlite3_close(other);
    other = nullptr;
    // The replaced element is whole, old or new; every other one is whole or absent.
    const QString x2 = valueOf(target, "Трубы", "X2", "Length");
    QVERIFY2(x2 == "2" || x2 == "7", qPrintable(x2));
    TestCatalog check(target, "user_tx");
    for (const QString id : {"X1", "X2"}) {
        es_packet_t* packet = provider_GetPacket(check.provider(), 0);
        es_stdsize_t* e = packet_FindStdSize(packet, es(id).c_str());
        QVERIFY(!e || !model_IsEmpty(stdsize_GetModel(e)));
    }
    if (fault != "limit") QVERIFY(!run.err.contains("Импорт прерван"));
}

void CliExchange::readOnlyCatalogIsRefusedBeforeAnyWork()
{
#ifndef Q_OS_UNIX
    QSKIP("permissions of POSIX");
#endif
    const QString source = makeSource("ro_source.db", "05.05.2024 12:00:00", 7);
    const QString archive = path("ro.uss");
    QCOMPARE(ussctl({"export", source, archive}).exitCode, 0);
    const QString target = path("ro_target.db");
    QCOMPARE(ussctl({"create", "--kind", "tx", target}).exitCode, 0);
    const QByteArray before = readFile(target);
    // The user may read the catalog, not write it: the superuser writes anything, so the
    // import then runs as another user.
    std::function<void()> inChild;
    QFile::Permissions readable = QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther;
    QVERIFY(QFile::setPermissions(target, readable));
    QVERIFY(QFile::setPermissions(m_dir.path(), readable | QFile::ExeOwner | QFile::ExeGroup |
                                                    QFile::ExeOther | QFile::ExeUser));
    const auto restore = qScopeGuard([&] {
        QFile::setPermissions(m_dir.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QFile::setPermissions(target, readable | QFile::WriteOwner);
    });
    if (geteuid() == 0)
        inChild = [] {
            if (setgid(65534) != 0 || setuid(65534) != 0) _exit(99);
        };
    const Run run = ussctl({"import", target, archive}, {}, inChild);
    QCOMPARE(run.exitCode, 1);
    QVERIFY2(run.err.contains("доступен только для чтения"), qPrintable(run.err));
    QVERIFY2(!run.err.contains("Импорт прерван"), qPrintable(run.err));
    QCOMPARE(readFile(target), before);
}

void CliExchange::exportNamesTheElementOfAMissingFile()
{
    const QString source = makeSource("gone_source.db", "05.05.2024 12:00:00", 7);
    QVERIFY(QDir(source + ".files").removeRecursively());
    const Run run = ussctl({"export", source, path("gone.uss")});
    QCOMPARE(run.exitCode, 1);
    QVERIFY2(run.err.contains("Элемент \"X1\" пакета \"Трубы\": нет файла " + source + ".files/"),
             qPrintable(run.err));
    QVERIFY(!QFile::exists(path("gone.uss")));
}

void CliExchange::interruptStopsAfterTheElementInHand()
{
#ifndef Q_OS_UNIX
    QSKIP("SIGINT");
#endif
    const QString source = path("interrupt_source.db");
    const Run generated = ussctl({"generate", "--kind", "tx", "--elements", "2000", source});
    if (generated.exitCode == 2) QSKIP("ussctl is built without its generator");
    QCOMPARE(generated.exitCode, 0);
    const QString archive = path("interrupt.uss");
    QCOMPARE(ussctl({"export", source, archive}).exitCode, 0);
    const QString target = path("interrupt_target.db");
    QCOMPARE(ussctl({"create", "--kind", "tx", target}).exitCode, 0);

    QProcess process;
    process.start(USSCTL_PATH, {"import", target, archive});
    QVERIFY(process.waitForStarted());
    // Ctrl+C once the writes are under way.
    QElapsedTimer waited;
    waited.start();
    while (QFileInfo(target + "-wal").size() < 256 * 1024 && waited.elapsed() < 60000 &&
           process.state() == QProcess::Running)
        QThread::msleep(20);
    ::kill(pid_t(process.processId()), SIGINT);
    QVERIFY(process.waitForFinished(60000));
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    const QString out = QString::fromUtf8(process.readAllStandardOutput());
    const QString err = QString::fromUtf8(process.readAllStandardError());
    const QRegularExpressionMatch summary =
        QRegularExpression("Импорт прерван.\nИмпортировано (\\d+) из 2000.").match(err);
    QVERIFY2(summary.hasMatch(), qPrintable(err));
    const int written = summary.captured(1).toInt();
    QVERIFY(written > 0 && written < 2000);
    QCOMPARE(process.exitCode(), 1);
    QVERIFY2(out.startsWith(QString("imported %1 of 2000").arg(written)), qPrintable(out));
    // What the summary counts is what the catalog holds.
    QVERIFY(ussctl({"list", "--summary", target})
                .out.contains(QString(", %1 elements\n").arg(written)));
}

void CliExchange::progressBarOnlyOnTerminal_data()
{
    QTest::addColumn<bool>("terminal");
    QTest::newRow("terminal") << true;
    QTest::newRow("pipe") << false;
}

void CliExchange::progressBarOnlyOnTerminal()
{
    QFETCH(bool, terminal);
    const QString source = path("progress_source.db");
    if (!QFile::exists(source)) makeSource("progress_source.db", "01.02.2024 10:00:00", 2.5);
    const QString archive = path(terminal ? "progress_tty.uss" : "progress_pipe.uss");
    QString seen;
    if (terminal) {
        // script(1) gives ussctl a pseudo-terminal and copies what it draws to our pipe.
        QProcess process;
        process.start("script",
                      {"-q", "-e", "-c",
                       QString("%1 export %2 %3").arg(USSCTL_PATH, source, archive), "/dev/null"});
        QVERIFY2(process.waitForFinished(60000), "script(1) did not finish");
        QCOMPARE(process.exitCode(), 0);
        seen = QString::fromUtf8(process.readAll());
    } else {
        const Run run = ussctl({"export", source, archive});
        QCOMPARE(run.exitCode, 0);
        seen = run.err;
    }
    QVERIFY(QFile::exists(archive));
    const QString finalBar =
        "Экспорт пользовательских элементов: [" + QString(30, '#') + "] 100% (8/8)";
    QCOMPARE(seen.contains(finalBar), terminal);
    if (!terminal) QVERIFY2(!seen.contains('\r'), "a redrawn bar in piped output");
    QCOMPARE(seen.contains(QString("\r") + "Экспорт"), terminal);
}

QTEST_GUILESS_MAIN(CliExchange)
#include "tst_cli_exchange.moc"
