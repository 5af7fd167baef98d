#pragma once

#include <QFile>
#include <QString>

#include <pugixml.hpp>

namespace edw {

// Loads an XML file whatever characters its path holds.
inline pugi::xml_parse_result loadXmlFile(pugi::xml_document& doc, const QString& path)
{
#if defined(_WIN32)
    return doc.load_file(reinterpret_cast<const wchar_t*>(path.utf16()));
#else
    return doc.load_file(QFile::encodeName(path).constData());
#endif
}

} // namespace edw
