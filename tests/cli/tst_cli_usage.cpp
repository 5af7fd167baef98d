// The command line's contract without archives: help, exit codes of bad input, create and
// list output.
#include "clitestsupport.h"

#include <QDir>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

using namespace clitest;

class CliUsage : public QObject
{
    Q_OBJECT

private slots:
    void badInputEndsWithCodeAndMessage_data();
    void badInputEndsWithCodeAndMessage();
    void createNamesDatabaseByKind_data();
    void createNamesDatabaseByKind();
    void createRefusesExistingFile();
    void versionIsPrinted();
    void listShowsPacketsFoldersAndElements();

private:
    QTemporaryDir m_dir;
};

void CliUsage::badInputEndsWithCodeAndMessage_data()
{
    QVERIFY(m_dir.isValid());
    const QString notCatalog = m_dir.filePath("notes.txt");
    writeFile(notCatalog, "just some text, not a catalog\n");
    const QString missing = m_dir.filePath("missing.db");
    const QString missingArchive = m_dir.filePath("missing.uss");

    QTest::addColumn<QStringList>("args");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("message");
    QTest::newRow("no command") << QStringList{} << 2 << "Usage: ussctl <command>";
    QTest::newRow("unknown command")
        << QStringList{"frobnicate"} << 2 << "unknown command 'frobnicate'";
    QTest::newRow("unknown option")
        << QStringList{"list", "--colour", "x.db"} << 2 << "ussctl list: Unknown option 'colour'.";
    QTest::newRow("unknown kind") << QStringList{"create", "--kind", "zz", m_dir.filePath("a.db")}
                                  << 2 << "unknown kind 'zz' (expected vo, tx, vk or ov)";
    QTest::newRow("kind missing") << QStringList{"create", m_dir.filePath("b.db")} << 2
                                  << "--kind is required";
    QTest::newRow("too many arguments")
        << QStringList{"list", "a.db", "b.db"} << 2 << "unexpected argument 'b.db'";
    QTest::newRow("list missing catalog")
        << QStringList{"list", missing} << 3 << "catalog not found: " + missing;
    QTest::newRow("list not a catalog")
        << QStringList{"list", notCatalog} << 3 << "cannot open catalog " + notCatalog;
    QTest::newRow("import missing catalog")
        << QStringList{"import", missing, missingArchive} << 3 << "catalog not found";
    QTest::newRow("verify missing archive")
        << QStringList{"verify", missingArchive} << 3 << "archive not found: " + missingArchive;
    QTest::newRow("generate bad number")
        << QStringList{"generate", "--kind", "tx", "--elements", "ten", m_dir.filePath("g.db")} << 2
        << "--elements needs a whole number, not 'ten'";
    QTest::newRow("trailing garbage after a number")
        << QStringList{"generate", "--kind", "tx", "--elements", "10x", m_dir.filePath("g.db")} << 2
        << "--elements needs a whole number, not '10x'";
    QTest::newRow("fixed date not a date")
        << QStringList{"export", m_dir.filePath("dated.db"), m_dir.filePath("dated.uss")} << 2
        << "USSCTL_FIXED_DATE '2024.13.05 14:07:31' is not a date";
    QTest::newRow("generate no packets")
        << QStringList{"generate", "--kind", "tx", "--packets", "0", m_dir.filePath("p0.db")} << 2
        << "ussctl generate: --packets must be at least 1";
    QTest::newRow("generate empty files")
        << QStringList{"generate", "--kind", "tx", "--file-size", "0", m_dir.filePath("f0.db")} << 2
        << "ussctl generate: --file-size must be at least 1";
}

void CliUsage::badInputEndsWithCodeAndMessage()
{
    QFETCH(QStringList, args);
    QFETCH(int, exitCode);
    QFETCH(QString, message);
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    // A fixed export date that is no date.
    if (QByteArray(QTest::currentDataTag()) == "fixed date not a date")
        env.insert("USSCTL_FIXED_DATE", "2024.13.05 14:07:31");
    const Run run = ussctl(args, env);
    QVERIFY2(run.err.contains(message), qPrintable(run.err));
    QCOMPARE(run.exitCode, exitCode);
    // Refused input creates nothing.
    if (args.value(0) == "generate") QVERIFY(!QFile::exists(args.last()));
}

void CliUsage::versionIsPrinted()
{
    const Run run = ussctl({"--version"});
    QCOMPARE(run.exitCode, 0);
    QVERIFY2(QRegularExpression("^ussctl \\d+\\.\\d+\\.\\d+\n$").match(run.out).hasMatch(),
             qPrintable(run.out));
}

void CliUsage::createNamesDatabaseByKind_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("databaseName");
    QTest::newRow("vo") << "vo"
                        << "user_vo";
    QTest::newRow("ov") << "ov"
                        << "user_ov";
}

void CliUsage::createNamesDatabaseByKind()
{
    QFETCH(QString, kind);
    QFETCH(QString, databaseName);
    const QString path = m_dir.filePath("created_" + kind + ".db");
    const Run run = ussctl({"create", "--kind", kind, path});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.out, QString("created %1 (%2)\n").arg(path, databaseName));

    const Run list = ussctl({"list", path});
    QCOMPARE(list.exitCode, 0);
    QCOMPARE(list.out, QString("database \"%1\" (kind %2)\ntotal: 0 packets, 0 folders, 0 "
                               "elements\n")
                           .arg(databaseName, kind));
}

void CliUsage::createRefusesExistingFile()
{
    const QString path = m_dir.filePath("twice.db");
    QCOMPARE(ussctl({"create", "--kind", "tx", path}).exitCode, 0);
    const QByteArray before = readFile(path);
    const Run again = ussctl({"create", "--kind", "vk", path});
    QCOMPARE(again.exitCode, 1);
    QVERIFY2(again.err.contains("file already exists: " + path), qPrintable(again.err));
    QCOMPARE(readFile(path), before);
}

void CliUsage::listShowsPacketsFoldersAndElements()
{
    const QString path = m_dir.filePath("listed.db");
    {
        TestCatalog catalog(path, "user_tx");
        QVERIFY(catalog.provider());
        QVERIFY(catalog.addElement("ПЭ_Трубы", "Отводы\\90", "A1", "01.02.2024 10:00:00", "u\\pc",
                                   1.5));
        QVERIFY(catalog.addElement("ПЭ_Трубы", "Отводы\\90", "A2", "01.02.2024 10:00:00", "u\\pc",
                                   2.5));
        QVERIFY(
            catalog.addElement("ПЭ_Трубы", "Тройники", "T1", "01.02.2024 10:00:00", "u\\pc", 3));
        QVERIFY(catalog.addElement("Опоры", "", "S1", "01.02.2024 10:00:00", "u\\pc", 4));
    }
    const Run run = ussctl({"list", path});
    QCOMPARE(run.exitCode, 0);
    const QString golden = QString::fromUtf8(readFile(QFINDTESTDATA("golden/list_listed.txt")));
    QCOMPARE(run.out, golden);
    // The summary: the header and the counts only.
    const Run summary = ussctl({"list", "--summary", path});
    QCOMPARE(summary.exitCode, 0);
    QCOMPARE(summary.out, golden.section('\n', 0, 0) + '\n' + golden.section('\n', -2));
}

QTEST_GUILESS_MAIN(CliUsage)
#include "tst_cli_usage.moc"
