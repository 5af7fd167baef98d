#include "Libs/zipper/unzip.h"
#include "Libs/zipper/zip.h"
#include "Libs/zipper/ziperror.h"
#include "ziptestsupport.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <memory>
#include <optional>
#include <thread>

// The archive layer: what it writes, what it refuses to read, and what it leaves behind.
class TestZipper : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QVERIFY(m_dir->isValid());
    }

    void writtenEntriesReadBackWithEitherSeparator_data();
    void writtenEntriesReadBackWithEitherSeparator();
    void namesAlikeAfterSeparatorsFindTheFirst();
    void readsFromSeveralThreadsGetTheirOwnBytes();
    void entriesKeepTheirMethodAndFixedTime_data();
    void entriesKeepTheirMethodAndFixedTime();
    void copiedEntriesKeepTheirCompressedData_data();
    void copiedEntriesKeepTheirCompressedData();
    void copyFromMissingArchiveOrEntryFails();
    void failedCommitLeavesTargetUnchanged_data();
    void failedCommitLeavesTargetUnchanged();
    void damagedEntryFailsAndLeavesNoFile_data();
    void damagedEntryFailsAndLeavesNoFile();
    void expansionBeyondLimitsFails_data();
    void expansionBeyondLimitsFails();
    void defaultLimitsStopBombsOnly_data();
    void defaultLimitsStopBombsOnly();
    void notAnArchiveIsRefused_data();
    void notAnArchiveIsRefused();

private:
    struct Stamp
    {
        int method;
        QDateTime time;
    };
    // The method and modification time of the central directory's record of name.
    static std::optional<Stamp> stamp(const QByteArray& archive, const QByteArray& name);
    QString path(const QString& name) const { return m_dir->filePath(name); }
    std::unique_ptr<QTemporaryDir> m_dir;
};

void TestZipper::writtenEntriesReadBackWithEitherSeparator_data()
{
    QTest::addColumn<QString>("written");
    QTest::addColumn<QString>("lookedUp");
    QTest::addColumn<int>("level");
    QTest::newRow("backslash, deflated") << "TX\\model\\1.m3d"
                                         << "TX\\model\\1.m3d" << 6;
    QTest::newRow("slash written, backslash read") << "TX/prj/2.frw"
                                                   << "TX\\prj\\2.frw" << 6;
    QTest::newRow("backslash written, slash read") << "TX\\repr\\3.xml"
                                                   << "TX/repr/3.xml" << 0;
    QTest::newRow("cyrillic name") << "TX\\Трубы\\4.png"
                                   << "TX/Трубы/4.png" << 1;
}

void TestZipper::writtenEntriesReadBackWithEitherSeparator()
{
    QFETCH(QString, written);
    QFETCH(QString, lookedUp);
    QFETCH(int, level);
    const QByteArray content = QByteArray("content of the file ").repeated(1000);
    ziptest::writeFile(path("source.bin"), content);
    {
        zipper::zip z(path("a.zip"));
        z.setCompressionLevel(level);
        z.addFile(path("source.bin"), written);
        z.addBytes("{}", "TX.json");
        z.commit();
    }
    zipper::unzip u(path("a.zip"));
    QCOMPARE(u.entryCount(), 2);
    QVERIFY(u.contains(lookedUp));
    QCOMPARE(u.declaredSize(lookedUp), content.size());
    QCOMPARE(u.readAll(lookedUp, 1 << 20), content);
    u.extract(lookedUp, path("out.bin"));
    QCOMPARE(ziptest::readFile(path("out.bin")), content);
    QCOMPARE(u.readAll("TX.json", 100), QByteArray("{}"));
}

