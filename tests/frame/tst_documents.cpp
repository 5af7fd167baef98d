// Host documents through the real host modules: hidden layers, the refusal of a document made
// by a later version, saving in the earlier format, and what the catalog cores ask of them.

#include "frame/host/gapi.h"
#include "frame/host/host_error.h"
#include "frame/host/sync.h"
#include "frame/host_documents.h"
#include "frame/session.h"

#include "host_state.h"

#if defined(FRAME_TEST_WITH_CATALOG)
#include "catalog/host.h"
#endif

#include <QApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

class DocumentsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void laterVersionIsRefused();
    void saveInEarlierFormat();
    void catalogHostAnswers();

private:
    QString write(const QString& name, const QList<int>& layers, const QList<int>& hidden,
                  int version = sandbox::host_document_version);
    QTemporaryDir m_dir;
};

QString DocumentsTest::write(const QString& name, const QList<int>& layers,
                             const QList<int>& hidden, int version)
{
    const QString file = m_dir.path() + "/" + name;
    if (!sandbox::write_sample_document(file, layers, hidden, version)) return {};
    return file;
}

void DocumentsTest::initTestCase()
{
    QVERIFY(m_dir.isValid());
}

void DocumentsTest::laterVersionIsRefused()
{
    const QString file = write("later.cdw", {0}, {}, 240);
    try {
        gapi::sync::open_document(file, false);
        QFAIL("a document of a later version was opened");
    } catch (const std::system_error& e) {
        QCOMPARE(e.code().value(), int(gapi::abi::e_later_version));
        QCOMPARE(&e.code().category(), &gapi::host_category());
        QVERIFY(QString::fromStdString(e.code().message()).contains("later version"));
    }
    QVERIFY(sandbox::last_error().startsWith("made by a later version"));
}

void DocumentsTest::saveInEarlierFormat()
{
    const QString source = write("current.frw", {0, 1}, {1});
    const QString target = m_dir.path() + "/previous.frw";
    auto doc = gapi::sync::open_document(source, false);
    QVERIFY(!doc->visible());
    QCOMPARE(doc->format_version(), 231);
    doc->save_as_previous(target, 230);
    doc->close();
    QFile file(target);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray text = file.readAll();
    QVERIFY(text.contains("data-version=\"230\""));
    QVERIFY(text.contains("data-hidden=\"1\""));
    // The earlier format is still readable by this host.
    auto reopened = gapi::sync::open_document(target, false);
    QCOMPARE(reopened->format_version(), 230);
    QCOMPARE(reopened->layers()->hidden_numbers(), std::vector<int>{1});
    reopened->close();
    // Only the immediate earlier format exists.
    auto again = gapi::sync::open_document(source, false);
    QVERIFY_THROWS_EXCEPTION(std::system_error, again->save_as_previous(target, 200));
    again->close();
}

void DocumentsTest::catalogHostAnswers()
{
#if defined(FRAME_TEST_WITH_CATALOG)
    QVERIFY(!edw::host());
    prepare_dialog_session(); // installs the host documents for the catalog cores
    edw::IHost* host = edw::host();
    QVERIFY(host);
    QCOMPARE(host->version(), QString("23.1"));
    // Hidden layers in document order; the document is closed again.
    const int openBefore = sandbox::documents().size();
    const auto hidden = host->hiddenLayers(write("cat.frw", {5, 3, 9}, {9, 5}));
    QVERIFY(hidden.has_value());
    QCOMPARE(*hidden, (std::vector<int>{5, 9}));
    QCOMPARE(sandbox::documents().size(), openBefore);
    QCOMPARE(host->hiddenLayers(write("none.frw", {0, 1}, {})), std::vector<int>());
    QVERIFY(!host->hiddenLayers(write("cat-later.frw", {1}, {}, 232)).has_value());
    QVERIFY(!host->hiddenLayers(m_dir.path() + "/missing.frw").has_value());
    const QString target = m_dir.path() + "/cat-prev.frw";
    QVERIFY(host->saveAsPreviousVersion(write("cat-src.frw", {1}, {}), target));
    QFile file(target);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll().contains("data-version=\"230\""));
    sandbox::set_folder(sandbox::folder_user, "/home/u/Gravis");
    QCOMPARE(host->folder(3), QString("/home/u/Gravis"));
#else
    QSKIP("the catalog cores are not part of this build");
#endif
}

QTEST_MAIN(DocumentsTest)
#include "tst_documents.moc"
