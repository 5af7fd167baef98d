#pragma once

#include <QDialog>
#include <QMessageBox>

class QAbstractButton;
class QDialogButtonBox;
class QLabel;

namespace qt {

// The dialog behind qt::message_box: picture, text and Russian standard buttons, wearing the
// library's frame. Use the static functions of qt::message_box; this class is for them and
// for tests.
class message_box_dialog : public QDialog
{
    Q_OBJECT
public:
    message_box_dialog(QMessageBox::Icon icon, const QString& title, const QString& text,
                       QMessageBox::StandardButtons buttons, QWidget* parent = nullptr);

    void setDefaultButton(QMessageBox::StandardButton button);
    QPushButton* button(QMessageBox::StandardButton button) const;
    // The button pressed, or the escape button when the box was closed another way.
    QMessageBox::StandardButton clickedButton() const { return m_clicked; }
    QMessageBox::StandardButton escapeButton() const;

    // Resource path of the picture for an icon; empty for NoIcon.
    static QString picturePath(QMessageBox::Icon icon);
    static QString buttonObjectName(QMessageBox::StandardButton button);
    static QString buttonText(QMessageBox::StandardButton button);

public slots:
    void reject() override;

private:
    void onClicked(QAbstractButton* button);

    QLabel* m_picture = nullptr;
    QLabel* m_text = nullptr;
    QDialogButtonBox* m_buttons = nullptr;
    QMessageBox::StandardButton m_clicked = QMessageBox::NoButton;
};

} // namespace qt