void TestZipper::namesAlikeAfterSeparatorsFindTheFirst()
{
    {
        zipper::zip z(path("a.zip"));
        z.addBytes("first", "TX\\prj\\1.frw");
        z.addBytes("second", "TX\\prj\\1.frx");
        z.addBytes("other", "TX\\prj\\2.frw");
        z.commit();
    }
    // The writer refuses a second name alike; another program's archive may hold one.
    QByteArray bytes = ziptest::readFile(path("a.zip"));
    QCOMPARE(bytes.count("TX\\prj\\1.frx"), 2);
    bytes.replace("TX\\prj\\1.frx", "TX/prj/1.frw");
    ziptest::writeFile(path("a.zip"), bytes);
    zipper::unzip u(path("a.zip"));
    QCOMPARE(u.entryCount(), 3);
    QCOMPARE(u.readAll("TX\\prj\\1.frw", 100), QByteArray("first"));
    QCOMPARE(u.readAll("TX/prj/1.frw", 100), QByteArray("first"));
    QCOMPARE(u.readAll("TX/prj/2.frw", 100), QByteArray("other"));
    QVERIFY(!u.contains("TX/prj/3.frw"));
    QVERIFY(!u.contains("tx/prj/2.frw"));
    QCOMPARE(u.declaredSize("TX/prj/3.frw"), -1);
}

void TestZipper::readsFromSeveralThreadsGetTheirOwnBytes()
{
    // Entries large enough that reads overlap, each of its own bytes.
    constexpr int entries = 40;
    auto content = [](int i) {
        QByteArray bytes(64 * 1024 + i * 512, Qt::Uninitialized);
        QRandomGenerator random(quint32(i + 1));
        random.fillRange(reinterpret_cast<quint32*>(bytes.data()), bytes.size() / 4);
        return bytes;
    };
    {
        zipper::zip z(path("a.zip"));
        for (int i = 0; i < entries; ++i)
            z.addBytes(content(i), QString("TX\\model\\%1.m3d").arg(i));
        z.commit();
    }
    zipper::unzip u(path("a.zip"));
    std::atomic<int> wrong = 0;
    auto reader = [&](int first) {
        for (int k = 0; k < entries; ++k) {
            const int i = (first + k) % entries;
            const QString out = path(QString("out%1_%2.bin").arg(first).arg(i));
            try {
                u.extract(QString("TX/model/%1.m3d").arg(i), out);
                if (ziptest::readFile(out) != content(i)) ++wrong;
                if (u.readAll(QString("TX/model/%1.m3d").arg(i), 1 << 22) != content(i)) ++wrong;
            } catch (const zipper::error&) {
                ++wrong;
            }
        }
    };
    std::thread a(reader, 0), b(reader, entries / 3), c(reader, entries / 2);
    a.join();
    b.join();
    c.join();
    QCOMPARE(wrong.load(), 0);
}

std::optional<TestZipper::Stamp> TestZipper::stamp(const QByteArray& archive,
                                                   const QByteArray& name)
{
    for (qsizetype i = 0; i + 46 < archive.size(); ++i) {
        if (ziptest::get32(archive, i) != 0x02014b50) continue;
        if (archive.mid(i + 46, ziptest::get16(archive, i + 28)) != name) continue;
        const quint16 time = ziptest::get16(archive, i + 12);
        const quint16 date = ziptest::get16(archive, i + 14);
        return Stamp{ziptest::get16(archive, i + 10),
                     QDateTime(QDate(1980 + (date >> 9), (date >> 5) & 15, date & 31),
                               QTime(time >> 11, (time >> 5) & 63, (time & 31) * 2))};
    }
    return std::nullopt;
}

void TestZipper::entriesKeepTheirMethodAndFixedTime_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<bool>("store");
    QTest::addColumn<int>("method");
    QTest::newRow("deflated at the default level") << 6 << false << 8;
    QTest::newRow("stored on request") << 6 << true << 0;
    QTest::newRow("stored at level 0") << 0 << false << 0;
}

