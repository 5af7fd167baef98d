// Reaching the host: module loading, the cached objects, the event subscription, the session
// queries.

#include "frame/host/base_app.h"
#include "frame/host/gapi.h"
#include "frame/host/module.h"
#include "frame/host/sync.h"
#include "frame/marlouss_app.h"
#include "frame/session.h"

#include "host_state.h"

#if defined(FRAME_TEST_WITH_LOOK)
#include "look/look.h"
#endif

#include <QApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QWidget>

using namespace gapi;

namespace {

// Records what reaches it.
class recording_app final : public base_app
{
public:
    bool OnKeyDown(int& key, int, int) override
    {
        key += 1;
        return false;
    }
    bool OnKeyUp(int&, int, int) override { return true; }
    void OnCloseApplication() override { ++closings; }
    bool OnCanProceed() override { return true; }
    bool OnCreateDocument(int) override { return true; }
    bool OnBeginOpenDocument() override { return true; }
    bool OnOpenDocument(const QString& path) override
    {
        openRequests << path;
        return false;
    }
    void OnDocumentClosing(const document_ptr& doc) override { closed << doc->path(); }
    bool OnSavePreviousRequest(const document_ptr&, int, abi::ISavePreviousParams*,
                               bool& flag) override
    {
        flag = !flag;
        return true;
    }
    void OnSavePreviousStarted(const document_ptr&, int, abi::ISavePreviousParams*) override {}
    void OnSavePreviousFinished(const document_ptr&, int, abi::ISavePreviousParams*) override {}
    void OnThemeChanged(bool dark) override { themes << dark; }
    std::unique_ptr<IDocumentHandler> CreateDocumentHandler(const document_ptr&) override
    {
        return std::make_unique<IDocumentHandler>();
    }
    std::unique_ptr<IAppExtension> CreateExtension() override { return nullptr; }

    QList<bool> themes;
    QStringList openRequests;
    QStringList closed;
    int closings = 0;
};

std::filesystem::path folder_path(const QString& folder)
{
    return std::filesystem::path(folder.toStdString());
}

} // namespace

class HostTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void application7Failures_data();
    void application7Failures();
    void loaderOnFolder_data();
    void loaderOnFolder();
    void secondAcquisitionIsCachedAndSubscribesOnce();
    void themeEventReachesHandler_data();
    void themeEventReachesHandler();
    void eventsForwardAnswers();
    void openDocumentsGetHandlersAtStart();
    void sessionTakesHostIcon();
    void applicationClosingDropsSubscription();
    void cleanupTestCase();

private:
    QTemporaryDir m_dir;
    QString m_binFolder;
};

void HostTest::initTestCase()
{
    QVERIFY(m_dir.isValid());
    m_binFolder = QCoreApplication::applicationDirPath();
    QVERIFY2(QFile::exists(m_binFolder + "/libgAPI5.so"),
             "the host modules are built next to the test");
    // The library object exists in every process that links the frame.
    QVERIFY(&theApp() != nullptr);
}

void HostTest::init()
{
    // Every function starts as the library starts in a host: nothing acquired, the library
    // object not subscribed, the host in its first state.
    theApp().OnCloseApplication();
    detail::clear_caches();
    sandbox::reset();
}

void HostTest::application7Failures_data()
{
    QTest::addColumn<QString>("setup");
    QTest::addColumn<QString>("message");
    const QString failed = QStringLiteral("Не смогли получить API7, причина: не смогли ");
    QTest::newRow("no executable path") << "nopath" << failed + "получить путь к модулю";
    QTest::newRow("module missing") << "empty" << failed + "загрузить gAPI7.dll";
    QTest::newRow("entry point missing")
        << "noentry" << failed + "получить указатель на функцию, возвращающую интерфейс";
}

void HostTest::application7Failures()
{
    QFETCH(QString, setup);
    QFETCH(QString, message);
    std::filesystem::path folder;
    QTemporaryDir dir;
    if (setup != "nopath") folder = folder_path(dir.path());
    if (setup == "noentry") {
        // A loadable library without the entry point takes the module's place.
        QVERIFY(QFile::copy(m_binFolder + "/libsandbox_hostcore.so", dir.path() + "/libgAPI7.so"));
    }
    try {
        detail::application7_from(folder);
        QFAIL("acquisition succeeded");
    } catch (const std::runtime_error& e) {
        QCOMPARE(QString::fromUtf8(e.what()), message);
    }
}

void HostTest::loaderOnFolder_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("module");
    QTest::addColumn<int>("status");
    QTest::newRow("no folder") << QString() << "libgAPI5.so" << int(host::load_status::no_path);
    QTest::newRow("folder without the module")
        << "tmp"
        << "libgAPI5.so" << int(host::load_status::not_loaded);
    QTest::newRow("automation module next to the executable")
        << "bin"
        << "libgAPI5.so" << int(host::load_status::loaded);
    QTest::newRow("module of another object") << "bin"
                                              << "libgAPI7.so" << int(host::load_status::no_entry);
}

void HostTest::loaderOnFolder()
{
    QFETCH(QString, folder);
    QFETCH(QString, module);
    QFETCH(int, status);
    const QString where = folder == "bin"   ? m_binFolder
                          : folder == "tmp" ? m_dir.path()
                                            : QString();
    const host::load_result r =
        host::load_object(folder_path(where), module.toStdString(), abi::automation_entry,
                          abi::IAutomation::iid, abi::IAutomation::iid_text);
    QCOMPARE(int(r.status), status);
    QCOMPARE(r.object != nullptr, status == int(host::load_status::loaded));
    if (r.object) r.object->Release();
}

