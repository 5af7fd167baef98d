#include "compare_views.h"

#include "importarchive.h"

#include <catalog/esconvert.h>
#include <frame/host/sync.h>

#include <QBoxLayout>
#include <QDialog>
#include <QHeaderView>
#include <QPushButton>
#include <QTreeWidget>
#include <QFile>
#include <QGridLayout>
#include <QIcon>
#include <QLabel>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QToolButton>

#include <cmath>

// The pictures live in the dialogs' own archive; a program linking it statically registers
// them before use.
static void initCompareResources()
{
    Q_INIT_RESOURCE(compare);
}

namespace exchange {
namespace {

const CompareSlotRow kSlots[kCompareSlotCount] = {
    {"qCTop", "Сверху", 1, 0, "up"},
    {"qCFront", "Спереди", 2, 0, "f"},
    {"qCBack", "Сзади", 3, 0, "back"},
    {"qCLeft", "Слева", 4, 0, "left"},
    {"qCRight", "Справа", 5, 0, "right"},
    {"qSTop", "Упрощенное сверху", 1, 1, "s_up"},
    {"qSFront", "Упрощенное спереди", 2, 1, "s_f"},
    {"qSBack", "Упрощенное сзади", 3, 1, "s_b"},
    {"qSLeft", "Упрощенное слева", 4, 1, "s_l"},
    {"qSRight", "Упрощенное справа", 5, 1, "s_r"},
    {"qGostBut", "ГОСТ", 1, 2, "gost"},
    {"qM3dBut", "3D Деталь", 0, 0, "3d"},
};

// The catalog's first projection of the slot's pair, or null.
es_projection_t* catalogProjection(es_stdsize_t* element, const CompareSlotRow& row)
{
    if (!element) return nullptr;
    es_projections_t* list = stdsize_GetProjections(element);
    const uint32_t count = projections_GetProjectioCount(list);
    for (uint32_t i = 0; i < count; ++i) {
        es_projection_t* projection = projections_GetProjection(list, i);
        if (int(projection_GetType(projection)) == row.projectionType &&
            int(projection_GetViewType(projection)) == row.viewType)
            return projection;
    }
    return nullptr;
}

const ProjectionRecord* recordProjection(const ImportElement& record, const CompareSlotRow& row)
{
    for (const ProjectionRecord& projection : record.prj) {
        if (projection.type == row.projectionType && projection.view == row.viewType)
            return &projection;
    }
    return nullptr;
}

// A damaged entry shows as a side without a picture; the import itself reports it later.
QString extracted(ImportArchive& archive, const QString& entry)
{
    try {
        return archive.extract(entry);
    } catch (...) {
        return {};
    }
}

} // namespace

const CompareSlotRow& compareSlotRow(int index)
{
    return kSlots[index];
}

CompareSlot compareSlot(int index, es_stdsize_t* mine, const ImportElement& imported,
                        ImportArchive& archive)
{
    CompareSlot slot;
    if (index == kCompareModelSlot) {
        // A record without a model file has nothing to compare with.
        if (!imported.model || imported.model->file.isEmpty()) return slot;
        es_model_t* model = mine ? stdsize_GetModel(mine) : nullptr;
        const bool mineHas = model && !model_IsEmpty(model);
        slot.enabled = true;
        slot.ext = QStringLiteral(".m3d");
        slot.importFile = extracted(archive, imported.model->file);
        if (mineHas) slot.stdFile = edw::fromEs(model_GetModelFile(model));
        slot.differs = !mineHas || edw::fromEs(model_GetDigest(model)) != imported.model->digest;
        return slot;
    }
    const CompareSlotRow& row = kSlots[index];
    es_projection_t* mineProjection = catalogProjection(mine, row);
    const ProjectionRecord* importProjection = recordProjection(imported, row);
    if (!mineProjection && !importProjection) return slot;
    slot.enabled = true;
    slot.ext = QStringLiteral(".frw");
    if (importProjection) slot.importFile = extracted(archive, importProjection->file);
    if (mineProjection) slot.stdFile = edw::fromEs(projection_GetFragmentFile(mineProjection));
    slot.differs = !mineProjection || !importProjection ||
                   edw::fromEs(projection_GetDigest(mineProjection)) != importProjection->digest;
    return slot;
}

QString noPictureText()
{
    return QStringLiteral("Невозможно отобразить элемент");
}

// ---- previews -------------------------------------------------------------------------------

PreviewPainter::PreviewPainter() = default;
PreviewPainter::~PreviewPainter() = default;

QPixmap PreviewPainter::picture(const QString& file, int size)
{
    if (file.isEmpty()) return {};
    if (!m_dir) m_dir = std::make_unique<QTemporaryDir>();
    if (!m_dir->isValid()) return {};
    // A file of its own per picture: a picture the host failed to write leaves none behind
    // that an earlier one could be mistaken for.
    const QString png = m_dir->filePath(QStringLiteral("preview%1.png").arg(++m_count));
    try {
        auto document = gapi::sync::open_document(file, false);
        bool saved = true;
        try {
            document->save_preview(png, size);
        } catch (...) {
            saved = false;
        }
        document->close();
        if (!saved) return {};
    } catch (...) {
        // Not a document the host can open (missing, foreign, made by a later version).
        return {};
    }
    QPixmap pixmap(png);
    QFile::remove(png);
    return pixmap;
}

void PreviewPainter::show(QLabel* label, const QString& file)
{
    const QSize box = label->contentsRect().size();
    const QPixmap pixmap = picture(file, std::max(16, std::min(box.width(), box.height()) - 8));
    if (pixmap.isNull()) {
        label->setPixmap(QPixmap());
        label->setText(noPictureText());
    } else {
        label->setText(QString());
        label->setPixmap(pixmap);
    }
}

// ---- parameter rows -------------------------------------------------------------------------

QString importedText(const AttributeRecord& attribute)
{
    if (attribute.val) return *attribute.val;
    return attribute.formula.value_or(QString());
}

bool sameValue(int type, const QString& a, const QString& b)
{
    switch (type) {
    case 1:
        return edw::textToInt(a) == edw::textToInt(b);
    case 2:
        return std::fabs(edw::textToReal(a) - edw::textToReal(b)) < 1e-5;
    default:
        return a == b;
    }
}

// ---- buttons --------------------------------------------------------------------------------

std::vector<QToolButton*> addViewButtons(QWidget* parent)
{
    ensureCompareResources();
    auto* grid = new QGridLayout;
    grid->setObjectName(QStringLiteral("qViewButtonsLayout"));
    std::vector<QToolButton*> buttons;
    for (int i = 0; i < kCompareSlotCount; ++i) {
        auto* button = new QToolButton(parent);
        button->setObjectName(QString::fromLatin1(kSlots[i].button));
        button->setToolTip(QString::fromUtf8(kSlots[i].toolTip));
        button->setCheckable(true);
        button->setAutoExclusive(true);
        button->setIconSize(QSize(32, 32));
        button->setIcon(
            QIcon(QStringLiteral(":/clean/%1.png").arg(QString::fromLatin1(kSlots[i].icon))));
        button->setEnabled(false);
        // Common views in the first column, simplified ones in the second, the drawing view
        // and the model below them.
        if (i < 5)
            grid->addWidget(button, i, 0);
        else if (i < 10)
            grid->addWidget(button, i - 5, 1);
        else
            grid->addWidget(button, 5, i - 10);
        buttons.push_back(button);
    }
    grid->setRowStretch(6, 1);
    // The view on show is framed, in either look.
    parent->setStyleSheet(
        QStringLiteral("QToolButton:checked { border: 1px solid #2f80d0; border-radius: 3px; }"));
    if (auto* layout = qobject_cast<QBoxLayout*>(parent->layout())) layout->addLayout(grid);
    return buttons;
}

void applySlot(QToolButton* button, int index, const CompareSlot& slot, bool markDifference)
{
    button->setEnabled(slot.enabled);
    if (!slot.enabled) return;
    button->setProperty("importFile", slot.importFile);
    button->setProperty("stdFile", slot.stdFile);
    button->setProperty("ext", slot.ext);
    const char* look = markDifference && slot.differs ? "red" : "clean";
    button->setIcon(
        QIcon(QStringLiteral(":/%1/%2.png")
                  .arg(QString::fromLatin1(look), QString::fromLatin1(kSlots[index].icon))));
}

void markTab(QTabWidget* tabs, int index)
{
    ensureCompareResources();
    tabs->setTabIcon(index, QIcon(QStringLiteral(":/vznak.png")));
}

void ensureCompareResources()
{
    static const bool registered = [] {
        initCompareResources();
        return true;
    }();
    (void)registered;
}

CompareLayout buildCompareLayout(QDialog* dialog, const QString& treeName,
                                 const QStringList& columns, const NamedText& first,
                                 const NamedText& second)
{
    CompareLayout built;
    auto* layout = new QVBoxLayout(dialog);
    built.tabs = new QTabWidget(dialog);
    built.tabs->setObjectName(QStringLiteral("tabWidget"));
    layout->addWidget(built.tabs);

    auto* viewTab = new QWidget;
    viewTab->setObjectName(QStringLiteral("qViewTab"));
    built.views = new QHBoxLayout(viewTab);
    built.viewButtons = addViewButtons(viewTab);
    built.tabs->addTab(viewTab, QStringLiteral("Отображение"));

    auto* paramTab = new QWidget;
    paramTab->setObjectName(QStringLiteral("qParamTab"));
    auto* paramLayout = new QVBoxLayout(paramTab);
    built.tree = new QTreeWidget(paramTab);
    built.tree->setObjectName(treeName);
    built.tree->setColumnCount(int(columns.size()));
    built.tree->setHeaderLabels(columns);
    built.tree->setRootIsDecorated(false);
    built.tree->header()->setSectionResizeMode(QHeaderView::Stretch);
    paramLayout->addWidget(built.tree);
    built.tabs->addTab(paramTab, QStringLiteral("Параметры"));

    auto button = [dialog](const NamedText& named) {
        auto* made = new QPushButton(named.text, dialog);
        made->setObjectName(named.objectName);
        return made;
    };
    built.first = button(first);
    built.second = button(second);
    built.close = button({QStringLiteral("Закрыть"), QStringLiteral("closeButton")});
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(built.first);
    buttons->addWidget(built.second);
    buttons->addStretch(1);
    buttons->addWidget(built.close);
    layout->addLayout(buttons);
    return built;
}

QLabel* previewLabel(const QString& name, QSize picture, QWidget* parent)
{
    auto* label = new QLabel(parent);
    label->setObjectName(name);
    label->setStyleSheet(QStringLiteral("border: 1px solid black"));
    label->setFixedSize(picture + QSize(2, 2));
    label->setAlignment(Qt::AlignCenter);
    label->setWordWrap(true);
    return label;
}

} // namespace exchange
