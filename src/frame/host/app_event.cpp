#include "app_event.h"

#include "com_object.h"
#include "gstring.h"
#include "host_error.h"
#include "sync.h"

#include <atomic>

namespace gapi::gv {

// The object the host calls. It outlives the subscription while the host still holds it, and
// forwards nothing once detached.
class app_event::sink final : public com_object<abi::IAppEvents>
{
public:
    explicit sink(IAppEventHandler* handler) : m_handler(handler) {}
    void detach() { m_handler = nullptr; }

    bool GAPI_CALL KeyDown(std::int32_t& key, std::int32_t repeat, std::int32_t keys) override
    {
        int k = key;
        const bool answer = !m_handler || m_handler->OnKeyDown(k, repeat, keys);
        key = k;
        return answer;
    }
    bool GAPI_CALL KeyUp(std::int32_t& key, std::int32_t repeat, std::int32_t keys) override
    {
        int k = key;
        const bool answer = !m_handler || m_handler->OnKeyUp(k, repeat, keys);
        key = k;
        return answer;
    }
    bool GAPI_CALL ThemeChanged(std::int32_t theme) override
    {
        // Only light (0) and dark (2) are themes the dialogs can follow.
        if (m_handler && (theme == 0 || theme == 2)) m_handler->OnThemeChanged(theme != 0);
        return true;
    }
    void GAPI_CALL ApplicationClosing() override
    {
        if (m_handler) m_handler->OnCloseApplication();
    }
    bool GAPI_CALL CanProceed() override { return !m_handler || m_handler->OnCanProceed(); }
    bool GAPI_CALL CreateDocumentRequest(std::int32_t documentType) override
    {
        return !m_handler || m_handler->OnCreateDocument(documentType);
    }
    bool GAPI_CALL OpenDocumentRequest(abi::IStringReadOnly* path) override
    {
        return !m_handler || m_handler->OnOpenDocument(to_qstring(path));
    }
    void GAPI_CALL DocumentActivated(abi::IGravisDocument* document) override
    {
        if (m_handler) m_handler->OnDocumentActivated(sync::document::wrap(document));
    }
    void GAPI_CALL DocumentOpened(abi::IGravisDocument* document) override
    {
        if (m_handler) m_handler->OnDocumentOpened(sync::document::wrap(document));
    }
    void GAPI_CALL DocumentClosing(abi::IGravisDocument* document) override
    {
        if (m_handler) m_handler->OnDocumentClosing(sync::document::wrap(document));
    }
    bool GAPI_CALL SavePreviousRequest(abi::IGravisDocument* document, std::int32_t version,
                                       abi::ISavePreviousParams* params, bool& flag) override
    {
        return !m_handler || m_handler->OnSavePreviousRequest(sync::document::wrap(document),
                                                              version, params, flag);
    }
    void GAPI_CALL SavePreviousStarted(abi::IGravisDocument* document, std::int32_t version,
                                       abi::ISavePreviousParams* params) override
    {
        if (m_handler)
            m_handler->OnSavePreviousStarted(sync::document::wrap(document), version, params);
    }
    void GAPI_CALL SavePreviousFinished(abi::IGravisDocument* document, std::int32_t version,
                                        abi::ISavePreviousParams* params) override
    {
        if (m_handler)
            m_handler->OnSavePreviousFinished(sync::document::wrap(document), version, params);
    }

private:
    ~sink() = default;
    IAppEventHandler* m_handler;
};

app_event::app_event(IAppEventHandler& handler) : m_sink(new sink(&handler))
{}

app_event::~app_event()
{
    unsubscribe();
    m_sink->detach();
    m_sink->Release();
}

bool app_event::subscribe(abi::IGravisApplication* application, const QString& name)
{
    unsubscribe();
    if (!application) return false;
    check(application->EventSource(m_source.put()), abi::IGravisApplication::iid_text);
    if (!m_source) return false;
    const std::u16string text = name.toStdU16String();
    check(m_source->Advise(text.c_str(), m_sink, &m_cookie), abi::IEventSource::iid_text);
    m_name = name;
    return m_cookie != 0;
}

void app_event::unsubscribe()
{
    if (m_source && m_cookie) m_source->Unadvise(m_cookie);
    m_cookie = 0;
    m_source.reset();
}

} // namespace gapi::gv