void TestZipper::entriesKeepTheirMethodAndFixedTime()
{
    QFETCH(int, level);
    QFETCH(bool, store);
    QFETCH(int, method);
    const auto content = store ? zipper::zip::Content::Store : zipper::zip::Content::Compress;
    const QByteArray bytes = QByteArray("repeated text ").repeated(500);
    ziptest::writeFile(path("source.bin"), bytes);
    // Even seconds: the archive keeps two-second steps.
    const QDateTime when(QDate(2024, 3, 5), QTime(14, 7, 30), Qt::UTC);
    // Written twice, the source's own time changed between: the same bytes.
    for (const QString& name : {QStringLiteral("a.zip"), QStringLiteral("b.zip")}) {
        QFile source(path("source.bin"));
        QVERIFY(
            source.open(QIODevice::ReadWrite) &&
            source.setFileTime(QDateTime::currentDateTimeUtc().addDays(name == "a.zip" ? -3 : 0),
                               QFileDevice::FileModificationTime));
        source.close();
        zipper::zip z(path(name));
        z.setCompressionLevel(level);
        z.setEntryTime(when.toSecsSinceEpoch());
        z.addFile(path("source.bin"), "TX\\model\\1.m3d", content);
        z.addBytes(bytes, "TX\\model\\1.png", content);
        z.commit();
    }
    const QByteArray archive = ziptest::readFile(path("a.zip"));
    QCOMPARE(ziptest::readFile(path("b.zip")), archive);
    // Entry times are local times of the moment.
    const QDateTime local = when.toLocalTime();
    for (const QByteArray& name :
         {QByteArray("TX\\model\\1.m3d"), QByteArray("TX\\model\\1.png")}) {
        const auto found = stamp(archive, name);
        QVERIFY2(found, name.constData());
        QCOMPARE(found->method, method);
        QCOMPARE(found->time, QDateTime(local.date(), local.time()));
    }
    zipper::unzip u(path("a.zip"));
    QCOMPARE(u.readAll("TX\\model\\1.m3d", 1 << 20), bytes);
    QCOMPARE(u.readAll("TX\\model\\1.png", 1 << 20), bytes);
}

void TestZipper::copiedEntriesKeepTheirCompressedData_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<int>("method");
    QTest::newRow("deflated part") << 9 << 8;
    QTest::newRow("stored part") << 0 << 0;
}

void TestZipper::copiedEntriesKeepTheirCompressedData()
{
    QFETCH(int, level);
    QFETCH(int, method);
    QByteArray content;
    for (int i = 0; i < 4000; ++i)
        content += QByteArray::number(qint64(i) * i * 7919 % 100003) + ' ';
    ziptest::writeFile(path("source.bin"), content);
    {
        zipper::zip part(path("part.zip"));
        part.setCompressionLevel(level);
        part.addFile(path("source.bin"), "TX\\model\\1.m3d");
        part.commit();
    }
    const qint64 when = QDateTime(QDate(2022, 6, 1), QTime(8, 0), Qt::UTC).toSecsSinceEpoch();
    {
        // Level 1 here: a copied entry that were deflated again would come out different.
        zipper::zip z(path("a.zip"));
        z.setCompressionLevel(1);
        z.setEntryTime(when);
        z.addBytes("{}", "TX.json");
        z.addCompressedFrom(path("part.zip"), "TX\\model\\1.m3d", "TX\\model\\1.m3d");
        z.commit();
    }
    const QByteArray part = ziptest::readFile(path("part.zip"));
    const QByteArray archive = ziptest::readFile(path("a.zip"));
    const auto copied = stamp(archive, "TX\\model\\1.m3d");
    QVERIFY(copied);
    QCOMPARE(copied->method, method);
    const QDateTime local = QDateTime::fromSecsSinceEpoch(when, Qt::UTC).toLocalTime();
    QCOMPARE(copied->time, QDateTime(local.date(), local.time()));
    // The compressed bytes of the part are found whole in the archive.
    const auto [at, size] = ziptest::entryData(part, "TX\\model\\1.m3d");
    const QByteArray data = part.mid(at, qsizetype(size));
    QVERIFY(data.size() > 100);
    QVERIFY(archive.contains(data));
    zipper::unzip u(path("a.zip"));
    QCOMPARE(u.readAll("TX\\model\\1.m3d", 1 << 20), content);
    QCOMPARE(u.readAll("TX.json", 10), QByteArray("{}"));
}

