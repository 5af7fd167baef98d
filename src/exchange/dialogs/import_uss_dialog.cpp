#include "import_uss_dialog.h"

#include "compare_uss_dialog.h"
#include "exchangetexts.h"
#include "import_row_delegate.h"
#include "importarchive.h"

#include "look/look.h"

#include <QAction>
#include <QCheckBox>
#include <QDebug>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QToolButton>
#include <QTreeView>
#include <QVBoxLayout>

namespace exchange {

ImportUssDialog::ImportUssDialog(ImportArchive& archive, const std::vector<Decision>& decisions,
                                 std::vector<ImportGroup> groups,
                                 std::optional<long long> hostNumber, QWidget* parent)
    : QDialog(parent), m_archive(archive)
{
    m_model =
        new ImportDecisionModel(archive.records(), decisions, std::move(groups), hostNumber, this);
    m_filter = new ImportFilterModel(this);
    m_filter->setSourceModel(m_model);
    // The comparison of a conflict settles its row with impButton or mineButton.
    m_compare = [this](QWidget* parent, const ImportRecord& record,
                       bool later) -> std::optional<bool> {
        std::optional<ImportElement> element;
        try {
            element = m_archive.element(record);
        } catch (const std::exception& e) {
            // The import's temporary folder was taken away under it: nothing to show.
            qDebug() << e.what();
            return std::nullopt;
        }
        CompareUssDialog compare(record.existing, *element, m_archive, later, parent);
        compare.exec();
        switch (compare.choice()) {
        case CompareUssDialog::Choice::Imported:
            return true;
        case CompareUssDialog::Choice::Mine:
            return false;
        default:
            return std::nullopt;
        }
    };
    buildWidgets();
    connect(m_model, &ImportDecisionModel::importCountChanged, this,
            [this] { OnToggleRadioButton(true); });
    OnToggleRadioButton(true);
}

ImportUssDialog::~ImportUssDialog() = default;

void ImportUssDialog::buildWidgets()
{
    setWindowTitle(texts::importCaption());
    setObjectName(QStringLiteral("ImportUssDialog"));

    m_filterEdit = new QLineEdit(this);
    m_filterEdit->setObjectName(QStringLiteral("filterEdit"));
    m_filterEdit->setPlaceholderText(QStringLiteral("Поиск по имени или идентификатору"));
    m_filterEdit->setClearButtonEnabled(true);
    connect(m_filterEdit, &QLineEdit::textChanged, this, &ImportUssDialog::OnFilterTextChanged);

    m_tree = new QTreeView(this);
    m_tree->setObjectName(QStringLiteral("treeWidget"));
    m_tree->setUniformRowHeights(true);
    m_tree->setAllColumnsShowFocus(true);
    m_tree->setSelectionMode(QAbstractItemView::SingleSelection);
    m_tree->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_delegate = new ImportRowDelegate(m_tree);
    m_tree->setItemDelegate(m_delegate);
    m_tree->setModel(m_filter);
    m_tree->header()->setStretchLastSection(false);
    m_tree->header()->setSectionResizeMode(QHeaderView::Interactive);
    m_tree->header()->resizeSection(ImportDecisionModel::ElementColumn, 400);
    m_tree->header()->resizeSection(ImportDecisionModel::FirstChoiceColumn, 130);
    m_tree->header()->resizeSection(ImportDecisionModel::SecondChoiceColumn, 220);
    m_tree->header()->resizeSection(ImportDecisionModel::MineColumn, 200);
    m_tree->header()->resizeSection(ImportDecisionModel::ImportedColumn, 200);
    m_tree->header()->resizeSection(ImportDecisionModel::CompareColumn, 100);
    showTree();
    connect(m_delegate, &ImportRowDelegate::compareRequested, this, [this](const QModelIndex& i) {
        m_compared = i;
        OnClickEqualButton();
    });

    m_showConf = new QCheckBox(QStringLiteral("Показывать только конфликты"), this);
    m_showConf->setObjectName(QStringLiteral("showConf"));
    connect(m_showConf, &QCheckBox::stateChanged, this, &ImportUssDialog::ShowConflictsOnly);

    m_applyAll = new QToolButton(this);
    m_applyAll->setObjectName(QStringLiteral("applyAllButton"));
    m_applyAll->setText(QStringLiteral("Для всех конфликтов"));
    m_applyAll->setPopupMode(QToolButton::InstantPopup);
    auto* menu = new QMenu(m_applyAll);
    QAction* keep = menu->addAction(QStringLiteral("Оставить мой"));
    keep->setObjectName(QStringLiteral("keepAllMineAction"));
    QAction* replace = menu->addAction(QStringLiteral("Заменить на импортируемый"));
    replace->setObjectName(QStringLiteral("replaceAllImportedAction"));
    connect(keep, &QAction::triggered, this, &ImportUssDialog::OnKeepAllMine);
    connect(replace, &QAction::triggered, this, &ImportUssDialog::OnReplaceAllImported);
    m_applyAll->setMenu(menu);
    m_applyAll->setEnabled(m_model->conflictCount() > 0);

    m_impCount = new QLabel(this);
    m_impCount->setObjectName(QStringLiteral("impCount"));

    m_helpButton = new QPushButton(QStringLiteral("Справка"), this);
    m_helpButton->setObjectName(QStringLiteral("helpButton"));
    m_okButton = new QPushButton(QStringLiteral("OK"), this);
    m_okButton->setObjectName(QStringLiteral("okButton"));
    m_okButton->setDefault(true);
    m_cancelButton = new QPushButton(QStringLiteral("Отмена"), this);
    m_cancelButton->setObjectName(QStringLiteral("cancelButton"));
    connect(m_helpButton, &QPushButton::clicked, this, &ImportUssDialog::OnClickHelpButton);
    connect(m_okButton, &QPushButton::clicked, this, &ImportUssDialog::accept);
    connect(m_cancelButton, &QPushButton::clicked, this, &ImportUssDialog::reject);

    auto* options = new QHBoxLayout;
    options->addWidget(m_showConf);
    options->addStretch(1);
    options->addWidget(m_applyAll);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_impCount);
    buttons->addStretch(1);
    buttons->addWidget(m_helpButton);
    buttons->addWidget(m_okButton);
    buttons->addWidget(m_cancelButton);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_filterEdit);
    layout->addWidget(m_tree, 1);
    layout->addLayout(options);
    layout->addLayout(buttons);
    resize(1280, 620);

    // Frameless, in the library's frame and style.
    setWindowFlags(windowFlags() | Qt::FramelessWindowHint);
    qt::attach_styled_frame(this);
}

