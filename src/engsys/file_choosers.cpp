#include "engsys/file_choosers.h"

#include "look/look.h"

#include <QDir>
#include <QFileDialog>

namespace edw {
namespace {

QFileDialog* makeChooser(QWidget* parent, const QString& title)
{
    // The chooser's labels are Qt's own: they are translated when the dialog is made.
    qt::use_russian_qt_texts();
    auto* chooser = new QFileDialog(parent, title);
#if !defined(Q_OS_WIN)
    // Outside Windows there is no shell chooser to hand over to: use Qt's own, which wears
    // the library's frame like every other dialog.
    chooser->setOption(QFileDialog::DontUseNativeDialog, true);
#endif
    return chooser;
}

} // namespace

QFileDialog* makeDirectoryChooser(QWidget* parent)
{
    QFileDialog* chooser =
        makeChooser(parent, QStringLiteral("Выберите папку для сохранения чертежа ГРАИС"));
    chooser->setObjectName(QStringLiteral("directoryChooser"));
    chooser->setFileMode(QFileDialog::Directory);
    chooser->setOption(QFileDialog::ShowDirsOnly, true);
    // Start in the current folder (an empty folder means the same to the shell's chooser,
    // but Qt's own would show the list of drives instead).
    chooser->setDirectory(QDir::currentPath());
    return chooser;
}

QFileDialog* makeFileSavingChooser(QWidget* parent, const QString& defaultPath)
{
    QFileDialog* chooser = makeChooser(parent, QStringLiteral("Укажите имя файла для записи"));
    chooser->setObjectName(QStringLiteral("fileSavingChooser"));
    chooser->setAcceptMode(QFileDialog::AcceptSave);
    chooser->setFileMode(QFileDialog::AnyFile);
    chooser->setNameFilter(QStringLiteral("ГРАВИС-Чертежи (*.cdw)"));
    chooser->selectFile(defaultPath);
    return chooser;
}

QString runChooser(QFileDialog* chooser)
{
    if (chooser->testOption(QFileDialog::DontUseNativeDialog)) qt::attach_styled_frame(chooser);
    if (chooser->exec() != QDialog::Accepted) return {};
    return chooser->selectedFiles().value(0);
}

} // namespace edw
