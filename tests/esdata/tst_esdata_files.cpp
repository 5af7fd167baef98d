// Models, projections, icons and representation data, the content-addressed file folder and
// the specification command.
#include "esdatatest.h"

#include <QCryptographicHash>
#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <sqlite3.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <atomic>
#include <memory>
#include <thread>

class TstEsdataFiles : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void modelIsStoredByDigest_data();
    void modelIsStoredByDigest();
    void modelRefusesUnreadableFile();
    void rewrittenFileIsStoredWithItsNewContent_data();
    void rewrittenFileIsStoredWithItsNewContent();
    void projectionsKeepOrderAndShareContent();
    void fileStoredAheadIsFoundByTheWrite_data();
    void fileStoredAheadIsFoundByTheWrite();
    void storingAheadDoesNotWaitForAnOpenScope();
    void storedFileIsRemovedOnlyWhenUnused_data();
    void storedFileIsRemovedOnlyWhenUnused();
    void fileGoesWithTheLastRowNamingIt_data();
    void fileGoesWithTheLastRowNamingIt();
    void createSpecReplacesRecords_data();
    void createSpecReplacesRecords();

private:
    QString src(const QString& name) const { return m_dir->filePath("src/" + name); }
    void reopen()
    {
        esx_CloseCatalog(m_p);
        m_p = openCatalog(m_db, "", false);
        m_e = findElement(m_p, u"W1");
    }
    QString md5(const QByteArray& b) const
    {
        return QCryptographicHash::hash(b, QCryptographicHash::Md5).toHex();
    }
    // Each function (and row) has a catalog of its own: none sees what another left.
    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_db;
    es_provider_t* m_p = nullptr;
    es_stdsize_t* m_e = nullptr;
};

void TstEsdataFiles::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    QVERIFY(QDir(m_dir->path()).mkpath("src"));
    m_db = m_dir->filePath("files.db");
    m_p = openCatalog(m_db, "user_vo");
    m_e = addElement(m_p, u"Окна", u"folder W1", u"W1");
    QVERIFY(m_e);
}

void TstEsdataFiles::cleanup()
{
    esx_CloseCatalog(m_p);
    m_p = nullptr;
    m_dir.reset();
}

// Model, icon and representation data (binary, with zero bytes) as read after reopening.
void TstEsdataFiles::modelIsStoredByDigest_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QByteArray>("icon");
    QTest::addColumn<int>("version");
    QTest::newRow("svg model with icon")
        << QByteArray("<svg xmlns=\"http://www.w3.org/2000/svg\" data-version=\"231\"/>")
        << QByteArray("\x89PNG\r\n\x1a\n-icon-", 14) << 3;
    QTest::newRow("binary model without icon")
        << QByteArray("\0\1\2\3\xff\xfe", 6) << QByteArray() << 0;
}

void TstEsdataFiles::modelIsStoredByDigest()
{
    QFETCH(QByteArray, content);
    QFETCH(QByteArray, icon);
    QFETCH(int, version);
    QString modelFile = src("part.m3d");
    QVERIFY(writeFile(modelFile, content));
    QString iconFile;
    if (!icon.isEmpty()) {
        iconFile = src("part.ico");
        QVERIFY(writeFile(iconFile, icon));
    }
    es_model_t* m = stdsize_GetModel(m_e);
    QVERIFY(model_SetModelEx(m, u16(modelFile).c_str(), u16(iconFile).c_str(), u"Рама", version));
    QFile::remove(modelFile); // the store keeps its own copy
    const void* data = nullptr;
    QCOMPARE(stdsize_GetRepresentationData(m_e, &data), size_t(0));
    const QByteArray repr = content + icon;
    QVERIFY(stdsize_SetRepresentationData(m_e, repr.constData(), size_t(repr.size())));

    reopen(); // read back through a fresh connection
    m = stdsize_GetModel(m_e);
    QVERIFY(!model_IsEmpty(m));
    QCOMPARE(qs(model_GetDigest(m)), md5(content));
    QString stored = qs(model_GetModelFile(m));
    QCOMPARE(QFileInfo(stored).absoluteFilePath(),
             QFileInfo(m_db + ".files/" + md5(content) + ".m3d").absoluteFilePath());
    QCOMPARE(readFile(stored), content);
    QCOMPARE(qs(model_GetModelName(m)), QString("Рама"));
    QCOMPARE(model_GetVersion(m), version);
    size_t n = model_GetIconData(m, &data);
    QCOMPARE(QByteArray(static_cast<const char*>(data), int(n)), icon);
    n = stdsize_GetRepresentationData(m_e, &data);
    QCOMPARE(QByteArray(static_cast<const char*>(data), int(n)), repr);
    QVERIFY(stdsize_SetRepresentationData(m_e, nullptr, 0));
    QCOMPARE(stdsize_GetRepresentationData(m_e, &data), size_t(0));

    QVERIFY(model_Clear(m));
    QVERIFY(model_IsEmpty(m));
    QCOMPARE(qs(model_GetModelFile(m)), QString());
    QCOMPARE(qs(model_GetDigest(m)), QString());
}

