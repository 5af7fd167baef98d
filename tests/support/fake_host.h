#pragma once

// The host while installed: hidden layers, the user folder and the version come from the test;
// its earlier-format save copies the document with a marker in front unless told to fail.

#include <catalog/host.h>

#include <QFile>
#include <QHash>
#include <QStringList>

#include <optional>
#include <vector>

namespace testing {

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
    bool saveAsPreviousVersion(const QString& source, const QString& target) override
    {
        saved << target;
        if (!works) return false;
        QFile in(source);
        QFile out(target);
        if (!in.open(QIODevice::ReadOnly) || !out.open(QIODevice::WriteOnly)) return false;
        out.write("earlier format\n" + in.readAll());
        return true;
    }
    QString version() override { return hostVersion; }
    QString folder(int kind) override { return kind == 3 ? userFolder : QString(); }

    QHash<QString, std::vector<int>> layers;
    QString userFolder;
    bool works = true;
    QString hostVersion = QStringLiteral("23.1");
    QStringList saved;
};

} // namespace testing
