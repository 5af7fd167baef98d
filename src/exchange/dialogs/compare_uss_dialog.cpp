#include "compare_uss_dialog.h"

#include "compare_views.h"

#include <catalog/esconvert.h>
#include <look/look.h>

#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTabWidget>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace exchange {
namespace {

constexpr QSize kPreviewSize(240, 200);

// What the catalog's element holds for the record's attribute: its formula when the record
// carries a formula, its value otherwise.
QString mineText(es_stdsize_t* mine, const AttributeRecord& attribute)
{
    if (!mine) return {};
    const std::u16string name = edw::toEs(attribute.name);
    if (!attribute.val && attribute.formula) {
        es_attribute_t* own = table_FindAttribute(stdsize_GetTable(mine), name.c_str());
        if (own && !edw::fromEs(attribute_GetFormula(own)).isEmpty())
            return edw::fromEs(attribute_GetFormula(own));
    }
    es_value value{};
    stdsize_GetValueByName(mine, name.c_str(), &value);
    return edw::valueToText(value);
}

} // namespace

CompareUssDialog::CompareUssDialog(es_stdsize_t* mine, const ImportElement& imported,
                                   ImportArchive& archive, bool laterVersion, QWidget* parent)
    : QDialog(parent), m_previews(std::make_unique<PreviewPainter>())
{
    buildWidgets();
    setWindowTitle(QStringLiteral("Сравнение параметров пользовательских элементов"));
    fillViews(mine, imported, archive);
    fillParameters(mine, imported);
    if (laterVersion) {
        m_impButton->setEnabled(false);
        m_impButton->setToolTip(QStringLiteral("Элемент создан в более поздней версии Гравис-3D"));
    }

    for (QToolButton* button : m_viewButtons)
        connect(button, &QToolButton::clicked, this, &CompareUssDialog::OnViewButtonClicked);
    connect(m_impButton, &QPushButton::clicked, this, [this] {
        m_choice = Choice::Imported;
        accept();
    });
    connect(m_mineButton, &QPushButton::clicked, this, [this] {
        m_choice = Choice::Mine;
        accept();
    });
    connect(m_closeButton, &QPushButton::clicked, this, &CompareUssDialog::reject);

    setWindowFlags(windowFlags() | Qt::FramelessWindowHint);
    qt::attach_styled_frame(this);
}

CompareUssDialog::~CompareUssDialog() = default;

void CompareUssDialog::buildWidgets()
{
    setObjectName(QStringLiteral("CompareUssDialog"));
    const CompareLayout built = buildCompareLayout(
        this, QStringLiteral("CompareTreeWidget"),
        {QStringLiteral("Свойство"), QStringLiteral("Имп. элемент"), QStringLiteral("Мой элемент")},
        {QStringLiteral("Заменить на импортируемый"), QStringLiteral("impButton")},
        {QStringLiteral("Оставить мой"), QStringLiteral("mineButton")});
    m_tabs = built.tabs;
    m_viewButtons = built.viewButtons;
    m_tree = built.tree;
    m_impButton = built.first;
    m_mineButton = built.second;
    m_closeButton = built.close;

    // The imported element's views left of mine.
    auto* importedBox = new QGroupBox(QStringLiteral("Импортируемый элемент"));
    importedBox->setObjectName(QStringLiteral("groupBox"));
    m_imageImported = previewLabel(QStringLiteral("qViewImage_Imp"), kPreviewSize, importedBox);
    (new QVBoxLayout(importedBox))->addWidget(m_imageImported);
    auto* mineBox = new QGroupBox(QStringLiteral("Мой элемент"));
    mineBox->setObjectName(QStringLiteral("groupBox_2"));
    m_imageMine = previewLabel(QStringLiteral("qViewImageMine"), kPreviewSize, mineBox);
    (new QVBoxLayout(mineBox))->addWidget(m_imageMine);
    built.views->addWidget(importedBox);
    built.views->addWidget(mineBox);
}

void CompareUssDialog::fillViews(es_stdsize_t* mine, const ImportElement& imported,
                                 ImportArchive& archive)
{
    bool differs = false;
    QToolButton* first = nullptr;
    for (int i = 0; i < kCompareSlotCount; ++i) {
        const CompareSlot slot = compareSlot(i, mine, imported, archive);
        applySlot(m_viewButtons[i], i, slot, true);
        differs = differs || (slot.enabled && slot.differs);
        if (slot.enabled && !first) first = m_viewButtons[i];
    }
    if (differs) markTab(m_tabs, 0);
    // The first view both sides may have is shown from the start.
    if (first) {
        first->setChecked(true);
        showSlot(first);
    }
}

void CompareUssDialog::fillParameters(es_stdsize_t* mine, const ImportElement& imported)
{
    bool differs = false;
    int row = 0;
    for (const AttributeRecord& attribute : imported.atr) {
        const QString label = attribute.desc.value_or(attribute.name);
        const QString theirs = importedText(attribute);
        const QString own = mineText(mine, attribute);
        auto* item = new QTreeWidgetItem(m_tree, {label, theirs, own});
        for (int column = 0; column < 3; ++column)
            item->setToolTip(column, item->text(column));
        // Every second row grey, so that a long list reads across.
        if (row++ % 2 == 1) {
            for (int column = 0; column < 3; ++column) {
                item->setBackground(column, QColor(246, 246, 246));
                item->setForeground(column, QColor(Qt::black));
            }
        }
        if (!sameValue(attribute.type, theirs, own)) {
            differs = true;
            item->setForeground(1, QColor(Qt::red));
            item->setForeground(2, QColor(Qt::red));
        }
    }
    if (differs) markTab(m_tabs, 1);
}

void CompareUssDialog::OnViewButtonClicked()
{
    if (auto* button = qobject_cast<QToolButton*>(sender())) showSlot(button);
}

void CompareUssDialog::showSlot(QToolButton* button)
{
    m_previews->show(m_imageImported, button->property("importFile").toString());
    m_previews->show(m_imageMine, button->property("stdFile").toString());
}

} // namespace exchange
