#include "Libs/zipper/unzip.h"
#include "document.h"
#include "exchange.h"
#include "exchange_fixture.h"
#include "fileregistry.h"
#include "ziptestsupport.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QSemaphore>

#include <QTest>
#include <future>

using namespace testing;

// The export writer: the archive's entries, the document's members and the progress a user
// sees, read back from archives written out of real catalogs.
class TestExport : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void keyFollowsDatabaseKind_data();
    void keyFollowsDatabaseKind();
    void documentFirstThenSharedFilesInDigestOrder();
    void attributeMembersFollowPresenceRules_data();
    void attributeMembersFollowPresenceRules();
    void headerCarriesKeyDateAndCount();
    void specificationsAndColumnsAreWritten();
    void failedExportLeavesExistingTargetUnchanged();
    void leftoversOfEndedProcessesAreRemoved_data();
    void leftoversOfEndedProcessesAreRemoved();
    void previousVersionStoresConvertedFilesWithTheirDigest();
    void previousVersionFailureKeepsSourceAndDigest();
    void unknownDatabaseKindThrows();
    void concurrentExportsKeepTheirOwnDocuments();
    void sameCatalogAtSameDateGivesSameBytes();
    void entryMethodFollowsKindAndSize();
    void streamedDocumentEqualsStyledWriter_data();
    void streamedDocumentEqualsStyledWriter();

private:
    QStringList workingFoldersLeft() const;
    QJsonObject document(const QString& archive, const QString& key = QStringLiteral("TX"));
    QStringList entries(const QString& archive);
    std::unique_ptr<TempCatalog> m_catalog;
    std::unique_ptr<QTemporaryDir> m_out;
    QTemporaryDir m_temp;
};

void TestExport::initTestCase()
{
    // A temporary folder of this test alone: other programs' exports never show up in it.
    QVERIFY(m_temp.isValid());
    qputenv("TMPDIR", QFile::encodeName(m_temp.path()));
    QCOMPARE(ExportUss::workingFolder(), QDir(m_temp.path()).filePath("uss_export"));
}

