#include "exchange.h"

namespace exchange {

ImportOutcome importArchive(const QString& path, es_provider_t* provider,
                            const ImportOptions& options)
{
    ImportOutcome outcome;
    ImportArchive archive;
    outcome.status = archive.open(path, provider);
    outcome.records = int(archive.records().size());
    if (outcome.status != ImportArchive::Status::Ok) {
        outcome.message = archive.errorText();
        outcome.failure = archive.detailText();
        return outcome;
    }
    const std::vector<Decision> decisions = decide(archive.records(), provider);
    for (const Decision d : decisions) {
        outcome.fresh += d == Decision::New;
        outcome.same += d == Decision::Same;
        outcome.conflicts += d == Decision::Conflict;
        outcome.repeated += d == Decision::Repeated;
    }
    if (!needsDecision(decisions)) {
        outcome.message = texts::allPresent();
        return outcome;
    }
    applyPolicy(archive.records(), decisions, options.conflicts);
    outcome.kept = int(compactRecords(archive.records()));

    ImportWorker worker(archive, provider, std::move(archive.records()));
    QObject::connect(
        &worker, &ImportWorker::progress, &worker,
        [&](int done) {
            if (options.progress) options.progress(done, outcome.kept);
        },
        Qt::DirectConnection);
    worker.shareState(options.state);
    worker.run();
    outcome.written = worker.written();
    outcome.added = worker.added();
    outcome.replaced = worker.replaced();
    outcome.skipped = worker.skipped();
    outcome.message = worker.finishText();
    outcome.failure = worker.failureText();
    return outcome;
}

} // namespace exchange
