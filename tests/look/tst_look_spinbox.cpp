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
    void validateRewritesTheCallersText_data();
    void validateRewritesTheCallersText();

private:
    QString m_point;
};

void LookSpinBoxTest::initTestCase()
{
    m_point = QString::fromLocal8Bit(qgetenv("LOOK_EXPECT_POINT"));
    QVERIFY2(!m_point.isEmpty(), "LOOK_EXPECT_POINT names the locale's decimal point");
    QCOMPARE(QLocale::system().decimalPoint(), m_point);
}

void LookSpinBoxTest::bothSeparatorsAreAccepted_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<double>("value");
    QTest::newRow("point") << "1.5" << 1.5;
    QTest::newRow("comma") << "1,5" << 1.5;
    QTest::newRow("two decimals, comma") << "12,25" << 12.25;
    QTest::newRow("two decimals, point") << "12.25" << 12.25;
    QTest::newRow("negative") << "-0,75" << -0.75;
}

void LookSpinBoxTest::bothSeparatorsAreAccepted()
{
    QFETCH(QString, typed);
    QFETCH(double, value);
    qt::DoubleDotSpinBox box;
    box.setRange(-1000, 1000);
    box.setDecimals(2);
    box.findChild<QLineEdit*>()->clear();
    QTest::keyClicks(&box, typed);
    QTest::keyClick(&box, Qt::Key_Enter);
    QCOMPARE(box.value(), value);
    QString shown = typed;
    shown.replace(QLatin1Char(m_point == "," ? '.' : ','), m_point);
    QVERIFY2(box.text().startsWith(shown), qPrintable(box.text() + " does not show " + shown));
}

void LookSpinBoxTest::validateRewritesTheCallersText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("state");
    QTest::newRow("point") << "2.5" << int(QValidator::Acceptable);
    QTest::newRow("comma") << "2,5" << int(QValidator::Acceptable);
    QTest::newRow("letters") << "2,5x" << int(QValidator::Invalid);
}

void LookSpinBoxTest::validateRewritesTheCallersText()
{
    QFETCH(QString, text);
    QFETCH(int, state);
    qt::DoubleDotSpinBox box;
    box.setDecimals(2);
    int pos = int(text.size());
    const QString typed = text;
    QCOMPARE(int(box.validate(text, pos)), state);
    QString expected = typed;
    expected.replace(QLatin1Char(m_point == "," ? '.' : ','), m_point);
    QCOMPARE(text, expected);
    QCOMPARE(pos, int(typed.size()));
}

QTEST_MAIN(LookSpinBoxTest)
#include "tst_look_spinbox.moc"
