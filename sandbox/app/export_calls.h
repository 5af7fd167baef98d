#pragma once

// Which exports of the library the host called: the main job must call every export that the
// library's public header declares.

#include <QString>
#include <QStringList>

namespace sandbox {

// Records the export named at the start of a call's line ("name(arguments) -> result"). Lines
// of exports the library does not have ("name: not exported...") record nothing.
void noteExportCalled(const QString& callLine);

// The exports declared in include/marlouss/marlouss.h, in its order.
QStringList declaredExports();

// The declared exports that were not called since the process started.
QStringList exportsNotCalled();

} // namespace sandbox
