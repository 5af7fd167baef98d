/*
 * MarloUss — the exports that host libraries call.
 *
 * Every function here is a thin boundary: it converts the plain arguments, shows its dialog
 * (or runs its check) and turns every failure into the fixed result written beside it. No
 * exception ever leaves an export. All of them are called on the host's user-interface
 * thread.
 *
 * Conventions
 * - Wide strings are NUL-terminated wchar_t strings; narrow strings are NUL-terminated byte
 *   strings (UTF-8 JSON for the engineering-systems records).
 * - Window handles are 64-bit integers holding the native handle of the window that becomes
 *   the parent of the dialog (on Linux, the host window's X11 or Qt window id).
 * - A catalog provider is the opaque handle of the catalog access library; the library never
 *   takes ownership of it.
 * - Text returned to the caller lives in one buffer owned by the library per export. It stays
 *   valid until the next call of the same export, which overwrites it; copy it at once and
 *   never free it.
 * - Records exchanged as JSON carry "version": 1; another version is refused.
 *
 * Besides the functions below, the library exports one C++ static member function under its
 * mangled name: SelectionPanel::CallBackP(int, double*, double*, RequestInfoW*, void*, int),
 * the point-request callback of the selection panel.
 */
#ifndef MARLOUSS_MARLOUSS_H
#define MARLOUSS_MARLOUSS_H

#include <stddef.h>
#include <stdint.h>
#include <wchar.h>

#include "marlouss/export.h"

#ifdef __cplusplus
extern "C" {
#else
#include <stdbool.h>
#endif

/* The catalog access library's provider handle (the same declaration as in its own header). */
typedef struct es_provider es_provider_t;

/* Native handle of a host window, widened to 64 bits. */
typedef uint64_t marlouss_window_t;

/* Request of the element editor (create, clone or edit a user element). The caller sets size
 * to sizeof(marlouss_edit_request_t) of the header it was built with, so that a caller and a
 * library of different ages still agree on the fields that both know. The fields after size
 * belong to the element editor. */
typedef struct marlouss_edit_request
{
    uint32_t size;
} marlouss_edit_request_t;

/* ---- library identity ----------------------------------------------------------------------- */

/* The library's name, L"marlouss". Always the same pointer, owned by the library. */
MARLOUSS_API const wchar_t* LIBRARYNAMEW(void);

/* ---- command descriptions ------------------------------------------------------------------- */

/* Looks up the command named command in the command description of the calling library whose
 * file is library (the file "uss_<base name>.xml" beside it) and stores its identifiers: id
 * gets the command's "idcat" when it has one, otherwise its "id"; idcat gets its "id" when the
 * command has an "idcat", otherwise 0xFFFFFFFF. Unknown library or command: both 0xFFFFFFFF.
 * id and idcat may be NULL. */
MARLOUSS_API void uss_get_command_id(const wchar_t* library, const wchar_t* command,
                                     unsigned int* id, unsigned int* idcat);

/* ---- user elements -------------------------------------------------------------------------- */

/* Creates, clones or edits a user element as the request says. False on failure. */
MARLOUSS_API bool uss_create_clone_edit(marlouss_edit_request_t* request);

/* Exports every user element of provider into an exchange archive chosen by the user. */
MARLOUSS_API bool uss_export_all(es_provider_t* provider, marlouss_window_t parent);

/* Exports the elements named in list (items separated by separator) from provider. */
MARLOUSS_API bool uss_export_from_list(const wchar_t* list, const wchar_t* separator,
                                       es_provider_t* provider);

/* Imports user elements from an exchange archive chosen by the user into provider; flag is
 * handed through to the import dialog. */
MARLOUSS_API bool uss_import(es_provider_t* provider, marlouss_window_t parent, bool flag);

/* ---- drawing update ------------------------------------------------------------------------- */

/* Tells the user that a drawing was rebuilt from the catalog: title and text of the notice;
 * flag (in/out) asks for a pop-up message instead of the notice for this drawing. Returns 1
 * (not 0) when it fails. */
MARLOUSS_API int uss_show_update_dialog(marlouss_window_t parent, const wchar_t* title,
                                        const wchar_t* text, bool* flag);

/* Register of catalog items updated in this session. */
MARLOUSS_API bool uss_try_update_rtw(const wchar_t* name);
MARLOUSS_API bool uss_is_rtw_updated(const wchar_t* name);
MARLOUSS_API void uss_reload_updated_rtw(void);

/* ---- engineering systems -------------------------------------------------------------------- */

/* Lets the user choose the current section of a drawing. request is the JSON record
 * {"version": 1, "curPart": "...", "parts": ["...", ...]}. Returns true when the user
 * accepted; *result then points at the same record, with "curPart" set to the chosen section
 * (empty when none was chosen), in the library's buffer for this export. */
MARLOUSS_API bool engsys_select_part_dialog(marlouss_window_t parent, const char* request,
                                            const char** result);

/* Edits an engineering system and its conveyed medium; secondForm selects the second form of
 * the dialog. request and *result are JSON records as for engsys_select_part_dialog. */
MARLOUSS_API bool engsys_medium_dialog(marlouss_window_t parent, bool flag, bool secondForm,
                                       const char* request, const char** result);

/* ---- drawings produced from building models ------------------------------------------------- */

/* Asks what to do because the drawing at path already exists, under the host's main window:
 * 1 update the existing drawing, 2 create a new drawing under another name or folder,
 * 3 cancel. Returns 3 when it cannot ask. */
MARLOUSS_API int OPEN_SAVE_CDW_DIALOG(wchar_t* path);

/* Lets the user choose the folder for the drawings. Returns the folder, or an empty string
 * when cancelled or when it cannot ask, in the library's buffer for this export. */
MARLOUSS_API wchar_t* OPEN_CHOSE_DIRECTORY_DIALOG(void);

/* Lets the user choose the file name of a drawing, starting from defaultPath. Returns the
 * chosen path with every "/" turned into "\", or an empty string when cancelled or when it
 * cannot ask, in the library's buffer for this export. The three further arguments are kept
 * for the callers' binary interface and are not used; pass 0. */
MARLOUSS_API wchar_t* OPEN_FILE_SAVING_DIALOG(wchar_t* defaultPath, intptr_t reserved1,
                                              intptr_t reserved2, intptr_t reserved3);

#ifdef __cplusplus
}
#endif

#endif /* MARLOUSS_MARLOUSS_H */
