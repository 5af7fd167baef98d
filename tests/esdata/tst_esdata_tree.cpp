// The catalog tree: opening catalogs, packets, folders, tables, attributes and elements, as a
// caller sees them through the C API and after reopening the file.
#include "esdatatest.h"

#include <QTemporaryDir>
#include <QtTest>

class TstEsdataTree : public QObject
{
    Q_OBJECT

private slots:
    void init() { QVERIFY(m_dir.isValid()); }

    void refusesWhatIsNotACatalog_data();
    void refusesWhatIsNotACatalog();
    void reopenKeepsStoredNameAndProvider();
    void packetsAndFoldersNestAndDeleteWithEverythingBelow();
    void attributesAreNumberedAndPersist();
    void attributeAddedInOneWriteEqualsFieldByField_data();
    void attributeAddedInOneWriteEqualsFieldByField();
    void attributeAddedInOneWriteRefusesEmptyOrTakenName();
    void elementIdsAreUniquePerPacket();
    void deletedElementIsDeadButHarmless();
    void handleOfClosedCatalogOrOtherKindIsRefused_data();
    void handleOfClosedCatalogOrOtherKindIsRefused();
    void letGoAttributeHandleIsRefused_data();
    void letGoAttributeHandleIsRefused();
    void poolIsFoundByLibraryMarker_data();
    void poolIsFoundByLibraryMarker();

private:
    QString path(const QString& name) const { return m_dir.filePath(name); }
    QTemporaryDir m_dir;
};

void TstEsdataTree::refusesWhatIsNotACatalog_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<bool>("create");
    QTest::addColumn<QString>("errorPart");
    QTest::newRow("text file") << "text" << true << "not a catalog";
    QTest::newRow("empty file, no create") << "empty" << false << "not a catalog";
    QTest::newRow("other sqlite database") << "othersql" << true << "another format";
    QTest::newRow("missing file, no create") << "missing" << false << "no catalog file";
    QTest::newRow("newer catalog version") << "newer" << false << "version 2 is not supported";
}

void TstEsdataTree::refusesWhatIsNotACatalog()
{
    QFETCH(QString, kind);
    QFETCH(bool, create);
    QFETCH(QString, errorPart);
    QString file = path(kind + ".db");
    if (kind == "text") {
        QVERIFY(
            writeFile(file, QByteArray("this is no database at all, just text\n").repeated(50)));
    } else if (kind == "empty") {
        QVERIFY(writeFile(file, QByteArray()));
    } else if (kind == "othersql") {
        QVERIFY(execSql(file, "CREATE TABLE es_meta(key, value); INSERT INTO es_meta "
                              "VALUES('format', 'spreadsheet')"));
    } else if (kind == "newer") {
        // A catalog written by a later store.
        esx_CloseCatalog(openCatalog(file));
        QVERIFY(execSql(file, "UPDATE es_meta SET value=2 WHERE key='version'"));
    }
    QByteArray before = readFile(file);
    es_provider_t* p = openCatalog(file, "user_tx", create);
    QVERIFY(p == nullptr);
    QVERIFY2(qs(esx_LastError()).contains(errorPart), qPrintable(qs(esx_LastError())));
    QCOMPARE(readFile(file), before); // a refused file is left as it was
}

void TstEsdataTree::reopenKeepsStoredNameAndProvider()
{
    QString file = path("reopen.db");
    // Reached through a link to its folder before it exists, and directly afterwards.
    QVERIFY(QFile::link(m_dir.path(), path("link")));
    es_provider_t* p = openCatalog(path("link/reopen.db"), "my_user_vk_db");
    QVERIFY(p);
    QCOMPARE(openCatalog(file, "other"), p);
    QCOMPARE(qs(provider_GetDatabaseName(p)), QString("my_user_vk_db"));
    QCOMPARE(qs(esx_CatalogPath(p)), QFileInfo(file).canonicalFilePath());
    QVERIFY(provider_AddPacket(p, u"Трубы"));
    esx_CloseCatalog(p);

    CatalogGuard again(openCatalog(file, "ignored", false));
    QVERIFY(again.get());
    QCOMPARE(qs(provider_GetDatabaseName(again.get())), QString("my_user_vk_db"));
    QCOMPARE(provider_GetPacketCount(again.get()), 1u);
    QCOMPARE(qs(packet_GetName(provider_GetPacket(again.get(), 0))), QString("Трубы"));
}

