#pragma once

// The exchange core in one include: exchange archives of user elements, written from a
// catalog and read back into one, without any dialog. The dialogs and the command line both
// drive it.
//
// Export:
//   auto elements = exchange::collectElements(provider);       // or a chosen list
//   bool ok = ExportUss::Export(path, elements, previousVersion, progress);
//   archive extension for a catalog: exchange::archiveExtension(provider) ("vos" / "uss")
//
// Import, step by step (what the import dialog does):
//   exchange::ImportArchive archive;
//   if (archive.open(path, provider) != exchange::ImportArchive::Status::Ok)
//       -> archive.errorText()
//   auto decisions = exchange::decide(archive.records(), provider);
//   if (!exchange::needsDecision(decisions)) -> exchange::texts::allPresent()
//   exchange::applyPolicy(archive.records(), decisions, policy);   // or set record.skip
//   exchange::compactRecords(archive.records());
//   exchange::ImportWorker worker(archive, provider, archive.records());
//   worker.run();  /* or start() + wait() */   -> worker.finishText()
//
// Import in one call: exchange::importArchive() below.

#include "archivekind.h"
#include "catalogcheck.h"
#include "exchangetexts.h"
#include "exportuss.h"
#include "importarchive.h"
#include "importdecision.h"
#include "importrecord.h"
#include "importworker.h"

#include <atomic>
#include <functional>

namespace exchange {

struct ImportOutcome
{
    ImportArchive::Status status = ImportArchive::Status::NotExportFile;
    // What the user is told at the end: the check's message, "Все импортируемые элементы
    // присутствуют в базе.", or the worker's finishing text.
    QString message;
    int records = 0;   // elements in the archive
    int fresh = 0;     // of them not in the catalog
    int same = 0;      // present with the same change stamp
    int conflicts = 0; // present with another change stamp
    int repeated = 0;  // repeating the packet and id of an earlier record
    int kept = 0;      // handed to the worker
    int written = 0;
    int added = 0;    // written as new elements
    int replaced = 0; // written in place of an element of the catalog
    int skipped = 0;  // kept but could not be created
    // Why records failed or nothing was written (ImportWorker::failureText()), or why the
    // archive was refused where more can be said (ImportArchive::detailText()).
    QString failure;
};

struct ImportOptions
{
    ConflictPolicy conflicts = ConflictPolicy::KeepMine;
    // Called after each record with (done, kept), on the calling thread.
    std::function<void(int, int)> progress;
    // Read before each record: 0 run, 1 pause, 2 stop. May be null.
    std::atomic<int>* state = nullptr;
};

// Reads, checks, decides by policy and writes, all on the calling thread.
ImportOutcome importArchive(const QString& path, es_provider_t* provider,
                            const ImportOptions& options = ImportOptions());

} // namespace exchange
