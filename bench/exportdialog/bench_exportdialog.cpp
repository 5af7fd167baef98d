// From uss_export_all's flow being called to the export dialog shown, checking
// checkBox_SelectAll, and pressing OK, each timed against the bare walk of the same catalog
// through the C API (every folder, attribute, element, value, model and projection, as
// bench/walk reads it), measured in the same run. Aims: shown 0.5x the walk, select-all and
// OK 0.1x each.
#include "export_entry.h"
#include "export_uss_dialog.h"

#include <esdata/esdata.h>

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QLabel>

#include <algorithm>
#include <cstdio>
#include <string>

namespace {

std::u16string u16(const QString& text)
{
    return text.toStdU16String();
}

// Packets of category folders, each holding a table of elements with attributes and values.
bool generate(const QString& path, int elements, int folders, int attributes)
{
    es_provider_t* p = esx_OpenCatalog(u16(path).c_str(), u"user_tx", true);
    if (!p) return false;
    const int packets = 4;
    const int perFolder = elements / folders;
    int made = 0;
    esx_Begin(p);
    for (int f = 0; f < folders; ++f) {
        es_packet_t* packet = nullptr;
        const std::u16string packetName = u16(QStringLiteral("ПЭ_Пакет %1").arg(f % packets));
        for (uint32_t i = 0; i < provider_GetPacketCount(p) && !packet; ++i)
            if (packet_GetName(provider_GetPacket(p, i)) == packetName)
                packet = provider_GetPacket(p, i);
        if (!packet) packet = provider_AddPacket(p, packetName.c_str());
        es_folder_t* root = packet_GetRootFolder(packet);
        // Twenty categories per packet, the folders below them.
        const std::u16string categoryName =
            u16(QStringLiteral("Категория %1").arg(f / packets % 20));
        es_folder_t* category = nullptr;
        for (uint32_t i = 0; i < folder_GetChildFolderCount(root) && !category; ++i)
            if (folder_GetName(folder_GetChildFolder(root, i)) == categoryName)
                category = folder_GetChildFolder(root, i);
        if (!category) category = folder_AddChildFolder(root, categoryName.c_str());
        es_folder_t* folder =
            folder_AddChildFolder(category, u16(QStringLiteral("Папка %1").arg(f)).c_str());
        es_table_t* table = folder_GetTable(folder);
        std::vector<es_attribute_t*> attrs;
        for (int a = 0; a < attributes; ++a) {
            const std::u16string name = u16(QStringLiteral("Параметр %1").arg(a));
            attrs.push_back(
                table_AddAttribute(table, name.c_str(), name.c_str(), uint32_t(1 + a % 3)));
        }
        for (int e = 0; e < perFolder; ++e, ++made) {
            es_stdsize_t* element = table_AddStdSize(
                table, u16(QStringLiteral("EL-%1").arg(made, 6, 10, QChar('0'))).c_str());
            for (int a = 0; a < attributes; ++a) {
                if (a % 3 == 0)
                    stdsize_SetValueI(element, attrs[size_t(a)], made + a);
                else if (a % 3 == 1)
                    stdsize_SetValueD(element, attrs[size_t(a)], made * 0.5 + a);
                else
                    stdsize_SetValueS(
                        element, attrs[size_t(a)],
                        u16(QStringLiteral("Значение %1-%2").arg(made).arg(a)).c_str());
            }
        }
        if (f % 100 == 99) {
            esx_Commit(p);
            esx_Begin(p);
            std::fprintf(stderr, "\rgenerating: %d of %d elements", made, elements);
        }
    }
    esx_Commit(p);
    std::fprintf(stderr, "\n");
    esx_CloseCatalog(p);
    return true;
}

uint64_t checksum = 0;

void text(const char16_t* s)
{
    for (; s && *s; ++s)
        checksum = checksum * 31 + *s;
}

void walkFolder(es_folder_t* folder)
{
    text(folder_GetName(folder));
    es_table_t* table = folder_GetTable(folder);
    const uint32_t na = table_GetAttributeCount(table);
    for (uint32_t i = 0; i < na; ++i) {
        es_attribute_t* a = table_GetAttribute(table, i);
        checksum += uint32_t(attribute_GetNumber(a)) + attribute_GetType(a);
        text(attribute_GetName(a));
        text(attribute_GetDescription(a));
        text(attribute_GetVarName(a));
        text(attribute_GetMeasure(a));
        text(attribute_GetFormula(a));
    }
    const uint32_t ne = table_GetStdSizeCount(table);
    for (uint32_t k = 0; k < ne; ++k) {
        es_stdsize_t* e = table_GetStdSize(table, k);
        text(stdsize_GetID(e));
        text(stdsize_GetType(e));
        for (uint32_t i = 0; i < na; ++i) {
            es_value v;
            if (stdsize_GetValue(e, table_GetAttribute(table, i), &v)) {
                if (v.kind == ES_VALUE_INT)
                    checksum += uint32_t(v.i);
                else if (v.kind == ES_VALUE_REAL)
                    checksum += uint64_t(v.d);
                else if (v.kind == ES_VALUE_TEXT)
                    text(v.s);
            }
        }
        es_model_t* m = stdsize_GetModel(e);
        if (!model_IsEmpty(m)) text(model_GetModelFile(m));
        es_projections_t* list = stdsize_GetProjections(e);
        const uint32_t np = projections_GetProjectioCount(list);
        for (uint32_t j = 0; j < np; ++j)
            text(projection_GetFragmentFile(projections_GetProjection(list, j)));
    }
    const uint32_t nc = folder_GetChildFolderCount(folder);
    for (uint32_t i = 0; i < nc; ++i)
        walkFolder(folder_GetChildFolder(folder, i));
}

// Seconds of one bare walk of a freshly opened catalog.
double walk(const QString& db)
{
    es_provider_t* p = esx_OpenCatalog(u16(db).c_str(), u"", false);
    if (!p) return -1;
    QElapsedTimer timer;
    timer.start();
    const uint32_t n = provider_GetPacketCount(p);
    for (uint32_t i = 0; i < n; ++i) {
        es_packet_t* packet = provider_GetPacket(p, i);
        text(packet_GetName(packet));
        walkFolder(packet_GetRootFolder(packet));
    }
    const double seconds = double(timer.nsecsElapsed()) / 1e9;
    esx_CloseCatalog(p);
    return seconds;
}

struct DialogTimes
{
    double shown = -1, selectAll = -1, ok = -1;
    QString label;
    int chosen = 0;
};

// One export call on a freshly opened catalog: the dialog is shown and painted, everything
// chosen, OK pressed; the file choice is then cancelled, so nothing is written.
DialogTimes dialog(const QString& db)
{
    DialogTimes t;
    es_provider_t* p = esx_OpenCatalog(u16(db).c_str(), u"", false);
    if (!p) return t;
    exchange::ExportEnvironment environment = exchange::defaultExportEnvironment();
    environment.chooseFile = [](QWidget*, const QString&, const QString&, const QString&) {
        return QString();
    };
    QElapsedTimer timer;
    environment.exec = [&](exchange::ExportUssDialog& d) {
        d.show();
        QApplication::processEvents();
        t.shown = double(timer.nsecsElapsed()) / 1e9;

        auto* all = d.findChild<QCheckBox*>(QStringLiteral("checkBox_SelectAll"));
        timer.restart();
        all->click();
        QApplication::processEvents();
        t.selectAll = double(timer.nsecsElapsed()) / 1e9;
        t.label = d.findChild<QLabel*>(QStringLiteral("m_label"))->text();

        timer.restart();
        d.findChild<QAbstractButton*>(QStringLiteral("okButton"))->click();
        QApplication::processEvents();
        t.ok = double(timer.nsecsElapsed()) / 1e9;
        t.chosen = int(d.elements().size());
        return d.result();
    };
    timer.start();
    exchange::exportAll(p, nullptr, environment);
    esx_CloseCatalog(p);
    return t;
}

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    const QCommandLineOption dbOption("db", "Catalog file (generated when missing).", "file");
    const QCommandLineOption elementsOption("elements", "Elements to generate.", "n", "50000");
    const QCommandLineOption foldersOption("folders", "Folders to generate.", "n", "2000");
    const QCommandLineOption attributesOption("attributes", "Attributes per folder.", "n", "20");
    const QCommandLineOption runsOption("runs", "Runs of each; the best counts.", "n", "3");
    parser.addOptions({dbOption, elementsOption, foldersOption, attributesOption, runsOption});
    parser.process(app);
    const QString db = parser.value(dbOption);
    if (db.isEmpty()) {
        std::fprintf(stderr, "--db is required\n");
        return 2;
    }
    if (!QFileInfo::exists(db) &&
        !generate(db, parser.value(elementsOption).toInt(), parser.value(foldersOption).toInt(),
                  parser.value(attributesOption).toInt())) {
        std::fprintf(stderr, "cannot create %s\n", qPrintable(db));
        return 2;
    }