QStringList TestExport::workingFoldersLeft() const
{
    return QDir(ExportUss::workingFolder()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
}

void TestExport::init()
{
    m_catalog = std::make_unique<TempCatalog>();
    QVERIFY(m_catalog->provider);
    m_out = std::make_unique<QTemporaryDir>();
}

QJsonObject TestExport::document(const QString& archive, const QString& key)
{
    zipper::unzip u(archive);
    return QJsonDocument::fromJson(u.readAll(key + ".json", 1 << 26)).object();
}

QStringList TestExport::entries(const QString& archive)
{
    // Entry order as stored: read the central directory through a fresh index.
    QStringList names;
    const QByteArray bytes = ziptest::readFile(archive);
    for (qsizetype i = 0; i + 46 < bytes.size(); ++i)
        if (ziptest::get32(bytes, i) == 0x02014b50)
            names << QString::fromUtf8(bytes.mid(i + 46, ziptest::get16(bytes, i + 28)));
    return names;
}

void TestExport::keyFollowsDatabaseKind_data()
{
    QTest::addColumn<QString>("dbName");
    QTest::addColumn<QString>("key");
    QTest::newRow("object library") << "x_user_vo_1"
                                    << "vobject";
    QTest::newRow("OV") << "my user_ov"
                        << "OV";
}

void TestExport::keyFollowsDatabaseKind()
{
    QFETCH(QString, dbName);
    QFETCH(QString, key);
    TempCatalog catalog(dbName);
    es_stdsize_t* e = catalog.addElement("P", "F", "E1");
    const QString path = m_out->filePath("a.uss");
    QVERIFY(ExportUss::Export(path, {e}, false));
    QCOMPARE(entries(path), QStringList{key + ".json"});
    QCOMPARE(document(path, key)["comment"].toObject()["lib-name"].toString(), key);
}

void TestExport::documentFirstThenSharedFilesInDigestOrder()
{
    // Digests decide the order of the files, not the order in which elements met them; a
    // model met again under another file name is stored once.
    es_stdsize_t* e1 = m_catalog->addElement("P", "F", "E1");
    es_stdsize_t* e2 = m_catalog->addElement("P", "F", "E2");
    es_stdsize_t* e3 = m_catalog->addElement("P", "G", "E3");
    QVERIFY(setModel(e1, m_catalog->writeFile("a.m3d", "model A"), {}, "A", 1));
    QVERIFY(setModel(e2, m_catalog->writeFile("b.m3d", "model B"), {}, "B", 1));
    QVERIFY(setModel(e3, m_catalog->writeFile("c.m3d", "model A"), {}, "C", 1));
    const QString path = m_out->filePath("a.uss");
    QVERIFY(ExportUss::Export(path, {e1, e2, e3}, false));

    const bool aFirst =
        edw::contentDigest(QByteArray("model A")) < edw::contentDigest(QByteArray("model B"));
    QCOMPARE(entries(path),
             (QStringList{"TX.json", aFirst ? "TX\\model\\1.m3d" : "TX\\model\\2.m3d",
                          aFirst ? "TX\\model\\2.m3d" : "TX\\model\\1.m3d"}));
    const QJsonArray items = document(path)["std-size"].toArray();
    const QJsonObject third = items[2].toObject()["model"].toObject();
    QCOMPARE(third["file"], items[0].toObject()["model"].toObject()["file"]);
    QCOMPARE(third["name"].toString(), "C");
}

void TestExport::attributeMembersFollowPresenceRules_data()
{
    QTest::addColumn<QString>("formula");
    QTest::addColumn<QString>("desc");
    QTest::addColumn<int>("oldShift");
    QTest::addColumn<QString>("var");
    QTest::addColumn<QStringList>("members");
    const QStringList base{"name", "num", "type"};
    QTest::newRow("value only") << ""
                                << "" << 0 << "" << (base + QStringList{"val"});
    QTest::newRow("formula, no val") << "{A1}*2"
                                     << "" << 0 << "" << (base + QStringList{"formula"});
    QTest::newRow("description differs")
        << ""
        << "Длина трубы" << 0 << "" << (base + QStringList{"desc", "val"});
    QTest::newRow("old number differs") << ""
                                        << "" << 3 << "" << (base + QStringList{"old-num", "val"});
    QTest::newRow("variable name") << ""
                                   << "" << 0 << "L" << (base + QStringList{"val", "var"});
}

void TestExport::attributeMembersFollowPresenceRules()
{
    QFETCH(QString, formula);
    QFETCH(QString, desc);
    QFETCH(int, oldShift);
    QFETCH(QString, var);
    QFETCH(QStringList, members);
    es_stdsize_t* e = m_catalog->addElement("P", "F", "E1");
    addAttribute(e, {"Length", 2, "2,5", formula, desc, var, {}, oldShift});
    const QString path = m_out->filePath("a.uss");
    QVERIFY(ExportUss::Export(path, {e}, false));
    const QJsonObject atr =
        document(path)["std-size"].toArray()[0].toObject()["atr"].toArray()[0].toObject();
    QStringList keys = atr.keys();
    keys.sort();
    members.sort();
    QCOMPARE(keys, members);
    if (atr.contains("val")) QCOMPARE(atr["val"].toString(), "2.5");
    if (atr.contains("formula")) QCOMPARE(atr["formula"].toString(), formula);
    if (atr.contains("desc")) QCOMPARE(atr["desc"].toString(), desc);
    if (atr.contains("old-num")) QCOMPARE(atr["old-num"].toInt(), atr["num"].toInt() + oldShift);
    QCOMPARE(atr["type"].toInt(), 2);
}

void TestExport::headerCarriesKeyDateAndCount()
{
    es_stdsize_t* e1 = m_catalog->addElement("ПЭ_Трубы", "Стальные", "E1");
    es_stdsize_t* e2 = m_catalog->addElement("ПЭ_Трубы", "Стальные", "E2");
    const QString fixed = m_out->filePath("fixed.uss");
    QVERIFY(ExportUss::Export(fixed, {e2, e1}, false, edw::nullProgress(),
                              ExportUss::Options{"2024.03.05 14:07:31", 6}));
    const QJsonObject doc = document(fixed);
    const QJsonObject comment = doc["comment"].toObject();
    QCOMPARE(comment["encoding"].toString(), "utf8");
    QCOMPARE(comment["lib-name"].toString(), "TX");
    QCOMPARE(comment["export-date"].toString(), "2024.03.05 14:07:31");
    QCOMPARE(comment["item-count"].toInt(), 2);
    const QJsonArray items = doc["std-size"].toArray();
    QCOMPARE(items[0].toObject()["id"].toString(), "E2");
    QCOMPARE(items[1].toObject()["id"].toString(), "E1");
    QCOMPARE(items[0].toObject()["packet"].toString(), "ПЭ_Трубы");
    QCOMPARE(items[0].toObject()["folder"].toString(), "Стальные\\folder E2");
    QCOMPARE(items[0].toObject()["type"].toString(), "PIPE");
    // Without a model: a null model, no projections, no representation or specifications.
    QCOMPARE(items[0].toObject()["model"], QJsonValue(QJsonValue::Null));
    QCOMPARE(items[0].toObject()["prj"], QJsonValue(QJsonArray()));
    QVERIFY(!items[0].toObject().contains("repPath") && !items[0].toObject().contains("spc"));
    QCOMPARE(entries(fixed), QStringList{"TX.json"});

    const QString now = m_out->filePath("now.uss");
    QVERIFY(ExportUss::Export(now, {e1}, false));
    const QString date = document(now)["comment"].toObject()["export-date"].toString();
    QVERIFY2(QRegularExpression("^\\d{4}\\.\\d{2}\\.\\d{2} \\d{2}:\\d{2}:\\d{2}$")
                 .match(date)
                 .hasMatch(),
             qPrintable(date));
}

void TestExport::specificationsAndColumnsAreWritten()
{
    es_stdsize_t* e = m_catalog->addElement("P", "F", "E1");
    std::vector<edw::SpecDescription> specs(2);
    specs[0].libName = "Трубопроводы";
    specs[0].styleNum = 3;
    specs[0].firstPart = 1;
    specs[0].secondPart = 2;
    specs[0].columns = {{4, "{A1}"}, {5, "шт."}};
    specs[1].libName = "Other";
    specs[1].styleNum = 7;
    specs[1].firstPart = 8;
    specs[1].secondPart = 9;
    QVERIFY(edw::runCreateSpec(specs, e));
    const QString path = m_out->filePath("a.uss");
    QVERIFY(ExportUss::Export(path, {e}, false));
    const QJsonArray spc = document(path)["std-size"].toArray()[0].toObject()["spc"].toArray();
    QCOMPARE(spc, QJsonDocument::fromJson(R"([
        {"libName": "Трубопроводы", "style": 3, "fPart": 1, "sPart": 2,
         "column": [{"num": 4, "val": "{A1}"}, {"num": 5, "val": "шт."}]},
        {"libName": "Other", "style": 7, "fPart": 8, "sPart": 9, "column": []}])")
                      .array());
}

