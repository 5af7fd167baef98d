#pragma once

#include "host_calls.h"

#include <esdata/esdata.h>

#include <QString>

namespace sandbox {

class MainWindow;
class MarloUssLibrary;
class ModalScript;

// uss_import as a host library calls it: into the catalog of provider, over window.
CallResult callImport(const MarloUssLibrary& library, quintptr window, es_provider_t* provider);

// Scripted imports through uss_import into a second catalog that holds older versions of
// some sample elements: an import with new rows, conflicts, a record with the same change
// stamp and one made by a later host version, paused once by the user and resumed with OK;
// the decisions cancelled in the dark theme; an archive whose elements are all present; a file
// that is no archive. Prints what each import told and saves pictures of its dialogs. The result's value is the number of runs
// that did not behave.
CallResult runHeadlessImport(MarloUssLibrary& library, MainWindow& window, ModalScript& script,
                             const QString& workFolder, const QString& shotFolder);

} // namespace sandbox
