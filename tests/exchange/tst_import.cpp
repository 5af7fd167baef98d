#include "Libs/zipper/unzip.h"
#include "Libs/zipper/zip.h"
#include "exchange.h"
#include "exchange_fixture.h"
#include "ziptestsupport.h"

#include <QCryptographicHash>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QSet>
#include <QSignalSpy>
#include <QTest>
#include <QThread>
#include <QThreadPool>

#include <memory>

#include <sqlite3.h>

using namespace testing;

// The import core: reading and checking archives, the decisions, and the worker that writes
// the kept elements, against real catalog files.
class TestImport : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void roundTripKeepsEveryField();
    void archiveOfAnotherKindIsRefused();
    void damagedArchiveIsRefusedWithItsMessage_data();
    void damagedArchiveIsRefusedWithItsMessage();
    void temporaryFolderThatRefusesFailsTheOpening_data();
    void temporaryFolderThatRefusesFailsTheOpening();
    void decisionsFollowTheChangeStamp();
    void conflictPolicyDecidesWhatIsWritten_data();
    void conflictPolicyDecidesWhatIsWritten();
    void filesMoveIntoTheStoreOnce();
    void attributesInOneWriteOrFieldByFieldGiveTheSameCatalog_data();
    void attributesInOneWriteOrFieldByFieldGiveTheSameCatalog();
    void importStopsAfterThird();
    void damagedElementAmongOthersIsSkippedAlone_data();
    void damagedElementAmongOthersIsSkippedAlone();
    void workerRunsOnThePoolAndReportsToThisThread_data();
    void workerRunsOnThePoolAndReportsToThisThread();
    void laterVersionIsRecognised_data();
    void laterVersionIsRecognised();
    void writeFaultLeavesEachElementWholeOrAbsent_data();
    void writeFaultLeavesEachElementWholeOrAbsent();
    void unwritableFileFolderFailsElementsAndKeepsReplaced();
    void lockedCatalogStopsOnceNamingTheLock();
    void unusedStoredFilesAreRemoved();
    void slashInAFolderNameRoundTrips();

private:
    // A source catalog with two rich elements (sharing one model) exported to an archive.
    QString richArchive(int level = 6);
    QString exportElements(const std::vector<es_stdsize_t*>& elements, const QString& name);
    QStringList tempLeftovers() const;

    QTemporaryDir m_tmp; // the process's temporary folder during the tests
    std::unique_ptr<TempCatalog> m_source;
    std::unique_ptr<TempCatalog> m_target;
    std::unique_ptr<QTemporaryDir> m_out;
};

void TestImport::initTestCase()
{
    QVERIFY(m_tmp.isValid());
    qputenv("TMPDIR", QFile::encodeName(m_tmp.path()));
}

void TestImport::init()
{
    m_source = std::make_unique<TempCatalog>();
    m_target = std::make_unique<TempCatalog>();
    m_out = std::make_unique<QTemporaryDir>();
    QVERIFY(m_source->provider && m_target->provider);
}

void TestImport::cleanup()
{
    m_source.reset();
    m_target.reset();
    m_out.reset();
    // Nothing of an import stays behind in the temporary folder.
    QCOMPARE(tempLeftovers(), QStringList());
}

QStringList TestImport::tempLeftovers() const
{
    const auto filter = QDir::AllEntries | QDir::NoDotAndDotDot;
    QStringList left = QDir(m_tmp.path()).entryList(filter);
    // Exports share one parent of their working folders, which stays; nothing may stay in it.
    const QFileInfo exportParent(ExportUss::workingFolder());
    if (exportParent.absolutePath() == QFileInfo(m_tmp.path()).absoluteFilePath() &&
        QDir(exportParent.absoluteFilePath()).isEmpty(filter))
        left.removeAll(exportParent.fileName());
    return left;
}

QString TestImport::exportElements(const std::vector<es_stdsize_t*>& elements, const QString& name)
{
    const QString path = m_out->filePath(name);
    if (!ExportUss::Export(path, elements, false)) return {};
    return path;
}

QString TestImport::richArchive(int level)
{
    TempCatalog& c = *m_source;
    es_stdsize_t* e1 = c.addElement("ПЭ_Трубы", "Стальные\\Бесшовные", "E1", "PIPE");
    addAttribute(e1, {"USS_LAST_CHANGE_DATE", 3, "01.02.2024 10:00:00"});
    addAttribute(e1, {"USS_AUTHOR", 3, "ivan\\pc"});
    addAttribute(e1, {"Count", 1, "12"});
    addAttribute(e1, {"Length", 2, "2,75", {}, "Длина", "L", "мм"});
    addAttribute(e1, {"Mass", 2, "0.1"});
    addAttribute(e1, {"Name", 3, "Труба «стальная»"});
    addAttribute(e1, {"Total", 2, QString(), "{A3}*2"});
    addAttribute(e1, {"Shifted", 1, "-5", {}, {}, {}, {}, 4});
    if (!setModel(e1, c.writeFile("pipe.m3d", QByteArray("model bytes ").repeated(300)),
                  c.writeFile("pipe.png", "model icon"), "Труба", 230))
        return {};
    addProjection(e1, "Сверху", c.writeFile("top.frw", QByteArray("top view ").repeated(200)),
                  c.writeFile("top.png", "top icon"), 1, 0);
    addProjection(e1, "Спереди", c.writeFile("front.frw", "front view"), {}, 2, 1);
    const QByteArray repr = "<representation kind=\"pipe\"/>";
    stdsize_SetRepresentationData(e1, repr.constData(), size_t(repr.size()));
    std::vector<edw::SpecDescription> specs(2);
    specs[0].libName = "Трубопроводы";
    specs[0].styleNum = 3;
    specs[0].firstPart = 1;
    specs[0].secondPart = 2;
    specs[0].columns = {{4, "{A3}"}, {5, "шт."}};
    specs[1].libName = "Other";
    specs[1].styleNum = 7;
    edw::runCreateSpec(specs, e1);

    es_stdsize_t* e2 = c.addElement("Арматура", "", "E2", "VALVE");
    addAttribute(e2, {"USS_LAST_CHANGE_DATE", 3, "03.04.2024 11:00:00"});
    addAttribute(e2, {"DN", 1, "50"});
    // The same model (same digest) travels once, with the icon of its first holder.
    setModel(e2, c.writeFile("copy.m3d", QByteArray("model bytes ").repeated(300)),
             c.writeFile("pipe.png", "model icon"), "Другая", 231);
    addProjection(e2, "Вид", c.writeFile("valve.frw", "valve view"), {}, 1, 2);

    if (level != 6) {
        const QString path = m_out->filePath("rich.uss");
        return ExportUss::Export(path, {e1, e2}, false, edw::nullProgress(),
                                 ExportUss::Options{{}, level})
                   ? path
                   : QString();
    }
    return exportElements({e1, e2}, "rich.uss");
}

