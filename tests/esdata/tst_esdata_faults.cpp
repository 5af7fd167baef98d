// Failed writes: a write that the disk refuses (the test seam, a file-size limit), a catalog
// locked by another program and a damaged catalog fail cleanly and leave nothing half done.
#include "esdatatest.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <sqlite3.h>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

bool writeElement(es_provider_t* p, const QString& dir, const char16_t* id, int version)
{
    return writeElement(p, dir, u"P", QString::fromUtf16(id), 3, version * 10, 2);
}

// What a reader sees of element id: "" when absent, else its values, model and projections.
QString describe(es_provider_t* p, const char16_t* id)
{
    es_packet_t* pk = provider_GetPacketCount(p) ? provider_GetPacket(p, 0) : nullptr;
    es_stdsize_t* e = packet_FindStdSize(pk, id);
    if (!e) return {};
    QStringList parts;
    es_table_t* t = stdsize_GetTable(e);
    for (uint32_t a = 0; a < table_GetAttributeCount(t); ++a) {
        es_value v;
        stdsize_GetValue(e, table_GetAttribute(t, a), &v);
        parts << QString::number(v.i);
    }
    parts << readFile(qs(model_GetModelFile(stdsize_GetModel(e))));
    es_projections_t* list = stdsize_GetProjections(e);
    for (uint32_t k = 0; k < projections_GetProjectioCount(list); ++k)
        parts << readFile(qs(projection_GetFragmentFile(projections_GetProjection(list, k))));
    return parts.join(',');
}

} // namespace

class TstEsdataFaults : public QObject
{
    Q_OBJECT

private slots:
    void init() { QVERIFY(m_dir.isValid()); }
    void cleanup() { esx_TestFailWrite(0); }

    void everyFailedWriteLeavesTheElementWholeOrAbsent();
    void fileSizeLimitFailsTheWriteInsteadOfTheProcess();
    void lockedCatalogFailsNamingTheLock();
    void damagedCatalogIsToldBeforeWriting();
    void readOnlyCatalogIsReadAndRefusesWrites_data();
    void readOnlyCatalogIsReadAndRefusesWrites();

private:
    QTemporaryDir m_dir;
};

// Each write of a replacement fails in turn: the caller rolls back, and the old version
// stays whole while the new one is absent.
void TstEsdataFaults::everyFailedWriteLeavesTheElementWholeOrAbsent()
{
    const QString db = m_dir.filePath("seam.db");
    CatalogGuard g(openCatalog(db));
    es_provider_t* p = g.get();
    QVERIFY(writeElement(p, m_dir.path(), u"OLD", 1));
    const QString old = describe(p, u"OLD");
    QCOMPARE(old, QString("10,11,12,model 10,view 10,view 11"));
    int n = 1;
    for (;; ++n) {
        QVERIFY(esx_Begin(p));
        es_packet_t* pk = provider_GetPacket(p, 0);
        es_folder_t* root = packet_GetRootFolder(pk);
        esx_TestFailWrite(uint32_t(n));
        const bool done = folder_DeleteChildFolder(root, folder_GetChildFolder(root, 0)) &&
                          writeElement(p, m_dir.path(), u"NEW", 2);
        esx_TestFailWrite(0);
        if (done) {
            QVERIFY(esx_Commit(p));
            break;
        }
        QCOMPARE(esx_LastErrorCode(), int(ESX_ERROR_WRITE));
        QVERIFY(esx_Rollback(p));
        QCOMPARE(describe(p, u"OLD"), old);
        QCOMPARE(describe(p, u"NEW"), QString());
    }
    // The element takes more than a dozen writes, every one of which was made to fail.
    QVERIFY2(n > 12, qPrintable(QString::number(n)));
    QCOMPARE(describe(p, u"OLD"), QString());
    QCOMPARE(describe(p, u"NEW"), QString("20,21,22,model 20,view 20,view 21"));
}

