#pragma once

// What the library does with the host's application events.

#include "host_api.h"

#include <QString>

#include <memory>

namespace gapi {

namespace sync {
class document;
}
using document_ptr = std::shared_ptr<sync::document>;

class IKeyboardHandler
{
public:
    virtual ~IKeyboardHandler() = default;
    virtual bool OnKeyDown(int& key, int repeat, int pressedKeys) = 0;
    virtual bool OnKeyUp(int& key, int repeat, int pressedKeys) = 0;
};

// State the library keeps for one open document.
class IDocumentHandler
{
public:
    virtual ~IDocumentHandler() = default;
};

// A further object of the library object, made when the subscription starts.
class IAppExtension
{
public:
    virtual ~IAppExtension() = default;
};

class IAppEventHandler : public IKeyboardHandler
{
public:
    virtual void OnCloseApplication() = 0;
    virtual bool OnCanProceed() = 0;
    virtual bool OnCreateDocument(int documentType) = 0;
    // Not fed by the subscription.
    virtual bool OnBeginOpenDocument() = 0;
    virtual bool OnOpenDocument(const QString& path) = 0;
    // First, second and third document events: opened, activated, closing.
    virtual void OnDocumentOpened(const document_ptr& doc) = 0;
    virtual void OnDocumentActivated(const document_ptr& doc) = 0;
    virtual void OnDocumentClosing(const document_ptr& doc) = 0;
    virtual bool OnSavePreviousRequest(const document_ptr& doc, int version,
                                       abi::ISavePreviousParams* params, bool& flag) = 0;
    virtual void OnSavePreviousStarted(const document_ptr& doc, int version,
                                       abi::ISavePreviousParams* params) = 0;
    virtual void OnSavePreviousFinished(const document_ptr& doc, int version,
                                        abi::ISavePreviousParams* params) = 0;
    virtual void OnThemeChanged(bool dark) = 0;
    virtual std::unique_ptr<IDocumentHandler> CreateDocumentHandler(const document_ptr& doc) = 0;
    virtual std::unique_ptr<IAppExtension> CreateExtension() = 0;
};

} // namespace gapi