void TestImport::roundTripKeepsEveryField()
{
    const QString path = richArchive();
    QVERIFY(!path.isEmpty());
    const exchange::ImportOutcome outcome = exchange::importArchive(path, m_target->provider);
    QCOMPARE(outcome.message, "Импорт пользовательских элементов завершен.");
    QCOMPARE(outcome.records, 2);
    QCOMPARE(outcome.fresh, 2);
    QCOMPARE(outcome.written, 2);
    for (const auto& [packet, id] : {std::pair{"ПЭ_Трубы", "E1"}, std::pair{"Арматура", "E2"}}) {
        es_stdsize_t* source = m_source->find(packet, id);
        es_stdsize_t* target = m_target->find(packet, id);
        QVERIFY2(target, id);
        QCOMPARE(dump(target), dump(source));
    }
    // The model shared in the archive is one file again, under one digest.
    QCOMPARE(edw::fromEs(model_GetDigest(stdsize_GetModel(m_target->find("Арматура", "E2")))),
             edw::contentDigest(QByteArray("model bytes ").repeated(300)));
}

void TestImport::archiveOfAnotherKindIsRefused()
{
    const QString path = richArchive();
    TempCatalog vk("user_vk");
    exchange::ImportArchive archive;
    QCOMPARE(archive.open(path, vk.provider), exchange::ImportArchive::Status::NotExportFile);
    QCOMPARE(archive.errorText(), "Файл не является файлом экспортированных элементов.\nДля "
                                  "получения информации по устранению проблемы нажмите кнопку "
                                  "Справка.");
    QCOMPARE(provider_GetPacketCount(vk.provider), 0u);
}

namespace {

// Rewrites the archive at path with the document changed by edit and the entries changed by
// entries (name → bytes; an empty QByteArray() removes, null leaves).
void rewrite(const QString& path, const std::function<void(QJsonObject&)>& edit,
             const QString& documentName = "TX.json", const QByteArray& rawDocument = {},
             int level = 6)
{
    QMap<QString, QByteArray> entries;
    QByteArray doc;
    {
        zipper::unzip u(path);
        doc = u.readAll("TX.json", 1 << 26);
        for (const QString name :
             {"TX\\model\\1.m3d", "TX\\model\\1.png", "TX\\prj\\2.frw", "TX\\prj\\2.png",
              "TX\\prj\\3.frw", "TX\\repr\\4.xml", "TX\\prj\\5.frw"})
            if (u.contains(name)) entries[name] = u.readAll(name, 1 << 26);
    }
    if (edit) {
        QJsonObject root = QJsonDocument::fromJson(doc).object();
        edit(root);
        doc = QJsonDocument(root).toJson();
    }
    if (!rawDocument.isNull()) doc = rawDocument;
    QFile::remove(path);
    zipper::zip z(path);
    z.setCompressionLevel(level);
    if (!documentName.isEmpty()) z.addBytes(doc, documentName);
    for (auto it = entries.cbegin(); it != entries.cend(); ++it)
        z.addBytes(*it, it.key());
    z.commit();
}

QJsonObject firstElement(const QJsonObject& root)
{
    return root["std-size"].toArray()[0].toObject();
}

void setFirstElement(QJsonObject& root, const QJsonObject& element)
{
    QJsonArray list = root["std-size"].toArray();
    list[0] = element;
    root["std-size"] = list;
}

void setModelFile(QJsonObject& root, const QString& file)
{
    QJsonObject e = firstElement(root);
    QJsonObject m = e["model"].toObject();
    m["file"] = file;
    e["model"] = m;
    setFirstElement(root, e);
}

} // namespace

void TestImport::damagedArchiveIsRefusedWithItsMessage_data()
{
    QTest::addColumn<QString>("damage");
    QTest::addColumn<QString>("message");
    QTest::addColumn<bool>("firstWritten");
    const QString notExport = exchange::texts::notExportFile();
    // Both elements name the damaged model: neither can be written whole.
    const QString stopped = "Импорт прерван.\nИмпортировано 0 из 2.";
    QTest::newRow("not a zip") << "text" << notExport << false;
    QTest::newRow("truncated") << "truncated" << notExport << false;
    QTest::newRow("no document") << "no document" << notExport << false;
    QTest::newRow("document of another kind") << "VK.json" << notExport << false;
    QTest::newRow("wrong lib-name") << "lib-name" << exchange::texts::otherLibrary() << false;
    QTest::newRow("empty std-size") << "empty" << exchange::texts::noElements() << false;
    QTest::newRow("deeply nested") << "nested" << notExport << false;
    QTest::newRow("file names a missing entry")
        << "missing entry" << exchange::texts::importDone() << true;
    QTest::newRow("dot-dot in entry name") << "dotdot" << notExport << false;
    QTest::newRow("absolute entry name") << "absolute" << notExport << false;
    QTest::newRow("drive in entry name") << "drive" << notExport << false;
    QTest::newRow("control character in entry name") << "control" << notExport << false;
    QTest::newRow("crc damage") << "crc" << stopped << false;
    QTest::newRow("entry larger than declared") << "larger" << stopped << false;
    QTest::newRow("item-count disagrees") << "item-count" << exchange::texts::importDone() << true;
}

