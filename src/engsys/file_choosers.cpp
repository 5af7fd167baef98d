#include "engsys/file_choosers.h"

#include "look/look.h"

#include <QAction>
#include <QDir>
#include <QFileDialog>
#include <QIdentityProxyModel>
#include <QToolButton>

namespace edw {
namespace {

// Gives the column titles of Qt's own chooser in Russian; everything else passes through.
class RussianColumnTitles : public QIdentityProxyModel
{
public:
    using QIdentityProxyModel::QIdentityProxyModel;

    QVariant headerData(int section, Qt::Orientation orientation, int role) const override
    {
        static const QStringList titles{QStringLiteral("Имя"), QStringLiteral("Размер"),
                                        QStringLiteral("Тип"), QStringLiteral("Дата изменения")};
        if (orientation == Qt::Horizontal && role == Qt::DisplayRole && section >= 0 &&
            section < titles.size())
            return titles.at(section);
        return QIdentityProxyModel::headerData(section, orientation, role);
    }
};

void setToolTip(QFileDialog* chooser, const char* name, const QString& text)
{
    if (auto* button = chooser->findChild<QToolButton*>(QLatin1String(name)))
        button->setToolTip(text);
}

void setActionText(QFileDialog* chooser, const char* name, const QString& text)
{
    if (auto* action = chooser->findChild<QAction*>(QLatin1String(name))) action->setText(text);
}

// Qt's own chooser speaks the language of the translators the host installed (English when
// none): the library installs none of its own into the host's application, so it gives this
// chooser its Russian texts itself. The shell's chooser speaks the system's language.
void speakRussian(QFileDialog* chooser, const QString& nameLabel, const QString& accept)
{
    chooser->setLabelText(QFileDialog::LookIn, QStringLiteral("Папка:"));
    chooser->setLabelText(QFileDialog::FileName, nameLabel);
    chooser->setLabelText(QFileDialog::FileType, QStringLiteral("Тип файла:"));
    chooser->setLabelText(QFileDialog::Accept, accept);
    chooser->setLabelText(QFileDialog::Reject, QStringLiteral("Отмена"));
    if (!chooser->testOption(QFileDialog::DontUseNativeDialog)) return;
    chooser->setProxyModel(new RussianColumnTitles(chooser));
    setToolTip(chooser, "backButton", QStringLiteral("Назад"));
    setToolTip(chooser, "forwardButton", QStringLiteral("Вперед"));
    setToolTip(chooser, "toParentButton", QStringLiteral("Вверх"));
    setToolTip(chooser, "newFolderButton", QStringLiteral("Создать папку"));
    setToolTip(chooser, "listModeButton", QStringLiteral("Список"));
    setToolTip(chooser, "detailModeButton", QStringLiteral("Таблица"));
    setActionText(chooser, "qt_rename_action", QStringLiteral("Переименовать"));
    setActionText(chooser, "qt_delete_action", QStringLiteral("Удалить"));
    setActionText(chooser, "qt_show_hidden_action", QStringLiteral("Показывать скрытые файлы"));
    setActionText(chooser, "qt_new_folder_action", QStringLiteral("Создать папку"));
}

QFileDialog* makeChooser(QWidget* parent, const QString& title)
{
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
    speakRussian(chooser, QStringLiteral("Имя папки:"), QStringLiteral("Выбрать"));
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
    // After the accept mode, which makes the buttons anew.
    speakRussian(chooser, QStringLiteral("Имя файла:"), QStringLiteral("Сохранить"));
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
