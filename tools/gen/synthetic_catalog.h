// Synthetic user-element catalogs, filled through the catalog access C API: for benchmarks,
// tests of other subsystems and the command line's "generate".
#ifndef GEN_SYNTHETIC_CATALOG_H
#define GEN_SYNTHETIC_CATALOG_H

#include "esdata/esdata.h"

#include <QString>

#include <cstdint>
#include <functional>

namespace gen {

struct Options
{
    // The catalog file to create (or to add to) and the database name given to a new one.
    QString catalogPath;
    QString databaseName = QStringLiteral("user_tx");
    // Folder for the generated model, fragment and icon files; empty: "<catalogPath>.src".
    QString filesFolder;

    int elements = 1000;
    int packets = 4;
    int categoryDepth = 2;      // category folders between a packet's root and element folders
    int categoriesPerLevel = 3; // choices at each category level
    int attributes = 40;        // per element (its table); at least the bookkeeping ones
    bool model = true;
    int projections = 2;    // per element
    int distinctFiles = 50; // distinct model and fragment files to draw from (each)
    int fileSize = 8192;    // approximate bytes per model or fragment file
    bool representation = true;
    bool specification = true;
    uint64_t seed = 1;
    int elementsPerScope = 250; // elements written in one all-or-nothing scope
};

struct Result
{
    bool ok = false;
    QString error;
    int elements = 0; // elements written
    int files = 0;    // model and fragment files generated
    qint64 fileBytes = 0;
};

// Called after each element with (done, total); returning false stops the generation after
// the current scope.
using Progress = std::function<bool(int done, int total)>;

// Opens or creates options.catalogPath and fills it. The same options and seed give the same
// catalog content.
Result generateCatalog(const Options& options, const Progress& progress = {});

// Fills an open catalog.
Result fillCatalog(es_provider_t* provider, const Options& options, const Progress& progress = {});

} // namespace gen

#endif
