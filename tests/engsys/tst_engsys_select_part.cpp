// The section choice: the dialog's buttons and growth, and the export's JSON in and out.

#include "engsys/engsys.h"
#include "engsys/part_choice.h"
#include "engsys/select_part_dialog.h"
#include "modal_answer.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>

namespace {

QStringList sections(int count)
{
    const QStringList all = {"Газоснабжение (ТХ)", "Технология (ТХ)", "Отопление (ОВ)",
                             "Вентиляция (ОВ)",    "Водопровод (ВК)", "Канализация (ВК)"};
    return all.mid(0, count);
}

QByteArray request(const QStringList& parts, const QString& current, int version = 1)
{
    QJsonObject record;
    record["version"] = version;
    record["curPart"] = current;
    record["parts"] = QJsonArray::fromStringList(parts);
    record["drawing"] = "ТХ-1"; // a key the dialog does not know must come back too
    return QJsonDocument(record).toJson(QJsonDocument::Compact);
}

QJsonObject parsed(const char* text)
{
    return QJsonDocument::fromJson(QByteArray(text)).object();
}

QStringList shownTexts(const SelectPartDialog& dialog)
{
    QStringList texts;
    for (QRadioButton* button : dialog.partButtons()) {
        if (!button->isHidden()) texts << button->objectName() + "=" + button->text();
    }
    return texts;
}

} // namespace

class SelectPartTest : public QObject
{
    Q_OBJECT
private slots:
    void cleanup();
    void showsOneButtonPerSection_data();
    void showsOneButtonPerSection();
    void growsByHalfItsHeightPerAddedSection_data();
    void growsByHalfItsHeightPerAddedSection();
    void acceptedChoiceComesBackAsJson_data();
    void acceptedChoiceComesBackAsJson();
    void closingGivesFalseAndNoResult();
    void otherVersionIsRefusedWithMessage_data();
    void otherVersionIsRefusedWithMessage();
    void resultBufferIsReusedByTheNextCall();
};

void SelectPartTest::cleanup()
{
    QVERIFY2(!QApplication::activeModalWidget(), "a modal dialog was left open");
    for (QWidget* window : QApplication::topLevelWidgets())
        QVERIFY2(!window->isVisible(), qPrintable(window->windowTitle() + " left visible"));
}

void SelectPartTest::showsOneButtonPerSection_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<QStringList>("shown");
    QTest::newRow("one section") << 1 << QStringList{"partButton1=Газоснабжение (ТХ)"};
    QTest::newRow("five sections")
        << 5
        << QStringList{"partButton1=Газоснабжение (ТХ)", "partButton2=Технология (ТХ)",
                       "partButton3=Отопление (ОВ)", "partButton4=Вентиляция (ОВ)",
                       "partButton5=Водопровод (ВК)"};
}

void SelectPartTest::showsOneButtonPerSection()
{
    QFETCH(int, count);
    QFETCH(QStringList, shown);
    SelectPartDialog dialog(sections(count), QString());
    QCOMPARE(shownTexts(dialog), shown);
}

void SelectPartTest::growsByHalfItsHeightPerAddedSection_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("halves");
    QTest::newRow("one") << 1 << 0;
    QTest::newRow("five: one and a half times taller") << 5 << 3;
    QTest::newRow("six") << 6 << 4;
}

void SelectPartTest::growsByHalfItsHeightPerAddedSection()
{
    QFETCH(int, count);
    QFETCH(int, halves);
    SelectPartDialog plain(sections(2), QString());
    const int initial = plain.height();
    SelectPartDialog dialog(sections(count), QString());
    QCOMPARE(dialog.height(), initial + halves * (initial / 2));
    QCOMPARE(dialog.width(), plain.width());
}

void SelectPartTest::acceptedChoiceComesBackAsJson_data()
{
    QTest::addColumn<QString>("current");
    QTest::addColumn<QString>("pick"); // radio button to check before OK; empty: none
    QTest::addColumn<QString>("chosen");
    const QString technology = QStringLiteral("Технология (ТХ)");
    QTest::newRow("keeps the current one") << technology << QString() << technology;
    QTest::newRow("picks an added one")
        << technology << QString("partButton3") << QString("Отопление (ОВ)");
    QTest::newRow("unknown current, no choice") << "Электроснабжение" << QString() << QString();
    QTest::newRow("current matched with case") << "технология (тх)" << QString() << QString();
}

