// Consistency: multi-call scopes, a writer killed in the middle of its writes, and a worker
// thread writing while the main thread waits.
#include "esdatatest.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <QtTest>

#include <atomic>
#include <cstdio>
#include <set>
#include <thread>

namespace {

constexpr int kAttributes = 10;

es_stdsize_t* writeElement(es_provider_t* p, const QString& dir, int k)
{
    return writeElement(p, dir, u"K", "K" + QString::number(k), kAttributes, k * 100, 1);
}

// The child process of the kill test: writes scopes in a loop until it is killed.
int runWriter(const QString& db, const QString& dir, int first)
{
    es_provider_t* p = openCatalog(db);
    if (!p) return 2;
    for (int k = first;; ++k) {
        if (!esx_Begin(p)) return 3;
        if (!writeElement(p, dir, k)) return 4;
        if (!esx_Commit(p)) return 5;
        // A single write outside any scope, too.
        es_stdsize_t* e = packet_FindStdSize(
            pool_FindPacket(esGetLibraryProviderPool(u"orvik.aec.engsystx"), u"K"),
            u16("K" + QString::number(k)).c_str());
        stdsize_SetType(e, u"WRITTEN");
        std::printf("tick %d\n", k);
        std::fflush(stdout);
    }
}

QString integrity(const QString& db)
{
    return runSql(db, "PRAGMA integrity_check; PRAGMA foreign_key_check").join(";");
}

} // namespace

class TstEsdataSafety : public QObject
{
    Q_OBJECT

private slots:
    void init() { QVERIFY(m_dir.isValid()); }

    void rollbackRestoresDataAndHandles();
    void scopesDoNotNest();
    void closingRollsBackOpenScope();
    void killedWriterLeavesConsistentCatalog();
    void workerWritesWhileMainThreadWaits();
    void commitsOfAnotherProgramAreSeen();

private:
    QTemporaryDir m_dir;
};

