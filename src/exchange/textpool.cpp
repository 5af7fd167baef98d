#include "document.h"

#include <QSet>

namespace exchange {

namespace {

// Distinct texts each table keeps at most: enough for every schema text and every value that
// repeats in a real catalog, and a bound on what a document of unique values costs on top of
// its records.
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

void share(QSet<QString>& table, std::optional<QString>& text)
{
    if (text) share(table, *text);
}

} // namespace

struct TextPool::Private
{
    // What schemas and paths repeat, apart from what values repeat: a document of many unique
    // values fills the second table without crowding out the first.
    QSet<QString> names;
    QSet<QString> values;
};

TextPool::TextPool() : d(std::make_unique<Private>())
{}

TextPool::~TextPool() = default;

void TextPool::compact(ImportRecord& record)
{
    share(d->names, record.packet);
    share(d->names, record.folder);
    share(d->names, record.type);
    fit(record.id);
    if (record.repPath) fit(*record.repPath);
    record.atr.shrink_to_fit();
    for (AttributeRecord& a : record.atr) {
        share(d->names, a.name);
        share(d->names, a.desc);
        share(d->names, a.var);
        share(d->names, a.measure);
        share(d->names, a.formula);
        share(d->values, a.val);
    }
    if (record.model) {
        share(d->names, record.model->name);
        share(d->values, record.model->file);
        share(d->values, record.model->icon);
        share(d->values, record.model->digest);
    }
    record.prj.shrink_to_fit();
    for (ProjectionRecord& p : record.prj) {
        share(d->names, p.name);
        share(d->values, p.file);
        share(d->values, p.icon);
        share(d->values, p.digest);
    }
    record.spc.shrink_to_fit();
    for (SpecRecord& s : record.spc) {
        share(d->names, s.libName);
        s.column.shrink_to_fit();
        for (ColumnRecord& c : s.column)
            share(d->values, c.val);
    }
}

} // namespace exchange
