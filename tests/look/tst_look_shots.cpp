#include "look/double_dot_spin_box.h"
#include "look/look.h"
#include "look/message_box_dialog.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDir>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QTest>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

// A dialog with the controls the library's dialogs use most.
QDialog* sample_dialog()
{
    auto* dialog = new QDialog;
    dialog->setWindowTitle(QStringLiteral("Свойства элемента"));

    auto* tabs = new QTabWidget(dialog);
    auto* page = new QWidget;
    auto* form = new QFormLayout(page);
    auto* name = new QLineEdit(QStringLiteral("Труба ПЭ 100"), page);
    auto* packet = new QComboBox(page);
    packet->addItems({QStringLiteral("ПЭ_Трубы"), QStringLiteral("ПЭ_Фитинги")});
    auto* diameter = new qt::DoubleDotSpinBox(page);
    diameter->setRange(0, 2000);
    diameter->setValue(110.5);
    diameter->setSuffix(QStringLiteral(" мм"));
    auto* disabled = new QLineEdit(QStringLiteral("недоступно"), page);
    disabled->setEnabled(false);
    form->addRow(QStringLiteral("Имя"), name);
    form->addRow(QStringLiteral("Пакет"), packet);
    form->addRow(QStringLiteral("Диаметр"), diameter);
    form->addRow(QStringLiteral("Автор"), disabled);
    tabs->addTab(page, QStringLiteral("Параметры"));
    tabs->addTab(new QWidget, QStringLiteral("Виды"));
    tabs->addTab(new QWidget, QStringLiteral("Спецификация"));

    auto* options = new QGroupBox(QStringLiteral("Экспорт"), dialog);
    auto* optionsLayout = new QHBoxLayout(options);
    auto* checked = new QCheckBox(QStringLiteral("Модель"), options);
    checked->setChecked(true);
    auto* mixed = new QCheckBox(QStringLiteral("Виды"), options);
    mixed->setTristate(true);
    mixed->setCheckState(Qt::PartiallyChecked);
    auto* unchecked = new QCheckBox(QStringLiteral("Фрагменты"), options);
    auto* all = new QRadioButton(QStringLiteral("Все"), options);
    all->setChecked(true);
    auto* chosen = new QRadioButton(QStringLiteral("Выбранные"), options);
    for (QWidget* w : std::initializer_list<QWidget*>{checked, mixed, unchecked, all, chosen})
        optionsLayout->addWidget(w);

    auto* tree = new QTreeWidget(dialog);
    tree->setHeaderLabels({QStringLiteral("Элемент"), QStringLiteral("Изменён")});
    auto* library = new QTreeWidgetItem(tree, {QStringLiteral("user_tx")});
    auto* folder = new QTreeWidgetItem(library, {QStringLiteral("ПЭ_Трубы")});
    new QTreeWidgetItem(folder, {QStringLiteral("Труба 110"), QStringLiteral("12.03.2024")});
    auto* selected =
        new QTreeWidgetItem(folder, {QStringLiteral("Труба 160"), QStringLiteral("14.03.2024")});
    tree->expandAll();
    tree->setCurrentItem(selected);
    tree->header()->resizeSection(0, 220);

    auto* progress = new QProgressBar(dialog);
    progress->setValue(40);

    auto* buttons = new QDialogButtonBox(dialog);
    buttons->addButton(QStringLiteral("Экспорт"), QDialogButtonBox::AcceptRole)
        ->setObjectName(QStringLiteral("okButton"));
    buttons->addButton(QStringLiteral("Отмена"), QDialogButtonBox::RejectRole)
        ->setObjectName(QStringLiteral("cancelButton"));

    auto* layout = new QVBoxLayout(dialog);
    layout->setContentsMargins(10, 10, 10, 10);
    layout->addWidget(tabs);
    layout->addWidget(options);
    layout->addWidget(tree, 1);
    layout->addWidget(progress);
    layout->addWidget(buttons);
    return dialog;
}

QColor pixel(const QImage& image, QPoint at)
{
    return QColor(image.pixel(at));
}

