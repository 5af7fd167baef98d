// Opens the element editor (parameter panel read and filled, originals extracted, dialog
// built and shown) on an element of 300 parameters in 20 groups with 12 views, and times it
// against the bare read of the same element through the catalog API: every value by name
// and every stored view file read whole. Prints both medians and their ratio.

#include "catalog/element_ops.h"
#include "catalog/esconvert.h"
#include "catalog/xml_controls.h"
#include "editor/uss_dialog.h"

#include <esdata/esdata.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QLayout>
#include <QTemporaryDir>
#include <QTextStream>

#include <algorithm>
#include <vector>

using namespace edw;

namespace {

constexpr int kGroups = 20;
constexpr int kPerGroup = 15;

QString attributeName(int group, int row)
{
    return QStringLiteral("P%1_%2").arg(group).arg(row);
}

// Types cycle integer, real, text, check, choice.
QByteArray description()
{
    QByteArray xml = "<?xml version=\"1.0\" encoding=\"utf-8\"?><commands><command name=\"big\">"
                     "<ussControlList>";
    for (int g = 0; g < kGroups; ++g) {
        xml += QStringLiteral("<group title=\"Группа %1\"%2>")
                   .arg(g)
                   .arg(g == kGroups - 1 ? " post-hide=\"true\"" : "")
                   .toUtf8();
        for (int r = 0; r < kPerGroup; ++r) {
            const QString name = attributeName(g, r);
            const QString title = QStringLiteral("Параметр %1.%2").arg(g).arg(r);
            QString control;
            switch ((g * kPerGroup + r) % 5) {
            case 0:
                control = "<edit type=\"int\" title=\"%1\" attribute=\"%2\"/>";
                break;
            case 1:
                control = "<edit type=\"float\" title=\"%1\" attribute=\"%2\" required=\"true\"/>";
                break;
            case 2:
                control = "<edit title=\"%1\" attribute=\"%2\" tooltip=\"текст\"/>";
                break;
            case 3:
                control = "<check title=\"%1\" attribute=\"%2\"/>";
                break;
            default:
                control = "<combo title=\"%1\" attribute=\"%2\" values=\"a|b|c\"/>";
            }
            xml += control.arg(title, name).toUtf8();
        }
        xml += "</group>";
    }
    xml += "</ussControlList></command></commands>";
    return xml;
}

uint32_t typeOf(int index)
{
    switch (index % 5) {
    case 0:
    case 3:
        return ES_ATTR_INT;
    case 1:
        return ES_ATTR_REAL;
    default:
        return ES_ATTR_TEXT;
    }
}

es_stdsize_t* bigElement(es_provider_t* provider, const QTemporaryDir& dir)
{
    es_stdsize_t* element = createElement(provider, "Пакет\\Категория", "big", {}, "bench");
    es_table_t* table = stdsize_GetTable(element);
    for (int g = 0; g < kGroups; ++g) {
        for (int r = 0; r < kPerGroup; ++r) {
            const int index = g * kPerGroup + r;
            const std::u16string name = toEs(attributeName(g, r));
            es_attribute_t* a =
                table_AddAttribute(table, name.c_str(), name.c_str(), typeOf(index));
            writeValue(element, a,
                       index % 5 == 2   ? QStringLiteral("значение %1").arg(index)
                       : index % 5 == 4 ? QStringLiteral("b")
                                        : QString::number(index % 2 ? index + 0.5 : index));
        }
    }
    std::vector<ViewFile> views;
    for (int kind = 0; kind < 12; ++kind) {
        const QString file =
            dir.filePath(QStringLiteral("view%1.%2").arg(kind).arg(kind == 11 ? "m3d" : "frw"));
        QFile out(file);
        out.open(QIODevice::WriteOnly);
        out.write(
            QByteArray("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"40\" height=\"20\">") +
            QByteArray(4000, ' ') + "<rect width=\"40\" height=\"20\"/></svg>\n");
        out.close();
        views.push_back({kind, file, {}, {}});
    }
    replaceGraphics(element, views);
    return element;
}

// The bare read: each value by name, each stored view file read whole.
qint64 bareRead(es_packet_t* packet, const std::u16string& id)
{
    QElapsedTimer timer;
    timer.start();
    es_stdsize_t* element = packet_FindStdSize(packet, id.c_str());
    qint64 bytes = 0;
    for (int g = 0; g < kGroups; ++g) {
        for (int r = 0; r < kPerGroup; ++r) {
            es_value value{};
            stdsize_GetValueByName(element, toEs(attributeName(g, r)).c_str(), &value);
            bytes += valueToText(value).size();
        }
    }
    es_projections_t* list = stdsize_GetProjections(element);
    for (uint32_t i = 0; i < projections_GetProjectioCount(list); ++i) {
        QFile file(fromEs(projection_GetFragmentFile(projections_GetProjection(list, i))));
        if (file.open(QIODevice::ReadOnly)) bytes += file.readAll().size();
    }
    QFile model(fromEs(model_GetModelFile(stdsize_GetModel(element))));
    if (model.open(QIODevice::ReadOnly)) bytes += model.readAll().size();
    if (bytes == 0) return -1;
    return timer.nsecsElapsed();
}

qint64 openEditor(es_packet_t* packet, const std::u16string& id, const QString& commands,
                  const QString& work)
{
    QElapsedTimer timer;
    timer.start();
    es_stdsize_t* element = packet_FindStdSize(packet, id.c_str());
    ControlList panel = readControlList(commands, "big");
    fillValues(panel, element);
    const qint64 read = timer.nsecsElapsed();
    UssDialog dialog(nullptr, element, panel, commands, {"big"}, {}, {}, UssDialog::Edit, work, {},
                     false, 0);
    const qint64 built = timer.nsecsElapsed();
    qint64 polished = 0, laidOut = 0;
    if (qEnvironmentVariableIsSet("BENCH_PARTS")) {
        dialog.ensurePolished();
        polished = timer.nsecsElapsed();
        dialog.layout()->activate();
        laidOut = timer.nsecsElapsed();
    }
    dialog.show();
    QCoreApplication::processEvents();
    if (qEnvironmentVariableIsSet("BENCH_PARTS"))
        QTextStream(stderr) << "read " << read / 1e6 << " built " << (built - read) / 1e6
                            << " polished " << (polished - built) / 1e6 << " laid out "
                            << (laidOut - polished) / 1e6 << " shown "
                            << (timer.nsecsElapsed() - laidOut) / 1e6 << Qt::endl;
    const qint64 elapsed = timer.nsecsElapsed();
    dialog.hide();
    // BENCH_PARTS=1: where the time goes (without extraction, without a panel).
    if (qEnvironmentVariableIsSet("BENCH_PARTS")) {
        QElapsedTimer t;
        t.start();
        UssDialog noFiles(nullptr, element, panel, commands, {"big"}, {}, {}, UssDialog::Edit,
                          QString(), {}, false, 0);
        const qint64 a = t.nsecsElapsed();
        UssDialog noPanel(nullptr, element, {}, commands, {"big"}, {}, {}, UssDialog::Edit,
                          QString(), {}, false, 0);
        QTextStream(stderr) << "no files " << a / 1e6 << " no panel "
                            << (t.nsecsElapsed() - a) / 1e6 << Qt::endl;
    }
    return elapsed;
}

double median(std::vector<qint64> values)
{
    std::sort(values.begin(), values.end());
    return double(values[values.size() / 2]) / 1e6;
}

} // namespace

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    const int runs = argc > 1 ? std::max(3, atoi(argv[1])) : 15;
    QTemporaryDir dir;
    const QString commands = dir.filePath("uss_big.xml");
    {
        QFile out(commands);
        out.open(QIODevice::WriteOnly);
        out.write(description());
    }
    es_provider_t* provider =
        esx_OpenCatalog(toEs(dir.filePath("bench.db")).c_str(), u"user_tx", true);
    es_stdsize_t* element = bigElement(provider, dir);
    if (!element) {
        QTextStream(stderr) << "could not build the element" << Qt::endl;
        return 1;
    }
    const std::u16string id = toEs(fromEs(stdsize_GetID(element)));
    es_packet_t* packet = provider_GetPacket(provider, 0);

    // One of each first, so that both start warm.
    bareRead(packet, id);
    openEditor(packet, id, commands, dir.filePath("work"));
    std::vector<qint64> bare, editor;
    for (int i = 0; i < runs; ++i) {
        bare.push_back(bareRead(packet, id));
        editor.push_back(openEditor(packet, id, commands, dir.filePath("work")));
    }
    const double b = median(bare), e = median(editor);
    QTextStream(stdout) << QStringLiteral(
                               "element of %1 parameters in %2 groups, 12 views; %3 runs\n"
                               "bare read through the catalog API: %4 ms (median)\n"
                               "editor opened and shown:           %5 ms (median)\n"
                               "ratio: %6x\n")
                               .arg(kGroups * kPerGroup)
                               .arg(kGroups)
                               .arg(runs)
                               .arg(b, 0, 'f', 3)
                               .arg(e, 0, 'f', 3)
                               .arg(e / b, 0, 'f', 1);
    esx_CloseCatalog(provider);
    return 0;
}
