// What the shared library offers its callers: nothing with default visibility but what its
// public header declares. That every declared export is there (a host library linking a
// missing one fails at load time), the sandbox's main job shows by calling each.

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QTest>

namespace {

// Every symbol the library defines in its dynamic symbol table.
QSet<QString> exportedSymbols(QString* error)
{
    QProcess nm;
    nm.start("nm", {"-D", "--defined-only", QStringLiteral(MARLOUSS_LIBRARY_PATH)});
    if (!nm.waitForFinished(60000) || nm.exitCode() != 0) {
        *error = QString::fromLocal8Bit(nm.readAllStandardError());
        return {};
    }
    QSet<QString> names;
    const QList<QByteArray> lines = nm.readAllStandardOutput().split('\n');
    for (const QByteArray& line : lines) {
        const QList<QByteArray> fields = line.simplified().split(' ');
        if (fields.size() < 3) continue;
        const QByteArray type = fields[1];
        // Text (T), weak (W) and indirect (i) symbols are functions a caller could bind to.
        if (type == "T" || type == "W" || type == "i") names << QString::fromLatin1(fields[2]);
    }
    return names;
}

// The functions the public header declares, and the selection panel's point callback, which
// the header names in a comment only (it is a C++ member function).
QStringList expectedExports()
{
    QStringList names{"_ZN14SelectionPanel9CallBackPEiPdS0_P12RequestInfoWPvi"};
    QFile header(QStringLiteral(MARLOUSS_HEADER_PATH));
    if (!header.open(QIODevice::ReadOnly)) return names;
    const QRegularExpression declaration(QStringLiteral(R"(MARLOUSS_API[^;(]*?\b(\w+)\s*\()"));
    auto it = declaration.globalMatch(QString::fromUtf8(header.readAll()));
    while (it.hasNext())
        names << it.next().captured(1);
    return names;
}

// Symbols every shared object defines for the loader.
bool loaderSymbol(const QString& name)
{
    static const QSet<QString> names = {"_init", "_fini", "__bss_start", "_edata", "_end"};
    return names.contains(name);
}

// Instantiations of the standard library's templates keep the standard library's own
// visibility; they are not entry points of ours.
bool standardLibrarySymbol(const QString& name)
{
    static const QStringList prefixes = {"_ZSt",    "_ZNSt",  "_ZNKSt", "_ZZSt",  "_ZZNSt",
                                         "_ZZNKSt", "_ZTISt", "_ZTSSt", "_ZTVSt", "_ZGVZNSt"};
    for (const QString& prefix : prefixes) {
        if (name.startsWith(prefix)) return true;
    }
    return false;
}

} // namespace

class SymbolsTest : public QObject
{
    Q_OBJECT
private slots:
    void onlyDeclaredExportsAreVisible();
};

void SymbolsTest::onlyDeclaredExportsAreVisible()
{
    QString error;
    const QSet<QString> symbols = exportedSymbols(&error);
    QVERIFY2(!symbols.isEmpty(), qPrintable("nm gave nothing: " + error));
    const QStringList expected = expectedExports();
    QVERIFY2(expected.contains("LIBRARYNAMEW"), "the public header is read");
    QStringList unexpected;
    for (const QString& name : symbols) {
        if (!expected.contains(name) && !loaderSymbol(name) && !standardLibrarySymbol(name))
            unexpected << name;
    }
    unexpected.sort();
    QVERIFY2(unexpected.isEmpty(), qPrintable("unexpected exports: " + unexpected.join(", ")));
}

QTEST_GUILESS_MAIN(SymbolsTest)
#include "tst_exports_symbols.moc"