void TestExport::failedExportLeavesExistingTargetUnchanged()
{
    RecordingMessenger messenger;
    es_stdsize_t* e = m_catalog->addElement("P", "F", "E1");
    QVERIFY(setModel(e, m_catalog->writeFile("1.m3d", "model"), {}, "M", 1));
    // The store loses the model's file: the archive cannot be completed.
    QVERIFY(QFile::remove(edw::fromEs(model_GetModelFile(stdsize_GetModel(e)))));
    const QString path = m_out->filePath("a.uss");
    ziptest::writeFile(path, "the previous export");
    RecordingProgress progress;
    QVERIFY(!ExportUss::Export(path, {e}, false, progress));
    QCOMPARE(ziptest::readFile(path), QByteArray("the previous export"));
    QCOMPARE(QDir(m_out->path()).entryList(QDir::Files | QDir::Hidden), QStringList{"a.uss"});
    QCOMPARE(progress.ended, 1);
    QVERIFY(workingFoldersLeft().isEmpty());

    // A target in a folder that does not exist is refused before any work, with its message.
    messenger.texts.clear();
    RecordingProgress refused;
    QVERIFY(!ExportUss::Export(m_out->filePath("no/such/folder/a.uss"), {e}, false, refused));
    QCOMPARE(messenger.texts, QStringList{"Не смогли создать архив"});
    QCOMPARE(refused.ended, 1);
    QVERIFY(refused.values.isEmpty());
    QVERIFY(!QFileInfo::exists(m_out->filePath("no")));
    QVERIFY(workingFoldersLeft().isEmpty());
}

