#pragma once

// State of the running sandbox host, shared by the sandbox application, the host modules the
// library loads (libgAPI5.so, libgAPI7.so, libgvAPI.so) and the tests. The application (or a
// test) fills it in; the modules answer the library's host calls from it.
//
// All functions are meant for the user-interface thread, except the document queries, which
// are locked so that the import worker may reach documents through the library's wrappers.

#include <QList>
#include <QString>
#include <QtGlobal>

#include <functional>

#if defined(SANDBOX_HOSTCORE_BUILDING)
#define SANDBOX_HOST_API Q_DECL_EXPORT
#else
#define SANDBOX_HOST_API Q_DECL_IMPORT
#endif

namespace sandbox {

// Version of the host as the new API reports it, and the document format it writes.
inline constexpr const char* host_version_text = "23.1";
inline constexpr int host_document_version = 231;
inline constexpr int previous_document_version = 230;

// Host themes (the values of the host's theme enumeration): 0 light, 1 the system's, 2 dark.
enum Theme
{
    theme_light = 0,
    theme_system = 1,
    theme_dark = 2
};

// Host folder kinds answered by the automation object: 1 the host's system folder (help files
// below it), 3 the user folder (the library's settings below it), 5 the templates folder.
enum FolderKind
{
    folder_system = 1,
    folder_user = 3,
    folder_templates = 5
};

// ---- main window and environment -----------------------------------------------------------

// Native handle of the host's main window (the application's QWidget::winId()); 0 for none.
SANDBOX_HOST_API void set_main_window(quintptr handle);
SANDBOX_HOST_API quintptr main_window();

// Sets the theme without telling anybody; fire_theme_changed also notifies the subscribers.
SANDBOX_HOST_API void set_theme(int theme);
SANDBOX_HOST_API int theme();

// Folder of a kind; empty when not set (the host then cannot report it).
SANDBOX_HOST_API void set_folder(int kind, const QString& path);
SANDBOX_HOST_API QString folder(int kind);

// ---- what the host showed to the user ------------------------------------------------------

struct MessageBoxCall
{
    QString text;
    QString caption;
    int style = 0;
};

// Texts shown through the automation object's message member, in order.
SANDBOX_HOST_API QStringList shown_messages();
// Message boxes shown through the native application, in order.
SANDBOX_HOST_API QList<MessageBoxCall> shown_message_boxes();
SANDBOX_HOST_API void clear_shown();
// Optional presenter for both: an application may really show them. Its answer is returned
// to the caller of the message box (1 when no presenter is installed). The text-only messages
// are presented with an empty caption and style 0.
using MessagePresenter = std::function<int(const QString& text, const QString& caption, int style)>;
SANDBOX_HOST_API void set_message_presenter(MessagePresenter presenter);

// ---- long operations ---------------------------------------------------------------------

// A library's notices that a long operation starts (true) or ends (false), in order.
SANDBOX_HOST_API void note_long_operation(bool started);
SANDBOX_HOST_API QList<bool> long_operation_notices();
// Processes the application's pending events, as the host's message loop would, and counts it.
SANDBOX_HOST_API void process_messages();
SANDBOX_HOST_API int processed_message_rounds();

// ---- documents -----------------------------------------------------------------------------

// Host documents are small SVG files: <svg data-version="231"> with layers <g data-layer="N">,
// hidden layers marked data-hidden="1" display="none".
struct DocumentInfo
{
    int id = 0;          // positive, unique in the process
    QString path;        // file the document was read from (or will be saved to)
    bool visible = true; // shown in a host window, or opened invisibly for a program
};

// Opens a document file. Returns its id, or 0 when the file cannot be read, is not a host
// document, or was made by a later version of the host (its data-version above 231); the
// reason is then in last_error(). An opened visible document is reported to the subscribers
// as an opened document.
SANDBOX_HOST_API int open_document(const QString& path, bool visible = true);
SANDBOX_HOST_API bool close_document(int id);
SANDBOX_HOST_API QList<DocumentInfo> documents();
SANDBOX_HOST_API DocumentInfo document(int id); // id 0 when there is none
SANDBOX_HOST_API QString last_error();

// Writes a minimal host document (used by the sample catalog and by tests): the given layer
// numbers, those in hidden marked hidden, with a line drawn in each visible layer.
SANDBOX_HOST_API bool write_sample_document(const QString& path, const QList<int>& layers,
                                            const QList<int>& hidden,
                                            int version = host_document_version);

// ---- application events --------------------------------------------------------------------

// Number of live subscriptions of the library (or anyone) to the host's application events.
SANDBOX_HOST_API int subscriber_count();

// Each call is delivered to every subscriber in subscription order; the boolean ones return
// the logical AND of the answers (true with no subscriber).
SANDBOX_HOST_API bool fire_key_down(int& key, int repeat, int pressedKeys);
SANDBOX_HOST_API bool fire_key_up(int& key, int repeat, int pressedKeys);
// Sets the theme and notifies.
SANDBOX_HOST_API bool fire_theme_changed(int theme);
SANDBOX_HOST_API void fire_application_closing();
SANDBOX_HOST_API bool fire_can_proceed();
SANDBOX_HOST_API bool fire_create_document_request(int documentType);
SANDBOX_HOST_API bool fire_open_document_request(const QString& path);
// A document was opened / activated / is closing (the three document events).
SANDBOX_HOST_API void fire_document_opened(int documentId);
SANDBOX_HOST_API void fire_document_activated(int documentId);
SANDBOX_HOST_API void fire_document_closing(int documentId);
// The host asks whether a document may be saved in an earlier format; flag is in/out.
SANDBOX_HOST_API bool fire_save_previous_request(int documentId, int version, bool& flag);
SANDBOX_HOST_API void fire_save_previous_started(int documentId, int version);
SANDBOX_HOST_API void fire_save_previous_finished(int documentId, int version);

// Forgets documents, messages, folders, theme and main window (tests).
SANDBOX_HOST_API void reset();

} // namespace sandbox
