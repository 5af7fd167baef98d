#include "selection_panel.h"

#include <QtTest>

class SelectionTest : public QObject
{
    Q_OBJECT

private slots:
    void callbackResult_data();
    void callbackResult();
    void onlyTheLatestPanelWaits();
};

void SelectionTest::callbackResult_data()
{
    QTest::addColumn<bool>("waiting");
    QTest::addColumn<int>("last");
    QTest::addColumn<bool>("picked");
    QTest::newRow("point given") << true << 0 << true;
    QTest::newRow("cancelled") << true << -1 << false;
    QTest::newRow("other code") << true << 7 << false;
    QTest::newRow("nobody waiting") << false << 0 << false;
}

void SelectionTest::callbackResult()
{
    QFETCH(bool, waiting);
    QFETCH(int, last);
    QFETCH(bool, picked);
    SelectionPanel panel;
    if (waiting) panel.beginWaiting();
    QCOMPARE(SelectionPanel::current(), waiting ? &panel : nullptr);
    double x = 125.5;
    double y = -250.25;
    QCOMPARE(SelectionPanel::CallBackP(1, &x, &y, nullptr, nullptr, last), last);
    QCOMPARE(panel.isPicked(), picked);
    QCOMPARE(panel.point(), picked ? QPointF(125.5, -250.25) : QPointF());
}

void SelectionTest::onlyTheLatestPanelWaits()
{
    SelectionPanel first;
    first.beginWaiting();
    {
        SelectionPanel second;
        second.beginWaiting();
        double x = 3;
        double y = 4;
        SelectionPanel::CallBackP(0, &x, &y, nullptr, nullptr, 0);
        QVERIFY(second.isPicked() && !first.isPicked());
    }
    // A destroyed panel leaves no dangling current panel behind, and a panel that stops
    // waiting does not unregister another one.
    QVERIFY(!SelectionPanel::current());
    SelectionPanel third;
    third.beginWaiting();
    first.endWaiting();
    QCOMPARE(SelectionPanel::current(), &third);
}

QTEST_GUILESS_MAIN(SelectionTest)
#include "tst_selection.moc"