// A killed export leaves its working folder and its partial archive, a killed import its
// folder of extracted files: the next export or import removes those of ended processes and
// leaves those of running ones.
void TestExport::leftoversOfEndedProcessesAreRemoved_data()
{
    QTest::addColumn<bool>("exporting");
    QTest::newRow("by an export") << true;
    QTest::newRow("by an import") << false;
}

void TestExport::leftoversOfEndedProcessesAreRemoved()
{
#ifndef Q_OS_UNIX
    QSKIP("the processes are started with sh and sleep");
#endif
    QFETCH(bool, exporting);
    es_stdsize_t* e = m_catalog->addElement("P", "F", "E1");
    const QString archivePath = m_out->filePath("a.uss");
    if (!exporting) QVERIFY(ExportUss::Export(archivePath, {e}, false));

    QProcess ended;
    ended.start("sh", {"-c", "exit 0"});
    QVERIFY(ended.waitForStarted());
    const QString gone = QString::number(ended.processId());
    QVERIFY(ended.waitForFinished());
    QProcess alive;
    alive.start("sleep", {"60"});
    QVERIFY(alive.waitForStarted());
    const QString running = QString::number(alive.processId());
    const auto stop = qScopeGuard([&] {
        alive.kill();
        alive.waitForFinished();
    });

    const QDir temp(m_temp.path());
    const QString exportParent = ExportUss::workingFolder();
    const QStringList folders{exportParent + "/export_" + gone + "_aB3dEf",
                              exportParent + "/export_" + running + "_zZ9yX8",
                              temp.filePath("uss_import_" + gone + "_qW1eR2"),
                              temp.filePath("uss_import_" + running + "_tY5uI6")};
    for (const QString& folder : folders) {
        QVERIFY(QDir().mkpath(folder));
        ziptest::writeFile(folder + "/part1.zip", "left over");
    }
    const auto tidy = qScopeGuard([&] {
        for (const QString& folder : folders)
            QDir(folder).removeRecursively();
    });
    // Partials of any target beside the archive, named with either marker form.
    const QStringList partials{".a.uss.part-" + gone, ".a.uss.part-" + gone + ".Xy12ab",
                               ".a.uss.part-" + running, ".b.uss.part-" + gone + ".3",
                               ".c.part-1.uss.part-" + gone};
    for (const QString& name : partials)
        ziptest::writeFile(m_out->filePath(name), "left over");

    if (exporting) {
        QVERIFY(ExportUss::Export(archivePath, {e}, false));
    } else {
        exchange::ImportArchive archive;
        QCOMPARE(archive.open(archivePath, m_catalog->provider),
                 exchange::ImportArchive::Status::Ok);
    }

    QVERIFY(!QFileInfo::exists(folders[0]));
    QVERIFY(QFileInfo::exists(folders[1]));
    QVERIFY(!QFileInfo::exists(folders[2]));
    QVERIFY(QFileInfo::exists(folders[3]));
    // Only those of the ended process.
    QCOMPARE(QDir(m_out->path()).entryList(QDir::Files | QDir::Hidden, QDir::Name),
             (QStringList{".a.uss.part-" + running, "a.uss"}));
}

