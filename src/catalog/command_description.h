#pragma once

// Command descriptions of calling libraries: the XML file "uss_<base name>.xml" beside each
// library's own file.

#include <QString>

namespace edw {

// The absolute folder of libraryFile, then "/uss_", its base name (up to the first dot) and
// ".xml"; the separators of the folder stay as given.
QString commandDescriptionPath(const QString& libraryFile);

// Identifiers of the command named command: id gets its "idcat" when the command has one and
// otherwise its "id"; idcat gets its "id" when it has an "idcat". Anything not found leaves
// 0xFFFFFFFF.
struct CommandIds
{
    unsigned int id = 0xFFFFFFFFu;
    unsigned int idcat = 0xFFFFFFFFu;
};
CommandIds lookUpCommandIds(const QString& libraryFile, const QString& command);

} // namespace edw