void TstEsdataSafety::rollbackRestoresDataAndHandles()
{
    CatalogGuard c(openCatalog(m_dir.filePath("rollback.db")));
    es_provider_t* p = c.get();
    es_stdsize_t* kept = writeElement(p, m_dir.path(), 1);
    es_stdsize_t* doomed = writeElement(p, m_dir.path(), 2);
    QVERIFY(kept && doomed);
    es_table_t* t = stdsize_GetTable(kept);
    es_attribute_t* a0 = table_FindAttribute(t, u"A0");
    es_folder_t* root = packet_GetRootFolder(provider_GetPacket(p, 0));
    es_folder_t* doomedFolder = table_GetFolder(stdsize_GetTable(doomed));
    es_value v;
    QVERIFY(stdsize_GetValue(kept, a0, &v)); // cached before the scope
    QCOMPARE(v.i, 100);
    // Many elements, so that the ones made inside the scope and let go share the index with
    // these, which must still be found as the same handles.
    es_table_t* many = folder_GetTable(folder_AddChildFolder(root, u"Many"));
    std::vector<es_stdsize_t*> before;
    for (int k = 0; k < 200; ++k)
        before.push_back(table_AddStdSize(many, u16("L" + QString::number(k)).c_str()));
    std::vector<es_stdsize_t*> madeInside;
    auto specCommand = [](int style) {
        return u16(QString("<commands><command type=\"create_spec\"><stdSize packet=\"K\" "
                           "id=\"K1\"/><spec styleNum=\"%1\" libName=\"S%1\" firstPart=\"1\" "
                           "secondPart=\"2\"/></command></commands>")
                       .arg(style));
    };
    QVERIFY(provider_RunCommand(p, specCommand(4).c_str()));
    es_spec_t* specBefore = stdsize_GetSpecification(kept, 0);
    QCOMPARE(spec_Style(specBefore), 4);

    QVERIFY(esx_Begin(p));
    QVERIFY(provider_RunCommand(p, specCommand(9).c_str()));
    es_spec_t* specInside = stdsize_GetSpecification(kept, 0);
    QCOMPARE(spec_Style(specInside), 9);
    QCOMPARE(spec_Style(specBefore), 0); // replaced: dead inside the scope
    for (int k = 0; k < 200; ++k)
        madeInside.push_back(table_AddStdSize(many, u16("M" + QString::number(k)).c_str()));
    QVERIFY(stdsize_SetValueI(kept, a0, -1));
    QVERIFY(stdsize_SetType(kept, u"CHANGED"));
    QVERIFY(attribute_SetFormula(a0, u"{A1}"));
    es_attribute_t* added = table_AddAttribute(t, u"Inside", u"", ES_ATTR_TEXT);
    es_stdsize_t* inside = writeElement(p, m_dir.path(), 3);
    QVERIFY(added && inside);
    QVERIFY(folder_DeleteChildFolder(root, doomedFolder));
    QVERIFY(provider_AddPacket(p, u"Inside"));
    QVERIFY(model_SetModelEx(stdsize_GetModel(kept), u16(m_dir.filePath("v0.frw")).c_str(), nullptr,
                             u"m", 1));
    QVERIFY(stdsize_GetValue(kept, a0, &v));
    QCOMPARE(v.i, -1);
    QCOMPARE(qs(stdsize_GetID(doomed)), QString()); // dead inside the scope
    QVERIFY(esx_Rollback(p));

    // The record replaced inside is back through its old handle; the one made inside is gone.
    QCOMPARE(stdsize_GetSpecificationCount(kept), 1u);
    QCOMPARE(stdsize_GetSpecification(kept, 0), specBefore);
    QCOMPARE(spec_Style(specBefore), 4);
    QCOMPARE(qs(spec_LibName(specInside)), QString());
    QCOMPARE(spec_Style(specInside), 0);
    QVERIFY(stdsize_GetValue(kept, a0, &v));
    QCOMPARE(v.i, 100);
    QCOMPARE(qs(stdsize_GetType(kept)), QString());
    QCOMPARE(qs(attribute_GetFormula(a0)), QString());
    QCOMPARE(readFile(qs(model_GetModelFile(stdsize_GetModel(kept)))), QByteArray("model 100"));
    QVERIFY(!table_FindAttribute(t, u"Inside"));
    QCOMPARE(qs(attribute_GetName(added)), QString()); // dead
    QCOMPARE(qs(stdsize_GetID(inside)), QString());    // dead
    QCOMPARE(provider_GetPacketCount(p), 1u);
    QCOMPARE(folder_GetChildFolderCount(root), 3u);
    es_packet_t* packet = provider_GetPacket(p, 0);
    for (int k = 0; k < 200; ++k) {
        QCOMPARE(packet_FindStdSize(packet, u16("L" + QString::number(k)).c_str()), before[k]);
        QVERIFY(!packet_FindStdSize(packet, u16("M" + QString::number(k)).c_str()));
        QCOMPARE(qs(stdsize_GetID(madeInside[k])), QString()); // dead
    }
    QCOMPARE(table_GetStdSizeCount(many), 200u);
    // Made again (with the row ids of the undone ones): new live handles, found as such.
    es_stdsize_t* again = table_AddStdSize(many, u"M7");
    QVERIFY(again && again != madeInside[7]);
    QCOMPARE(packet_FindStdSize(packet, u"M7"), again);
    // What was deleted inside the scope lives again, with the same handles.
    QCOMPARE(qs(stdsize_GetID(doomed)), QString("K2"));
    QCOMPARE(folder_GetChildFolder(root, 1), doomedFolder);
    QCOMPARE(packet_FindStdSize(provider_GetPacket(p, 0), u"K2"), doomed);
    QVERIFY(stdsize_GetValueByName(doomed, u"A3", &v));
    QCOMPARE(v.i, 203);
    // New writes after the rollback get fresh, live handles.
    es_stdsize_t* after = writeElement(p, m_dir.path(), 3);
    QVERIFY(after && after != inside);
    QCOMPARE(qs(stdsize_GetID(after)), QString("K3"));
}

void TstEsdataSafety::scopesDoNotNest()
{
    CatalogGuard c(openCatalog(m_dir.filePath("nest.db")));
    QVERIFY(!esx_Rollback(c.get()));
    QVERIFY(esx_Begin(c.get()));
    QVERIFY(!esx_Begin(c.get()));
    QVERIFY(!qs(esx_LastError()).isEmpty());
    QVERIFY(esx_Commit(c.get()));
    QVERIFY(qs(esx_LastError()).isEmpty());
    QVERIFY(!esx_Commit(c.get()));
}

