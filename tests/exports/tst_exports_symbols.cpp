// What the shared library offers its callers: exactly the exports of this version, and
// nothing else with default visibility.

#include <QProcess>
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

const QStringList& expectedExports()
{
    static const QStringList names = {
        "LIBRARYNAMEW",
        "uss_get_command_id",
        "engsys_select_part_dialog",
        "OPEN_SAVE_CDW_DIALOG",
        "OPEN_CHOSE_DIRECTORY_DIALOG",
        "OPEN_FILE_SAVING_DIALOG",
        "uss_create_clone_edit",
        // SelectionPanel::CallBackP(int, double*, double*, RequestInfoW*, void*, int)
        "_ZN14SelectionPanel9CallBackPEiPdS0_P12RequestInfoWPvi",
    };
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
    void initTestCase();
    void exportIsPresent_data();
    void exportIsPresent();
    void nothingElseIsExported();
    void exportsLaterVersionsAreAbsent_data();
    void exportsLaterVersionsAreAbsent();

private:
    QSet<QString> m_symbols;
};

void SymbolsTest::initTestCase()
{
    QString error;
    m_symbols = exportedSymbols(&error);
    QVERIFY2(!m_symbols.isEmpty(), qPrintable("nm gave nothing: " + error));
}

void SymbolsTest::exportIsPresent_data()
{
    QTest::addColumn<QString>("symbol");
    for (const QString& name : expectedExports())
        QTest::newRow(qPrintable(name)) << name;
}

void SymbolsTest::exportIsPresent()
{
    QFETCH(QString, symbol);
    QVERIFY2(m_symbols.contains(symbol), qPrintable(symbol + " is not exported"));
}

void SymbolsTest::nothingElseIsExported()
{
    QStringList unexpected;
    for (const QString& name : std::as_const(m_symbols)) {
        if (!expectedExports().contains(name) && !loaderSymbol(name) &&
            !standardLibrarySymbol(name))
            unexpected << name;
    }
    unexpected.sort();
    QVERIFY2(unexpected.isEmpty(), qPrintable("unexpected exports: " + unexpected.join(", ")));
}

void SymbolsTest::exportsLaterVersionsAreAbsent_data()
{
    QTest::addColumn<QString>("symbol");
    for (const char* name :
         {"uss_export_all", "uss_export_from_list", "uss_import",
          "uss_show_update_dialog", "uss_try_update_rtw", "uss_is_rtw_updated",
          "uss_reload_updated_rtw", "engsys_medium_dialog"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void SymbolsTest::exportsLaterVersionsAreAbsent()
{
    QFETCH(QString, symbol);
    QVERIFY2(!m_symbols.contains(symbol), qPrintable(symbol + " is exported but not yet due"));
}

QTEST_GUILESS_MAIN(SymbolsTest)
#include "tst_exports_symbols.moc"