void TestExport::previousVersionStoresConvertedFilesWithTheirDigest()
{
    FakeHost host;
    es_stdsize_t* e = m_catalog->addElement("P", "F", "E1");
    QVERIFY(setModel(e, m_catalog->writeFile("1.m3d", "model"), {}, "M", 1));
    QVERIFY(addProjection(e, "top", m_catalog->writeFile("1.frw", "fragment"), {}, 1, 0));
    const QString path = m_out->filePath("a.uss");
    QVERIFY(ExportUss::Export(path, {e}, true));

    const QByteArray converted = "earlier format\nmodel";
    const QJsonObject item = document(path)["std-size"].toArray()[0].toObject();
    QCOMPARE(item["model"].toObject()["digest"].toString(), edw::contentDigest(converted));
    QCOMPARE(item["prj"].toArray()[0].toObject()["digest"].toString(),
             edw::contentDigest(QByteArray("earlier format\nfragment")));
    zipper::unzip u(path);
    QCOMPARE(u.readAll("TX\\model\\1.m3d", 100), converted);
    QCOMPARE(host.saved.size(), 2);
    QCOMPARE(QFileInfo(host.saved[0]).fileName(), "file_1.m3d");
    QCOMPARE(QFileInfo(host.saved[1]).fileName(), "file_2.frw");
    // Converted copies wait in the export's own folder under the shared parent.
    const QFileInfo ownFolder(QFileInfo(host.saved[0]).absolutePath());
    QCOMPARE(ownFolder.absolutePath(), ExportUss::workingFolder());
    QVERIFY(!ownFolder.exists());
    QVERIFY(workingFoldersLeft().isEmpty());
}

void TestExport::previousVersionFailureKeepsSourceAndDigest()
{
    FakeHost host;
    host.works = false;
    es_stdsize_t* e = m_catalog->addElement("P", "F", "E1");
    QVERIFY(setModel(e, m_catalog->writeFile("1.m3d", "model"), {}, "M", 1));
    const QString path = m_out->filePath("a.uss");
    QVERIFY(ExportUss::Export(path, {e}, true));
    const QJsonObject item = document(path)["std-size"].toArray()[0].toObject();
    QCOMPARE(item["model"].toObject()["digest"].toString(),
             edw::contentDigest(QByteArray("model")));
    zipper::unzip u(path);
    QCOMPARE(u.readAll("TX\\model\\1.m3d", 100), QByteArray("model"));
    QCOMPARE(host.saved.size(), 1);
}

void TestExport::unknownDatabaseKindThrows()
{
    TempCatalog catalog("user_xx");
    es_stdsize_t* e = catalog.addElement("P", "F", "E1");
    try {
        ExportUss::Export(m_out->filePath("a.uss"), {e}, false);
        QFAIL("no exception");
    } catch (const std::runtime_error& error) {
        QCOMPARE(QString(error.what()), "Unknown user database");
    }
    QVERIFY(!QFileInfo::exists(m_out->filePath("a.uss")));
}

namespace {

// Holds an export on its first value of the file phase until the other export has got as
// far: both documents are written before either archive is.
class MeetingProgress : public edw::IProgress
{
public:
    MeetingProgress(QSemaphore& mine, QSemaphore& theirs) : m_mine(mine), m_theirs(theirs) {}
    void begin(const QString&, int) override {}
    void setValue(int) override
    {
        // One element: the document phase gives one value, the file phase follows.
        if (++m_calls != 2) return;
        m_mine.release();
        met = m_theirs.tryAcquire(1, 20000);
    }
    void keepAlive() override {}
    void end() override {}
    bool met = false;

private:
    QSemaphore& m_mine;
    QSemaphore& m_theirs;
    int m_calls = 0;
};

} // namespace

