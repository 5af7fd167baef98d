// The exports of the drawing update and of the medium dialogs, one line each around the
// boundary like the others.

#include "marlouss/marlouss.h"

#include "engsys/medium_dialog.h"
#include "frame/exports/boundary.h"
#include "frame/session.h"
#include "update/rtw_register.h"
#include "update/update_dialog.h"

extern "C" {

MARLOUSS_API bool uss_try_update_rtw(const wchar_t* name)
{
    return edw::guarded(false, [&] {
        return edw::rtwRegister().tryUpdate(edw::hostRtwItems(), edw::fromWide(name),
                                            &edw::updateRtwInDatabase);
    });
}

MARLOUSS_API bool uss_is_rtw_updated(const wchar_t* name)
{
    return edw::guarded(false, [&] { return edw::rtwRegister().isUpdated(edw::fromWide(name)); });
}

MARLOUSS_API void uss_reload_updated_rtw(void)
{
    edw::guarded(0, [] {
        edw::rtwRegister().reloadAll(edw::hostRtwItems());
        return 0;
    });
}

MARLOUSS_API int uss_show_update_dialog(marlouss_window_t parent, const wchar_t* title,
                                        const wchar_t* text, bool* popupInstead)
{
    // 1, not 0, on failure: a caller that cannot be told goes on as after "Сохранить".
    return edw::guarded(1, [&] {
        prepare_dialog_session();
        return edw::runUpdateDialog(static_cast<quintptr>(parent), edw::fromWide(title),
                                    edw::fromWide(text), popupInstead);
    });
}

MARLOUSS_API bool engsys_medium_dialog(marlouss_window_t parent, bool create, bool ventilation,
                                       const char* request, const char** result)
{
    return edw::guarded(false, [&] {
        prepare_dialog_session();
        return edw::runMediumDialog(static_cast<quintptr>(parent), create, ventilation,
                                    QByteArray(request), result);
    });
}

} // extern "C"
