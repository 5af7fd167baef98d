#include "engsys/save_cdw_dialog.h"

#include "engsys/drawing_files.h"

#include <QCommandLinkButton>
#include <QVBoxLayout>

SaveCdwDialog::SaveCdwDialog(const QString& path, QWidget* parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("SaveCdwDialog"));
    setWindowTitle(edw::existingDrawingTitle(path));
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);

    auto* layout = new QVBoxLayout(this);
    layout->setObjectName(QStringLiteral("verticalLayout"));
    addChoice("reloadButton", QStringLiteral("Обновить чертеж"),
              QStringLiteral("Существующий чертеж будет сохранен с расширением bak. Будет создан "
                             "новый чертеж с тем же именем, содержащий данные, полученные из "
                             "файла формата IFC."),
              Reload);
    addChoice("createButton", QStringLiteral("Создать новый чертеж"),
              QStringLiteral("В появившемся диалоге укажите другое имя чертежа либо другую "
                             "папку."),
              Create);
    addChoice("cancelButton", QStringLiteral("Отмена"),
              QStringLiteral("Получение данных из файла формата IFC будет прервано."), Cancel);
}

QCommandLinkButton* SaveCdwDialog::addChoice(const char* objectName, const QString& text,
                                             const QString& description, int choice)
{
    auto* button = new QCommandLinkButton(text, description, this);
    button->setObjectName(QLatin1String(objectName));
    // Wide enough that the descriptions wrap into two lines at most.
    button->setMinimumWidth(440);
    layout()->addWidget(button);
    connect(button, &QCommandLinkButton::clicked, this, [this, choice] { choose(choice); });
    return button;
}

void SaveCdwDialog::choose(int choice)
{
    m_choice = choice;
    done(choice);
}

void SaveCdwDialog::reject()
{
    // The close box and Escape mean: stop getting data.
    m_choice = Cancel;
    QDialog::reject();
}