void TstEsdataSafety::closingRollsBackOpenScope()
{
    QString db = m_dir.filePath("close.db");
    es_provider_t* p = openCatalog(db);
    es_stdsize_t* e = writeElement(p, m_dir.path(), 1);
    es_object_t* o = pool_CreateObject(esGetLibraryProviderPool(u"orvik.aec.engsystx"), e, nullptr);
    QVERIFY(o);
    QVERIFY(esx_Begin(p));
    QVERIFY(writeElement(p, m_dir.path(), 2));
    esx_CloseCatalog(p);
    // The object outlives its catalog safely.
    es_value v;
    QVERIFY(!object_GetValueByName(o, u"A1", &v));
    QVERIFY(!object_GetStdSize(o));
    object_Delete(o);

    p = openCatalog(db, "", false);
    QVERIFY(p);
    es_packet_t* k = provider_GetPacket(p, 0);
    QVERIFY(packet_FindStdSize(k, u"K1"));
    QVERIFY(!packet_FindStdSize(k, u"K2"));
    // The catalog is not left locked: a new scope works at once.
    QVERIFY(esx_Begin(p));
    QVERIFY(esx_Commit(p));
    esx_CloseCatalog(p);
}

void TstEsdataSafety::killedWriterLeavesConsistentCatalog()
{
    QString db = m_dir.filePath("killed.db");
    int first = 0;
    for (int run = 0; run < 3; ++run) {
        QProcess child;
        child.setProgram(QCoreApplication::applicationFilePath());
        child.setArguments({"--writer", db, m_dir.path(), QString::number(first)});
        child.start();
        QVERIFY(child.waitForStarted());
        // Let it write a varying number of scopes, then kill it without warning.
        int ticks = 0;
        while (ticks < 3 + run * 4 && child.waitForReadyRead(20000))
            ticks += child.readAll().count("tick");
        QVERIFY2(ticks > 0, child.readAllStandardError().constData());
        QTest::qWait(run * 7);
        child.kill();
        QVERIFY(child.waitForFinished());
        QCOMPARE(child.exitStatus(), QProcess::CrashExit);

        QCOMPARE(integrity(db), QString("ok"));
        es_provider_t* p = openCatalog(db, "", false);
        QVERIFY2(p, qPrintable(qs(esx_LastError())));
        es_folder_t* root = packet_GetRootFolder(provider_GetPacket(p, 0));
        uint32_t n = folder_GetChildFolderCount(root);
        QVERIFY(n >= uint32_t(first + ticks));
        // Every element is complete: its schema, values, fragment and representation.
        for (uint32_t i = 0; i < n; ++i) {
            es_table_t* t = folder_GetTable(folder_GetChildFolder(root, i));
            QCOMPARE(table_GetStdSizeCount(t), 1u);
            es_stdsize_t* e = table_GetStdSize(t, 0);
            QCOMPARE(table_GetAttributeCount(t), uint32_t(kAttributes));
            es_value v;
            QVERIFY(stdsize_GetValueByName(e, u"A9", &v));
            QCOMPARE(v.kind, ES_VALUE_INT);
            QCOMPARE(projections_GetProjectioCount(stdsize_GetProjections(e)), 1u);
            QCOMPARE(stdsize_GetRepresentationData(e, nullptr), size_t(512));
        }
        first = int(n);
        esx_CloseCatalog(p);
    }
}

void TstEsdataSafety::workerWritesWhileMainThreadWaits()
{
    CatalogGuard c(openCatalog(m_dir.filePath("threads.db")));
    es_provider_t* p = c.get();
    es_folder_t* root = packet_GetRootFolder(provider_AddPacket(p, u"K"));
    constexpr int kCount = 40;
    std::atomic<bool> done{false};
    std::atomic<int> failures{0};
    std::thread worker([&] {
        for (int round = 0; round < 3; ++round) {
            if (!esx_Begin(p)) {
                ++failures;
                break;
            }
            for (int k = 0; k < kCount; ++k)
                if (!writeElement(p, m_dir.path(), round * kCount + k)) ++failures;
            if (!esx_Commit(p)) ++failures;
        }
        done = true;
    });
    // The main thread reads meanwhile: it only ever sees whole scopes.
    std::set<uint32_t> seen;
    while (!done) {
        seen.insert(folder_GetChildFolderCount(root));
        es_value v;
        if (es_stdsize_t* e = packet_FindStdSize(provider_GetPacket(p, 0), u"K0"))
            stdsize_GetValueByName(e, u"A1", &v);
    }
    worker.join();
    QCOMPARE(failures.load(), 0);
    QCOMPARE(folder_GetChildFolderCount(root), uint32_t(3 * kCount));
    for (uint32_t n : seen)
        QVERIFY2(n % kCount == 0, qPrintable(QString("saw %1 folders").arg(n)));
}

