#include "look/message_box.h"

#include "look/message_box_dialog.h"

#include <QPointer>

namespace qt {

namespace {

QMessageBox::StandardButton run(QWidget* parent, QMessageBox::Icon icon, const QString& title,
                                const QString& text, QMessageBox::StandardButtons buttons,
                                QMessageBox::StandardButton defaultButton)
{
    QPointer<message_box_dialog> box = new message_box_dialog(icon, title, text, buttons, parent);
    box->setDefaultButton(defaultButton);
    box->exec();
    if (!box) return QMessageBox::NoButton; // destroyed with its parent while open
    const QMessageBox::StandardButton answer = box->clickedButton();
    delete box;
    return answer;
}

} // namespace

int message_box::show(QWidget* parent, QMessageBox::Icon icon, const QString& title,
                      const QString& text, QMessageBox::StandardButtons buttons,
                      QMessageBox::StandardButton defaultButton)
{
    return run(parent, icon, title, text, buttons, defaultButton);
}

QMessageBox::StandardButton message_box::information(QWidget* parent, const QString& title,
                                                     const QString& text,
                                                     QMessageBox::StandardButtons buttons,
                                                     QMessageBox::StandardButton defaultButton)
{
    return run(parent, QMessageBox::Information, title, text, buttons, defaultButton);
}

QMessageBox::StandardButton message_box::warning(QWidget* parent, const QString& title,
                                                 const QString& text,
                                                 QMessageBox::StandardButtons buttons,
                                                 QMessageBox::StandardButton defaultButton)
{
    return run(parent, QMessageBox::Warning, title, text, buttons, defaultButton);
}

QMessageBox::StandardButton message_box::question(QWidget* parent, const QString& title,
                                                  const QString& text,
                                                  QMessageBox::StandardButtons buttons,
                                                  QMessageBox::StandardButton defaultButton)
{
    return run(parent, QMessageBox::Question, title, text, buttons, defaultButton);
}

QMessageBox::StandardButton message_box::critical(QWidget* parent, const QString& title,
                                                  const QString& text,
                                                  QMessageBox::StandardButtons buttons,
                                                  QMessageBox::StandardButton defaultButton)
{
    return run(parent, QMessageBox::Critical, title, text, buttons, defaultButton);
}

QString message_box::buttonObjectName(QMessageBox::StandardButton button)
{
    return message_box_dialog::buttonObjectName(button);
}

QString message_box::buttonText(QMessageBox::StandardButton button)
{
    return message_box_dialog::buttonText(button);
}

} // namespace qt
