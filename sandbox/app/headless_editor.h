#pragma once

#include "host_calls.h"

#include <QString>

namespace sandbox {

class MainWindow;
class MarloUssLibrary;
class ModalScript;

// Scripted runs of the element editor through uss_create_clone_edit: create, clone and edit
// that fill fields, pick files and press OK, and runs that hit each accept warning. Prints
// what was written and saves pictures of both tabs, light and dark. The result's value is
// the number of runs that did not behave.
CallResult runHeadlessEditor(MarloUssLibrary& library, MainWindow& window, ModalScript& script,
                             const QString& workFolder, const QString& shotFolder);

} // namespace sandbox
