// Attribute values of elements and objects, unique values over a packet, and the calls that
// must give empty results for bad input.
#include "esdatatest.h"

#include <QFile>
#include <QTemporaryDir>
#include <QThread>
#include <QtTest>

#include <limits>

#include <cmath>

class TstEsdataValues : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();

    void valuesAreTaggedAndPersist_data();
    void valuesAreTaggedAndPersist();
    void valueOfAnotherTableIsRefused();
    void nonFiniteRealIsRefused_data();
    void nonFiniteRealIsRefused();
    void newElementReadsBackWhatWasWritten_data();
    void newElementReadsBackWhatWasWritten();
    void uniqueValuesAreSortedAndJoined_data();
    void uniqueValuesAreSortedAndJoined();
    void objectStartsAsElementAndKeepsItsWrites();
    void badInputGivesEmptyResults_data();
    void badInputGivesEmptyResults();
    void updatedItemsAreRegistered();
    void elementLeftTheCacheAnswersAsBefore_data();
    void elementLeftTheCacheAnswersAsBefore();

private:
    QTemporaryDir m_dir;
    es_provider_t* m_p = nullptr;
    es_stdsize_t* m_e = nullptr;
};

void TstEsdataValues::initTestCase()
{
    QVERIFY(m_dir.isValid());
    m_p = openCatalog(m_dir.filePath("values.db"));
    QVERIFY(m_p);
    m_e = addElement(m_p, u"Арматура", u"folder V1", u"V1");
    es_table_t* t = stdsize_GetTable(m_e);
    QVERIFY(table_AddAttribute(t, u"DN", u"Условный проход", ES_ATTR_INT));
    QVERIFY(table_AddAttribute(t, u"Mass", u"Масса", ES_ATTR_REAL));
    QVERIFY(table_AddAttribute(t, u"NAME_VALUE", u"Наименование", ES_ATTR_TEXT));
}

void TstEsdataValues::cleanupTestCase()
{
    esx_CloseCatalog(m_p);
}

void TstEsdataValues::valuesAreTaggedAndPersist_data()
{
    QTest::addColumn<QString>("attribute");
    QTest::addColumn<int>("kind");
    QTest::addColumn<QVariant>("value");
    QTest::newRow("int") << "DN" << int(ES_VALUE_INT) << QVariant(-150);
    QTest::newRow("real") << "Mass" << int(ES_VALUE_REAL) << QVariant(3.75);
    QTest::newRow("text") << "NAME_VALUE" << int(ES_VALUE_TEXT) << QVariant("Кран шаровый Ø50");
    QTest::newRow("empty text") << "NAME_VALUE" << int(ES_VALUE_TEXT) << QVariant(QString(""));
    QTest::newRow("text in int attribute") << "DN" << int(ES_VALUE_TEXT) << QVariant("abc");
    QTest::newRow("whole real") << "Mass" << int(ES_VALUE_REAL) << QVariant(2.0);
    QTest::newRow("text outside the basic plane")
        << "NAME_VALUE" << int(ES_VALUE_TEXT) << QVariant(QString::fromUtf8("𝔸 ≤ Ø 😀 end"));
}

void TstEsdataValues::valuesAreTaggedAndPersist()
{
    QFETCH(QString, attribute);
    QFETCH(int, kind);
    QFETCH(QVariant, value);
    es_attribute_t* a = table_FindAttribute(stdsize_GetTable(m_e), u16(attribute).c_str());
    QVERIFY(a);
    if (kind == ES_VALUE_INT)
        QVERIFY(stdsize_SetValueI(m_e, a, value.toInt()));
    else if (kind == ES_VALUE_REAL)
        QVERIFY(stdsize_SetValueD(m_e, a, value.toDouble()));
    else
        QVERIFY(stdsize_SetValueS(m_e, a, u16(value.toString()).c_str()));

    // Read through a fresh connection so that the value comes from the file.
    QString file = qs(esx_CatalogPath(m_p));
    esx_CloseCatalog(m_p);
    m_p = openCatalog(file, "", false);
    QVERIFY(m_p);
    m_e = findElement(m_p, u"V1");
    es_value v;
    QVERIFY(stdsize_GetValueByName(m_e, u16(attribute).c_str(), &v));
    QCOMPARE(int(v.kind), kind);
    if (kind == ES_VALUE_INT)
        QCOMPARE(v.i, value.toInt());
    else if (kind == ES_VALUE_REAL)
        QCOMPARE(v.d, value.toDouble());
    else
        QCOMPARE(qs(v.s), value.toString());
}

