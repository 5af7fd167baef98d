#include "look/styled_dialog.h"

#include "look/look.h"
#include "look/look_p.h"
#include "look/resizable_frame.h"

#include <QDialog>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QLayout>
#include <QMouseEvent>
#include <QPushButton>
#include <QVBoxLayout>
#include <QWindow>

namespace qt {

styled_dialog::styled_dialog(bool dark, QWidget* widget, const QString& closeIcon)
    : QObject(widget), m_target(widget), m_closeIcon(closeIcon), m_dark(dark)
{
    if (!widget) return;
    ensure_resources();

    m_titleBar = new QFrame(widget);
    m_titleBar->setObjectName(QStringLiteral("aec_styled_titlebar"));
    auto* titleLayout = new QHBoxLayout(m_titleBar);
    titleLayout->setContentsMargins(0, 0, 0, 0);
    titleLayout->setSpacing(0);

    m_titleLabel = new QLabel(m_titleBar);
    m_titleLabel->setObjectName(QStringLiteral("aec_styled_titlelabel"));
    m_titleLabel->setAlignment(Qt::AlignCenter);
    m_titleLabel->setText(widget->windowTitle().toUpper());
    titleLayout->addWidget(m_titleLabel, 1);

    const int buttonSize = detail::screen_scaled(kCloseButtonSize);
    m_closeButton = new QPushButton(m_titleBar);
    m_closeButton->setObjectName(QStringLiteral("aec_styled_closebutton"));
    m_closeButton->setFlat(true);
    m_closeButton->setDefault(false);
    m_closeButton->setAutoDefault(false);
    m_closeButton->setFocusPolicy(Qt::NoFocus);
    m_closeButton->setAttribute(Qt::WA_LayoutUsesWidgetRect);
    m_closeButton->setIconSize(QSize(buttonSize, buttonSize));
    m_closeButton->setFixedSize(buttonSize, buttonSize);
    const QString icon = !closeIcon.isEmpty() ? closeIcon
                         : dark               ? QStringLiteral(":/aec/cross-close-light")
                                              : QStringLiteral(":/aec/cross-close");
    m_closeButton->setIcon(QIcon(icon));
    titleLayout->addWidget(m_closeButton, 0, Qt::AlignRight | Qt::AlignTop);
    m_closeButton->setHidden(!widget->windowFlags().testFlag(Qt::WindowCloseButtonHint));
    connect(m_closeButton, &QPushButton::clicked, this, &styled_dialog::onCloseClicked);
    connect(widget, &QWidget::windowTitleChanged, this, &styled_dialog::onTitleChanged);

    m_border = new resizable_frame(widget);
    auto* content = new QWidget(m_border);
    content->setObjectName(QStringLiteral("aec_styled_content"));
    // The content takes the dialog's own layout with every item in it.
    if (QLayout* existing = widget->layout()) content->setLayout(existing);

    auto* outer = new QVBoxLayout(widget);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->setSpacing(0);
    outer->addWidget(m_border);

    auto* borderLayout = new QVBoxLayout(m_border);
    borderLayout->setContentsMargins(0, 0, 0, 0);
    borderLayout->setSpacing(0);
    borderLayout->addWidget(m_titleBar, 0);
    borderLayout->addWidget(content, 1);

    widget->setStyleSheet(style_sheet(dark));
    m_titleBar->installEventFilter(this);
}

styled_dialog::~styled_dialog() = default;

QWidget* styled_dialog::target() const
{
    return m_target;
}

QFrame* styled_dialog::titleBar() const
{
    return m_titleBar;
}

QLabel* styled_dialog::titleLabel() const
{
    return m_titleLabel;
}

QPushButton* styled_dialog::closeButton() const
{
    return m_closeButton;
}

resizable_frame* styled_dialog::border() const
{
    return m_border;
}

bool styled_dialog::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != m_titleBar || !m_target || !m_target->isWindow())
        return QObject::eventFilter(watched, event);

    switch (event->type()) {
    case QEvent::MouseButtonDblClick: {
        const QSizePolicy policy = m_target->sizePolicy();
        if (policy.horizontalPolicy() != QSizePolicy::Fixed &&
            policy.verticalPolicy() != QSizePolicy::Fixed &&
            m_target->size() != m_target->maximumSize()) {
            if (m_target->isMaximized())
                m_target->showNormal();
            else
                m_target->showMaximized();
            return true;
        }
        break;
    }
    case QEvent::MouseButtonPress: {
        const auto* press = static_cast<QMouseEvent*>(event);
        // The top band of the title bar belongs to the border's resize zone.
        if (press->button() == Qt::LeftButton && press->position().y() > kResizeBand) {
            QWindow* window = m_target->windowHandle();
            if (window && beginSystemMove(window)) return true;
        }
        break;
    }
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

bool styled_dialog::beginSystemMove(QWindow* window)
{
    return window->startSystemMove();
}

void styled_dialog::onCloseClicked()
{
    emit titlebarButtonClicked();
    if (auto* dialog = qobject_cast<QDialog*>(m_target.data())) dialog->reject();
}

void styled_dialog::onTitleChanged(const QString& title)
{
    if (m_titleLabel) m_titleLabel->setText(title.toUpper());
}

} // namespace qt
