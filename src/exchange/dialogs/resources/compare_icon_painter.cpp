// Draws the pictures of the comparison views into a folder (the resources folder by default).
#include "compare_icon_painter.h"

#include <QDir>
#include <QGuiApplication>
#include <QTextStream>

int main(int argc, char** argv)
{
    QGuiApplication app(argc, argv);
    const QString folder =
        argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral(COMPARE_RESOURCES_FOLDER);
    int failed = 0;
    for (const auto& [name, image] : exchange::icons::allPictures()) {
        const QString path = QDir(folder).filePath(name);
        QDir().mkpath(QFileInfo(path).absolutePath());
        if (!image.save(path, "PNG")) {
            QTextStream(stderr) << "cannot write " << path << Qt::endl;
            ++failed;
        }
    }
    return failed ? 1 : 0;
}
