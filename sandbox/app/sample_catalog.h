#pragma once

#include <QString>

typedef struct es_provider es_provider_t;

namespace sandbox {

// Opens the catalog at path in the embedded store; on first run (no file yet) creates it as a
// "user_tx" database with a few packets ("ПЭ_Трубы", ...), category folders, and elements
// with attributes, an SVG fragment per element and a model. Null when the file cannot be
// opened as a catalog; error then says why.
es_provider_t* openSampleCatalog(const QString& path, QString* error);

// Number of elements below the provider's packets (for the host's report).
int elementCount(es_provider_t* provider);

} // namespace sandbox