void TestZipper::copyFromMissingArchiveOrEntryFails()
{
    {
        zipper::zip part(path("part.zip"));
        part.addBytes("x", "one");
        part.commit();
    }
    zipper::zip z(path("a.zip"));
    QVERIFY_THROWS_EXCEPTION(zipper::error,
                             z.addCompressedFrom(path("none.zip"), "one", "TX\\one"));
    QVERIFY_THROWS_EXCEPTION(zipper::error,
                             z.addCompressedFrom(path("part.zip"), "two", "TX\\two"));
    z.addCompressedFrom(path("part.zip"), "one", "TX\\one");
    z.commit();
    QCOMPARE(zipper::unzip(path("a.zip")).readAll("TX\\one", 10), QByteArray("x"));
}

void TestZipper::failedCommitLeavesTargetUnchanged_data()
{
    QTest::addColumn<QString>("fault");
    QTest::newRow("never committed") << "uncommitted";
    QTest::newRow("entry file gone") << "gone";
    // A folder in the target's place takes no archive: the final rename fails.
    QTest::newRow("rename fails") << "rename";
}

void TestZipper::failedCommitLeavesTargetUnchanged()
{
    QFETCH(QString, fault);
    const QString target = path(fault == "rename" ? "folder.uss" : "target.uss");
    if (fault == "rename")
        QVERIFY(QDir().mkpath(target + "/inside"));
    else
        ziptest::writeFile(target, "previous content");
    ziptest::writeFile(path("vanishing.m3d"), "model");
    {
        zipper::zip z(target);
        z.addBytes("{}", "TX.json");
        z.addFile(path("vanishing.m3d"), "TX\\model\\1.m3d");
        if (fault == "gone") QVERIFY(QFile::remove(path("vanishing.m3d")));
        if (fault != "uncommitted") QVERIFY_THROWS_EXCEPTION(zipper::error, z.commit());
    }
    if (fault != "rename") QCOMPARE(ziptest::readFile(target), QByteArray("previous content"));
    // No partial archive stays beside it.
    const QStringList left = QDir(m_dir->path()).entryList(QDir::Files | QDir::Hidden);
    QCOMPARE(left, fault == "rename" ? QStringList{"vanishing.m3d"}
                   : fault == "gone" ? QStringList{"target.uss"}
                                     : (QStringList{"target.uss", "vanishing.m3d"}));
}

void TestZipper::damagedEntryFailsAndLeavesNoFile_data()
{
    QTest::addColumn<QString>("damage");
    QTest::newRow("crc") << "crc";
    QTest::newRow("longer than declared") << "longer";
    QTest::newRow("shorter than declared") << "shorter";
    QTest::newRow("declared as large as a document may be") << "huge";
}

void TestZipper::damagedEntryFailsAndLeavesNoFile()
{
    QFETCH(QString, damage);
    const QByteArray content = QByteArray("MARKER-0123456789-").repeated(50);
    {
        zipper::zip z(path("a.zip"));
        z.setCompressionLevel(damage == "crc" ? 0 : 6);
        z.addBytes(content, "TX\\model\\1.m3d");
        z.commit();
    }
    QByteArray bytes = ziptest::readFile(path("a.zip"));
    if (damage == "crc")
        QVERIFY(ziptest::damage(bytes, "MARKER-0123456789-MARKER"));
    else
        QVERIFY(ziptest::setDeclaredSize(bytes, "TX\\model\\1.m3d",
                                         damage == "longer"    ? 100
                                         : damage == "shorter" ? quint32(content.size() + 100)
                                                               : (1u << 30) - 1));
    ziptest::writeFile(path("a.zip"), bytes);

    zipper::unzip u(path("a.zip"));
    QVERIFY_THROWS_EXCEPTION(zipper::error, u.extract("TX\\model\\1.m3d", path("out.m3d")));
    QVERIFY(!QFile::exists(path("out.m3d")));
    // Read with the document's bound, in less memory than the declared size: a lying directory
    // must not cost what it claims before a byte is read.
    const ziptest::AddressSpaceCeiling ceiling(256 << 20);
    if (!ceiling.active()) QSKIP("no address-space ceiling can be set here");
    QVERIFY_THROWS_EXCEPTION(zipper::error, u.readAll("TX\\model\\1.m3d", qint64(1) << 30));
}