void TstEsdataFaults::fileSizeLimitFailsTheWriteInsteadOfTheProcess()
{
    const QString db = m_dir.filePath("limit.db");
    const QString big = m_dir.filePath("big.m3d");
    QVERIFY(writeFile(big, QByteArray(256 * 1024, 'b')));
    {
        CatalogGuard g(openCatalog(db));
        QVERIFY(addElement(g.get(), u"P", u"F", u"E"));
    }
    const pid_t child = fork();
    QVERIFY(child >= 0);
    if (child == 0) {
        rlimit limit{64 * 1024, 64 * 1024};
        setrlimit(RLIMIT_FSIZE, &limit);
        es_provider_t* p = openCatalog(db, "user_tx", false);
        es_stdsize_t* e = packet_FindStdSize(provider_GetPacket(p, 0), u"E");
        const bool stored =
            model_SetModelEx(stdsize_GetModel(e), u16(big).c_str(), nullptr, u"m", 1);
        const int code = esx_LastErrorCode();
        _exit(!e ? 3 : stored ? 4 : code == ESX_ERROR_WRITE ? 0 : 5);
    }
    int status = 0;
    QCOMPARE(waitpid(child, &status, 0), child);
    QVERIFY2(WIFEXITED(status), "the child was ended by a signal");
    QCOMPARE(WEXITSTATUS(status), 0);
    // Nothing names a short copy, and no short copy lies in the folder.
    CatalogGuard g(openCatalog(db));
    es_stdsize_t* e = packet_FindStdSize(provider_GetPacket(g.get(), 0), u"E");
    QVERIFY(model_IsEmpty(stdsize_GetModel(e)));
    QCOMPARE(QDir(db + ".files").entryList(QDir::Files | QDir::Hidden).size(), 0);
}

