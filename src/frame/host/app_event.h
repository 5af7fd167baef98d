#pragma once

// Subscription of an event handler to the host's thirteen application events. Destroying the
// subscription removes it from the host's event source.

#include "app_events.h"
#include "com_ptr.h"

namespace gapi::gv {

class app_event
{
public:
    explicit app_event(IAppEventHandler& handler);
    ~app_event();
    app_event(const app_event&) = delete;
    app_event& operator=(const app_event&) = delete;

    // Registers the thirteen handlers with the application's event source under name. False
    // when the application has no event source.
    bool subscribe(abi::IGravisApplication* application, const QString& name);
    void unsubscribe();
    bool subscribed() const { return m_cookie != 0; }
    QString name() const { return m_name; }

private:
    class sink;
    sink* m_sink;
    com_ptr<abi::IEventSource> m_source;
    std::uint32_t m_cookie = 0;
    QString m_name;
};

} // namespace gapi::gv
