#include "look/gui_messenger.h"

#include "look/message_box.h"

#include <QApplication>
#include <QDebug>
#include <QThread>

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

// The cores may report from a worker thread; boxes are shown on the user-interface thread
// and the caller waits for the answer, as it would on that thread.
template <class Show> void on_gui_thread(const QString& title, const QString& text, Show show)
{
    if (!can_show()) {
        qDebug().noquote() << title << text;
        return;
    }
    QCoreApplication* app = QCoreApplication::instance();
    const auto run = [&] { show(owner_window(), title, text); };
    if (QThread::currentThread() == app->thread())
        run();
    else
        QMetaObject::invokeMethod(app, run, Qt::BlockingQueuedConnection);
}

} // namespace

void GuiMessenger::information(const QString& title, const QString& text)
{
    on_gui_thread(title, text, [](QWidget* parent, const QString& t, const QString& m) {
        message_box::information(parent, t, m);
    });
}

void GuiMessenger::warning(const QString& title, const QString& text)
{
    on_gui_thread(title, text, [](QWidget* parent, const QString& t, const QString& m) {
        message_box::warning(parent, t, m);
    });
}

void GuiMessenger::critical(const QString& title, const QString& text)
{
    on_gui_thread(title, text, [](QWidget* parent, const QString& t, const QString& m) {
        message_box::critical(parent, t, m);
    });
}

} // namespace qt
