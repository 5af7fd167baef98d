#include "look/aec_style.h"
#include "look/look.h"
#include "look/look_p.h"
#include "look/resizable_frame.h"

#include <QApplication>
#include <QDialog>
#include <QFileDialog>
#include <QFrame>
#include <QGridLayout>
#include <QHoverEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QTreeView>
#include <QWindow>

namespace {

// Records the window manager moves the title bar asks for instead of starting them.
class recording_dialog_frame : public qt::styled_dialog
{
public:
    using qt::styled_dialog::styled_dialog;
    int moves = 0;

protected:
    bool beginSystemMove(QWindow*) override
    {
        ++moves;
        return true;
    }
};

// Records the resizes the border asks for instead of starting them.
class recording_border : public qt::resizable_frame
{
public:
    using qt::resizable_frame::resizable_frame;
    QList<Qt::Edges> resizes;

protected:
    bool beginSystemResize(QWindow*, Qt::Edges edges) override
    {
        resizes << edges;
        return true;
    }
};

QDialog* sample_dialog(const QString& title = QStringLiteral("Импорт элементов"))
{
    auto* dialog = new QDialog;
    dialog->setWindowTitle(title);
    auto* grid = new QGridLayout(dialog);
    auto* edit = new QLineEdit(dialog);
    edit->setObjectName(QStringLiteral("nameEdit"));
    grid->addWidget(new QLabel(QStringLiteral("Имя"), dialog), 0, 0);
    grid->addWidget(edit, 0, 1);
    auto* tree = new QTreeView(dialog);
    tree->setObjectName(QStringLiteral("treeView"));
    grid->addWidget(tree, 1, 0, 1, 2);
    return dialog;
}

} // namespace

class LookFrameTest : public QObject
{
    Q_OBJECT
private slots:
    void cleanup();
    void attachBuildsTheFrameAroundTheContent();
    void closeCrossFollowsTheCloseHint_data();
    void closeCrossFollowsTheCloseHint();
    void closeCrossRejectsTheDialog();
    void titleIsShownInCapitals();
    void themeChoosesTheVariant_data();
    void themeChoosesTheVariant();
    void missingTemplateKeepsTheProxyStyle();
    void doubleClickOnTitleBar_data();
    void doubleClickOnTitleBar();
    void pressInTitleBarMovesOnlyBelowTheBand_data();
    void pressInTitleBarMovesOnlyBelowTheBand();
    void edgesOfTheBorder_data();
    void edgesOfTheBorder();
    void hoverShowsResizeCursor_data();
    void hoverShowsResizeCursor();
    void pressOnAnEdgeResizes();
    void fileDialogKeepsItsControls();
};

void LookFrameTest::cleanup()
{
    qt::set_theme_source({});
    QVERIFY2(QApplication::topLevelWidgets().isEmpty(), "a window leaked from the test");
}

void LookFrameTest::attachBuildsTheFrameAroundTheContent()
{
    std::unique_ptr<QDialog> dialog(sample_dialog());
    dialog->setWindowFlags(Qt::Dialog | Qt::WindowCloseButtonHint | Qt::WindowStaysOnTopHint);
    auto* edit = dialog->findChild<QLineEdit*>(QStringLiteral("nameEdit"));
    QPointer<qt::styled_dialog> frame = qt::attach_styled_frame(dialog.get());
    QVERIFY(frame);
    // The window manager's frame gives way; the other window flags stay.
    const Qt::WindowFlags flags = dialog->windowFlags();
    QVERIFY(flags.testFlag(Qt::FramelessWindowHint));
    QVERIFY(flags.testFlag(Qt::WindowStaysOnTopHint));
    QVERIFY(flags.testFlag(Qt::WindowCloseButtonHint));

    auto* border = dialog->findChild<qt::resizable_frame*>(QStringLiteral("aec_styled_frame"));
    auto* titleBar = dialog->findChild<QFrame*>(QStringLiteral("aec_styled_titlebar"));
    QVERIFY(border && titleBar);
    // The dialog's own widgets now live in the content under the title bar, in their layout.
    QWidget* content = edit->parentWidget();
    QCOMPARE(content->objectName(), QStringLiteral("aec_styled_content"));
    QVERIFY(qobject_cast<QGridLayout*>(content->layout()));
    // The proxy style is in force for the content.
    auto* tree = dialog->findChild<QTreeView*>(QStringLiteral("treeView"));
    tree->ensurePolished();
    QCOMPARE(tree->style()->pixelMetric(QStyle::PM_TreeViewIndentation), 16);
    dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(dialog.get()));
    // 22 px of title and the 2 px line under it.
    QCOMPARE(titleBar->height(), 22 + 2);
    QVERIFY(titleBar->geometry().top() < edit->mapTo(border, QPoint(0, 0)).y());
}

