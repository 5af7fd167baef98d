#pragma once

// The texts and results of the questions asked when drawings are produced from a building
// model: the title of the "drawing exists" question and the result buffers of the folder and
// file choosers.

#include <QString>

namespace edw {

// "Чертеж <name>.cdw уже существует", the name being the part of path after its last "\"
// less its last four characters (the extension), or that part whole when shorter than four.
QString existingDrawingTitle(const QString& path);

// Every "/" turned into "\".
QString withBackslashes(QString path);

// The export result buffers, one per chooser: each call replaces the text and returns the
// same buffer's address, valid until the next call of the same function.
wchar_t* keepDirectoryResult(const QString& folder);
wchar_t* keepFileSavingResult(const QString& file);

} // namespace edw