void SelectPartTest::acceptedChoiceComesBackAsJson()
{
    QFETCH(QString, current);
    QFETCH(QString, pick);
    QFETCH(QString, chosen);
    const QStringList parts = sections(4);
    QString title;
    int checked = 0;
    ModalAnswer answer([&](QWidget* dialog) {
        title = dialog->windowTitle();
        for (QRadioButton* button : dialog->findChildren<QRadioButton*>())
            checked += button->isChecked();
        if (!pick.isEmpty()) dialog->findChild<QRadioButton*>(pick)->setChecked(true);
        dialog->findChild<QPushButton*>("okButton")->click();
    });
    const char* result = nullptr;
    QVERIFY(edw::runSelectPartDialog(0, request(parts, current), &result));
    QCOMPARE(title, QStringLiteral("Текущий раздел"));
    // Only a current section that is one of the sections, as written, starts checked.
    QCOMPARE(checked, parts.contains(current) ? 1 : 0);
    QVERIFY(result);
    const QJsonObject record = parsed(result);
    QCOMPARE(record["curPart"].toString(), chosen);
    QCOMPARE(record["parts"].toArray(), QJsonArray::fromStringList(parts));
    QCOMPARE(record["version"].toInt(), 1);
    QCOMPARE(record["drawing"].toString(), QStringLiteral("ТХ-1"));
}

void SelectPartTest::closingGivesFalseAndNoResult()
{
    ModalAnswer answer([](QWidget* dialog) { dialog->close(); });
    const char* result = "untouched";
    QVERIFY(!edw::runSelectPartDialog(0, request(sections(3), "Технология (ТХ)"), &result));
    QVERIFY(answer.answered());
    QCOMPARE(QByteArray(result), QByteArray("untouched"));
}

void SelectPartTest::otherVersionIsRefusedWithMessage_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::newRow("version 2") << request(sections(2), "", 2);
    QTest::newRow("version 0") << request(sections(2), "", 0);
    QTest::newRow("no version") << QByteArray(R"({"curPart": "", "parts": ["a"]})");
    QTest::newRow("not JSON") << QByteArray("version=1");
}

void SelectPartTest::otherVersionIsRefusedWithMessage()
{
    QFETCH(QByteArray, json);
    QStringList texts;
    bool sectionDialog = false;
    ModalAnswer answer([&](QWidget* dialog) {
        sectionDialog = dialog->findChild<QRadioButton*>("partButton1") != nullptr;
        for (QLabel* label : dialog->findChildren<QLabel*>())
            texts << label->text();
        dialog->findChild<QPushButton*>("okButton")->click();
    });
    const char* result = nullptr;
    QVERIFY(!edw::runSelectPartDialog(0, json, &result));
    QVERIFY(answer.answered());
    QVERIFY(!sectionDialog);
    QVERIFY2(texts.contains(edw::kDataVersionMismatch), qPrintable(texts.join(" | ")));
    QVERIFY(!result);
}

void SelectPartTest::resultBufferIsReusedByTheNextCall()
{
    // The second record is the longer one: the buffer must not move when it grows.
    const char* first = nullptr;
    const char* second = nullptr;
    {
        ModalAnswer answer([](QWidget* d) { d->findChild<QPushButton*>("okButton")->click(); });
        QVERIFY(edw::runSelectPartDialog(0, request(sections(2), "Технология (ТХ)"), &first));
    }
    QVERIFY(first);
    const QByteArray firstText(first);
    QCOMPARE(parsed(firstText.constData())["curPart"].toString(),
             QStringLiteral("Технология (ТХ)"));
    {
        ModalAnswer answer([](QWidget* d) { d->findChild<QPushButton*>("okButton")->click(); });
        QVERIFY(edw::runSelectPartDialog(0, request(sections(6), "Газоснабжение (ТХ)"), &second));
    }
    QVERIFY(QByteArray(second).size() > firstText.size());
    // The caller's first address now holds the second record.
    QCOMPARE(static_cast<const void*>(first), static_cast<const void*>(second));
    QCOMPARE(parsed(first)["curPart"].toString(), QStringLiteral("Газоснабжение (ТХ)"));
    QCOMPARE(parsed(first)["parts"].toArray().size(), 6);
}

QTEST_MAIN(SelectPartTest)
#include "tst_engsys_select_part.moc"