void TstEsdataTree::packetsAndFoldersNestAndDeleteWithEverythingBelow()
{
    QString file = path("folders.db");
    es_provider_t* p = openCatalog(file);
    es_packet_t* pk = provider_AddPacket(p, u"P");
    es_packet_t* second = provider_AddPacket(p, u"B");
    QVERIFY(pk && second && pk != second);
    for (const char16_t* refused : {u"P", u"", static_cast<const char16_t*>(nullptr)})
        QVERIFY(!provider_AddPacket(p, refused));
    QCOMPARE(provider_GetPacketCount(p), 2u);
    QCOMPARE(provider_GetPacket(p, 1), second);
    QCOMPARE(packet_GetProvider(second), p);
    es_folder_t* root = packet_GetRootFolder(pk);
    QCOMPARE(folder_GetPacket(root), pk);
    QVERIFY(!folder_GetParentFolder(root));
    es_folder_t* cat = folder_AddChildFolder(root, u"Категория");
    es_folder_t* sub = folder_AddChildFolder(cat, u"folder E1");
    es_folder_t* other = folder_AddChildFolder(root, u"Другая");
    QVERIFY(cat && sub && other);
    QVERIFY(!folder_AddChildFolder(root, u"Категория"));
    QVERIFY(!folder_AddChildFolder(root, u""));
    QCOMPARE(folder_GetChildFolderCount(root), 2u);
    QCOMPARE(folder_GetChildFolder(root, 0), cat);
    QCOMPARE(folder_GetChildFolder(root, 1), other);
    QCOMPARE(folder_GetParentFolder(sub), cat);
    es_table_t* t = folder_GetTable(sub);
    QCOMPARE(table_GetFolder(t), sub);
    es_attribute_t* a = table_AddAttribute(t, u"Width", u"Ширина", ES_ATTR_REAL);
    es_stdsize_t* e = table_AddStdSize(t, u"E1");
    QVERIFY(a && e);

    QVERIFY(!folder_DeleteChildFolder(root, sub)); // not a direct child
    QVERIFY(folder_DeleteChildFolder(root, cat));
    QCOMPARE(folder_GetChildFolderCount(root), 1u);
    QCOMPARE(folder_GetChildFolder(root, 0), other);
    // Everything below is dead: calls give empty results instead of data.
    QCOMPARE(folder_GetChildFolderCount(cat), 0u);
    QVERIFY(!folder_GetTable(sub));
    QCOMPARE(table_GetStdSizeCount(t), 0u);
    QCOMPARE(qs(stdsize_GetID(e)), QString());
    QCOMPARE(qs(attribute_GetName(a)), QString());
    QVERIFY(!packet_FindStdSize(pk, u"E1"));
    esx_CloseCatalog(p);

    CatalogGuard again(openCatalog(file, "", false));
    QCOMPARE(qs(packet_GetName(provider_GetPacket(again.get(), 1))), QString("B"));
    es_folder_t* root2 = packet_GetRootFolder(provider_GetPacket(again.get(), 0));
    QCOMPARE(folder_GetChildFolderCount(root2), 1u);
    QCOMPARE(qs(folder_GetName(folder_GetChildFolder(root2, 0))), QString("Другая"));
}