void TstEsdataFiles::rewrittenFileIsStoredWithItsNewContent_data()
{
    QTest::addColumn<bool>("ahead");
    QTest::newRow("model written") << false;
    QTest::newRow("stored ahead") << true;
}

// A file rewritten in place with the same size and modification time (cp -p, an archive
// extraction, two writes within one tick) is stored with what it holds now.
void TstEsdataFiles::rewrittenFileIsStoredWithItsNewContent()
{
    QFETCH(bool, ahead);
    const QString file = src(ahead ? "ahead.m3d" : "rewritten.m3d");
    const QByteArray first("first content "), second("second content");
    QCOMPARE(first.size(), second.size());
    QVERIFY(writeFile(file, first));
    struct stat before;
    QCOMPARE(::stat(QFile::encodeName(file).constData(), &before), 0);
    es_model_t* m = stdsize_GetModel(m_e);
    auto store = [&] {
        std::u16string path = u16(file);
        if (ahead) {
            const char16_t* stored = esx_StoreFileAhead(m_p, path.c_str(), false);
            if (!stored) return false;
            path = stored;
        }
        return model_SetModelEx(m, path.c_str(), nullptr, u"m", 1);
    };
    QVERIFY(store());
    QCOMPARE(readFile(qs(model_GetModelFile(m))), first);

    QFile f(file);
    QVERIFY(f.open(QIODevice::ReadWrite));
    QCOMPARE(f.write(second), second.size());
    f.close();
    const timespec times[2] = {before.st_atim, before.st_mtim};
    QCOMPARE(::utimensat(AT_FDCWD, QFile::encodeName(file).constData(), times, 0), 0);
    struct stat after;
    QCOMPARE(::stat(QFile::encodeName(file).constData(), &after), 0);
    QCOMPARE(after.st_ino, before.st_ino);
    QCOMPARE(after.st_size, before.st_size);
    QCOMPARE(after.st_mtim.tv_nsec, before.st_mtim.tv_nsec);

    QVERIFY(store());
    QCOMPARE(qs(model_GetDigest(m)), md5(second));
    QCOMPARE(readFile(qs(model_GetModelFile(m))), second);
}

void TstEsdataFiles::modelRefusesUnreadableFile()
{
    es_model_t* m = stdsize_GetModel(m_e);
    QVERIFY(!model_SetModelEx(m, u16(src("missing.m3d")).c_str(), nullptr, u"x", 1));
    QVERIFY(qs(esx_LastError()).contains("missing.m3d"));
    QVERIFY(model_IsEmpty(m));
    es_projections_t* list = stdsize_GetProjections(m_e);
    QVERIFY(
        !projections_AddProjectionEx(list, u"n", u16(m_dir->path()).c_str(), nullptr, 1, u"", 0));
    QCOMPARE(projections_GetProjectioCount(list), 0u);
}

