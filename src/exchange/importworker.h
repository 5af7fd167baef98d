#pragma once

#include "importrecord.h"

#include <esdata/esdata.h>

#include <QFuture>
#include <QFutureWatcher>
#include <QObject>
#include <QString>
#include <QThreadPool>

#include <atomic>
#include <memory>
#include <vector>

namespace edw {
class TransactionScope;
}

namespace exchange {

class ImportArchive;

// Writes the kept records of an import into the catalog, one element at a time and each all
// or nothing. A dialog starts it on the global thread pool and talks to it only through the
// state word and the two signals (queued across threads); the command line and tests may
// also call run() directly.
//
//   exchange::ImportWorker worker(archive, provider, keptRecords);
//   connect(&worker, &ImportWorker::progress, bar, &QProgressBar::setValue);
//   connect(&worker, &ImportWorker::finished, dialog, &QDialog::close);
//   worker.start();          // or worker.run() on this thread
//   ... dialog.exec(); worker.wait();
//   message(worker.finishText());
class ImportWorker : public QObject
{
    Q_OBJECT
public:
    // The shared state word, read before each record.
    enum State
    {
        Run = 0,
        Pause = 1,
        Stop = 2
    };

    // archive must outlive the worker; it extracts the files the records name.
    ImportWorker(ImportArchive& archive, es_provider_t* provider, ImportRecords records,
                 QObject* parent = nullptr);
    ~ImportWorker() override; // waits for a started run to end

    // Imports every record on the calling thread; returns when done or stopped. The files it
    // stored in the store's folder ahead of the writes and that no element names in the end
    // (those of failed records, or prefetched past a stop) are removed again, so the archive's
    // extracted paths of those entries lapse with the run.
    void run();
    // Runs run() on a thread of pool. Without a pool the future is cancelled and finished at
    // once, nothing is written, and finished is still emitted (queued), so that a dialog
    // waiting for it closes.
    QFuture<void> start(QThreadPool* pool = QThreadPool::globalInstance());
    // The watcher of the started run (lives on the thread that created the worker).
    QFutureWatcher<void>& watcher() { return m_watcher; }
    // Waits until a started run has ended.
    void wait();

    void setState(int state) { m_stateWord->store(state); }
    int state() const { return m_stateWord->load(); }
    // Reads (and setState writes) word instead of the worker's own from now on; word must
    // outlive the run. Null goes back to the worker's own.
    void shareState(std::atomic<int>* word) { m_stateWord = word ? word : &m_state; }

    // Whether new attributes are added with all their fields in one write of the store (when
    // the store has the function for it) or field by field; the catalog is the same. On by
    // default.
    void setOneWriteAttributes(bool on) { m_oneWriteAttributes = on; }
    // Whether the catalog access module the program runs with can add them in one write.
    static bool oneWriteAttributesAvailable();
    // Whether records are written in transactions of the store, when it has them; on by
    // default. Without them the archive's entries of a record are read before anything is
    // written, and an element that fails halfway is deleted again with the folders it added:
    // it is absent, not half written. What cannot be undone without them: an element it was
    // to replace when the store fails after the deletion, attributes added to a table, an
    // empty packet; and a killed import may leave one element half written.
    void setTransactions(bool on) { m_transactions = on; }

    // For tests: the n-th write of the run into the catalog (counted from 1), or with onward
    // that one and every later one, is taken as failed once made, the way a full disk fails a
    // write halfway through an element; 0 for none.
    void failWriteAt(int n, bool onward = false)
    {
        m_failWriteAt = n;
        m_failOnward = onward;
    }
    // Whether run() first asks writeProblem() (catalogcheck.h) whether the catalog can be
    // written, and writes nothing when it cannot; on by default. Off for a caller that asked
    // itself just before.
    void setCheckFirst(bool on) { m_checkFirst = on; }

    int total() const { return int(m_records.size()); }
    // Records handled so far (written or skipped).
    int done() const { return m_done.load(); }
    int written() const { return m_written.load(); }
    // Of the written records, those that added an element and those that replaced one.
    int added() const { return m_added.load(); }
    int replaced() const { return m_replaced.load(); }
    // Records that could not be created (packet, folder, element or one of its files).
    int skipped() const { return m_skipped.load(); }
    // "Импорт пользовательских элементов завершен." when every record was written, else
    // "Импорт прерван.\nИмпортировано <written> из <total>.".
    QString finishText() const;
    // Why records failed or the run stopped early: the catalog's problem, a held lock, or
    // the first element that could not be written with the store's reason. Empty when every
    // record was written or the user stopped.
    QString failureText() const { return m_failure; }

signals:
    // Count of records done, after each record.
    void progress(int done);
    void finished();

private:
    // Writes record index without a transaction of its own; false when it cannot be written.
    bool writeRecord(size_t index);
    // Counts records [from, to) as written, now that their writes stand.
    void counted(size_t from, size_t to);
    // Deletes what the record that failed last wrote without a transaction.
    void discardRecord();
    // Commits the scope's writes; false when they are undone.
    bool commit(edw::TransactionScope& scope);
    // Counts a write into the catalog and passes on whether it stands.
    bool wrote(bool ok);
    // Notes why record index failed (the first failure only) and whether the catalog is held
    // by another writer, which ends the run.
    void failed(size_t index, const QString& what);

    std::atomic<int> m_writes{0};
    int m_failWriteAt = 0;
    bool m_failOnward = false;
    bool m_checkFirst = true;
    // Another writer holds the catalog: nothing more can be written.
    bool m_locked = false;
    QString m_failure;

    ImportArchive& m_archive;
    es_provider_t* m_provider;
    ImportRecords m_records;
    std::atomic<int> m_state{Run};
    std::atomic<int>* m_stateWord = &m_state;
    std::atomic<int> m_done{0};
    std::atomic<int> m_written{0};
    std::atomic<int> m_added{0};
    std::atomic<int> m_replaced{0};
    std::atomic<int> m_skipped{0};
    // Whether the last write of each record deleted the element it replaces.
    std::vector<bool> m_replacing;
    bool m_oneWriteAttributes = true;
    bool m_transactions = true;
    // The element that the record being written has added so far.
    es_stdsize_t* m_adding = nullptr;
    QFuture<void> m_future;
    QFutureWatcher<void> m_watcher;
    struct Tree;
    std::unique_ptr<Tree> m_tree;
};

} // namespace exchange
