#include "host_documents.h"

#include "host/sync.h"
#include "session.h"

#include <QString>

#if defined(MARLOUSS_FRAME_WITH_CATALOG)
#include "catalog/host.h"

namespace {

// Format written by "save in an earlier format".
constexpr int previous_format = 230;

class host_documents final : public edw::IHost
{
public:
    std::optional<std::vector<int>> hiddenLayers(const QString& file) override
    {
        try {
            auto doc = gapi::sync::open_document(file, false);
            std::vector<int> hidden;
            if (auto layers = doc->layers()) hidden = layers->hidden_numbers();
            doc->close();
            return hidden;
        } catch (...) {
            return std::nullopt;
        }
    }

    bool saveAsPreviousVersion(const QString& source, const QString& target) override
    {
        try {
            auto doc = gapi::sync::open_document(source, false);
            bool saved = true;
            try {
                doc->save_as_previous(target, previous_format);
            } catch (...) {
                saved = false;
            }
            doc->close();
            return saved;
        } catch (...) {
            return false;
        }
    }

    QString version() override { return host_version(); }

    QString folder(int kind) override { return host_folder(kind); }
};

} // namespace

void install_host_documents()
{
    static host_documents instance;
    if (!edw::host()) edw::setHost(&instance);
}

#else

void install_host_documents()
{}

#endif
