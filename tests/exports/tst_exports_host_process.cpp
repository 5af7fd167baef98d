// The dialog exports called by a host process: without the host's automation module next to
// the host executable every one returns its failure result and shows nothing, with it the same
// calls show dialogs; each one, as the first call of a process, wears the host's theme, and no
// dialog tells the host's application that its translators changed.

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

namespace {

// Runs the test host from folder with arguments; its lines by their first word.
QMap<QString, QString> runHost(const QString& folder, QString* error,
                               const QStringList& arguments = {})
{
    QProcess host;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("QT_QPA_PLATFORM", "offscreen");
    host.setProcessEnvironment(env);
    host.start(QDir(folder).filePath(QFileInfo(QStringLiteral(TEST_HOST_PATH)).fileName()),
               arguments);
    if (!host.waitForFinished(120000) || host.exitStatus() != QProcess::NormalExit ||
        host.exitCode() != 0) {
        *error = QString::fromLocal8Bit(host.readAllStandardError());
        host.kill();
        return {};
    }
    QMap<QString, QString> lines;
    for (const QByteArray& line : host.readAllStandardOutput().split('\n')) {
        const qsizetype space = line.indexOf(' ');
        if (space > 0)
            lines[QString::fromUtf8(line.left(space))] = QString::fromUtf8(line.mid(space + 1));
    }
    return lines;
}

} // namespace

class HostProcessTest : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void dialogExport_data();
    void dialogExport();
    void firstCallWearsTheHostTheme_data();
    void firstCallWearsTheHostTheme();

private:
    QTemporaryDir m_copy;
    QMap<QString, QString> m_withoutHost;
};

void HostProcessTest::initTestCase()
{
    // A copy of the host's folder without the automation module.
    QVERIFY(m_copy.isValid());
    const QDir bin = QFileInfo(QStringLiteral(TEST_HOST_PATH)).absoluteDir();
    const QStringList libraries = bin.entryList({"*.so", "*.so.*"}, QDir::Files);
    QVERIFY(libraries.contains("libMarloUss.so"));
    QVERIFY(libraries.contains("libgAPI5.so"));
    for (const QString& name : libraries) {
        if (!name.startsWith("libgAPI5.so"))
            QVERIFY(QFile::copy(bin.filePath(name), m_copy.filePath(name)));
    }
    const QString host = QFileInfo(QStringLiteral(TEST_HOST_PATH)).fileName();
    QVERIFY(QFile::copy(bin.filePath(host), m_copy.filePath(host)));

    QString error;
    m_withoutHost = runHost(m_copy.path(), &error);
    QVERIFY2(!m_withoutHost.isEmpty(), qPrintable(error));
}

// With the module every export shows its dialog: the sandbox's main job calls each.
void HostProcessTest::dialogExport_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("failure");
    QTest::newRow("section choice") << "engsys_select_part_dialog"
                                    << "0 untouched";
    QTest::newRow("drawing exists") << "OPEN_SAVE_CDW_DIALOG"
                                    << "3";
    QTest::newRow("folder chooser") << "OPEN_CHOSE_DIRECTORY_DIALOG"
                                    << "\"\"";
    QTest::newRow("file chooser") << "OPEN_FILE_SAVING_DIALOG"
                                  << "\"\"";
    // The update notice answers 1 when it cannot be shown, unlike the others.
    QTest::newRow("update notice") << "uss_show_update_dialog"
                                   << "1";
    QTest::newRow("medium") << "engsys_medium_dialog"
                            << "0 untouched";
    QTest::newRow("element editor") << "uss_create_clone_edit"
                                    << "0";
}

void HostProcessTest::dialogExport()
{
    QFETCH(QString, name);
    QFETCH(QString, failure);
    QCOMPARE(m_withoutHost.value(name), failure + " shown=0");
}

void HostProcessTest::firstCallWearsTheHostTheme_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("theme");
    QTest::addColumn<QString>("dark");
    QTest::addColumn<QString>("texts"); // of the choosers
    for (const char* name : {"engsys_select_part_dialog", "OPEN_SAVE_CDW_DIALOG",
                             "OPEN_CHOSE_DIRECTORY_DIALOG", "OPEN_FILE_SAVING_DIALOG"}) {
        const QString texts =
            QLatin1String(name) == "OPEN_CHOSE_DIRECTORY_DIALOG" ? "Имя папки:|Выбрать|Отмена"
            : QLatin1String(name) == "OPEN_FILE_SAVING_DIALOG" ? "Имя файла:|Сохранить|Отмена"
                                                               : QString();
        QTest::addRow("%s, dark host", name) << name << 2 << "1" << texts;
        QTest::addRow("%s, light host", name) << name << 0 << "0" << texts;
    }
}

void HostProcessTest::firstCallWearsTheHostTheme()
{
    QFETCH(QString, name);
    QFETCH(int, theme);
    QFETCH(QString, dark);
    QFETCH(QString, texts);
    QString error;
    const QDir bin = QFileInfo(QStringLiteral(TEST_HOST_PATH)).absoluteDir();
    const QMap<QString, QString> lines =
        runHost(bin.path(), &error, {"--theme", QString::number(theme), name});
    QVERIFY2(!lines.isEmpty(), qPrintable(error));
    QVERIFY2(lines.value(name).endsWith("shown=1"), qPrintable(lines.value(name)));
    QCOMPARE(lines.value(name + ".dark"), dark);
    QCOMPARE(lines.value(name + ".texts"), texts);
    QCOMPARE(lines.value("language_changes"), QStringLiteral("0"));
}

QTEST_GUILESS_MAIN(HostProcessTest)
#include "tst_exports_host_process.moc"
