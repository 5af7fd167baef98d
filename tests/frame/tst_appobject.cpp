// The host's interface identities, and the embedding widget's native set-up.

#include "frame/host/host_api.h"
#include "frame/qwinwidget.h"

#include <QApplication>
#include <QDialog>
#include <QPointer>
#include <QTest>
#include <QWindow>

class AppObjectTest : public QObject
{
    Q_OBJECT

private slots:
    void interfaceIdentities_data();
    void interfaceIdentities();
    void embeddingSetsNativeParent();
    void deleteOnCloseChildTakesFrameAlong();
    void modelessChildLeavesHostEnabled();
};

void AppObjectTest::interfaceIdentities_data()
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

void AppObjectTest::interfaceIdentities()
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

void AppObjectTest::embeddingSetsNativeParent()
{
    QWidget host;
    host.show();
    QWinWidget frame(host.winId());
    QCOMPARE(frame.parentWindow(), quintptr(host.winId()));
    QCOMPARE(frame.property("_q_embedded_native_parent_handle").toULongLong(),
             qulonglong(host.winId()));
    QVERIFY(frame.testAttribute(Qt::WA_WState_Created));
    QVERIFY(frame.windowHandle());
    QVERIFY(frame.windowHandle()->flags() & Qt::FramelessWindowHint);
    QCOMPARE(frame.windowHandle()->transientParent(), host.windowHandle());
    QVERIFY(!frame.parent());
}

void AppObjectTest::deleteOnCloseChildTakesFrameAlong()
{
    QWidget host;
    host.show();
    QPointer<QWinWidget> frame = new QWinWidget(host.winId());
    auto* dialog = new QDialog(frame);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setModal(true);
    dialog->show();
    QVERIFY(!host.isEnabled());
    dialog->close();
    QVERIFY(host.isEnabled());
    QTRY_VERIFY(frame.isNull());
}

void AppObjectTest::modelessChildLeavesHostEnabled()
{
    QWidget host;
    host.show();
    QWinWidget frame(host.winId());
    QDialog dialog(&frame);
    dialog.show();
    QVERIFY(host.isEnabled());
    QVERIFY(frame.isHidden());
    dialog.hide();
    QVERIFY(host.isEnabled());
}

QTEST_MAIN(AppObjectTest)
#include "tst_appobject.moc"
