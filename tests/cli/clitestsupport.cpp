#include "clitestsupport.h"

#include "temp_catalog.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

namespace clitest {

Run ussctl(const QStringList& args, const QProcessEnvironment& env,
           const std::function<void()>& inChild)
{
    QProcess process;
    QProcessEnvironment environment =
        env.isEmpty() ? QProcessEnvironment::systemEnvironment() : env;
    // Byte-stable archives: the export date comes from the fixed clock.
    if (!environment.contains("USSCTL_FIXED_DATE"))
        environment.insert("USSCTL_FIXED_DATE", "2024.03.05 14:07:31");
    // Working folders of ussctl stay inside this test's own temporary folder, so that tests
    // running at the same time never share them.
    static QTemporaryDir temporary;
    if (!environment.contains("TMPDIR")) environment.insert("TMPDIR", temporary.path());
    process.setProcessEnvironment(environment);
#ifdef Q_OS_UNIX
    if (inChild) process.setChildProcessModifier(inChild);
#endif
    process.start(QStringLiteral(USSCTL_PATH), args);
    Run run;
    if (!process.waitForFinished(120000)) {
        process.kill();
        process.waitForFinished();
        run.err = "ussctl did not finish";
        return run;
    }
    run.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -2;
    run.out = QString::fromUtf8(process.readAllStandardOutput());
    run.err = QString::fromUtf8(process.readAllStandardError());
    return run;
}

std::u16string es(const QString& text)
{
    return edw::toEs(text);
}

TestCatalog::TestCatalog(const QString& path, const QString& databaseName)
    : m_provider(esx_OpenCatalog(es(path).c_str(), es(databaseName).c_str(), true))
{}

TestCatalog::~TestCatalog()
{
    if (m_provider) esx_CloseCatalog(m_provider);
}

es_stdsize_t* TestCatalog::addElement(const QString& packet, const QString& folder,
                                      const QString& id, const QString& date, const QString& author,
                                      double length, const QString& modelFile)
{
    es_packet_t* p = edw::findOrAddPacket(m_provider, packet);
    es_table_t* table = folder_GetTable(edw::ensureFolderPath(p, folder));
    es_stdsize_t* element = table_AddStdSize(table, es(id).c_str());
    if (!element) return nullptr;
    stdsize_SetType(element, u"pipe");
    // Elements of one folder share its attributes.
    auto attribute = [&](const QString& name, uint32_t type) {
        es_attribute_t* found = table_FindAttribute(table, es(name).c_str());
        return found ? found : testing::addAttribute(element, name, type);
    };
    stdsize_SetValueS(element, attribute("USS_LAST_CHANGE_DATE", ES_ATTR_TEXT), es(date).c_str());
    stdsize_SetValueS(element, attribute("USS_AUTHOR", ES_ATTR_TEXT), es(author).c_str());
    stdsize_SetValueD(element, attribute("Length", ES_ATTR_REAL), length);
    if (!modelFile.isEmpty())
        model_SetModelEx(stdsize_GetModel(element), es(modelFile).c_str(), u"", u"model", 231);
    return element;
}

QString valueOf(const QString& catalogPath, const QString& packet, const QString& id,
                const QString& attribute)
{
    es_provider_t* provider = esx_OpenCatalog(es(catalogPath).c_str(), u"", false);
    QString text;
    if (provider) {
        const auto packets = edw::packets(provider);
        const auto it = packets.find(packet);
        es_stdsize_t* element =
            it == packets.end() ? nullptr : packet_FindStdSize(it->second, es(id).c_str());
        if (element) text = testing::valueOf(element, attribute);
        esx_CloseCatalog(provider);
    }
    return text;
}

} // namespace clitest
