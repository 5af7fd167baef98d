#include "commandline.h"
#include "commands.h"
#include "common.h"

namespace ussctl {

int runCreate(const QStringList& args)
{
    CommandLine line("create", "--kind <vo|tx|vk|ov> <catalog>",
                     "Creates an empty user catalog of the given kind. The database is named\n"
                     "user_vo, user_tx, user_vk or user_ov after the kind.");
    line.addOption({{"k", "kind"}, "Catalog kind: vo, tx, vk or ov.", "kind"});
    line.parse(args, 1, 1);
    if (!line.isSet("kind"))
        throw CommandError(ExitUsage, "ussctl create: --kind is required\n"
                                      "Try 'ussctl create --help'.");
    const Kind& kind = kindByName(line.value("kind"));
    const QString path = line.positional().at(0);
    Catalog catalog = Catalog::create(path, kind);
    catalog.close();
    out(QString("created %1 (%2)\n").arg(path, kind.databaseName));
    return ExitOk;
}

} // namespace ussctl
