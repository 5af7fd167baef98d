#include "importworker.h"

#include "catalogcheck.h"
#include "exchangetexts.h"
#include "importarchive.h"

#include <catalog/catalog_tree.h>
#include <catalog/esconvert.h>
#include <catalog/spec_description.h>
#include <catalog/store_extension.h>
#include <catalog/transaction_scope.h>

#include <QDebug>
#include <QElapsedTimer>
#include <QFile>
#include <QFutureInterface>
#include <QThread>
#include <QThreadPool>
#include <QtConcurrent/QtConcurrentRun>

#include <mutex>
#include <optional>
#include <unordered_map>

namespace exchange {

namespace {

std::u16string es(const QString& text)
{
    return edw::toEs(text);
}

bool sameText(const char16_t* stored, const QString& text)
{
    if (!stored) return text.isEmpty();
    return QStringView(stored) == text;
}

// Writes only what differs; true when the text stands.
bool setText(es_attribute_t* attribute, const char16_t* (*get)(es_attribute_t*),
             bool (*set)(es_attribute_t*, const char16_t*), const QString& text)
{
    return sameText(get(attribute), text) || set(attribute, es(text).c_str());
}

using AddAttributeExFn = es_attribute_t* (*)(es_table_t*, const char16_t*, const char16_t*,
                                             uint32_t, int32_t, int32_t, const char16_t*,
                                             const char16_t*, const char16_t*);

using StoreFileAheadFn = const char16_t* (*)(es_provider_t*, const char16_t*, bool);
using RemoveUnusedFilesFn = uint32_t (*)(es_provider_t*, const char16_t* const*, uint32_t);

// The embedded store adds an attribute with all its fields in one write, and takes files
// into its folder ahead of the writes that name them; other catalog access modules do
// neither, and the worker then uses the setters and lets each write copy its file.
AddAttributeExFn lookUpAddAttributeEx()
{
    return edw::storeFunction<AddAttributeExFn>("esx_AddAttributeEx");
}

StoreFileAheadFn storeFileAhead()
{
    static const StoreFileAheadFn fn = edw::storeFunction<StoreFileAheadFn>("esx_StoreFileAhead");
    return fn;
}

RemoveUnusedFilesFn removeUnusedFiles()
{
    static const RemoveUnusedFilesFn fn =
        edw::storeFunction<RemoveUnusedFilesFn>("esx_RemoveUnusedFiles");
    return fn;
}

// What a record will ask the archive for, in the order it asks: the files and icons of its
// model and fragments (files are handed over to the store, icons go into the catalog as
// bytes).
std::vector<ImportArchive::Prefetch> prefetchList(const ImportElement& element)
{
    std::vector<ImportArchive::Prefetch> list;
    if (element.model) {
        list.push_back({element.model->file, true});
        list.push_back({element.model->icon, false});
    }
    for (const ProjectionRecord& p : element.prj) {
        list.push_back({p.file, true});
        list.push_back({p.icon, false});
    }
    return list;
}

AddAttributeExFn addAttributeEx()
{
    static const AddAttributeExFn fn = lookUpAddAttributeEx();
    return fn;
}

} // namespace

bool ImportWorker::oneWriteAttributesAvailable()
{
    return addAttributeEx() != nullptr;
}

// Packets and folders met so far, by name. A catalog folder may hold thousands of element
// folders; looking each name up by walking the children would make an import quadratic.
// What a record adds is forgotten again when its writes are rolled back, since the store
// drops those handles.
struct ImportWorker::Tree
{
    using Children = std::unordered_map<std::u16string, es_folder_t*>;

    es_provider_t* provider = nullptr;
    std::optional<std::unordered_map<std::u16string, es_packet_t*>> packets;
    std::unordered_map<es_folder_t*, Children> children;
    // Added during the current record: (parent or null for a packet, name).
    std::vector<std::pair<es_folder_t*, std::u16string>> added;