void LookFrameTest::closeCrossFollowsTheCloseHint_data()
{
    QTest::addColumn<int>("flags");
    QTest::addColumn<bool>("cross");
    QTest::newRow("ordinary dialog") << int(Qt::Dialog) << true;
    QTest::newRow("close hint") << int(Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                                       Qt::WindowCloseButtonHint)
                                << true;
    QTest::newRow("no close hint")
        << int(Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint) << false;
}

void LookFrameTest::closeCrossFollowsTheCloseHint()
{
    QFETCH(int, flags);
    QFETCH(bool, cross);
    std::unique_ptr<QDialog> dialog(sample_dialog());
    dialog->setWindowFlags(Qt::WindowFlags(flags));
    qt::attach_styled_frame(dialog.get());
    dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(dialog.get()));
    auto* button = dialog->findChild<QPushButton*>(QStringLiteral("aec_styled_closebutton"));
    QVERIFY(button);
    QCOMPARE(button->isVisible(), cross);
}

void LookFrameTest::closeCrossRejectsTheDialog()
{
    std::unique_ptr<QDialog> dialog(sample_dialog());
    QPointer<qt::styled_dialog> frame = qt::attach_styled_frame(dialog.get());
    QSignalSpy clicked(frame.data(), &qt::styled_dialog::titlebarButtonClicked);
    QTimer::singleShot(0, dialog.get(),
                       [&] { QTest::mouseClick(frame->closeButton(), Qt::LeftButton); });
    QTimer::singleShot(3000, dialog.get(), [&] { dialog->done(42); }); // keeps a failure short
    QCOMPARE(dialog->exec(), int(QDialog::Rejected));
    QCOMPARE(clicked.count(), 1);
}

void LookFrameTest::titleIsShownInCapitals()
{
    std::unique_ptr<QDialog> dialog(sample_dialog(QStringLiteral("Импорт элементов")));
    QPointer<qt::styled_dialog> frame = qt::attach_styled_frame(dialog.get());
    auto* label = frame->titleLabel();
    QCOMPARE(label->text(), QStringLiteral("ИМПОРТ ЭЛЕМЕНТОВ"));
    dialog->setWindowTitle(QStringLiteral("Сравнение: ПЭ_Трубы"));
    QCOMPARE(label->text(), QStringLiteral("СРАВНЕНИЕ: ПЭ_ТРУБЫ"));
}

void LookFrameTest::themeChoosesTheVariant_data()
{
    QTest::addColumn<int>("theme"); // -1: no source installed
    QTest::addColumn<bool>("dark");
    QTest::addColumn<QString>("ownCross"); // a close icon of the dialog's own; empty: none
    QTest::newRow("no source") << -1 << false << QString();
    QTest::newRow("light theme") << 1 << false << QString();
    QTest::newRow("dark theme") << 2 << true << QString();
    QTest::newRow("unknown theme") << 3 << false << QString();
    QTest::newRow("own close icon") << 2 << true << QString(":/aec/triangle-down");
}

void LookFrameTest::themeChoosesTheVariant()
{
    QFETCH(int, theme);
    QFETCH(bool, dark);
    QFETCH(QString, ownCross);
    if (theme >= 0) qt::set_theme_source([theme] { return theme; });
    QCOMPARE(qt::dark_theme(), dark);
    std::unique_ptr<QDialog> dialog(sample_dialog());
    QPointer<qt::styled_dialog> frame = qt::attach_styled_frame(dialog.get(), ownCross);
    QCOMPARE(frame->dark(), dark);
    QCOMPARE(dialog->styleSheet(), qt::style_sheet(dark));
    auto* style = dialog->findChild<qt::aec_style*>();
    QVERIFY(style);
    QCOMPARE(style->dark(), dark);
    const QString cross = !ownCross.isEmpty() ? ownCross
                          : dark              ? ":/aec/cross-close-light"
                                              : ":/aec/cross-close";
    QCOMPARE(frame->closeButton()->icon().pixmap(22).toImage(), QIcon(cross).pixmap(22).toImage());
}

