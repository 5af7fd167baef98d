// The sandbox host's own answers: which files it opens, what its automation object says to
// calls it does not know, and how its events reach subscribers.

#include "frame/host/gapi.h"
#include "frame/host/gstring.h"
#include "frame/host/host_error.h"
#include "frame/session.h"

#include "host_state.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using namespace gapi;

class SandboxHostTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void openRefusals_data();
    void openRefusals();
    void automationRefusesUnknownCalls_data();
    void automationRefusesUnknownCalls();
    void objectsAnswerOnlyTheirIdentities();
    void longOperationAndMessagesReachTheHost();

private:
    QTemporaryDir m_dir;
};

void SandboxHostTest::initTestCase()
{
    QVERIFY(m_dir.isValid());
}

void SandboxHostTest::openRefusals_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("reason");
    QTest::addColumn<int>("code");
    QTest::newRow("later version")
        << QByteArray("<svg xmlns=\"http://www.w3.org/2000/svg\" data-version=\"232\"/>")
        << "made by a later version" << int(abi::e_later_version);
    QTest::newRow("no version") << QByteArray("<svg xmlns=\"http://www.w3.org/2000/svg\"/>")
                                << "not a host document" << int(abi::e_bad_document);
    QTest::newRow("not xml") << QByteArray("MZ\x90") << "not a host document"
                             << int(abi::e_bad_document);
    QTest::newRow("missing file") << QByteArray() << "cannot read" << int(abi::e_file_not_found);
}

void SandboxHostTest::openRefusals()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, reason);
    QFETCH(int, code);
    const QString file = m_dir.path() + "/" + QTest::currentDataTag() + ".frw";
    if (!content.isEmpty()) {
        QFile out(file);
        QVERIFY(out.open(QIODevice::WriteOnly));
        out.write(content);
    }
    const int before = sandbox::documents().size();
    QCOMPARE(sandbox::open_document(file, false), 0);
    QVERIFY2(sandbox::last_error().startsWith(reason), qPrintable(sandbox::last_error()));
    QCOMPARE(sandbox::documents().size(), before);

    com_ptr<abi::IApplication7> app = application7();
    QVERIFY(app);
    com_ptr<abi::IGravisDocument> doc;
    QCOMPARE(int(app->OpenDocument(make_string(file).get(), false, doc.put())), code);
    QVERIFY(!doc);
}

void SandboxHostTest::automationRefusesUnknownCalls_data()
{
    QTest::addColumn<int>("member");
    QTest::addColumn<int>("argc");
    QTest::addColumn<int>("code");
    QTest::newRow("unknown member") << 99 << 0 << int(abi::e_notimpl);
    QTest::newRow("folder without its kind")
        << int(abi::disp_folder) << 0 << int(abi::e_invalidarg);
    QTest::newRow("message without text") << int(abi::disp_message) << 0 << int(abi::e_invalidarg);
    QTest::newRow("long operation without its flag")
        << int(abi::disp_long_operation) << 0 << int(abi::e_invalidarg);
}

void SandboxHostTest::automationRefusesUnknownCalls()
{
    QFETCH(int, member);
    QFETCH(int, argc);
    QFETCH(int, code);
    com_ptr<abi::IAutomation> automation = gapi::automation();
    QVERIFY(automation);
    try {
        invoke(automation.get(), member, abi::invoke_method, nullptr, unsigned(argc));
        QFAIL("the call was accepted");
    } catch (const std::system_error& e) {
        QCOMPARE(e.code().value(), code);
        QCOMPARE(QString::fromUtf8(e.what()).contains(abi::IAutomation::iid_text), true);
    }
}

void SandboxHostTest::objectsAnswerOnlyTheirIdentities()
{
    com_ptr<abi::IAutomation> automation = gapi::automation();
    QVERIFY(!automation.query<abi::IApplication7>());
    QVERIFY(automation.query<abi::IUnknown>());
    QVERIFY(automation.query<abi::IAutomation>());
    com_ptr<abi::IApplication7> app = application7();
    QVERIFY(!app.query<abi::IGravisApplication>());
    // Later acquisitions give the cached objects.
    QCOMPARE(application7().get(), app.get());
    QCOMPARE(native_application().get(), native_application().get());
}

void SandboxHostTest::longOperationAndMessagesReachTheHost()
{
    sandbox::reset();
    bool delivered = false;
    QTimer::singleShot(0, [&] { delivered = true; });
    host_long_operation(true);
    host_process_messages();
    host_process_messages();
    host_long_operation(false);
    QCOMPARE(sandbox::long_operation_notices(), (QList<bool>{true, false}));
    QCOMPARE(sandbox::processed_message_rounds(), 2);
    // Processing the host's messages delivers what was pending.
    QVERIFY(delivered);
}

QTEST_GUILESS_MAIN(SandboxHostTest)
#include "tst_sandboxhost.moc"