void TstEsdataTree::attributesAreNumberedAndPersist()
{
    QString file = path("attrs.db");
    es_provider_t* p = openCatalog(file);
    es_stdsize_t* e = addElement(p, u"P", u"folder X", u"X");
    es_table_t* t = stdsize_GetTable(e);
    es_attribute_t* a = table_AddAttribute(t, u"Length", u"Длина", ES_ATTR_REAL);
    es_attribute_t* b = table_AddAttribute(t, u"Name", u"Name", ES_ATTR_TEXT);
    QCOMPARE(attribute_GetNumber(a), 1);
    QCOMPARE(attribute_GetNumber(b), 2);
    QVERIFY(attribute_SetNumber(b, 11));
    es_attribute_t* c = table_AddAttribute(t, u"Count", nullptr, ES_ATTR_INT);
    QCOMPARE(attribute_GetNumber(c), 12); // one above the highest
    QCOMPARE(attribute_GetOldNumber(c), 12);
    QVERIFY(!table_AddAttribute(t, u"Length", u"again", ES_ATTR_INT));
    QVERIFY(!table_AddAttribute(t, nullptr, u"no name", ES_ATTR_INT));
    QVERIFY(attribute_SetOldNumber(a, 7));
    QVERIFY(attribute_SetVarName(a, u"L"));
    QVERIFY(attribute_SetMeasure(a, u"мм"));
    QVERIFY(attribute_SetFormula(a, u"{A12*2}"));
    QCOMPARE(table_FindAttribute(t, u"Name"), b);
    QVERIFY(!table_FindAttribute(t, u"name"));
    esx_CloseCatalog(p);

    CatalogGuard again(openCatalog(file, "", false));
    es_packet_t* pk = provider_GetPacket(again.get(), 0);
    es_table_t* t2 = stdsize_GetTable(packet_FindStdSize(pk, u"X"));
    QCOMPARE(table_GetAttributeCount(t2), 3u);
    es_attribute_t* a2 = table_GetAttribute(t2, 0);
    QCOMPARE(qs(attribute_GetName(a2)), QString("Length"));
    QCOMPARE(qs(attribute_GetDescription(a2)), QString("Длина"));
    QCOMPARE(attribute_GetType(a2), uint32_t(ES_ATTR_REAL));
    QCOMPARE(attribute_GetNumber(a2), 1);
    QCOMPARE(attribute_GetOldNumber(a2), 7);
    QCOMPARE(qs(attribute_GetVarName(a2)), QString("L"));
    QCOMPARE(qs(attribute_GetMeasure(a2)), QString("мм"));
    QCOMPARE(qs(attribute_GetFormula(a2)), QString("{A12*2}"));
    QCOMPARE(attribute_GetNumber(table_GetAttribute(t2, 1)), 11);
    QCOMPARE(qs(attribute_GetDescription(table_GetAttribute(t2, 2))), QString());
    QVERIFY(!table_GetAttribute(t2, 3));
}

namespace {

// Every field of every attribute of the table, one line each.
QStringList schemaOf(es_table_t* t)
{
    QStringList out;
    for (uint32_t i = 0; i < table_GetAttributeCount(t); ++i) {
        es_attribute_t* a = table_GetAttribute(t, i);
        out << QStringLiteral("%1|%2|%3|%4|%5|%6|%7|%8")
                   .arg(qs(attribute_GetName(a)), qs(attribute_GetDescription(a)))
                   .arg(attribute_GetType(a))
                   .arg(attribute_GetNumber(a))
                   .arg(attribute_GetOldNumber(a))
                   .arg(qs(attribute_GetVarName(a)), qs(attribute_GetMeasure(a)),
                        qs(attribute_GetFormula(a)));
    }
    return out;
}

} // namespace

void TstEsdataTree::attributeAddedInOneWriteEqualsFieldByField_data()
{
    QTest::addColumn<bool>("inScope");
    QTest::addColumn<bool>("commit");
    QTest::addColumn<bool>("kept");
    QTest::newRow("plain") << false << true << true;
    QTest::newRow("committed scope") << true << true << true;
    QTest::newRow("rolled back scope") << true << false << false;
}

