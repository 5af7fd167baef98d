// The register of updated catalog items, driven through a host kept in memory: what the
// exports answer and what the host and the database were asked.

#include "fake_rtw_host.h"

#include <QTest>

using edw::RtwRegister;

class tst_update_register : public QObject
{
    Q_OBJECT

    FakeRtwHost host;
    QStringList databaseCalls;
    bool databaseAnswer = true;

    RtwRegister::DatabaseUpdate database()
    {
        return [this](const QString& file) {
            databaseCalls << file;
            return databaseAnswer;
        };
    }
    static QStringList keys(const RtwRegister& reg)
    {
        QStringList list;
        for (const edw::RtwEntry& e : reg.entries())
            list << e.key;
        return list;
    }

private slots:
    void init()
    {
        host = FakeRtwHost();
        host.items_.insert(QStringLiteral("Кран шаровый"),
                           {QStringLiteral("C:\\lib\\valves\\ball.rtw"), QStringLiteral("КШ-15")});
        host.items_.insert(QStringLiteral("Tee"),
                           {QStringLiteral("C:/lib/fittings/tee.rtw"), QStringLiteral("T-20")});
        host.items_.insert(QStringLiteral("Тройник"),
                           {QStringLiteral("C:/lib//valves/ball.rtw"), QStringLiteral("ТР")});
        host.items_.insert(QStringLiteral("Ёмкость"),
                           {QStringLiteral("D:\\tanks\\e.rtw"), QStringLiteral("Е-1")});
        databaseCalls.clear();
        databaseAnswer = true;
    }

    void pathOrder_data()
    {
        QTest::addColumn<QString>("a");
        QTest::addColumn<QString>("b");
        QTest::addColumn<int>("order"); // -1 a first, 0 one key, 1 b first
        QTest::newRow("other separators are one key") << "C:\\a\\b.rtw"
                                                      << "C:/a//b.rtw" << 0;
        QTest::newRow("separator run is one") << "C:\\a\\\\\\b"
                                              << "C:\\a\\b" << 0;
        QTest::newRow("separator before any character") << "C:\\a\\b"
                                                        << "C:\\a!b" << -1;
        QTest::newRow("separator before space") << "C:/x/y"
                                                << "C:/x y" << -1;
        QTest::newRow("root name first") << "D:\\a"
                                         << "C:\\z" << 1;
        QTest::newRow("shorter root name first") << "\\\\sr\\z"
                                                 << "\\\\srv\\a" << -1;
        QTest::newRow("no root separator first") << "C:zz"
                                                 << "C:\\a" << -1;
        QTest::newRow("drive before network prefix") << "C:\\z"
                                                     << "\\\\srv\\a" << -1;
        QTest::newRow("code unit order") << "C:\\A"
                                         << "C:\\a" << -1;
        QTest::newRow("relative paths") << "lib/b"
                                        << "lib\\a" << 1;
    }
    void pathOrder()
    {
        QFETCH(QString, a);
        QFETCH(QString, b);
        QFETCH(int, order);
        QCOMPARE(edw::rtwPathLess(a, b), order < 0);
        QCOMPARE(edw::rtwPathLess(b, a), order > 0);
    }

    void nameMatch_data()
    {
        QTest::addColumn<QString>("a");
        QTest::addColumn<QString>("b");
        QTest::addColumn<bool>("match");
        QTest::newRow("latin") << "Tee"
                               << "tEE" << true;
        QTest::newRow("cyrillic") << "Кран шаровый"
                                  << "КРАН ШАРОВЫЙ" << true;
        QTest::newRow("yo") << "ёмкость"
                            << "ЁМКОСТЬ" << true;
        QTest::newRow("e is not yo") << "емкость"
                                     << "Ёмкость" << false;
        QTest::newRow("longer") << "Tee"
                                << "Tee " << false;
        QTest::newRow("no folding beyond") << "Über"
                                           << "über" << false;
    }
    void nameMatch()
    {
        QFETCH(QString, a);
        QFETCH(QString, b);
        QFETCH(bool, match);
        QCOMPARE(edw::rtwNamesMatch(a, b), match);
    }