void TstEsdataFaults::lockedCatalogFailsNamingTheLock()
{
    const QString db = m_dir.filePath("locked.db");
    CatalogGuard g(openCatalog(db));
    QVERIFY(provider_AddPacket(g.get(), u"before"));
    sqlite3* other = nullptr;
    QCOMPARE(sqlite3_open(db.toUtf8().constData(), &other), SQLITE_OK);
    QCOMPARE(sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
    QVERIFY(!provider_AddPacket(g.get(), u"during"));
    QCOMPARE(esx_LastErrorCode(), int(ESX_ERROR_LOCKED));
    QVERIFY2(qs(esx_LastError()).startsWith("Каталог занят другой программой"),
             qPrintable(qs(esx_LastError())));
    QVERIFY(!esx_Begin(g.get()));
    QCOMPARE(esx_LastErrorCode(), int(ESX_ERROR_LOCKED));
    sqlite3_exec(other, "ROLLBACK", nullptr, nullptr, nullptr);
    sqlite3_close(other);
    QVERIFY(provider_AddPacket(g.get(), u"after"));
    QCOMPARE(esx_LastErrorCode(), int(ESX_ERROR_NONE));
    QCOMPARE(provider_GetPacketCount(g.get()), 2u);
}

void TstEsdataFaults::damagedCatalogIsToldBeforeWriting()
{
    const QString db = m_dir.filePath("damaged.db");
    {
        CatalogGuard g(openCatalog(db));
        for (int k = 0; k < 40; ++k)
            QVERIFY(addElement(g.get(), u"P", u16("F" + QString::number(k)).c_str(),
                               u16("E" + QString::number(k)).c_str()));
        QVERIFY(esx_CheckIntegrity(g.get()));
        QCOMPARE(esx_LastErrorCode(), int(ESX_ERROR_NONE));
    }
    // Pages past the schema's overwritten with garbage, as a failing disk leaves them.
    QFile f(db);
    QVERIFY(f.open(QIODevice::ReadWrite));
    const qint64 pageSize = 4096;
    QVERIFY(f.size() > 6 * pageSize);
    for (qint64 page = 3; page < f.size() / pageSize; page += 2) {
        f.seek(page * pageSize);
        f.write(QByteArray(64, char(0x5a)));
    }
    f.close();
    CatalogGuard g(openCatalog(db, "user_tx", false));
    QVERIFY(g.get());
    QVERIFY(!esx_CheckIntegrity(g.get()));
    QCOMPARE(esx_LastErrorCode(), int(ESX_ERROR_DAMAGED));
    QVERIFY(!qs(esx_LastError()).isEmpty());
}

void TstEsdataFaults::readOnlyCatalogIsReadAndRefusesWrites_data()
{
    QTest::addColumn<bool>("locked");
    QTest::newRow("file and folder writable") << false;
    QTest::newRow("file and folder read-only") << true;
}

// Read by a user who may not write the catalog (as nobody when the test runs as root, which
// ignores permissions): every part of the element reads, every write fails as read-only, and
// nothing is created beside the catalog.
void TstEsdataFaults::readOnlyCatalogIsReadAndRefusesWrites()
{
    QFETCH(bool, locked);
    const QString folder = m_dir.filePath(locked ? "ro-locked" : "ro-open");
    QVERIFY(QDir().mkpath(folder));
    const QString db = folder + "/catalog.db";
    {
        CatalogGuard g(openCatalog(db));
        QVERIFY(writeElement(g.get(), m_dir.path(), u"E", 3));
    }
    const QStringList before = QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    QCOMPARE(before, QStringList({"catalog.db", "catalog.db.files"}));
    const auto rx = QFile::ReadOwner | QFile::ExeOwner | QFile::ReadGroup | QFile::ExeGroup |
                    QFile::ReadOther | QFile::ExeOther;
    if (locked) {
        QVERIFY(QFile::setPermissions(m_dir.path(), rx | QFile::WriteOwner));
        QVERIFY(QFile::setPermissions(db, QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther));
        QVERIFY(QFile::setPermissions(folder, rx));
    }
    const pid_t child = fork();
    QVERIFY(child >= 0);
    if (child == 0) {
        if (locked && geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)) _exit(99);
        es_provider_t* p = esx_OpenCatalogForReading(u16(db).c_str());
        if (!p) _exit(2);
        if (describe(p, u"E") != "30,31,32,model 30,view 30,view 31") _exit(3);
        es_stdsize_t* e = packet_FindStdSize(provider_GetPacket(p, 0), u"E");
        es_attribute_t* a = table_GetAttribute(stdsize_GetTable(e), 0);
        if (stdsize_SetValueI(e, a, 7) || esx_LastErrorCode() != ESX_ERROR_WRITE ||
            !qs(esx_LastError()).contains("read-only"))
            _exit(4);
        if (provider_AddPacket(p, u"Q") || esx_Begin(p)) _exit(5);
        const QString model = m_dir.filePath("model.m3d");
        if (model_SetModelEx(stdsize_GetModel(e), u16(model).c_str(), nullptr, u"m", 4)) _exit(6);
        if (describe(p, u"E") != "30,31,32,model 30,view 30,view 31") _exit(7);
        esx_CloseCatalog(p);
        _exit(0);
    }
    int status = 0;
    QCOMPARE(waitpid(child, &status, 0), child);
    QVERIFY(QFile::setPermissions(folder, rx | QFile::WriteOwner));
    QVERIFY(QFile::setPermissions(db, QFile::ReadOwner | QFile::WriteOwner));
    QVERIFY2(WIFEXITED(status), "the child was ended by a signal");
    QCOMPARE(WEXITSTATUS(status), 0);
    // A folder that may be written gets SQLite's shared-memory files of a reader.
    if (locked) QCOMPARE(QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), before);
    QCOMPARE(QDir(folder + "/catalog.db.files").entryList(QDir::Files | QDir::Hidden).size(), 3);
}

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    TstEsdataFaults t;
    return QTest::qExec(&t, argc, argv);
}

#include "tst_esdata_faults.moc"