    es_packet_t* packet(const QString& name)
    {
        if (name.isEmpty()) return nullptr;
        if (!packets) {
            packets.emplace();
            const uint32_t count = provider_GetPacketCount(provider);
            for (uint32_t i = 0; i < count; ++i) {
                es_packet_t* p = provider_GetPacket(provider, i);
                if (p) packets->emplace(std::u16string(packet_GetName(p)), p);
            }
        }
        std::u16string key = es(name);
        if (const auto it = packets->find(key); it != packets->end()) return it->second;
        es_packet_t* p = provider_AddPacket(provider, key.c_str());
        if (p) {
            packets->emplace(key, p);
            added.emplace_back(nullptr, std::move(key));
        }
        return p;
    }

    es_folder_t* child(es_folder_t* parent, const QString& name)
    {
        auto [it, fresh] = children.try_emplace(parent);
        Children& known = it->second;
        if (fresh) {
            const uint32_t count = folder_GetChildFolderCount(parent);
            known.reserve(count);
            for (uint32_t i = 0; i < count; ++i) {
                es_folder_t* f = folder_GetChildFolder(parent, i);
                if (f) known.emplace(std::u16string(folder_GetName(f)), f);
            }
        }
        std::u16string key = es(name);
        if (const auto found = known.find(key); found != known.end()) return found->second;
        es_folder_t* f = folder_AddChildFolder(parent, key.c_str());
        if (f) {
            known.emplace(key, f);
            added.emplace_back(parent, std::move(key));
        }
        return f;
    }

    es_folder_t* path(es_packet_t* packet, const QString& path)
    {
        es_folder_t* current = packet_GetRootFolder(packet);
        // "\\" alone separates folders, as the writer joins them: "Ду 1/2" is one folder.
        for (const QStringView part : QStringView(path).split(u'\\', Qt::SkipEmptyParts)) {
            if (!current) return nullptr;
            current = child(current, part.toString());
        }
        return current;
    }

    void commit() { added.clear(); }

    // For writes without a transaction, which nothing undoes: deletes the folders added during
    // the current record again, deepest first. Packets stay (the catalog cannot delete them),
    // and stay known.
    void discard()
    {
        for (auto it = added.rbegin(); it != added.rend(); ++it) {
            es_folder_t* parent = it->first;
            if (!parent) continue;
            const auto known = children.find(parent);
            if (known == children.end()) continue;
            const auto gone = known->second.find(it->second);
            if (gone == known->second.end()) continue;
            folder_DeleteChildFolder(parent, gone->second);
            children.erase(gone->second);
            known->second.erase(gone);
        }
        added.clear();
    }

