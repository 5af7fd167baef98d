#include "update/update_dialog.h"

#include "frame/qwinwidget.h"
#include "frame/settings.h"
#include "look/look.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <functional>

namespace edw {
namespace {

std::function<void(int)>& helpOpener()
{
    static std::function<void(int)> opener = [](int topic) { show_help(topic); };
    return opener;
}

} // namespace

void UpdateDialog::setHelpOpener(std::function<void(int)> opener)
{
    helpOpener() = opener ? std::move(opener) : [](int topic) { show_help(topic); };
}

UpdateDialog::UpdateDialog(const QString& title, const QString& text, bool* flag, QWidget* parent)
    : QDialog(parent), m_flag(flag)
{
    setObjectName(QStringLiteral("UpdateDialog"));
    auto* layout = new QVBoxLayout(this);
    layout->setObjectName(QStringLiteral("verticalLayout"));
    m_text = new QLabel(this);
    m_text->setObjectName(QStringLiteral("qText"));
    m_text->setWordWrap(true);
    // Design-time text; the caller's message replaces it below.
    m_text->setText(QStringLiteral(
        "\nНайдено X элементов чертежа (Н типоразмеров), отличающихся от элементов в каталоге. "
        "Все рассогласованные элементы на чертеже будут перестроены в соответствии с "
        "каталогом.\n\nДля просмотра измененных пользовательских элементов используйте команду "
        "Меню - Выделить - Группу...\n"));
    layout->addWidget(m_text);
    m_flyBox = new QCheckBox(
        QStringLiteral("Заменить для данного чертежа на всплывающее сообщение"), this);
    m_flyBox->setObjectName(QStringLiteral("qFlyBox"));
    layout->addWidget(m_flyBox);

    auto* buttons = new QHBoxLayout;
    buttons->setObjectName(QStringLiteral("horizontalLayout"));
    m_helpButton = new QPushButton(QStringLiteral("Справка"), this);
    m_helpButton->setObjectName(QStringLiteral("helpButton"));
    buttons->addWidget(m_helpButton);
    buttons->addStretch(1);
    m_okButton = new QPushButton(QStringLiteral("Сохранить"), this);
    m_okButton->setObjectName(QStringLiteral("okButton"));
    m_okButton->setDefault(true);
    buttons->addWidget(m_okButton);
    m_cancelButton = new QPushButton(QStringLiteral("Отменить"), this);
    m_cancelButton->setObjectName(QStringLiteral("cancelButton"));
    buttons->addWidget(m_cancelButton);
    layout->addLayout(buttons);
    // The form closes the dialog by its cancel button; none of the dialog's own slots is
    // connected to it.
    connect(m_cancelButton, &QPushButton::clicked, this, &QDialog::reject);

    setWindowTitle(title);
    m_text->setText(text);
    m_flyBox->setChecked(flag && *flag);
    // Tall enough for the wrapped message at the notice's width.
    // (the frame sizes the dialog by its size hint, which knows nothing of the wrapping).
    constexpr int kWidth = 460;
    m_text->setMinimumHeight(m_text->heightForWidth(kWidth - 40));
    resize(kWidth, sizeHint().height());

    connect(m_flyBox, &QCheckBox::clicked, this, &UpdateDialog::OnFlyBoxChecked);
    connect(m_okButton, &QPushButton::clicked, this, &UpdateDialog::OnOkButtonClicked);
    connect(m_helpButton, &QPushButton::clicked, this, &UpdateDialog::OnHelpButtonClicked);
}

void UpdateDialog::OnFlyBoxChecked()
{
    if (m_flag) *m_flag = m_flyBox->isChecked();
}

void UpdateDialog::OnOkButtonClicked()
{
    accept();
}

void UpdateDialog::OnHelpButtonClicked()
{
    try {
        helpOpener()(kHelpTopic);
    } catch (...) {
        // No host, no help.
    }
}

int runUpdateDialog(quintptr parentWindow, const QString& title, const QString& text, bool* flag)
{
    QWinWidget host(parentWindow);
    UpdateDialog dialog(title, text, flag, &host);
    qt::attach_styled_frame(&dialog);
    return dialog.exec();
}

} // namespace edw
