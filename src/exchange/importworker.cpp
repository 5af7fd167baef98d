#include "importworker.h"

#include "exchangetexts.h"
#include "importarchive.h"

#include <catalog/catalog_tree.h>
#include <catalog/esconvert.h>
#include <catalog/spec_description.h>
#include <catalog/transaction_scope.h>

#include <QDebug>
#include <QFile>
#include <QFutureInterface>
#include <QThread>
#include <QThreadPool>
#include <QtConcurrent/QtConcurrentRun>

namespace exchange {

namespace {

std::u16string es(const QString& text)
{
    return edw::toEs(text);
}

} // namespace

ImportWorker::ImportWorker(ImportArchive& archive, es_provider_t* provider,
                           std::vector<ImportRecord> records, QObject* parent)
    : QObject(parent), m_archive(archive), m_provider(provider), m_records(std::move(records))
{}

ImportWorker::~ImportWorker()
{
    wait();
}

QFuture<void> ImportWorker::start()
{
    QThreadPool* pool = QThreadPool::globalInstance();
    if (!pool) {
        QFutureInterface<void> cancelled;
        cancelled.reportStarted();
        cancelled.cancel();
        cancelled.reportFinished();
        m_future = cancelled.future();
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

void ImportWorker::run()
{
    for (const ImportRecord& record : m_records) {
        // The GUI thread pauses while it asks the user whether to stop.
        int state = m_stateWord->load();
        while (state == Pause) {
            QThread::msleep(150);
            state = m_stateWord->load();
        }
        if (state == Stop) break;
        if (importRecord(record))
            ++m_written;
        else
            ++m_skipped;
        emit progress(++m_done);
    }
    emit finished();
}

bool ImportWorker::importRecord(const ImportRecord& record)
{
    try {
        edw::TransactionScope transaction(m_provider);

        es_packet_t* packet = edw::findOrAddPacket(m_provider, record.packet);
        if (!packet) return false;
        es_folder_t* folder = edw::ensureFolderPath(packet, record.folder);
        es_table_t* table = folder_GetTable(folder);
        if (!table) return false;
        if (record.existing) {
            // Looked up again: the handle found while deciding may be gone by now.
            if (es_stdsize_t* old = packet_FindStdSize(packet, es(record.id).c_str()))
                table_DeleteStdSize(stdsize_GetTable(old), old);
        }
        es_stdsize_t* element = table_AddStdSize(table, es(record.id).c_str());
        if (!element) return false;
        stdsize_SetType(element, es(record.type).c_str());

        for (const AttributeRecord& a : record.atr) {
            const std::u16string name = es(a.name);
            es_attribute_t* attribute = table_FindAttribute(table, name.c_str());
            if (!attribute)
                attribute = table_AddAttribute(
                    table, name.c_str(), es(a.desc.value_or(a.name)).c_str(), uint32_t(a.type));
            if (!attribute) continue;
            attribute_SetVarName(attribute, es(a.var).c_str());
            attribute_SetFormula(attribute, es(a.formula.value_or(QString())).c_str());
            attribute_SetMeasure(attribute, es(a.measure).c_str());
            attribute_SetNumber(attribute, a.num);
            attribute_SetOldNumber(attribute, a.oldNum.value_or(a.num));
            if (!a.formula && a.val) edw::writeValue(element, attribute, *a.val);
        }

        // Files that the archive does not hold leave the element without them.
        if (record.model) {
            const QString file = m_archive.extract(record.model->file);
            const QString icon = m_archive.extract(record.model->icon);
            if (!file.isEmpty())
                model_SetModelEx(stdsize_GetModel(element), es(file).c_str(), es(icon).c_str(),
                                 es(record.model->name).c_str(), record.model->version);
        }
        es_projections_t* list = stdsize_GetProjections(element);
        for (const ProjectionRecord& p : record.prj) {
            const QString file = m_archive.extract(p.file);
            const QString icon = m_archive.extract(p.icon);
            if (file.isEmpty()) continue;
            projections_AddProjectionEx(list, es(p.name).c_str(), es(file).c_str(),
                                        es(icon).c_str(), uint32_t(p.type), u"", uint32_t(p.view));
        }

        if (record.repPath) {
            const QString path = m_archive.extract(*record.repPath);
            if (!path.isEmpty()) {
                QFile file(path);
                if (!file.open(QIODevice::ReadOnly)) return false;
                const QByteArray bytes = file.readAll();
                stdsize_SetRepresentationData(element, bytes.constData(), size_t(bytes.size()));
            }
        }

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
            if (!edw::runCreateSpec(specs, element)) return false;
        }
        return transaction.commit();
    } catch (const std::exception& e) {
        qDebug() << "import of" << record.id << "failed:" << e.what();
        return false;
    }
}

QString ImportWorker::finishText() const
{
    if (m_written.load() == total()) return texts::importDone();
    return texts::importStopped().arg(m_written.load()).arg(total());
}

} // namespace exchange
