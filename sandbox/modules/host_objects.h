#pragma once

// Factories of the host's objects, shared by the three module files. Each returns a new
// reference.

#include "host_state.h"

#include <QSizeF>

#include "../../src/frame/host/host_api.h"

namespace sandbox {

SANDBOX_HOST_API gapi::abi::IUnknown* create_automation();
SANDBOX_HOST_API gapi::abi::IUnknown* create_application7();
SANDBOX_HOST_API gapi::abi::IUnknown* create_native_application();

// A document object for an open document id; null when there is none. New reference.
gapi::abi::IGravisDocument* document_object(int id);

// Event sinks (the native application's event source).
std::uint32_t advise(gapi::abi::IAppEvents* sink);
bool unadvise(std::uint32_t cookie);

// Document internals used by the document objects.
struct LayerInfo
{
    int number = 0;
    bool hidden = false;
};
QList<LayerInfo> document_layers(int id);
bool set_layer_hidden(int id, int number, bool hidden);
int document_version(int id);
QSizeF document_size(int id);
// Writes the document to path with the given data-version; false on failure.
bool save_document(int id, const QString& path, int version);
bool save_preview(int id, const QString& pngPath, int size);

} // namespace sandbox

namespace sandbox {
// Records (and presents, when a presenter is installed) a text or a message box.
int present_message(const QString& text, const QString& caption, int style, bool box);
} // namespace sandbox