void HostTest::secondAcquisitionIsCachedAndSubscribesOnce()
{
    QCOMPARE(sandbox::subscriber_count(), 0);
    com_ptr<abi::IAutomation> first = automation();
    QVERIFY(first);
    QCOMPARE(sandbox::subscriber_count(), 1);
    QVERIFY(theApp().subscribed());
    QVERIFY(theApp().holds_application());
    com_ptr<abi::IAutomation> second = automation();
    QCOMPARE(second.get(), first.get());
    QCOMPARE(sandbox::subscriber_count(), 1);
}

void HostTest::themeEventReachesHandler_data()
{
    QTest::addColumn<int>("theme");
    QTest::addColumn<QList<bool>>("delivered");
    QTest::addColumn<bool>("dark");
    QTest::newRow("light") << 0 << QList<bool>{false} << false;
    QTest::newRow("system") << 1 << QList<bool>{} << false;
    QTest::newRow("dark") << 2 << QList<bool>{true} << true;
}

void HostTest::themeEventReachesHandler()
{
    QFETCH(int, theme);
    QFETCH(QList<bool>, delivered);
    recording_app app;
    gv::app_event subscription(app);
    QVERIFY(subscription.subscribe(native_application().get(), "test-theme"));
    QVERIFY(sandbox::fire_theme_changed(theme));
    QCOMPARE(app.themes, delivered);
    QCOMPARE(host_theme(), theme);
#if defined(FRAME_TEST_WITH_LOOK)
    // No dialog session is prepared: an export that prepares none still gets the host's theme.
    QFETCH(bool, dark);
    QCOMPARE(qt::dark_theme(), dark);
#endif
}

void HostTest::eventsForwardAnswers()
{
    QVERIFY(automation()); // subscribes the library object
    recording_app app;
    {
        gv::app_event subscription(app);
        QVERIFY(subscription.subscribe(native_application().get(), "test-events"));
        const int before = sandbox::subscriber_count();
        int key = 65;
        QVERIFY(!sandbox::fire_key_down(key, 1, 0)); // our answer is false
        QCOMPARE(key, 66);                           // and the key is passed back
        QVERIFY(!sandbox::fire_open_document_request("C:/a.cdw"));
        QCOMPARE(app.openRequests, QStringList{"C:/a.cdw"});
        QTemporaryDir dir;
        const QString file = dir.path() + "/d.frw";
        QVERIFY(sandbox::write_sample_document(file, {1}, {}));
        const int id = sandbox::open_document(file);
        bool flag = false;
        // The library object refuses saving in an earlier format; ours flips the flag.
        QVERIFY(!sandbox::fire_save_previous_request(id, 230, flag));
        QVERIFY(flag);
        sandbox::close_document(id);
        QCOMPARE(app.closed, QStringList{file});
        QCOMPARE(sandbox::subscriber_count(), before);
    }
    // The destroyed subscription removed itself from the source.
    int key = 1;
    const int before = sandbox::subscriber_count();
    sandbox::fire_key_down(key, 1, 0);
    QCOMPARE(key, 1);
    QCOMPARE(before, 1); // only the library object is left
}

void HostTest::openDocumentsGetHandlersAtStart()
{
    QTemporaryDir dir;
    const QString file = dir.path() + "/open.cdw";
    QVERIFY(sandbox::write_sample_document(file, {1, 2}, {2}));
    const int id = sandbox::open_document(file);
    QVERIFY(id > 0);
    recording_app app;
    app.start_subscription();
    QVERIFY(app.subscribed());
    QCOMPARE(app.document_handler_count(), std::size_t(sandbox::documents().size()));
    const std::size_t before = app.document_handler_count();
    sandbox::fire_document_opened(id);
    sandbox::fire_document_activated(id);
    QCOMPARE(app.document_handler_count(), before + 2);
    sandbox::fire_document_closing(id); // the third event keeps nothing
    QCOMPARE(app.document_handler_count(), before + 2);
    sandbox::close_document(id);
}

void HostTest::sessionTakesHostIcon()
{
    QWidget hostWindow;
    QPixmap pixmap(32, 32);
    pixmap.fill(Qt::red);
    hostWindow.setWindowIcon(QIcon(pixmap));
    sandbox::set_main_window(hostWindow.winId());
    prepare_dialog_session();
    const QImage icon = QApplication::windowIcon().pixmap(32, 32).toImage();
    QVERIFY(!icon.isNull());
    QCOMPARE(icon.pixelColor(16, 16), QColor(Qt::red));
}

void HostTest::applicationClosingDropsSubscription()
{
    QVERIFY(automation());
    QVERIFY(theApp().subscribed());
    const int before = sandbox::subscriber_count();
    sandbox::fire_application_closing();
    QVERIFY(!theApp().subscribed());
    QVERIFY(!theApp().holds_application());
    QCOMPARE(sandbox::subscriber_count(), before - 1);
    // The automation object stays cached: no new subscription later.
    QVERIFY(automation());
    QCOMPARE(sandbox::subscriber_count(), before - 1);
}

void HostTest::cleanupTestCase()
{
    sandbox::reset();
}

QTEST_MAIN(HostTest)
#include "tst_host.moc"
