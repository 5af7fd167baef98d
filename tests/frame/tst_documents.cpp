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

Q_DECLARE_METATYPE(std::vector<int>)

class DocumentsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void hiddenLayers_data();
    void hiddenLayers();
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

void DocumentsTest::hiddenLayers_data()
{
    QTest::addColumn<QList<int>>("layers");
    QTest::addColumn<QList<int>>("hidden");
    QTest::addColumn<std::vector<int>>("expected");
    QTest::newRow("none hidden") << QList<int>{0, 1, 2} << QList<int>{} << std::vector<int>{};
    QTest::newRow("document order")
        << QList<int>{5, 3, 9} << QList<int>{9, 5} << std::vector<int>{5, 9};
}

void DocumentsTest::hiddenLayers()
{
    QFETCH(QList<int>, layers);
    QFETCH(QList<int>, hidden);
    QFETCH(std::vector<int>, expected);
    const QString file = write("layers.frw", layers, hidden);
    const int openBefore = sandbox::documents().size();
    auto doc = gapi::sync::open_document(file, false);
    QVERIFY(doc && !doc->is_null());
    QVERIFY(!doc->visible());
    QCOMPARE(doc->path(), file);
    QVERIFY(!doc->no_file_name());
    auto docLayers = doc->layers();
    QVERIFY(docLayers);
    QCOMPARE(docLayers->count(), layers.size());
    QCOMPARE(docLayers->hidden_numbers(), expected);
    doc->close();
    QCOMPARE(sandbox::documents().size(), openBefore);
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
    const auto hidden = host->hiddenLayers(write("cat.frw", {1, 2, 3}, {3}));
    QVERIFY(hidden.has_value());
    QCOMPARE(*hidden, std::vector<int>{3});
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
