// The C exports of this library. Each is one line around the boundary: convert the caller's
// arguments, prepare the dialog session where needed, hand over to the owner, and let nothing
// escape.

#include "marlouss/marlouss.h"

#include "engsys/drawing_files.h"
#include "engsys/engsys.h"
#include "frame/exports/boundary.h"
#include "catalog/command_description.h"
#include "frame/session.h"
#include "look/gui_messenger.h"

#include <system_error>

namespace {

// The host's main window, which the drawing questions are asked over; without one there is
// nobody to ask.
quintptr requireHostMainWindow()
{
    const quintptr window = host_main_window();
    if (!window) throw std::system_error(static_cast<int>(0x80004003u), std::system_category());
    return window;
}

// The session every dialog export prepares first; from then on what the cores have to tell
// the user appears in the library's message box.
void prepareSession()
{
    prepare_dialog_session();
    static qt::GuiMessenger messenger;
    static const bool installed = (edw::setMessenger(&messenger), true);
    Q_UNUSED(installed);
}

// Text results never hand the caller a null pointer: on failure the export's buffer is
// emptied, and should even that fail, a constant empty text is returned.
wchar_t* emptyOnFailure(wchar_t* result, wchar_t* (*keep)(const QString&))
{
    static wchar_t empty[1] = {0};
    if (result) return result;
    return edw::guarded(static_cast<wchar_t*>(empty), [keep] { return keep(QString()); });
}

} // namespace

extern "C" {

MARLOUSS_API const wchar_t* LIBRARYNAMEW(void)
{
    static const wchar_t name[] = L"marlouss";
    return name;
}

MARLOUSS_API void uss_get_command_id(const wchar_t* library, const wchar_t* command,
                                     unsigned int* id, unsigned int* idcat)
{
    if (id) *id = 0xFFFFFFFFu;
    if (idcat) *idcat = 0xFFFFFFFFu;
    edw::guarded(0, [&] {
        const edw::CommandIds ids =
            edw::lookUpCommandIds(edw::fromWide(library), edw::fromWide(command));
        if (id) *id = ids.id;
        if (idcat) *idcat = ids.idcat;
        return 0;
    });
}

MARLOUSS_API bool engsys_select_part_dialog(marlouss_window_t parent, const char* request,
                                            const char** result)
{
    return edw::guarded(false, [&] {
        prepareSession();
        return edw::runSelectPartDialog(static_cast<quintptr>(parent), QByteArray(request), result);
    });
}

MARLOUSS_API int OPEN_SAVE_CDW_DIALOG(wchar_t* path)
{
    return edw::guarded(3, [&] {
        prepareSession();
        return edw::runSaveCdwDialog(requireHostMainWindow(), edw::fromWide(path));
    });
}

MARLOUSS_API wchar_t* OPEN_CHOSE_DIRECTORY_DIALOG(void)
{
    wchar_t* chosen = edw::guarded(static_cast<wchar_t*>(nullptr), [&] {
        prepareSession();
        return edw::runDirectoryDialog(requireHostMainWindow());
    });
    return emptyOnFailure(chosen, &edw::keepDirectoryResult);
}

MARLOUSS_API wchar_t* OPEN_FILE_SAVING_DIALOG(wchar_t* defaultPath, intptr_t, intptr_t, intptr_t)
{
    // This one asks over the host's main window without preparing a dialog session.
    wchar_t* chosen = edw::guarded(static_cast<wchar_t*>(nullptr), [&] {
        return edw::runFileSavingDialog(requireHostMainWindow(), edw::fromWide(defaultPath));
    });
    return emptyOnFailure(chosen, &edw::keepFileSavingResult);
}

} // extern "C"
