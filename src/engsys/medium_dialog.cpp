#include "engsys/medium_dialog.h"

#include "catalog/esconvert.h"
#include "engsys/medium_dialog2.h"
#include "engsys/part_choice.h"
#include "frame/qwinwidget.h"
#include "frame/settings.h"
#include "look/double_dot_spin_box.h"
#include "look/look.h"

#include <QAbstractItemView>
#include <QColorDialog>
#include <QComboBox>
#include <QFontMetrics>
#include <QFormLayout>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QVBoxLayout>

#include <esdata/esdata.h>

namespace edw {
namespace {

IMediumDialog::HelpOpener& helpOpener()
{
    static IMediumDialog::HelpOpener opener = [](const QString& file, int topic) {
        show_help_file(file, topic);
    };
    return opener;
}

bool styledColorChoice(QWidget* parent, QColor& color)
{
    QColorDialog chooser(color, parent);
    chooser.setObjectName(QStringLiteral("colorDialog"));
    chooser.setOption(QColorDialog::DontUseNativeDialog);
    qt::attach_styled_frame(&chooser);
    if (chooser.exec() != QDialog::Accepted) return false;
    color = chooser.selectedColor();
    return true;
}

IMediumDialog::ColorChooser& colorChooser()
{
    static IMediumDialog::ColorChooser chooser = &styledColorChoice;
    return chooser;
}

QColor unpackColor(int packed)
{
    return QColor(packed & 0xFF, (packed >> 8) & 0xFF, (packed >> 16) & 0xFF);
}

int packColor(const QColor& color)
{
    return color.red() + color.green() * 256 + color.blue() * 65536;
}

} // namespace

void IMediumDialog::setHelpOpener(HelpOpener opener)
{
    helpOpener() = std::move(opener);
}

void IMediumDialog::setColorChooser(ColorChooser chooser)
{
    colorChooser() = chooser ? std::move(chooser) : ColorChooser(&styledColorChoice);
}

QStringList IMediumDialog::variantsOf(qint64 provider, const QString& standard)
{
    auto* pool = reinterpret_cast<es_pool_t*>(static_cast<quintptr>(provider));
    if (!pool || standard.isEmpty()) return {};
    es_packet_t* packet = pool_FindPacket(pool, toEs(standard).c_str());
    if (!packet) return {};
    const QString values = fromEs(packet_GetAttributeUniqueValues(packet, u"OVK_VARIANT"));
    return values.split(u'|', Qt::SkipEmptyParts);
}

IMediumDialog::IMediumDialog(const MediumRecord& record, bool create, QWidget* parent)
    : QDialog(parent), m_record(record), m_create(create), m_helpFile(record.chmHelp),
      m_helpId(record.helpId), m_provider(record.provider)
{}

QComboBox* IMediumDialog::addCombo(QWidget* parent, const char* objectName)
{
    auto* combo = new QComboBox(parent);
    combo->setObjectName(QString::fromLatin1(objectName));
    combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    combo->setMinimumContentsLength(12);
    return combo;
}

void IMediumDialog::buildCommon()
{
    auto* layout = new QVBoxLayout(this);
    layout->setObjectName(QStringLiteral("verticalLayout"));
    m_tabs = new QTabWidget(this);
    m_tabs->setObjectName(QStringLiteral("tabWidget"));
    layout->addWidget(m_tabs);

    auto* tab = new QWidget(m_tabs);
    tab->setObjectName(QStringLiteral("tab"));
    m_propertiesForm = new QFormLayout(tab);
    m_nameEdit = new QLineEdit(tab);
    m_nameEdit->setObjectName(QStringLiteral("nameEdit"));
    m_propertiesForm->addRow(QStringLiteral("Наименование"), m_nameEdit);
    m_prefixEdit = new QLineEdit(tab);
    m_prefixEdit->setObjectName(QStringLiteral("prefixEdit"));
    m_propertiesForm->addRow(QStringLiteral("Обозначение"), m_prefixEdit);
    m_colorButton = new QPushButton(tab);
    m_colorButton->setObjectName(QStringLiteral("colorButton"));
    m_colorButton->setMinimumSize(64, 22);
    m_propertiesForm->addRow(QStringLiteral("Цвет слоя"), m_colorButton);
    m_tabs->addTab(tab, QStringLiteral("Свойства"));

    auto* tab2 = new QWidget(m_tabs);
    tab2->setObjectName(QStringLiteral("tab_2"));
    auto* fittings = new QGridLayout(tab2);
    const struct
    {
        const char* label;
        const char* standard;
        const char* variant;
        QComboBox** standardCombo;
        QComboBox** variantCombo;
    } rows[] = {
        {"Трубы", "segCombo", "segVarCombo", &m_segCombo, &m_segVarCombo},
        {"Отводы", "otvodCombo", "otvodVarCombo", &m_otvodCombo, &m_otvodVarCombo},
        {"Тройники", "troinikCombo", "troinikVarCombo", &m_troinikCombo, &m_troinikVarCombo},
        {"Переходы", "perehodCombo", "perehodVarCombo", &m_perehodCombo, &m_perehodVarCombo},
    };
    int row = 0;
    for (const auto& r : rows) {
        fittings->addWidget(new QLabel(QString::fromUtf8(r.label), tab2), row, 0);
        *r.standardCombo = addCombo(tab2, r.standard);
        *r.variantCombo = addCombo(tab2, r.variant);
        fittings->addWidget(*r.standardCombo, row, 1);
        fittings->addWidget(*r.variantCombo, row, 2);
        ++row;
    }
    fittings->setColumnStretch(1, 3);
    fittings->setColumnStretch(2, 2);
    fittings->setRowStretch(row, 1);
    m_tabs->addTab(tab2, QStringLiteral("Автоэлементы"));

    auto* tab3 = new QWidget(m_tabs);
    tab3->setObjectName(QStringLiteral("tab_3"));
    auto* insulation = new QFormLayout(tab3);
    m_isoSegCombo = addCombo(tab3, "isoSegCombo");
    insulation->addRow(QStringLiteral("Трубы"), m_isoSegCombo);
    m_isoOtvodCombo = addCombo(tab3, "isoOtvodCombo");
    insulation->addRow(QStringLiteral("Отводы"), m_isoOtvodCombo);
    m_isoTroinikCombo = addCombo(tab3, "isoTroinikCombo");
    insulation->addRow(QStringLiteral("Тройники"), m_isoTroinikCombo);
    m_isoPerehodCombo = addCombo(tab3, "isoPerehodCombo");
    insulation->addRow(QStringLiteral("Переходы"), m_isoPerehodCombo);
    m_tabs->addTab(tab3, QStringLiteral("Изоляция"));

    auto* buttons = new QHBoxLayout;
    buttons->setObjectName(QStringLiteral("horizontalLayout"));
    m_helpButton = new QPushButton(QStringLiteral("Справка"), this);
    m_helpButton->setObjectName(QStringLiteral("helpButton"));
    buttons->addWidget(m_helpButton);
    buttons->addStretch(1);
    m_okButton = new QPushButton(QStringLiteral("Применить"), this);
    m_okButton->setObjectName(QStringLiteral("okButton"));
    m_okButton->setDefault(true);
    buttons->addWidget(m_okButton);
    m_cancelButton = new QPushButton(QStringLiteral("Отменить"), this);
    m_cancelButton->setObjectName(QStringLiteral("cancelButton"));
    buttons->addWidget(m_cancelButton);
    layout->addLayout(buttons);

    connect(m_okButton, &QPushButton::clicked, this, &QDialog::accept);
    connect(m_cancelButton, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_helpButton, &QPushButton::clicked, this,
            [this] { helpOpener()(m_helpFile, m_helpId); });
    connect(m_colorButton, &QPushButton::clicked, this, &IMediumDialog::OnColorButtonClicked);
}

void IMediumDialog::finishBuild()
{
    // The variant lists follow the standards from now on; loading set them once already.
    connect(m_segCombo, &QComboBox::currentIndexChanged, this,
            &IMediumDialog::on_segCombo_currentIndexChanged1);
    connect(m_otvodCombo, &QComboBox::currentIndexChanged, this,
            &IMediumDialog::on_otvodCombo_currentIndexChanged1);
    connect(m_troinikCombo, &QComboBox::currentIndexChanged, this,
            &IMediumDialog::on_troinikCombo_currentIndexChanged1);
    connect(m_perehodCombo, &QComboBox::currentIndexChanged, this,
            &IMediumDialog::on_perehodCombo_currentIndexChanged1);

    for (QComboBox* combo : findChildren<QComboBox*>()) {
        if (combo->objectName() == QLatin1String("typeBox")) continue; // always two items
        combo->setEnabled(combo->count() > 0);
        fitCombo(combo);
    }
    if (!m_create) {
        m_nameEdit->setEnabled(false);
        m_nameEdit->setCursorPosition(0);
        m_prefixEdit->setEnabled(false);
        m_prefixEdit->setCursorPosition(0);
    }
    m_tabs->setCurrentIndex(m_create ? 0 : 1);
    setWindowFlags(windowFlags() | Qt::FramelessWindowHint);
}

void IMediumDialog::loadCombo(QComboBox* combo, const QStringList& items, const QString& current)
{
    const QSignalBlocker quiet(combo);
    combo->clear();
    combo->addItems(items);
    combo->setCurrentIndex(combo->findText(current, Qt::MatchExactly | Qt::MatchCaseSensitive));
}

QString IMediumDialog::comboText(const QComboBox* combo)
{
    return combo->currentIndex() < 0 ? QString() : combo->currentText();
}

void IMediumDialog::fitCombo(QComboBox* combo)
{
    int widest = 0;
    const QFontMetrics metrics(combo->view()->font());
    for (int i = 0; i < combo->count(); ++i)
        widest = qMax(widest, metrics.horizontalAdvance(combo->itemText(i)));
    // Room for the item's margins and a scroll bar.
    combo->view()->setMinimumWidth(widest + 2 * metrics.averageCharWidth() + 20);
}

void IMediumDialog::transferCommon(bool load)
{
    MediumRecord& r = m_record;
    const struct
    {
        QComboBox* standard;
        QComboBox* variant;
        QString* current;
        QString* currentVariant;
        QStringList* list;
    } fittings[] = {
        {m_segCombo, m_segVarCombo, &r.curSeg, &r.varSeg, &r.segs},
        {m_otvodCombo, m_otvodVarCombo, &r.curOtvod, &r.varOtvod, &r.otvods},
        {m_troinikCombo, m_troinikVarCombo, &r.curTrk, &r.varTrk, &r.trks},
        {m_perehodCombo, m_perehodVarCombo, &r.curPrh, &r.varPrh, &r.prhs},
    };
    const struct
    {
        QComboBox* combo;
        QString* current;
        QStringList* list;
    } insulations[] = {
        {m_isoSegCombo, &r.currentIsoSegment, &r.isoSegments},
        {m_isoOtvodCombo, &r.currentIsoBend, &r.isoBends},
        {m_isoTroinikCombo, &r.currentIsoTee, &r.isoTees},
        {m_isoPerehodCombo, &r.currentIsoTransition, &r.isoTransitions},
    };
    if (load) {
        m_nameEdit->setText(r.sysName);
        m_prefixEdit->setText(r.prefix);
        showColor();
        for (const auto& f : fittings) {
            loadCombo(f.standard, *f.list, *f.current);
            loadCombo(f.variant, variantsOf(m_provider, *f.current), *f.currentVariant);
        }
        for (const auto& i : insulations)
            loadCombo(i.combo, *i.list, *i.current);
        return;
    }
    r.sysName = m_nameEdit->text();
    r.prefix = m_prefixEdit->text();
    for (const auto& f : fittings) {
        *f.current = comboText(f.standard);
        *f.currentVariant = comboText(f.variant);
    }
    for (const auto& i : insulations)
        *i.current = comboText(i.combo);
}

QString IMediumDialog::createProblem() const
{
    if (m_record.systems.contains(m_record.sysName)) return duplicateNameMessage();
    if (m_record.sysName.isEmpty()) return missingNameMessage();
    if (m_record.prefix.isEmpty()) return missingDesignationMessage();
    return {};
}

void IMediumDialog::returnToFirstTab()
{
    m_tabs->setCurrentIndex(0);
}

void IMediumDialog::refillVariants(QComboBox* standard, QComboBox* variants)
{
    const QStringList list = variantsOf(m_provider, comboText(standard));
    const QString shown = comboText(variants);
    loadCombo(variants, list, shown);
    variants->setEnabled(variants->count() > 0);
    fitCombo(variants);
}

void IMediumDialog::on_segCombo_currentIndexChanged1(int)
{
    refillVariants(m_segCombo, m_segVarCombo);
}

void IMediumDialog::on_otvodCombo_currentIndexChanged1(int)
{
    refillVariants(m_otvodCombo, m_otvodVarCombo);
}

void IMediumDialog::on_troinikCombo_currentIndexChanged1(int)
{
    refillVariants(m_troinikCombo, m_troinikVarCombo);
}

void IMediumDialog::on_perehodCombo_currentIndexChanged1(int)
{
    refillVariants(m_perehodCombo, m_perehodVarCombo);
}

void IMediumDialog::showColor()
{
    // Inside the button's frame.
    QSize size = m_colorButton->size() - QSize(8, 8);
    if (size.width() < m_colorButton->minimumWidth() - 8) size = m_colorButton->minimumSize();
    QPixmap swatch(size);
    swatch.fill(unpackColor(m_record.color));
    m_colorButton->setIcon(QIcon(swatch));
    m_colorButton->setIconSize(size);
}

void IMediumDialog::OnColorButtonClicked()
{
    QColor color = unpackColor(m_record.color);
    if (!colorChooser()(this, color)) return;
    m_record.color = packColor(color);
    showColor();
}

void IMediumDialog::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    showColor();
}

