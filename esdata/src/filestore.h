// The content-addressed folder of model and fragment files beside a catalog database.
#ifndef ESDATA_FILESTORE_H
#define ESDATA_FILESTORE_H

#include <QString>

#include <cstdint>
#include <vector>

namespace esdata {

struct StoredFile
{
    QString name;   // "<md5><.ext>" inside the folder
    QString digest; // MD5 of the content, lower-case hex
};

// Copies source into folder under the name of its digest (an existing copy is kept). The
// folder must exist.
// False with a reason when the source cannot be read or the copy cannot be written.
bool storeFile(const QString& folder, const QString& source, StoredFile& out, QString& error);

// The same, moving source into the folder instead of copying it where the file system allows;
// source is gone afterwards either way.
bool takeFile(const QString& folder, const QString& source, StoredFile& out, QString& error);

// The whole content of path; false when it is not a readable file.
bool readBytes(const QString& path, std::vector<uint8_t>& out);

} // namespace esdata

#endif
