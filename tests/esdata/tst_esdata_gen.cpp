// The synthetic catalog generator: shape of the catalog it writes, its files, determinism.
#include "esdatatest.h"
#include "synthetic_catalog.h"

#include <QDir>
#include <QImage>
#include <QTemporaryDir>
#include <QtTest>

namespace {

// Everything a reader can see of a catalog, as text (file paths by digest only).
QString dump(es_provider_t* p)
{
    QStringList out;
    std::function<void(es_folder_t*, QString)> walk = [&](es_folder_t* f, QString path) {
        path += "/" + qs(folder_GetName(f));
        es_table_t* t = folder_GetTable(f);
        for (uint32_t k = 0; k < table_GetStdSizeCount(t); ++k) {
            es_stdsize_t* e = table_GetStdSize(t, k);
            QString line = path + " " + qs(stdsize_GetID(e)) + " " + qs(stdsize_GetType(e));
            for (uint32_t i = 0; i < table_GetAttributeCount(t); ++i) {
                es_attribute_t* a = table_GetAttribute(t, i);
                es_value v;
                stdsize_GetValue(e, a, &v);
                line += QString(" %1:%2=%3/%4")
                            .arg(qs(attribute_GetName(a)))
                            .arg(attribute_GetType(a))
                            .arg(v.kind == ES_VALUE_INT    ? QString::number(v.i)
                                 : v.kind == ES_VALUE_REAL ? QString::number(v.d)
                                                           : qs(v.s))
                            .arg(qs(attribute_GetFormula(a)));
            }
            es_model_t* m = stdsize_GetModel(e);
            line += " model:" + qs(model_GetDigest(m)) + ":" + qs(model_GetModelName(m));
            es_projections_t* list = stdsize_GetProjections(e);
            for (uint32_t j = 0; j < projections_GetProjectioCount(list); ++j)
                line += " prj:" + qs(projection_GetDigest(projections_GetProjection(list, j)));
            const void* data = nullptr;
            const size_t n = stdsize_GetRepresentationData(e, &data);
            line += " repr:" + QByteArray(static_cast<const char*>(data), int(n)).toBase64();
            out << line + QString(" spc:%1").arg(stdsize_GetSpecificationCount(e));
        }
        for (uint32_t i = 0; i < folder_GetChildFolderCount(f); ++i)
            walk(folder_GetChildFolder(f, i), path);
    };
    for (uint32_t i = 0; i < provider_GetPacketCount(p); ++i)
        walk(packet_GetRootFolder(provider_GetPacket(p, i)), QString());
    return out.join("\n");
}

gen::Options small(const QString& db, uint64_t seed)
{
    gen::Options o;
    o.catalogPath = db;
    o.elements = 24;
    o.packets = 3;
    o.categoryDepth = 2;
    o.attributes = 14;
    o.projections = 3;
    o.distinctFiles = 4;
    o.fileSize = 3000;
    o.seed = seed;
    o.elementsPerScope = 10;
    return o;
}

} // namespace

class TstEsdataGen : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(m_dir.isValid()); }
    void writesTheRequestedShapeAndFiles();
    void sameSeedSameCatalog_data();
    void sameSeedSameCatalog();
    void progressCanStop();

private:
    QTemporaryDir m_dir;
};