void TstEsdataValues::newElementReadsBackWhatWasWritten_data()
{
    QTest::addColumn<bool>("rollBack");
    QTest::newRow("committed scope") << false;
    QTest::newRow("rolled back scope") << true;
}

// Written values and representation data of a new element come back through the same
// handles, before and after the scope they were written in ends.
void TstEsdataValues::newElementReadsBackWhatWasWritten()
{
    QFETCH(bool, rollBack);
    es_table_t* t = stdsize_GetTable(m_e);
    es_attribute_t* dn = table_FindAttribute(t, u"DN");
    es_attribute_t* name = table_FindAttribute(t, u"NAME_VALUE");
    QVERIFY(dn && name);
    QVERIFY(esx_Begin(m_p));
    const std::u16string id = u16(QString("R_%1").arg(QTest::currentDataTag()));
    es_stdsize_t* e = table_AddStdSize(t, id.c_str());
    QVERIFY(e);
    QVERIFY(stdsize_SetValueI(e, dn, 65));
    QVERIFY(stdsize_SetValueS(e, name, u"Кран"));
    const QByteArray repr = "<repr n=\"1\"/>";
    QVERIFY(stdsize_SetRepresentationData(e, repr.constData(), size_t(repr.size())));
    auto check = [&] {
        es_value v;
        QVERIFY(stdsize_GetValue(e, dn, &v));
        QCOMPARE(int(v.kind), int(ES_VALUE_INT));
        QCOMPARE(v.i, 65);
        QVERIFY(stdsize_GetValueByName(e, u"NAME_VALUE", &v));
        QCOMPARE(qs(v.s), QString("Кран"));
        const void* data = nullptr;
        const size_t size = stdsize_GetRepresentationData(e, &data);
        QCOMPARE(QByteArray(static_cast<const char*>(data), qsizetype(size)), repr);
    };
    check();
    if (QTest::currentTestFailed()) return;
    if (rollBack) {
        QVERIFY(esx_Rollback(m_p));
        QVERIFY(!packet_FindStdSize(provider_GetPacket(m_p, 0), id.c_str()));
        return;
    }
    QVERIFY(esx_Commit(m_p));
    check();
}

void TstEsdataValues::nonFiniteRealIsRefused_data()
{
    QTest::addColumn<double>("value");
    QTest::newRow("not a number") << std::numeric_limits<double>::quiet_NaN();
    QTest::newRow("infinity") << std::numeric_limits<double>::infinity();
    QTest::newRow("negative infinity") << -std::numeric_limits<double>::infinity();
}

void TstEsdataValues::nonFiniteRealIsRefused()
{
    QFETCH(double, value);
    es_attribute_t* a = table_FindAttribute(stdsize_GetTable(m_e), u"Mass");
    QVERIFY(stdsize_SetValueD(m_e, a, 7.25));
    QVERIFY(!stdsize_SetValueD(m_e, a, value));
    es_object_t* o = pool_CreateObject(esGetLibraryProviderPool(u"orvik.aec.engsystx"), m_e, u"");
    QVERIFY(o);
    QVERIFY(!object_SetValueD(o, a, value));
    es_value v;
    QVERIFY(object_GetValueByName(o, u"Mass", &v));
    QCOMPARE(v.d, 7.25);
    object_Delete(o);
    QVERIFY(stdsize_GetValue(m_e, a, &v));
    QCOMPARE(int(v.kind), int(ES_VALUE_REAL));
    QCOMPARE(v.d, 7.25);
}

