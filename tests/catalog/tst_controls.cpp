#include "element_ops.h"
#include "stdsize.h"
#include "temp_catalog.h"
#include "xml_controls.h"

#include <QtTest>

using namespace edw;

namespace {

const QByteArray description = R"(<?xml version="1.0" encoding="utf-8"?>
<library>
  <command name="pump" id="5" type="PUMP">
    <ussControlList>
      <group title="Размеры" post-hide="true">
        <edit title="Диаметр" attribute="Dn" type="int" value="12a" tooltip="Условный проход" required="1"/>
        <edit title="Давление" attribute="Pn" type="float" value="1,6" readonly="true"/>
        <edit title="" attribute="Mark" value="К-80"/>
        <slider title="Не control" attribute="Speed"/>
      </group>
      <group title="Исполнение">
        <edit title="Диаметр снова" attribute="Dn" type="float"/>
        <check title="С двигателем" attribute="Motor" value="true"/>
        <combo title="Материал" attribute="Material" values="a||b"/>
      </group>
      <group title="Пустая"/>
    </ussControlList>
  </command>
  <command name="valve"/>
</library>
)";

QString writeDescription(const QTemporaryDir& dir)
{
    const QString file = dir.filePath(QStringLiteral("uss_насосы.xml"));
    QFile out(file);
    if (out.open(QIODevice::WriteOnly)) out.write(description);
    return file;
}

template <class T> T* as(const ControlList& groups, size_t group, size_t index)
{
    return dynamic_cast<T*>(groups.at(group).controls.at(index).get());
}

} // namespace

class ControlsTest : public QObject
{
    Q_OBJECT

private slots:
    void controlListIsRead();
    void missingPanelGivesNoGroups_data();
    void missingPanelGivesNoGroups();
    void valuesComeFromTheElement();
    void propertiesDocumentText();
    void collectedRecordsFollowPanelOrder();
};

void ControlsTest::controlListIsRead()
{
    QTemporaryDir dir;
    // Groups, titles, read-only flags and the controls made (no "slider", no second Dn) are
    // checked through the properties document; here what that document does not show.
    const ControlList groups = readControlList(writeDescription(dir), "pump");
    QVERIFY(groups[0].postHide);
    QVERIFY(!groups[1].postHide);
    auto* dn = as<xml_edit_control>(groups, 0, 0);
    QCOMPARE(dn->tooltip, QStringLiteral("Условный проход"));
    QVERIFY(dn->required);
    QVERIFY(!as<xml_edit_control>(groups, 0, 1)->required);
    auto* material = as<xml_combo_control>(groups, 1, 1);
    QVERIFY(material);
    QCOMPARE(material->choices, (QStringList{"a", "", "b"}));
    QCOMPARE(material->value.toString(), QString());
}

void ControlsTest::missingPanelGivesNoGroups_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<bool>("brokenFile");
    QTest::newRow("command without panel") << "valve" << false;
    QTest::newRow("unknown command") << "absent" << false;
    QTest::newRow("unreadable file") << "pump" << true;
}

void ControlsTest::missingPanelGivesNoGroups()
{
    QFETCH(QString, command);
    QFETCH(bool, brokenFile);
    QTemporaryDir dir;
    const QString file = brokenFile ? dir.filePath("absent.xml") : writeDescription(dir);
    QVERIFY(readControlList(file, command).empty());
}

void ControlsTest::valuesComeFromTheElement()
{
    QTemporaryDir dir;
    ControlList groups = readControlList(writeDescription(dir), "pump");
    testing::TempCatalog catalog;
    es_stdsize_t* element = createElement(catalog.provider, "Насосы", "PUMP", "", "1");
    testing::addAttribute(element, "Dn", ES_ATTR_INT);
    testing::addAttribute(element, "Motor", ES_ATTR_INT);
    testing::addAttribute(element, "Material", ES_ATTR_TEXT);
    setValuesByName(element, {{"Dn", "80"}, {"Motor", "0"}, {"Material", "b"}});
    attribute_SetFormula(CStdSize(element).attribute("Motor"), u"{A1}*2");
    QVERIFY(isComputed(element, "Motor"));
    QVERIFY(!isComputed(element, "Dn"));
    QVERIFY(!isComputed(element, "Pn"));

    fillValues(groups, element);

    QCOMPARE(groups[0].controls[0]->value, QVariant(80));
    // Pn is not in the element: its control keeps the described value.
    QCOMPARE(groups[0].controls[1]->value, QVariant(1.6));
    QCOMPARE(groups[1].controls[0]->value, QVariant(false));
    QCOMPARE(groups[1].controls[1]->value, QVariant(QStringLiteral("b")));
}

void ControlsTest::propertiesDocumentText()
{
    QTemporaryDir dir;
    const ControlList groups = readControlList(writeDescription(dir), "pump");
    const QString expected =
        QStringLiteral("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                       "<properties>\n"
                       "\t<group name=\"Размеры\">\n"
                       "\t\t<edit title=\"Диаметр\" param=\"Dn\" />\n"
                       "\t\t<edit title=\"Давление\" param=\"Pn\" readonly=\"true\" />\n"
                       "\t\t<edit title=\"\" param=\"Mark\" />\n"
                       "\t</group>\n"
                       "\t<group name=\"Исполнение\">\n"
                       "\t\t<check title=\"С двигателем\" param=\"Motor\" />\n"
                       "\t\t<combo title=\"Материал\" param=\"Material\" values=\"a||b\" />\n"
                       "\t</group>\n"
                       "\t<group name=\"Пустая\" />\n"
                       "</properties>\n");
    QCOMPARE(writeProperties(groups), expected);
}

void ControlsTest::collectedRecordsFollowPanelOrder()
{
    QTemporaryDir dir;
    ControlList groups = readControlList(writeDescription(dir), "pump");
    groups[1].controls[1]->value = QStringLiteral("b");
    const auto records = collectValues(groups);
    QCOMPARE(records.size(), size_t(5));
    const QStringList names{"Dn", "Pn", "Mark", "Motor", "Material"};
    const QStringList labels{"Диаметр", "Давление", "Mark", "С двигателем", "Материал"};
    for (size_t i = 0; i < records.size(); ++i) {
        QCOMPARE(records[i].name, names[int(i)]);
        QCOMPARE(records[i].label, labels[int(i)]);
    }
    QCOMPARE(records[0].value.typeId(), int(QMetaType::Int));
    QCOMPARE(records[1].value.typeId(), int(QMetaType::Double));
    QCOMPARE(records[2].value, QVariant(QStringLiteral("К-80")));
    QCOMPARE(records[3].value, QVariant(true));
    QCOMPARE(records[4].value, QVariant(QStringLiteral("b")));
}

QTEST_GUILESS_MAIN(ControlsTest)
#include "tst_controls.moc"
