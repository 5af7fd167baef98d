#include "editor/uss_dialog.h"

#include "catalog/element_ops.h"
#include "catalog/esconvert.h"
#include "catalog/stdsize.h"
#include "editor/parameter_panel.h"
#include "editor/slot_icons.h"
#include "editor/spec_sections.h"
#include "look/look.h"

#include <pugixml.hpp>

#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QRadioButton>
#include <QSvgRenderer>
#include <QTabWidget>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>
#include <filesystem>
#include <stdexcept>

// The editor's pictures live in its own archive; a program linking it statically must
// register them before use.
static void initEditorResources()
{
    Q_INIT_RESOURCE(editor);
}

namespace edw {
namespace {

const ViewSlotSpec kSlots[kViewSlotCount] = {
    {"qCTop", "Сверху", 0xE574},
    {"qCFront", "Спереди", 0xE575},
    {"qCBack", "Сзади", 0xE576},
    {"qCLeft", "Слева", 0xE577},
    {"qCRight", "Справа", 0xE578},
    {"qSTop", "Упрощенное сверху", 0xE57A},
    {"qSFront", "Упрощенное спереди", 0xE57B},
    {"qSBack", "Упрощенное сзади", 0xE57C},
    {"qSLeft", "Упрощенное слева", 0xE57D},
    {"qSRight", "Упрощенное справа", 0xE57E},
    {"qGostBut", "ГОСТ", 0xE57F},
    {"qM3dBut", "3D Деталь", 0xE579},
};

constexpr QSize kPreviewSize(260, 220);

QString settingKey(int slot)
{
    return slot == kModelSlot ? QStringLiteral("3DModelPath") : QStringLiteral("FragmentPath");
}

// The stored projection of the element that matches a slot (the first one wins).
es_projection_t* projectionFor(es_stdsize_t* element, int slot)
{
    es_projections_t* list = stdsize_GetProjections(element);
    const uint32_t count = projections_GetProjectioCount(list);
    for (uint32_t i = 0; i < count; ++i) {
        es_projection_t* projection = projections_GetProjection(list, i);
        if (projection_GetType(projection) == projectionType(slot) &&
            projection_GetViewType(projection) == viewType(slot))
            return projection;
    }
    return nullptr;
}

// Where a stored file of the source element is copied in the working folder: "clone_<slot>".
QString extractTarget(const QString& stored, const QString& workFolder, int slot)
{
    if (stored.isEmpty() || workFolder.isEmpty()) return {};
    return QDir(workFolder)
        .filePath(QStringLiteral("clone_%1%2").arg(slot).arg(slot == kModelSlot ? ".m3d" : ".frw"));
}

// A plain copy: QFile::copy goes through a temporary file and a rename, several times slower
// for the dozen small files of an element.
bool copyPlain(const QString& from, const QString& to)
{
    QDir().mkpath(QFileInfo(to).absolutePath());
    std::error_code error;
    std::filesystem::copy_file(std::filesystem::path(from.toStdU16String()),
                               std::filesystem::path(to.toStdU16String()),
                               std::filesystem::copy_options::overwrite_existing, error);
    return !error;
}

QString xmlError(const QString& file, const pugi::xml_parse_result& result)
{
    return QStringLiteral("Ошибка чтения xml\nfile: %1\ndesc: %2\noffset: %3")
        .arg(file, QString::fromUtf8(result.description()))
        .arg(static_cast<qint64>(result.offset));
}

bool loadXml(pugi::xml_document& document, const QString& file, QString* error)
{
    const pugi::xml_parse_result result = document.load_file(
        QFile::encodeName(file).constData(), pugi::parse_default, pugi::encoding_auto);
    if (!result) *error = xmlError(file, result);
    return static_cast<bool>(result);
}

// The preview: the slot's document as the host draws it (host documents are SVG), else its
// file name.
QPixmap preview(const QString& file, const QSize& size)
{
    QPixmap picture(size);
    picture.fill(Qt::white);
    if (file.isEmpty()) return picture;
    QSvgRenderer renderer(file);
    QPainter painter(&picture);
    if (renderer.isValid()) {
        QSizeF drawn = renderer.defaultSize().scaled(size - QSize(8, 8), Qt::KeepAspectRatio);
        const QRectF target((size.width() - drawn.width()) / 2,
                            (size.height() - drawn.height()) / 2, drawn.width(), drawn.height());
        renderer.render(&painter, target);
    } else {
        painter.setPen(Qt::darkGray);
        painter.drawText(picture.rect(), Qt::AlignCenter | Qt::TextWordWrap,
                         QFileInfo(file).fileName());
    }
    return picture;
}

} // namespace

const ViewSlotSpec& viewSlotSpec(int index)
{
    return kSlots[index];
}

// ---- view model ------------------------------------------------------------------------------

ViewModel::ViewModel(std::vector<ViewSlot> all, QString selection, QString secondSelection,
                     UssDialog* dialog)
    : m_slots(std::move(all)), m_selection(std::move(selection)),
      m_secondSelection(std::move(secondSelection)), m_dialog(dialog)
{}

ViewSlot& ViewModel::currentSlot()
{
    for (ViewSlot& slot : m_slots) {
        if (slot.index == m_current) return slot;
    }
    throw std::runtime_error("Не найден CurView");
}

void ViewModel::select(int index)
{
    m_current = index;
    for (ViewSlot& slot : m_slots)
        slot.button->setChecked(false);
    currentSlot().button->setChecked(true);
}

void ViewModel::setState(int state)
{
    ViewSlot& slot = currentSlot();
    slot.state = state;
    slot.rememberedState = state;
}

QString ViewModel::sourceFile(const ViewSlot& slot) const
{
    switch (slot.state) {
    case SourceSelection:
        if (slot.index == kModelSlot && !m_secondSelection.isEmpty()) return m_secondSelection;
        return m_selection;
    case SourceFile:
        return slot.filePath;
    case SourceOriginal:
        // Until it is copied, the catalog's file is the original: the same bytes.
        return slot.extracted || slot.originalPath.isEmpty() ? slot.originalPath : slot.storedPath;
    default:
        return {};
    }
}

QString ViewModel::original(ViewSlot& slot)
{
    if (!slot.extracted && !slot.originalPath.isEmpty())
        slot.extracted = copyPlain(slot.storedPath, slot.originalPath);
    return slot.extracted ? slot.originalPath : slot.storedPath;
}

void ViewModel::extractOriginals()
{
    for (ViewSlot& slot : m_slots)
        original(slot);
}

void ViewModel::refresh()
{
    const ViewSlot& slot = currentSlot();
    UssDialog& ui = *m_dialog;
    for (int state = 0; state < 4; ++state)
        ui.m_sourceRadios[state]->setChecked(slot.state == state);
    ui.m_fileEdit->setText(slot.filePath);
    ui.m_image->setPixmap(preview(sourceFile(slot), kPreviewSize));
    ui.m_preFileBut->setEnabled(!slot.originalPath.isEmpty());
    ui.m_preFileRadio->setEnabled(!slot.originalPath.isEmpty());
    ui.m_selectionRadio->setEnabled(!m_selection.isEmpty() ||
                                    (slot.index == kModelSlot && !m_secondSelection.isEmpty()));
    for (const ViewSlot& each : m_slots)
        each.button->setIcon(filled(each) ? each.filledIcon : each.icon);
    const auto model = std::find_if(m_slots.begin(), m_slots.end(),
                                    [](const ViewSlot& s) { return s.index == kModelSlot; });
    ui.m_modelGroup->setEnabled(model != m_slots.end() && filled(*model));
}

// ---- dialog ----------------------------------------------------------------------------------

UssDialog::UssDialog(QWidget* parent, es_stdsize_t* source, ControlList parameters,
                     const QString& commandsFile, const QStringList& commands,
                     const QString& selectionPath, const QString& secondSelectionPath,
                     unsigned mode, const QString& workFolder, const QString& category,
                     bool noModel, int discipline, EditorEnvironment environment)
    : QDialog(parent), m_env(std::move(environment)), m_commandsFile(commandsFile),
      m_discipline(discipline), m_mode(mode)
{
    // 1. Widgets, title, eliding lists.
    initEditorResources();
    buildWidgets();
    if (mode == Create)
        setWindowTitle(QStringLiteral("Создание пользовательского элемента"));
    else if (mode == Clone)
        setWindowTitle(QStringLiteral("Создание пользовательского элемента по образцу"));
    else if (mode == Edit)
        setWindowTitle(QStringLiteral("Редактирование пользовательского элемента"));
    m_commandBox->view()->setTextElideMode(Qt::ElideRight);
    m_categoryBox->view()->setTextElideMode(Qt::ElideRight);

    // 2-3. Slots with the source's originals; the view model.
    m_views = std::make_unique<ViewModel>(buildSlots(source, workFolder), selectionPath,
                                          secondSelectionPath, this);
    if (noModel) m_viewButtons[kModelSlot]->setEnabled(false);

    // 4. Model options of the source.
    if (source) {
        m_projectSurfaces->setChecked(CStdSize(source).value("ProjectSurfaces") == "1");
        m_useModelColor->setChecked(CStdSize(source).value("UseModelColor") == "1");
    }

    // 5. Specification parts and the parameter panel.
    setUpSpecification(source);
    m_panel = new ParameterPanel(std::move(parameters), m_tabs->widget(1));
    m_paramLayout->addWidget(m_panel);

    // 6. Commands.
    {
        const QSignalBlocker blocker(m_commandBox);
        for (const QString& name : commands) {
            m_commandBox->addItem(name);
            m_commandBox->setItemData(m_commandBox->count() - 1, name, Qt::ToolTipRole);
        }
        m_commandBox->setCurrentIndex(commands.size() == 1 && !m_panel->isEmpty() ? 0 : -1);
    }
    m_categoryBox->setEnabled(false);

    // 7. Categories of the preselected command.
    if (m_commandBox->currentIndex() >= 0) {
        OnCommandSelected(m_commandBox->currentIndex());
        if (!category.isEmpty()) {
            for (int i = 0; i < m_categoryBox->count(); ++i) {
                if (m_categoryBox->itemText(i) == category) {
                    m_categoryBox->setCurrentIndex(i);
                    break;
                }
            }
        }
    }

    // 8. Current slot.
    if (!specificationLayout()) {
        m_views->select(0);
        for (const ViewSlot& slot : m_views->all()) {
            if (!slot.originalPath.isEmpty()) {
                m_views->select(slot.index);
                break;
            }
        }
    } else {
        m_views->select(5);
    }
    if (m_views->currentSlot().state == SourceNone && !selectionPath.isEmpty())
        m_views->setState(SourceSelection);

    // 9. The radio buttons that cannot apply.
    if (!source) {
        m_preFileRadio->hide();
        m_preFileBut->hide();
    } else {
        m_selectionRadio->hide();
    }
    m_views->refresh();

    // Connections.
    for (QToolButton* button : m_viewButtons)
        connect(button, &QToolButton::clicked, this, &UssDialog::OnViewRadioClicked);
    for (QRadioButton* radio : m_sourceRadios)
        connect(radio, &QRadioButton::clicked, this, &UssDialog::OnViewRadioClicked);
    connect(m_preFileBut, &QPushButton::clicked, this, &UssDialog::OnViewPreFileButClicked);
    connect(m_fileBut, &QPushButton::clicked, this, &UssDialog::OnViewFileButClicked);
    connect(m_cancelButton, &QPushButton::clicked, this, &UssDialog::reject);
    connect(m_okButton, &QPushButton::clicked, this, &UssDialog::OnOkClicked);
    connect(m_helpButton, &QPushButton::clicked, this, [this] {
        if (m_env.help) m_env.help();
    });
    connect(m_commandBox, &QComboBox::currentIndexChanged, this, &UssDialog::OnCommandSelected);
    connect(m_specFirst, &QComboBox::currentTextChanged, this, &UssDialog::fillSecondPart);

    // 10. Frameless, in the library's frame and style.
    setWindowFlags(windowFlags() | Qt::FramelessWindowHint);
    qt::attach_styled_frame(this);
}

UssDialog::~UssDialog() = default;

void UssDialog::buildWidgets()
{
    setObjectName(QStringLiteral("UssDialog"));
    auto* layout = new QVBoxLayout(this);
    m_tabs = new QTabWidget(this);
    m_tabs->setObjectName(QStringLiteral("qViewTab"));
    layout->addWidget(m_tabs);

    // Tab 0: the images.
    auto* viewTab = new QWidget;
    viewTab->setObjectName(QStringLiteral("qViewsTab"));
    auto* viewLayout = new QHBoxLayout(viewTab);
    auto* buttons = new QGridLayout;
    buttons->setObjectName(QStringLiteral("qViewButtonsLayout"));
    for (int i = 0; i < kViewSlotCount; ++i) {
        auto* button = new QToolButton(viewTab);
        button->setObjectName(QString::fromLatin1(kSlots[i].button));
        button->setText(QString::fromUtf8(kSlots[i].text));
        button->setToolTip(QString::fromUtf8(kSlots[i].text));
        button->setCheckable(true);
        button->setAutoExclusive(false);
        button->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
        button->setIconSize(QSize(32, 32));
        button->setMinimumWidth(92);
        // Common views in the first column, simplified ones in the second, the drawing
        // view and the model below.
        if (i < 5)
            buttons->addWidget(button, i, 0);
        else if (i < 10)
            buttons->addWidget(button, i - 5, 1);
        else
            buttons->addWidget(button, 5, i - 10);
        m_viewButtons.push_back(button);
    }
    buttons->setRowStretch(6, 1);
    viewLayout->addLayout(buttons);

    auto* sourceLayout = new QVBoxLayout;
    m_image = new QLabel(viewTab);
    m_image->setObjectName(QStringLiteral("qViewImage"));
    m_image->setStyleSheet(QStringLiteral("border: 1px solid black"));
    m_image->setFixedSize(kPreviewSize + QSize(2, 2));
    m_image->setAlignment(Qt::AlignCenter);
    sourceLayout->addWidget(m_image);

    auto* preFileRow = new QHBoxLayout;
    m_preFileRadio = new QRadioButton(QStringLiteral("Исходное"), viewTab);
    m_preFileRadio->setObjectName(QStringLiteral("qViewPreFileRadio"));
    m_preFileBut = new QPushButton(viewTab);
    m_preFileBut->setObjectName(QStringLiteral("qViewPreFileBut"));
    m_preFileBut->setIcon(QIcon(QStringLiteral(":/save.png")));
    m_preFileBut->setToolTip(QStringLiteral("Выгрузить на диск"));
    preFileRow->addWidget(m_preFileRadio);
    preFileRow->addStretch(1);
    preFileRow->addWidget(m_preFileBut);
    sourceLayout->addLayout(preFileRow);

    m_selectionRadio = new QRadioButton(QStringLiteral("По выделению"), viewTab);
    m_selectionRadio->setObjectName(QStringLiteral("qViewSelectionRadio"));
    sourceLayout->addWidget(m_selectionRadio);
    m_fileRadio = new QRadioButton(QStringLiteral("Из файла"), viewTab);
    m_fileRadio->setObjectName(QStringLiteral("qViewFileRadio"));
    sourceLayout->addWidget(m_fileRadio);
    auto* fileRow = new QHBoxLayout;
    m_fileEdit = new QLineEdit(viewTab);
    m_fileEdit->setObjectName(QStringLiteral("qViewFileEdit"));
    m_fileEdit->setReadOnly(true);
    m_fileBut = new QPushButton(QStringLiteral("..."), viewTab);
    m_fileBut->setObjectName(QStringLiteral("qViewFileBut"));
    m_fileBut->setFixedWidth(28);
    fileRow->addWidget(m_fileEdit);
    fileRow->addWidget(m_fileBut);
    sourceLayout->addLayout(fileRow);
    m_noneRadio = new QRadioButton(QStringLiteral("Отсутствует"), viewTab);
    m_noneRadio->setObjectName(QStringLiteral("qViewNoneRadio"));
    m_noneRadio->setChecked(true);
    sourceLayout->addWidget(m_noneRadio);
    m_sourceRadios = {m_noneRadio, m_selectionRadio, m_fileRadio, m_preFileRadio};

    m_modelGroup = new QGroupBox(QStringLiteral("Параметры модели"), viewTab);
    m_modelGroup->setObjectName(QStringLiteral("modelGroup"));
    auto* modelLayout = new QVBoxLayout(m_modelGroup);
    m_projectSurfaces = new QCheckBox(QStringLiteral("Проецировать поверхности"), m_modelGroup);
    m_projectSurfaces->setObjectName(QStringLiteral("projectSurfacesCheck"));
    m_useModelColor = new QCheckBox(QStringLiteral("Использовать исходный цвет"), m_modelGroup);
    m_useModelColor->setObjectName(QStringLiteral("useModelColorCheck"));
    modelLayout->addWidget(m_projectSurfaces);
    modelLayout->addWidget(m_useModelColor);
    m_modelGroup->setEnabled(false);
    sourceLayout->addWidget(m_modelGroup);
    sourceLayout->addStretch(1);
    viewLayout->addLayout(sourceLayout, 1);
    m_tabs->addTab(viewTab, QStringLiteral("Отображение"));

    // Tab 1: command, category or specification parts, parameters.
    auto* paramTab = new QWidget;
    paramTab->setObjectName(QStringLiteral("qParamTab"));
    auto* paramLayout = new QVBoxLayout(paramTab);
    auto* form = new QFormLayout;
    auto addRow = [&](const char* name, const QString& label, QComboBox*& box, QLabel*& text) {
        box = new QComboBox(paramTab);
        box->setObjectName(QString::fromLatin1(name));
        box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        box->setMinimumContentsLength(24);
        text = new QLabel(label, paramTab);
        text->setObjectName(QString::fromLatin1(name) + QStringLiteral("Label"));
        form->addRow(text, box);
    };
    QLabel* commandLabel = nullptr;
    addRow("qCommandBox", QStringLiteral("Команда"), m_commandBox, commandLabel);
    addRow("qCategoryBox", QStringLiteral("Категория"), m_categoryBox, m_categoryLabel);
    addRow("esSpecPartFirst", QStringLiteral("Раздел спецификации"), m_specFirst, m_specFirstLabel);
    addRow("esSpecPartSecond", QStringLiteral("Подраздел спецификации"), m_specSecond,
           m_specSecondLabel);
    paramLayout->addLayout(form);
    m_paramLayout = new QVBoxLayout;
    m_paramLayout->setObjectName(QStringLiteral("qParamLayout"));
    paramLayout->addLayout(m_paramLayout, 1);
    m_tabs->addTab(paramTab, QStringLiteral("Оформление"));

    auto* bottom = new QHBoxLayout;
    m_helpButton = new QPushButton(QStringLiteral("Справка"), this);
    m_helpButton->setObjectName(QStringLiteral("helpButton"));
    m_okButton = new QPushButton(QStringLiteral("ОК"), this);
    m_okButton->setObjectName(QStringLiteral("okButton"));
    m_okButton->setDefault(true);
    m_cancelButton = new QPushButton(QStringLiteral("Отмена"), this);
    m_cancelButton->setObjectName(QStringLiteral("cancelButton"));
    bottom->addWidget(m_helpButton);
    bottom->addStretch(1);
    bottom->addWidget(m_okButton);
    bottom->addWidget(m_cancelButton);
    layout->addLayout(bottom);
    resize(640, 520);
}

std::vector<ViewSlot> UssDialog::buildSlots(es_stdsize_t* source, const QString& workFolder)
{
    std::vector<ViewSlot> built;
    built.reserve(kViewSlotCount);
    // The glyphs are drawn before the style is attached: their ink follows the theme.
    const QColor ink = qt::dark_theme() ? QColor(0xe0, 0xe0, 0xe0) : QColor(0x30, 0x30, 0x30);
    for (int i = 0; i < kViewSlotCount; ++i) {
        ViewSlot slot;
        slot.index = i;
        slot.glyph = kSlots[i].glyph;
        slot.button = m_viewButtons[i];
        slot.icon = glyphIcon(slot.glyph, false, ink);
        slot.filledIcon = glyphIcon(slot.glyph, true, ink);
        if (source) {
            if (i == kModelSlot) {
                es_model_t* model = stdsize_GetModel(source);
                if (model && !model_IsEmpty(model))
                    slot.storedPath = fromEs(model_GetModelFile(model));
            } else if (es_projection_t* projection = projectionFor(source, i)) {
                slot.storedPath = fromEs(projection_GetFragmentFile(projection));
            }
            // The copy into the working folder is made when the original is first used.
            if (QFileInfo::exists(slot.storedPath))
                slot.originalPath = extractTarget(slot.storedPath, workFolder, i);
        }
        slot.state = slot.originalPath.isEmpty() ? SourceNone : SourceOriginal;
        slot.rememberedState = slot.state;
        built.push_back(std::move(slot));
    }
    return built;
}

void UssDialog::setUpSpecification(es_stdsize_t* source)
{
    const bool spec = specificationLayout();
    m_categoryLabel->setVisible(!spec);
    m_categoryBox->setVisible(!spec);
    m_specFirst->setVisible(spec);
    m_specSecond->setVisible(spec);
    m_specFirstLabel->setVisible(spec);
    m_specSecondLabel->setVisible(spec);
    if (!spec) return;
    for (int i = 0; i < kViewSlotCount; ++i) {
        if (i != 5 && i != kModelSlot) m_viewButtons[i]->setEnabled(false);
    }
    for (const auto& [section, subsections] : specSections(m_discipline)) {
        Q_UNUSED(subsections);
        m_specFirst->addItem(section, section);
    }
    const QString first = source ? CStdSize(source).value("FIRST_PART") : QString();
    const QString second = source ? CStdSize(source).value("SECOND_PART") : QString();
    if (!first.isEmpty())
        m_specFirst->setCurrentText(first);
    else
        m_specFirst->setCurrentIndex(-1);
    fillSecondPart(m_specFirst->currentText());
    if (!second.isEmpty())
        m_specSecond->setCurrentText(second);
    else
        m_specSecond->setCurrentIndex(-1);
}

void UssDialog::fillSecondPart(const QString& section)
{
    m_specSecond->clear();
    for (const QString& subsection : specSubsections(m_discipline, section))
        m_specSecond->addItem(subsection, subsection);
}

void UssDialog::warn(const QString& text)
{
    if (m_env.warn) m_env.warn(this, text);
}

void UssDialog::OnCommandSelected(int index)
{
    Q_UNUSED(index);
    m_categoryBox->clear();
    const QString command = m_commandBox->currentText();

    pugi::xml_document document;
    QString error;
    if (!loadXml(document, m_commandsFile, &error)) {
        warn(error);
        return;
    }
    try {
        const QString query = QStringLiteral("/*/command[@name='%1']/categoryList").arg(command);
        const pugi::xpath_node list = document.select_node(query.toUtf8().constData());
        for (pugi::xml_node node : list.node().children("category")) {
            const QString name = QString::fromUtf8(node.attribute("name").value());
            const int id = node.attribute("id").as_int();
            m_categoryBox->addItem(name, QString::number(id));
            const int row = m_categoryBox->count() - 1;
            m_categoryBox->setItemData(row, name, kCategoryNameRole);
            m_categoryBox->setItemData(row,
                                       QString::fromUtf8(node.attribute("electricPrefix").value()),
                                       kCategoryPrefixRole);
        }
    } catch (const pugi::xpath_exception& e) {
        warn(QStringLiteral("Ошибка при нахождении команды в xml\ncommand: %1\nfile: %2\nwhat: %3")
                 .arg(command, m_commandsFile, QString::fromUtf8(e.what())));
    }
    if (m_categoryBox->count() == 1 && m_categoryBox->itemText(0) == QLatin1String("-"))
        m_categoryBox->setItemText(0, QString());
    m_categoryBox->setEnabled(m_categoryBox->count() >= 2);
    if (m_categoryBox->count() > 0) m_categoryBox->setCurrentIndex(0);
    if (m_categoryBox->count() > 1) m_categoryBox->setCurrentIndex(-1);
}

QStringList UssDialog::requiredViews(bool* ok)
{
    if (ok) *ok = false;
    const QString command = m_commandBox->currentText();
    pugi::xml_document document;
    QString error;
    if (!loadXml(document, m_commandsFile, &error)) {
        warn(error);
        return {};
    }
    QString text;
    try {
        const QString query = QStringLiteral("/*/command[@name='%1']/views").arg(command);
        text =
            QString::fromUtf8(document.select_node(query.toUtf8().constData()).node().text().get());
    } catch (const pugi::xpath_exception& e) {
        warn(QStringLiteral("Ошибка при нахождении команды в xml\ncommand: %1\nfile: %2\nwhat: %3")
                 .arg(command, m_commandsFile, QString::fromUtf8(e.what())));
        return {};
    }
    QStringList views;
    for (const QString& part : text.split('|', Qt::SkipEmptyParts)) {
        bool known = false;
        for (const QToolButton* button : m_viewButtons)
            known = known || button->toolTip() == part;
        if (!known) {
            warn(QStringLiteral("Неизвестное название изображения '%1' указано в xml '%2', "
                                "command = '%3'")
                     .arg(part, m_commandsFile, command));
            return {};
        }
        views << part;
    }
    if (ok) *ok = true;
    return views;
}

void UssDialog::OnViewRadioClicked()
{
    QObject* from = sender();
    for (ViewSlot& slot : m_views->all()) {
        if (slot.button == from && slot.index != m_views->current()) {
            m_views->select(slot.index);
            slot.state = slot.rememberedState;
        }
    }
    for (int state = 0; state < 4; ++state) {
        if (m_sourceRadios[state] == from) m_views->setState(state);
    }
    // A click on the current view button would uncheck it: it stays current.
    m_views->currentSlot().button->setChecked(true);
    m_views->refresh();
}

void UssDialog::OnViewFileButClicked()
{
    ViewSlot& slot = m_views->currentSlot();
    const bool model = slot.index == kModelSlot;
    const QString key = settingKey(slot.index);
    const QString folder = m_env.readSetting ? m_env.readSetting(key) : QString();
    const QString file = m_env.openFile
                             ? m_env.openFile(this,
                                              model ? QStringLiteral("Выбрать деталь")
                                                    : QStringLiteral("Выбрать фрагмент"),
                                              folder,
                                              model ? QStringLiteral("ГРАВИС-Детали (*.m3d)")
                                                    : QStringLiteral("ГРАВИС-Фрагменты (*.frw)"))
                             : QString();
    if (file.isEmpty()) return;
    if (m_env.canOpen && !m_env.canOpen(file)) {
        warn(QStringLiteral("Невозможно открыть документ, так как он создан в более поздней "
                            "версии ГРАВИС-3D"));
        return;
    }
    if (m_env.writeSetting) m_env.writeSetting(key, QFileInfo(file).absolutePath());
    if (m_env.rememberViewFolder)
        m_env.rememberViewFolder(slot.index, QFileInfo(file).absolutePath());
    slot.filePath = file;
    m_views->setState(SourceFile);
    m_views->refresh();
}

void UssDialog::OnViewPreFileButClicked()
{
    ViewSlot& slot = m_views->currentSlot();
    const bool model = slot.index == kModelSlot;
    const QString key = settingKey(slot.index);
    const QString folder = m_env.readSetting ? m_env.readSetting(key) : QString();
    const QString chosen = m_env.saveFile
                               ? m_env.saveFile(this,
                                                model ? QStringLiteral("Сохранить деталь")
                                                      : QStringLiteral("Сохранить фрагмент"),
                                                folder + (model ? QStringLiteral("/деталь.m3d")
                                                                : QStringLiteral("/фрагмент.frw")),
                                                model ? QStringLiteral("ГРАВИС-Детали (*.m3d)")
                                                      : QStringLiteral("ГРАВИС-Фрагменты (*.frw)"))
                               : QString();
    if (!chosen.isEmpty()) {
        if (m_env.writeSetting) m_env.writeSetting(key, QFileInfo(chosen).absolutePath());
        const QString target = QDir::toNativeSeparators(chosen);
        QFile::remove(target);
        QFile::copy(m_views->original(slot), target);
    }
    slot.button->setFocus();
}

bool UssDialog::failAccept(const QString& text, int tab)
{
    warn(text);
    m_tabs->setCurrentIndex(tab);
    return false;
}

void UssDialog::OnOkClicked()
{
    // 1. Command.
    if (m_commandBox->count() == 0 || m_commandBox->currentIndex() < 0) {
        failAccept(QStringLiteral("Невозможно создать элемент, выберите команду"), 1);
        return;
    }
    // 2. Category.
    if (m_categoryBox->count() > 0 && m_categoryBox->currentIndex() < 0) {
        failAccept(QStringLiteral("Невозможно создать элемент, выберите категорию"), 1);
        return;
    }
    // 3. Images.
    bool readable = false;
    const QStringList required = requiredViews(&readable);
    if (!readable) {
        // Already reported: the command's views could not be read.
        m_tabs->setCurrentIndex(0);
        return;
    }
    const auto& all = m_views->all();
    if (!required.isEmpty()) {
        QStringList missing;
        for (const ViewSlot& slot : all) {
            if (required.contains(slot.button->toolTip()) && !m_views->filled(slot))
                missing << slot.button->toolTip();
        }
        if (!missing.isEmpty()) {
            failAccept(QStringLiteral("Невозможно создать элемент, задайте изображение: ") +
                           missing.join(QStringLiteral(", ")),
                       0);
            return;
        }
    } else if (std::none_of(all.begin(), all.end(),
                            [this](const ViewSlot& slot) { return m_views->filled(slot); })) {
        failAccept(QStringLiteral("Невозможно создать элемент, задайте изображение хотя бы для "
                                  "одной проекции элемента"),
                   0);
        return;
    }
    // 4. Specification parts.
    if (specificationLayout() &&
        (m_specFirst->currentIndex() < 0 || m_specSecond->currentIndex() < 0)) {
        failAccept(QStringLiteral("Невозможно создать элемент, выберите разделы спецификации"), 1);
        return;
    }
    // 5. Parameters.
    m_panel->commit();
    if (const QString offence = m_panel->firstOffence(); !offence.isEmpty()) {
        failAccept(offence, 1);
        return;
    }
    // 6. Everything can be saved.
    accept();
}

bool UssDialog::projectSurfaces() const
{
    return m_projectSurfaces->isChecked();
}

bool UssDialog::useModelColor() const
{
    return m_useModelColor->isChecked();
}

QString UssDialog::command() const
{
    return m_commandBox->currentIndex() >= 0 ? m_commandBox->currentText() : QString();
}

QString UssDialog::categoryText() const
{
    return m_categoryBox->currentIndex() >= 0 ? m_categoryBox->currentText() : QString();
}

QString UssDialog::categoryData() const
{
    return m_categoryBox->currentIndex() >= 0 ? m_categoryBox->currentData().toString() : QString();
}

QString UssDialog::specPartFirst() const
{
    return m_specFirst->currentIndex() >= 0 ? m_specFirst->currentText() : QString();
}

QString UssDialog::specPartSecond() const
{
    return m_specSecond->currentIndex() >= 0 ? m_specSecond->currentText() : QString();
}

} // namespace edw
