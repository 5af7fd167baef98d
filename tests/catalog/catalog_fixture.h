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

namespace testing {

// Records every message while installed.
class ScopedMessenger : public edw::IMessenger
{
public:
    ScopedMessenger() { edw::setMessenger(this); }
    ~ScopedMessenger() override { edw::setMessenger(nullptr); }
    void information(const QString& title, const QString& text) override
    {
        record("information", title, text);
    }
    void warning(const QString& title, const QString& text) override
    {
        record("warning", title, text);
    }
    void critical(const QString& title, const QString& text) override
    {
        record("critical", title, text);
    }

    QStringList kinds, titles, texts;

private:
    void record(const char* kind, const QString& title, const QString& text)
    {
        kinds << QString::fromLatin1(kind);
        titles << title;
        texts << text;
    }
};

// The host while installed: hidden layers and the user folder come from the test.
class FakeHost : public edw::IHost
{
public:
    FakeHost() { edw::setHost(this); }
    ~FakeHost() override { edw::setHost(nullptr); }
    std::optional<std::vector<int>> hiddenLayers(const QString& file) override
    {
        const auto it = layers.find(file);
        return it == layers.end() ? std::nullopt : std::optional(it.value());
    }
    bool saveAsPreviousVersion(const QString&, const QString&) override { return false; }
    QString version() override { return QStringLiteral("23.1"); }
    QString folder(int kind) override { return kind == 3 ? userFolder : QString(); }

    QHash<QString, std::vector<int>> layers;
    QString userFolder;
};

// A fresh catalog file of the given database name, closed again at the end.
class TempCatalog
{
public:
    explicit TempCatalog(const QString& dbName = QStringLiteral("user_tx"))
        : path(dir.filePath(QStringLiteral("catalog.db"))),
          provider(esx_OpenCatalog(edw::toEs(path).c_str(), edw::toEs(dbName).c_str(), true))
    {}
    ~TempCatalog() { esx_CloseCatalog(provider); }
    TempCatalog(const TempCatalog&) = delete;
    TempCatalog& operator=(const TempCatalog&) = delete;

    // Writes a file into the temporary folder and returns its path.
    QString writeFile(const QString& name, const QByteArray& content) const
    {
        QFile out(dir.filePath(name));
        if (out.open(QIODevice::WriteOnly)) out.write(content);
        return out.fileName();
    }

    QTemporaryDir dir;
    QString path;
    es_provider_t* provider = nullptr;
};

inline es_attribute_t* addAttribute(es_stdsize_t* element, const QString& name, uint32_t type)
{
    const std::u16string text = edw::toEs(name);
    return table_AddAttribute(stdsize_GetTable(element), text.c_str(), text.c_str(), type);
}

inline es_value valueByName(es_stdsize_t* element, const QString& name)
{
    es_value value{};
    stdsize_GetValueByName(element, edw::toEs(name).c_str(), &value);
    return value;
}

inline QString valueOf(es_stdsize_t* element, const QString& name)
{
    return edw::valueToText(valueByName(element, name));
}

inline es_value_kind kindOf(es_stdsize_t* element, const QString& name)
{
    return valueByName(element, name).kind;
}

} // namespace testing
