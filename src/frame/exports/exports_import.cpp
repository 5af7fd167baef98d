// The import's export: one line around the boundary, like the others.

#include "marlouss/marlouss.h"

#include "frame/exports/boundary.h"
#include "frame/qwinwidget.h"
#include "frame/session.h"
#include "frame/settings.h"
#include "look/gui_messenger.h"

#include "import_environment.h"

namespace {

// The import with the library's settings file, chooser, message box and the host's version.
exchange::ImportEnvironment libraryEnvironment()
{
    exchange::ImportEnvironment environment = exchange::defaultImportEnvironment();
    environment.readSetting = [](const QString& key) { return read_setting(key); };
    environment.writeSetting = [](const QString& key, const QString& value) {
        write_setting(key, value);
    };
    environment.hostVersion = [] { return host_version(); };
    // The host's system folder holds its library set.
    environment.libraryRoot = host_folder(1);
    // The library's help file at its start: the import has no topic of its own. Help that
    // cannot be opened shows nothing, as everywhere in the library.
    environment.help = [] {
        try {
            show_help(0);
        } catch (...) {
        }
    };
    return environment;
}

bool importElements(es_provider_t* provider, marlouss_window_t parent)
{
    prepare_dialog_session();
    static qt::GuiMessenger messenger;
    static const bool installed = (edw::setMessenger(&messenger), true);
    Q_UNUSED(installed);
    QWinWidget host(static_cast<quintptr>(parent));
    return exchange::runUssImport(provider, &host, libraryEnvironment());
}

} // namespace

extern "C" {

MARLOUSS_API bool uss_import(es_provider_t* provider, marlouss_window_t parent, bool passedThrough)
{
    Q_UNUSED(passedThrough);
    return edw::guarded(false, [&] { return importElements(provider, parent); });
}

} // extern "C"