void TestExport::concurrentExportsKeepTheirOwnDocuments()
{
    TempCatalog other;
    QVERIFY(other.provider);
    es_stdsize_t* first = m_catalog->addElement("P", "F", "FIRST");
    QVERIFY(setModel(first, m_catalog->writeFile("1.m3d", "first model"), {}, "one", 1));
    es_stdsize_t* second = other.addElement("Q", "G", "SECOND");
    QVERIFY(setModel(second, other.writeFile("2.m3d", "second model"), {}, "two", 1));

    QSemaphore firstReady;
    QSemaphore secondReady;
    MeetingProgress firstProgress(firstReady, secondReady);
    MeetingProgress secondProgress(secondReady, firstReady);
    const QString firstPath = m_out->filePath("first.uss");
    const QString secondPath = m_out->filePath("second.uss");
    std::future<bool> a = std::async(std::launch::async, [&] {
        return ExportUss::Export(firstPath, {first}, false, firstProgress);
    });
    std::future<bool> b = std::async(std::launch::async, [&] {
        return ExportUss::Export(secondPath, {second}, false, secondProgress);
    });
    QVERIFY(a.get());
    QVERIFY(b.get());
    QVERIFY(firstProgress.met);
    QVERIFY(secondProgress.met);

    const QJsonObject firstItem = document(firstPath)["std-size"].toArray()[0].toObject();
    const QJsonObject secondItem = document(secondPath)["std-size"].toArray()[0].toObject();
    QCOMPARE(firstItem["id"].toString(), "FIRST");
    QCOMPARE(firstItem["packet"].toString(), "P");
    QCOMPARE(secondItem["id"].toString(), "SECOND");
    QCOMPARE(secondItem["packet"].toString(), "Q");
    QCOMPARE(zipper::unzip(firstPath).readAll("TX\\model\\1.m3d", 100), QByteArray("first model"));
    QCOMPARE(zipper::unzip(secondPath).readAll("TX\\model\\1.m3d", 100),
             QByteArray("second model"));
    QVERIFY(workingFoldersLeft().isEmpty());
}

void TestExport::sameCatalogAtSameDateGivesSameBytes()
{
    es_stdsize_t* e = m_catalog->addElement("P", "F", "E1");
    addAttribute(e, {"Name", 3, "Труба"});
    const QString model = m_catalog->writeFile("1.m3d", QByteArray("model ").repeated(100));
    QVERIFY(setModel(e, model, m_catalog->writeFile("1.png", "icon"), "M", 1));
    auto exportAt = [&](const QString& name, const QString& date, int daysBack) {
        // The stored model file's own time changes between exports; the archive must not show
        // it.
        QFile file(edw::fromEs(model_GetModelFile(stdsize_GetModel(e))));
        if (!file.open(QIODevice::ReadWrite) ||
            !file.setFileTime(QDateTime::currentDateTimeUtc().addDays(-daysBack),
                              QFileDevice::FileModificationTime))
            return QByteArray();
        ExportUss::Options options;
        options.exportDate = date;
        RecordingProgress progress;
        const QString path = m_out->filePath(name);
        return ExportUss::Export(path, {e}, false, progress, options) ? ziptest::readFile(path)
                                                                      : QByteArray();
    };
    const QByteArray first = exportAt("1.uss", "2024.03.05 14:07:30", 0);
    const QByteArray second = exportAt("2.uss", "2024.03.05 14:07:30", 3);
    const QByteArray later = exportAt("3.uss", "2024.03.06 09:00:00", 5);
    QVERIFY(!first.isEmpty());
    QCOMPARE(second, first);
    QVERIFY(later != first);
    QCOMPARE(document(m_out->filePath("2.uss"))["comment"].toObject()["export-date"].toString(),
             "2024.03.05 14:07:30");
}

void TestExport::entryMethodFollowsKindAndSize()
{
    es_stdsize_t* e = m_catalog->addElement("P", "F", "E1");
    const QByteArray icon = QByteArray("icon ").repeated(400);
    QVERIFY(setModel(e, m_catalog->writeFile("m.m3d", QByteArray("model ").repeated(400)),
                     m_catalog->writeFile("m.png", icon), "M", 1));
    QVERIFY(addProjection(e, "top", m_catalog->writeFile("t.frw", "fragment"), {}, 1, 0));
    const QByteArray repr = "<repr/>";
    QVERIFY(stdsize_SetRepresentationData(e, repr.constData(), size_t(repr.size())));
    const QString path = m_out->filePath("a.uss");
    QVERIFY(ExportUss::Export(path, {e}, false));

    // The document and large files deflated (8), icons and small files stored (0).
    QMap<QString, int> methods;
    const QByteArray bytes = ziptest::readFile(path);
    for (qsizetype i = 0; i + 46 < bytes.size(); ++i)
        if (ziptest::get32(bytes, i) == 0x02014b50)
            methods[QString::fromUtf8(bytes.mid(i + 46, ziptest::get16(bytes, i + 28)))] =
                ziptest::get16(bytes, i + 10);
    QCOMPARE(methods, (QMap<QString, int>{{"TX.json", 8},
                                          {"TX\\model\\1.m3d", 8},
                                          {"TX\\model\\1.png", 0},
                                          {"TX\\prj\\2.frw", 0},
                                          {"TX\\repr\\3.xml", 0}}));
    // Stored or not, every entry reads back whole.
    zipper::unzip u(path);
    QCOMPARE(u.readAll("TX\\model\\1.png", 1 << 20), icon);
    QCOMPARE(u.readAll("TX\\repr\\3.xml", 100), repr);
}

