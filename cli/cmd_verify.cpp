#include "commandline.h"
#include "commands.h"
#include "common.h"

#include "exchange/Libs/zipper/unzip.h"
#include "exchange/Libs/zipper/ziperror.h"
#include "exchange/importarchive.h"

#include <QFileInfo>
#include <QSet>

namespace ussctl {

namespace {

// The kind whose document the archive holds, in the table's order; null when none.
const Kind* detectKind(const QString& path)
{
    try {
        zipper::unzip archive(path);
        for (const Kind& kind : kinds()) {
            if (archive.contains(kind.key + ".json")) return &kind;
        }
    } catch (const zipper::error& e) {
        out(QString("not a readable ZIP archive: %1\n").arg(QString::fromUtf8(e.what())));
    }
    return nullptr;
}

// Entry names the archive's elements refer to, each once, in the order of first mention.
// The elements are read back one at a time.
QStringList referencedEntries(const exchange::ImportArchive& archive)
{
    QStringList names;
    QSet<QString> seen;
    const auto add = [&](const QString& name) {
        // "a/b" and "a\b" are one entry: read once.
        const QString key = zipper::unzip::normalized(name);
        if (!name.isEmpty() && !seen.contains(key)) {
            seen.insert(key);
            names.append(name);
        }
    };
    for (const exchange::ImportRecord& head : archive.records()) {
        const exchange::ImportElement record = archive.element(head);
        if (record.model) {
            add(record.model->file);
            add(record.model->icon);
        }
        for (const exchange::ProjectionRecord& projection : record.prj) {
            add(projection.file);
            add(projection.icon);
        }
        if (record.repPath) add(*record.repPath);
    }
    return names;
}

} // namespace

int runVerify(const QStringList& args)
{
    CommandLine line("verify", "[--kind <vo|tx|vk|ov>] <archive>",
                     "Checks an exchange archive without a catalog: the document of the kind\n"
                     "(found by its name unless --kind is given) and the types of its members,\n"
                     "that every entry it names is present, and that every such entry reads to\n"
                     "its end with a correct checksum. Exit code 0 when all is well, 1 otherwise.");
    line.addOption({{"k", "kind"}, "Expect the document of this kind: vo, tx, vk or ov.", "kind"});
    line.parse(args, 1, 1);
    const Kind* kind = line.isSet("kind") ? &kindByName(line.value("kind")) : nullptr;
    const QString path = line.positional().at(0);
    if (!QFileInfo(path).isFile())
        throw CommandError(ExitNotFound, QString("archive not found: %1").arg(path));

    out(QString("archive %1\n").arg(path));
    if (!kind) kind = detectKind(path);
    if (!kind) {
        out("no exchange document (vobject.json, TX.json, VK.json or OV.json)\nFAILED\n");
        return ExitFailed;
    }
    out(QString("kind %1, document %2.json\n").arg(kind->name, kind->key));

    exchange::ImportArchive archive;
    if (archive.open(path, kind->key) != exchange::ImportArchive::Status::Ok) {
        out(archive.errorText() + "\nFAILED\n");
        return ExitFailed;
    }
    out(QString("export date %1\n").arg(archive.header().exportDate));
    out(QString("elements %1\n").arg(archive.records().size()));

    const QStringList names = referencedEntries(archive);
    int problems = 0;
    for (const QString& name : names) {
        try {
            // Read through, not extracted: a large archive needs no room to be checked.
            if (!archive.check(name)) {
                ++problems;
                out(QString("%1: missing\n").arg(name));
            }
        } catch (const zipper::error& e) {
            ++problems;
            out(QString("%1: %2\n").arg(name, QString::fromUtf8(e.what())));
        }
    }
    out(QString("entries %1 referenced, %2 read with correct checksums\n")
            .arg(names.size())
            .arg(names.size() - problems));
    out(problems == 0 ? "ok\n" : "FAILED\n");
    return problems == 0 ? ExitOk : ExitFailed;
}

} // namespace ussctl
