#include "look/aec_style.h"
#include "look/look.h"
#include "look/look_p.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPainter>
#include <QPushButton>
#include <QRegularExpression>
#include <QSpinBox>
#include <QStyleOption>
#include <QStyledItemDelegate>
#include <QSvgRenderer>
#include <QTest>

// The filled style sheet and the proxy style, as a dialog receives them.
class LookStyleTest : public QObject
{
    Q_OBJECT
private slots:
    void everyPlaceholderIsFilled_data();
    void everyPlaceholderIsFilled();
    void valueContainingPercentIsNotSubstitutedAgain();
    void missingTemplateGivesEmptySheet();
    void controlsAreTwentyFourPixelsHigh_data();
    void controlsAreTwentyFourPixelsHigh();
    void indicatorsAreDrawnFromTheLibraryIcons_data();
    void indicatorsAreDrawnFromTheLibraryIcons();
};

void LookStyleTest::everyPlaceholderIsFilled_data()
{
    QTest::addColumn<bool>("dark");
    QTest::newRow("light") << false;
    QTest::newRow("dark") << true;
}

void LookStyleTest::everyPlaceholderIsFilled()
{
    QFETCH(bool, dark);
    const QString sheet = qt::style_sheet(dark);
    QVERIFY2(!sheet.isEmpty(), "the template resource is compiled in");
    const QRegularExpression leftover(QStringLiteral("%\\d"));
    const auto match = leftover.match(sheet);
    QVERIFY2(!match.hasMatch(),
             qPrintable(QStringLiteral("unfilled placeholder near: ") +
                        sheet.mid(std::max<qsizetype>(0, match.capturedStart() - 40), 80)));
    // The style sheet parser accepts the result: a button gets the style sheet height.
    QWidget host;
    host.setStyleSheet(sheet);
    auto* button = new QPushButton(QStringLiteral("Да"), &host);
    button->ensurePolished();
    QCOMPARE(button->sizeHint().height(), 24 + 2); // 24 px content, 1 px border each side
    // Icons are compiled-in resources of the variant.
    const QRegularExpression url(QStringLiteral("url\\(([^)]*)\\)"));
    auto urlIt = url.globalMatch(sheet);
    QVERIFY(urlIt.hasNext());
    while (urlIt.hasNext()) {
        const QString path = urlIt.next().captured(1);
        QCOMPARE(path.endsWith(QStringLiteral("-light")), dark);
        QVERIFY2(QFile::exists(path), qPrintable(path + " is not a compiled-in resource"));
    }
}

void LookStyleTest::valueContainingPercentIsNotSubstitutedAgain()
{
    const QString filled = qt::detail::fill_placeholders(
        QStringLiteral("a:%1 b:%2 c:%10 d:%3 e:%11 f:100%"),
        {QStringLiteral("%2"), QStringLiteral("two"), QStringLiteral("three"), "4", "5", "6", "7",
         "8", "9", QStringLiteral("ten%1")});
    QCOMPARE(filled, QStringLiteral("a:%2 b:two c:ten%1 d:three e:%11 f:100%"));
}

void LookStyleTest::missingTemplateGivesEmptySheet()
{
    const QString saved = qt::detail::style_template_path();
    qt::detail::set_style_template_path(QStringLiteral(":/aec/no-such-template.qss"));
    const QString sheet = qt::style_sheet(false);
    qt::detail::set_style_template_path(saved);
    QVERIFY(sheet.isEmpty());
    QVERIFY(!qt::style_sheet(false).isEmpty());
}

void LookStyleTest::controlsAreTwentyFourPixelsHigh_data()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("push button") << "button";
    QTest::newRow("combo box") << "combo";
    QTest::newRow("line edit") << "edit";
    QTest::newRow("spin box") << "spin";
    QTest::newRow("item view item") << "item";
}