void TestImport::damagedArchiveIsRefusedWithItsMessage()
{
    QFETCH(QString, damage);
    QFETCH(QString, message);
    QFETCH(bool, firstWritten);
    const QString path = richArchive(damage == "crc" ? 0 : 6);
    QVERIFY(!path.isEmpty());

    if (damage == "text") {
        ziptest::writeFile(path, "just some text");
    } else if (damage == "truncated") {
        const QByteArray bytes = ziptest::readFile(path);
        ziptest::writeFile(path, bytes.left(bytes.size() / 2));
    } else if (damage == "no document") {
        rewrite(path, {}, QString());
    } else if (damage == "VK.json") {
        rewrite(path, {}, "VK.json");
    } else if (damage == "lib-name") {
        rewrite(path, [](QJsonObject& r) {
            QJsonObject c = r["comment"].toObject();
            c["lib-name"] = "VK";
            r["comment"] = c;
        });
    } else if (damage == "empty") {
        rewrite(path, [](QJsonObject& r) { r["std-size"] = QJsonArray(); });
    } else if (damage == "nested") {
        // Far below what a parser follows by default, beyond what the import accepts.
        zipper::unzip u(path);
        QByteArray text = u.readAll("TX.json", 1 << 26);
        text.replace(0, 1, "{\"deep\":" + QByteArray(100, '[') + QByteArray(100, ']') + ",");
        rewrite(path, {}, "TX.json", text);
    } else if (damage == "missing entry") {
        rewrite(path, [](QJsonObject& r) { setModelFile(r, "TX\\model\\99.m3d"); });
    } else if (damage == "dotdot") {
        rewrite(path, [](QJsonObject& r) { setModelFile(r, "TX\\..\\..\\evil.m3d"); });
    } else if (damage == "absolute") {
        rewrite(path, [](QJsonObject& r) { setModelFile(r, "/tmp/evil.m3d"); });
    } else if (damage == "drive") {
        rewrite(path, [](QJsonObject& r) { setModelFile(r, "C:\\evil.m3d"); });
    } else if (damage == "control") {
        rewrite(path, [](QJsonObject& r) { setModelFile(r, "TX\\model\\1\n.m3d"); });
    } else if (damage == "crc") {
        QByteArray bytes = ziptest::readFile(path);
        QVERIFY(ziptest::damage(bytes, "model bytes model bytes"));
        ziptest::writeFile(path, bytes);
    } else if (damage == "larger") {
        QByteArray bytes = ziptest::readFile(path);
        QVERIFY(ziptest::setDeclaredSize(bytes, "TX\\model\\1.m3d", 100));
        ziptest::writeFile(path, bytes);
    } else if (damage == "item-count") {
        rewrite(path, [](QJsonObject& r) {
            QJsonObject c = r["comment"].toObject();
            c["item-count"] = 17;
            r["comment"] = c;
        });
    }

    const QStringList before =
        QDir(m_out->path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    const exchange::ImportOutcome outcome = exchange::importArchive(path, m_target->provider);
    QCOMPARE(outcome.message, message);
    es_stdsize_t* first = m_target->find("ПЭ_Трубы", "E1");
    QCOMPARE(first != nullptr, firstWritten);
    if (damage == "missing entry") QVERIFY(model_IsEmpty(stdsize_GetModel(first)));
    if (message != exchange::texts::importDone() && !message.startsWith("Импорт прерван"))
        QCOMPARE(provider_GetPacketCount(m_target->provider), 0u);
    // Nothing was written beside the archive, nor above the temporary folder.
    QCOMPARE(QDir(m_out->path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), before);
    QVERIFY(!QFileInfo::exists(m_tmp.filePath("../evil.m3d")));
    QVERIFY(!QFileInfo::exists(QDir(m_tmp.path()).filePath("evil.m3d")));
}

void TestImport::temporaryFolderThatRefusesFailsTheOpening_data()
{
    QTest::addColumn<QString>("refusal");
    QTest::addColumn<QString>("detail");
    QTest::newRow("full disk") << "full"
                               << "No space left on device";
    // A document the reading takes whole goes the same way.
    QTest::newRow("full disk, document read whole") << "full whole"
                                                    << "No space left on device";
    QTest::newRow("no folder can be made") << "no folder"
                                           << "Не удалось создать папку.";
}

void TestImport::temporaryFolderThatRefusesFailsTheOpening()
{
    QFETCH(QString, refusal);
    QFETCH(QString, detail);
    const QString path = richArchive();
    if (refusal == "full whole") {
        zipper::unzip u(path);
        const QByteArray text = u.readAll("TX.json", 1 << 26);
        rewrite(path, {}, "TX.json", "// written by hand\n" + text);
    }
    es_stdsize_t* mine = m_target->addElement("ПЭ_Трубы", "Мои", "E1", "MINE");
    addAttribute(mine, {"USS_LAST_CHANGE_DATE", 3, "05.05.2025 12:00:00"});
    const QString before = dump(mine);

    const QByteArray tmp = qgetenv("TMPDIR");
    const auto restore = qScopeGuard([&] { qputenv("TMPDIR", tmp); });
    exchange::ImportArchive archive;
    if (refusal == "no folder") {
        // A file where the temporary folder should be: nothing can be made in it, even by
        // the superuser.
        ziptest::writeFile(m_out->filePath("tmp"), "not a folder");
        qputenv("TMPDIR", QFile::encodeName(m_out->filePath("tmp")));
    } else {
        archive.setStoreLimit(100);
    }
    QCOMPARE(archive.open(path, m_target->provider),
             exchange::ImportArchive::Status::TemporaryFailed);
    QCOMPARE(archive.errorText(), "Не удалось записать временные файлы импорта в папку " +
                                      QDir::toNativeSeparators(QDir::tempPath()) + ".");
    QCOMPARE(archive.detailText(), detail);
    QCOMPARE(archive.records().size(), size_t(0));
    QCOMPARE(dump(m_target->find("ПЭ_Трубы", "E1")), before);
    QVERIFY(!m_target->find("Арматура", "E2"));
}

void TestImport::decisionsFollowTheChangeStamp()
{
    es_stdsize_t* s1 = m_source->addElement("P", "F", "SAME");
    addAttribute(s1, {"USS_LAST_CHANGE_DATE", 3, "01.01.2024 00:00:00"});
    es_stdsize_t* s2 = m_source->addElement("P", "F", "CHANGED");
    addAttribute(s2, {"USS_LAST_CHANGE_DATE", 3, "02.01.2024 00:00:00"});
    es_stdsize_t* s3 = m_source->addElement("Q", "F", "NEW");
    const QString path = exportElements({s1, s2, s3}, "a.uss");
    // CHANGED twice more and NEW once more, NEW with another type and folder.
    rewrite(path, [](QJsonObject& r) {
        QJsonArray list = r["std-size"].toArray();
        QJsonObject again = list[2].toObject();
        again["type"] = "LATER";
        again["folder"] = "G";
        list.append(list[1]);
        list.append(again);
        list.append(list[1]);
        r["std-size"] = list;
    });

    addAttribute(m_target->addElement("P", "other", "SAME"),
                 {"USS_LAST_CHANGE_DATE", 3, "01.01.2024 00:00:00"});
    es_stdsize_t* t2 = m_target->addElement("P", "F", "CHANGED");
    addAttribute(t2, {"USS_LAST_CHANGE_DATE", 3, "01.01.2024 00:00:00"});

    exchange::ImportArchive archive;
    QCOMPARE(archive.open(path, m_target->provider), exchange::ImportArchive::Status::Ok);
    const auto decisions = exchange::decide(archive.records(), m_target->provider);
    QCOMPARE(decisions, (std::vector<exchange::Decision>{
                            exchange::Decision::Same, exchange::Decision::Conflict,
                            exchange::Decision::New, exchange::Decision::Repeated,
                            exchange::Decision::Repeated, exchange::Decision::Repeated}));
    QVERIFY(exchange::needsDecision(decisions));
    QCOMPARE(archive.records()[1].existing, t2);
    QCOMPARE(archive.records()[2].existing, nullptr);

    // The repetitions are dropped like the same elements: the first record of each id counts.
    const exchange::ImportOutcome outcome = exchange::importArchive(
        path, m_target->provider, {exchange::ConflictPolicy::ReplaceWithImported, {}, nullptr});
    QCOMPARE(outcome.repeated, 3);
    QCOMPARE(outcome.same, 1);
    QCOMPARE(outcome.kept, 2);
    QCOMPARE(outcome.written, 2);
    QCOMPARE(outcome.message, exchange::texts::importDone());
    QCOMPARE(valueOf(m_target->find("P", "CHANGED"), "USS_LAST_CHANGE_DATE"),
             "02.01.2024 00:00:00");
    es_stdsize_t* fresh = m_target->find("Q", "NEW");
    QVERIFY(fresh);
    QCOMPARE(edw::fromEs(stdsize_GetType(fresh)), "PIPE");
    QCOMPARE(edw::folderPath(edw::folderOf(fresh)), edw::folderPath(edw::folderOf(s3)));
}

void TestImport::conflictPolicyDecidesWhatIsWritten_data()
{
    QTest::addColumn<QString>("mine"); // the catalog's E1: "source" (the same stamp), or its folder
    QTest::addColumn<bool>("replace");
    QTest::addColumn<int>("copies"); // new elements E3... added to the archive, copies of E2
    QTest::addColumn<QString>("message");
    QTest::addColumn<int>("added");
    QTest::addColumn<int>("replaced");
    // Every count differs from the others within a row, so that none can stand for another.
    QTest::newRow("all the same") << "source" << true << 0 << exchange::texts::allPresent() << 0
                                  << 0;
    QTest::newRow("conflict kept")
        << "Мои" << false << 2 << exchange::texts::importDone() << 3 << 0;
    QTest::newRow("conflict replaced")
        << "Стальные\\Бесшовные" << true << 1 << exchange::texts::importDone() << 2 << 1;
}

void TestImport::conflictPolicyDecidesWhatIsWritten()
{
    QFETCH(QString, mine);
    QFETCH(bool, replace);
    QFETCH(int, copies);
    QFETCH(QString, message);
    QFETCH(int, added);
    QFETCH(int, replaced);
    const QString path = richArchive();
    rewrite(path, [copies](QJsonObject& r) {
        QJsonArray list = r["std-size"].toArray();
        for (int i = 0; i < copies; ++i) {
            QJsonObject copy = list[1].toObject();
            copy["id"] = QString("E%1").arg(3 + i);
            list.append(copy);
        }
        r["std-size"] = list;
    });
    TempCatalog& target = mine == "source" ? *m_source : *m_target;
    if (mine != "source") {
        es_stdsize_t* e = m_target->addElement("ПЭ_Трубы", mine, "E1", "MINE");
        addAttribute(e, {"USS_LAST_CHANGE_DATE", 3, "05.05.2025 12:00:00"});
        if (!replace) addAttribute(e, {"Count", 1, "99"});
    }
    const QString before = dump(target.find("ПЭ_Трубы", "E1"));
    const exchange::ImportOutcome outcome =
        exchange::importArchive(path, target.provider,
                                {replace ? exchange::ConflictPolicy::ReplaceWithImported
                                         : exchange::ConflictPolicy::KeepMine,
                                 {},
                                 nullptr});
    QCOMPARE(outcome.message, message);
    QCOMPARE(outcome.records, 2 + copies);
    QCOMPARE(outcome.same, mine == "source" ? 2 : 0);
    QCOMPARE(outcome.conflicts, mine == "source" ? 0 : 1);
    QCOMPARE(outcome.kept, added + replaced);
    QCOMPARE(outcome.written, added + replaced);
    QCOMPARE(outcome.added, added);
    QCOMPARE(outcome.replaced, replaced);
    QCOMPARE(dump(target.find("ПЭ_Трубы", "E1")),
             replaced ? dump(m_source->find("ПЭ_Трубы", "E1")) : before);
    for (int i = 2; i < 3 + copies; ++i)
        QVERIFY(target.find("Арматура", QString("E%1").arg(i)));
}

void TestImport::filesMoveIntoTheStoreOnce()
{
    // Many elements over few files, so that the writes and the extraction ahead of them meet.
    std::vector<es_stdsize_t*> elements;
    QSet<QByteArray> contents;
    for (int i = 0; i < 40; ++i) {
        es_stdsize_t* e = m_source->addElement("P", "F", QString("E%1").arg(i));
        const QByteArray model = "MODEL-" + QByteArray::number(i % 3);
        const QByteArray view = "VIEW-" + QByteArray::number(i % 4);
        setModel(e, m_source->writeFile(QString("m%1.m3d").arg(i), model),
                 m_source->writeFile(QString("m%1.png").arg(i), "ICON"), "m", 1);
        addProjection(e, "Вид", m_source->writeFile(QString("v%1.frw").arg(i), view), {}, 1, 2);
        contents << model << view;
        elements.push_back(e);
    }
    const QString path = exportElements(elements, "many.uss");
    exchange::ImportArchive archive;
    QCOMPARE(archive.open(path, m_target->provider), exchange::ImportArchive::Status::Ok);
    exchange::ImportWorker worker(archive, m_target->provider, archive.records());
    worker.run();
    QCOMPARE(worker.written(), 40);
    // Each shared entry came out of the archive once: 3 models with their icons, 4 views;
    // one entry, whichever separator names it.
    QCOMPARE(archive.extractedCount(), 10);
    QCOMPARE(archive.extract("TX\\model\\1.m3d"), archive.extract("TX/model/1.m3d"));
    QCOMPARE(archive.extractedCount(), 10);

    const QString store = m_target->path + ".files";
    QStringList stored = QDir(store).entryList({"*.m3d", "*.frw"}, QDir::Files);
    QStringList expected;
    for (const QByteArray& content : contents)
        expected << QCryptographicHash::hash(content, QCryptographicHash::Md5).toHex() +
                        (content.startsWith("MODEL") ? ".m3d" : ".frw");
    stored.sort();
    expected.sort();
    QCOMPARE(stored, expected);
    // Moved, not copied: the import's folder keeps only the icons.
    const QDir temporary(archive.temporaryFolder());
    QCOMPARE(temporary.entryList({"*.m3d", "*.frw"}, QDir::Files), QStringList());
    for (int i = 0; i < 40; ++i) {
        es_stdsize_t* e = m_target->find("P", QString("E%1").arg(i));
        QVERIFY(e);
        QCOMPARE(dump(e), dump(elements[size_t(i)]));
    }
}

void TestImport::attributesInOneWriteOrFieldByFieldGiveTheSameCatalog_data()
{
    QTest::addColumn<bool>("oneWrite");
    QTest::newRow("one write") << true;
    QTest::newRow("field by field") << false;
}

void TestImport::attributesInOneWriteOrFieldByFieldGiveTheSameCatalog()
{
    QFETCH(bool, oneWrite);
    // The embedded store this test runs with has the one-write function.
    QVERIFY(exchange::ImportWorker::oneWriteAttributesAvailable());
    es_stdsize_t* a = m_source->addElement("P", "F", "A");
    addAttribute(a, {"Length", 2, "2,5", {}, "Длина", "L", "мм", 3});
    addAttribute(a, {"Total", 2, QString(), "{A1}*2"});
    es_attribute_t* renumbered = addAttribute(a, {"Count", 1, "4"});
    attribute_SetNumber(renumbered, 9);
    es_stdsize_t* b = m_source->addElement("P", "F", "B");
    addAttribute(b, {"Name", 3, "Б"});
    const QString path = exportElements({a, b}, "attributes.uss");
    QVERIFY(!path.isEmpty());

    exchange::ImportArchive archive;
    QCOMPARE(archive.open(path, m_target->provider), exchange::ImportArchive::Status::Ok);
    exchange::ImportWorker worker(archive, m_target->provider, archive.records());
    worker.setOneWriteAttributes(oneWrite);
    worker.run();
    QCOMPARE(worker.written(), 2);
    for (const char* id : {"A", "B"}) {
        es_stdsize_t* target = m_target->find("P", id);
        QVERIFY2(target, id);
        QCOMPARE(dump(target), dump(m_source->find("P", id)));
    }
    QCOMPARE(attribute_GetNumber(
                 table_FindAttribute(stdsize_GetTable(m_target->find("P", "A")), u"Count")),
             9);
}

void TestImport::importStopsAfterThird()
{
    std::vector<es_stdsize_t*> elements;
    for (int i = 0; i < 10; ++i)
        elements.push_back(m_source->addElement("P", "F", QString("E%1").arg(i)));
    const QString path = exportElements(elements, "ten.uss");
    exchange::ImportArchive archive;
    QCOMPARE(archive.open(path, m_target->provider), exchange::ImportArchive::Status::Ok);
    exchange::ImportWorker worker(archive, m_target->provider, archive.records());
    QObject::connect(
        &worker, &exchange::ImportWorker::progress, &worker,
        [&](int done) {
            if (done == 3) worker.setState(exchange::ImportWorker::Stop);
        },
        Qt::DirectConnection);
    worker.run();
    QCOMPARE(worker.finishText(), "Импорт прерван.\nИмпортировано 3 из 10.");
    for (int i = 0; i < 10; ++i)
        QCOMPARE(m_target->find("P", QString("E%1").arg(i)) != nullptr, i < 3);
}

void TestImport::damagedElementAmongOthersIsSkippedAlone_data()
{
    QTest::addColumn<QByteArray>("damaged"); // content of the damaged entry
    QTest::addColumn<int>("skipped");        // the element that names it
    QTest::addColumn<bool>("transactions");
    QTest::addColumn<bool>("replacing"); // the catalog holds the element it was to replace
    QTest::newRow("model, in transactions") << QByteArray("MODEL-2") << 2 << true << false;
    // As with a catalog module without transactions: what the element wrote is deleted again.
    QTest::newRow("model, without transactions") << QByteArray("MODEL-2") << 2 << false << false;
    // The element's model and fragment are in the store's folder by the time its icon fails.
    QTest::newRow("icon, in transactions") << QByteArray("ICON-1") << 1 << true << false;
    QTest::newRow("icon, without transactions") << QByteArray("ICON-1") << 1 << false << false;
    // The catalog's own element stays: nothing is deleted before the archive gave its files.
    QTest::newRow("replacing, in transactions") << QByteArray("ICON-3") << 3 << true << true;
    QTest::newRow("replacing, without transactions") << QByteArray("ICON-3") << 3 << false << true;
}

void TestImport::damagedElementAmongOthersIsSkippedAlone()
{
    QFETCH(QByteArray, damaged);
    QFETCH(int, skipped);
    QFETCH(bool, transactions);
    QFETCH(bool, replacing);
    const QString skippedId = QString("E%1").arg(skipped);
    QString mine;
    if (replacing) {
        es_stdsize_t* old = m_target->addElement("P", "F", skippedId);
        addAttribute(old, {"Count", 1, "mine"});
        mine = dump(old);
    }
    std::vector<es_stdsize_t*> elements;
    for (int i = 0; i < 5; ++i) {
        es_stdsize_t* e = m_source->addElement("P", "F", QString("E%1").arg(i));
        addAttribute(e, {"Count", 1, QString::number(i * 10)});
        const QByteArray content = "MODEL-" + QByteArray::number(i) + QByteArray(200, 'x');
        const QByteArray icon = "ICON-" + QByteArray::number(i) + QByteArray(50, 'y');
        setModel(e, m_source->writeFile(QString("%1.m3d").arg(i), content),
                 m_source->writeFile(QString("%1.png").arg(i), icon), "m", 1);
        // Fragments are shared: that of the failing element stays for the others.
        const QByteArray view = "VIEW-" + QByteArray::number(i % 2) + QByteArray(100, 'z');
        addProjection(e, "Вид", m_source->writeFile(QString("%1.frw").arg(i), view), {}, 1, 0);
        elements.push_back(e);
    }
    const QString path = m_out->filePath("five.uss");
    QVERIFY(
        ExportUss::Export(path, elements, false, edw::nullProgress(), ExportUss::Options{{}, 0}));
    QByteArray bytes = ziptest::readFile(path);
    QVERIFY(ziptest::damage(bytes, damaged));
    ziptest::writeFile(path, bytes);

    exchange::ImportArchive archive;
    QCOMPARE(archive.open(path, m_target->provider), exchange::ImportArchive::Status::Ok);
    exchange::decide(archive.records(), m_target->provider);
    exchange::ImportWorker worker(archive, m_target->provider, archive.records());
    worker.setTransactions(transactions);
    QList<int> seen;
    connect(&worker, &exchange::ImportWorker::progress, this, [&](int done) { seen << done; });
    worker.run();
    QCOMPARE(worker.finishText(), "Импорт прерван.\nИмпортировано 4 из 5.");
    QCOMPARE(worker.skipped(), 1);
    QCOMPARE(seen, (QList<int>{1, 2, 3, 4, 5}));
    if (replacing)
        QCOMPARE(dump(m_target->find("P", skippedId)), mine);
    else
        QVERIFY(!m_target->find("P", skippedId));
    QStringList named;
    for (int i = 0; i < 5; ++i) {
        if (i == skipped) continue;
        es_stdsize_t* e = m_target->find("P", QString("E%1").arg(i));
        QVERIFY(e);
        QCOMPARE(dump(e), dump(elements[size_t(i)]));
        named << QFileInfo(edw::fromEs(model_GetModelFile(stdsize_GetModel(e)))).fileName()
              << QFileInfo(edw::fromEs(projection_GetFragmentFile(
                               projections_GetProjection(stdsize_GetProjections(e), 0))))
                     .fileName();
    }
    // Nor is the folder of the skipped element left behind, nor a file that no row names.
    es_folder_t* f = folder_GetParentFolder(edw::folderOf(m_target->find("P", "E0")));
    QCOMPARE(edw::childFolders(f).size(), size_t(replacing ? 5 : 4));
    QCOMPARE(edw::childFolders(f).count("folder " + skippedId), size_t(replacing ? 1 : 0));
    named.removeDuplicates();
    named.sort();
    QCOMPARE(QDir(m_target->path + ".files").entryList(QDir::Files, QDir::Name), named);
}

void TestImport::workerRunsOnThePoolAndReportsToThisThread_data()
{
    QTest::addColumn<bool>("pool");
    QTest::newRow("global pool") << true;
    // Nothing is written, yet a dialog waiting for the finish signal still closes.
    QTest::newRow("no pool") << false;
}

void TestImport::workerRunsOnThePoolAndReportsToThisThread()
{
    QFETCH(bool, pool);
    std::vector<es_stdsize_t*> elements;
    for (int i = 0; i < 5; ++i)
        elements.push_back(m_source->addElement("P", "F", QString("E%1").arg(i)));
    const QString path = exportElements(elements, "five.uss");
    exchange::ImportArchive archive;
    QCOMPARE(archive.open(path, m_target->provider), exchange::ImportArchive::Status::Ok);
    exchange::ImportWorker worker(archive, m_target->provider, archive.records());
    QList<int> seen;
    QList<QThread*> threads;
    QObject receiver;
    connect(&worker, &exchange::ImportWorker::progress, &receiver, [&](int done) {
        seen << done;
        threads << QThread::currentThread();
    });
    QSignalSpy finished(&worker, &exchange::ImportWorker::finished);
    QSignalSpy watched(&worker.watcher(), &QFutureWatcher<void>::finished);
    const QFuture<void> future = worker.start(pool ? QThreadPool::globalInstance() : nullptr);
    QVERIFY(watched.wait(10000));
    QTRY_COMPARE(finished.size(), 1);
    QCOMPARE(future.isCanceled(), !pool);
    if (!pool) {
        QVERIFY(future.isFinished());
        QCOMPARE(seen, QList<int>());
        QCOMPARE(provider_GetPacketCount(m_target->provider), 0u);
        QCOMPARE(worker.finishText(), "Импорт прерван.\nИмпортировано 0 из 5.");
        return;
    }
    QTRY_COMPARE(seen, (QList<int>{1, 2, 3, 4, 5}));
    for (QThread* t : threads)
        QCOMPARE(t, QThread::currentThread());
    QCOMPARE(worker.finishText(), "Импорт пользовательских элементов завершен.");
}

void TestImport::laterVersionIsRecognised_data()
{
    QTest::addColumn<QString>("host");
    QTest::addColumn<int>("model");
    QTest::addColumn<bool>("valid");
    QTest::addColumn<bool>("later");
    QTest::newRow("same") << "23.1" << 231 << true << false;
    QTest::newRow("model newer") << "23.1" << 232 << true << true;
    QTest::newRow("model older") << "23.1" << 220 << true << false;
    QTest::newRow("letters removed") << "24.0.rc" << 240 << true << false;
    QTest::newRow("beta") << "2.3b" << 24 << true << true;
    QTest::newRow("unknown host") << "" << 1 << false << false;
    QTest::newRow("not a number") << "v23" << 1 << false << false;
}

void TestImport::laterVersionIsRecognised()
{
    QFETCH(QString, host);
    QFETCH(int, model);
    QFETCH(bool, valid);
    QFETCH(bool, later);
    const std::optional<long long> number = exchange::hostVersionNumber(host);
    QCOMPARE(number.has_value(), valid);
    if (!valid) return;
    exchange::ImportRecord record;
    QVERIFY(!exchange::isLaterVersion(record, *number)); // no model, nothing to warn about
    record.modelVersion = model;
    QCOMPARE(exchange::isLaterVersion(record, *number), later);
}

void TestImport::writeFaultLeavesEachElementWholeOrAbsent_data()
{
    QTest::addColumn<bool>("transactions");
    QTest::addColumn<bool>(
        "onward"); // every write from the failing one on fails, as on a full disk
    QTest::newRow("one write, in transactions") << true << false;
    QTest::newRow("one write, without transactions") << false << false;
    QTest::newRow("full disk, in transactions") << true << true;
    QTest::newRow("full disk, without transactions") << false << true;
}

void TestImport::writeFaultLeavesEachElementWholeOrAbsent()
{
    QFETCH(bool, transactions);
    QFETCH(bool, onward);
    std::vector<es_stdsize_t*> elements;
    for (int i = 1; i <= 3; ++i) {
        es_stdsize_t* e = m_source->addElement("P", "F", QString("E%1").arg(i));
        addAttribute(e, {"USS_LAST_CHANGE_DATE", 3, QString("0%1.01.2024 10:00:00").arg(i)});
        addAttribute(e, {"Count", 1, QString::number(i * 11)});
        setModel(e, m_source->writeFile(QString("%1.m3d").arg(i), "MODEL-" + QByteArray::number(i)),
                 {}, "m", i);
        addProjection(e, "Вид", m_source->writeFile(QString("%1.frw").arg(i), "VIEW"), {}, 1, 0);
        elements.push_back(e);
    }
    const QString path = exportElements(elements, "three.uss");
    QVERIFY(!path.isEmpty());

    // Every write of the run fails in turn, until a run meets no fault any more.
    for (int n = 1;; ++n) {
        TempCatalog target;
        es_stdsize_t* old = target.addElement("P", "F", "E1", "MINE");
        addAttribute(old, {"USS_LAST_CHANGE_DATE", 3, "05.05.2025 12:00:00"});
        setModel(old, target.writeFile("old.m3d", "OLD MODEL"), {}, "old", 7);
        const QString mine = dump(old);
        const QString oldFile =
            QFileInfo(edw::fromEs(model_GetModelFile(stdsize_GetModel(old)))).fileName();

        exchange::ImportArchive archive;
        QCOMPARE(archive.open(path, target.provider), exchange::ImportArchive::Status::Ok);
        exchange::applyPolicy(archive.records(),
                              exchange::decide(archive.records(), target.provider),
                              exchange::ConflictPolicy::ReplaceWithImported);
        exchange::ImportWorker worker(archive, target.provider, archive.records());
        worker.setTransactions(transactions);
        worker.failWriteAt(n, onward);
        worker.run();

        int whole = 0;
        QStringList named;
        for (int i = 1; i <= 3; ++i) {
            es_stdsize_t* e = target.find("P", QString("E%1").arg(i));
            const QString got = e ? dump(e) : QString();
            if (got == dump(elements[size_t(i - 1)]))
                ++whole;
            else if (i == 1 && transactions)
                QVERIFY2(got == mine, qPrintable(QString("write %1: E1 is\n%2").arg(n).arg(got)));
            else
                QVERIFY2(!e || (i == 1 && got == mine),
                         qPrintable(QString("write %1: E%2 is\n%3").arg(n).arg(i).arg(got)));
            if (!e) continue;
            named << QFileInfo(edw::fromEs(model_GetModelFile(stdsize_GetModel(e)))).fileName();
            es_projections_t* list = stdsize_GetProjections(e);
            for (uint32_t p = 0; p < projections_GetProjectioCount(list); ++p)
                named << QFileInfo(edw::fromEs(projection_GetFragmentFile(
                                       projections_GetProjection(list, p))))
                             .fileName();
        }
        // The count is what the catalog holds, and the run says why it is short.
        QCOMPARE(worker.written(), whole);
        QCOMPARE(worker.skipped(), 3 - whole);
        if (whole < 3) QVERIFY(worker.failureText().contains("не записан"));
        // No stored file stays that no element names; that of the replaced element is the
        // store's to remove.
        named << oldFile;
        named.removeDuplicates();
        QStringList stored = QDir(target.path + ".files").entryList(QDir::Files);
        stored << oldFile;
        stored.removeDuplicates();
        named.sort();
        stored.sort();
        QCOMPARE(stored, named);
        if (whole == 3 && worker.failureText().isEmpty()) break;
        QVERIFY2(n < 200, "the fault never stops");
    }
}

void TestImport::unwritableFileFolderFailsElementsAndKeepsReplaced()
{
    const QString path = richArchive();
    es_stdsize_t* old = m_target->addElement("ПЭ_Трубы", "Стальные\\Бесшовные", "E1", "MINE");
    addAttribute(old, {"USS_LAST_CHANGE_DATE", 3, "05.05.2025 12:00:00"});
    QVERIFY(setModel(old, m_target->writeFile("old.m3d", "OLD MODEL"), {}, "old", 7));
    const QString mine = dump(old);
    // A file where the store keeps its files: nothing can be stored, even for the superuser.
    const QString files = m_target->path + ".files";
    const QStringList before = QDir(files).entryList(QDir::Files);
    QVERIFY(QDir(files).removeRecursively());
    ziptest::writeFile(files, "not a folder");
    QVERIFY(exchange::writeProblem(m_target->provider).contains("только для чтения"));

    exchange::ImportArchive archive;
    QCOMPARE(archive.open(path, m_target->provider), exchange::ImportArchive::Status::Ok);
    exchange::applyPolicy(archive.records(),
                          exchange::decide(archive.records(), m_target->provider),
                          exchange::ConflictPolicy::ReplaceWithImported);
    exchange::ImportWorker worker(archive, m_target->provider, archive.records());
    worker.setCheckFirst(false);
    worker.run();
    QCOMPARE(worker.written(), 0);
    QCOMPARE(worker.skipped(), 2);
    QCOMPARE(worker.finishText(), "Импорт прерван.\nИмпортировано 0 из 2.");
    QVERIFY2(
        worker.failureText().startsWith("Элемент \"E1\" пакета \"ПЭ_Трубы\" не записан (модель)"),
        qPrintable(worker.failureText()));
    QCOMPARE(dump(m_target->find("ПЭ_Трубы", "E1")), mine);
    QVERIFY(!m_target->find("Арматура", "E2"));
    // With the check the run writes nothing and says why.
    exchange::ImportWorker checked(archive, m_target->provider, archive.records());
    checked.run();
    QCOMPARE(checked.skipped(), 2);
    QVERIFY(checked.failureText().contains(m_target->path));
}

void TestImport::lockedCatalogStopsOnceNamingTheLock()
{
    std::vector<es_stdsize_t*> elements;
    for (int i = 0; i < 20; ++i)
        elements.push_back(m_source->addElement("P", "F", QString("E%1").arg(i)));
    const QString path = exportElements(elements, "twenty.uss");
    // Another writer holds the catalog for as long as the import runs.
    sqlite3* other = nullptr;
    QCOMPARE(sqlite3_open(QFile::encodeName(m_target->path).constData(), &other), SQLITE_OK);
    const auto close = qScopeGuard([&] { sqlite3_close(other); });
    QCOMPARE(sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);

    exchange::ImportArchive archive;
    QCOMPARE(archive.open(path, m_target->provider), exchange::ImportArchive::Status::Ok);
    exchange::ImportWorker worker(archive, m_target->provider, archive.records());
    QElapsedTimer took;
    took.start();
    worker.run();
    // One wait of the store's bounded time, not one per element.
    QVERIFY2(took.elapsed() < 15000, qPrintable(QString::number(took.elapsed())));
    QCOMPARE(worker.written(), 0);
    QCOMPARE(worker.skipped(), 20);
    QVERIFY(worker.failureText().contains("занят"));
    QVERIFY(worker.failureText().contains("locked"));
    QVERIFY(!m_target->find("P", "E0"));
}

void TestImport::unusedStoredFilesAreRemoved()
{
    es_stdsize_t* e = m_target->addElement("P", "F", "E1");
    QVERIFY(setModel(e, m_target->writeFile("a.m3d", "NAMED"), {}, "m", 1));
    const QString files = m_target->path + ".files";
    ziptest::writeFile(files + "/0123456789abcdef0123456789abcdef.m3d", "LEFT BY A KILLED IMPORT");
    QCOMPARE(QDir(files).entryList(QDir::Files).size(), 2);
    // Files younger than the age given stay: another import may be about to name them.
    QCOMPARE(exchange::removeUnusedStoredFiles(m_target->provider, 3600), 0);
    QCOMPARE(exchange::removeUnusedStoredFiles(m_target->provider, 0), 1);
    QCOMPARE(
        QDir(files).entryList(QDir::Files),
        QStringList{QFileInfo(edw::fromEs(model_GetModelFile(stdsize_GetModel(e)))).fileName()});
}

void TestImport::slashInAFolderNameRoundTrips()
{
    es_stdsize_t* e = m_source->addElement("Арматура", "Ду 1/2", "E1");
    const QString path = exportElements({e}, "slash.uss");
    QCOMPARE(exchange::importArchive(path, m_target->provider).written, 1);
    QCOMPARE(edw::folderPath(edw::folderOf(m_target->find("Арматура", "E1"))), "Ду 1/2\\folder E1");
}

QTEST_GUILESS_MAIN(TestImport)
#include "tst_import.moc"
