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

ShowPropUssDialog::ShowPropUssDialog(const ImportElement& imported, ImportArchive& archive,
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
    const CompareLayout built = buildCompareLayout(
        this, QStringLiteral("treeWidget"), {QStringLiteral("Свойство"), QStringLiteral("Значение")},
        {QStringLiteral("Добавить"), QStringLiteral("addButton")},
        {QStringLiteral("Не добавлять"), QStringLiteral("dontaddButton")});
    m_tabs = built.tabs;
    m_viewButtons = built.viewButtons;
    m_tree = built.tree;
    m_addButton = built.first;
    m_dontAddButton = built.second;
    m_closeButton = built.close;
    m_image = previewLabel(QStringLiteral("qViewImage"), QSize(260, 220));
    built.views->addWidget(m_image);
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
