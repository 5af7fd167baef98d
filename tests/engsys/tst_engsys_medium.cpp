// The medium dialogs as the export runs them and as the user sees them: the JSON record that
// comes back, the create-mode checks with their messages, titles, the fittings' variants from
// a real catalog, the colour and the help key.

#include "engsys/medium_dialog.h"
#include "engsys/medium_dialog2.h"
#include "engsys/medium_record.h"
#include "modal_answer.h"
#include "temp_catalog.h"

#include <esdata/esdata.h>

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>

using namespace edw;

namespace {

void click(QWidget* dialog, const char* name)
{
    auto* button = dialog->findChild<QPushButton*>(QString::fromLatin1(name));
    QVERIFY2(button, name);
    button->click();
}

QComboBox* combo(QWidget* dialog, const char* name)
{
    return dialog->findChild<QComboBox*>(QString::fromLatin1(name));
}

QString messageText(QWidget* box)
{
    if (auto* message = qobject_cast<QMessageBox*>(box)) return message->text();
    QString text;
    for (QLabel* label : box->findChildren<QLabel*>())
        if (label->text().size() > text.size()) text = label->text();
    return text;
}

const char16_t* u16(const QString& text)
{
    return reinterpret_cast<const char16_t*>(text.utf16());
}

} // namespace

class tst_engsys_medium : public QObject
{
    Q_OBJECT

    testing::TempCatalog m_catalog;
    qint64 m_pool = 0;

    // A request as a piping library sends it.
    MediumRecord request() const
    {
        MediumRecord r;
        r.version = 1;
        r.sysName = r.prefix = "В1";
        r.color = 255;
        r.systems = {"Т1", "Т2"};
        r.segs = {"ГОСТ 10704-91", "ГОСТ 3262-75", "ТУ 14-3-1128"};
        r.curSeg = "ГОСТ 10704-91";
        r.varSeg = "Сталь 09Г2С";
        r.otvods = {"ГОСТ 17375-2001"};
        r.curOtvod = "ГОСТ 17375-2001";
        r.varOtvod = "исполнение 2";
        r.prhs = {"ГОСТ 17378-2001"};
        r.curPrh = "нет такого";
        r.isoSegments = {"K-FLEX 13 мм", "Тилит 9 мм"};
        r.currentIsoSegment = "Тилит 9 мм";
        r.cats = {"I", "II", "III"};
        r.cat = "III";
        r.temp = "95";
        r.density = "958";
        r.maxP = "1.6";
        r.chmHelp = "\\Grundo\\Help\\EngSys.CHM";
        r.helpId = 4021;
        r.provider = m_pool;
        return r;
    }

