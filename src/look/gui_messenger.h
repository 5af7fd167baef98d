#pragma once

#include "catalog/notify.h"

namespace qt {

// Shows what the cores have to tell the user in the library's message box, over the active
// modal dialog or else the active window. Safe to call from a worker thread: the box is shown
// on the user-interface thread and the call returns when it is answered. Without a widget
// application the messages go to the Qt debug log.
class GuiMessenger : public edw::IMessenger
{
public:
    void information(const QString& title, const QString& text) override;
    void warning(const QString& title, const QString& text) override;
    void critical(const QString& title, const QString& text) override;
};

} // namespace qt