// Saves the picture into LOOK_SHOTS_DIR, or the working folder.
bool save(const QImage& shot, const QString& file)
{
    const QString folder = qEnvironmentVariableIsSet("LOOK_SHOTS_DIR")
                               ? qEnvironmentVariable("LOOK_SHOTS_DIR")
                               : QDir::currentPath();
    return shot.save(QDir(folder).filePath(file));
}

} // namespace

class LookShotsTest : public QObject
{
    Q_OBJECT
private slots:
    void framedSampleDialog_data();
    void framedSampleDialog();
    void framedMessageBox_data();
    void framedMessageBox();
};

void LookShotsTest::framedSampleDialog_data()
{
    QTest::addColumn<int>("theme");
    QTest::addColumn<QString>("file");
    QTest::addColumn<QColor>("border");
    QTest::addColumn<QColor>("titleBar");
    QTest::addColumn<QColor>("window");
    QTest::newRow("light") << 1 << "look-light.png" << QColor("#333333") << QColor("#e5e5e5")
                           << QColor("#f2f2f2");
    QTest::newRow("dark") << 2 << "look-dark.png" << QColor("#f2f2f2") << QColor("#333333")
                          << QColor("#4c4c4c");
}

void LookShotsTest::framedSampleDialog()
{
    QFETCH(int, theme);
    QFETCH(QString, file);
    QFETCH(QColor, border);
    QFETCH(QColor, titleBar);
    QFETCH(QColor, window);
    qt::set_theme_source([theme] { return theme; });
    std::unique_ptr<QDialog> dialog(sample_dialog());
    QPointer<qt::styled_dialog> frame = qt::attach_styled_frame(dialog.get());
    qt::set_theme_source({});
    dialog->resize(460, 520);
    dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(dialog.get()));
    const QImage shot = dialog->grab().toImage();
    QVERIFY(save(shot, file));

    // What the user sees: the 1 px border, the title bar colour, the window background.
    QCOMPARE(pixel(shot, QPoint(0, 200)), border);
    QCOMPARE(pixel(shot, QPoint(shot.width() - 1, 200)), border);
    QCOMPARE(pixel(shot, QPoint(200, shot.height() - 1)), border);
    QCOMPARE(pixel(shot, QPoint(4, 5)), titleBar);
    const int underline = frame->titleBar()->geometry().bottom();
    QCOMPARE(pixel(shot, QPoint(4, underline)), border);
    QCOMPARE(pixel(shot, QPoint(4, underline + 4)), window);
}

void LookShotsTest::framedMessageBox_data()
{
    QTest::addColumn<int>("theme");
    QTest::addColumn<QString>("file");
    QTest::addColumn<QColor>("window");
    QTest::newRow("light") << 1 << "look-message-light.png" << QColor("#f2f2f2");
    QTest::newRow("dark") << 2 << "look-message-dark.png" << QColor("#4c4c4c");
}

void LookShotsTest::framedMessageBox()
{
    QFETCH(int, theme);
    QFETCH(QString, file);
    QFETCH(QColor, window);
    qt::set_theme_source([theme] { return theme; });
    qt::message_box_dialog box(QMessageBox::Question, QStringLiteral("Импорт элементов"),
                               QStringLiteral("Элемент \"Труба 110\" уже есть в каталоге. "
                                              "Заменить его элементом из архива?"),
                               QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
    qt::set_theme_source({});
    box.setDefaultButton(QMessageBox::Yes);
    box.show();
    QVERIFY(QTest::qWaitForWindowExposed(&box));
    const QImage shot = box.grab().toImage();
    QVERIFY(save(shot, file));

    // The picture is drawn over the window background, at the left of the text.
    auto* picture = box.findChild<QLabel*>(QStringLiteral("pictureLabel"));
    QVERIFY(picture && picture->isVisible());
    const QPoint centre = picture->mapTo(&box, picture->rect().center());
    QVERIFY(pixel(shot, centre) != window);
    QCOMPARE(pixel(shot, centre + QPoint(0, 30)), window);
}

QTEST_MAIN(LookShotsTest)
#include "tst_look_shots.moc"
