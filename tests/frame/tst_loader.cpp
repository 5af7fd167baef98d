// Failure codes of a module's object: "no such interface" gives nothing, any other failure is
// raised with its code and the identity asked for.

#include "frame/host/host_error.h"
#include "frame/host/module.h"

#include <QCoreApplication>
#include <QTest>

using namespace gapi;

class LoaderTest : public QObject
{
    Q_OBJECT

private slots:
    void objectAnswers_data();
    void objectAnswers();
    void otherFailureIsRaised();
};

void LoaderTest::objectAnswers_data()
{
    QTest::addColumn<QByteArray>("entry");
    QTest::addColumn<int>("status");
    QTest::newRow("no such interface")
        << QByteArray("CreateNoInterfaceObject") << int(host::load_status::no_interface);
    QTest::newRow("no object") << QByteArray("CreateNothing")
                               << int(host::load_status::no_interface);
    QTest::newRow("no entry") << QByteArray("CreateGravisObject")
                              << int(host::load_status::no_entry);
}

void LoaderTest::objectAnswers()
{
    QFETCH(QByteArray, entry);
    QFETCH(int, status);
    const auto folder = std::filesystem::path(QCoreApplication::applicationDirPath().toStdString());
    const host::load_result r =
        host::load_object(folder, "libframe_testmodule.so", entry.constData(),
                          abi::IAutomation::iid, abi::IAutomation::iid_text);
    QCOMPARE(int(r.status), status);
    QVERIFY(!r.object);
}

void LoaderTest::otherFailureIsRaised()
{
    const auto folder = std::filesystem::path(QCoreApplication::applicationDirPath().toStdString());
    try {
        host::load_object(folder, "libframe_testmodule.so", "CreateOutOfMemoryObject",
                          abi::IAutomation::iid, abi::IAutomation::iid_text);
        QFAIL("the failure was swallowed");
    } catch (const std::system_error& e) {
        QCOMPARE(e.code().value(), int(0x8007000E));
        QCOMPARE(&e.code().category(), &host_category());
        const QString what = QString::fromUtf8(e.what());
        QVERIFY2(what.contains("E36BC97C-39D6-4402-9C25-C7008A217E02"), qPrintable(what));
        QVERIFY2(what.contains("out of memory"), qPrintable(what));
    }
}

QTEST_GUILESS_MAIN(LoaderTest)
#include "tst_loader.moc"
