#include "engsys/select_part_dialog.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

SelectPartDialog::SelectPartDialog(const QStringList& parts, const QString& curPart,
                                   QWidget* parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("SelectPartDialog"));
    setWindowTitle(QStringLiteral("Текущий раздел"));

    auto* layout = new QVBoxLayout(this);
    layout->setObjectName(QStringLiteral("verticalLayout"));
    m_partButtonsLayout = new QVBoxLayout;
    m_partButtonsLayout->setObjectName(QStringLiteral("partButtonsLayout"));
    layout->addLayout(m_partButtonsLayout);
    layout->addStretch(1);

    // The two design-time buttons; their texts are always replaced by the first two sections.
    const QStringList designTexts = {QStringLiteral("Газоснабжение (ТХ)"),
                                     QStringLiteral("Технология (ТХ)")};
    for (int i = 0; i < designTexts.size(); ++i) {
        auto* button = new QRadioButton(designTexts[i], this);
        button->setObjectName(QStringLiteral("partButton%1").arg(i + 1));
        m_partButtonsLayout->addWidget(button);
        m_partButtons << button;
    }

    auto* buttons = new QHBoxLayout;
    buttons->setObjectName(QStringLiteral("buttonsLayout"));
    buttons->addStretch(1);
    m_okButton = new QPushButton(QStringLiteral("OK"), this);
    m_okButton->setObjectName(QStringLiteral("okButton"));
    m_okButton->setDefault(true);
    buttons->addWidget(m_okButton);
    layout->addLayout(buttons);
    connect(m_okButton, &QPushButton::clicked, this, &QDialog::accept);

    resize(kInitialWidth, kInitialHeight);

    for (int i = 0; i < parts.size() && i < 2; ++i)
        m_partButtons[i]->setText(parts[i]);
    if (parts.size() < 2) m_partButtons[1]->hide();

    const int initialHeight = height();
    for (int i = 2; i < parts.size(); ++i) {
        auto* button = new QRadioButton(parts[i], this);
        button->setObjectName(QStringLiteral("partButton%1").arg(i + 1));
        m_partButtonsLayout->addWidget(button);
        m_partButtons << button;

        grow(initialHeight / 2);
    }

    for (QRadioButton* button : std::as_const(m_partButtons)) {
        if (!button->isHidden() && button->text() == curPart) {
            button->setChecked(true);
            break;
        }
    }
}

void SelectPartDialog::grow(int extra)
{
    // A dialog not placed yet is centred over its parent when shown; a placed one keeps its
    // centre.
    if (!testAttribute(Qt::WA_Moved)) {
        resize(width(), height() + extra);
        return;
    }
    QRect grown = geometry();
    const QPoint centre = grown.center();
    grown.setHeight(grown.height() + extra);
    grown.moveCenter(centre);
    setGeometry(grown);
}

QString SelectPartDialog::chosenPart() const
{
    for (const QRadioButton* button : m_partButtons) {
        if (button->isChecked()) return button->text();
    }
    return {};
}