void TestExport::streamedDocumentEqualsStyledWriter_data()
{
    QTest::addColumn<int>("count");
    QTest::newRow("no element") << 0;
    QTest::newRow("one element") << 1;
    QTest::newRow("every kind of element") << 4;
}

void TestExport::streamedDocumentEqualsStyledWriter()
{
    QFETCH(int, count);
    std::vector<es_stdsize_t*> elements;
    es_stdsize_t* rich = m_catalog->addElement("ПЭ \"Трубы\"", "A\\B", "R1", "T\"ype");
    addAttribute(rich, {"Name", 3, "Труба \"стальная\"\\ 1/2\t\x01", {}, "Имя", "N", "мм"});
    addAttribute(rich, {"Len", 2, "1e-7", {}, {}, {}, {}, -2});
    addAttribute(rich, {"F", 1, QString(), "{A1}+\"x\""});
    addAttribute(rich, {"Count", 1, "-2147483648"});
    setModel(rich, m_catalog->writeFile("r.m3d", "r"), m_catalog->writeFile("r.png", "i"), "Мод",
             -3);
    addProjection(rich, "Вид ☃", m_catalog->writeFile("r.frw", "f"), {}, 5, 2);
    addProjection(rich, "", m_catalog->writeFile("q.frw", "q"), {}, 1, 0);
    const QByteArray repr = "<r/>";
    stdsize_SetRepresentationData(rich, repr.constData(), size_t(repr.size()));
    std::vector<edw::SpecDescription> specs(2);
    specs[0].libName = "Л";
    specs[0].columns = {{1, "{A1}"}, {2, ""}};
    specs[1].styleNum = -1;
    edw::runCreateSpec(specs, rich);
    es_stdsize_t* bare = m_catalog->addElement("P", "", "B1", "");
    es_stdsize_t* shared = m_catalog->addElement("P", "F", "S1");
    setModel(shared, m_catalog->writeFile("s.m3d", "r"), {}, "same digest", 1);
    es_stdsize_t* oneAttr = m_catalog->addElement("P", "F", "O1");
    addAttribute(oneAttr, {"X", 2, "0,5"});
    const std::vector<es_stdsize_t*> all{rich, bare, shared, oneAttr};
    elements.assign(all.begin(), all.begin() + count);

    QTemporaryDir work;
    QList<int> treeCalls;
    QList<int> streamCalls;
    exchange::FileRegistry treeRegistry("TX", false, work.path());
    const QByteArray tree = exchange::writeDocument(
        "TX", elements, treeRegistry, [&](int i) { treeCalls << i; }, "2024.03.05 14:07:31");
    exchange::FileRegistry streamRegistry("TX", false, work.path());
    const QString file = work.filePath("doc.json");
    QVERIFY(exchange::writeDocumentFile(
        file, "TX", elements, streamRegistry, [&](int i) { streamCalls << i; },
        "2024.03.05 14:07:31"));
    const QByteArray streamed = ziptest::readFile(file);
    QVERIFY(!tree.isEmpty());
    QCOMPARE(streamed, tree);
    QCOMPARE(streamCalls, treeCalls);
    QCOMPARE(streamCalls.size(), count);
    QCOMPARE(streamRegistry.lastNumber(), treeRegistry.lastNumber());
}

QTEST_GUILESS_MAIN(TestExport)
#include "tst_export.moc"
