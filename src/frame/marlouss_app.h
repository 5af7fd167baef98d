#pragma once

// The library object: one per process, subscribed to the host's application events when the
// host automation object is first obtained. It accepts every request of the host and keeps no
// per-document state.

#include "host/base_app.h"

class CMarloUssApp final : public gapi::base_app
{
public:
    CMarloUssApp();
    ~CMarloUssApp() override;

    bool OnKeyDown(int& key, int repeat, int pressedKeys) override;
    bool OnKeyUp(int& key, int repeat, int pressedKeys) override;
    void OnCloseApplication() override;
    bool OnCanProceed() override;
    bool OnCreateDocument(int documentType) override;
    bool OnBeginOpenDocument() override;
    bool OnOpenDocument(const QString& path) override;
    void OnDocumentClosing(const gapi::document_ptr& doc) override;
    bool OnSavePreviousRequest(const gapi::document_ptr& doc, int version,
                               gapi::abi::ISavePreviousParams* params, bool& flag) override;
    void OnSavePreviousStarted(const gapi::document_ptr& doc, int version,
                               gapi::abi::ISavePreviousParams* params) override;
    void OnSavePreviousFinished(const gapi::document_ptr& doc, int version,
                                gapi::abi::ISavePreviousParams* params) override;
    void OnThemeChanged(bool dark) override;
    std::unique_ptr<gapi::IDocumentHandler>
    CreateDocumentHandler(const gapi::document_ptr& doc) override;
    std::unique_ptr<gapi::IAppExtension> CreateExtension() override;

    // True while the library object holds the host application (from the subscription until
    // the application closes).
    bool holds_application() const { return static_cast<bool>(m_application); }

protected:
    void attach_application(gapi::com_ptr<gapi::abi::IGravisApplication> application) override;

private:
    gapi::com_ptr<gapi::abi::IGravisApplication> m_application;
};

// The module-level instance.
CMarloUssApp& theApp();