void TstEsdataFiles::projectionsKeepOrderAndShareContent()
{
    const QByteArray top("<svg>top view</svg>"), front("<svg>front view</svg>");
    QVERIFY(writeFile(src("top.frw"), top));
    QVERIFY(writeFile(src("top-copy.frw"), top));
    QVERIFY(writeFile(src("front.frw"), front));
    QVERIFY(writeFile(src("front.ico"), "ICON"));
    es_projections_t* list = stdsize_GetProjections(m_e);
    es_projection_t* a = projections_AddProjectionEx(
        list, u"Вид сверху", u16(src("top.frw")).c_str(), nullptr, 1, u"сверху", 0);
    es_projection_t* b =
        projections_AddProjectionEx(list, u"Вид спереди", u16(src("front.frw")).c_str(),
                                    u16(src("front.ico")).c_str(), 2, u"спереди", 1);
    es_projection_t* c = projections_AddProjectionEx(
        list, u"Копия", u16(src("top-copy.frw")).c_str(), nullptr, 1, u"", 2);
    QVERIFY(a && b && c);
    QCOMPARE(projections_GetProjectioCount(list), 3u);
    QCOMPARE(projections_GetProjection(list, 1), b);
    QCOMPARE(qs(projection_GetDigest(a)), md5(top));
    QCOMPARE(qs(projection_GetDigest(c)), md5(top));
    QCOMPARE(qs(projection_GetFragmentFile(a)), qs(projection_GetFragmentFile(c)));
    QVERIFY(qs(projection_GetFragmentFile(b)).endsWith(md5(front) + ".frw"));
    QCOMPARE(QDir(m_db + ".files").entryList({"*.frw"}, QDir::Files).size(), 2);
    QCOMPARE(projection_GetType(b), 2u);
    QCOMPARE(projection_GetViewType(b), 1u);
    QCOMPARE(qs(projection_GetDescription(b)), QString("спереди"));
    const void* data = nullptr;
    QCOMPARE(projection_GetIconData(b, &data), size_t(4));
    QCOMPARE(QByteArray(static_cast<const char*>(data), 4), QByteArray("ICON"));
    QCOMPARE(projection_GetIconData(a, &data), size_t(0));

    QVERIFY(projections_DeleteProjection(list, a));
    QVERIFY(!projections_DeleteProjection(list, a));
    QCOMPARE(qs(projection_GetName(a)), QString()); // dead handle
    QCOMPARE(projections_GetProjectioCount(list), 2u);
    QCOMPARE(projections_GetProjection(list, 0), b);
    reopen();
    list = stdsize_GetProjections(m_e);
    QCOMPARE(projections_GetProjectioCount(list), 2u);
    QCOMPARE(qs(projection_GetName(projections_GetProjection(list, 0))), QString("Вид спереди"));
    QCOMPARE(qs(projection_GetName(projections_GetProjection(list, 1))), QString("Копия"));
    QCOMPARE(projection_GetViewType(projections_GetProjection(list, 1)), 2u);
}

void TstEsdataFiles::fileStoredAheadIsFoundByTheWrite_data()
{
    QTest::addColumn<bool>("move");
    QTest::addColumn<bool>("alreadyStored");
    QTest::newRow("copied") << false << false;
    QTest::newRow("moved") << true << false;
    QTest::newRow("moved onto a stored copy") << true << true;
}

void TstEsdataFiles::fileStoredAheadIsFoundByTheWrite()
{
    QFETCH(bool, move);
    QFETCH(bool, alreadyStored);
    const QByteArray content = "ahead-" + QByteArray::number(int(move) * 2 + int(alreadyStored));
    const QString file = src("ahead.frw");
    QVERIFY(writeFile(file, content));
    const QString expected = m_db + ".files/" + md5(content) + ".frw";
    if (alreadyStored) {
        QVERIFY(esx_StoreFileAhead(m_p, u16(file).c_str(), false));
        QVERIFY(QFile::exists(file));
    }

    const QString stored = qs(esx_StoreFileAhead(m_p, u16(file).c_str(), move));
    QCOMPARE(QFileInfo(stored).absoluteFilePath(), QFileInfo(expected).absoluteFilePath());
    QCOMPARE(readFile(stored), content);
    QCOMPARE(QFile::exists(file), !move);
    // Nothing of the catalog changed: the element still has no model until the write.
    es_model_t* m = stdsize_GetModel(m_e);
    QVERIFY(model_IsEmpty(m));

    QVERIFY(model_SetModelEx(m, u16(stored).c_str(), u"", u"Вперёд", 1));
    QCOMPARE(qs(model_GetDigest(m)), md5(content));
    QCOMPARE(readFile(qs(model_GetModelFile(m))), content);
    QCOMPARE(QDir(m_db + ".files").entryList({"*.frw"}).count(md5(content) + ".frw"), 1);
}

