// The exports that need no dialog, called as a host library calls them: through the shared
// library loaded by file name.

#include "marlouss/marlouss.h"

#include <QFile>
#include <QLibrary>
#include <QTemporaryDir>
#include <QTest>

namespace {

constexpr unsigned int kNone = 0xFFFFFFFFu;

std::wstring wide(const QString& text)
{
    return text.toStdWString();
}

} // namespace

class CallsTest : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void commandIds_data();
    void commandIds();
    void commandIdsToleratesNullOutputs();

private:
    void writeDescription(const QString& name, const QByteArray& xml);

    QLibrary m_library{QStringLiteral(MARLOUSS_LIBRARY_PATH)};
    QTemporaryDir m_dir;
    decltype(&uss_get_command_id) m_commandId = nullptr;
};

void CallsTest::initTestCase()
{
    QVERIFY2(m_library.load(), qPrintable(m_library.errorString()));
    m_commandId = reinterpret_cast<decltype(m_commandId)>(m_library.resolve("uss_get_command_id"));
    QVERIFY(m_commandId);
    QVERIFY(m_dir.isValid());

    writeDescription("uss_engsys_tx.xml", R"(<?xml version="1.0" encoding="utf-8"?>
<commands>
  <command name="pipe" id="5" idcat="12"/>
  <command name="valve" id="7"/>
  <command name="труба" id="31" idcat="40"/>
  <command name="category only" idcat="9"/>
  <command name="pipe" id="99"/>
</commands>)");
    // The same commands in UTF-16, found by the parser's own encoding detection.
    QFile utf16(m_dir.filePath("uss_engsys_vk.xml"));
    QVERIFY(utf16.open(QIODevice::WriteOnly));
    const QString text = "\uFEFF<commands><command name=\"насос\" id=\"3\"/></commands>";
    utf16.write(reinterpret_cast<const char*>(text.utf16()), text.size() * 2);
    utf16.close();
    writeDescription("uss_broken.xml", "<commands><command name=\"pipe\" id=\"5\">");
}

void CallsTest::writeDescription(const QString& name, const QByteArray& xml)
{
    QFile file(m_dir.filePath(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(xml);
}

void CallsTest::commandIds_data()
{
    QTest::addColumn<QString>("library"); // relative to the temporary folder
    QTest::addColumn<QString>("command");
    QTest::addColumn<unsigned int>("id");
    QTest::addColumn<unsigned int>("idcat");
    QTest::newRow("Cyrillic command") << "engsys_tx.rtw"
                                      << "труба" << 40u << 31u;
    QTest::newRow("idcat without id") << "engsys_tx.rtw"
                                      << "category only" << 9u << kNone;
    QTest::newRow("base name up to the first dot") << "engsys_tx.x64.rtw"
                                                   << "pipe" << 12u << 5u;
    QTest::newRow("file without extension") << "engsys_tx"
                                            << "valve" << 7u << kNone;
    QTest::newRow("UTF-16 description") << "engsys_vk.rtw"
                                        << "насос" << 3u << kNone;
    QTest::newRow("command name is case-sensitive") << "engsys_tx.rtw"
                                                    << "Pipe" << kNone << kNone;
    QTest::newRow("unknown library") << "engsys_ov.rtw"
                                     << "pipe" << kNone << kNone;
    QTest::newRow("description does not parse") << "broken.rtw"
                                                << "pipe" << kNone << kNone;
    QTest::newRow("command name breaks the query") << "engsys_tx.rtw"
                                                   << "pi'pe" << kNone << kNone;
    QTest::newRow("empty command") << "engsys_tx.rtw"
                                   << "" << kNone << kNone;
}

void CallsTest::commandIds()
{
    QFETCH(QString, library);
    QFETCH(QString, command);
    QFETCH(unsigned int, id);
    QFETCH(unsigned int, idcat);
    const std::wstring file = wide(m_dir.filePath(library));
    const std::wstring name = wide(command);
    unsigned int gotId = 1, gotIdcat = 1; // not the answer: the export must set both
    m_commandId(file.c_str(), name.c_str(), &gotId, &gotIdcat);
    QCOMPARE(gotId, id);
    QCOMPARE(gotIdcat, idcat);
}

void CallsTest::commandIdsToleratesNullOutputs()
{
    const std::wstring file = wide(m_dir.filePath("engsys_tx.rtw"));
    unsigned int id = 0;
    m_commandId(file.c_str(), L"pipe", &id, nullptr);
    QCOMPARE(id, 12u);
    unsigned int idcat = 0;
    m_commandId(file.c_str(), L"pipe", nullptr, &idcat);
    QCOMPARE(idcat, 5u);
    m_commandId(nullptr, nullptr, &id, &idcat);
    QCOMPARE(id, kNone);
    QCOMPARE(idcat, kNone);
}

QTEST_GUILESS_MAIN(CallsTest)
#include "tst_exports_calls.moc"