void TstEsdataValues::valueOfAnotherTableIsRefused()
{
    es_stdsize_t* other = addElement(m_p, u"Арматура", u"folder V2", u"V2");
    es_attribute_t* foreign =
        table_AddAttribute(stdsize_GetTable(other), u"Only", u"Only", ES_ATTR_INT);
    QVERIFY(foreign);
    es_value v;
    QVERIFY(!stdsize_GetValue(m_e, foreign, &v));
    QCOMPARE(v.kind, ES_VALUE_EMPTY);
    QVERIFY(!stdsize_SetValueI(m_e, foreign, 1));
    QVERIFY(!stdsize_GetValueByName(m_e, u"Only", &v));
    // A known attribute without a value reads as an empty value.
    QVERIFY(stdsize_GetValueByName(other, u"Only", &v));
    QCOMPARE(v.kind, ES_VALUE_EMPTY);
    QVERIFY(table_DeleteStdSize(stdsize_GetTable(other), other));
}

void TstEsdataValues::uniqueValuesAreSortedAndJoined_data()
{
    QTest::addColumn<QString>("attribute");
    QTest::addColumn<QString>("expected");
    QTest::newRow("ints") << "DN"
                          << "15|20|100";
    QTest::newRow("reals") << "Mass"
                           << "0.5|1.25";
    QTest::newRow("texts") << "NAME_VALUE"
                           << "Задвижка|Кран";
    QTest::newRow("unknown attribute") << "Nope"
                                       << "";
}

void TstEsdataValues::uniqueValuesAreSortedAndJoined()
{
    QFETCH(QString, attribute);
    QFETCH(QString, expected);
    es_packet_t* packet = provider_AddPacket(m_p, u"Уникальные");
    if (!packet) {
        packet = pool_FindPacket(esGetLibraryProviderPool(u"orvik.aec.engsystx"), u"Уникальные");
    } else {
        const int dn[] = {100, 15, 20, 15};
        const double mass[] = {1.25, 0.5, 1.25, 0.5};
        const char16_t* names[] = {u"Кран", u"Задвижка", u"Кран", u"Кран"};
        for (int k = 0; k < 4; ++k) {
            std::u16string id = u"U" + u16(QString::number(k));
            es_folder_t* f =
                folder_AddChildFolder(packet_GetRootFolder(packet), (u"folder " + id).c_str());
            es_table_t* t = folder_GetTable(f);
            es_stdsize_t* e = table_AddStdSize(t, id.c_str());
            stdsize_SetValueI(e, table_AddAttribute(t, u"DN", u"", ES_ATTR_INT), dn[k]);
            stdsize_SetValueD(e, table_AddAttribute(t, u"Mass", u"", ES_ATTR_REAL), mass[k]);
            stdsize_SetValueS(e, table_AddAttribute(t, u"NAME_VALUE", u"", ES_ATTR_TEXT), names[k]);
        }
    }
    QVERIFY(packet);
    QCOMPARE(qs(packet_GetAttributeUniqueValues(packet, u16(attribute).c_str())), expected);
}

void TstEsdataValues::objectStartsAsElementAndKeepsItsWrites()
{
    es_table_t* t = stdsize_GetTable(m_e);
    es_attribute_t* dn = table_FindAttribute(t, u"DN");
    es_attribute_t* name = table_FindAttribute(t, u"NAME_VALUE");
    QVERIFY(stdsize_SetValueI(m_e, dn, 50));
    QVERIFY(stdsize_SetValueS(m_e, name, u"Кран"));
    es_pool_t* pool = esGetLibraryProviderPool(u"orvik.aec.engsystx");
    QVERIFY(pool);
    es_object_t* o = pool_CreateObject(pool, m_e, u"orvik.aec.engsystx");
    QVERIFY(o);
    QCOMPARE(object_GetStdSize(o), m_e);
    es_value v;
    QVERIFY(object_GetValueByName(o, u"DN", &v));
    QCOMPARE(v.kind, ES_VALUE_INT);
    QCOMPARE(v.i, 50);
    QVERIFY(object_SetValueI(o, dn, 80));
    QVERIFY(object_SetValueS(o, name, u"Клапан"));
    QVERIFY(object_SetValueD(o, table_FindAttribute(t, u"Mass"), 9.5));
    QVERIFY(object_GetValueByName(o, u"DN", &v));
    QCOMPARE(v.i, 80);
    QVERIFY(object_GetValueByName(o, u"NAME_VALUE", &v));
    QCOMPARE(qs(v.s), QString("Клапан"));
    QVERIFY(!object_GetValueByName(o, u"Missing", &v));
    // The element itself is untouched.
    QVERIFY(stdsize_GetValueByName(m_e, u"DN", &v));
    QCOMPARE(v.i, 50);
    QVERIFY(stdsize_GetValueByName(m_e, u"NAME_VALUE", &v));
    QCOMPARE(qs(v.s), QString("Кран"));
    object_Delete(o);
    object_Delete(nullptr);
}