void ImportUssDialog::showTree()
{
    // A library's row reads across the whole width: its name and command are long.
    for (int row = 0; row < m_filter->rowCount(); ++row)
        m_tree->setFirstColumnSpanned(row, QModelIndex(), true);
    m_tree->expandAll();
}

void ImportUssDialog::ShowConflictsOnly(int state)
{
    m_filter->setConflictsOnly(state == Qt::Checked);
    showTree();
}

void ImportUssDialog::OnFilterTextChanged(const QString& text)
{
    m_filter->setText(text);
    showTree();
}

void ImportUssDialog::OnClickHelpButton()
{
    if (m_help) m_help();
}

void ImportUssDialog::OnToggleRadioButton(bool)
{
    m_impCount->setText(QStringLiteral("Количество элементов для импорта: %1 из %2")
                            .arg(m_model->importCount())
                            .arg(m_model->rowTotal()));
}

void ImportUssDialog::OnClickEqualButton()
{
    const QModelIndex row =
        m_compared.isValid() ? m_filter->mapToSource(m_compared) : QModelIndex();
    ImportRecord* record = m_model->recordAt(row);
    if (!record || !m_compare || !record->existing) return;
    const bool later = row.data(ImportDecisionModel::LaterVersionRole).toBool();
    const std::optional<bool> replace = m_compare(this, *record, later);
    if (!replace) return;
    const QModelIndex choice =
        row.siblingAtColumn(*replace ? ImportDecisionModel::SecondChoiceColumn
                                     : ImportDecisionModel::FirstChoiceColumn);
    m_model->setData(choice, true, ImportDecisionModel::CheckedRole);
}

void ImportUssDialog::OnKeepAllMine()
{
    m_model->setAllConflicts(false);
}

void ImportUssDialog::OnReplaceAllImported()
{
    m_model->setAllConflicts(true);
}

void ImportUssDialog::accept()
{
    m_model->applyChoices();
    QDialog::accept();
    // The rows name records by their place in the list, which the compaction changes: the
    // tree lets go of them first.
    m_tree->setModel(nullptr);
    compactRecords(m_archive.records());
}

} // namespace exchange