    void rollback()
    {
        for (const auto& [parent, name] : added) {
            if (!parent) {
                if (packets) packets->erase(name);
                continue;
            }
            if (const auto it = children.find(parent); it != children.end()) {
                if (const auto gone = it->second.find(name); gone != it->second.end()) {
                    children.erase(gone->second);
                    it->second.erase(gone);
                }
            }
        }
        added.clear();
    }
};

ImportWorker::ImportWorker(ImportArchive& archive, es_provider_t* provider,
                           ImportRecords records, QObject* parent)
    : QObject(parent), m_archive(archive), m_provider(provider), m_records(std::move(records)),
      m_replacing(m_records.size(), false), m_tree(std::make_unique<Tree>())
{
    m_tree->provider = provider;
}

ImportWorker::~ImportWorker()
{
    wait();
}

QFuture<void> ImportWorker::start(QThreadPool* pool)
{
    if (!pool) {
        QFutureInterface<void> cancelled;
        cancelled.reportStarted();
        cancelled.cancel();
        cancelled.reportFinished();
        m_future = cancelled.future();
        // Queued like the signal of a run on the pool: the caller connects and starts its
        // dialog's event loop first.
        QMetaObject::invokeMethod(this, &ImportWorker::finished, Qt::QueuedConnection);
    } else {
        m_future = QtConcurrent::run(pool, [this] { run(); });
    }
    m_watcher.setFuture(m_future);
    return m_future;
}

void ImportWorker::wait()
{
    if (m_future.isValid()) m_future.waitForFinished();
}

// Elements are written in batches, each batch in one transaction of the store (a commit per
// element would cost more than the element). Every element stays all or nothing: a batch in
// which one element fails is undone and written again one element per transaction, a batch is
// committed before the worker pauses or stops, and a killed import loses only the elements of
// its open batch, never a part of one.
//
// Without transactions (a store without them, or switched off) each record is written alone,
// and the element of a record that failed halfway is deleted again.
void ImportWorker::run()
{
    if (m_checkFirst) m_failure = writeProblem(m_provider);
    if (!m_failure.isEmpty()) {
        m_skipped = int(m_records.size());
        emit finished();
        return;
    }
    // Files that killed imports stored ahead, and those of elements replaced since, are
    // named by no row. An hour old at least: another import running now may have stored
    // files just ahead of its writes.
    removeUnusedStoredFiles(m_provider, 3600);

    const bool batches = m_transactions && edw::TransactionScope::supported();
    const size_t count = m_records.size();
    std::optional<edw::TransactionScope> batch;
    size_t batchStart = 0;
    QElapsedTimer batchAge;

    // Writes records [from, to) again, one transaction each (or none without batches).
    auto oneByOne = [this, batches](size_t from, size_t to) {
        for (size_t j = from; j < to; ++j) {
            if (m_locked) {
                ++m_skipped;
                continue;
            }
            if (!batches) {
                if (writeRecord(j)) {
                    m_tree->commit();
                    counted(j, j + 1);
                } else {
                    discardRecord();
                    ++m_skipped;
                }
                continue;
            }
            std::optional<edw::TransactionScope> single;
            single.emplace(m_provider);
            if (!single->active()) {
                failed(j, QStringLiteral("транзакция"));
                ++m_skipped;
                continue;
            }
            if (writeRecord(j) && commit(*single)) {
                m_tree->commit();
                counted(j, j + 1);
            } else {
                single.reset();
                m_tree->rollback();
                ++m_skipped;
            }
        }
    };
    // Closes the open batch ending before record end.
    auto closeBatch = [&](size_t end) {
        if (!batch) return;
        if (commit(*batch)) {
            m_tree->commit();
            counted(batchStart, end);
        } else {
            batch.reset();
            m_tree->rollback();
            oneByOne(batchStart, end);
        }
        batch.reset();
    };

    // Files come out of the archive on a thread of their own, ahead of the writes, and move
    // straight into the store's folder: the writes then find them stored. A stored file stays
    // there whether or not a write comes to name it, so each is noted for the end of the run.
    std::mutex storedMutex;
    std::vector<std::u16string> stored;
    if (StoreFileAheadFn fn = storeFileAhead())
        m_archive.setHandOver([&, fn, provider = m_provider](const QString& path) {
            const char16_t* file = fn(provider, es(path).c_str(), true);
            if (!file) return QString();
            std::lock_guard lock(storedMutex);
            stored.emplace_back(file);
            return edw::fromEs(file);
        });
    m_archive.prefetch(count, [this](size_t record) {
        return prefetchList(m_archive.element(m_records[record]));
    });

    size_t i = 0;
    for (; i < count; ++i) {
        m_archive.advance(i);
        int state = m_stateWord->load();
        if (state != Run) closeBatch(i);
        // The GUI thread pauses while it asks the user whether to stop.
        while (state == Pause) {
            QThread::msleep(150);
            state = m_stateWord->load();
        }
        if (state == Stop || m_locked) break;

        if (!batches) {
            oneByOne(i, i + 1);
            emit progress(++m_done);
            continue;
        }
        if (!batch) {
            batch.emplace(m_provider);
            batchStart = i;
            batchAge.start();
            // Writes outside a transaction would not be all or nothing.
            if (!batch->active()) {
                batch.reset();
                failed(i, QStringLiteral("транзакция"));
                if (m_locked) break;
                ++m_skipped;
                emit progress(++m_done);
                continue;
            }
        }
        if (!writeRecord(i)) {
            batch.reset();
            m_tree->rollback();
            oneByOne(batchStart, i + 1);
        } else if (i + 1 - batchStart >= 256 || batchAge.elapsed() > 500) {
            closeBatch(i + 1);
        }
        emit progress(++m_done);
    }
    closeBatch(i);
    // Records a held catalog kept from being written count as failed.
    if (m_locked) m_skipped = int(count) - m_written.load();
    m_archive.stopPrefetch();
    m_archive.setHandOver({});
    // Files of records that failed, were stopped before, or were prefetched past the stop are
    // named by no row; the store removes those, and leaves those that any element shares.
    if (RemoveUnusedFilesFn remove = removeUnusedFiles(); remove && !stored.empty()) {
        std::vector<const char16_t*> paths;
        paths.reserve(stored.size());
        for (const std::u16string& file : stored)
            paths.push_back(file.c_str());
        remove(m_provider, paths.data(), uint32_t(paths.size()));
    }
    emit finished();
}

void ImportWorker::counted(size_t from, size_t to)
{
    for (size_t j = from; j < to; ++j) {
        ++m_written;
        ++(m_replacing[j] ? m_replaced : m_added);
    }
}

bool ImportWorker::commit(edw::TransactionScope& scope)
{
    // A commit that the test seam fails is not made: a failed commit leaves nothing.
    if (wrote(true)) return scope.commit();
    scope.rollback();
    return false;
}

bool ImportWorker::wrote(bool ok)
{
    const int n = ++m_writes;
    if (m_failWriteAt > 0 && (n == m_failWriteAt || (m_failOnward && n > m_failWriteAt)))
        return false;
    return ok;
}

void ImportWorker::failed(size_t index, const QString& what)
{
    const QString reason = lastStoreError();
    if (isLockError(reason)) {
        m_locked = true;
        m_failure = texts::catalogLocked(catalogPath(m_provider), reason);
        return;
    }
    if (!m_failure.isEmpty()) return;
    const ImportRecord& record = m_records[index];
    m_failure = texts::elementNotWritten().arg(record.packet, record.id, what,
                                               reason.isEmpty() ? QStringLiteral("?") : reason);
}

void ImportWorker::discardRecord()
{
    if (m_adding) table_DeleteStdSize(stdsize_GetTable(m_adding), m_adding);
    m_adding = nullptr;
    m_tree->discard();
}

bool ImportWorker::writeRecord(size_t index)
{
    const ImportRecord& head = m_records[index];
    m_replacing[index] = false;
    m_adding = nullptr;
    // Every write must stand: one that fails fails the record, and the record's writes are
    // undone with it (the deletion of the element it replaces too).
    auto need = [&](bool ok, const char* what) {
        if (wrote(ok)) return true;
        failed(index, QString::fromUtf8(what));
        return false;
    };
    try {
        const ImportElement record = m_archive.element(head);
        // What the archive must give is read before the catalog is touched: a damaged entry
        // fails the record before the element it replaces is deleted, which matters where
        // the store has no transaction to undo that deletion.
        struct Files
        {
            QString file, icon;
        };
        std::optional<Files> model;
        if (record.model)
            model = Files{m_archive.extract(record.model->file, true),
                          m_archive.extract(record.model->icon)};
        std::vector<Files> projections;
        projections.reserve(record.prj.size());
        for (const ProjectionRecord& p : record.prj)
            projections.push_back({m_archive.extract(p.file, true), m_archive.extract(p.icon)});
        // Representation data go to the store from memory: a file per element would cost
        // more to create than the data are worth.
        std::optional<QByteArray> representation;
        if (record.repPath) representation = m_archive.read(*record.repPath);

        es_packet_t* packet = m_tree->packet(record.packet);
        if (!need(packet, "пакет")) return false;
        es_folder_t* folder = m_tree->path(packet, record.folder);
        es_table_t* table = folder_GetTable(folder);
        if (!need(table, "папка")) return false;
        if (head.existing) {
            // Looked up again: the handle found while deciding may be gone by now.
            if (es_stdsize_t* old = packet_FindStdSize(packet, es(record.id).c_str())) {
                m_replacing[index] = table_DeleteStdSize(stdsize_GetTable(old), old);
                if (!need(m_replacing[index], "замена")) return false;
            }
        }
        es_stdsize_t* element = table_AddStdSize(table, es(record.id).c_str());
        m_adding = element;
        if (!need(element, "элемент")) return false;
        if (!need(stdsize_SetType(element, es(record.type).c_str()), "тип")) return false;

        for (const AttributeRecord& a : record.atr) {
            const std::u16string name = es(a.name);
            es_attribute_t* attribute = table_FindAttribute(table, name.c_str());
            const int oldNum = a.oldNum.value_or(a.num);
            if (!attribute && m_oneWriteAttributes && addAttributeEx()) {
                attribute = addAttributeEx()(
                    table, name.c_str(), es(a.desc.value_or(a.name)).c_str(), uint32_t(a.type),
                    a.num, oldNum, es(a.var).c_str(), es(a.measure).c_str(),
                    es(a.formula.value_or(QString())).c_str());
            }
            if (!attribute)
                attribute = table_AddAttribute(
                    table, name.c_str(), es(a.desc.value_or(a.name)).c_str(), uint32_t(a.type));
            if (!need(attribute, "атрибут")) return false;
            // Each setter is a write of its own: only what differs is written.
            const bool fields =
                setText(attribute, attribute_GetVarName, attribute_SetVarName, a.var) &&
                setText(attribute, attribute_GetFormula, attribute_SetFormula,
                        a.formula.value_or(QString())) &&
                setText(attribute, attribute_GetMeasure, attribute_SetMeasure, a.measure) &&
                (attribute_GetNumber(attribute) == a.num ||
                 attribute_SetNumber(attribute, a.num)) &&
                (attribute_GetOldNumber(attribute) == oldNum ||
                 attribute_SetOldNumber(attribute, oldNum));
            if (!need(fields, "атрибут")) return false;
            // A value of a type the catalog has no setter for is not written, as before.
            const uint32_t type = attribute_GetType(attribute);
            const bool settable =
                type == ES_ATTR_INT || type == ES_ATTR_REAL || type == ES_ATTR_TEXT;
            if (!a.formula && a.val && settable &&
                !need(edw::writeValue(element, attribute, *a.val), "значение"))
                return false;
        }

        // Files that the archive does not hold leave the element without them.
        if (model && !model->file.isEmpty() &&
            !need(model_SetModelEx(stdsize_GetModel(element), es(model->file).c_str(),
                                   es(model->icon).c_str(), es(record.model->name).c_str(),
                                   record.model->version),
                  "модель"))
            return false;
        es_projections_t* list = stdsize_GetProjections(element);
        for (size_t i = 0; i < record.prj.size(); ++i) {
            const ProjectionRecord& p = record.prj[i];
            if (projections[i].file.isEmpty()) continue;
            if (!need(projections_AddProjectionEx(
                          list, es(p.name).c_str(), es(projections[i].file).c_str(),
                          es(projections[i].icon).c_str(), uint32_t(p.type), u"", uint32_t(p.view)),
                      "проекция"))
                return false;
        }
        if (representation &&
            !need(stdsize_SetRepresentationData(element, representation->constData(),
                                                size_t(representation->size())),
                  "представление"))
            return false;

        if (!record.spc.empty()) {
            std::vector<edw::SpecDescription> specs;
            specs.reserve(record.spc.size());
            for (const SpecRecord& s : record.spc) {
                edw::SpecDescription spec;
                spec.libName = s.libName;
                spec.styleNum = s.style;
                spec.firstPart = s.fPart;
                spec.secondPart = s.sPart;
                for (const ColumnRecord& c : s.column)
                    spec.columns.push_back(edw::SpecColumn{c.num, c.val});
                specs.push_back(std::move(spec));
            }
            if (!need(edw::runCreateSpec(specs, element), "спецификация")) return false;
        }
        return true;
    } catch (const std::exception& e) {
        if (m_failure.isEmpty())
            m_failure = texts::elementNotWritten().arg(
                head.packet, head.id, QStringLiteral("архив"), QString::fromUtf8(e.what()));
        return false;
    }
}

QString ImportWorker::finishText() const
{
    if (m_written.load() == total()) return texts::importDone();
    return texts::importStopped().arg(m_written.load()).arg(total());
}

} // namespace exchange