void TestZipper::expansionBeyondLimitsFails_data()
{
    QTest::addColumn<qint64>("maxEntries");
    QTest::addColumn<qint64>("maxTotal");
    QTest::addColumn<qint64>("maxRatio");
    QTest::addColumn<bool>("opens");
    QTest::newRow("too many entries") << qint64(2) << qint64(1) << qint64(1000) << false;
    QTest::newRow("total size") << qint64(10) << qint64(64 * 1024) << qint64(100000) << true;
    QTest::newRow("ratio") << qint64(10) << qint64(1) << qint64(10) << true;
}

void TestZipper::expansionBeyondLimitsFails()
{
    QFETCH(qint64, maxEntries);
    QFETCH(qint64, maxTotal);
    QFETCH(qint64, maxRatio);
    QFETCH(bool, opens);
    {
        zipper::zip z(path("bomb.zip"));
        z.addBytes(QByteArray(4 << 20, '\0'), "zeros.bin");
        z.addBytes("a", "a.txt");
        z.addBytes("b", "b.txt");
        z.commit();
    }
    zipper::limits bounds;
    bounds.maxEntries = maxEntries;
    bounds.maxTotalBytes = maxTotal == 1 ? bounds.maxTotalBytes : maxTotal;
    bounds.maxRatio = maxRatio;
    bounds.ratioFloor = 1024;
    if (!opens) {
        QVERIFY_THROWS_EXCEPTION(zipper::error, zipper::unzip(path("bomb.zip"), bounds));
        return;
    }
    zipper::unzip u(path("bomb.zip"), bounds);
    QVERIFY_THROWS_EXCEPTION(zipper::error, u.extract("zeros.bin", path("zeros.bin")));
    QVERIFY(!QFile::exists(path("zeros.bin")));
}

namespace {

// Lines of numbers: text that deflates about as far as models and fragments do.
QByteArray numberedText(qsizetype size)
{
    QByteArray text;
    quint32 state = 1;
    for (int row = 0; text.size() < size; ++row) {
        state = state * 1103515245u + 12345u;
        text += "row " + QByteArray::number(row) + ": " + QByteArray::number(state >> 16) + ' ' +
                QByteArray::number(state % 1000) + '\n';
    }
    return text;
}

// A document of elements that differ in their id only, as the writer prints it: the most
// compressible document a real catalog gives.
QByteArray uniformDocument(int elements)
{
    QByteArray text = "{\n   \"comment\" : {\n      \"encoding\" : \"utf8\",\n      "
                      "\"lib-name\" : \"TX\"\n   },\n   \"std-size\" : [\n";
    for (int i = 0; i < elements; ++i) {
        text += i ? ",\n      {\n         \"atr\" : [\n" : "      {\n         \"atr\" : [\n";
        for (int a = 0; a < 10; ++a)
            text += QByteArray(a ? ",\n" : "") +
                    "            {\n               \"name\" : \"ATTRIBUTE_" +
                    QByteArray::number(a) +
                    "\",\n               \"num\" : " + QByteArray::number(a) +
                    ",\n               \"type\" : 3,\n               \"val\" : \"\"\n            }";
        text += "\n         ],\n         \"folder\" : \"F\",\n         \"id\" : \"" +
                QByteArray::number(i) +
                "\",\n         \"model\" : null,\n         \"packet\" : \"P\",\n         "
                "\"prj\" : [],\n         \"type\" : \"\"\n      }";
    }
    return text + "\n   ]\n}\n";
}

} // namespace