void LookFrameTest::missingTemplateKeepsTheProxyStyle()
{
    const QString saved = qt::detail::style_template_path();
    qt::detail::set_style_template_path(QStringLiteral(":/aec/missing.qss"));
    std::unique_ptr<QDialog> dialog(sample_dialog());
    QPointer<qt::styled_dialog> frame = qt::attach_styled_frame(dialog.get());
    qt::detail::set_style_template_path(saved);
    QVERIFY(frame);
    QVERIFY(dialog->styleSheet().isEmpty());
    QVERIFY(qobject_cast<qt::aec_style*>(dialog->style()));
    QVERIFY(dialog->findChild<QFrame*>(QStringLiteral("aec_styled_titlebar")));
}

void LookFrameTest::doubleClickOnTitleBar_data()
{
    QTest::addColumn<QString>("sizing");
    QTest::addColumn<bool>("maximises");
    QTest::newRow("resizable") << "resizable" << true;
    QTest::newRow("fixed size") << "fixed size" << false;
    QTest::newRow("fixed horizontal policy") << "fixed policy" << false;
}

void LookFrameTest::doubleClickOnTitleBar()
{
    QFETCH(QString, sizing);
    QFETCH(bool, maximises);
    std::unique_ptr<QDialog> dialog(sample_dialog());
    QPointer<qt::styled_dialog> frame = qt::attach_styled_frame(dialog.get());
    if (sizing == "fixed size")
        dialog->setFixedSize(400, 300);
    else if (sizing == "fixed policy")
        dialog->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
    dialog->resize(400, 300);
    dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(dialog.get()));
    QTest::mouseDClick(frame->titleBar(), Qt::LeftButton, {}, QPoint(100, 12));
    QTRY_COMPARE(dialog->isMaximized(), maximises);
    if (maximises) {
        QTest::mouseDClick(frame->titleBar(), Qt::LeftButton, {}, QPoint(100, 12));
        QTRY_VERIFY(!dialog->isMaximized());
    }
}

void LookFrameTest::pressInTitleBarMovesOnlyBelowTheBand_data()
{
    QTest::addColumn<int>("y");
    QTest::addColumn<int>("moves");
    QTest::newRow("top edge") << 0 << 0;
    QTest::newRow("inside the band") << 3 << 0;
    QTest::newRow("last pixel of the band") << 6 << 0;
    QTest::newRow("just below the band") << 7 << 1;
    QTest::newRow("middle of the title bar") << 12 << 1;
}

void LookFrameTest::pressInTitleBarMovesOnlyBelowTheBand()
{
    QFETCH(int, y);
    QFETCH(int, moves);
    std::unique_ptr<QDialog> dialog(sample_dialog());
    auto* frame = new recording_dialog_frame(false, dialog.get());
    dialog->resize(400, 300);
    dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(dialog.get()));
    QTest::mousePress(frame->titleBar(), Qt::LeftButton, {}, QPoint(100, y));
    QTest::mouseRelease(frame->titleBar(), Qt::LeftButton, {}, QPoint(100, y));
    QCOMPARE(frame->moves, moves);
}

