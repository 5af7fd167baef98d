#pragma once

// Base of the library object: keeps the application-event subscription, the per-document
// handlers and one further object.

#include "app_event.h"
#include "app_events.h"
#include "com_ptr.h"

#include <memory>
#include <vector>

namespace gapi {

class base_app : public IAppEventHandler
{
public:
    // Prefix of the subscription's name.
    static constexpr const char* subscription_prefix = "orvik-aec-gapi-app-events-";

    base_app() = default;
    ~base_app() override;
    base_app(const base_app&) = delete;
    base_app& operator=(const base_app&) = delete;

    // Run once, when the automation object is first obtained: drops any earlier handlers and
    // subscription, subscribes, treats every open document as opened, makes the further object.
    void start_subscription();

    bool subscribed() const { return m_subscription && m_subscription->subscribed(); }
    std::size_t document_handler_count() const { return m_documentHandlers.size(); }

    // Base behaviour of the first and second document events: keep a handler when the factory
    // gives one.
    void OnDocumentOpened(const document_ptr& doc) override;
    void OnDocumentActivated(const document_ptr& doc) override;

protected:
    // The application the subscription was made on, for the library object to keep.
    virtual void attach_application(com_ptr<abi::IGravisApplication>) {}
    void release_document_handlers();
    void release_subscription();
    void release_extension();

private:
    void keep_handler_for(const document_ptr& doc);

    std::vector<std::unique_ptr<IDocumentHandler>> m_documentHandlers;
    std::unique_ptr<gv::app_event> m_subscription;
    std::unique_ptr<IAppExtension> m_extension;
};

} // namespace gapi