    void updateRegistersAndAsksDatabase()
    {
        RtwRegister reg;
        QVERIFY(reg.tryUpdate(host, QStringLiteral("Tee"), database()));
        QCOMPARE(databaseCalls, QStringList{QStringLiteral("C:/lib/fittings/tee.rtw")});
        QCOMPARE(host.calls, QStringList{QStringLiteral("prepare Tee")});
        QCOMPARE(reg.entries().size(), 1);
        QCOMPARE(reg.entries()[0].name, QStringLiteral("Tee"));
        QCOMPARE(reg.entries()[0].secondText, QStringLiteral("T-20"));
        // An item the host does not have is neither registered nor asked for.
        QVERIFY(!reg.tryUpdate(host, QStringLiteral("Нет такого"), database()));
        QCOMPARE(databaseCalls.size(), 1);
        QCOMPARE(reg.entries().size(), 1);
    }

    void sameFileTwiceUpdatesOnce_data()
    {
        QTest::addColumn<QString>("second");
        QTest::newRow("same name") << "Кран шаровый";
        QTest::newRow("other name, other separators") << "Тройник";
    }
    void sameFileTwiceUpdatesOnce()
    {
        QFETCH(QString, second);
        RtwRegister reg;
        QVERIFY(reg.tryUpdate(host, QStringLiteral("Кран шаровый"), database()));
        QVERIFY(!reg.tryUpdate(host, second, database()));
        QCOMPARE(databaseCalls.size(), 1);
        QCOMPARE(host.calls.size(), 1);
        QCOMPARE(reg.entries().size(), 1);
        QCOMPARE(reg.entries()[0].name, QStringLiteral("Кран шаровый"));
        // Asked by name in any case, never by the other name of its file.
        QVERIFY(reg.isUpdated(QStringLiteral("КРАН ШАРОВЫЙ")));
        QCOMPARE(reg.isUpdated(second), second == QStringLiteral("Кран шаровый"));
        QVERIFY(!reg.isUpdated(QStringLiteral("Tee")));
    }

    void failedDatabaseUpdateStaysRegistered()
    {
        RtwRegister reg;
        databaseAnswer = false;
        QVERIFY(!reg.tryUpdate(host, QStringLiteral("Tee"), database()));
        QVERIFY(reg.isUpdated(QStringLiteral("tee")));
        databaseAnswer = true;
        QVERIFY(!reg.tryUpdate(host, QStringLiteral("Tee"), database()));
        QCOMPARE(databaseCalls.size(), 1);
    }

    void hostFailureRegistersNothing()
    {
        RtwRegister reg;
        host.failPathOf = QStringLiteral("Tee");
        QVERIFY_THROWS_EXCEPTION(std::system_error,
                                 reg.tryUpdate(host, QStringLiteral("Tee"), database()));
        QVERIFY(reg.entries().isEmpty());
        QVERIFY(databaseCalls.isEmpty());
    }

    void reloadInPathOrderAndEmpty()
    {
        RtwRegister reg;
        for (const char* name : {"Ёмкость", "Tee", "Кран шаровый"})
            reg.tryUpdate(host, QString::fromUtf8(name), database());
        QCOMPARE(keys(reg), (QStringList{QStringLiteral("C:/lib/fittings/tee.rtw"),
                                         QStringLiteral("C:\\lib\\valves\\ball.rtw"),
                                         QStringLiteral("D:\\tanks\\e.rtw")}));
        host.calls.clear();
        host.items_.remove(QStringLiteral("Tee")); // gone from the host meanwhile
        reg.reloadAll(host);
        QCOMPARE(host.calls, (QStringList{QStringLiteral("reload C:\\lib\\valves\\ball.rtw|КШ-15"),
                                          QStringLiteral("reload D:\\tanks\\e.rtw|Е-1")}));
        QVERIFY(reg.entries().isEmpty());
        QVERIFY(!reg.isUpdated(QStringLiteral("Ёмкость")));
    }
};

QTEST_GUILESS_MAIN(tst_update_register)
#include "tst_update_register.moc"
