#pragma once

#include <QString>

#include <map>

namespace edw {

// The folder last used for each of the twelve view kinds (0..11), kept from one run to the
// next in "aec/marlouss/settings.json" under the host's folder of kind 3 (or, without a
// host that reports it, the per-user configuration folder).
using ViewFolders = std::map<int, QString>;

// The remembered file's path, fixed on first use for the life of the process.
QString settingsFilePath();

// Fills folders from the file (every kind, empty for a missing key). A missing file changes
// nothing; an unreadable one reads as empty.
void loadViewFolders(ViewFolders& folders);
void loadViewFolders(ViewFolders& folders, const QString& file);

// Writes all twelve kinds (each must be in folders: std::out_of_range otherwise), creating the
// file's folder when needed (std::filesystem::filesystem_error "create_directories" when it
// cannot be made).
void saveViewFolders(const ViewFolders& folders);
void saveViewFolders(const ViewFolders& folders, const QString& file);

// The JSON key of a view kind ("common_top_path" ... "m3d_path"); empty outside 0..11.
QString viewFolderKey(int kind);

} // namespace edw
