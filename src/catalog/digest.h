#pragma once

#include <QByteArray>
#include <QString>

namespace edw {

// MD5 of a file's content, lower-case hexadecimal; empty when the file cannot be read.
QString contentDigest(const QString& path);
// MD5 of bytes, lower-case hexadecimal.
QString contentDigest(const QByteArray& bytes);

} // namespace edw
