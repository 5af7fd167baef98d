#pragma once

// Shared pieces of the catalog tests: a real catalog file in a temporary folder, a messenger
// that records what the user would have been told, and a host whose documents are scripted.

#include "esconvert.h"
#include "host.h"
#include "notify.h"

#include <esdata/esdata.h>

#include <QFile>
#include <QHash>
#include <QStringList>
#include <QTemporaryDir>

#include <optional>
#include <vector>

namespace testing {

class RecordingMessenger : public edw::IMessenger
{
public:
    void information(const QString& title, const QString& text) override
    {
        record(QStringLiteral("information"), title, text);
    }
    void warning(const QString& title, const QString& text) override
    {
        record(QStringLiteral("warning"), title, text);
    }
    void critical(const QString& title, const QString& text) override
    {
        record(QStringLiteral("critical"), title, text);
    }

    QStringList kinds;
    QStringList titles;
    QStringList texts;

private:
    void record(const QString& kind, const QString& title, const QString& text)
    {
        kinds << kind;
        titles << title;
        texts << text;
    }
};

// Installs itself as the messenger for its lifetime.
class ScopedMessenger : public RecordingMessenger
{
public:
    ScopedMessenger() { edw::setMessenger(this); }
    ~ScopedMessenger() override { edw::setMessenger(nullptr); }
};

class FakeHost : public edw::IHost
{
public:
    FakeHost() { edw::setHost(this); }
    ~FakeHost() override { edw::setHost(nullptr); }

    std::optional<std::vector<int>> hiddenLayers(const QString& file) override
    {
        asked << file;
        const auto it = layers.find(file);
        if (it == layers.end()) return std::nullopt;
        return it.value();
    }
    bool saveAsPreviousVersion(const QString&, const QString&) override { return false; }
    QString version() override { return QStringLiteral("23.1"); }
    QString folder(int kind) override { return kind == 3 ? userFolder : QString(); }

    QHash<QString, std::vector<int>> layers;
    QStringList asked;
    QString userFolder;
};

// A fresh catalog file of the given database name, closed again at the end.
class TempCatalog
{
public:
    explicit TempCatalog(const QString& dbName = QStringLiteral("user_tx"))
    {
        path = dir.filePath(QStringLiteral("catalog.db"));
        provider = esx_OpenCatalog(edw::toEs(path).c_str(), edw::toEs(dbName).c_str(), true);
    }
    ~TempCatalog()
    {
        if (provider) esx_CloseCatalog(provider);
    }
    TempCatalog(const TempCatalog&) = delete;
    TempCatalog& operator=(const TempCatalog&) = delete;

    // Writes a file into the temporary folder and returns its path.
    QString writeFile(const QString& name, const QByteArray& content) const
    {
        const QString file = dir.filePath(name);
        QFile out(file);
        if (out.open(QIODevice::WriteOnly)) out.write(content);
        return file;
    }

    QTemporaryDir dir;
    QString path;
    es_provider_t* provider = nullptr;
};

inline es_attribute_t* addAttribute(es_stdsize_t* element, const QString& name, uint32_t type)
{
    return table_AddAttribute(stdsize_GetTable(element), edw::toEs(name).c_str(),
                              edw::toEs(name).c_str(), type);
}

inline QString valueOf(es_stdsize_t* element, const QString& name)
{
    es_value value{};
    stdsize_GetValueByName(element, edw::toEs(name).c_str(), &value);
    return edw::valueToText(value);
}

inline es_value_kind kindOf(es_stdsize_t* element, const QString& name)
{
    es_value value{};
    stdsize_GetValueByName(element, edw::toEs(name).c_str(), &value);
    return value.kind;
}

} // namespace testing
