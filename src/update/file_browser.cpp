#include "update/file_browser.h"

#include <QDir>
#include <QFileInfo>

namespace edw::detail {

bool fileBrowserTarget(const QString& path, QString& folder, QString& file)
{
    if (path.trimmed().isEmpty()) return false;
    const QFileInfo info(path);
    if (info.fileName().isEmpty()) return false;
    const QString absolute = info.absolutePath();
    if (absolute.isEmpty()) return false;
    folder = QDir::toNativeSeparators(absolute);
    file = QDir::toNativeSeparators(info.absoluteFilePath());
    return true;
}

} // namespace edw::detail

#if defined(_WIN32)
#include "update/file_browser_shell.h"

namespace edw {

void showInFileBrowser(const QString& path)
{
    QString folder, file;
    if (!detail::fileBrowserTarget(path, folder, file)) return;
    shell::show_item(folder.toStdWString(), file.toStdWString());
}

} // namespace edw
#endif
