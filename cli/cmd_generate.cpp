#include "commandline.h"
#include "commands.h"
#include "common.h"
#include "terminalprogress.h"

#include "gen/synthetic_catalog.h"

#include <QFileInfo>

#include <algorithm>
#include <limits>

namespace ussctl {

namespace {

int count(const CommandLine& line, const QString& name, int fallback)
{
    const qint64 value = line.number(name, fallback);
    if (value > std::numeric_limits<int>::max()) {
        throw CommandError(ExitUsage, QString("ussctl generate: --%1 is too large\n"
                                              "Try 'ussctl generate --help'.")
                                          .arg(name));
    }
    return int(value);
}

// Options that make no sensible catalog at 0 (no packet to hold the elements, empty files).
qint64 atLeastOne(const QString& name, qint64 value)
{
    if (value < 1) {
        throw CommandError(ExitUsage, QString("ussctl generate: --%1 must be at least 1\n"
                                              "Try 'ussctl generate --help'.")
                                          .arg(name));
    }
    return value;
}

} // namespace

int runGenerate(const QStringList& args)
{
    CommandLine line(
        "generate", "--kind <vo|tx|vk|ov> [options] <catalog>",
        "Creates a catalog filled with synthetic elements, the same for the same options\n"
        "and seed. Each element has its own folder below category folders, the given number\n"
        "of attributes (among them USS_AUTHOR and USS_LAST_CHANGE_DATE), a model and\n"
        "projections drawn from a set of distinct files (half of them compressible text,\n"
        "half random bytes) with icons, representation data and a specification record.\n"
        "The generated files are kept in <catalog>.src beside the catalog.");
    line.addOption({{"k", "kind"}, "Catalog kind: vo, tx, vk or ov.", "kind"});
    line.addOption({{"e", "elements"}, "Number of elements (default 1000).", "n"});
    line.addOption({{"a", "attributes"}, "Attributes per element (default 40).", "n"});
    line.addOption({{"f", "files"},
                    "Distinct model and fragment files in all, half of each (default 100).",
                    "n"});
    line.addOption({"file-size", "Size of each model or fragment file in KiB (default 8).", "kib"});
    line.addOption({"packets", "Number of packets (default 4).", "n"});
    line.addOption({"projections", "Projections per element (default 2).", "n"});
    line.addOption({"seed", "Seed of the generator (default 1).", "n"});
    line.addOption({"no-model", "Elements without a model."});
    line.addOption({"no-representation", "Elements without representation data."});
    line.addOption({"no-specification", "Elements without a specification record."});
    line.parse(args, 1, 1);
    if (!line.isSet("kind")) {
        throw CommandError(ExitUsage, "ussctl generate: --kind is required\n"
                                      "Try 'ussctl generate --help'.");
    }
    const Kind& kind = kindByName(line.value("kind"));

    gen::Options options;
    options.catalogPath = line.positional().at(0);
    options.databaseName = kind.databaseName;
    options.elements = count(line, "elements", 1000);
    options.attributes = count(line, "attributes", 40);
    options.packets = int(atLeastOne("packets", count(line, "packets", 4)));
    options.projections = count(line, "projections", 2);
    options.model = !line.isSet("no-model");
    options.representation = !line.isSet("no-representation");
    options.specification = !line.isSet("no-specification");
    options.seed = uint64_t(line.number("seed", 1));
    const qint64 kib = atLeastOne("file-size", line.number("file-size", 8));
    if (kib > 1024 * 1024) {
        throw CommandError(ExitUsage, "ussctl generate: --file-size is at most 1048576 KiB\n"
                                      "Try 'ussctl generate --help'.");
    }
    options.fileSize = int(kib * 1024);
    // The generator draws models and fragments each from their own set of distinct files.
    const int files = count(line, "files", 100);
    const bool both = options.model && options.projections > 0;
    options.distinctFiles = std::max(1, both ? (files + 1) / 2 : files);

    if (QFileInfo::exists(options.catalogPath)) {
        throw CommandError(ExitFailed, QString("file already exists: %1").arg(options.catalogPath));
    }
    TerminalProgress progress(TerminalProgress::stderrIsTerminal());
    progress.begin("generating", options.elements);
    const gen::Result result = gen::generateCatalog(options, [&progress](int done, int) {
        progress.setValue(done);
        return true;
    });
    progress.end();
    if (!result.ok) {
        throw CommandError(
            ExitFailed, QString("cannot generate %1: %2").arg(options.catalogPath, result.error));
    }
    out(QString("generated %1 (%2): %3 elements, %4 files of %5 bytes in all\n")
            .arg(options.catalogPath, kind.databaseName)
            .arg(result.elements)
            .arg(result.files)
            .arg(result.fileBytes));
    return ExitOk;
}

} // namespace ussctl
