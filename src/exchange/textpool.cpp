#include "document.h"

#include <QSet>

namespace exchange {

namespace {

// Distinct texts the table keeps at most: enough for every packet, folder and author of a
// real catalog, and a bound on what a document of unique ones costs on top of its records.
constexpr qsizetype maxShared = qsizetype(1) << 16;

void fit(QString& text)
{
    // Texts decoded from UTF-8 keep room for as many units as the bytes they came from.
    if (text.capacity() > text.size()) text.squeeze();
}

void share(QSet<QString>& table, QString& text)
{
    if (text.isEmpty()) return;
    if (const auto it = table.constFind(text); it != table.cend()) {
        text = *it;
        return;
    }
    fit(text);
    if (table.size() < maxShared) table.insert(text);
}

} // namespace

struct TextPool::Private
{
    QSet<QString> names;
};

TextPool::TextPool() : d(std::make_unique<Private>())
{}

TextPool::~TextPool() = default;

void TextPool::compact(ImportRecord& record)
{
    share(d->names, record.packet);
    share(d->names, record.folder);
    share(d->names, record.type);
    share(d->names, record.author);
    fit(record.id);
    fit(record.stamp);
}

} // namespace exchange