void IMediumDialog::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_F1) {
        try {
            helpOpener()(m_helpFile, m_helpId);
        } catch (...) {
            // Without the host there is no help to show.
        }
        return;
    }
    QDialog::keyPressEvent(event);
}

// ---- MediumDialog ----------------------------------------------------------------------------

MediumDialog::MediumDialog(const MediumRecord& record, bool create, QWidget* parent)
    : IMediumDialog(record, create, parent)
{
    setObjectName(QStringLiteral("MediumDialog"));
    setWindowTitle(QStringLiteral("Создание системы (среды)"));
    buildCommon();

    QWidget* tab = propertiesForm()->parentWidget();
    m_catBox = new QComboBox(tab);
    m_catBox->setObjectName(QStringLiteral("catBox"));
    propertiesForm()->addRow(QStringLiteral("Категория линии"), m_catBox);
    m_tempSpin = new QSpinBox(tab);
    m_tempSpin->setObjectName(QStringLiteral("tempSpin"));
    m_tempSpin->setRange(-273, 1000);
    m_tempSpin->setSuffix(QStringLiteral(" °C"));
    propertiesForm()->addRow(QStringLiteral("Температура среды"), m_tempSpin);
    m_denSpin = new QSpinBox(tab);
    m_denSpin->setObjectName(QStringLiteral("denSpin"));
    m_denSpin->setRange(0, 30000);
    m_denSpin->setSuffix(QStringLiteral(" кг/м³"));
    propertiesForm()->addRow(QStringLiteral("Плотность среды"), m_denSpin);
    m_maxPSpin = new qt::DoubleDotSpinBox(tab);
    m_maxPSpin->setObjectName(QStringLiteral("maxPSpin"));
    m_maxPSpin->setDecimals(2);
    m_maxPSpin->setRange(0.0, 100.0);
    m_maxPSpin->setSingleStep(0.1);
    m_maxPSpin->setSuffix(QStringLiteral(" МПа"));
    propertiesForm()->addRow(QStringLiteral("Макс. раб. давление"), m_maxPSpin);

    transfer(true);
    const bool engsysHelp = record.chmHelp.toLower().endsWith(QLatin1String("engsys.chm"));
    if (create) {
        setWindowTitle(engsysHelp ? QStringLiteral("Создание новой системы (среды)")
                                  : QStringLiteral("Создание новой системы"));
        m_catBox->setCurrentIndex(m_catBox->count() > 0 ? 0 : -1);
    } else {
        setWindowTitle(engsysHelp ? QStringLiteral("Свойства текущей системы (среды)")
                                  : QStringLiteral("Свойства текущей системы"));
    }
    finishBuild();
}