void LookStyleTest::controlsAreTwentyFourPixelsHigh()
{
    QFETCH(QString, kind);
    qt::aec_style style(false);
    QWidget host;
    QFont big = host.font();
    big.setPixelSize(30); // contents taller than 24 px still give 24
    const auto make = [&]() -> QWidget* {
        if (kind == "button") return new QPushButton(QStringLiteral("Сохранить"), &host);
        if (kind == "combo") return new QComboBox(&host);
        if (kind == "edit") return new QLineEdit(&host);
        if (kind == "spin") return new QSpinBox(&host);
        return new QListWidget(&host);
    };
    QWidget* w = make();
    w->setStyle(&style);
    w->setFont(big);
    int height = w->sizeHint().height();
    if (auto* list = qobject_cast<QListWidget*>(w)) {
        list->addItem(QStringLiteral("Элемент"));
        QStyleOptionViewItem option;
        option.initFrom(list->viewport());
        option.widget = list;
        option.font = big;
        option.fontMetrics = QFontMetrics(big);
        height = list->itemDelegate()->sizeHint(option, list->model()->index(0, 0)).height();
    }
    QCOMPARE(height, 24);
    // Other kinds keep the base size.
    QStyleOptionButton check;
    QVERIFY(style.sizeFromContents(QStyle::CT_CheckBox, &check, QSize(10, 40), nullptr).height() >=
            40);
}

void LookStyleTest::indicatorsAreDrawnFromTheLibraryIcons_data()
{
    QTest::addColumn<bool>("dark");
    QTest::addColumn<int>("element");
    QTest::addColumn<int>("state");
    QTest::addColumn<int>("side");
    QTest::addColumn<QString>("icon");
    struct Row
    {
        QStyle::PrimitiveElement element;
        QStyle::State state;
        int side;
        const char* icon;
    };
    // One of each kind of indicator, and both states of the check box.
    const Row rows[] = {
        {QStyle::PE_IndicatorCheckBox, QStyle::State_On, 16, "checkbox-checked"},
        {QStyle::PE_IndicatorCheckBox, QStyle::State_Off, 16, "checkbox-unchecked"},
        {QStyle::PE_IndicatorRadioButton, QStyle::State_On, 16, "radiobox-checked"},
        {QStyle::PE_IndicatorArrowDown, {}, 9, "triangle-down"},
        {QStyle::PE_IndicatorSpinUp, {}, 9, "spinbox-up"},
    };
    for (bool dark : {false, true}) {
        for (const Row& row : rows) {
            const QString icon = QStringLiteral(":/aec/") + QLatin1String(row.icon) +
                                 (dark ? QStringLiteral("-light") : QString());
            QTest::addRow("%s%s", row.icon, dark ? " dark" : " light")
                << dark << int(row.element) << int(row.state | QStyle::State_Enabled) << row.side
                << icon;
        }
    }
}

void LookStyleTest::indicatorsAreDrawnFromTheLibraryIcons()
{
    QFETCH(bool, dark);
    QFETCH(int, element);
    QFETCH(int, state);
    QFETCH(int, side);
    QFETCH(QString, icon);
    qt::aec_style style(dark);
    QStyleOption option;
    option.state = QStyle::State(state);
    option.rect = QRect(0, 0, 20, 20);

    QImage drawn(20, 20, QImage::Format_ARGB32_Premultiplied);
    drawn.fill(Qt::transparent);
    {
        QPainter p(&drawn);
        style.drawPrimitive(QStyle::PrimitiveElement(element), &option, &p);
    }
    QImage expected(20, 20, QImage::Format_ARGB32_Premultiplied);
    expected.fill(Qt::transparent);
    {
        QPainter p(&expected);
        p.setRenderHint(QPainter::Antialiasing);
        QSvgRenderer svg(icon);
        QVERIFY2(svg.isValid(), qPrintable(icon));
        const int offset = (20 - side) / 2;
        svg.render(&p, QRectF(offset, offset, side, side));
    }
    QCOMPARE(drawn, expected);
}

QTEST_MAIN(LookStyleTest)
#include "tst_look_style.moc"