// Another program writing the same catalog file (here a connection of its own): what it
// commits replaces what this one had read and cached.
void TstEsdataSafety::commitsOfAnotherProgramAreSeen()
{
    const QString db = m_dir.filePath("shared.db");
    CatalogGuard g(openCatalog(db));
    es_provider_t* p = g.get();
    es_stdsize_t* e = addElement(p, u"P", u"F", u"E");
    es_table_t* t = stdsize_GetTable(e);
    es_attribute_t* a1 = table_AddAttribute(t, u"A1", u"", ES_ATTR_INT);
    QVERIFY(stdsize_SetValueI(e, a1, 11));
    es_folder_t* root = packet_GetRootFolder(provider_GetPacket(p, 0));
    es_value v;
    // Everything read once, so that it is cached.
    QCOMPARE(provider_GetPacketCount(p), 1u);
    QCOMPARE(folder_GetChildFolderCount(root), 1u);
    QCOMPARE(table_GetAttributeCount(t), 1u);
    QCOMPARE(table_GetStdSizeCount(t), 1u);
    QVERIFY(stdsize_GetValue(e, a1, &v) && v.i == 11);

    QVERIFY(execSql(db, R"SQL(
        BEGIN IMMEDIATE;
        INSERT INTO es_packet(name) VALUES('Q');
        INSERT INTO es_folder(packet, parent, name) VALUES(last_insert_rowid(), NULL, 'Q');
        UPDATE es_packet SET root=last_insert_rowid() WHERE name='Q';
        INSERT INTO es_folder(packet, parent, name)
          SELECT packet, id, 'G' FROM es_folder WHERE parent IS NULL AND name='P';
        INSERT INTO es_attribute(folder, pos, number, old_number, name, type)
          SELECT folder, 2, 2, 2, 'A2', 1 FROM es_attribute WHERE name='A1';
        INSERT INTO es_element(packet, folder, ident) SELECT packet, folder, 'E2' FROM es_element;
        UPDATE es_value SET value=12;
        INSERT INTO es_value SELECT e.id, a.id, 25 FROM es_element e, es_attribute a
          WHERE e.ident='E' AND a.name='A2';
        COMMIT;)SQL"));
    // A write at once, from reads of before the other's commit: it is neither refused nor lost.
    QVERIFY(stdsize_SetType(e, u"HERE"));
    QThread::msleep(5);

    QCOMPARE(provider_GetPacketCount(p), 2u);
    QCOMPARE(qs(packet_GetName(provider_GetPacket(p, 1))), QString("Q"));
    QCOMPARE(folder_GetChildFolderCount(root), 2u);
    QCOMPARE(table_GetAttributeCount(t), 2u);
    QCOMPARE(table_GetStdSizeCount(t), 2u);
    QVERIFY(stdsize_GetValue(e, a1, &v));
    QCOMPARE(v.i, 12);
    QVERIFY(stdsize_GetValueByName(e, u"A2", &v));
    QCOMPARE(v.i, 25);
    QCOMPARE(qs(stdsize_GetType(e)), QString("HERE"));

    // The other program writes while this one is between calls, and a caller that never
    // pauses sees it too.
    QCOMPARE(runSql(db, "INSERT INTO es_element(packet, folder, ident) SELECT packet, folder, "
                        "'E3' FROM es_element WHERE ident='E'; "
                        "SELECT type FROM es_element WHERE ident='E'"),
             QStringList{"HERE"});
    QElapsedTimer busy;
    busy.start();
    while (table_GetStdSizeCount(t) != 3u && busy.elapsed() < 2000) {
    }
    QCOMPARE(table_GetStdSizeCount(t), 3u);

    // Left unused for a while, this catalog holds nothing that keeps the other program from
    // emptying the journal.
    QThread::msleep(400);
    // The first column says whether the checkpoint was blocked.
    QCOMPARE(runSql(db, "PRAGMA wal_checkpoint(TRUNCATE)"), QStringList{"0"});
    QCOMPARE(QFileInfo(db + "-wal").size(), qint64(0));
    QCOMPARE(table_GetStdSizeCount(t), 3u);
}

int main(int argc, char** argv)
{
    if (argc == 5 && qstrcmp(argv[1], "--writer") == 0)
        return runWriter(QString::fromLocal8Bit(argv[2]), QString::fromLocal8Bit(argv[3]),
                         atoi(argv[4]));
    QCoreApplication app(argc, argv);
    TstEsdataSafety t;
    return QTest::qExec(&t, argc, argv);
}

#include "tst_esdata_safety.moc"
