#include "export_calls.h"

#include "marlouss_declared_exports.h"

#include <QSet>

namespace sandbox {
namespace {

QSet<QString>& called()
{
    static QSet<QString> names;
    return names;
}

} // namespace

void noteExportCalled(const QString& callLine)
{
    const qsizetype open = callLine.indexOf(u'(');
    if (open <= 0) return;
    const QString name = callLine.left(open);
    // A name, not a sentence that happens to hold a parenthesis.
    for (const QChar c : name)
        if (!(c.isLetterOrNumber() || c == u'_' || c == u':')) return;
    called().insert(name);
}

QStringList declaredExports()
{
    QStringList names;
    for (const char* name : marlouss_declared::exports)
        names << QString::fromLatin1(name);
    return names;
}

QStringList exportsNotCalled()
{
    QStringList names;
    for (const QString& name : declaredExports())
        if (!called().contains(name)) names << name;
    return names;
}

} // namespace sandbox
