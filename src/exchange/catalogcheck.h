#pragma once

#include <esdata/esdata.h>

#include <QString>

namespace exchange {

// Why an import cannot write into the catalog, asked before any work: the catalog file or its
// folder is read only, its file folder cannot be written, another writer holds it (waited
// for once, for the store's bounded time), or the store finds damaged pages. Empty when it
// can be written, or when the catalog access module cannot tell.
QString writeProblem(es_provider_t* provider);

// The catalog's database file; empty where the catalog access module does not say.
QString catalogPath(es_provider_t* provider);

// Why the last call into the store failed, as the store says; empty where the catalog access
// module does not say.
QString lastStoreError();
// Whether the store's reason is another writer holding the catalog.
bool isLockError(const QString& reason);

// Removes the files of the catalog's file folder that no model or projection names, left by
// killed imports or by elements replaced since: those whose entry in the folder changed at
// least minAgeSeconds ago, so that files another running import stored just ahead of its
// writes stay. Does nothing where the store cannot tell which files are named. Returns how
// many it removed.
int removeUnusedStoredFiles(es_provider_t* provider, int minAgeSeconds);

} // namespace exchange
