#include "commandline.h"
#include "commands.h"
#include "common.h"
#include "stderrmessenger.h"
#include "terminalprogress.h"

#include "catalog/esconvert.h"
#include "exchange/catalogcheck.h"
#include "exchange/exchangetexts.h"
#include "exchange/importarchive.h"
#include "exchange/importdecision.h"
#include "exchange/importworker.h"

#include <esdata/esdata.h>

#include <QFileInfo>
#include <QObject>

#include <atomic>
#include <csignal>

namespace ussctl {

namespace {

const QString dateAttribute = QStringLiteral("USS_LAST_CHANGE_DATE");
const QString authorAttribute = QStringLiteral("USS_AUTHOR");

QString elementValue(es_stdsize_t* element, const QString& name)
{
    es_value value{};
    if (!stdsize_GetValueByName(element, toEs(name).c_str(), &value)) return QString();
    return edw::valueToText(value);
}

QString decisionName(exchange::Decision decision)
{
    switch (decision) {
    case exchange::Decision::New:
        return "new";
    case exchange::Decision::Same:
        return "same";
    case exchange::Decision::Conflict:
        return "conflict";
    case exchange::Decision::Repeated:
        return "repeated";
    }
    return QString();
}

void printDryRun(const exchange::ImportRecords& records,
                 const std::vector<exchange::Decision>& decisions)
{
    int counts[4] = {0, 0, 0, 0};
    for (size_t i = 0; i < records.size(); ++i) {
        const exchange::ImportRecord& record = records[i];
        const exchange::Decision decision = decisions[i];
        ++counts[int(decision)];
        QString line = QString("%1 \"%2\" \"%3\"")
                           .arg(decisionName(decision), -8)
                           .arg(record.packet, record.id);
        if (decision == exchange::Decision::Conflict) {
            line += QString(": mine %1 by %2, incoming %3 by %4")
                        .arg(elementValue(record.existing, dateAttribute),
                             elementValue(record.existing, authorAttribute),
                             record.value(dateAttribute), record.value(authorAttribute));
        }
        out(line + "\n");
    }
    out(QString("dry run: new %1, same %2, conflict %3, repeated %4; nothing written\n")
            .arg(counts[int(exchange::Decision::New)])
            .arg(counts[int(exchange::Decision::Same)])
            .arg(counts[int(exchange::Decision::Conflict)])
            .arg(counts[int(exchange::Decision::Repeated)]));
}

// The worker's state word: Ctrl+C sets it to stop, the worker finishes the element in hand.
std::atomic<int> stopWord{exchange::ImportWorker::Run};

extern "C" void stopOnInterrupt(int)
{
    stopWord.store(exchange::ImportWorker::Stop);
    // A second Ctrl+C ends the process at once.
    std::signal(SIGINT, SIG_DFL);
}

// Ctrl+C stops the import instead of the process while the guard lives.
struct InterruptGuard
{
    InterruptGuard() { std::signal(SIGINT, stopOnInterrupt); }
    ~InterruptGuard() { std::signal(SIGINT, SIG_DFL); }
};

} // namespace

int runImport(const QStringList& args)
{
    CommandLine line(
        "import", "[--policy keep|replace] [--dry-run] <catalog> <archive>",
        "Imports the elements of an exchange archive into a catalog. An element that the\n"
        "catalog already holds with the same change date is left alone; one changed at\n"
        "another moment is a conflict, kept as it is (keep, the default) or replaced by the\n"
        "incoming element (replace). A later element of the archive with the packet and id\n"
        "of an earlier one is repeated and never imported. --dry-run prints, for each\n"
        "element of the archive, new, same, conflict or repeated, and writes nothing.");
    line.addOption({{"p", "policy"},
                    "What to do with conflicts: keep (default) or replace.",
                    "policy",
                    "keep"});
    line.addOption({{"n", "dry-run"}, "Print the decisions only; write nothing."});
    line.parse(args, 2, 2);
    const QString policyName = line.value("policy");
    if (policyName != "keep" && policyName != "replace") {
        throw CommandError(ExitUsage, QString("ussctl import: unknown policy '%1' (expected "
                                              "keep or replace)\nTry 'ussctl import --help'.")
                                          .arg(policyName));
    }
    const auto policy = policyName == "replace" ? exchange::ConflictPolicy::ReplaceWithImported
                                                : exchange::ConflictPolicy::KeepMine;
    const QString archivePath = line.positional().at(1);
    const bool dryRun = line.isSet("dry-run");
    Catalog catalog = Catalog::open(line.positional().at(0), dryRun);
    catalog.kind(); // an unknown kind is refused before the archive is read
    if (!QFileInfo(archivePath).isFile())
        throw CommandError(ExitNotFound, QString("archive not found: %1").arg(archivePath));
    // A catalog that cannot be written is told before any work.
    if (!dryRun) {
        if (const QString problem = exchange::writeProblem(catalog.provider()); !problem.isEmpty())
            throw CommandError(ExitFailed, problem);
    }

    StderrMessenger messenger;
    MessengerGuard guard(&messenger);
    exchange::ImportArchive archive;
    if (archive.open(archivePath, catalog.provider()) != exchange::ImportArchive::Status::Ok) {
        const QString detail = archive.detailText();
        throw CommandError(ExitFailed, detail.isEmpty() ? archive.errorText()
                                                        : archive.errorText() + "\n" + detail);
    }

    exchange::ImportRecords& records = archive.records();
    const std::vector<exchange::Decision> decisions = exchange::decide(records, catalog.provider());
    if (dryRun) {
        printDryRun(records, decisions);
        return ExitOk;
    }
    if (!exchange::needsDecision(decisions)) {
        messenger.information(QString(), exchange::texts::allPresent());
        out("imported 0 of 0 (new 0, replaced 0)\n");
        return ExitOk;
    }
    exchange::applyPolicy(records, decisions, policy);
    exchange::compactRecords(records);

    TerminalProgress progress(TerminalProgress::stderrIsTerminal());
    exchange::ImportWorker worker(archive, catalog.provider(), std::move(records));
    worker.setCheckFirst(false);
    stopWord.store(exchange::ImportWorker::Run);
    worker.shareState(&stopWord);
    InterruptGuard interrupts;
    QObject::connect(&worker, &exchange::ImportWorker::progress,
                     [&progress](int done) { progress.setValue(done); });
    progress.begin("Импорт пользовательских элементов:", worker.total());
    worker.run();
    progress.end();

    const bool complete = worker.written() == worker.total();
    if (complete)
        messenger.information(QString(), worker.finishText());
    else
        messenger.critical(QString(), worker.finishText());
    if (!worker.failureText().isEmpty()) messenger.critical(QString(), worker.failureText());
    out(QString("imported %1 of %2 (new %3, replaced %4)\n")
            .arg(worker.written())
            .arg(worker.total())
            .arg(worker.added())
            .arg(worker.replaced()));
    return complete ? ExitOk : ExitFailed;
}

} // namespace ussctl
