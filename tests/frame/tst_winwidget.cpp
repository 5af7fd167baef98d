// Qt dialogs parented to a host window through its native handle. The host window here is a
// plain top-level widget of the test, whose winId() is the handle.

#include "frame/qwinwidget.h"

#include <QApplication>
#include <QDialog>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QVBoxLayout>
#include <QWindow>

#include <functional>

namespace {

// Runs fn once the dialog is shown and running modally.
void when_running(QDialog* dialog, std::function<void()> fn)
{
    QTimer::singleShot(0, dialog, [dialog, fn] {
        QTRY_VERIFY(dialog->isVisible());
        fn();
    });
}

} // namespace

class WinWidgetTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void modalDialogDisablesHostWhileRunning_data();
    void modalDialogDisablesHostWhileRunning();
    void closeByCrossActivatesHost();
    void secondShowKeepsFirstFocus();
    void deletingModalChildReenablesHost();
    void emptyParentIsOrdinaryWidget();
    void tabFromLastControlGoesToHost();
    void embeddingOwnsTheFrameToTheHost();
    void deleteOnCloseChildTakesFrameAlong();
    void modelessChildLeavesHostEnabled();

private:
    QWidget* m_host = nullptr;
    QLineEdit* m_hostEdit = nullptr;
};

void WinWidgetTest::init()
{
    m_host = new QWidget;
    m_host->setObjectName("hostWindow");
    m_hostEdit = new QLineEdit(m_host);
    m_hostEdit->setObjectName("hostEdit");
    m_host->resize(400, 300);
    m_host->show();
    m_host->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_host));
    m_hostEdit->setFocus();
}

void WinWidgetTest::cleanup()
{
    delete m_host;
    m_host = nullptr;
    QTRY_COMPARE(QApplication::topLevelWidgets().size(), 0);
}

void WinWidgetTest::modalDialogDisablesHostWhileRunning_data()
{
    QTest::addColumn<bool>("accept");
    QTest::newRow("accepted") << true;
    QTest::newRow("rejected") << false;
}

void WinWidgetTest::modalDialogDisablesHostWhileRunning()
{
    QFETCH(bool, accept);
    bool disabledWhileRunning = false;
    bool ownedByHost = false;
    int result = -1;
    {
        QWinWidget frame(m_host->winId());
        QDialog dialog(&frame);
        dialog.setObjectName("embeddedDialog");
        when_running(&dialog, [&] {
            disabledWhileRunning = !m_host->isEnabled();
            ownedByHost = dialog.windowHandle()->transientParent() == m_host->windowHandle();
            accept ? dialog.accept() : dialog.reject();
        });
        result = dialog.exec();
        QVERIFY(frame.isHidden());
    }
    QVERIFY(disabledWhileRunning);
    QVERIFY(ownedByHost);
    QVERIFY(m_host->isEnabled());
    QCOMPARE(result, accept ? int(QDialog::Accepted) : int(QDialog::Rejected));
    QCOMPARE(m_host->focusWidget(), m_hostEdit);
}

void WinWidgetTest::closeByCrossActivatesHost()
{
    QWidget other;
    other.setObjectName("otherWindow");
    other.show();
    other.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&other));
    {
        QWinWidget frame(m_host->winId());
        QDialog dialog(&frame);
        when_running(&dialog, [&] { dialog.close(); });
        dialog.exec();
    }
    QTRY_COMPARE(QApplication::activeWindow(), m_host);
    QVERIFY(m_host->isEnabled());
}

void WinWidgetTest::secondShowKeepsFirstFocus()
{
    QWinWidget frame(m_host->winId());
    QDialog dialog(&frame);
    QCOMPARE(frame.previousFocus(), quintptr(0));
    dialog.show();
    QCOMPARE(frame.previousFocus(), quintptr(m_host->winId()));
    dialog.hide();

    QWidget other;
    other.show();
    other.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&other));
    dialog.show();
    QCOMPARE(frame.previousFocus(), quintptr(m_host->winId()));
    dialog.hide();
}

void WinWidgetTest::deletingModalChildReenablesHost()
{
    QWinWidget frame(m_host->winId());
    QPointer<QDialog> dialog = new QDialog(&frame);
    dialog->setModal(true);
    dialog->show();
    QVERIFY(!m_host->isEnabled());
    delete dialog;
    QVERIFY(m_host->isEnabled());
}

void WinWidgetTest::emptyParentIsOrdinaryWidget()
{
    QWinWidget frame(0);
    QDialog dialog(&frame);
    dialog.setModal(true);
    dialog.show();
    QVERIFY(m_host->isEnabled());
    dialog.hide();
}

void WinWidgetTest::tabFromLastControlGoesToHost()
{
    m_hostEdit->clearFocus();
    QWinWidget frame(m_host->winId());
    frame.setObjectName("embeddingFrame");
    auto* layout = new QVBoxLayout(&frame);
    auto* first = new QLineEdit(&frame);
    first->setObjectName("firstEdit");
    auto* last = new QPushButton("OK", &frame);
    last->setObjectName("okButton");
    last->setFocusPolicy(Qt::StrongFocus);
    layout->addWidget(first);
    layout->addWidget(last);
    frame.show();
    first->setFocus();
    QTest::keyClick(first, Qt::Key_Tab);
    QCOMPARE(frame.focusWidget(), last); // inside the frame the chain goes on
    QVERIFY(m_host->focusWidget() != m_host);
    QTest::keyClick(last, Qt::Key_Tab);
    QCOMPARE(m_host->focusWidget(), m_host); // the last control hands focus to the host
}

void WinWidgetTest::embeddingOwnsTheFrameToTheHost()
{
    QWinWidget frame(m_host->winId());
    QCOMPARE(frame.parentWindow(), quintptr(m_host->winId()));
    QVERIFY(frame.windowHandle());
    QCOMPARE(frame.windowHandle()->transientParent(), m_host->windowHandle());
}

void WinWidgetTest::deleteOnCloseChildTakesFrameAlong()
{
    QPointer<QWinWidget> frame = new QWinWidget(m_host->winId());
    auto* dialog = new QDialog(frame);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setModal(true);
    dialog->show();
    QVERIFY(!m_host->isEnabled());
    dialog->close();
    QVERIFY(m_host->isEnabled());
    QTRY_VERIFY(frame.isNull());
}

void WinWidgetTest::modelessChildLeavesHostEnabled()
{
    QWinWidget frame(m_host->winId());
    QDialog dialog(&frame);
    dialog.show();
    QVERIFY(m_host->isEnabled());
    QVERIFY(frame.isHidden());
    dialog.hide();
}

QTEST_MAIN(WinWidgetTest)
#include "tst_winwidget.moc"
