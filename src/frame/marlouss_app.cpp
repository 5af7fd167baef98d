#include "marlouss_app.h"

#include "host/gapi.h"

namespace {
CMarloUssApp g_app;

// When the library goes, the host may already be gone: its new-API application is forgotten,
// not released.
struct forget_at_unload
{
    ~forget_at_unload() { gapi::forget_application7(); }
} g_forget;
} // namespace

CMarloUssApp& theApp()
{
    return g_app;
}

CMarloUssApp::CMarloUssApp()
{
    // The module-level instance is the first; any other (tests) is never subscribed.
    if (!gapi::application_object()) gapi::set_application_object(this);
}

CMarloUssApp::~CMarloUssApp()
{
    m_application.reset();
    release_extension();
    release_document_handlers();
    release_subscription();
    if (gapi::application_object() == this) gapi::set_application_object(nullptr);
}

void CMarloUssApp::attach_application(gapi::com_ptr<gapi::abi::IGravisApplication> application)
{
    m_application = std::move(application);
}

bool CMarloUssApp::OnKeyDown(int&, int, int)
{
    return true;
}

bool CMarloUssApp::OnKeyUp(int&, int, int)
{
    return true;
}

void CMarloUssApp::OnCloseApplication()
{
    m_application.reset();
    release_document_handlers();
    release_subscription();
}

bool CMarloUssApp::OnCanProceed()
{
    return true;
}

bool CMarloUssApp::OnCreateDocument(int)
{
    return true;
}

bool CMarloUssApp::OnBeginOpenDocument()
{
    return true;
}

bool CMarloUssApp::OnOpenDocument(const QString&)
{
    return true;
}

void CMarloUssApp::OnDocumentClosing(const gapi::document_ptr&)
{}

bool CMarloUssApp::OnSavePreviousRequest(const gapi::document_ptr&, int,
                                         gapi::abi::ISavePreviousParams*, bool&)
{
    return false;
}

void CMarloUssApp::OnSavePreviousStarted(const gapi::document_ptr&, int,
                                         gapi::abi::ISavePreviousParams*)
{}

void CMarloUssApp::OnSavePreviousFinished(const gapi::document_ptr&, int,
                                          gapi::abi::ISavePreviousParams*)
{}

// The dialogs decide light or dark by themselves when they are built.
void CMarloUssApp::OnThemeChanged(bool)
{}

std::unique_ptr<gapi::IDocumentHandler>
CMarloUssApp::CreateDocumentHandler(const gapi::document_ptr&)
{
    return nullptr;
}

std::unique_ptr<gapi::IAppExtension> CMarloUssApp::CreateExtension()
{
    return nullptr;
}
