#pragma once

// The notice that a drawing's user elements were rebuilt from the catalog, with the box by
// which the user asks for a pop-up message instead from now on, for this drawing.

#include <QDialog>
#include <QtGlobal>

class QCheckBox;
class QLabel;
class QPushButton;

namespace edw {

class UpdateDialog : public QDialog
{
    Q_OBJECT
public:
    // flag: the caller's "pop-up instead" flag; checked into qFlyBox now and written on every
    // click of it. May be null.
    UpdateDialog(const QString& title, const QString& text, bool* flag, QWidget* parent = nullptr);

    // Opens the library's help at a topic; the host's help unless replaced (tests).
    static void setHelpOpener(std::function<void(int topic)> opener);
    static constexpr int kHelpTopic = 17;

private slots:
    void OnFlyBoxChecked();
    void OnOkButtonClicked();
    void OnHelpButtonClicked();

private:
    bool* m_flag = nullptr;
    QLabel* m_text = nullptr;
    QCheckBox* m_flyBox = nullptr;
    QPushButton* m_helpButton = nullptr;
    QPushButton* m_okButton = nullptr;
    QPushButton* m_cancelButton = nullptr;
};

// Shows the notice modally under the host window; returns the dialog's result (1 after
// "Сохранить", 0 otherwise). The flag holds the box's last state.
int runUpdateDialog(quintptr parentWindow, const QString& title, const QString& text, bool* flag);

} // namespace edw
