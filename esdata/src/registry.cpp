#include "registry.h"

#include "catalog.h"
#include "sql.h"
#include "text.h"

#include <QDir>
#include <QFileInfo>

#include <array>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <unordered_map>
#include <vector>

namespace esdata {

namespace {

struct Registry
{
    std::mutex mutex;
    // In opening order: a pool is the first open catalog of its library.
    std::vector<std::shared_ptr<Catalog>> open;
    std::vector<std::u16string> updated;
    std::u16string updatedText;
};

struct HandleInfo
{
    HandleKind kind;
    Catalog* cat;
    void* object;
};

// Objects kept in chunks by their catalog: one entry for a whole chunk.
struct Range
{
    uintptr_t end = 0;
    size_t size = 0;
    std::vector<std::pair<size_t, HandleKind>> kinds;
    Catalog* cat = nullptr;
    std::atomic<uint32_t> used{0};
};

struct HandleTable
{
    std::shared_mutex mutex;
    std::unordered_map<const void*, HandleInfo> handles;
    std::map<uintptr_t, Range> ranges; // by first address

    // What h is, looked up under the lock; false when it is no handle of that kind.
    bool find(const void* h, HandleKind kind, HandleInfo& info) const
    {
        if (auto it = handles.find(h); it != handles.end()) {
            info = it->second;
            return info.kind == kind;
        }
        const auto a = reinterpret_cast<uintptr_t>(h);
        auto it = ranges.upper_bound(a);
        if (it == ranges.begin()) return false;
        --it;
        const Range& r = it->second;
        if (a >= r.end) return false;
        const uintptr_t offset = a - it->first;
        if (offset / r.size >= r.used.load(std::memory_order_acquire)) return false;
        for (const auto& [at, k] : r.kinds)
            if (at == offset % r.size && k == kind) {
                info = HandleInfo{kind, r.cat, const_cast<void*>(h)};
                return true;
            }
        return false;
    }
};

// Each thread remembers the handles it asked about last, valid while the table's epoch is
// unchanged: the epoch moves whenever a known address is forgotten or given other meaning,
// so a remembered answer is never one the table would no longer give. A walk asks about the
// same few handles call after call; this spares it the shared lock and the lookup in a
// table of every handle of the catalog.
std::atomic<uint64_t> g_epoch{1};

struct Remembered
{
    const void* h = nullptr;
    HandleKind kind = HandleKind::Provider;
    uint64_t epoch = 0;
    Catalog* cat = nullptr;
    void* object = nullptr;
    std::weak_ptr<Catalog> weak; // its own, so that a closed catalog reads as expired
};

constexpr size_t kRemembered = 256;
thread_local std::array<Remembered, kRemembered> t_remembered;

Remembered& slotOf(const void* h)
{
    const auto a = reinterpret_cast<uintptr_t>(h);
    return t_remembered[((a >> 4) ^ (a >> 12)) & (kRemembered - 1)];
}

HandleTable& handleTable()
{
    static HandleTable* t = new HandleTable;
    return *t;
}

Registry& registry()
{
    static Registry* r = new Registry; // never destroyed: handles may be used until exit
    return *r;
}

thread_local std::u16string t_lastError;
thread_local int t_lastErrorCode = 0;

// A write past the file-size limit must fail as a write error that the caller reports, not
// end the process with SIGXFSZ: the store's writes all check their results.
void ignoreFileSizeSignal()
{
#if defined(SIGXFSZ)
    static std::once_flag once;
    std::call_once(once, [] { std::signal(SIGXFSZ, SIG_IGN); });
#endif
}

// The write fault seam of esx_TestFailWrite, for tests that run a whole program.
void readFaultSeam()
{
    static std::once_flag once;
    std::call_once(once, [] {
        if (const char* n = std::getenv("ESDATA_FAIL_WRITE"); n && std::atoi(n) > 0)
            failWriteAt(uint32_t(std::atoi(n)));
    });
}

std::u16string canonical(std::u16string_view path)
{
    // A file still to be created is named through its folder's canonical path, so that it
    // gets the same key once it exists.
    QFileInfo info(toQString(path));
    QString c = info.exists() ? info.canonicalFilePath() : QString();
    if (c.isEmpty()) {
        QString folder = QFileInfo(info.absolutePath()).canonicalFilePath();
        c = folder.isEmpty() ? info.absoluteFilePath()
                             : folder + QLatin1Char('/') + info.fileName();
    }
    return fromQString(QDir::cleanPath(c));
}

struct LibraryMarker
{
    std::u16string_view library, marker;
};

constexpr LibraryMarker kMarkers[] = {
    {u"orvik.aec.vobject", u"user_vo"},
    {u"orvik.aec.engsystx", u"user_tx"},
    {u"orvik.aec.engsysvk", u"user_vk"},
    {u"orvik.aec.engsysov", u"user_ov"},
};

} // namespace

es_provider* openCatalog(std::u16string_view path, std::u16string_view dbName, bool create,
                         bool readOnly)
{
    if (path.empty()) {
        setLastError(std::string("no catalog path given"));
        return nullptr;
    }
    ignoreFileSizeSignal();
    readFaultSeam();
    std::u16string key = canonical(path);
    Registry& r = registry();
    std::lock_guard lock(r.mutex);
    for (auto& c : r.open)
        if (c->path() == key && c->readOnly() == readOnly) return &c->provider;
    std::string error;
    std::shared_ptr<Catalog> cat = Catalog::open(key, dbName, create, error, readOnly);
    if (!cat) {
        setLastError(error);
        return nullptr;
    }
    cat->self = cat;
    r.open.push_back(std::move(cat));
    return &r.open.back()->provider;
}

void closeCatalog(es_provider* provider)
{
    Registry& r = registry();
    std::shared_ptr<Catalog> doomed;
    {
        std::lock_guard lock(r.mutex);
        for (auto it = r.open.begin(); it != r.open.end(); ++it) {
            if (&(*it)->provider == provider) {
                doomed = std::move(*it);
                r.open.erase(it);
                break;
            }
        }
    }
    if (doomed) {
        // From here on every handle of the catalog is refused; a call already under way
        // keeps the catalog until it returns.
        forgetHandles(doomed.get());
        // Wait for a call still running on another thread before the catalog goes away; a
        // scope this thread left open is rolled back and gives its lock back.
        doomed->mutex.lock();
        doomed->abandonScope();
        doomed->mutex.unlock();
    }
}

es_pool* poolForLibrary(std::u16string_view libraryId)
{
    std::u16string_view marker;
    for (const LibraryMarker& m : kMarkers)
        if (m.library == libraryId) marker = m.marker;
    if (marker.empty()) return nullptr;
    Registry& r = registry();
    std::lock_guard lock(r.mutex);
    for (auto& c : r.open)
        if (c->databaseName().find(marker) != std::u16string::npos) return &c->pool;
    return nullptr;
}

std::atomic<uint32_t>* trackRange(const void* begin, size_t size, size_t count,
                                  const std::vector<std::pair<size_t, HandleKind>>& kinds,
                                  Catalog* cat)
{
    HandleTable& t = handleTable();
    std::unique_lock lock(t.mutex);
    const auto a = reinterpret_cast<uintptr_t>(begin);
    Range& r = t.ranges[a];
    r.end = a + size * count;
    r.size = size;
    r.kinds = kinds;
    r.cat = cat;
    r.used.store(0, std::memory_order_release);
    // New memory: an address remembered from before may have meant something else.
    g_epoch.fetch_add(1, std::memory_order_acq_rel);
    return &r.used;
}

void trackHandle(const void* h, HandleKind kind, Catalog* cat, void* object)
{
    const HandleInfo info{kind, cat, object ? object : const_cast<void*>(h)};
    HandleTable& t = handleTable();
    std::unique_lock lock(t.mutex);
    auto [it, added] = t.handles.try_emplace(h, info);
    if (!added &&
        (it->second.kind != kind || it->second.cat != cat || it->second.object != info.object)) {
        it->second = info;
        g_epoch.fetch_add(1, std::memory_order_acq_rel);
    }
}

const void* newFace()
{
    // Odd, so never the address of anything the store allocates.
    static std::atomic<uintptr_t> next{1};
    return reinterpret_cast<const void*>((next.fetch_add(1, std::memory_order_relaxed) << 1) | 1);
}

void trackFaces(const std::vector<std::pair<const void*, void*>>& faces, HandleKind kind,
                Catalog* cat)
{
    if (faces.empty()) return;
    HandleTable& t = handleTable();
    std::unique_lock lock(t.mutex);
    // Faces are new: nothing remembered is about them.
    for (const auto& [face, object] : faces)
        t.handles.emplace(face, HandleInfo{kind, cat, object});
}

void forgetHandles(const std::vector<const void*>& hs)
{
    if (hs.empty()) return;
    HandleTable& t = handleTable();
    std::unique_lock lock(t.mutex);
    for (const void* h : hs)
        t.handles.erase(h);
    g_epoch.fetch_add(1, std::memory_order_acq_rel);
}

void forgetHandles(Catalog* cat)
{
    HandleTable& t = handleTable();
    std::unique_lock lock(t.mutex);
    std::erase_if(t.handles, [cat](const auto& entry) { return entry.second.cat == cat; });
    std::erase_if(t.ranges, [cat](const auto& entry) { return entry.second.cat == cat; });
    g_epoch.fetch_add(1, std::memory_order_acq_rel);
}

std::shared_ptr<Catalog> catalogFor(const void* h, HandleKind kind, void** object)
{
    Remembered& r = slotOf(h);
    const uint64_t epoch = g_epoch.load(std::memory_order_acquire);
    if (r.h == h && r.kind == kind && r.epoch == epoch) {
        std::shared_ptr<Catalog> held = r.weak.lock();
        // Held now; still the handle's catalog unless the table moved meanwhile. The item
        // stays while the catalog is held: it is let go only under the catalog's lock.
        if (held && g_epoch.load(std::memory_order_acquire) == epoch) {
            if (object) *object = r.object;
            return held;
        }
    }
    HandleTable& t = handleTable();
    std::shared_lock lock(t.mutex);
    HandleInfo info{};
    if (!t.find(h, kind, info)) return nullptr;
    // Alive: its handles leave the table before it is destroyed.
    std::shared_ptr<Catalog> held = info.cat->self.lock();
    if (held) {
        r = Remembered{h, kind, g_epoch.load(std::memory_order_acquire), held.get(), info.object,
                       held};
        if (object) *object = info.object;
    }
    return held;
}

bool isHandle(const void* h, HandleKind kind, const Catalog* cat, void** object)
{
    Remembered& r = slotOf(h);
    // The caller holds cat: an unchanged epoch means the answer remembered still stands.
    if (r.h == h && r.kind == kind && r.epoch == g_epoch.load(std::memory_order_acquire)) {
        if (object) *object = r.object;
        return r.cat == cat;
    }
    HandleTable& t = handleTable();
    std::shared_lock lock(t.mutex);
    HandleInfo info{};
    if (!t.find(h, kind, info)) return false;
    r = Remembered{h, kind, g_epoch.load(std::memory_order_acquire), info.cat, info.object,
                   info.cat->self};
    if (object) *object = info.object;
    return info.cat == cat;
}

bool recordUpdated(std::u16string_view item)
{
    if (item.empty()) return false;
    Registry& r = registry();
    std::lock_guard lock(r.mutex);
    for (const auto& u : r.updated)
        if (u == item) return true;
    r.updated.emplace_back(item);
    return true;
}

const char16_t* updatedItems()
{
    Registry& r = registry();
    std::lock_guard lock(r.mutex);
    r.updatedText.clear();
    for (size_t i = 0; i < r.updated.size(); ++i) {
        if (i) r.updatedText += u'|';
        r.updatedText += r.updated[i];
    }
    return r.updatedText.c_str();
}

void setLastError(std::u16string_view text)
{
    t_lastError = text;
    t_lastErrorCode = 1;
}

void setLastError(const std::string& utf8, int code)
{
    t_lastError = fromQString(QString::fromStdString(utf8));
    t_lastErrorCode = code;
}

void clearLastError()
{
    t_lastError.clear();
    t_lastErrorCode = 0;
}

int lastErrorCode()
{
    return t_lastErrorCode;
}

const char16_t* lastError()
{
    return t_lastError.c_str();
}

} // namespace esdata
