// The exports of export: one line around the boundary each, like the others.

#include "marlouss/marlouss.h"

#include "exchange/dialogs/export_entry.h"
#include "frame/exports/boundary.h"
#include "frame/qwinwidget.h"
#include "frame/session.h"
#include "frame/settings.h"
#include "look/gui_messenger.h"

namespace {

// The help topic of the exchange of user elements.
constexpr int exportHelpTopic = 5200;

void prepareExport()
{
    prepare_dialog_session();
    static qt::GuiMessenger messenger;
    static const bool installed = (edw::setMessenger(&messenger), true);
    Q_UNUSED(installed);
}

// Export with the library's settings file, the host's library root, its long-operation
// notice and message processing, and the library's help.
exchange::ExportEnvironment libraryEnvironment()
{
    exchange::ExportEnvironment environment = exchange::defaultExportEnvironment();
    environment.readSetting = [](const QString& key) { return read_setting(key); };
    environment.writeSetting = [](const QString& key, const QString& value) {
        write_setting(key, value);
    };
    environment.libraryRoot = host_folder(1);
    environment.help = [] { show_help(exportHelpTopic); };
    environment.longOperation = [](bool started) { host_long_operation(started); };
    environment.processMessages = [] { host_process_messages(); };
    return environment;
}

bool exportAll(es_provider_t* provider, marlouss_window_t parent)
{
    if (!provider) return false;
    prepareExport();
    QWinWidget host(static_cast<quintptr>(parent));
    return exchange::exportAll(provider, &host, libraryEnvironment());
}

bool exportFromList(const wchar_t* list, const wchar_t* separator, es_provider_t* provider)
{
    if (!provider) return false;
    prepareExport();
    QWinWidget host(host_main_window());
    return exchange::exportFromList(edw::fromWide(list), edw::fromWide(separator), provider, &host,
                                    libraryEnvironment());
}

} // namespace

extern "C" {

MARLOUSS_API bool uss_export_all(es_provider_t* provider, marlouss_window_t parent)
{
    return edw::guarded(false, [&] { return exportAll(provider, parent); });
}

MARLOUSS_API bool uss_export_from_list(const wchar_t* list, const wchar_t* separator,
                                       es_provider_t* provider)
{
    return edw::guarded(false, [&] { return exportFromList(list, separator, provider); });
}

} // extern "C"
