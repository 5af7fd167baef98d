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
    QString digest; // MD5 of the stored bytes, lower-case hex
};

// Stores source in folder (which must exist) under the MD5 of the bytes actually stored: the
// bytes are hashed as they are copied, and the copy is named only once it is whole and on the
// disk. With move the file is renamed into the folder where the file system allows (and
// hashed there), and source is gone afterwards. Throws StoreError: Failed when source cannot
// be read, Write when the copy, its sync or its rename fails.
StoredFile storeFile(const QString& folder, const QString& source, bool move);

// The whole content of path; false when it is not a readable file.
bool readBytes(const QString& path, std::vector<uint8_t>& out);

} // namespace esdata

#endif