void TstEsdataGen::writesTheRequestedShapeAndFiles()
{
    QString db = m_dir.filePath("shape.db");
    gen::Result r = gen::generateCatalog(small(db, 5));
    QVERIFY2(r.ok, qPrintable(r.error));
    QCOMPARE(r.elements, 24);
    CatalogGuard c(openCatalog(db, "", false));
    QCOMPARE(qs(provider_GetDatabaseName(c.get())), QString("user_tx"));
    QCOMPARE(provider_GetPacketCount(c.get()), 3u);
    int elements = 0;
    for (uint32_t i = 0; i < 3; ++i) {
        es_packet_t* pk = provider_GetPacket(c.get(), i);
        std::function<void(es_folder_t*, int)> walk = [&](es_folder_t* f, int depth) {
            es_table_t* t = folder_GetTable(f);
            if (table_GetStdSizeCount(t) > 0) {
                // Each element sits alone in "folder <id>" below two category levels.
                QCOMPARE(depth, 3);
                QCOMPARE(table_GetStdSizeCount(t), 1u);
                es_stdsize_t* e = table_GetStdSize(t, 0);
                QCOMPARE(qs(folder_GetName(f)), "folder " + qs(stdsize_GetID(e)));
                QCOMPARE(table_GetAttributeCount(t), 14u);
                QVERIFY(!model_IsEmpty(stdsize_GetModel(e)));
                QCOMPARE(projections_GetProjectioCount(stdsize_GetProjections(e)), 3u);
                QVERIFY(stdsize_GetRepresentationData(e, nullptr) > 0);
                QCOMPARE(stdsize_GetSpecificationCount(e), 1u);
                QCOMPARE(spec_ColumnCount(stdsize_GetSpecification(e, 0)), 3u);
                ++elements;
            }
            for (uint32_t k = 0; k < folder_GetChildFolderCount(f); ++k)
                walk(folder_GetChildFolder(f, k), depth + 1);
        };
        walk(packet_GetRootFolder(pk), 0);
    }
    QCOMPARE(elements, 24);

    // Its files: fragments of the asked size, models that compress well or hardly at all, icons.
    QCOMPARE(r.files, 8);
    QDir src(db + ".src");
    QStringList fragments = src.entryList({"*.frw"}, QDir::Files);
    QCOMPARE(fragments.size(), 4);
    for (const QString& f : fragments)
        QVERIFY(qAbs(readFile(src.filePath(f)).size() - 3000) < 400);
    QByteArray text = readFile(src.filePath("model_0.m3d"));
    QByteArray noise = readFile(src.filePath("model_1.m3d"));
    QVERIFY(qCompress(text).size() < text.size() / 3);
    QVERIFY(qCompress(noise).size() > noise.size() * 9 / 10);
    for (const QString& icon : src.entryList({"*.png"}, QDir::Files)) {
        QImage image;
        QVERIFY2(image.loadFromData(readFile(src.filePath(icon)), "PNG"), qPrintable(icon));
        QCOMPARE(image.size(), QSize(16, 16));
    }
}

void TstEsdataGen::sameSeedSameCatalog_data()
{
    QTest::addColumn<uint64_t>("seed");
    QTest::addColumn<bool>("same");
    QTest::newRow("same seed") << uint64_t(5) << true;
    QTest::newRow("other seed") << uint64_t(6) << false;
}

void TstEsdataGen::sameSeedSameCatalog()
{
    QFETCH(uint64_t, seed);
    QFETCH(bool, same);
    QString a = m_dir.filePath(QString("a%1.db").arg(seed));
    QString b = m_dir.filePath(QString("b%1.db").arg(seed));
    QVERIFY(gen::generateCatalog(small(a, 5)).ok);
    QVERIFY(gen::generateCatalog(small(b, seed)).ok);
    CatalogGuard ca(openCatalog(a, "", false));
    CatalogGuard cb(openCatalog(b, "", false));
    QString da = dump(ca.get()), db = dump(cb.get());
    QVERIFY(!da.isEmpty());
    QCOMPARE(da == db, same);
}

void TstEsdataGen::progressCanStop()
{
    QString db = m_dir.filePath("stopped.db");
    QList<int> seen;
    gen::Result r = gen::generateCatalog(small(db, 3), [&](int done, int total) {
        seen << done;
        return total == 24 && done < 7;
    });
    QVERIFY(r.ok);
    QCOMPARE(r.elements, 7);
    QCOMPARE(seen, QList<int>({1, 2, 3, 4, 5, 6, 7}));
    CatalogGuard c(openCatalog(db, "", false));
    QCOMPARE(dump(c.get()).count('\n') + 1, 7);
}

QTEST_GUILESS_MAIN(TstEsdataGen)
#include "tst_esdata_gen.moc"