void TstEsdataValues::badInputGivesEmptyResults_data()
{
    QTest::addColumn<QString>("call");
    for (const char* c :
         {"null provider", "null element", "null attribute", "null projections", "null object",
          "index out of range", "null texts", "null pool"})
        QTest::newRow(c) << QString(c);
}

// Every call on a packet, folder, table, model or specification passes the one null and
// liveness guard the rows below reach; they check what the other entry points guard alone.
void TstEsdataValues::badInputGivesEmptyResults()
{
    QFETCH(QString, call);
    es_value v{ES_VALUE_INT, 7, 1.0, nullptr};
    const void* data = &v;
    if (call == "null provider") {
        QCOMPARE(provider_GetPacketCount(nullptr), 0u);
        QVERIFY(!provider_GetPacket(nullptr, 0));
        QVERIFY(!provider_AddPacket(nullptr, u"A"));
        QCOMPARE(qs(provider_GetDatabaseName(nullptr)), QString());
        QVERIFY(!provider_RunCommand(nullptr, u"<commands/>"));
        QVERIFY(!esx_Begin(nullptr));
        QVERIFY(!esx_Commit(nullptr));
        QCOMPARE(qs(esx_CatalogPath(nullptr)), QString());
        esx_CloseCatalog(nullptr);
    } else if (call == "null element") {
        QVERIFY(!stdsize_GetValueByName(nullptr, u"DN", &v));
        QCOMPARE(v.kind, ES_VALUE_EMPTY);
        QVERIFY(!stdsize_SetValueS(nullptr, nullptr, u"x"));
        QVERIFY(!stdsize_GetModel(nullptr));
        QVERIFY(!stdsize_GetProjections(nullptr));
        QCOMPARE(stdsize_GetSpecificationCount(nullptr), 0u);
        QCOMPARE(stdsize_GetRepresentationData(nullptr, &data), size_t(0));
        QVERIFY(data == nullptr);
        QVERIFY(!stdsize_SetType(nullptr, u"t"));
        QVERIFY(!table_DeleteStdSize(stdsize_GetTable(m_e), nullptr));
    } else if (call == "null attribute") {
        QVERIFY(!stdsize_GetValue(m_e, nullptr, &v));
        QVERIFY(!stdsize_SetValueI(m_e, nullptr, 1));
        QCOMPARE(attribute_GetNumber(nullptr), 0);
        QCOMPARE(qs(attribute_GetName(nullptr)), QString());
        QVERIFY(!attribute_SetFormula(nullptr, u"x"));
        QCOMPARE(attribute_GetType(nullptr), 0u);
    } else if (call == "null projections") {
        QCOMPARE(projections_GetProjectioCount(nullptr), 0u);
        QVERIFY(!projections_GetProjection(nullptr, 0));
        QVERIFY(!projections_AddProjectionEx(nullptr, u"n", u"/etc/hostname", nullptr, 1, u"", 0));
        QVERIFY(!projections_DeleteProjection(stdsize_GetProjections(m_e), nullptr));
        QCOMPARE(qs(projection_GetName(nullptr)), QString());
        QCOMPARE(projection_GetIconData(nullptr, &data), size_t(0));
    } else if (call == "null object") {
        QVERIFY(!object_GetStdSize(nullptr));
        QVERIFY(!object_GetValueByName(nullptr, u"DN", &v));
        QVERIFY(!object_SetValueI(nullptr, nullptr, 1));
    } else if (call == "index out of range") {
        es_table_t* t = stdsize_GetTable(m_e);
        QVERIFY(!table_GetAttribute(t, 1000));
        QVERIFY(!table_GetStdSize(t, uint32_t(-1)));
        QVERIFY(!provider_GetPacket(m_p, 999));
        QVERIFY(!folder_GetChildFolder(table_GetFolder(t), 5));
        QVERIFY(!stdsize_GetSpecification(m_e, 0));
        QVERIFY(!projections_GetProjection(stdsize_GetProjections(m_e), 3));
    } else if (call == "null texts") {
        QVERIFY(!packet_FindStdSize(provider_GetPacket(m_p, 0), nullptr));
        QVERIFY(!table_FindAttribute(stdsize_GetTable(m_e), nullptr));
        QVERIFY(!provider_RunCommand(m_p, nullptr));
        QVERIFY(!model_SetModelEx(stdsize_GetModel(m_e), nullptr, nullptr, nullptr, 0));
        QVERIFY(!esx_OpenCatalog(nullptr, nullptr, true));
        QVERIFY(!esGetLibraryProviderPool(nullptr));
        QVERIFY(!esUpdateRtw(nullptr));
    } else if (call == "null pool") {
        QVERIFY(!pool_FindPacket(nullptr, u"Арматура"));
        QVERIFY(!pool_CreateObject(nullptr, m_e, u"orvik.aec.engsystx"));
        QVERIFY(
            !pool_CreateObject(esGetLibraryProviderPool(u"orvik.aec.engsystx"), nullptr, nullptr));
    }
}