void TstEsdataFiles::storingAheadDoesNotWaitForAnOpenScope()
{
    const QByteArray content = "while a scope is open";
    const QString file = src("scope.frw");
    QVERIFY(writeFile(file, content));
    QVERIFY(esx_Begin(m_p));
    QString stored;
    std::thread other([&] { stored = qs(esx_StoreFileAhead(m_p, u16(file).c_str(), true)); });
    other.join();
    QVERIFY(esx_Rollback(m_p));
    QCOMPARE(readFile(stored), content);

    QVERIFY(!esx_StoreFileAhead(m_p, u16(src("missing.frw")).c_str(), true));
    QVERIFY(qs(esx_LastError()).contains("missing.frw"));
}

void TstEsdataFiles::fileGoesWithTheLastRowNamingIt_data()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<bool>("ownGone");
    QTest::newRow("model cleared") << "clear model" << true;
    QTest::newRow("model replaced") << "replace model" << true;
    QTest::newRow("projection deleted") << "delete projection" << true;
    QTest::newRow("element deleted") << "delete element" << true;
    QTest::newRow("folder deleted") << "delete folder" << true;
    QTest::newRow("element deleted in a committed scope") << "commit" << true;
    QTest::newRow("element deleted in a rolled back scope") << "rollback" << false;
    QTest::newRow("same content stored ahead meanwhile") << "ahead" << false;
}

// Element A names a file of its own and one it shares with element B: whatever takes A's
// rows takes A's own file and leaves the shared one.
void TstEsdataFiles::fileGoesWithTheLastRowNamingIt()
{
    QFETCH(QString, action);
    QFETCH(bool, ownGone);
    QTemporaryDir dir;
    const QString db = dir.filePath("unused.db");
    CatalogGuard g(openCatalog(db, "user_ov"));
    es_provider_t* p = g.get();
    const QString own = dir.filePath("own.m3d"), shared = dir.filePath("shared.frw");
    QVERIFY(writeFile(own, "own model"));
    QVERIFY(writeFile(shared, "shared fragment"));
    es_stdsize_t* a = addElement(p, u"P", u"FA", u"A");
    es_stdsize_t* b = addElement(p, u"P", u"FB", u"B");
    QVERIFY(model_SetModelEx(stdsize_GetModel(a), u16(own).c_str(), nullptr, u"m", 1));
    QVERIFY(model_SetModelEx(stdsize_GetModel(b), u16(shared).c_str(), nullptr, u"m", 1));
    es_projections_t* list = stdsize_GetProjections(a);
    QVERIFY(projections_AddProjectionEx(list, u"v", u16(shared).c_str(), nullptr, 1, u"", 0));
    QVERIFY(projections_AddProjectionEx(list, u"w", u16(own).c_str(), nullptr, 1, u"", 0));
    const QString ownStored = qs(model_GetModelFile(stdsize_GetModel(a)));
    const QString sharedStored = qs(model_GetModelFile(stdsize_GetModel(b)));
    QVERIFY(QFile::exists(ownStored) && QFile::exists(sharedStored));

    es_table_t* table = stdsize_GetTable(a);
    es_folder_t* root = packet_GetRootFolder(provider_GetPacket(p, 0));
    if (action == "clear model") {
        QVERIFY(model_Clear(stdsize_GetModel(a)));
        QVERIFY(QFile::exists(ownStored)); // the projection still names it
        QVERIFY(projections_DeleteProjection(list, projections_GetProjection(list, 1)));
    } else if (action == "replace model") {
        QVERIFY(projections_DeleteProjection(list, projections_GetProjection(list, 1)));
        QVERIFY(QFile::exists(ownStored)); // the model still names it
        QVERIFY(model_SetModelEx(stdsize_GetModel(a), u16(shared).c_str(), nullptr, u"m", 2));
    } else if (action == "delete projection") {
        QVERIFY(model_Clear(stdsize_GetModel(a)));
        QVERIFY(projections_DeleteProjection(list, projections_GetProjection(list, 0)));
        QVERIFY(projections_DeleteProjection(list, projections_GetProjection(list, 0)));
    } else if (action == "delete element") {
        QVERIFY(table_DeleteStdSize(table, a));
    } else if (action == "delete folder") {
        QVERIFY(folder_DeleteChildFolder(root, table_GetFolder(table)));
    } else if (action == "commit" || action == "rollback") {
        QVERIFY(esx_Begin(p));
        QVERIFY(table_DeleteStdSize(table, a));
        QVERIFY(QFile::exists(ownStored)); // not before the scope ends
        QVERIFY(action == "commit" ? esx_Commit(p) : esx_Rollback(p));
    } else if (action == "ahead") {
        QVERIFY(writeFile(own, "own model"));
        QCOMPARE(QFileInfo(qs(esx_StoreFileAhead(p, u16(own).c_str(), false))).fileName(),
                 QFileInfo(ownStored).fileName());
        QVERIFY(table_DeleteStdSize(table, a));
    }
    QCOMPARE(!QFile::exists(ownStored), ownGone);
    QCOMPARE(readFile(sharedStored), QByteArray("shared fragment"));
}

