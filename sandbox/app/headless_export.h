#pragma once

#include "host_calls.h"

#include <QString>
#include <QStringList>

typedef struct es_provider es_provider_t;

namespace sandbox {

class MainWindow;
class MarloUssLibrary;
class ModalScript;

// One call of uss_export_all over window, with the catalog of provider.
CallResult callExportAll(const MarloUssLibrary& library, quintptr window, es_provider_t* provider);
// One call of uss_export_from_list.
CallResult callExportFromList(const MarloUssLibrary& library, const QString& list,
                              const QString& separator, es_provider_t* provider);

// The entries of a ZIP archive as "name (size bytes)", in the archive's order; empty when
// the file is not a readable archive.
QStringList archiveEntries(const QString& path);

// Scripted exports: all elements chosen in the dialog (light, with a picture of the filtered
// tree) and written; the dialog in the dark theme cancelled; a list written; an odd list, a
// list that finds nothing and a catalog without elements, none of which writes. Prints what
// each archive holds. The result's value is the number of runs that did not behave.
CallResult runHeadlessExport(MarloUssLibrary& library, MainWindow& window, ModalScript& script,
                             const QString& workFolder, const QString& shotFolder);

} // namespace sandbox