    const int runs = std::max(1, parser.value(runsOption).toInt());
    double bare = 1e9;
    DialogTimes best;
    best.shown = best.selectAll = best.ok = 1e9;
    for (int r = 0; r < runs; ++r) {
        bare = std::min(bare, walk(db));
        const DialogTimes t = dialog(db);
        if (t.shown < 0) {
            std::fprintf(stderr, "the dialog did not run\n");
            return 2;
        }
        best.shown = std::min(best.shown, t.shown);
        best.selectAll = std::min(best.selectAll, t.selectAll);
        best.ok = std::min(best.ok, t.ok);
        best.label = t.label;
        best.chosen = t.chosen;
    }

    std::printf("catalog %s: %s, %d elements gathered on OK (checksum %llu)\n", qPrintable(db),
                qPrintable(best.label), best.chosen, static_cast<unsigned long long>(checksum));
    std::printf("bare walk            %8.1f ms\n", bare * 1e3);
    const struct
    {
        const char* name;
        double seconds;
        double aim;
    } rows[] = {{"dialog shown", best.shown, 0.5},
                {"select all", best.selectAll, 0.1},
                {"OK", best.ok, 0.1}};
    bool met = true;
    for (const auto& row : rows) {
        const double ratio = row.seconds / bare;
        met = met && ratio <= row.aim;
        std::printf("%-20s %8.1f ms  %.3fx the walk (aim %.1fx) %s\n", row.name, row.seconds * 1e3,
                    ratio, row.aim, ratio <= row.aim ? "met" : "NOT MET");
    }
    return met ? 0 : 1;
}
