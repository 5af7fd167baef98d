// The register over the sandbox host's catalog items, reached through the host's new-API
// module like in the host: the item's state, a reload that fails on a missing file leaving the
// register as it was, a host without its item collection, the store's record of updated files.

#include "update/rtw_register.h"

#include "host_items.h"

#include <esdata/esdata.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace edw;

class tst_update_host : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QStringList m_updated;

    QString writeItem(const QString& name, const QByteArray& content)
    {
        const QString path = QDir(m_dir.path()).filePath(name);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) return {};
        file.write(content);
        return path;
    }
    RtwRegister::DatabaseUpdate database()
    {
        return [this](const QString& file) {
            m_updated << file;
            return true;
        };
    }

private slots:
    void init()
    {
        sandbox::clear_catalog_items();
        m_updated.clear();
        sandbox::add_catalog_item(QStringLiteral("Кран шаровый"),
                                  writeItem(QStringLiteral("ball.rtw"), "ball valve DN15\n"),
                                  QStringLiteral("КШ-15"));
        sandbox::add_catalog_item(QStringLiteral("Отвод"),
                                  writeItem(QStringLiteral("bend.rtw"), "bend 90, 57x3.5\nrev 2\n"),
                                  QStringLiteral("ОТ-57"));
    }

    void updateThroughHost()
    {
        RtwRegister reg;
        QVERIFY(reg.tryUpdate(hostRtwItems(), QStringLiteral("Отвод"), database()));
        QCOMPARE(m_updated, QStringList{QDir(m_dir.path()).filePath(QStringLiteral("bend.rtw"))});
        QCOMPARE(sandbox::item_log(), QStringList{QStringLiteral("state Отвод = 0")});
        QCOMPARE(reg.entries().value(0).secondText, QStringLiteral("ОТ-57"));
        QVERIFY(!reg.tryUpdate(hostRtwItems(), QStringLiteral("Задвижка"), database()));
        QCOMPARE(m_updated.size(), 1);
    }

    void failedReloadKeepsRegister()
    {
        RtwRegister reg;
        QVERIFY(reg.tryUpdate(hostRtwItems(), QStringLiteral("Кран шаровый"), database()));
        QVERIFY(reg.tryUpdate(hostRtwItems(), QStringLiteral("Отвод"), database()));
        QVERIFY(QFile::remove(QDir(m_dir.path()).filePath(QStringLiteral("bend.rtw"))));
        QVERIFY_THROWS_EXCEPTION(std::system_error, reg.reloadAll(hostRtwItems()));
        QCOMPARE(reg.entries().size(), 2);
        QVERIFY(reg.isUpdated(QStringLiteral("отвод")));
        QVERIFY(sandbox::item_log().last().startsWith(QStringLiteral("reload Отвод failed")));
    }

    void noCollection()
    {
        RtwRegister reg;
        QVERIFY(reg.tryUpdate(hostRtwItems(), QStringLiteral("Отвод"), database()));
        sandbox::set_item_collection_available(false);
        QVERIFY(!reg.tryUpdate(hostRtwItems(), QStringLiteral("Кран шаровый"), database()));
        QCOMPARE(m_updated.size(), 1);
        sandbox::clear_item_log();
        reg.reloadAll(hostRtwItems());
        QVERIFY(reg.entries().isEmpty());
        QVERIFY(sandbox::item_log().isEmpty());
        sandbox::set_item_collection_available(true);
    }

    void storeRecordsUpdatedFile()
    {
        const QString path = QDir(m_dir.path()).filePath(QStringLiteral("ball.rtw"));
        QVERIFY(!updateRtwInDatabase(path + QStringLiteral(".missing")));
        QVERIFY(updateRtwInDatabase(path));
        QVERIFY(QString::fromUtf16(esx_UpdatedRtw()).split(u'|').contains(path));
    }
};

QTEST_GUILESS_MAIN(tst_update_host)
#include "tst_update_host.moc"