void TstEsdataValues::updatedItemsAreRegistered()
{
    // Only an item whose file can be read is brought up to date.
    const QString valve = m_dir.filePath("valve.rtw"), bend = m_dir.filePath("bend.rtw");
    QVERIFY(writeFile(valve, "item") && writeFile(bend, "item"));
    QVERIFY(!esUpdateRtw(u16(m_dir.filePath("missing.rtw")).c_str()));
    for (const QString& item : {valve, bend, valve})
        QVERIFY(esUpdateRtw(u16(item).c_str()));
    // Listed once each, in the order first brought up to date.
    QCOMPARE(qs(esx_UpdatedRtw()), valve + "|" + bend);
}

// A walk keeps only the elements read last in memory; one read long ago is read again from the
// catalog and answers as it did, also after a write made while it was out of memory.
void TstEsdataValues::elementLeftTheCacheAnswersAsBefore_data()
{
    // What happens to the first element while the store keeps others in its place.
    QTest::addColumn<QString>("change");
    QTest::addColumn<QString>("value"); // read back through the kept handle; "" when refused
    QTest::addColumn<QString>("modelName");
    QTest::newRow("unchanged") << "" << "значение 0" << "Модель";
    QTest::newRow("written here") << "here" << "новое" << "Модель";
    QTest::newRow("written by another program") << "other" << "чужое" << "Другая";
    QTest::newRow("deleted") << "delete" << "" << "";
}

