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

/* ---- engineering systems -------------------------------------------------------------------- */

/* Lets the user choose the current section of a drawing. request is the JSON record
 * {"version": 1, "curPart": "...", "parts": ["...", ...]}. Returns true when the user
 * accepted; *result then points at the same record, with "curPart" set to the chosen section
 * (empty when none was chosen), in the library's buffer for this export. */
MARLOUSS_API bool engsys_select_part_dialog(marlouss_window_t parent, const char* request,
                                            const char** result);

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

/* ---- drawing update ------------------------------------------------------------------------ */

/* Brings the host's catalog item called name up to date in the catalog database and registers
 * it for this process. False when the host has no such item, when an item with the same file
 * (its path written with any separators) was registered already - the database is then not
 * asked again - or when the database update failed. */
MARLOUSS_API bool uss_try_update_rtw(const wchar_t* name);

/* True when an item registered by uss_try_update_rtw has the name name, letter case aside
 * (Latin and Cyrillic letters, ё included). */
MARLOUSS_API bool uss_is_rtw_updated(const wchar_t* name);

/* Has the host reload every registered item it still has, in the order of their files, and
 * empties the register. When a reload fails the register is kept as it was. */
MARLOUSS_API void uss_reload_updated_rtw(void);

/* Tells the user that the drawing's user elements were rebuilt from the catalog: text is the
 * message (with the counts of elements and sizes), title the window's title. *popupInstead
 * (may be NULL) checks the box "replace by a pop-up message for this drawing" and holds its
 * last state when the function returns. Returns 1 after "Сохранить", 0 when closed otherwise,
 * and 1 when the notice cannot be shown. */
MARLOUSS_API int uss_show_update_dialog(marlouss_window_t parent, const wchar_t* title,
                                        const wchar_t* text, bool* popupInstead);

/* ---- engineering systems: medium --------------------------------------------------------- */

/* Shows the properties of an engineering system: a new one when create is true (the name must
 * be new to "systems", name and designation must be given), the current one otherwise (name
 * and designation read-only). ventilation selects the ventilation form (supply or exhaust)
 * instead of the medium form (category, temperature, density, pressure). request is the JSON
 * system record, "version": 1. Returns true when the user applied; *result then points at the
 * edited record (every key, sorted by name) in the library's buffer for this export. */
MARLOUSS_API bool engsys_medium_dialog(marlouss_window_t parent, bool create, bool ventilation,
                                       const char* request, const char** result);

/* ---- element editor ------------------------------------------------------------------------ */

/* What a host library asks of the element editor. Fill it with zeros, set size to
 * sizeof(marlouss_edit_request_t) and fill in what applies; fields beyond the size a caller
 * gives are read as zero, so callers built against an older header keep working. Texts are
 * NUL-terminated wide strings; NULL reads as empty. */
typedef struct marlouss_edit_request_t
{
    /* sizeof(marlouss_edit_request_t) as the caller knows it. */
    uint32_t size;
    /* 0 create a new element, 1 create one by example from the source element (clone),
     * 2 edit the source element. */
    uint32_t mode;
    /* The catalog to work on. */
    es_provider_t* provider;
    /* The window the editor is shown over. */
    marlouss_window_t parent;
    /* The source element of clone and edit: its packet's name and its identifier. */
    const wchar_t* packet;
    const wchar_t* element_id;
    /* The calling library's command description file (XML): commands with their parameter
     * panels (ussControlList), categories (categoryList) and required views (views). */
    const wchar_t* commands_file;
    /* The library's command names offered to the user, command_count of them. */
    const wchar_t* const* commands;
    uint32_t command_count;
    /* The command whose parameter panel is shown; NULL: the source element's type when it is
     * one of the commands, else the only command. */
    const wchar_t* command;
    /* The file made from the current selection in the host document, for the drawing
     * views; and a second one, for the 3D model (NULL: the first serves the model too). */
    const wchar_t* selection_path;
    const wchar_t* second_selection_path;
    /* The category to preselect, by its exact name; NULL for none. */
    const wchar_t* category;
    /* Where a new element is filed: "packet\folder\..."; NULL: beside the source element
     * (clone), or the packet given above followed by the chosen category (create). */
    const wchar_t* category_path;
    /* Prefix of a new element's identifier, and the text at its end (NULL: the command). */
    const wchar_t* id_prefix;
    const wchar_t* request_text;
    /* Non-zero: the 3D model cannot be given. */
    uint32_t no_3d_model;
    /* Discipline code of the calling library: 1, 2 and 3 file the element under a
     * specification section and subsection, any other code under a category. */
    int32_t discipline;
    /* Set by the library when an element was written: its identifier, in the library's
     * buffer for this export (valid until the next call). */
    const wchar_t* written_id;
} marlouss_edit_request_t;

/* Shows the element editor for the request and, when the user accepts, writes the element
 * (values, images, model, specification, change stamp) into the catalog. Returns true when an
 * element was written; false when the user cancelled, the source element was not found or
 * the writing failed (then nothing is written). */
MARLOUSS_API bool uss_create_clone_edit(marlouss_edit_request_t* request);

/* ---- exchange: export ---------------------------------------------------------------------- */

/* Shows the export dialog over parent with every user element of the catalog grouped by
 * library, packet and folder; asks for the archive's file and writes the chosen elements into
 * it. Returns true when the archive was written; false when the catalog holds no element, the
 * user cancelled or the writing failed (the user was told). */
MARLOUSS_API bool uss_export_all(es_provider_t* provider, marlouss_window_t parent);

/* Exports the elements named by list: packet names and element ids in turn, separated by
 * separator. Asks for the archive's file and writes the found elements into it. Returns false
 * at once, without a word, for an odd number of parts or when no pair names an element. */
MARLOUSS_API bool uss_export_from_list(const wchar_t* list, const wchar_t* separator,
                                       es_provider_t* provider);

/* ---- exchange of user elements: import --------------------------------------------------- */

/* Imports the elements of an exchange archive that the user chooses into the catalog of
 * provider: the user decides element by element (add a new one or not, keep the catalog's
 * element or take the imported one), then the chosen elements are written with a progress
 * window that can be paused and stopped. The archive's folder is remembered for the next
 * time. passedThrough is accepted for the callers' sake and not read. Returns true when at
 * least one element was written; false when the user cancelled, the archive was refused,
 * nothing was written or the catalog is of an unknown kind (then nothing is shown). */
MARLOUSS_API bool uss_import(es_provider_t* provider, marlouss_window_t parent, bool passedThrough);

#ifdef __cplusplus
}
#endif

#endif /* MARLOUSS_MARLOUSS_H */
