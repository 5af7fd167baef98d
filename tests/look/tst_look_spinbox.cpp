#include "look/double_dot_spin_box.h"

#include <QLineEdit>
#include <QLocale>
#include <QTest>

// Runs under a decimal comma locale and under a decimal point locale (see CMakeLists).
class LookSpinBoxTest : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void bothSeparatorsAreAccepted_data();
    void bothSeparatorsAreAccepted();

private:
    QString m_point;
};

void LookSpinBoxTest::initTestCase()
{
    // The test runs once per locale; LOOK_EXPECT_POINT then names the point that locale must
    // give. Run by hand without it, the system's own point is taken.
    m_point = QString::fromLocal8Bit(qgetenv("LOOK_EXPECT_POINT"));
    if (m_point.isEmpty()) m_point = QLocale::system().decimalPoint();
    QCOMPARE(QLocale::system().decimalPoint(), m_point);
}

void LookSpinBoxTest::bothSeparatorsAreAccepted_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<double>("value");
    QTest::addColumn<QString>("shown"); // "." stands for the locale's decimal point
    QTest::newRow("point") << "1.5" << 1.5 << "1.5";
    QTest::newRow("comma") << "1,5" << 1.5 << "1.5";
    QTest::newRow("two decimals, comma") << "12,25" << 12.25 << "12.25";
    QTest::newRow("two decimals, point") << "12.25" << 12.25 << "12.25";
    QTest::newRow("negative") << "-0,75" << -0.75 << "-0.75";
    QTest::newRow("letters refused") << "2,5x" << 2.5 << "2.5";
}

void LookSpinBoxTest::bothSeparatorsAreAccepted()
{
    QFETCH(QString, typed);
    QFETCH(double, value);
    QFETCH(QString, shown);
    qt::DoubleDotSpinBox box;
    box.setRange(-1000, 1000);
    box.setDecimals(2);
    auto* line = box.findChild<QLineEdit*>();
    line->clear();
    QTest::keyClicks(&box, typed);
    // As typed, with the separator rewritten and a refused key left out.
    QCOMPARE(line->text(), shown.replace(QLatin1Char('.'), m_point));
    QTest::keyClick(&box, Qt::Key_Enter);
    QCOMPARE(box.value(), value);
}

QTEST_MAIN(LookSpinBoxTest)
#include "tst_look_spinbox.moc"
