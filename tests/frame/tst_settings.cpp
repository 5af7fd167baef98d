// The library's settings file below the host's user folder, and the help that cannot be shown
// without an HTML Help library.

#include "frame/help.h"
#include "frame/settings.h"

#include "host_state.h"

#include <QCoreApplication>
#include <QFile>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

class SettingsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void writtenValuesReachTheFile();
    void helpFailureRememberedOnce();

private:
    QTemporaryDir m_userFolder;
};

void SettingsTest::initTestCase()
{
    QVERIFY(m_userFolder.isValid());
    sandbox::set_folder(sandbox::folder_user, m_userFolder.path());
    sandbox::set_folder(sandbox::folder_system, m_userFolder.path() + "/system");
}

void SettingsTest::writtenValuesReachTheFile()
{
    write_setting("uss_import_path", "D:/x/y");
    write_setting("uss_import_path", "E:/z");
    write_setting("FragmentPath", "/home/u/Фрагменты");
    const QString file = m_userFolder.path() + "/aec/MarloUssCfg.ini";
    QCOMPARE(settings_file_path(), file);
    QSettings ini(file, QSettings::IniFormat);
    QCOMPARE(ini.value("common/FragmentPath").toString(), QString("/home/u/Фрагменты"));
    QCOMPARE(ini.value("common/uss_import_path").toString(), QString("E:/z"));
    QCOMPARE(read_setting("uss_import_path", "unset"), QString("E:/z"));
    // A key never written gives the default.
    QCOMPARE(read_setting("LastFragmentPath", "C:/Fragments"), QString("C:/Fragments"));
    QCOMPARE(read_setting("uss_export_path"), QString());
}

void SettingsTest::helpFailureRememberedOnce()
{
    QCOMPARE(help::load_attempts(), 0);
    show_help(10);
    QCOMPARE(help::load_attempts(), 1);
    show_help(11);
    show_help_file("/Grundo/Help/Other.chm", 3);
    QCOMPARE(help::load_attempts(), 1);
}

QTEST_GUILESS_MAIN(SettingsTest)
#include "tst_settings.moc"