void MediumDialog::transfer(bool load)
{
    transferCommon(load);
    MediumRecord& r = record();
    if (load) {
        loadCombo(m_catBox, r.cats, r.cat);
        m_tempSpin->setValue(r.temp.trimmed().toInt());
        m_denSpin->setValue(r.density.trimmed().toInt());
        m_maxPSpin->setValue(QString(r.maxP).replace(u',', u'.').trimmed().toDouble());
        return;
    }
    r.cat = comboText(m_catBox);
    r.temp = QString::number(m_tempSpin->value());
    r.density = QString::number(m_denSpin->value());
    r.maxP = QString::number(m_maxPSpin->value(), 'f', 2);
}

QString MediumDialog::duplicateNameMessage() const
{
    return QStringLiteral("Среда с данным именем уже есть в разделе.\nВведите другое имя среды.");
}

QString MediumDialog::missingNameMessage() const
{
    return QStringLiteral("Введите имя среды");
}

QString MediumDialog::missingDesignationMessage() const
{
    return QStringLiteral("Задайте обозначение среды");
}

// ---- the export ------------------------------------------------------------------------------

bool runMediumDialog(quintptr parentWindow, bool create, bool ventilation,
                     const QByteArray& request, const char** result)
{
    QWinWidget host(parentWindow);
    const MediumRecord record = readMediumRecord(request);
    if (record.version != kRecordVersion) {
        qt::message_box::warning(&host, QStringLiteral("MarloUss"), kDataVersionMismatch);
        return false;
    }

    std::unique_ptr<IMediumDialog> dialog;
    if (ventilation)
        dialog = std::make_unique<MediumDialog2>(record, create, &host);
    else
        dialog = std::make_unique<MediumDialog>(record, create, &host);
    qt::attach_styled_frame(dialog.get());

    for (;;) {
        if (dialog->exec() != QDialog::Accepted) return false;
        dialog->transfer(false);
        if (!create) break;
        const QString problem = dialog->createProblem();
        if (problem.isEmpty()) break;
        qt::message_box::warning(dialog.get(), QStringLiteral(" "), problem);
        dialog->returnToFirstTab();
    }

    const char* text = keepMediumResult(writeMediumRecord(dialog->record()));
    if (result) *result = text;
    return true;
}

} // namespace edw
