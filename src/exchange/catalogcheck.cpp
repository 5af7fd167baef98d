#include "catalogcheck.h"

#include "exchangetexts.h"

#include <catalog/esconvert.h>
#include <catalog/store_extension.h>
#include <catalog/transaction_scope.h>

#include <QDateTime>
#include <QDir>
#include <QFileInfo>

#include <vector>

namespace exchange {

namespace {

using PathFn = const char16_t* (*)(es_provider_t*);
using CheckFn = bool (*)(es_provider_t*);
using ErrorFn = const char16_t* (*)();
using RemoveUnusedFilesFn = uint32_t (*)(es_provider_t*, const char16_t* const*, uint32_t);

} // namespace

QString catalogPath(es_provider_t* provider)
{
    static const PathFn fn = edw::storeFunction<PathFn>("esx_CatalogPath");
    return fn ? edw::fromEs(fn(provider)) : QString();
}

QString lastStoreError()
{
    static const ErrorFn fn = edw::storeFunction<ErrorFn>("esx_LastError");
    return fn ? edw::fromEs(fn()) : QString();
}

bool isLockError(const QString& reason)
{
    return reason.contains(QLatin1String("locked"), Qt::CaseInsensitive) ||
           reason.contains(QLatin1String("busy"), Qt::CaseInsensitive);
}

QString writeProblem(es_provider_t* provider)
{
    const QString path = catalogPath(provider);
    if (!path.isEmpty()) {
        const QFileInfo file(path);
        const QFileInfo folder(file.absolutePath());
        const QFileInfo files(path + QStringLiteral(".files"));
        // The store keeps its journal beside the file and the models in the file folder.
        if (!file.isWritable() || !folder.isWritable() ||
            (files.exists() && (!files.isDir() || !files.isWritable())))
            return texts::catalogReadOnly(path);
    }
    // Taking the write lock once, and giving it back, finds another writer after one wait
    // instead of one per element.
    if (edw::TransactionScope::supported()) {
        edw::TransactionScope probe(provider);
        if (!probe.active()) {
            const QString reason = lastStoreError();
            return isLockError(reason) ? texts::catalogLocked(path, reason)
                                       : texts::catalogUnwritable(path, reason);
        }
    }
    static const CheckFn check = edw::storeFunction<CheckFn>("esx_CheckIntegrity");
    if (check && !check(provider)) return texts::catalogDamaged(path, lastStoreError());
    return {};
}

int removeUnusedStoredFiles(es_provider_t* provider, int minAgeSeconds)
{
    static const RemoveUnusedFilesFn remove =
        edw::storeFunction<RemoveUnusedFilesFn>("esx_RemoveUnusedFiles");
    const QString path = catalogPath(provider);
    if (!remove || path.isEmpty()) return 0;
    const QDateTime before = QDateTime::currentDateTimeUtc().addSecs(-minAgeSeconds);
    std::vector<std::u16string> files;
    const QFileInfoList entries =
        QDir(path + QStringLiteral(".files")).entryInfoList(QDir::Files | QDir::Hidden);
    for (const QFileInfo& entry : entries)
        if (entry.metadataChangeTime().toUTC() <= before)
            files.push_back(edw::toEs(entry.absoluteFilePath()));
    if (files.empty()) return 0;
    std::vector<const char16_t*> paths;
    paths.reserve(files.size());
    for (const std::u16string& file : files)
        paths.push_back(file.c_str());
    return int(remove(provider, paths.data(), uint32_t(paths.size())));
}

} // namespace exchange
