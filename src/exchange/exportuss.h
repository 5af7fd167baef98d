#pragma once

#include <esdata/esdata.h>

#include <QString>

#include <vector>

namespace edw {
class IProgress;
}

namespace exchange {

// Every element of the catalog: packets in the catalog's order, then folders depth first from
// each packet's root folder, the elements of each folder's table in their order.
std::vector<es_stdsize_t*> collectElements(es_provider_t* provider);

struct ExportOptions
{
    // The header's export-date; empty means now. Set for byte-identical golden files.
    QString exportDate;
    // Deflate level of the entries.
    int compressionLevel = 6;
};

} // namespace exchange

// The export writer: puts elements of one catalog into an exchange archive.
//
//   std::vector<es_stdsize_t*> elements = exchange::collectElements(provider);
//   if (!ExportUss::Export("/tmp/out.uss", elements, false, myProgress))
//       ... // the failure was already told through edw::messenger() when it has a text
//
// The archive is written to a temporary file beside path and renamed over it only when
// complete, so a failure leaves an existing file at path as it was. Files are streamed from
// the catalog's folder; no file is held in memory whole. The document and the large files
// are deflated on two threads into part archives of the export's own working folder first,
// so the temporary folder needs about the archive's size while an export runs.
class ExportUss
{
public:
    using Options = exchange::ExportOptions;

    // Writes elements (all of one catalog) into the archive at path. With previousVersion
    // every model and fragment is stored as re-saved by the host in the earlier file format.
    // Progress runs from 0 to twice the number of elements. Returns true when the archive
    // was written. Throws std::runtime_error("Unknown user database") for a catalog of
    // unknown kind.
    static bool Export(const QString& path, const std::vector<es_stdsize_t*>& elements,
                       bool previousVersion);
    static bool Export(const QString& path, const std::vector<es_stdsize_t*>& elements,
                       bool previousVersion, edw::IProgress& progress,
                       const Options& options = Options());

    // The parent of the exports' working folders ("uss_export" in the system temporary
    // folder). Each export works in a unique folder inside it, removed when it ends.
    static QString workingFolder();
};
