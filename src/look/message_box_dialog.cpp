#include "look/message_box_dialog.h"

#include "look/look.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace qt {

namespace {

struct ButtonInfo
{
    QMessageBox::StandardButton button;
    const char* objectName;
    const char* text;
};

// Buttons in the order they are added to the box, with their object names and captions.
const ButtonInfo kButtons[] = {
    {QMessageBox::Ok, "okButton", "OK"},
    {QMessageBox::Save, "saveButton", "Сохранить"},
    {QMessageBox::SaveAll, "saveAllButton", "Сохранить все"},
    {QMessageBox::Open, "openButton", "Открыть"},
    {QMessageBox::Yes, "yesButton", "Да"},
    {QMessageBox::YesToAll, "yesToAllButton", "Да для всех"},
    {QMessageBox::No, "noButton", "Нет"},
    {QMessageBox::NoToAll, "noToAllButton", "Нет для всех"},
    {QMessageBox::Abort, "abortButton", "Прервать"},
    {QMessageBox::Retry, "retryButton", "Повторить"},
    {QMessageBox::Ignore, "ignoreButton", "Пропустить"},
    {QMessageBox::Close, "closeButton", "Закрыть"},
    {QMessageBox::Cancel, "cancelButton", "Отмена"},
    {QMessageBox::Discard, "discardButton", "Не сохранять"},
    {QMessageBox::Help, "helpButton", "Справка"},
    {QMessageBox::Apply, "applyButton", "Применить"},
    {QMessageBox::Reset, "resetButton", "Сбросить"},
    {QMessageBox::RestoreDefaults, "restoreDefaultsButton", "Восстановить"},
};

const ButtonInfo* info(QMessageBox::StandardButton button)
{
    for (const auto& entry : kButtons) {
        if (entry.button == button) return &entry;
    }
    return nullptr;
}

} // namespace

message_box_dialog::message_box_dialog(QMessageBox::Icon icon, const QString& title,
                                       const QString& text, QMessageBox::StandardButtons buttons,
                                       QWidget* parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("aec_message_box"));
    setWindowTitle(title);
    setModal(true);

    m_picture = new QLabel(this);
    m_picture->setObjectName(QStringLiteral("pictureLabel"));
    m_picture->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    const QString picture = picturePath(icon);
    if (picture.isEmpty())
        m_picture->hide();
    else
        m_picture->setPixmap(QPixmap(picture));

    m_text = new QLabel(text, this);
    m_text->setObjectName(QStringLiteral("textLabel"));
    m_text->setWordWrap(true);
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_text->setMinimumWidth(320);
    m_text->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);

    m_buttons = new QDialogButtonBox(this);
    m_buttons->setObjectName(QStringLiteral("buttonBox"));
    m_buttons->setCenterButtons(true);
    if (buttons == QMessageBox::NoButton) buttons = QMessageBox::Ok;
    for (const auto& entry : kButtons) {
        if (!buttons.testFlag(entry.button)) continue;
        QPushButton* push =
            m_buttons->addButton(static_cast<QDialogButtonBox::StandardButton>(entry.button));
        push->setObjectName(QLatin1String(entry.objectName));
        push->setText(QString::fromUtf8(entry.text));
        push->setAutoDefault(false);
    }
    connect(m_buttons, &QDialogButtonBox::clicked, this, &message_box_dialog::onClicked);

    auto* message = new QHBoxLayout;
    message->setSpacing(12);
    message->addWidget(m_picture, 0, Qt::AlignTop);
    message->addWidget(m_text, 1);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(16, 16, 16, 12);
    layout->setSpacing(14);
    layout->addLayout(message);
    layout->addWidget(m_buttons);

    attach_styled_frame(this);
    // A message box keeps the size of its text: no resizing, no maximising.
    this->layout()->setSizeConstraint(QLayout::SetFixedSize);
}

QString message_box_dialog::picturePath(QMessageBox::Icon icon)
{
    switch (icon) {
    case QMessageBox::Information:
        return QStringLiteral(":/aec/mb_info.png");
    case QMessageBox::Question:
        return QStringLiteral(":/aec/mb_question.png");
    case QMessageBox::Warning:
    case QMessageBox::Critical:
        return QStringLiteral(":/aec/mb_warning.png");
    case QMessageBox::NoIcon:
    default:
        return {};
    }
}

void message_box_dialog::setDefaultButton(QMessageBox::StandardButton button)
{
    QPushButton* push = this->button(button);
    if (!push) {
        // Like the platform box: the first accepting button answers Enter.
        for (QAbstractButton* candidate : m_buttons->buttons()) {
            const auto role = m_buttons->buttonRole(candidate);
            if (role == QDialogButtonBox::AcceptRole || role == QDialogButtonBox::YesRole) {
                push = qobject_cast<QPushButton*>(candidate);
                break;
            }
        }
    }
    if (!push) return;
    push->setDefault(true);
    push->setFocus();
}

QPushButton* message_box_dialog::button(QMessageBox::StandardButton button) const
{
    return m_buttons->button(static_cast<QDialogButtonBox::StandardButton>(button));
}

QMessageBox::StandardButton message_box_dialog::escapeButton() const
{
    for (auto candidate : {QMessageBox::Cancel, QMessageBox::No, QMessageBox::Close,
                           QMessageBox::Abort, QMessageBox::Ignore}) {
        if (button(candidate)) return candidate;
    }
    const auto all = m_buttons->buttons();
    if (all.size() == 1)
        return static_cast<QMessageBox::StandardButton>(m_buttons->standardButton(all.first()));
    return QMessageBox::NoButton;
}

void message_box_dialog::reject()
{
    if (m_clicked == QMessageBox::NoButton) m_clicked = escapeButton();
    QDialog::reject();
}

void message_box_dialog::onClicked(QAbstractButton* button)
{
    m_clicked = static_cast<QMessageBox::StandardButton>(m_buttons->standardButton(button));
    done(m_clicked);
}

QString message_box_dialog::buttonObjectName(QMessageBox::StandardButton button)
{
    const ButtonInfo* entry = info(button);
    return entry ? QLatin1String(entry->objectName) : QString();
}

QString message_box_dialog::buttonText(QMessageBox::StandardButton button)
{
    const ButtonInfo* entry = info(button);
    return entry ? QString::fromUtf8(entry->text) : QString();
}

} // namespace qt