// Each field given in the one write reads back as stored, after reopening the file.
void TstEsdataTree::attributeAddedInOneWriteEqualsFieldByField()
{
    QFETCH(bool, inScope);
    QFETCH(bool, commit);
    QFETCH(bool, kept);
    const QStringList written = {"Length|Длина|2|4|9|L|мм|{A2}*2", "Name||3|1|5|||",
                                 "Count|Количество|1|6|2|N|шт.|"};
    const QString file = path(QString("one_%1.db").arg(QTest::currentDataTag()));
    {
        CatalogGuard one(openCatalog(file));
        es_table_t* t = stdsize_GetTable(addElement(one.get(), u"P", u"F", u"X"));
        if (inScope) QVERIFY(esx_Begin(one.get()));
        for (const QString& line : written) {
            const QStringList f = line.split('|');
            es_attribute_t* a = esx_AddAttributeEx(
                t, u16(f[0]).c_str(), u16(f[1]).c_str(), f[2].toUInt(), f[3].toInt(),
                f[4].toInt(), u16(f[5]).c_str(), u16(f[6]).c_str(), u16(f[7]).c_str());
            QVERIFY(a);
            QCOMPARE(table_FindAttribute(t, u16(f[0]).c_str()), a);
        }
        if (inScope) QVERIFY(commit ? esx_Commit(one.get()) : esx_Rollback(one.get()));
    }
    CatalogGuard again(openCatalog(file, "", false));
    QCOMPARE(schemaOf(stdsize_GetTable(findElement(again.get(), u"X"))),
             kept ? written : QStringList());
}

void TstEsdataTree::attributeAddedInOneWriteRefusesEmptyOrTakenName()
{
    CatalogGuard c(openCatalog(path("one_refused.db")));
    es_table_t* t = stdsize_GetTable(addElement(c.get(), u"P", u"F", u"X"));
    QVERIFY(esx_AddAttributeEx(t, u"A", nullptr, ES_ATTR_INT, 1, 1, nullptr, nullptr, nullptr));
    QVERIFY(!esx_AddAttributeEx(t, u"A", u"again", ES_ATTR_INT, 2, 2, u"", u"", u""));
    QVERIFY(!esx_AddAttributeEx(t, nullptr, u"no name", ES_ATTR_INT, 3, 3, u"", u"", u""));
    QVERIFY(!esx_AddAttributeEx(t, u"", u"no name", ES_ATTR_INT, 3, 3, u"", u"", u""));
    QVERIFY(!esx_AddAttributeEx(nullptr, u"B", u"", ES_ATTR_INT, 3, 3, u"", u"", u""));
    QCOMPARE(schemaOf(t), QStringList{"A||1|1|1|||"});
    // The next attribute added the usual way is numbered above the given numbers.
    QCOMPARE(attribute_GetNumber(table_AddAttribute(t, u"B", u"", ES_ATTR_INT)), 2);
}

void TstEsdataTree::elementIdsAreUniquePerPacket()
{
    CatalogGuard c(openCatalog(path("ids.db")));
    es_stdsize_t* e1 = addElement(c.get(), u"P", u"folder E", u"E");
    QVERIFY(e1);
    QVERIFY(!addElement(c.get(), u"P", u"folder E again", u"E"));
    es_stdsize_t* e2 = addElement(c.get(), u"Q", u"folder E", u"E");
    QVERIFY(e2 && e2 != e1);
    QVERIFY(!table_AddStdSize(stdsize_GetTable(e1), u""));
    QVERIFY(stdsize_SetType(e1, u"ARM_PIPE"));
    QCOMPARE(qs(stdsize_GetType(e1)), QString("ARM_PIPE"));
    es_packet_t* p = provider_GetPacket(c.get(), 0);
    QCOMPARE(packet_FindStdSize(p, u"E"), e1);
    QVERIFY(!packet_FindStdSize(p, u"missing"));
    es_table_t* t = stdsize_GetTable(e1);
    es_stdsize_t* e3 = table_AddStdSize(t, u"E3");
    QCOMPARE(table_GetStdSizeCount(t), 2u);
    QCOMPARE(table_GetStdSize(t, 0), e1);
    QCOMPARE(table_GetStdSize(t, 1), e3);
    QVERIFY(!table_GetStdSize(t, 2));
}

