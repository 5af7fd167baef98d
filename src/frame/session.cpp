#include "session.h"

#include "host/gapi.h"
#include "host/gstring.h"
#include "host/host_error.h"
#include "host_documents.h"

#include <QApplication>
#include <QIcon>
#include <QWidget>

#include <mutex>

#if defined(MARLOUSS_FRAME_WITH_LOOK)
#include "look/look.h"
#endif
#if defined(_WIN32)
#include "native_window.h"
#include <QImage>
#include <QPixmap>
#include <windows.h>
#endif

using namespace gapi;

namespace {

com_ptr<abi::IAutomation> require_automation()
{
    com_ptr<abi::IAutomation> automation = gapi::automation();
    if (!automation) throw_host_error(abi::e_pointer, abi::IAutomation::iid_text);
    return automation;
}

quintptr main_window_of(abi::IAutomation* automation)
{
    abi::variant_t v = invoke(automation, abi::disp_main_window, abi::invoke_property_get);
    quintptr handle = 0;
    if (v.type == abi::vt_i4)
#if defined(_WIN32)
        handle = quintptr(std::intptr_t(v.i4)); // window handles are sign-extended
#else
        handle = quintptr(std::uint32_t(v.i4));
#endif
    else if (v.type == abi::vt_i8)
        handle = quintptr(v.i8);
    v.clear();
    return handle;
}

QString folder_of(abi::IAutomation* automation, int kind)
{
    abi::variant_t arg;
    arg.type = abi::vt_i4;
    arg.i4 = kind;
    abi::variant_t v = invoke(automation, abi::disp_folder, abi::invoke_method, &arg, 1);
    const QString folder = v.type == abi::vt_string ? to_qstring(v.str) : QString();
    v.clear();
    return folder;
}

// The large icon of the host window's class.
QIcon class_icon(quintptr window)
{
    if (!window) return {};
#if defined(_WIN32)
    if (void* icon = native::class_icon(window))
        return QIcon(QPixmap::fromImage(QImage::fromHICON(static_cast<HICON>(icon))));
    return {};
#else
    // The host window is a window of this process.
    QWidget* widget = QWidget::find(WId(window));
    return widget ? widget->window()->windowIcon() : QIcon();
#endif
}

void install_host_services()
{
    static std::once_flag once;
    std::call_once(once, [] { install_host_documents(); });
}

#if defined(MARLOUSS_FRAME_WITH_LOOK)
// The dialogs ask the host for its theme from the moment the library is loaded, so a dialog
// wears the host's theme whichever export shows it, with or without a prepared session.
[[maybe_unused]] const bool theme_source_installed =
    (qt::set_theme_source([] { return host_theme(); }), true);
#endif

} // namespace

void prepare_dialog_session()
{
    com_ptr<abi::IAutomation> automation = require_automation();
    const quintptr window = main_window_of(automation.get());
    const QIcon icon = class_icon(window);
    if (!icon.isNull() && qApp) QApplication::setWindowIcon(icon);
    install_host_services();
}

quintptr host_main_window()
{
    try {
        com_ptr<abi::IAutomation> automation = gapi::automation();
        return automation ? main_window_of(automation.get()) : 0;
    } catch (...) {
        return 0;
    }
}

int host_theme()
{
    try {
        com_ptr<abi::IApplication7> app = application7();
        return app ? app->Theme() : 0;
    } catch (...) {
        return 0;
    }
}

QString host_folder(int kind)
{
    try {
        com_ptr<abi::IAutomation> automation = gapi::automation();
        return automation ? folder_of(automation.get(), kind) : QString();
    } catch (...) {
        return {};
    }
}

QString host_version()
{
    try {
        com_ptr<abi::IApplication7> app = application7();
        if (!app) return {};
        abi::IStringReadOnly* text = nullptr;
        if (abi::failed(app->Version(&text))) return {};
        return take_string(text);
    } catch (...) {
        return {};
    }
}

namespace {

void invoke_quietly(abi::automation_member member, const abi::variant_t* args, unsigned count)
{
    try {
        com_ptr<abi::IAutomation> automation = gapi::automation();
        if (!automation) return;
        abi::variant_t v = invoke(automation.get(), member, abi::invoke_method, args, count);
        v.clear();
    } catch (...) {
        // A host that cannot take the notice still runs the operation.
    }
}

} // namespace

void host_long_operation(bool started)
{
    abi::variant_t arg;
    arg.type = abi::vt_bool;
    arg.boolean = started ? -1 : 0;
    invoke_quietly(abi::disp_long_operation, &arg, 1);
}

void host_process_messages()
{
    invoke_quietly(abi::disp_process_messages, nullptr, 0);
}

bool host_message(const QString& text)
{
    try {
        com_ptr<abi::IAutomation> automation = gapi::automation();
        if (!automation) return false;
        com_ptr<abi::IString> message = make_string(text);
        abi::variant_t arg;
        arg.type = abi::vt_string;
        arg.str = message.get();
        abi::variant_t v = invoke(automation.get(), abi::disp_message, abi::invoke_method, &arg, 1);
        const bool shown = v.type == abi::vt_bool && v.boolean != 0;
        v.clear();
        return shown;
    } catch (...) {
        return false;
    }
}

int host_message_box(const QString& text, const QString& caption)
{
    constexpr int information_icon = 64;
    try {
        com_ptr<abi::IGravisApplication> app = native_application();
        if (!app) return 0;
        com_ptr<abi::IString> body = make_string(text);
        com_ptr<abi::IString> title =
            make_string(caption.isEmpty() ? QStringLiteral("aec") : caption);
        return app->ShowMessageBox(body.get(), title.get(), information_icon, 0, 0);
    } catch (...) {
        return 0;
    }
}
