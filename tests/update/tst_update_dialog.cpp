// The update notice and the version names, as the caller sees them: the flag after the run,
// the caller's title and message, the result, the help topic; the names given for known,
// intermediate and later codes, with and without the host's "gVer.dat".

#include "modal_answer.h"
#include "update/file_browser.h"
#include "update/update_dialog.h"
#include "update/version_names.h"

#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

using namespace edw;

namespace {

const QString kText = QStringLiteral(
    "\nНайдено 7 элементов чертежа (3 типоразмеров), отличающихся от элементов в каталоге.");

// Runs the notice; answer plays the user once it is up. Returns the dialog's result.
int runWith(bool* flag, const std::function<void(QWidget*)>& answer)
{
    ModalAnswer user(answer);
    return runUpdateDialog(0, QStringLiteral("Обновление чертежа"), kText, flag);
}

void click(QWidget* dialog, const QString& name)
{
    auto* button = dialog->findChild<QAbstractButton*>(name);
    QVERIFY2(button, qPrintable(name));
    button->click();
}

} // namespace

class tst_update_dialog : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { UpdateDialog::setHelpOpener({}); }

    void flagFollowsEveryClick_data()
    {
        QTest::addColumn<bool>("start");
        QTest::addColumn<int>("clicks");
        QTest::addColumn<QString>("closeBy");
        QTest::addColumn<bool>("flag");
        QTest::addColumn<int>("result");
        QTest::newRow("twice, then closed") << false << 2 << "close" << false << 0;
        QTest::newRow("once, then saved") << false << 1 << "okButton" << true << 1;
        QTest::newRow("once from set, cancelled") << true << 1 << "cancelButton" << false << 0;
        QTest::newRow("three times, cancelled") << false << 3 << "cancelButton" << true << 0;
        QTest::newRow("untouched, saved") << true << 0 << "okButton" << true << 1;
    }
    void flagFollowsEveryClick()
    {
        QFETCH(bool, start);
        QFETCH(int, clicks);
        QFETCH(QString, closeBy);
        QFETCH(bool, flag);
        QFETCH(int, result);
        bool value = start;
        QList<bool> seen;
        const int answer = runWith(&value, [&](QWidget* d) {
            // The caller's title and message; the box shows the flag as given.
            QCOMPARE(d->windowTitle(), QStringLiteral("Обновление чертежа"));
            QCOMPARE(d->findChild<QLabel*>(QStringLiteral("qText"))->text(), kText);
            QCOMPARE(d->findChild<QCheckBox*>(QStringLiteral("qFlyBox"))->isChecked(), start);
            for (int i = 0; i < clicks; ++i) {
                click(d, QStringLiteral("qFlyBox"));
                seen << value; // written at once, on every click
            }
            if (closeBy == QLatin1String("close"))
                d->close();
            else
                click(d, closeBy);
        });
        QCOMPARE(answer, result);
        QCOMPARE(value, flag);
        QCOMPARE(seen.size(), clicks);
        for (int i = 0; i < seen.size(); ++i)
            QCOMPARE(seen[i], bool((i % 2 == 0) != start));
    }

    void noFlagIsFine()
    {
        QCOMPARE(runWith(nullptr,
                         [](QWidget* d) {
                             click(d, QStringLiteral("qFlyBox"));
                             click(d, QStringLiteral("okButton"));
                         }),
                 1);
    }

    void helpAtTopic17EvenWithoutHost()
    {
        bool value = false;
        UpdateDialog d(QString(), kText, &value);
        // The host's help throws without an automation object; the notice stays usable.
        d.findChild<QPushButton*>(QStringLiteral("helpButton"))->click();
        QList<int> topics;
        UpdateDialog::setHelpOpener([&](int topic) { topics << topic; });
        d.findChild<QPushButton*>(QStringLiteral("helpButton"))->click();
        QCOMPARE(topics, QList<int>{17});
        QVERIFY(!value);
        QVERIFY(!d.isVisible());
    }

    void builtInNames_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("name");
        QTest::newRow("known") << "0x0F000062"
                               << "15.0b1";
        QTest::newRow("between two: the higher one") << "0x0F000070"
                                                     << "15.0";
        QTest::newRow("below every code: the first") << "0x01000000"
                                                     << "13.0b1";
        QTest::newRow("above every code") << "0x7F000000"
                                          << "";
        QTest::newRow("lower-case digits read as hex") << "0x0f0000ff"
                                                       << "15.0";
    }
    void builtInNames()
    {
        QFETCH(QString, code);
        QFETCH(QString, name);
        // No file, or one that cannot be read: the built-in names.
        for (const QString& dat : {QString(), QStringLiteral("/nonexistent/gVer.dat")}) {
            VersionNames names(dat);
            QCOMPARE(names.name(code), name);
            QCOMPARE(names.name(code), name);
        }
    }

    void datFileOverridesAndExtends()
    {
        QTemporaryDir dir;
        const QString path = QDir(dir.path()).filePath(QStringLiteral("gVer.dat"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("0x0F000062 15.0 beta 1\r\n"
                   "0x18000100 24.0\n"
                   "short\n"
                   "\n"
                   "0x0F000080 15.0rc\n");
        file.close();
        VersionNames names(path);
        QCOMPARE(names.name(QStringLiteral("0x0F000062")), QStringLiteral("15.0 beta 1"));
        QCOMPARE(names.name(QStringLiteral("0x18000100")), QStringLiteral("24.0"));
        QCOMPARE(names.name(QStringLiteral("0x17FFFFFF")), QStringLiteral("24.0"));
        // A new build between two known ones is named after the next one, the file's own.
        QCOMPARE(names.name(QStringLiteral("0x0F000070")), QStringLiteral("15.0rc"));
        QCOMPARE(names.name(QStringLiteral("short")), QString());
    }

    void fileBrowserTarget_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<bool>("shown");
        QTest::addColumn<QString>("folder");
        QTest::newRow("file in a folder") << "/srv/models/pump.m3d" << true << "/srv/models";
        QTest::newRow("no file name") << "/srv/models/" << false << "";
        QTest::newRow("empty") << "" << false << "";
    }
    void fileBrowserTarget()
    {
        QFETCH(QString, path);
        QFETCH(bool, shown);
        QFETCH(QString, folder);
        QString gotFolder, gotFile;
        QCOMPARE(detail::fileBrowserTarget(path, gotFolder, gotFile), shown);
        if (!shown) return;
        QCOMPARE(gotFolder, QDir::toNativeSeparators(folder));
        QCOMPARE(gotFile, QDir::toNativeSeparators(path));
    }
};

QTEST_MAIN(tst_update_dialog)
#include "tst_update_dialog.moc"
