#pragma once

#include <QString>

#include <optional>
#include <vector>

namespace edw {

// What the catalog, editor and exchange cores need of the host's documents (drawings,
// fragments, 3D models). The host frame implements it through the host's API; tests and the
// command line install their own.
class IHost
{
public:
    virtual ~IHost() = default;
    // Numbers of the hidden layers of a fragment or drawing, in document order; nothing when
    // the host cannot open the document.
    virtual std::optional<std::vector<int>> hiddenLayers(const QString& file) = 0;
    // Opens source invisibly, saves it as target in the earlier file format and closes it.
    virtual bool saveAsPreviousVersion(const QString& source, const QString& target) = 0;
    // Version text of the running host ("23.1"); empty when it cannot be determined.
    virtual QString version() = 0;
    // The host's folder of the given kind (kind 3: the per-user folder under which the
    // library keeps its settings); empty when the host cannot tell.
    virtual QString folder(int kind)
    {
        Q_UNUSED(kind);
        return {};
    }
};

// The host in force for this process, or null. Not owned.
IHost* host();
void setHost(IHost* host);

} // namespace edw
