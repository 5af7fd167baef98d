#pragma once

#include <QString>

namespace sandbox {

// Writes the configuration files of the sandbox's libraries below the host's library root
// (the system folder): the piping library of the sample catalog claims its pipes and bends
// and names its toolbar command; the valves are claimed by none. Existing files are kept, so
// a run can be pointed at hand-edited ones. False when a file cannot be written.
bool writeSampleLibraries(const QString& libraryRoot);

} // namespace sandbox
