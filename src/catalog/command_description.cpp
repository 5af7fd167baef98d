#include "catalog/command_description.h"

#include <QFileInfo>

#include <pugixml.hpp>

namespace edw {

QString commandDescriptionPath(const QString& libraryFile)
{
    const QFileInfo info(libraryFile);
    QString name = info.fileName();
    const qsizetype dot = name.indexOf(QLatin1Char('.'));
    if (dot >= 0) name.truncate(dot);
    return info.absolutePath() + QStringLiteral("/uss_") + name + QStringLiteral(".xml");
}

CommandIds lookUpCommandIds(const QString& libraryFile, const QString& command)
{
    CommandIds ids;
    pugi::xml_document document;
    const std::wstring path = commandDescriptionPath(libraryFile).toStdWString();
    if (!document.load_file(path.c_str())) return ids;

    try {
        const QString query = QStringLiteral("/*/command[@name='%1']").arg(command);
        const pugi::xpath_node found = document.select_node(query.toUtf8().constData());
        const pugi::xml_node node = found.node();
        if (!node) return ids;
        ids.id = node.attribute("id").as_uint(0xFFFFFFFFu);
        if (const pugi::xml_attribute category = node.attribute("idcat")) {
            // The category id is the one callers ask by; the plain id moves to the second
            // slot.
            ids.idcat = ids.id;
            ids.id = category.as_uint();
        }
    } catch (const pugi::xpath_exception&) {
        // A command name that breaks the query: nothing found.
    }
    return ids;
}

} // namespace edw