void TstEsdataTree::handleOfClosedCatalogOrOtherKindIsRefused_data()
{
    QTest::addColumn<bool>("closed");
    QTest::newRow("closed catalog") << true;
    QTest::newRow("handle of another kind") << false;
}

// Neither a handle kept past esx_CloseCatalog nor a handle of another kind is read: every
// call gives its empty result and says why.
void TstEsdataTree::handleOfClosedCatalogOrOtherKindIsRefused()
{
    QFETCH(bool, closed);
    es_provider_t* p = openCatalog(m_dir.filePath(closed ? "closed.db" : "kinds.db"));
    es_stdsize_t* e = addElement(p, u"P", u"F", u"E");
    QVERIFY(e);
    es_table_t* t = stdsize_GetTable(e);
    es_folder_t* f = table_GetFolder(t);
    es_attribute_t* a = table_AddAttribute(t, u"A", u"", ES_ATTR_INT);
    QVERIFY(stdsize_SetValueI(e, a, 7));
    es_packet_t* pk = folder_GetPacket(f);
    es_model_t* m = stdsize_GetModel(e);
    auto refused = [] { return esx_LastErrorCode() != ESX_ERROR_NONE; };
    es_value v;
    if (closed) {
        esx_CloseCatalog(p);
        QCOMPARE(provider_GetPacketCount(p), 0u);
        QVERIFY(refused());
        QCOMPARE(qs(packet_GetName(pk)), QString());
        QCOMPARE(folder_GetChildFolderCount(f), 0u);
        QCOMPARE(table_GetStdSizeCount(t), 0u);
        QCOMPARE(qs(stdsize_GetID(e)), QString());
        QVERIFY(!stdsize_GetValue(e, a, &v));
        QCOMPARE(attribute_GetNumber(a), 0);
        QVERIFY(model_IsEmpty(m));
        QVERIFY(!table_AddStdSize(t, u"E2"));
        QVERIFY(refused());
        return;
    }
    CatalogGuard g(p);
    // Each handle given where another kind is expected.
    QCOMPARE(folder_GetChildFolderCount(reinterpret_cast<es_folder_t*>(t)), 0u);
    QVERIFY(refused());
    QCOMPARE(qs(folder_GetName(reinterpret_cast<es_folder_t*>(e))), QString());
    QCOMPARE(table_GetAttributeCount(reinterpret_cast<es_table_t*>(f)), 0u);
    QCOMPARE(qs(stdsize_GetID(reinterpret_cast<es_stdsize_t*>(a))), QString());
    QVERIFY(!stdsize_GetValue(e, reinterpret_cast<es_attribute_t*>(e), &v));
    QVERIFY(!stdsize_SetValueI(e, reinterpret_cast<es_attribute_t*>(m), 1));
    QVERIFY(!table_DeleteStdSize(t, reinterpret_cast<es_stdsize_t*>(f)));
    QVERIFY(!folder_DeleteChildFolder(packet_GetRootFolder(pk), reinterpret_cast<es_folder_t*>(t)));
    QCOMPARE(provider_GetPacketCount(reinterpret_cast<es_provider_t*>(pk)), 0u);
    QVERIFY(refused());
    // Inside an element, only the element itself, its model and its fragment list are handles,
    // each of its own kind.
    es_projections_t* l = stdsize_GetProjections(e);
    QCOMPARE(qs(stdsize_GetID(reinterpret_cast<es_stdsize_t*>(m))), QString());
    QVERIFY(refused());
    QCOMPARE(model_GetVersion(reinterpret_cast<es_model_t*>(l)), 0);
    QVERIFY(refused());
    auto* inside = reinterpret_cast<es_stdsize_t*>(reinterpret_cast<char*>(e) + 1);
    QCOMPARE(qs(stdsize_GetID(inside)), QString());
    QVERIFY(refused());
    QCOMPARE(projections_GetProjectioCount(l), 0u);
    QVERIFY(!refused());
    // The right handles still answer.
    QVERIFY(stdsize_GetValue(e, a, &v));
    QCOMPARE(v.i, 7);
    QCOMPARE(table_GetStdSizeCount(t), 1u);
    QCOMPARE(folder_GetChildFolderCount(packet_GetRootFolder(pk)), 1u);
}

