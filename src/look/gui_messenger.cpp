#include "look/gui_messenger.h"

#include "look/message_box.h"

#include <QApplication>
#include <QDebug>

namespace qt {

namespace {

// Without a widget application (command line use) there is nobody to show a box to.
bool can_show()
{
    return qobject_cast<QApplication*>(QCoreApplication::instance()) != nullptr;
}

QWidget* owner_window()
{
    if (QWidget* modal = QApplication::activeModalWidget()) return modal;
    return QApplication::activeWindow();
}

} // namespace

void GuiMessenger::information(const QString& title, const QString& text)
{
    if (!can_show()) {
        qDebug().noquote() << title << text;
        return;
    }
    message_box::information(owner_window(), title, text);
}

void GuiMessenger::warning(const QString& title, const QString& text)
{
    if (!can_show()) {
        qDebug().noquote() << title << text;
        return;
    }
    message_box::warning(owner_window(), title, text);
}

void GuiMessenger::critical(const QString& title, const QString& text)
{
    if (!can_show()) {
        qDebug().noquote() << title << text;
        return;
    }
    message_box::critical(owner_window(), title, text);
}

} // namespace qt
