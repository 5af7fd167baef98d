#pragma once

// What the dialogs need of the host: the session preparation every dialog export performs
// first, and a few queries answered by the host's automation object and applications.
// Nothing here says how the host is reached.

#include <QString>
#include <QtGlobal>

// Obtains the host automation object (which subscribes the library object to the host's
// application events on the first call), reads the host's main window handle and gives the Qt
// application the host window's icon. Also installs, once, the host behind the catalog cores.
// The dialogs' look asks the host for its theme without any session (from library load on).
// Throws std::system_error with 0x80004003 when the host gives no automation object.
void prepare_dialog_session();

// Native handle of the host's main window; 0 when the host cannot tell.
quintptr host_main_window();

// The host's theme: 0 light, 1 the system's, 2 dark; 0 when the host cannot tell.
int host_theme();

// Folder of a kind reported by the host (1 system folder, 3 user folder); empty when the host
// cannot report it.
QString host_folder(int kind);

// Version text of the running host ("23.1"); empty when it cannot be determined.
QString host_version();

// Tells the host that a long operation starts (true) or has ended (false), and lets it
// process its pending messages during one. Nothing happens without a host.
void host_long_operation(bool started);
void host_process_messages();

// Shows a text to the user through the host; false when it was not shown.
bool host_message(const QString& text);

// Host message box with the information icon; the caption "aec" replaces an empty one.
// Returns the host's answer, 0 when there is no host.
int host_message_box(const QString& text, const QString& caption = QStringLiteral("MarloUss"));