void TstEsdataValues::elementLeftTheCacheAnswersAsBefore()
{
    QFETCH(QString, change);
    QFETCH(QString, value);
    QFETCH(QString, modelName);
    QTemporaryDir dir;
    const QString db = dir.filePath("walk.db");
    CatalogGuard cat(openCatalog(db));
    QVERIFY(cat.get());
    const QString model = dir.filePath("m.m3d");
    const QString icon = dir.filePath("m.png");
    QVERIFY(writeFile(model, "model content"));
    QVERIFY(writeFile(icon, "icon bytes"));
    std::vector<es_stdsize_t*> elements;
    for (int i = 0; i < 300; ++i) {
        const std::u16string id = u16(QString("E%1").arg(i));
        es_stdsize_t* e = addElement(cat.get(), u"Walk", (u"folder " + id).c_str(), id.c_str());
        QVERIFY(e);
        es_attribute_t* a = table_AddAttribute(stdsize_GetTable(e), u"N", u"Номер", ES_ATTR_TEXT);
        QVERIFY(stdsize_SetValueS(e, a, u16(QString("значение %1").arg(i)).c_str()));
        QVERIFY(model_SetModelEx(stdsize_GetModel(e), u16(model).c_str(), u16(icon).c_str(),
                                 u"Модель", i + 7));
        QVERIFY(projections_AddProjectionEx(stdsize_GetProjections(e), u"Вид", u16(model).c_str(),
                                            u16(icon).c_str(), 1, u"", 2));
        elements.push_back(e);
    }
    QVERIFY(provider_RunCommand(
        cat.get(), u"<commands><command type=\"create_spec\"><stdSize packet=\"Walk\" id=\"E0\"/>"
                   u"<spec styleNum=\"1\" libName=\"Секция\" firstPart=\"2\" secondPart=\"3\">"
                   u"<column num=\"5\" formula=\"{N}\"/></spec></command></commands>"));
    // Handles of every part, kept while the element drops out of memory.
    es_stdsize_t* first = elements[0];
    es_model_t* m = stdsize_GetModel(first);
    es_projection_t* view = projections_GetProjection(stdsize_GetProjections(first), 0);
    es_spec_t* spec = stdsize_GetSpecification(first, 0);
    QVERIFY(view && spec);
    const QString modelFile = qs(model_GetModelFile(m));
    const QString viewFile = qs(projection_GetFragmentFile(view));
    QVERIFY(!modelFile.isEmpty() && !viewFile.isEmpty());
    auto text = [](es_stdsize_t* e) {
        es_value v;
        return stdsize_GetValueByName(e, u"N", &v) ? qs(v.s) : QString();
    };
    auto readOthers = [&] {
        for (size_t i = 1; i < elements.size(); ++i) {
            text(elements[i]);
            model_GetVersion(stdsize_GetModel(elements[i]));
            projections_GetProjectioCount(stdsize_GetProjections(elements[i]));
        }
    };
    QCOMPARE(text(first), QString("значение 0"));
    readOthers();

    if (change == "here") {
        QVERIFY(stdsize_SetValueS(first, table_FindAttribute(stdsize_GetTable(first), u"N"),
                                  u"новое"));
    } else if (change == "delete") {
        QVERIFY(table_DeleteStdSize(stdsize_GetTable(first), first));
    } else if (change == "other") {
        QVERIFY(execSql(db, "UPDATE es_value SET value='чужое' WHERE element=(SELECT id FROM "
                          "es_element WHERE ident='E0');"
                          "UPDATE es_model SET name='Другая' WHERE element=(SELECT id FROM "
                          "es_element WHERE ident='E0');"));
        QThread::msleep(5);
    }
    readOthers();

    const bool alive = change != "delete";
    QCOMPARE(text(first), value);
    QCOMPARE(qs(model_GetModelName(m)), modelName);
    QCOMPARE(qs(model_GetModelFile(m)), alive ? modelFile : QString());
    QCOMPARE(model_GetVersion(m), alive ? 7 : 0);
    QCOMPARE(qs(stdsize_GetID(first)), alive ? QString("E0") : QString());
    QCOMPARE(qs(esx_LastError()).isEmpty(), alive);
    QCOMPARE(qs(projection_GetFragmentFile(view)), alive ? viewFile : QString());
    const void* bytes = nullptr;
    const size_t size = projection_GetIconData(view, &bytes);
    QCOMPARE(QByteArray(static_cast<const char*>(bytes), int(size)),
             alive ? QByteArray("icon bytes") : QByteArray());
    QCOMPARE(qs(spec_LibName(spec)), alive ? QString("Секция") : QString());
    QCOMPARE(spec_ColumnNumber(spec, 0), alive ? 5 : 0);
    QCOMPARE(stdsize_GetSpecificationCount(first), alive ? 1u : 0u);
    // The others answer as well after all this.
    QCOMPARE(text(elements[299]), QString("значение 299"));
}

QTEST_GUILESS_MAIN(TstEsdataValues)
#include "tst_esdata_values.moc"
