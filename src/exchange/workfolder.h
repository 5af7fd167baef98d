#pragma once

#include <QString>

namespace exchange {

// Working folders of exports and imports are named prefix + process id + "_" + six random
// characters, so that the next operation can remove what a killed or crashed process left.

// The QTemporaryDir template of a working folder of this process under parent.
QString workFolderTemplate(const QString& parent, const QString& prefix);
// Removes every folder or file under parent named prefix + process id (followed by "_", "."
// or nothing) whose process no longer runs: working folders by the template above, partial
// archives. Those of running processes, this one included, are left alone.
void removeStaleLeftovers(const QString& parent, const QString& prefix);

// Working folders of imports (in the temporary folder) and of exports (in
// ExportUss::workingFolder()) start with these.
inline constexpr char16_t importFolderPrefix[] = u"uss_import_";
inline constexpr char16_t exportFolderPrefix[] = u"export_";
// The partial archive of a target file name: "." + name + ".part-" + process id + ... beside
// the target.
QString partialPrefix(const QString& targetFileName);

// What ended processes left, removed by the next export or import of any kind: the working
// folders of exports and imports, and the partial archives of any target in folder (the
// folder of the archive the operation writes or reads).
void sweepLeftovers(const QString& folder);

} // namespace exchange