void TstEsdataFiles::storedFileIsRemovedOnlyWhenUnused_data()
{
    QTest::addColumn<QString>("namedBy");
    QTest::addColumn<bool>("removed");
    QTest::newRow("nothing") << "nothing" << true;
    QTest::newRow("a model") << "model" << false;
    QTest::newRow("a projection") << "projection" << false;
    QTest::newRow("an undone write") << "undone" << true;
    QTest::newRow("a write of another connection under way") << "other connection" << false;
    QTest::newRow("nothing, but outside the folder") << "outside" << false;
}

void TstEsdataFiles::storedFileIsRemovedOnlyWhenUnused()
{
    QFETCH(QString, namedBy);
    QFETCH(bool, removed);
    const QByteArray content = "unused? " + namedBy.toUtf8();
    const QString file = src("unused.frw");
    QVERIFY(writeFile(file, content));
    const QString stored = qs(esx_StoreFileAhead(m_p, u16(file).c_str(), false));
    QVERIFY(QFile::exists(stored));
    const std::u16string id = u16("U " + namedBy);
    es_stdsize_t* e = addElement(m_p, u"Окна", id.c_str(), id.c_str());
    QVERIFY(e);

    std::thread other;
    std::atomic<bool> writing{false};
    if (namedBy == "model") {
        QVERIFY(model_SetModelEx(stdsize_GetModel(e), u16(stored).c_str(), u"", u"m", 1));
    } else if (namedBy == "projection") {
        QVERIFY(projections_AddProjectionEx(stdsize_GetProjections(e), u"p", u16(stored).c_str(),
                                            u"", 1, u"", 0));
    } else if (namedBy == "undone") {
        QVERIFY(esx_Begin(m_p));
        QVERIFY(model_SetModelEx(stdsize_GetModel(e), u16(stored).c_str(), u"", u"m", 1));
        QVERIFY(esx_Rollback(m_p));
    } else if (namedBy == "other connection") {
        // Another process's writer holds the database and commits a row naming the file a
        // moment later.
        const QByteArray name = QFileInfo(stored).fileName().toUtf8();
        other = std::thread([&, name] {
            sqlite3* db = nullptr;
            sqlite3_open(m_db.toUtf8().constData(), &db);
            sqlite3_exec(db, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr);
            const QByteArray sql = "INSERT INTO es_model(element, file, digest, name, version) "
                                   "SELECT id, '" +
                                   name + "', '" + md5(content).toUtf8() +
                                   "', 'm', 1 FROM es_element WHERE ident='U other connection'";
            sqlite3_exec(db, sql.constData(), nullptr, nullptr, nullptr);
            writing = true;
            std::this_thread::sleep_for(std::chrono::milliseconds(300));
            sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr);
            sqlite3_close(db);
        });
        while (!writing)
            std::this_thread::yield();
    }
    const QString target = namedBy == "outside" ? file : stored;
    const std::u16string path = u16(target);
    const char16_t* paths[] = {path.c_str(), nullptr};
    QCOMPARE(esx_RemoveUnusedFiles(m_p, paths, 2), uint32_t(removed ? 1 : 0));
    if (other.joinable()) other.join();
    QCOMPARE(QFile::exists(target), !removed);
    if (namedBy == "model")
        QCOMPARE(readFile(qs(model_GetModelFile(stdsize_GetModel(e)))), content);
}

