// Failure codes of a module's object: "no such interface" gives nothing, any other failure is
// raised with its code and the identity asked for. The identities asked for are read from their
// text at compile time; the host's modules read them the same way, so a misreading would go
// unnoticed between the two.

#include "frame/host/host_api.h"
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
    void interfaceIdentities_data();
    void interfaceIdentities();
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

void LoaderTest::interfaceIdentities_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<uint>("data1");
    QTest::addColumn<ushort>("data2");
    QTest::addColumn<ushort>("data3");
    QTest::addColumn<QByteArray>("data4");
    QTest::newRow("automation") << "{E36BC97C-39D6-4402-9C25-C7008A217E02}" << 0xE36BC97Cu
                                << ushort(0x39D6) << ushort(0x4402)
                                << QByteArray::fromHex("9C25C7008A217E02");
    QTest::newRow("new API") << "6A2EFAF7-8254-45A5-9DC8-2213F16AF5D7" << 0x6A2EFAF7u
                             << ushort(0x8254) << ushort(0x45A5)
                             << QByteArray::fromHex("9DC82213F16AF5D7");
    QTest::newRow("views, lower case")
        << "ccec40f6-ef13-42a7-80c8-a91fd7b07228" << 0xccec40f6u << ushort(0xef13) << ushort(0x42a7)
        << QByteArray::fromHex("80c8a91fd7b07228");
}

void LoaderTest::interfaceIdentities()
{
    QFETCH(QString, text);
    QFETCH(uint, data1);
    QFETCH(ushort, data2);
    QFETCH(ushort, data3);
    QFETCH(QByteArray, data4);
    const QByteArray latin = text.toLatin1();
    const gapi::abi::iid_t id = gapi::abi::iid_from_text(latin.constData());
    QCOMPARE(uint(id.data1), data1);
    QCOMPARE(ushort(id.data2), data2);
    QCOMPARE(ushort(id.data3), data3);
    QCOMPARE(QByteArray(reinterpret_cast<const char*>(id.data4), 8), data4);
    static_assert(gapi::abi::IViews::iid ==
                  gapi::abi::iid_from_text("{CCEC40F6-EF13-42A7-80C8-A91FD7B07228}"));
    static_assert(!(gapi::abi::IViews::iid == gapi::abi::IAutomation::iid));
}

QTEST_GUILESS_MAIN(LoaderTest)
#include "tst_loader.moc"
