// Fuzz target over the exchange archive reader: each input is taken as an archive file and
// read for a target catalog the way an import reads it (document, checks, decisions against
// the catalog's elements, extraction of every entry the document names). Anything other
// than an orderly refusal is a bug: a crash, a sanitizer report or an escaping exception.
// An input that starts with "{" is taken as the document itself and packed, with the files a
// document usually names, into a fresh archive first: mutations of a packed document mostly
// break its checksum, so this is how the document reader gets fuzzed in depth.
#include "exchange/Libs/zipper/zip.h"
#include "exchange/Libs/zipper/ziperror.h"
#include "exchange/document.h"
#include "exchange/importarchive.h"
#include "exchange/importdecision.h"

#include <esdata/esdata.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtGlobal>

#include <cstddef>
#include <cstdint>
#include <string>

namespace {

std::u16string es(const QString& text)
{
    return std::u16string(reinterpret_cast<const char16_t*>(text.utf16()), size_t(text.size()));
}

void silent(QtMsgType, const QMessageLogContext&, const QString&)
{}

// One target catalog for the whole run, holding an element that archives of the corpus name,
// so that decisions meet both new and existing elements.
struct Target
{
    QTemporaryDir dir;
    es_provider_t* provider = nullptr;
    QString input;

    Target()
    {
        qInstallMessageHandler(silent);
        provider = esx_OpenCatalog(es(dir.filePath("target.db")).c_str(), u"user_tx", true);
        es_packet_t* packet = provider_AddPacket(provider, u"Трубы");
        es_folder_t* folder = folder_AddChildFolder(packet_GetRootFolder(packet), u"Отводы");
        es_table_t* table = folder_GetTable(folder);
        es_attribute_t* date =
            table_AddAttribute(table, u"USS_LAST_CHANGE_DATE", u"USS_LAST_CHANGE_DATE", 3);
        es_stdsize_t* element = table_AddStdSize(table, u"1");
        stdsize_SetValueS(element, date, u"01.01.2024 00:00:00");
        input = dir.filePath("input.uss");
    }
};

Target& target()
{
    static Target instance;
    return instance;
}

bool packDocument(const QByteArray& document, const QString& path)
{
    static const QByteArray svg = "<svg xmlns=\"http://www.w3.org/2000/svg\" data-version=\"231\">"
                                  "<g data-layer=\"0\"/></svg>\n";
    static const QByteArray png = QByteArray("\x89PNG\r\n\x1a\n", 8) + QByteArray(32, 'i');
    try {
        zipper::zip archive(path);
        archive.setCompressionLevel(0);
        archive.addBytes(document, "TX.json");
        archive.addBytes(svg, "TX\\model\\1.m3d");
        archive.addBytes(png, "TX\\model\\1.png");
        archive.addBytes(svg, "TX\\prj\\2.frw");
        archive.addBytes(png, "TX\\prj\\2.png");
        archive.addBytes("<repr/>", "TX\\repr\\3.xml");
        archive.commit();
    } catch (const zipper::error&) {
        return false;
    }
    return true;
}

void extractNamed(exchange::ImportArchive& archive, const QString& name)
{
    if (name.isEmpty()) return;
    try {
        archive.extract(name);
    } catch (const zipper::error&) {
        // A damaged entry is an orderly refusal.
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Target& t = target();
    if (!t.provider) return 0;
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    if (bytes.startsWith('{')) {
        // Read element by element or as one tree (a comment first keeps the document whole),
        // the document must give the same records.
        const auto split = exchange::parseDocument(bytes);
        const auto whole = exchange::parseDocument("//\n" + bytes);
        if (bool(split) != bool(whole)) __builtin_trap();
        if (split) {
            if (split->records.size() != whole->records.size()) __builtin_trap();
            for (size_t i = 0; i < split->records.size(); ++i)
                if (split->records[i].describe() != whole->records[i].describe()) __builtin_trap();
        }
        if (!packDocument(bytes, t.input)) return 0;
    } else {
        QFile file(t.input);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) return 0;
        file.write(bytes);
    }
    exchange::ImportArchive archive;
    if (archive.open(t.input, t.provider) != exchange::ImportArchive::Status::Ok) {
        // Every refusal has its user text.
        if (archive.errorText().isEmpty()) __builtin_trap();
        return 0;
    }
    exchange::ImportRecords& records = archive.records();
    exchange::decide(records, t.provider);
    for (const exchange::ImportRecord& head : records) {
        const exchange::ImportElement record = archive.element(head);
        if (record.model) {
            extractNamed(archive, record.model->file);
            extractNamed(archive, record.model->icon);
        }
        for (const exchange::ProjectionRecord& projection : record.prj) {
            extractNamed(archive, projection.file);
            extractNamed(archive, projection.icon);
        }
        if (record.repPath) extractNamed(archive, *record.repPath);
    }
    // Whatever was extracted stays inside the import's own temporary folder.
    const QString folder = archive.temporaryFolder();
    if (!folder.isEmpty() && !QDir(folder).exists()) __builtin_trap();
    return 0;
}