void TestZipper::defaultLimitsStopBombsOnly_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("copies");
    QTest::addColumn<int>("level");
    QTest::addColumn<int>("leastRatio"); // what the row is about: how far the content deflates
    QTest::addColumn<bool>("lyingSize"); // the directory claims a huge compressed size
    QTest::addColumn<bool>("refused");

    const QByteArray zeros(32 << 20, '\0');
    QTest::newRow("tens of MiB of zeros") << zeros << 1 << 6 << 900 << false << true;
    QTest::newRow("zeros claiming a huge compressed size")
        << zeros << 1 << 6 << 900 << true << true;
    QTest::newRow("whitespace at the highest level")
        << QByteArray(24 << 20, ' ') << 1 << 9 << 900 << false << true;
    QTest::newRow("many entries of zeros, each below the floor")
        << QByteArray((1 << 20) - 1024, '\0') << 40 << 6 << 900 << false << true;
    QTest::newRow("text of a few MiB") << numberedText(4 << 20) << 1 << 9 << 2 << false << false;
    QTest::newRow("document of near-identical elements")
        << uniformDocument(2000) << 1 << 9 << 100 << false << false;
    QTest::newRow("small file of zeros")
        << QByteArray(512 << 10, '\0') << 1 << 6 << 900 << false << false;
}

// With the limits every import uses, an archive that expands like a bomb is refused when read
// into memory and when extracted, and no file is left; real content of any kind is read.
void TestZipper::defaultLimitsStopBombsOnly()
{
    QFETCH(QByteArray, content);
    QFETCH(int, copies);
    QFETCH(int, level);
    QFETCH(int, leastRatio);
    QFETCH(bool, lyingSize);
    QFETCH(bool, refused);
    auto name = [](int i) { return QStringLiteral("TX\\model\\%1.m3d").arg(i); };
    {
        zipper::zip z(path("a.uss"));
        z.setCompressionLevel(level);
        for (int i = 1; i <= copies; ++i)
            z.addBytes(content, name(i));
        z.commit();
    }
    QByteArray archive = ziptest::readFile(path("a.uss"));
    const qint64 compressed = ziptest::compressedSize(archive, name(1).toUtf8());
    QVERIFY(compressed > 0);
    QVERIFY2(content.size() / compressed >= leastRatio,
             QByteArray::number(content.size() / compressed));
    if (lyingSize) {
        QVERIFY(ziptest::setCompressedSize(archive, name(1).toUtf8(), 0x7fffffff));
        ziptest::writeFile(path("a.uss"), archive);
    }

    for (const bool toFile : {false, true}) {
        zipper::unzip u(path("a.uss"));
        bool failed = false;
        for (int i = 1; i <= copies && !failed; ++i) {
            const QString target = path(QStringLiteral("%1.m3d").arg(i));
            try {
                if (toFile) {
                    u.extract(name(i), target);
                    QCOMPARE(ziptest::readFile(target), content);
                } else {
                    QCOMPARE(u.readAll(name(i), qint64(1) << 30), content);
                }
            } catch (const zipper::error&) {
                failed = true;
                QVERIFY(!QFile::exists(target));
            }
        }
        QCOMPARE(failed, refused);
    }
}

void TestZipper::notAnArchiveIsRefused_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("text") << QByteArray("this is not a zip file at all");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("local header only") << QByteArray("PK\x03\x04garbage", 11);
}

void TestZipper::notAnArchiveIsRefused()
{
    QFETCH(QByteArray, bytes);
    ziptest::writeFile(path("bad.uss"), bytes);
    QVERIFY_THROWS_EXCEPTION(zipper::error, zipper::unzip(path("bad.uss")));
}

QTEST_GUILESS_MAIN(TestZipper)
#include "tst_zipper.moc"
