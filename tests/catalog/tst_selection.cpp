#include "selection_panel.h"

#include <QtTest>

class SelectionTest : public QObject
{
    Q_OBJECT

private slots:
    void callbackResult_data();
    void callbackResult();
    void nobodyWaitingTakesNothing();
    void onlyTheLatestPanelWaits();
};

void SelectionTest::callbackResult_data()
{
    QTest::addColumn<int>("last");
    QTest::addColumn<int>("returned");
    QTest::addColumn<bool>("picked");
    QTest::newRow("point given") << 0 << 0 << true;
    QTest::newRow("cancelled") << -1 << -1 << false;
    QTest::newRow("other code") << 7 << 7 << false;
}

void SelectionTest::callbackResult()
{
    QFETCH(int, last);
    QFETCH(int, returned);
    QFETCH(bool, picked);
    SelectionPanel panel;
    panel.beginWaiting();
    QCOMPARE(SelectionPanel::current(), &panel);
    double x = 125.5;
    double y = -250.25;
    QCOMPARE(SelectionPanel::CallBackP(1, &x, &y, nullptr, nullptr, last), returned);
    QCOMPARE(panel.isPicked(), picked);
    QCOMPARE(panel.point(), picked ? QPointF(125.5, -250.25) : QPointF());
}

void SelectionTest::nobodyWaitingTakesNothing()
{
    SelectionPanel panel;
    double x = 1;
    double y = 2;
    QCOMPARE(SelectionPanel::CallBackP(0, &x, &y, nullptr, nullptr, 0), 0);
    QVERIFY(!panel.isPicked());

    panel.beginWaiting();
    panel.endWaiting();
    QVERIFY(!SelectionPanel::current());
    QCOMPARE(SelectionPanel::CallBackP(0, &x, &y, nullptr, nullptr, 0), 0);
    QVERIFY(!panel.isPicked());
}

void SelectionTest::onlyTheLatestPanelWaits()
{
    SelectionPanel first;
    first.beginWaiting();
    {
        SelectionPanel second;
        second.beginWaiting();
        QVERIFY(!first.isWaiting());
        double x = 3;
        double y = 4;
        SelectionPanel::CallBackP(0, &x, &y, nullptr, nullptr, 0);
        QVERIFY(second.isPicked());
        QVERIFY(!first.isPicked());
    }
    // A destroyed panel leaves no dangling current panel behind.
    QVERIFY(!SelectionPanel::current());
    // The first panel's stop does not unregister someone else.
    SelectionPanel third;
    third.beginWaiting();
    first.endWaiting();
    QCOMPARE(SelectionPanel::current(), &third);
}

QTEST_GUILESS_MAIN(SelectionTest)
#include "tst_selection.moc"
