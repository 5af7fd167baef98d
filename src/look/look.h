#pragma once

// The common look of every dialog of the library: the light or dark style, the frameless
// frame with its own title bar, and the library's message box. A dialog calls
// qt::attach_styled_frame() once, after its content and layout are built.

#include <QPointer>
#include <QString>

#include <functional>

#include "look/gui_messenger.h"
#include "look/message_box.h"
#include "look/styled_dialog.h"

class QWidget;

namespace qt {

// Where the host's colour theme comes from; value 2 means dark. The host connection installs
// a source that asks the host; without a source (or with an empty one) dialogs are light.
void set_theme_source(std::function<int()> source);

// True when the installed theme source answers 2.
bool dark_theme();

// Registers the library's compiled-in resources (icons, style sheet template, message box
// pictures). Safe to call any number of times; the frame and the style sheet call it.
void ensure_resources();

// The style sheet template filled with the colours, sizes and icons of the variant; an empty
// string when the template resource cannot be read.
QString style_sheet(bool dark);

// Gives `widget` the frameless window hint, the library's frame (border, title bar with the
// window title in capitals, close cross when the widget has the close-button hint) and the
// common style in the variant chosen by the host's theme. The frame and the style are Qt
// children of the widget and die with it. Returns an empty pointer for a null widget.
QPointer<styled_dialog> attach_styled_frame(QWidget* widget, const QString& closeIcon = {});

} // namespace qt