void LookFrameTest::edgesOfTheBorder_data()
{
    QTest::addColumn<QPoint>("point");
    QTest::addColumn<int>("edges");
    // Border of 200 x 100 at the origin: right = 199, bottom = 99. The test rectangle is
    // x from 3 to 196 and y from -3 to 102.
    QTest::newRow("left pixel is outside the horizontal zone") << QPoint(1, 50) << 0;
    QTest::newRow("left zone") << QPoint(3, 50) << int(Qt::LeftEdge);
    QTest::newRow("left zone ends") << QPoint(9, 50) << 0;
    QTest::newRow("right zone") << QPoint(196, 50) << int(Qt::RightEdge);
    QTest::newRow("right pixel is outside") << QPoint(198, 50) << 0;
    QTest::newRow("above the frame still resizes") << QPoint(100, -3) << int(Qt::TopEdge);
    QTest::newRow("top zone") << QPoint(100, 2) << int(Qt::TopEdge);
    QTest::newRow("top zone ends") << QPoint(100, 3) << 0;
    QTest::newRow("below the frame still resizes") << QPoint(100, 102) << int(Qt::BottomEdge);
    QTest::newRow("bottom zone") << QPoint(100, 97) << int(Qt::BottomEdge);
    QTest::newRow("bottom zone starts") << QPoint(100, 96) << 0;
    QTest::newRow("too far above") << QPoint(100, -4) << 0;
    QTest::newRow("top left") << QPoint(4, 0) << int(Qt::TopEdge | Qt::LeftEdge);
    QTest::newRow("top right") << QPoint(195, 1) << int(Qt::TopEdge | Qt::RightEdge);
    QTest::newRow("bottom left") << QPoint(5, 99) << int(Qt::BottomEdge | Qt::LeftEdge);
    QTest::newRow("bottom right") << QPoint(194, 101) << int(Qt::BottomEdge | Qt::RightEdge);
    QTest::newRow("middle") << QPoint(100, 50) << 0;
}

void LookFrameTest::edgesOfTheBorder()
{
    QFETCH(QPoint, point);
    QFETCH(int, edges);
    QCOMPARE(int(qt::resizable_frame::edgesAt(QRect(0, 0, 200, 100), point)), edges);
}

void LookFrameTest::hoverShowsResizeCursor_data()
{
    QTest::addColumn<QPoint>("point");
    QTest::addColumn<int>("cursor");
    QTest::newRow("top") << QPoint(100, 1) << int(Qt::SizeVerCursor);
    QTest::newRow("left") << QPoint(4, 50) << int(Qt::SizeHorCursor);
    QTest::newRow("top left") << QPoint(4, 1) << int(Qt::SizeFDiagCursor);
    QTest::newRow("top right") << QPoint(195, 1) << int(Qt::SizeBDiagCursor);
    QTest::newRow("inside") << QPoint(100, 50) << int(Qt::ArrowCursor);
}

void LookFrameTest::hoverShowsResizeCursor()
{
    QFETCH(QPoint, point);
    QFETCH(int, cursor);
    QWidget window;
    auto* border = new qt::resizable_frame(&window);
    border->setGeometry(0, 0, 200, 100);
    window.resize(200, 100);
    border->setCursor(Qt::WaitCursor);
    QHoverEvent hover(QEvent::HoverMove, QPointF(point), QPointF(point), QPointF(150, 50));
    QApplication::sendEvent(border, &hover);
    QCOMPARE(int(border->cursor().shape()), cursor);
}

void LookFrameTest::pressOnAnEdgeResizes()
{
    QWidget window;
    window.resize(200, 100);
    auto* border = new recording_border(&window);
    border->setGeometry(0, 0, 200, 100);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QTest::mousePress(border, Qt::LeftButton, {}, QPoint(100, 50));
    QTest::mousePress(border, Qt::LeftButton, {}, QPoint(4, 1));
    QTest::mousePress(border, Qt::LeftButton, {}, QPoint(195, 98));
    QCOMPARE(border->resizes.size(), 2);
    QCOMPARE(border->resizes.at(0), Qt::TopEdge | Qt::LeftEdge);
    QCOMPARE(border->resizes.at(1), Qt::BottomEdge | Qt::RightEdge);
}

void LookFrameTest::fileDialogKeepsItsControls()
{
    // Choosers built by Qt itself get the frame too, around their generated layout.
    QFileDialog chooser(nullptr, QStringLiteral("Выбор папки"), QDir::tempPath());
    chooser.setOption(QFileDialog::DontUseNativeDialog);
    QPointer<qt::styled_dialog> frame = qt::attach_styled_frame(&chooser);
    QCOMPARE(frame->titleLabel()->text(), QStringLiteral("ВЫБОР ПАПКИ"));
    auto* content = chooser.findChild<QWidget*>(QStringLiteral("aec_styled_content"));
    QVERIFY(content && content->layout());
    auto* name = chooser.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    QVERIFY(name);
    QVERIFY(content->isAncestorOf(name));
    QTimer::singleShot(0, &chooser, [&] { QTest::keyClick(&chooser, Qt::Key_Escape); });
    QCOMPARE(chooser.exec(), int(QDialog::Rejected));
}

QTEST_MAIN(LookFrameTest)
#include "tst_look_frame.moc"
