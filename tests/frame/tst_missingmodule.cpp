// The library in a host installation that lacks some of the host's modules: the session is
// refused or the missing parts answer nothing, and nothing crashes.

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

class MissingModuleTest : public QObject
{
    Q_OBJECT

private slots:
    void probeInFolder_data();
    void probeInFolder();
};

void MissingModuleTest::probeInFolder_data()
{
    QTest::addColumn<QStringList>("modules");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("no host modules")
        << QStringList{}
        << QStringList{"session refused 0x80004003", "version none", "message box 0"};
    QTest::newRow("automation only")
        << QStringList{"libgAPI5.so"}
        << QStringList{"session ready", "version none", "message box 0"};
    QTest::newRow("no new API") << QStringList{"libgAPI5.so", "libgvAPI.so"}
                                << QStringList{"session ready", "version none", "message box 1"};
    QTest::newRow("every module") << QStringList{"libgAPI5.so", "libgvAPI.so", "libgAPI7.so"}
                                  << QStringList{"session ready", "version 23.1", "message box 1"};
}

void MissingModuleTest::probeInFolder()
{
    QFETCH(QStringList, modules);
    QFETCH(QStringList, expected);
    const QString bin = QCoreApplication::applicationDirPath();
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    QVERIFY(QFile::copy(bin + "/frame_probe", dir.path() + "/frame_probe"));
    QFile::setPermissions(dir.path() + "/frame_probe", QFile::permissions(bin + "/frame_probe"));
    // The modules keep the host's state in a library of their own, found next to them.
    if (!modules.isEmpty())
        QVERIFY(
            QFile::copy(bin + "/libsandbox_hostcore.so", dir.path() + "/libsandbox_hostcore.so"));
    for (const QString& module : modules)
        QVERIFY(QFile::copy(bin + "/" + module, dir.path() + "/" + module));

    QProcess probe;
    probe.start(dir.path() + "/frame_probe");
    QVERIFY(probe.waitForFinished(30000));
    QCOMPARE(probe.exitStatus(), QProcess::NormalExit);
    QCOMPARE(probe.exitCode(), 0);
    const QStringList lines =
        QString::fromUtf8(probe.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts);
    QCOMPARE(lines, expected);
}

QTEST_GUILESS_MAIN(MissingModuleTest)
#include "tst_missingmodule.moc"
