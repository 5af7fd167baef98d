#include "base_app.h"

#include "gapi.h"
#include "sync.h"

#include <QCoreApplication>

namespace gapi {

base_app::~base_app()
{
    release_extension();
    release_document_handlers();
    release_subscription();
}

void base_app::start_subscription()
{
    release_document_handlers();
    release_subscription();

    com_ptr<abi::IGravisApplication> application = native_application();
    if (!application) return;
    m_subscription = std::make_unique<gv::app_event>(*this);
    m_subscription->subscribe(application.get(),
                              QString::fromLatin1(subscription_prefix) +
                                  QString::number(QCoreApplication::applicationPid()));

    const int count = application->DocumentCount();
    for (int i = 0; i < count; ++i) {
        com_ptr<abi::IGravisDocument> doc;
        if (!abi::failed(application->Document(i, doc.put())) && doc)
            keep_handler_for(sync::document::wrap(doc.get()));
    }
    m_extension = CreateExtension();
    attach_application(std::move(application));
}

void base_app::OnDocumentOpened(const document_ptr& doc)
{
    keep_handler_for(doc);
}

void base_app::OnDocumentActivated(const document_ptr& doc)
{
    keep_handler_for(doc);
}

void base_app::keep_handler_for(const document_ptr& doc)
{
    if (auto handler = CreateDocumentHandler(doc)) m_documentHandlers.push_back(std::move(handler));
}

void base_app::release_document_handlers()
{
    m_documentHandlers.clear();
}

void base_app::release_subscription()
{
    m_subscription.reset();
}

void base_app::release_extension()
{
    m_extension.reset();
}

} // namespace gapi