void TstEsdataTree::letGoAttributeHandleIsRefused_data()
{
    QTest::addColumn<QString>("how");
    QTest::addColumn<bool>("refused");
    QTest::newRow("schema let go by a walk of other tables") << "walk" << true;
    QTest::newRow("schema used between the steps of the walk") << "used" << false;
    QTest::newRow("attribute added in a rolled back scope") << "rollback" << true;
}

// The store keeps the schemas of a bounded number of attributes and uses the objects of the
// others again: a handle of an attribute let go is refused, never read or written as the
// attribute now in its place, and the table gives a new handle that reads the right one.
void TstEsdataTree::letGoAttributeHandleIsRefused()
{
    QFETCH(QString, how);
    QFETCH(bool, refused);
    qputenv("ESDATA_HELD_ATTRIBUTES", "8");
    auto restore = qScopeGuard([] { qunsetenv("ESDATA_HELD_ATTRIBUTES"); });
    CatalogGuard c(openCatalog(path(how + ".db")));
    // Six tables of three attributes each, every value telling table and attribute apart.
    std::vector<es_stdsize_t*> elements;
    for (int i = 0; i < 6; ++i) {
        es_stdsize_t* e = addElement(c.get(), u"P", u16(QString("F%1").arg(i)).c_str(),
                                     u16(QString("E%1").arg(i)).c_str());
        QVERIFY(e);
        for (int k = 0; k < 3; ++k) {
            es_attribute_t* a = table_AddAttribute(
                stdsize_GetTable(e), u16(QString("A%1_%2").arg(i).arg(k)).c_str(), u"", 1);
            QVERIFY(stdsize_SetValueI(e, a, i * 10 + k + 1));
        }
        elements.push_back(e);
    }
    es_table_t* first = stdsize_GetTable(elements[0]);
    es_attribute_t* old = table_FindAttribute(first, u"A0_0");
    QVERIFY(old);
    QCOMPARE(qs(attribute_GetName(old)), QString("A0_0"));
    QString expected = "A0_0";
    if (how == "rollback") {
        QVERIFY(esx_Begin(c.get()));
        old = table_AddAttribute(first, u"Gone", u"", 1);
        QVERIFY(old);
        QVERIFY(esx_Rollback(c.get()));
        // Most likely in the object the rolled back one had.
        QVERIFY(table_AddAttribute(first, u"Kept", u"", 1));
        expected = "Gone";
    } else {
        // Every other table's schema read, twice over.
        for (int round = 0; round < 2; ++round) {
            for (int i = 1; i < 6; ++i) {
                es_table_t* t = stdsize_GetTable(elements[size_t(i)]);
                QCOMPARE(table_GetAttributeCount(t), 3u);
                QCOMPARE(qs(attribute_GetName(table_GetAttribute(t, 2))), QString("A%1_2").arg(i));
                if (how == "used") QCOMPARE(qs(attribute_GetName(old)), QString("A0_0"));
            }
        }
    }
    es_value v;
    if (!refused) {
        QCOMPARE(qs(attribute_GetName(old)), expected);
        QVERIFY(stdsize_GetValue(elements[0], old, &v));
        QCOMPARE(v.i, 1);
        return;
    }
    QCOMPARE(qs(attribute_GetName(old)), QString());
    QVERIFY(qs(esx_LastError()).contains("no longer valid"));
    QCOMPARE(attribute_GetType(old), 0u);
    for (es_stdsize_t* e : elements) {
        QVERIFY(!stdsize_GetValue(e, old, &v));
        QVERIFY(!stdsize_SetValueI(e, old, 99));
    }
    // Nothing was written through it; the table's own handles read every value.
    for (int i = 0; i < 6; ++i) {
        es_table_t* t = stdsize_GetTable(elements[size_t(i)]);
        for (int k = 0; k < 3; ++k) {
            es_attribute_t* a = table_GetAttribute(t, uint32_t(k));
            QVERIFY(stdsize_GetValue(elements[size_t(i)], a, &v));
            QCOMPARE(v.i, i * 10 + k + 1);
        }
    }
    es_attribute_t* again = table_FindAttribute(first, u"A0_0");
    QVERIFY(again && again != old);
    QCOMPARE(qs(attribute_GetName(again)), QString("A0_0"));
    QCOMPARE(table_FindAttribute(first, u"Gone"), nullptr);
}

