#include "update/rtw_register.h"

#include <utility>

namespace edw {
namespace {

bool isSeparator(QChar c)
{
    return c == u'\\' || c == u'/';
}

struct PathParts
{
    QString rootName;
    bool rootSeparator = false;
    // The rest with every run of separators as one U+0000, which orders before any other
    // character.
    QString rest;
};

PathParts split(const QString& path)
{
    PathParts parts;
    qsizetype i = 0;
    const qsizetype n = path.size();
    if (n >= 2 && path[1] == u':' && path[0].isLetter()) {
        parts.rootName = path.left(2);
        i = 2;
    } else if (n >= 3 && isSeparator(path[0]) && isSeparator(path[1]) && !isSeparator(path[2])) {
        // A network prefix: the two separators and the server's name.
        i = 2;
        while (i < n && !isSeparator(path[i]))
            ++i;
        parts.rootName = path.left(i);
    }
    if (i < n && isSeparator(path[i])) {
        parts.rootSeparator = true;
        while (i < n && isSeparator(path[i]))
            ++i;
    }
    parts.rest.reserve(n - i);
    while (i < n) {
        if (isSeparator(path[i])) {
            parts.rest.append(QChar(u'\0'));
            while (i < n && isSeparator(path[i]))
                ++i;
        } else {
            parts.rest.append(path[i++]);
        }
    }
    return parts;
}

char16_t foldLetter(char16_t c)
{
    if (c >= u'a' && c <= u'z') return char16_t(c - u'a' + u'A');
    if (c >= u'а' && c <= u'я') return char16_t(c - u'а' + u'А');
    if (c == u'ё') return u'Ё';
    return c;
}

} // namespace

bool rtwPathLess(const QString& a, const QString& b)
{
    const PathParts x = split(a);
    const PathParts y = split(b);
    if (const int c = QString::compare(x.rootName, y.rootName, Qt::CaseSensitive)) return c < 0;
    if (x.rootSeparator != y.rootSeparator) return !x.rootSeparator;
    return QString::compare(x.rest, y.rest, Qt::CaseSensitive) < 0;
}

bool rtwNamesMatch(const QString& a, const QString& b)
{
    if (a.size() != b.size()) return false;
    for (qsizetype i = 0; i < a.size(); ++i)
        if (foldLetter(a[i].unicode()) != foldLetter(b[i].unicode())) return false;
    return true;
}

bool RtwRegister::tryUpdate(RtwHost& host, const QString& name, const DatabaseUpdate& update)
{
    std::unique_ptr<RtwItems> items = host.items();
    std::unique_ptr<RtwItem> item = items ? items->find(name) : nullptr;
    if (!item) return false;
    const QString path = item->filePath();
    const QString second = item->secondText();
    const auto [at, inserted] = m_entries.try_emplace(path, RtwEntry{path, name, second});
    Q_UNUSED(at);
    if (!inserted) return false;
    item->prepareUpdate();
    return update(path);
}

bool RtwRegister::isUpdated(const QString& name) const
{
    for (const auto& [key, entry] : m_entries)
        if (rtwNamesMatch(entry.name, name)) return true;
    return false;
}

void RtwRegister::reloadAll(RtwHost& host)
{
    std::unique_ptr<RtwItems> items = host.items();
    if (items) {
        for (const auto& [key, entry] : m_entries) {
            if (std::unique_ptr<RtwItem> item = items->find(entry.name))
                item->reload(entry.key, entry.secondText);
        }
    }
    m_entries.clear();
}

QList<RtwEntry> RtwRegister::entries() const
{
    QList<RtwEntry> list;
    for (const auto& [key, entry] : m_entries)
        list << entry;
    return list;
}

RtwRegister& rtwRegister()
{
    static RtwRegister instance;
    return instance;
}

} // namespace edw
