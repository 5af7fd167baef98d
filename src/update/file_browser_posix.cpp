// The desktop's file manager: the freedesktop FileManager1 interface selects the file; without
// D-Bus (or without a file manager answering it) the folder is opened as it is.

#include "update/file_browser.h"

#include <QDesktopServices>
#include <QUrl>

#if defined(MARLOUSS_UPDATE_WITH_DBUS)
#include <QDBusConnection>
#include <QDBusMessage>
#endif

namespace edw {

void showInFileBrowser(const QString& path)
{
    QString folder, file;
    if (!detail::fileBrowserTarget(path, folder, file)) return;
#if defined(MARLOUSS_UPDATE_WITH_DBUS)
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (bus.isConnected()) {
        QDBusMessage call = QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.FileManager1"),
            QStringLiteral("/org/freedesktop/FileManager1"),
            QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
        call << QStringList{QUrl::fromLocalFile(file).toString()} << QString();
        const QDBusMessage reply = bus.call(call, QDBus::Block, 3000);
        if (reply.type() == QDBusMessage::ReplyMessage) return;
    }
#endif
    QDesktopServices::openUrl(QUrl::fromLocalFile(folder));
}

} // namespace edw
