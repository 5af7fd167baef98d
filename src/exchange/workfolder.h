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

} // namespace exchange
