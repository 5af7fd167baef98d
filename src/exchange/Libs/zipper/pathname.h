#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

#include <filesystem>

namespace zipper {

// A path as libzip takes it: UTF-8 on Windows (libzip widens it itself), the file system's
// own encoding elsewhere. The local code page of Windows cannot hold every name.
inline QByteArray libzipPath(const QString& path)
{
#ifdef Q_OS_WIN
    return path.toUtf8();
#else
    return QFile::encodeName(path);
#endif
}

inline std::filesystem::path fsPath(const QString& path)
{
    return std::filesystem::path(path.toStdU16String());
}

} // namespace zipper