void TstEsdataFiles::createSpecReplacesRecords_data()
{
    QTest::addColumn<QString>("xml");
    QTest::addColumn<bool>("ok");
    QTest::addColumn<QString>("expected"); // records after the call, as text
    const QString before = "Секция:1:2:3[5={A1}]";
    QTest::newRow("two records") << "<?xml version=\"1.0\" encoding=\"utf-8\"?><commands>"
                                    "<command type=\"create_spec\"><stdSize packet=\"Окна\" "
                                    "id=\"W1\"/><spec styleNum=\"4\" libName=\"Окна\" "
                                    "firstPart=\"1\" secondPart=\"0\"><column num=\"1\" "
                                    "formula=\"{A3}\"/><column num=\"2\" formula=\"R(A4)\"/>"
                                    "</spec><spec styleNum=\"7\" libName=\"\" firstPart=\"2\" "
                                    "secondPart=\"5\"/></command></commands>"
                                 << true << "Окна:4:1:0[1={A3},2=R(A4)];:7:2:5[]";
    QTest::newRow("no records") << "<commands><command type=\"create_spec\"><stdSize "
                                   "packet=\"Окна\" id=\"W1\"/></command></commands>"
                                << true << "";
    QTest::newRow("other command") << "<commands><command type=\"delete_all\"><stdSize "
                                      "packet=\"Окна\" id=\"W1\"/></command></commands>"
                                   << false << before;
    QTest::newRow("unknown element") << "<commands><command type=\"create_spec\"><stdSize "
                                        "packet=\"Окна\" id=\"W9\"/><spec styleNum=\"1\" "
                                        "libName=\"x\" firstPart=\"1\" secondPart=\"1\"/>"
                                        "</command></commands>"
                                     << false << before;
    QTest::newRow("malformed") << "<commands><command type=\"create_spec\">" << false << before;
    QTest::newRow("bad number") << "<commands><command type=\"create_spec\"><stdSize "
                                   "packet=\"Окна\" id=\"W1\"/><spec styleNum=\"x\" libName=\"\" "
                                   "firstPart=\"1\" secondPart=\"1\"/></command></commands>"
                                << false << before;
    QTest::newRow("second command fails")
        << "<commands><command type=\"create_spec\"><stdSize packet=\"Окна\" id=\"W1\"/>"
           "</command><command type=\"create_spec\"><stdSize packet=\"Нет\" id=\"W1\"/>"
           "</command></commands>"
        << false << before;
}

static QString specsText(es_stdsize_t* e)
{
    QStringList records;
    for (uint32_t i = 0; i < stdsize_GetSpecificationCount(e); ++i) {
        es_spec_t* s = stdsize_GetSpecification(e, i);
        QStringList cols;
        for (uint32_t k = 0; k < spec_ColumnCount(s); ++k)
            cols << QString::number(spec_ColumnNumber(s, k)) + "=" + qs(spec_ColumnFormula(s, k));
        records << QString("%1:%2:%3:%4[%5]")
                       .arg(qs(spec_LibName(s)))
                       .arg(spec_Style(s))
                       .arg(spec_FirstPart(s))
                       .arg(spec_SecondPart(s))
                       .arg(cols.join(","));
    }
    return records.join(";");
}

void TstEsdataFiles::createSpecReplacesRecords()
{
    QFETCH(QString, xml);
    QFETCH(bool, ok);
    QFETCH(QString, expected);
    const char* seed = "<commands><command type=\"create_spec\"><stdSize packet=\"Окна\" "
                       "id=\"W1\"/><spec styleNum=\"1\" libName=\"Секция\" firstPart=\"2\" "
                       "secondPart=\"3\"><column num=\"5\" formula=\"{A1}\"/></spec></command>"
                       "</commands>";
    QVERIFY(provider_RunCommand(m_p, u16(QString::fromUtf8(seed)).c_str()));
    QCOMPARE(specsText(m_e), QString("Секция:1:2:3[5={A1}]"));
    es_spec_t* old = stdsize_GetSpecification(m_e, 0);
    QCOMPARE(provider_RunCommand(m_p, u16(xml).c_str()), ok);
    if (!ok) QVERIFY(!qs(esx_LastError()).isEmpty());
    // A replaced record's handle is dead; a refused command leaves it answering.
    QCOMPARE(spec_Style(old), ok ? 0 : 1);
    QCOMPARE(specsText(m_e), expected);
    reopen(); // and the same from the file
    QCOMPARE(specsText(m_e), expected);
}

QTEST_GUILESS_MAIN(TstEsdataFiles)
#include "tst_esdata_files.moc"
