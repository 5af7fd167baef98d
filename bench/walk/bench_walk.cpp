// Walks every packet, folder, attribute, value, model and projection of a catalog through the
// C API and times it against the sqlite3 shell selecting the same values in one query.
#include "esdata/esdata.h"
#include "synthetic_catalog.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>

#include <cstdio>
#include <ctime>
#include <limits>

#include <sys/resource.h>

namespace {

struct Timing
{
    double wall = -1; // seconds
    double cpu = -1;  // seconds of processor time (user and system)
};

double processCpu()
{
    timespec ts{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &ts);
    return double(ts.tv_sec) + double(ts.tv_nsec) / 1e9;
}

double childrenCpu()
{
    rusage u{};
    getrusage(RUSAGE_CHILDREN, &u);
    return double(u.ru_utime.tv_sec + u.ru_stime.tv_sec) +
           double(u.ru_utime.tv_usec + u.ru_stime.tv_usec) / 1e6;
}

struct Tally
{
    uint64_t folders = 0, attributes = 0, elements = 0, values = 0, models = 0, projections = 0;
    uint64_t checksum = 0; // keeps every read observable

    void text(const char16_t* s)
    {
        for (; s && *s; ++s)
            checksum = checksum * 31 + *s;
    }
    void bytes(size_t n, const void* p)
    {
        checksum += n + (p ? *static_cast<const unsigned char*>(p) : 0);
    }
};

void walkFolder(es_folder_t* folder, Tally& t)
{
    ++t.folders;
    t.text(folder_GetName(folder));
    es_table_t* table = folder_GetTable(folder);
    const uint32_t na = table_GetAttributeCount(table);
    for (uint32_t i = 0; i < na; ++i) {
        es_attribute_t* a = table_GetAttribute(table, i);
        ++t.attributes;
        t.checksum += uint32_t(attribute_GetNumber(a)) + uint32_t(attribute_GetOldNumber(a)) +
                      attribute_GetType(a);
        t.text(attribute_GetName(a));
        t.text(attribute_GetDescription(a));
        t.text(attribute_GetVarName(a));
        t.text(attribute_GetMeasure(a));
        t.text(attribute_GetFormula(a));
    }
    const uint32_t ne = table_GetStdSizeCount(table);
    for (uint32_t k = 0; k < ne; ++k) {
        es_stdsize_t* e = table_GetStdSize(table, k);
        ++t.elements;
        t.text(stdsize_GetID(e));
        t.text(stdsize_GetType(e));
        for (uint32_t i = 0; i < na; ++i) {
            es_value v;
            if (stdsize_GetValue(e, table_GetAttribute(table, i), &v)) {
                ++t.values;
                if (v.kind == ES_VALUE_INT)
                    t.checksum += uint32_t(v.i);
                else if (v.kind == ES_VALUE_REAL)
                    t.checksum += uint64_t(v.d);
                else if (v.kind == ES_VALUE_TEXT)
                    t.text(v.s);
            }
        }
        es_model_t* m = stdsize_GetModel(e);
        if (!model_IsEmpty(m)) {
            ++t.models;
            t.text(model_GetModelFile(m));
            t.text(model_GetModelName(m));
            t.text(model_GetDigest(m));
            t.checksum += uint32_t(model_GetVersion(m));
            const void* icon = nullptr;
            t.bytes(model_GetIconData(m, &icon), icon);
        }
        es_projections_t* list = stdsize_GetProjections(e);
        const uint32_t np = projections_GetProjectioCount(list);
        for (uint32_t j = 0; j < np; ++j) {
            es_projection_t* p = projections_GetProjection(list, j);
            ++t.projections;
            t.text(projection_GetName(p));
            t.text(projection_GetDescription(p));
            t.checksum += projection_GetType(p) + projection_GetViewType(p);
            t.text(projection_GetFragmentFile(p));
            t.text(projection_GetDigest(p));
            const void* icon = nullptr;
            t.bytes(projection_GetIconData(p, &icon), icon);
        }
    }
    const uint32_t nc = folder_GetChildFolderCount(folder);
    for (uint32_t i = 0; i < nc; ++i)
        walkFolder(folder_GetChildFolder(folder, i), t);
}

void walkCatalog(es_provider_t* p, Tally& t)
{
    const uint32_t n = provider_GetPacketCount(p);
    for (uint32_t i = 0; i < n; ++i) {
        es_packet_t* packet = provider_GetPacket(p, i);
        t.text(packet_GetName(packet));
        walkFolder(packet_GetRootFolder(packet), t);
    }
}

// Opens the catalog, walks it and closes it; negative times on failure. With second, walks it
// once more before closing (the caches of the first walk in place) and times that walk in
// second.
Timing walkOnce(const QString& db, Tally& t, Timing* second = nullptr)
{
    QElapsedTimer timer;
    const double cpu0 = processCpu();
    timer.start();
    std::u16string path(reinterpret_cast<const char16_t*>(db.utf16()), size_t(db.size()));
    es_provider_t* p = esx_OpenCatalog(path.c_str(), u"", false);
    if (!p) return {};
    walkCatalog(p, t);
    const Timing first{double(timer.nsecsElapsed()) / 1e9, processCpu() - cpu0};
    if (second) {
        Tally again;
        const double cpu1 = processCpu();
        timer.restart();
        walkCatalog(p, again);
        *second = {double(timer.nsecsElapsed()) / 1e9, processCpu() - cpu1};
    }
    esx_CloseCatalog(p);
    return first;
}

// A line of /proc/self/status in MiB (VmHWM: the peak resident size), or -1.
double statusMiB(const char* key)
{
    QFile f("/proc/self/status");
    if (!f.open(QIODevice::ReadOnly)) return -1;
    for (const QByteArray& line : f.readAll().split('\n'))
        if (line.startsWith(key))
            return line.mid(int(qstrlen(key))).trimmed().split(' ').value(0).toDouble() / 1024.0;
    return -1;
}

// The memory side, run in a process of its own so that nothing else has touched its heap:
// prints the resident size before and the peak after two walks.
int measureMemory(const QString& db)
{
    const double before = statusMiB("VmRSS:");
    Tally t;
    Timing second;
    if (walkOnce(db, t, &second).wall < 0) return 2;
    std::printf("%.1f %.1f %llu\n", before, statusMiB("VmHWM:"), (unsigned long long)t.elements);
    return 0;
}

// The same values as the walk, in one statement.
const char* const kQuery =
    "SELECT f.name, e.ident, e.type, a.number, a.old_number, a.name, a.description, a.type, "
    "a.var_name, a.measure, a.formula, v.value FROM es_element e "
    "JOIN es_folder f ON f.id = e.folder JOIN es_attribute a ON a.folder = e.folder "
    "LEFT JOIN es_value v ON v.element = e.id AND v.attribute = a.id "
    "UNION ALL SELECT NULL, e.ident, NULL, m.version, NULL, m.name, m.file, NULL, m.digest, "
    "NULL, NULL, m.icon FROM es_model m JOIN es_element e ON e.id = m.element "
    "UNION ALL SELECT NULL, e.ident, NULL, p.type, p.view_type, p.name, p.description, NULL, "
    "p.file, p.digest, NULL, p.icon FROM es_projection p JOIN es_element e ON e.id = p.element;";

Timing shellOnce(const QString& sqlite3, const QString& db)
{
    QProcess shell;
    shell.setStandardOutputFile(QProcess::nullDevice());
    QElapsedTimer timer;
    const double cpu0 = childrenCpu();
    timer.start();
    shell.start(sqlite3, {db, QString::fromLatin1(kQuery)});
    if (!shell.waitForFinished(-1) || shell.exitStatus() != QProcess::NormalExit ||
        shell.exitCode() != 0)
        return {};
    return {double(timer.nsecsElapsed()) / 1e9, childrenCpu() - cpu0};
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QCommandLineParser cl;
    cl.setApplicationDescription("Catalog walk through the C API against the sqlite3 shell.");
    cl.addHelpOption();
    cl.addOption({"db", "Catalog file (generated when missing).", "path", "walk-catalog.db"});
    cl.addOption({"elements", "Elements of a generated catalog.", "n", "10000"});
    cl.addOption({"attributes", "Attributes per element.", "n", "40"});
    cl.addOption({"projections", "Projections per element.", "n", "2"});
    cl.addOption({"repeat", "Timed runs of each side; the best counts.", "n", "3"});
    cl.addOption({"sqlite3", "The sqlite3 shell.", "program", "sqlite3"});
    cl.addOption({"regenerate", "Generate the catalog again even when it exists."});
    cl.addOption({"memory-only", "Walk twice and print resident sizes (used by the bench)."});
    cl.process(app);

    const QString db = QFileInfo(cl.value("db")).absoluteFilePath();
    if (cl.isSet("memory-only")) return measureMemory(db);
    if (cl.isSet("regenerate")) {
        QFile::remove(db);
        QFile::remove(db + "-wal");
        QFile::remove(db + "-shm");
    }
    if (!QFileInfo::exists(db)) {
        gen::Options o;
        o.catalogPath = db;
        o.elements = cl.value("elements").toInt();
        o.attributes = cl.value("attributes").toInt();
        o.projections = cl.value("projections").toInt();
        o.distinctFiles = 100;
        o.fileSize = 4096;
        std::printf("generating %d elements × %d attributes into %s ...\n", o.elements,
                    o.attributes, qPrintable(db));
        std::fflush(stdout);
        QElapsedTimer timer;
        timer.start();
        gen::Result r = gen::generateCatalog(o);
        if (!r.ok) {
            std::fprintf(stderr, "generation failed: %s\n", qPrintable(r.error));
            return 2;
        }
        std::printf("generated in %.2f s\n", double(timer.elapsed()) / 1000.0);
    }

    // Measured first, while this process holds little: the two together would need twice the
    // memory of a walk.
    QProcess memory;
    memory.start(QCoreApplication::applicationFilePath(), {"--memory-only", "--db", db});
    memory.waitForFinished(-1);
    const QList<QByteArray> mem = memory.readAllStandardOutput().trimmed().split(' ');
    const double base = mem.value(0).toDouble(), peak = mem.value(1).toDouble();

    const int repeat = std::max(1, cl.value("repeat").toInt());
    // One untimed pass of each side, so that both start from a warm file cache.
    Tally warm;
    if (walkOnce(db, warm).wall < 0) {
        std::fprintf(stderr, "cannot open %s: %s\n", qPrintable(db),
                     qPrintable(QString::fromUtf16(esx_LastError())));
        return 2;
    }
    if (shellOnce(cl.value("sqlite3"), db).wall < 0) {
        std::fprintf(stderr, "the sqlite3 shell failed on %s\n", qPrintable(db));
        return 2;
    }
    const double big = std::numeric_limits<double>::max();
    Timing api{big, big}, again{big, big}, shell{big, big};
    Tally t;
    for (int i = 0; i < repeat; ++i) {
        t = Tally();
        Timing second;
        Timing a = walkOnce(db, t, &second);
        Timing s = shellOnce(cl.value("sqlite3"), db);
        api = {std::min(api.wall, a.wall), std::min(api.cpu, a.cpu)};
        again = {std::min(again.wall, second.wall), std::min(again.cpu, second.cpu)};
        shell = {std::min(shell.wall, s.wall), std::min(shell.cpu, s.cpu)};
    }
    std::printf("catalog: %s\n", qPrintable(db));
    std::printf("walked: %llu folders, %llu elements, %llu attributes, %llu values, %llu models, "
                "%llu projections (checksum %llx)\n",
                (unsigned long long)t.folders, (unsigned long long)t.elements,
                (unsigned long long)t.attributes, (unsigned long long)t.values,
                (unsigned long long)t.models, (unsigned long long)t.projections,
                (unsigned long long)t.checksum);
    std::printf("C API walk:    %.3f s wall, %.3f s cpu (best of %d)\n", api.wall, api.cpu, repeat);
    std::printf("sqlite3 shell: %.3f s wall, %.3f s cpu (best of %d)\n", shell.wall, shell.cpu,
                repeat);
    const double ratio = api.wall / shell.wall;
    std::printf("ratio: %.2f wall, %.2f cpu (target: at most 3.00) %s\n", ratio,
                api.cpu / shell.cpu, ratio <= 3.0 ? "OK" : "OVER TARGET");
    std::printf("second walk:   %.3f s wall, %.3f s cpu (best of %d, catalog kept open)\n",
                again.wall, again.cpu, repeat);
    const double second = again.cpu / shell.cpu;
    std::printf("second walk ratio: %.2f wall, %.2f cpu (target: at most 1.50) %s\n",
                again.wall / shell.wall, second, second <= 1.5 ? "OK" : "OVER TARGET");
    std::printf("peak memory: %.1f MiB over two walks (%.1f MiB before them), "
                "%.1f KiB per element walked\n",
                peak, base, t.elements ? (peak - base) * 1024.0 / double(t.elements) : 0.0);
    return 0;
}
