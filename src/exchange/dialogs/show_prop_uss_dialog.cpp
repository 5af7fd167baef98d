#include "show_prop_uss_dialog.h"

#include "compare_views.h"

#include <look/look.h>

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTabWidget>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace exchange {

ShowPropUssDialog::ShowPropUssDialog(const ImportRecord& imported, ImportArchive& archive,
                                     QWidget* parent)
    : QDialog(parent), m_previews(std::make_unique<PreviewPainter>())
{
    buildWidgets();
    setWindowTitle(QStringLiteral("Свойства пользовательского элемента"));

    // Views: only the record's side, so nothing is marked as differing.
    QToolButton* first = nullptr;
    for (int i = 0; i < kCompareSlotCount; ++i) {
        const CompareSlot slot = compareSlot(i, nullptr, imported, archive);
        applySlot(m_viewButtons[i], i, slot, false);
        if (slot.enabled && !first) first = m_viewButtons[i];
    }
    if (first) {
        first->setChecked(true);
        showSlot(first);
    }

    int row = 0;
    for (const AttributeRecord& attribute : imported.atr) {
        auto* item = new QTreeWidgetItem(
            m_tree, {attribute.desc.value_or(attribute.name), importedText(attribute)});
        for (int column = 0; column < 2; ++column) {
            item->setToolTip(column, item->text(column));
            if (row % 2 == 1) {
                item->setBackground(column, QColor(246, 246, 246));
                item->setForeground(column, QColor(Qt::black));
            }
        }
        ++row;
    }

    for (QToolButton* button : m_viewButtons)
        connect(button, &QToolButton::clicked, this, &ShowPropUssDialog::OnViewButtonClicked);
    connect(m_addButton, &QPushButton::clicked, this, [this] {
        m_choice = Choice::Add;
        accept();
    });
    connect(m_dontAddButton, &QPushButton::clicked, this, [this] {
        m_choice = Choice::DontAdd;
        accept();
    });
    connect(m_closeButton, &QPushButton::clicked, this, &ShowPropUssDialog::reject);

    setWindowFlags(windowFlags() | Qt::FramelessWindowHint);
    qt::attach_styled_frame(this);
}

ShowPropUssDialog::~ShowPropUssDialog() = default;

void ShowPropUssDialog::buildWidgets()
{
    setObjectName(QStringLiteral("ShowPropUssDialog"));
    auto* layout = new QVBoxLayout(this);
    m_tabs = new QTabWidget(this);
    m_tabs->setObjectName(QStringLiteral("tabWidget"));
    layout->addWidget(m_tabs);

    auto* viewTab = new QWidget;
    viewTab->setObjectName(QStringLiteral("qViewTab"));
    auto* viewLayout = new QHBoxLayout(viewTab);
    m_viewButtons = addViewButtons(viewTab);
    m_image = new QLabel(viewTab);
    m_image->setObjectName(QStringLiteral("qViewImage"));
    m_image->setStyleSheet(QStringLiteral("border: 1px solid black"));
    m_image->setFixedSize(262, 222);
    m_image->setAlignment(Qt::AlignCenter);
    m_image->setWordWrap(true);
    viewLayout->addWidget(m_image);
    m_tabs->addTab(viewTab, QStringLiteral("Отображение"));

    auto* paramTab = new QWidget;
    paramTab->setObjectName(QStringLiteral("qParamTab"));
    auto* paramLayout = new QVBoxLayout(paramTab);
    m_tree = new QTreeWidget(paramTab);
    m_tree->setObjectName(QStringLiteral("treeWidget"));
    m_tree->setColumnCount(2);
    m_tree->setHeaderLabels({QStringLiteral("Свойство"), QStringLiteral("Значение")});
    m_tree->setRootIsDecorated(false);
    m_tree->header()->setSectionResizeMode(QHeaderView::Stretch);
    paramLayout->addWidget(m_tree);
    m_tabs->addTab(paramTab, QStringLiteral("Параметры"));

    auto* buttons = new QHBoxLayout;
    m_addButton = new QPushButton(QStringLiteral("Добавить"), this);
    m_addButton->setObjectName(QStringLiteral("addButton"));
    m_dontAddButton = new QPushButton(QStringLiteral("Не добавлять"), this);
    m_dontAddButton->setObjectName(QStringLiteral("dontaddButton"));
    m_closeButton = new QPushButton(QStringLiteral("Закрыть"), this);
    m_closeButton->setObjectName(QStringLiteral("closeButton"));
    buttons->addWidget(m_addButton);
    buttons->addWidget(m_dontAddButton);
    buttons->addStretch(1);
    buttons->addWidget(m_closeButton);
    layout->addLayout(buttons);
}

void ShowPropUssDialog::OnViewButtonClicked()
{
    if (auto* button = qobject_cast<QToolButton*>(sender())) showSlot(button);
}

void ShowPropUssDialog::showSlot(QToolButton* button)
{
    m_previews->show(m_image, button->property("importFile").toString());
}

} // namespace exchange
