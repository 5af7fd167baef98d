#pragma once

#include <QString>

namespace exchange {

// Working folders of exports and imports are named prefix + process id + "_" + six random
// characters, so that the next operation can remove what a killed or crashed process left.

// The QTemporaryDir template of a working folder of this process under parent.
QString workFolderTemplate(const QString& parent, const QString& prefix);
// Removes every folder under parent named by the template above whose process no longer
// runs. Folders of running processes, this one included, are left alone.
void removeStaleWorkFolders(const QString& parent, const QString& prefix);

} // namespace exchange
