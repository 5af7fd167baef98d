#pragma once

#include <QMessageBox>
#include <QString>

class QWidget;

namespace qt {

// The library's message box: a modal dialog wearing the library's frame and style, with the
// library's pictures. Each function runs it and returns the button the user pressed; closing
// it by the cross or Escape returns the escape button (Cancel, No, Close... or the only one).
// Buttons carry object names for scripted use: "okButton", "cancelButton", "yesButton",
// "noButton", "closeButton", "saveButton", "discardButton", "applyButton", "abortButton",
// "retryButton", "ignoreButton", "openButton", "helpButton", "yesToAllButton",
// "noToAllButton", "resetButton", "restoreDefaultsButton", "saveAllButton".
class message_box
{
public:
    static int show(QWidget* parent, QMessageBox::Icon icon, const QString& title,
                    const QString& text, QMessageBox::StandardButtons buttons = QMessageBox::Ok,
                    QMessageBox::StandardButton defaultButton = QMessageBox::NoButton);

    static QMessageBox::StandardButton
    information(QWidget* parent, const QString& title, const QString& text,
                QMessageBox::StandardButtons buttons = QMessageBox::Ok,
                QMessageBox::StandardButton defaultButton = QMessageBox::NoButton);
    static QMessageBox::StandardButton
    warning(QWidget* parent, const QString& title, const QString& text,
            QMessageBox::StandardButtons buttons = QMessageBox::Ok,
            QMessageBox::StandardButton defaultButton = QMessageBox::NoButton);
    static QMessageBox::StandardButton
    question(QWidget* parent, const QString& title, const QString& text,
             QMessageBox::StandardButtons buttons = QMessageBox::Yes | QMessageBox::No,
             QMessageBox::StandardButton defaultButton = QMessageBox::NoButton);
    static QMessageBox::StandardButton
    critical(QWidget* parent, const QString& title, const QString& text,
             QMessageBox::StandardButtons buttons = QMessageBox::Ok,
             QMessageBox::StandardButton defaultButton = QMessageBox::NoButton);

    // Object name of the button of a standard button ("okButton", ...); empty for NoButton.
    static QString buttonObjectName(QMessageBox::StandardButton button);
    // Russian caption of a standard button ("OK", "Отмена", "Да", "Нет", ...).
    static QString buttonText(QMessageBox::StandardButton button);
};

} // namespace qt
