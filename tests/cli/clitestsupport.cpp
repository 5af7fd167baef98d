#include "clitestsupport.h"

#include <QFile>
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
    return std::u16string(reinterpret_cast<const char16_t*>(text.utf16()), size_t(text.size()));
}

QString qs(const char16_t* text)
{
    return text ? QString::fromUtf16(text) : QString();
}

TestCatalog::TestCatalog(const QString& path, const QString& databaseName)
    : m_provider(esx_OpenCatalog(es(path).c_str(), es(databaseName).c_str(), true))
{}

TestCatalog::~TestCatalog()
{
    close();
}

void TestCatalog::close()
{
    if (m_provider) esx_CloseCatalog(m_provider);
    m_provider = nullptr;
}

namespace {

es_packet_t* packetNamed(es_provider_t* provider, const QString& name)
{
    const uint32_t count = provider_GetPacketCount(provider);
    for (uint32_t i = 0; i < count; ++i) {
        es_packet_t* packet = provider_GetPacket(provider, i);
        if (qs(packet_GetName(packet)) == name) return packet;
    }
    return provider_AddPacket(provider, es(name).c_str());
}

es_folder_t* folderAt(es_packet_t* packet, const QString& path)
{
    es_folder_t* folder = packet_GetRootFolder(packet);
    for (const QString& name : path.split('\\', Qt::SkipEmptyParts)) {
        es_folder_t* found = nullptr;
        const uint32_t count = folder_GetChildFolderCount(folder);
        for (uint32_t i = 0; i < count && !found; ++i) {
            es_folder_t* child = folder_GetChildFolder(folder, i);
            if (qs(folder_GetName(child)) == name) found = child;
        }
        folder = found ? found : folder_AddChildFolder(folder, es(name).c_str());
    }
    return folder;
}

es_attribute_t* attributeOf(es_table_t* table, const QString& name, uint32_t type)
{
    es_attribute_t* attribute = table_FindAttribute(table, es(name).c_str());
    return attribute ? attribute
                     : table_AddAttribute(table, es(name).c_str(), es(name).c_str(), type);
}

} // namespace

es_stdsize_t* TestCatalog::addElement(const QString& packet, const QString& folder,
                                      const QString& id, const QString& date, const QString& author,
                                      double length, const QString& modelFile)
{
    es_table_t* table = folder_GetTable(folderAt(packetNamed(m_provider, packet), folder));
    es_stdsize_t* element = table_AddStdSize(table, es(id).c_str());
    if (!element) return nullptr;
    stdsize_SetType(element, u"pipe");
    stdsize_SetValueS(element, attributeOf(table, "USS_LAST_CHANGE_DATE", ES_ATTR_TEXT),
                      es(date).c_str());
    stdsize_SetValueS(element, attributeOf(table, "USS_AUTHOR", ES_ATTR_TEXT), es(author).c_str());
    stdsize_SetValueD(element, attributeOf(table, "Length", ES_ATTR_REAL), length);
    if (!modelFile.isEmpty()) {
        model_SetModelEx(stdsize_GetModel(element), es(modelFile).c_str(), u"", u"model", 231);
    }
    return element;
}

QString valueOf(const QString& catalogPath, const QString& packet, const QString& id,
                const QString& attribute)
{
    es_provider_t* provider = esx_OpenCatalog(es(catalogPath).c_str(), u"", false);
    QString text;
    const uint32_t count = provider_GetPacketCount(provider);
    for (uint32_t i = 0; i < count; ++i) {
        es_packet_t* p = provider_GetPacket(provider, i);
        if (qs(packet_GetName(p)) != packet) continue;
        es_value value{};
        if (stdsize_GetValueByName(packet_FindStdSize(p, es(id).c_str()), es(attribute).c_str(),
                                   &value)) {
            switch (value.kind) {
            case ES_VALUE_INT:
                text = QString::number(value.i);
                break;
            case ES_VALUE_REAL:
                text = QString::number(value.d);
                break;
            case ES_VALUE_TEXT:
                text = qs(value.s);
                break;
            default:
                break;
            }
        }
    }
    if (provider) esx_CloseCatalog(provider);
    return text;
}

QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    if (file.open(QIODevice::WriteOnly)) file.write(bytes);
}

} // namespace clitest