void TstEsdataTree::deletedElementIsDeadButHarmless()
{
    CatalogGuard c(openCatalog(path("dead.db")));
    es_stdsize_t* e = addElement(c.get(), u"P", u"folder D", u"D");
    es_table_t* t = stdsize_GetTable(e);
    es_attribute_t* a = table_AddAttribute(t, u"N", u"N", ES_ATTR_INT);
    QVERIFY(stdsize_SetValueI(e, a, 5));
    es_model_t* m = stdsize_GetModel(e);
    QVERIFY(table_DeleteStdSize(t, e));
    QVERIFY(!table_DeleteStdSize(t, e));
    QCOMPARE(table_GetStdSizeCount(t), 0u);
    es_value v;
    QVERIFY(!stdsize_GetValue(e, a, &v));
    QCOMPARE(v.kind, ES_VALUE_EMPTY);
    QVERIFY(!stdsize_SetValueI(e, a, 6));
    QVERIFY(model_IsEmpty(m));
    QVERIFY(!stdsize_GetModel(e));
    QVERIFY(qs(esx_LastError()).contains("dead"));
    // The identifier is free again.
    QVERIFY(table_AddStdSize(t, u"D"));
}

void TstEsdataTree::poolIsFoundByLibraryMarker_data()
{
    QTest::addColumn<QString>("dbName");
    QTest::addColumn<QString>("library");
    QTest::addColumn<bool>("found");
    QTest::newRow("tx") << "user_tx"
                        << "orvik.aec.engsystx" << true;
    QTest::newRow("vk") << "x_user_vk_1"
                        << "orvik.aec.engsysvk" << true;
    QTest::newRow("other library") << "user_tx"
                                   << "orvik.aec.engsysov" << false;
    QTest::newRow("case matters") << "USER_TX"
                                  << "orvik.aec.engsystx" << false;
    QTest::newRow("unknown id") << "user_tx"
                                << "orvik.aec.unknown" << false;
}

void TstEsdataTree::poolIsFoundByLibraryMarker()
{
    QFETCH(QString, dbName);
    QFETCH(QString, library);
    QFETCH(bool, found);
    CatalogGuard c(openCatalog(path(QString(QTest::currentDataTag()) + ".db"), dbName));
    QVERIFY(c.get());
    QVERIFY(provider_AddPacket(c.get(), u"Пакет"));
    es_pool_t* pool = esGetLibraryProviderPool(u16(library).c_str());
    QCOMPARE(pool != nullptr, found);
    if (found) QCOMPARE(qs(packet_GetName(pool_FindPacket(pool, u"Пакет"))), QString("Пакет"));
}

QTEST_GUILESS_MAIN(TstEsdataTree)
#include "tst_esdata_tree.moc"