    void addStandard(const QString& name, const QStringList& variants)
    {
        es_packet_t* packet = provider_AddPacket(m_catalog.provider, u16(name));
        QVERIFY(packet);
        es_table_t* table = folder_GetTable(packet_GetRootFolder(packet));
        es_attribute_t* variant = nullptr;
        if (!variants.isEmpty())
            variant = table_AddAttribute(table, u"OVK_VARIANT", u"Вариант", ES_ATTR_TEXT);
        es_attribute_t* dn = table_AddAttribute(table, u"DN", u"Ду", ES_ATTR_INT);
        int n = 0;
        // Two elements per variant: the list holds each value once.
        for (const QString& v : variants + variants) {
            es_stdsize_t* element = table_AddStdSize(table, u16(name + QString::number(++n)));
            QVERIFY(element);
            stdsize_SetValueS(element, variant, u16(v));
            stdsize_SetValueI(element, dn, 15 * n);
        }
        if (variants.isEmpty()) {
            es_stdsize_t* element = table_AddStdSize(table, u"plain");
            stdsize_SetValueI(element, dn, 20);
        }
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_catalog.provider);
        addStandard("ГОСТ 10704-91", {"Сталь 20", "Сталь 09Г2С"});
        addStandard("ГОСТ 3262-75", {"Сталь 20", "оцинкованная"});
        addStandard("ТУ 14-3-1128", {});
        addStandard("ГОСТ 17375-2001", {"исполнение 1", "исполнение 2"});
        m_pool =
            qint64(reinterpret_cast<quintptr>(esGetLibraryProviderPool(u"orvik.aec.engsystx")));
        QVERIFY(m_pool);
    }
    void cleanup()
    {
        IMediumDialog::setHelpOpener({});
        IMediumDialog::setColorChooser({});
    }

    void recordKeepsALargePoolAddress()
    {
        MediumRecord r = request();
        r.provider = 0x123456789AB;
        const QByteArray json = writeMediumRecord(r);
        QVERIFY(json.contains(R"("provider":1250999896491)"));
        const MediumRecord back = readMediumRecord(json);
        QCOMPARE(back.systems, r.systems);
        QCOMPARE(back.provider, r.provider);
        QCOMPARE(back.varOtvod, QStringLiteral("исполнение 2"));
    }

    void otherVersionIsRefused()
    {
        MediumRecord r = request();
        r.version = 2;
        QString shown;
        ModalAnswer user{[&](QWidget* box) {
            shown = messageText(box);
            click(box, "okButton");
        }};
        const char* result = "untouched";
        QVERIFY(!runMediumDialog(0, true, false, writeMediumRecord(r), &result));
        QCOMPARE(shown, QStringLiteral(
                            "Диалог невозможно показать: несовпадение версии данных для MarloUss"));
        QCOMPARE(QByteArray(result), QByteArray("untouched"));
    }

    void createModeChecks_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("prefix");
        QTest::addColumn<bool>("ventilation");
        QTest::addColumn<QString>("message");
        const QString taken = QStringLiteral("%1 с данным именем уже есть в разделе.\n"
                                             "Введите другое имя %2.");
        QTest::newRow("taken name") << "Т1" << QString("Т") << false << taken.arg("Среда", "среды");
        QTest::newRow("taken name, ventilation")
            << "Т2" << QString("П") << true << taken.arg("Система", "системы");
        QTest::newRow("no name") << "" << QString() << false << QString("Введите имя среды");
        QTest::newRow("no name, ventilation")
            << "" << QString("П") << true << QString("Введите имя системы");
        QTest::newRow("no designation")
            << "Т5" << QString() << false << QString("Задайте обозначение среды");
        QTest::newRow("no designation, ventilation")
            << "П5" << QString() << true << QString("Задайте обозначение системы");
    }
    void createModeChecks()
    {
        QFETCH(QString, name);
        QFETCH(QString, prefix);
        QFETCH(bool, ventilation);
        QFETCH(QString, message);
        QString shown;
        int tabShownAgain = -1;
        ModalAnswer user{
            [&](QWidget* d) {
                d->findChild<QTabWidget*>(QStringLiteral("tabWidget"))->setCurrentIndex(2);
                d->findChild<QLineEdit*>(QStringLiteral("nameEdit"))->setText(name);
                d->findChild<QLineEdit*>(QStringLiteral("prefixEdit"))->setText(prefix);
                click(d, "okButton");
            },
            [&](QWidget* box) {
                shown = messageText(box);
                click(box, "okButton");
            },
            [&](QWidget* d) {
                tabShownAgain =
                    d->findChild<QTabWidget*>(QStringLiteral("tabWidget"))->currentIndex();
                d->findChild<QLineEdit*>(QStringLiteral("nameEdit"))->setText(QStringLiteral("Т3"));
                d->findChild<QLineEdit*>(QStringLiteral("prefixEdit"))
                    ->setText(QStringLiteral("Т"));
                click(d, "okButton");
            }};
        const char* result = nullptr;
        QVERIFY(runMediumDialog(0, true, ventilation, writeMediumRecord(request()), &result));
        QCOMPARE(shown, message);
        QCOMPARE(tabShownAgain, 0);
        const MediumRecord back = readMediumRecord(result);
        QCOMPARE(back.sysName, QStringLiteral("Т3"));
        QCOMPARE(back.prefix, QStringLiteral("Т"));
    }

    void nameComparisonIsExact_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("small letter") << "т1";
        QTest::newRow("trailing blank") << "Т1 ";
    }
    void nameComparisonIsExact()
    {
        QFETCH(QString, name);
        ModalAnswer user{[&](QWidget* d) {
            d->findChild<QLineEdit*>(QStringLiteral("nameEdit"))->setText(name);
            click(d, "okButton");
        }};
        const char* result = nullptr;
        QVERIFY(runMediumDialog(0, true, false, writeMediumRecord(request()), &result));
        QCOMPARE(readMediumRecord(result).sysName, name);
    }

    void cancelAfterMessageGivesFalse()
    {
        ModalAnswer user{[&](QWidget* d) {
                             d->findChild<QLineEdit*>(QStringLiteral("nameEdit"))->clear();
                             click(d, "okButton");
                         },
                         [&](QWidget* box) { click(box, "okButton"); },
                         [&](QWidget* d) { click(d, "cancelButton"); }};
        const char* result = "untouched";
        QVERIFY(!runMediumDialog(0, true, false, writeMediumRecord(request()), &result));
        QCOMPARE(QByteArray(result), QByteArray("untouched"));
        QVERIFY(user.answered());
    }

    void propertyModeTakesAnyName()
    {
        MediumRecord r = request();
        r.sysName = QStringLiteral("Т1");
        bool editable = true;
        int tab = -1;
        ModalAnswer user{[&](QWidget* d) {
            editable = d->findChild<QLineEdit*>(QStringLiteral("nameEdit"))->isEnabled() ||
                       d->findChild<QLineEdit*>(QStringLiteral("prefixEdit"))->isEnabled();
            tab = d->findChild<QTabWidget*>(QStringLiteral("tabWidget"))->currentIndex();
            click(d, "okButton");
        }};
        const char* result = nullptr;
        QVERIFY(runMediumDialog(0, false, false, writeMediumRecord(r), &result));
        QVERIFY(!editable);
        QCOMPARE(tab, 1);
        const MediumRecord back = readMediumRecord(result);
        QCOMPARE(back.sysName, QStringLiteral("Т1"));
        // The medium's values come back in their text forms.
        QCOMPARE(back.maxP, QStringLiteral("1.60"));
        QCOMPARE(back.temp, QStringLiteral("95"));
        QCOMPARE(back.density, QStringLiteral("958"));
        QCOMPARE(back.cat, QStringLiteral("III"));
        QCOMPARE(back.varSeg, QStringLiteral("Сталь 09Г2С"));
        QCOMPARE(back.curPrh, QString()); // not in its list: no selection
    }

    void titles_data()
    {
        QTest::addColumn<bool>("ventilation");
        QTest::addColumn<bool>("create");
        QTest::addColumn<QString>("help");
        QTest::addColumn<QString>("title");
        const QString created = QStringLiteral("Создание новой системы");
        QTest::newRow("medium, new, engsys help")
            << false << true << "\\Help\\ENGSYS.chm" << created + " (среды)";
        QTest::newRow("medium, new, other help") << false << true << "\\Help\\water.chm" << created;
        QTest::newRow("medium, current, engsys help")
            << false << false << "engsys.chm" << QString("Свойства текущей системы (среды)");
        QTest::newRow("ventilation, new") << true << true << "engsys.chm" << created;
    }
    void titles()
    {
        QFETCH(bool, ventilation);
        QFETCH(bool, create);
        QFETCH(QString, help);
        QFETCH(QString, title);
        MediumRecord r = request();
        r.chmHelp = help;
        std::unique_ptr<IMediumDialog> d;
        if (ventilation)
            d = std::make_unique<MediumDialog2>(r, create);
        else
            d = std::make_unique<MediumDialog>(r, create);
        QCOMPARE(d->windowTitle(), title);
    }

    void createModeStartsOnFirstCategory()
    {
        MediumDialog d(request(), true);
        QCOMPARE(combo(&d, "catBox")->currentText(), QStringLiteral("I"));
        QCOMPARE(d.findChild<QTabWidget*>(QStringLiteral("tabWidget"))->currentIndex(), 0);
    }

    void variantsFromCatalog()
    {
        MediumDialog d(request(), false);
        QComboBox* variants = combo(&d, "segVarCombo");
        QCOMPARE(variants->count(), 2);
        QCOMPARE(variants->currentText(), QStringLiteral("Сталь 09Г2С"));
        QVERIFY(variants->isEnabled());
        QCOMPARE(combo(&d, "otvodVarCombo")->currentText(), QStringLiteral("исполнение 2"));
        // No tee standards, no reducer standard found: empty and disabled.
        QVERIFY(!combo(&d, "troinikCombo")->isEnabled());
        QVERIFY(!combo(&d, "troinikVarCombo")->isEnabled());
        QVERIFY(!combo(&d, "perehodVarCombo")->isEnabled());
        QVERIFY(combo(&d, "perehodCombo")->isEnabled());
        QVERIFY(!combo(&d, "isoTroinikCombo")->isEnabled());
        QVERIFY(combo(&d, "isoSegCombo")->isEnabled());
    }

    void standardChangeKeepsSharedVariant_data()
    {
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("standard");
        QTest::addColumn<QString>("after");
        QTest::addColumn<int>("count");
        const QString steel = QStringLiteral("Сталь 20");
        const QString gost = QStringLiteral("ГОСТ 3262-75");
        QTest::newRow("shared variant kept") << steel << gost << steel << 2;
        QTest::newRow("variant not offered") << QString("Сталь 09Г2С") << gost << QString() << 2;
        QTest::newRow("standard without variants")
            << steel << QString("ТУ 14-3-1128") << QString() << 0;
    }
    void standardChangeKeepsSharedVariant()
    {
        QFETCH(QString, before);
        QFETCH(QString, standard);
        QFETCH(QString, after);
        QFETCH(int, count);
        MediumRecord r = request();
        r.varSeg = before;
        MediumDialog d(r, false);
        combo(&d, "segCombo")->setCurrentText(standard);
        QComboBox* variants = combo(&d, "segVarCombo");
        QCOMPARE(variants->count(), count);
        QCOMPARE(variants->isEnabled(), count > 0);
        d.transfer(false);
        QCOMPARE(d.record().curSeg, standard);
        QCOMPARE(d.record().varSeg, after);
    }

    void dropDownsFitTheirWidestItem()
    {
        MediumRecord r = request();
        r.segs << QStringLiteral(
            "ГОСТ 10704-91 трубы стальные электросварные прямошовные, сортамент");
        MediumDialog d(r, true);
        QComboBox* standards = combo(&d, "segCombo");
        const int widest = standards->view()->fontMetrics().horizontalAdvance(r.segs.last());
        QVERIFY(standards->view()->minimumWidth() >= widest);
    }

    void colourIsPacked_data()
    {
        QTest::addColumn<QColor>("chosen");
        QTest::addColumn<bool>("accepted");
        QTest::addColumn<int>("packed");
        QTest::newRow("blue") << QColor(0, 0, 255) << true << 16711680;
        QTest::newRow("mixed") << QColor(1, 2, 3) << true << 1 + 2 * 256 + 3 * 65536;
        QTest::newRow("cancelled") << QColor(0, 255, 0) << false << 255;
    }
    void colourIsPacked()
    {
        QFETCH(QColor, chosen);
        QFETCH(bool, accepted);
        QFETCH(int, packed);
        QColor offered;
        IMediumDialog::setColorChooser([&](QWidget*, QColor& c) {
            offered = c;
            c = chosen;
            return accepted;
        });
        MediumDialog d(request(), true);
        auto* button = d.findChild<QPushButton*>(QStringLiteral("colorButton"));
        const QImage before = button->icon().pixmap(button->iconSize()).toImage();
        QCOMPARE(before.pixelColor(2, 2), QColor(255, 0, 0)); // 255 is pure red
        button->click();
        QCOMPARE(offered, QColor(255, 0, 0));
        QCOMPARE(d.record().color, packed);
        QCOMPARE(button->icon().pixmap(button->iconSize()).toImage().pixelColor(2, 2),
                 accepted ? chosen : QColor(255, 0, 0));
    }

    void f1OpensHelpAtTopic()
    {
        QString file;
        int topic = 0;
        IMediumDialog::setHelpOpener([&](const QString& f, int t) {
            file = f;
            topic = t;
        });
        MediumDialog2 d(request(), true);
        QTest::keyClick(&d, Qt::Key_F2);
        QCOMPARE(topic, 0);
        QTest::keyClick(&d, Qt::Key_F1);
        QCOMPARE(file, QStringLiteral("\\Grundo\\Help\\EngSys.CHM"));
        QCOMPARE(topic, 4021);
    }

    void ventilationType_data()
    {
        QTest::addColumn<bool>("supply");
        QTest::addColumn<int>("choose");
        QTest::addColumn<bool>("written");
        QTest::newRow("supply kept") << true << 0 << true;
        QTest::newRow("supply to exhaust") << true << 1 << false;
        QTest::newRow("exhaust to supply") << false << 0 << true;
    }
    void ventilationType()
    {
        QFETCH(bool, supply);
        QFETCH(int, choose);
        QFETCH(bool, written);
        MediumRecord r = request();
        r.protoch = supply;
        MediumDialog2 d(r, true);
        QComboBox* type = combo(&d, "typeBox");
        QCOMPARE(type->currentIndex(), supply ? 0 : 1);
        type->setCurrentIndex(choose);
        d.transfer(false);
        QCOMPARE(d.record().protoch, written);
    }
};

QTEST_MAIN(tst_engsys_medium)
#include "tst_engsys_medium.moc"
