#include "catalog.h"

#include "command.h"
#include "filestore.h"
#include "registry.h"
#include "sql.h"
#include "text.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QUrl>

#include <algorithm>
#include <chrono>
#include <map>

#include <time.h>
#include <unistd.h>

namespace esdata {

namespace {

constexpr const char* kFormat = "esdata-catalog";
constexpr int kFormatVersion = 1;
constexpr int kBusyMilliseconds = 3000;

const char* const kSchema = R"SQL(
CREATE TABLE es_meta(key TEXT PRIMARY KEY, value) WITHOUT ROWID;
CREATE TABLE es_packet(
  id INTEGER PRIMARY KEY AUTOINCREMENT,
  name TEXT NOT NULL UNIQUE,
  root INTEGER);
CREATE TABLE es_folder(
  id INTEGER PRIMARY KEY AUTOINCREMENT,
  packet INTEGER NOT NULL REFERENCES es_packet(id) ON DELETE CASCADE,
  parent INTEGER REFERENCES es_folder(id) ON DELETE CASCADE,
  name TEXT NOT NULL);
CREATE UNIQUE INDEX es_folder_child ON es_folder(parent, name);
CREATE INDEX es_folder_packet ON es_folder(packet);
CREATE TABLE es_attribute(
  id INTEGER PRIMARY KEY AUTOINCREMENT,
  folder INTEGER NOT NULL REFERENCES es_folder(id) ON DELETE CASCADE,
  pos INTEGER NOT NULL,
  number INTEGER NOT NULL,
  old_number INTEGER NOT NULL,
  name TEXT NOT NULL,
  description TEXT NOT NULL DEFAULT '',
  type INTEGER NOT NULL,
  var_name TEXT NOT NULL DEFAULT '',
  measure TEXT NOT NULL DEFAULT '',
  formula TEXT NOT NULL DEFAULT '',
  UNIQUE(folder, name));
CREATE TABLE es_element(
  id INTEGER PRIMARY KEY AUTOINCREMENT,
  packet INTEGER NOT NULL REFERENCES es_packet(id) ON DELETE CASCADE,
  folder INTEGER NOT NULL REFERENCES es_folder(id) ON DELETE CASCADE,
  ident TEXT NOT NULL,
  type TEXT NOT NULL DEFAULT '',
  representation BLOB,
  UNIQUE(packet, ident));
CREATE INDEX es_element_folder ON es_element(folder);
CREATE TABLE es_value(
  element INTEGER NOT NULL REFERENCES es_element(id) ON DELETE CASCADE,
  attribute INTEGER NOT NULL REFERENCES es_attribute(id) ON DELETE CASCADE,
  value,
  PRIMARY KEY(element, attribute)) WITHOUT ROWID;
CREATE INDEX es_value_attribute ON es_value(attribute);
CREATE TABLE es_model(
  element INTEGER PRIMARY KEY REFERENCES es_element(id) ON DELETE CASCADE,
  file TEXT NOT NULL,
  digest TEXT NOT NULL,
  name TEXT NOT NULL,
  version INTEGER NOT NULL,
  icon BLOB);
CREATE TABLE es_projection(
  id INTEGER PRIMARY KEY AUTOINCREMENT,
  element INTEGER NOT NULL REFERENCES es_element(id) ON DELETE CASCADE,
  pos INTEGER NOT NULL,
  name TEXT NOT NULL,
  description TEXT NOT NULL,
  type INTEGER NOT NULL,
  view_type INTEGER NOT NULL,
  file TEXT NOT NULL,
  digest TEXT NOT NULL,
  icon BLOB);
CREATE INDEX es_projection_element ON es_projection(element, pos);
CREATE INDEX es_model_file ON es_model(file COLLATE NOCASE);
CREATE INDEX es_projection_file ON es_projection(file COLLATE NOCASE);
CREATE TABLE es_spec(
  id INTEGER PRIMARY KEY AUTOINCREMENT,
  element INTEGER NOT NULL REFERENCES es_element(id) ON DELETE CASCADE,
  pos INTEGER NOT NULL,
  lib_name TEXT NOT NULL,
  style INTEGER NOT NULL,
  first_part INTEGER NOT NULL,
  second_part INTEGER NOT NULL);
CREATE INDEX es_spec_element ON es_spec(element, pos);
CREATE TABLE es_spec_column(
  spec INTEGER NOT NULL REFERENCES es_spec(id) ON DELETE CASCADE,
  pos INTEGER NOT NULL,
  num INTEGER NOT NULL,
  formula TEXT NOT NULL,
  PRIMARY KEY(spec, pos)) WITHOUT ROWID;
)SQL";

const std::vector<uint8_t> kNoBytes;
const std::vector<es_folder*> kNoFolders;
const std::vector<es_attribute*> kNoAttributes;
const std::vector<es_stdsize*> kNoElements;
const std::vector<es_projection*> kNoProjections;
const std::vector<es_spec*> kNoSpecs;
const Value kEmptyValue;

void readValue(const Query& q, int c, Value& v)
{
    switch (q.type(c)) {
    case SQLITE_INTEGER:
        v.kind = ES_VALUE_INT;
        v.i = q.i32(c);
        v.s.clear();
        break;
    case SQLITE_FLOAT:
        v.kind = ES_VALUE_REAL;
        v.d = q.real(c);
        v.s.clear();
        break;
    case SQLITE_TEXT:
        v.kind = ES_VALUE_TEXT;
        q.text(c, v.s);
        break;
    default:
        v = Value();
    }
}

} // namespace

// Statement texts, in the order of the Stmt enumeration.
enum Catalog::Stmt : unsigned
{
    sSavepoint,
    sRelease,
    sRollbackTo,
    sBegin,
    sCommit,
    sRollback,
    sPackets,
    sPacketById,
    sPacketByName,
    sInsertPacket,
    sSetPacketRoot,
    sInsertFolder,
    sFolderById,
    sChildren,
    sChildByName,
    sSubtreeFolders,
    sSubtreeElements,
    sDeleteFolder,
    sSchema,
    sInsertAttr,
    sAttrNumber,
    sAttrOldNumber,
    sAttrVarName,
    sAttrMeasure,
    sAttrFormula,
    sElements,
    sElementById,
    sElementByIdent,
    sInsertElement,
    sDeleteElement,
    sSetType,
    sAllTypes,
    sValues,
    sSetValue,
    sRepr,
    sSetRepr,
    sModel,
    sSetModel,
    sClearModel,
    sProjections,
    sProjNextPos,
    sInsertProj,
    sDeleteProj,
    sSpecs,
    sDeleteSpecs,
    sInsertSpec,
    sInsertColumn,
    sUnique,
    sInsertAttrFull,
    sNamedFiles,
    sModelFile,
    sProjFile,
    sElementFiles,
    sSubtreeFiles,
    sFileNamed,
    sDataVersion,
    sBeginRead,
    sJournalMode,
    sStmtCount
};

static const char* const kStatements[] = {
    "SAVEPOINT es_write",
    "RELEASE es_write",
    "ROLLBACK TO es_write",
    "BEGIN IMMEDIATE",
    "COMMIT",
    "ROLLBACK",
    "SELECT id, name, root FROM es_packet ORDER BY id",
    "SELECT name, root FROM es_packet WHERE id=?",
    "SELECT id FROM es_packet WHERE name=?",
    "INSERT INTO es_packet(name) VALUES(?)",
    "UPDATE es_packet SET root=? WHERE id=?",
    "INSERT INTO es_folder(packet, parent, name) VALUES(?, ?, ?)",
    "SELECT packet, parent, name FROM es_folder WHERE id=?",
    "SELECT id, parent, name FROM es_folder WHERE packet=? ORDER BY id",
    "SELECT id FROM es_folder WHERE parent=? AND name=?",
    "WITH RECURSIVE sub(id) AS (SELECT ?1 UNION ALL SELECT f.id FROM es_folder f JOIN sub ON "
    "f.parent=sub.id) SELECT id FROM sub",
    "WITH RECURSIVE sub(id) AS (SELECT ?1 UNION ALL SELECT f.id FROM es_folder f JOIN sub ON "
    "f.parent=sub.id) SELECT e.id FROM es_element e JOIN sub ON e.folder=sub.id",
    "DELETE FROM es_folder WHERE id=?",
    "SELECT id, number, old_number, name, description, type, var_name, measure, formula, pos "
    "FROM es_attribute WHERE folder=?",
    "INSERT INTO es_attribute(folder, pos, number, old_number, name, description, type) "
    "VALUES(?, ?, ?, ?, ?, ?, ?)",
    "UPDATE es_attribute SET number=? WHERE id=?",
    "UPDATE es_attribute SET old_number=? WHERE id=?",
    "UPDATE es_attribute SET var_name=? WHERE id=?",
    "UPDATE es_attribute SET measure=? WHERE id=?",
    "UPDATE es_attribute SET formula=? WHERE id=?",
    "SELECT id, folder, ident, type FROM es_element WHERE packet=? ORDER BY id",
    "SELECT folder, packet, ident, type FROM es_element WHERE id=?",
    "SELECT id FROM es_element WHERE packet=? AND ident=?",
    "INSERT INTO es_element(packet, folder, ident) VALUES(?, ?, ?)",
    "DELETE FROM es_element WHERE id=?",
    "UPDATE es_element SET type=? WHERE id=?",
    "SELECT id, type FROM es_element",
    "SELECT attribute, value FROM es_value WHERE element=? ORDER BY attribute",
    "INSERT INTO es_value(element, attribute, value) VALUES(?, ?, ?) "
    "ON CONFLICT(element, attribute) DO UPDATE SET value=excluded.value",
    "SELECT representation FROM es_element WHERE id=?",
    "UPDATE es_element SET representation=? WHERE id=?",
    "SELECT file, digest, name, version, icon FROM es_model WHERE element=?",
    "INSERT OR REPLACE INTO es_model(element, file, digest, name, version, icon) "
    "VALUES(?, ?, ?, ?, ?, ?)",
    "DELETE FROM es_model WHERE element=?",
    "SELECT id, name, description, type, view_type, file, digest, icon FROM es_projection "
    "WHERE element=? ORDER BY pos",
    "SELECT coalesce(max(pos), 0) + 1 FROM es_projection WHERE element=?",
    "INSERT INTO es_projection(element, pos, name, description, type, view_type, file, digest, "
    "icon) VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?)",
    "DELETE FROM es_projection WHERE id=?",
    "SELECT s.id, s.lib_name, s.style, s.first_part, s.second_part, c.num, c.formula "
    "FROM es_spec s LEFT JOIN es_spec_column c ON c.spec=s.id WHERE s.element=? "
    "ORDER BY s.pos, c.pos",
    "DELETE FROM es_spec WHERE element=?",
    "INSERT INTO es_spec(element, pos, lib_name, style, first_part, second_part) "
    "VALUES(?, ?, ?, ?, ?, ?)",
    "INSERT INTO es_spec_column(spec, pos, num, formula) VALUES(?, ?, ?, ?)",
    "SELECT DISTINCT v.value FROM es_value v JOIN es_attribute a ON a.id=v.attribute "
    "JOIN es_element e ON e.id=v.element WHERE e.packet=? AND a.name=? ORDER BY 1",
    "INSERT INTO es_attribute(folder, pos, number, old_number, name, description, type, "
    "var_name, measure, formula) VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
    "SELECT file FROM es_model UNION SELECT file FROM es_projection",
    "SELECT file FROM es_model WHERE element=?",
    "SELECT file FROM es_projection WHERE id=?",
    "SELECT file FROM es_model WHERE element=?1 UNION SELECT file FROM es_projection WHERE "
    "element=?1",
    "WITH RECURSIVE sub(id) AS (SELECT ?1 UNION ALL SELECT f.id FROM es_folder f JOIN sub ON "
    "f.parent=sub.id), el(id) AS (SELECT e.id FROM es_element e JOIN sub ON e.folder=sub.id) "
    "SELECT m.file FROM es_model m JOIN el ON m.element=el.id UNION "
    "SELECT p.file FROM es_projection p JOIN el ON p.element=el.id",
    "SELECT 1 FROM es_model WHERE file=?1 COLLATE NOCASE UNION ALL "
    "SELECT 1 FROM es_projection WHERE file=?1 COLLATE NOCASE LIMIT 1",
    "PRAGMA data_version",
    "BEGIN DEFERRED",
    "PRAGMA journal_mode",
};

// ---- opening ------------------------------------------------------------------------------

namespace {

// A catalog that may only be read is opened through a URI: read-only, and immutable when its
// file or folder cannot be written, since SQLite could otherwise not create the shared-memory
// file a WAL database needs even for reading.
QByteArray readOnlyUri(const QString& path)
{
    const QByteArray local = QFile::encodeName(path);
    const QByteArray folder = QFile::encodeName(QFileInfo(path).absolutePath());
    const bool writable =
        ::access(local.constData(), W_OK) == 0 && ::access(folder.constData(), W_OK) == 0;
    return "file:" + QUrl::toPercentEncoding(path.toUtf8(), "/") + "?mode=ro" +
           (writable ? "" : "&immutable=1");
}

} // namespace

// Attributes whose schemas are held at most: a walk over thousands of tables, or an import
// adding a table per element, keeps the schemas of the last few hundred tables only. A trim
// lets go of a quarter, so that handles are forgotten in batches.
// ESDATA_HELD_ATTRIBUTES=n in the environment of a test sets another bound for the catalogs
// opened from then on.
constexpr size_t kHeldAttributes = 16384;

size_t heldAttributes()
{
    const QByteArray n = qgetenv("ESDATA_HELD_ATTRIBUTES");
    return n.toULongLong() > 0 ? size_t(n.toULongLong()) : kHeldAttributes;
}

std::unique_ptr<Catalog> Catalog::open(const std::u16string& path, std::u16string_view dbName,
                                       bool create, std::string& error, bool readOnly)
{
    if (readOnly) create = false;
    QString qpath = toQString(path);
    QFileInfo info(qpath);
    if (!info.exists() && !create) {
        error = "no catalog file at " + qpath.toStdString();
        return nullptr;
    }
    if (info.exists() && !info.isFile()) {
        error = qpath.toStdString() + " is not a file";
        return nullptr;
    }
    std::unique_ptr<Catalog> cat(new Catalog());
    cat->m_heldAttributes = heldAttributes();
    cat->m_path = path;
    cat->m_dbName = std::u16string(dbName);
    cat->m_filesDir = path + u".files";
    cat->provider.cat = cat.get();
    cat->pool.cat = cat.get();
    cat->m_readOnly = readOnly;
    int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | (create ? SQLITE_OPEN_CREATE : 0);
    QByteArray name = qpath.toUtf8();
    if (readOnly) {
        flags = SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_URI;
        name = readOnlyUri(qpath);
    }
    if (sqlite3_open_v2(name.constData(), &cat->m_db, flags, nullptr) != SQLITE_OK) {
        error = "cannot open " + qpath.toStdString() + ": " +
                (cat->m_db ? sqlite3_errmsg(cat->m_db) : "out of memory");
        return nullptr;
    }
    if (!cat->initialise(create, error)) return nullptr;
    trackHandle(&cat->provider, HandleKind::Provider, cat.get());
    trackHandle(&cat->pool, HandleKind::Pool, cat.get());
    return cat;
}

bool Catalog::initialise(bool create, std::string& error)
{
    // A catalog another program holds for writing is waited for a few seconds, then the call
    // fails with the lock named (esx_LastErrorCode ESX_ERROR_LOCKED).
    sqlite3_busy_timeout(m_db, kBusyMilliseconds);
    sqlite3_extended_result_codes(m_db, 1);
    try {
        sqlite3_stmt* st = nullptr;
        if (sqlite3_prepare_v2(m_db, "SELECT count(*) FROM sqlite_master", -1, &st, nullptr) !=
            SQLITE_OK) {
            error = std::string("not a catalog: ") + sqlite3_errmsg(m_db);
            return false;
        }
        int count = 0;
        {
            Query q(m_db, st);
            int rc = sqlite3_step(st);
            if (rc != SQLITE_ROW) {
                error = std::string("not a catalog: ") + sqlite3_errmsg(m_db);
                sqlite3_finalize(st);
                return false;
            }
            count = sqlite3_column_int(st, 0);
        }
        sqlite3_finalize(st);
        if (count == 0) {
            if (!create) {
                error = "not a catalog: the database is empty";
                return false;
            }
            exec(m_db, "PRAGMA journal_mode=WAL");
            exec(m_db, "BEGIN IMMEDIATE");
            try {
                exec(m_db, kSchema);
                std::string meta = "INSERT INTO es_meta VALUES('format', '" + std::string(kFormat) +
                                   "'), ('version', " + std::to_string(kFormatVersion) + ")";
                exec(m_db, meta.c_str());
                sqlite3_stmt* ins = nullptr;
                if (sqlite3_prepare_v2(m_db, "INSERT INTO es_meta VALUES('name', ?)", -1, &ins,
                                       nullptr) != SQLITE_OK)
                    throwSql(m_db, "prepare");
                {
                    Query q(m_db, ins);
                    q.bind(1, m_dbName).run();
                }
                sqlite3_finalize(ins);
                exec(m_db, "COMMIT");
            } catch (...) {
                sqlite3_exec(m_db, "ROLLBACK", nullptr, nullptr, nullptr);
                throw;
            }
        } else {
            sqlite3_stmt* meta = nullptr;
            if (sqlite3_prepare_v2(m_db, "SELECT key, value FROM es_meta", -1, &meta, nullptr) !=
                SQLITE_OK) {
                error = "not a catalog: the database has no catalog description";
                return false;
            }
            std::string format;
            int version = 0;
            std::u16string name;
            {
                Query q(m_db, meta);
                while (q.next()) {
                    std::u16string key = q.text(0);
                    if (key == u"format")
                        format = toQString(q.text(1)).toStdString();
                    else if (key == u"version")
                        version = q.i32(1);
                    else if (key == u"name")
                        name = q.text(1);
                }
            }
            sqlite3_finalize(meta);
            if (format != kFormat) {
                error = "not a catalog: the database is of another format";
                return false;
            }
            if (version < 1 || version > kFormatVersion) {
                error = "the catalog format version " + std::to_string(version) +
                        " is not supported (this store reads version " +
                        std::to_string(kFormatVersion) + ")";
                return false;
            }
            m_dbName = name;
            if (!m_readOnly) {
                exec(m_db, "PRAGMA journal_mode=WAL");
                addFileIndexes();
            }
        }
        if (!m_readOnly) {
            exec(m_db, "PRAGMA synchronous=NORMAL");
            exec(m_db, "PRAGMA foreign_keys=ON");
        }
        m_stmts.assign(sStmtCount, nullptr);
        {
            Query q = query(sJournalMode);
            m_holdReads = q.next() && q.text(0) == u"wal";
        }
    } catch (const std::exception& e) {
        error = e.what();
        return false;
    }
    return true;
}

Catalog::~Catalog()
{
    {
        std::lock_guard lock(m_idleMutex);
        m_idleStop = true;
    }
    m_idleWake.notify_one();
    if (m_idleReader.joinable()) m_idleReader.join();
    forgetHandles(this);
    for (es_object* o : m_objects) {
        o->cat = nullptr;
        o->element = nullptr;
    }
    if (m_inScope || m_reading) sqlite3_exec(m_db, "ROLLBACK", nullptr, nullptr, nullptr);
    for (sqlite3_stmt* s : m_stmts)
        sqlite3_finalize(s);
    if (m_db) sqlite3_close_v2(m_db);
}

sqlite3_stmt* Catalog::stmt(Stmt s)
{
    static_assert(sizeof(kStatements) / sizeof(kStatements[0]) == sStmtCount);
    sqlite3_stmt*& st = m_stmts[s];
    if (!st && sqlite3_prepare_v3(m_db, kStatements[s], -1, SQLITE_PREPARE_PERSISTENT, &st,
                                  nullptr) != SQLITE_OK)
        throwSql(m_db, "prepare");
    return st;
}

Query Catalog::query(Stmt s)
{
    return Query(m_db, stmt(s));
}

// Every write is atomic on its own and joins the open multi-call scope, if any.
template <class F> auto Catalog::write(F&& f) -> decltype(f())
{
    refuseIfReadOnly();
    endRead();
    query(sSavepoint).run();
    try {
        auto r = f();
        query(sRelease).run();
        return r;
    } catch (...) {
        sqlite3_reset(stmt(sSavepoint));
        sqlite3_exec(m_db, "ROLLBACK TO es_write; RELEASE es_write", nullptr, nullptr, nullptr);
        throw;
    }
}

// A write of one statement is atomic by itself; it needs no savepoint of its own.
template <class F> auto Catalog::writeSingle(F&& f) -> decltype(f())
{
    refuseIfReadOnly();
    endRead();
    return f();
}

// Reads between writes share one read transaction, renewed at each look for other writers:
// a statement of its own takes and gives back the database's locks with system calls, which
// cost a walk more than its reading. A write ends it first, so that it never works on a
// snapshot older than the database.
void Catalog::beginRead()
{
    if (m_reading || m_inScope || !m_holdReads) return;
    query(sBeginRead).run();
    m_reading = true;
    bool wake = false;
    {
        std::lock_guard lock(m_idleMutex);
        m_readHeld = true;
        wake = m_idleAsleep;
    }
    if (!m_idleReader.joinable()) m_idleReader = std::thread([this] { releaseIdleReads(); });
    // Only when it waits for a read to be held: a walk renews its read every millisecond.
    if (wake) m_idleWake.notify_one();
}

void Catalog::endRead()
{
    if (!m_reading) return;
    m_reading = false;
    {
        std::lock_guard lock(m_idleMutex);
        m_readHeld = false;
    }
    if (sqlite3_get_autocommit(m_db)) return;
    query(sCommit).run();
}

int64_t Catalog::coarseNow()
{
    timespec coarse{};
    clock_gettime(CLOCK_MONOTONIC_COARSE, &coarse);
    return int64_t(coarse.tv_sec) * 1000000000 + coarse.tv_nsec;
}

// A read transaction left open by the last call would keep another program's checkpoints
// from emptying the journal for as long as this catalog stays open and unused: it is ended
// once no call came for a while.
void Catalog::releaseIdleReads()
{
    constexpr auto kIdle = std::chrono::milliseconds(100);
    std::unique_lock lock(m_idleMutex);
    while (!m_idleStop) {
        if (!m_readHeld) {
            m_idleAsleep = true;
            m_idleWake.wait(lock);
            m_idleAsleep = false;
            continue;
        }
        m_idleWake.wait_for(lock, kIdle);
        if (m_idleStop || !m_readHeld) continue;
        const int64_t idle = coarseNow() - m_lastCall.load(std::memory_order_relaxed);
        if (idle < std::chrono::nanoseconds(kIdle).count()) continue;
        lock.unlock();
        // Never waits for a call under way or a scope: it is looked at again later.
        if (mutex.try_lock()) {
            try {
                endRead();
            } catch (...) {
            }
            mutex.unlock();
        }
        lock.lock();
    }
}

void Catalog::refuseIfReadOnly() const
{
    if (m_readOnly)
        throw StoreError(Fault::Write, "the catalog is open for reading only (read-only): "
                                       "nothing can be written to it");
}

void Catalog::created(Kind k, Handle* h)
{
    if (m_inScope) m_scopeCreated.push_back({k, h});
}

void Catalog::killed(Kind k, Handle* h)
{
    if (h->dead) return;
    h->dead = true;
    if (m_inScope) m_scopeKilled.push_back({k, h});
}

std::u16string Catalog::filePath(const std::u16string& name) const
{
    return name.empty() ? std::u16string() : m_filesDir + u"/" + name;
}

void Catalog::storedPath(const Query& q, int column, std::u16string& out)
{
    q.text(column, m_scratch);
    out.clear();
    if (m_scratch.empty()) return;
    out.append(m_filesDir).append(u"/").append(m_scratch);
}

// ---- packets ------------------------------------------------------------------------------

es_packet* Catalog::packetById(int64_t id)
{
    auto it = m_packets.find(id);
    if (it != m_packets.end()) return it->second;
    Query q = query(sPacketById);
    q.bind(1, id);
    if (!q.next()) return nullptr;
    es_packet& p = m_packetArena.emplace_back();
    trackHandle(&p, HandleKind::Packet, this);
    p.id = id;
    q.text(0, p.name);
    p.rootId = q.i64(1);
    m_packets.emplace(id, &p);
    return &p;
}

const std::vector<es_packet*>& Catalog::packets()
{
    if (!fresh(m_packetListGen)) {
        std::vector<int64_t> ids;
        {
            Query q = query(sPackets);
            while (q.next())
                ids.push_back(q.i64(0));
        }
        m_packetList.clear();
        for (int64_t id : ids)
            if (es_packet* p = packetById(id)) m_packetList.push_back(p);
        m_packetListGen = m_gen;
    }
    return m_packetList;
}

es_packet* Catalog::findPacket(std::u16string_view name)
{
    if (name.empty()) return nullptr;
    int64_t id = 0;
    {
        Query q = query(sPacketByName);
        q.bind(1, name);
        if (!q.next()) return nullptr;
        id = q.i64(0);
    }
    return packetById(id);
}

es_packet* Catalog::addPacket(std::u16string_view name)
{
    if (name.empty() || findPacket(name)) return nullptr;
    auto [pid, fid] = write([&] {
        Query ins = query(sInsertPacket);
        ins.bind(1, name).run();
        int64_t p = sqlite3_last_insert_rowid(m_db);
        Query f = query(sInsertFolder);
        f.bind(1, p).bindNull(2).bind(3, name).run();
        int64_t root = sqlite3_last_insert_rowid(m_db);
        Query set = query(sSetPacketRoot);
        set.bind(1, root).bind(2, p).run();
        return std::pair<int64_t, int64_t>(p, root);
    });
    es_packet* p = packetById(pid);
    created(Kind::Packet, p);
    es_folder* root = makeFolder(fid, pid, 0, name);
    created(Kind::Folder, root);
    p->folders.clear();
    p->foldersGen = m_gen;
    markNewFolder(root);
    if (fresh(m_packetListGen)) m_packetList.push_back(p);
    return p;
}

es_folder* Catalog::rootFolder(es_packet* packet)
{
    return folderById(packet->rootId);
}

es_stdsize* Catalog::findElement(es_packet* packet, std::u16string_view ident)
{
    if (ident.empty()) return nullptr;
    int64_t id = 0;
    {
        Query q = query(sElementByIdent);
        q.bind(1, packet->id).bind(2, ident);
        if (!q.next()) return nullptr;
        id = q.i64(0);
    }
    return elementById(id);
}

const std::u16string& Catalog::uniqueValues(es_packet* packet, std::u16string_view attribute)
{
    // The query gives the values in order; their texts may still repeat (2 and 2.0): kept in
    // first-seen order, each once, found again by hash.
    std::vector<std::u16string> seen;
    std::unordered_set<std::u16string> known;
    {
        Query q = query(sUnique);
        q.bind(1, packet->id).bind(2, attribute);
        Value v;
        while (q.next()) {
            readValue(q, 0, v);
            std::u16string t;
            if (v.kind == ES_VALUE_INT)
                t = numberText(int64_t(v.i));
            else if (v.kind == ES_VALUE_REAL)
                t = numberText(v.d);
            else if (v.kind == ES_VALUE_TEXT)
                t = v.s;
            else
                continue;
            if (known.insert(t).second) seen.push_back(std::move(t));
        }
    }
    packet->uniqueValues.clear();
    for (size_t i = 0; i < seen.size(); ++i) {
        if (i) packet->uniqueValues += u'|';
        packet->uniqueValues += seen[i];
    }
    return packet->uniqueValues;
}

// ---- folders ------------------------------------------------------------------------------

es_folder* Catalog::makeFolder(int64_t id, int64_t packet, int64_t parent, std::u16string_view name)
{
    es_folder& f = m_folderArena.emplace();
    f.id = id;
    f.packetId = packet;
    f.parentId = parent;
    f.name = keepText(name);
    f.table.folder = &f;
    m_folders.insert(&f);
    return &f;
}

// A new folder has no children, no attributes and no elements yet.
void Catalog::markNewFolder(es_folder* f)
{
    f->childrenGen = f->table.schemaGen = f->table.elementsGen = m_gen;
    if (auto it = m_packets.find(f->packetId); it != m_packets.end())
        if (fresh(it->second->foldersGen)) it->second->folders.push_back(f);
}

es_folder* Catalog::folderById(int64_t id)
{
    if (id <= 0) return nullptr;
    if (es_folder* f = m_folders.find(id)) return f;
    Query q = query(sFolderById);
    q.bind(1, id);
    if (!q.next()) return nullptr;
    return makeFolder(id, q.i64(0), q.i64(1), q.text(2));
}

es_folder* Catalog::parentFolder(es_folder* folder)
{
    return folderById(folder->parentId);
}

// A packet's whole folder tree is read in one query: walking it then costs no query per
// folder.
void Catalog::loadPacketFolders(es_packet* packet)
{
    packet->folders.clear();
    {
        Query q = query(sChildren);
        q.bind(1, packet->id);
        while (q.next()) {
            int64_t id = q.i64(0);
            es_folder* f = m_folders.find(id);
            packet->folders.push_back(f ? f : makeFolder(id, packet->id, q.i64(1), q.text(2)));
        }
    }
    for (es_folder* f : packet->folders)
        f->children.clear();
    for (es_folder* f : packet->folders)
        if (es_folder* parent = f->parentId ? m_folders.find(f->parentId) : nullptr)
            parent->children.push_back(f);
    for (es_folder* f : packet->folders)
        f->childrenGen = m_gen;
    packet->foldersGen = m_gen;
}

const ShellList<es_folder>& Catalog::children(es_folder* folder)
{
    if (!fresh(folder->childrenGen)) {
        if (es_packet* p = packetById(folder->packetId)) loadPacketFolders(p);
        if (!fresh(folder->childrenGen)) {
            folder->children.clear();
            folder->childrenGen = m_gen;
        }
    }
    return folder->children;
}

es_folder* Catalog::addChild(es_folder* folder, std::u16string_view name)
{
    if (name.empty()) return nullptr;
    {
        Query q = query(sChildByName);
        q.bind(1, folder->id).bind(2, name);
        if (q.next()) return nullptr;
    }
    int64_t id = writeSingle([&] {
        Query ins = query(sInsertFolder);
        ins.bind(1, folder->packetId).bind(2, folder->id).bind(3, name).run();
        return int64_t(sqlite3_last_insert_rowid(m_db));
    });
    es_folder* f = makeFolder(id, folder->packetId, folder->id, name);
    markNewFolder(f);
    created(Kind::Folder, f);
    if (fresh(folder->childrenGen)) folder->children.push_back(f);
    return f;
}

bool Catalog::deleteChild(es_folder* folder, es_folder* child)
{
    if (child->parentId != folder->id) return false;
    std::vector<int64_t> folders, elements;
    writeSingle([&] {
        {
            Query q = query(sSubtreeFolders);
            q.bind(1, child->id);
            while (q.next())
                folders.push_back(q.i64(0));
        }
        {
            Query q = query(sSubtreeElements);
            q.bind(1, child->id);
            while (q.next())
                elements.push_back(q.i64(0));
        }
        collectFiles(sSubtreeFiles, child->id);
        Query del = query(sDeleteFolder);
        del.bind(1, child->id).run();
        return true;
    });
    removeUnused();
    for (int64_t id : elements)
        if (es_stdsize* e = m_elements.find(id)) killed(Kind::Element, e);
    for (int64_t id : folders)
        if (es_folder* f = m_folders.find(id)) killed(Kind::Folder, f);
    if (fresh(folder->childrenGen)) folder->children.erase(child);
    return true;
}

// ---- tables -------------------------------------------------------------------------------

Schema& Catalog::schemaOf(es_table* table)
{
    if (!table->schema) table->schema = std::make_unique<Schema>();
    return *table->schema;
}

const std::vector<es_attribute*>& Catalog::attributes(es_table* table)
{
    if (!fresh(table->schemaGen)) {
        Schema& schema = schemaOf(table);
        // The objects of the schema read before keep their handles when read again.
        std::vector<es_attribute*> before;
        before.swap(schema.attributes);
        const size_t oldSize = before.size();
        // Found at the same place unless the schema changed; by a map of the ids otherwise.
        std::unordered_map<int64_t, size_t> byId;
        auto reuse = [&](int64_t id, size_t at) -> es_attribute* {
            size_t k = before.size();
            if (at < before.size() && before[at] && before[at]->id == id) {
                k = at;
            } else {
                if (byId.empty())
                    for (size_t j = 0; j < before.size(); ++j)
                        if (before[j]) byId.emplace(before[j]->id, j);
                if (auto it = byId.find(id); it != byId.end()) k = it->second;
            }
            if (k == before.size() || !before[k]) return nullptr;
            es_attribute* found = before[k];
            before[k] = nullptr;
            return found;
        };
        // The handles of new objects are tracked in one go once the schema is read.
        std::vector<std::pair<const void*, void*>> untracked;
        schema.maxPos = 0;
        // Read in the order of the name index and put in position order here: sorting a few
        // rows costs less than the statement's own sort.
        std::vector<SchemaRow>& rows = m_schemaRows;
        rows.clear();
        {
            Query q = query(sSchema);
            q.bind(1, table->folder->id);
            while (q.next()) {
                SchemaRow& r = rows.emplace_back();
                r.id = q.i64(0);
                r.number = q.i32(1);
                r.oldNumber = q.i32(2);
                r.type = static_cast<uint32_t>(q.i64(5));
                r.pos = q.i64(9);
                // Interned now; the old texts are let go after: often they are the same.
                const size_t row = rows.size() - 1;
                r.texts = {internRow(q, row, 0, 3), internRow(q, row, 1, 4),
                           internRow(q, row, 2, 6), internRow(q, row, 3, 7),
                           internRow(q, row, 4, 8)};
            }
        }
        std::sort(rows.begin(), rows.end(),
                  [](const SchemaRow& x, const SchemaRow& y) { return x.pos < y.pos; });
        for (const SchemaRow& r : rows) {
            es_attribute* a = reuse(r.id, schema.attributes.size());
            if (!a) a = newAttribute(r.id, table, &untracked);
            a->table = table;
            a->index = static_cast<uint32_t>(schema.attributes.size());
            a->number = r.number;
            a->oldNumber = r.oldNumber;
            a->type = r.type;
            const std::u16string** fields[] = {&a->name, &a->description, &a->varName,
                                               &a->measure, &a->formula};
            for (size_t k = 0; k < r.texts.size(); ++k) {
                release(*fields[k]);
                *fields[k] = r.texts[k];
            }
            schema.maxPos = std::max(schema.maxPos, r.pos);
            schema.attributes.push_back(a);
        }
        trackFaces(untracked, HandleKind::Attribute, this);
        // What the catalog no longer holds goes.
        std::vector<const void*> faces;
        for (es_attribute* gone : before)
            if (gone) recycle(gone, faces);
        forgetHandles(faces);
        table->schemaGen = m_gen;
        schema.byIdGen = schema.byNameGen = kStale;
        schemaResized(table, oldSize);
    }
    table->recent = true;
    return table->schema ? table->schema->attributes : kNoAttributes;
}

es_attribute* Catalog::newAttribute(int64_t id, es_table* table,
                                    std::vector<std::pair<const void*, void*>>* untracked)
{
    es_attribute* a;
    if (!m_freeAttributes.empty()) {
        a = m_freeAttributes.back();
        m_freeAttributes.pop_back();
    } else {
        a = &m_attributeArena.emplace_back();
    }
    a->face = newFace();
    if (untracked)
        untracked->emplace_back(a->face, a);
    else
        trackHandle(a->face, HandleKind::Attribute, this, a);
    a->id = id;
    a->table = table;
    return a;
}

void Catalog::recycle(es_attribute* a, std::vector<const void*>& faces)
{
    faces.push_back(a->face);
    for (const std::u16string* text : {a->name, a->description, a->varName, a->measure, a->formula})
        release(text);
    *a = es_attribute();
    m_freeAttributes.push_back(a);
}

void Catalog::schemaResized(es_table* table, size_t oldSize)
{
    const size_t size = table->schema ? table->schema->attributes.size() : 0;
    if (table->listed) {
        m_schemaAttributes -= std::min(m_schemaAttributes, oldSize);
    } else if (size > 0) {
        table->listed = true;
        m_schemas.push_back(table);
    }
    m_schemaAttributes += size;
    if (m_inScope && size > 0) table->scopePin = m_scopeSerial;
    // A table known to have no attributes holds nothing.
    if (size == 0 && !table->listed) table->schema.reset();
    if (m_schemaAttributes > m_heldAttributes) trimSchemas(table);
}

// Lets go of the schemas used least recently, a recently used one getting a second chance.
// Never the schema of keep (being read or written), of a table used in the call under way, or
// one with attributes added in the open scope (a rollback drops those by their objects).
void Catalog::trimSchemas(es_table* keep)
{
    std::vector<const void*> faces;
    const size_t target = m_heldAttributes - m_heldAttributes / 4;
    for (size_t looked = m_schemas.size(); looked > 0 && m_schemaAttributes > target; --looked) {
        es_table* t = m_schemas.front();
        m_schemas.pop_front();
        const bool pinned = m_inScope && t->scopePin == m_scopeSerial;
        if (t == keep || t->recent || pinned) {
            t->recent = false;
            m_schemas.push_back(t);
            continue;
        }
        if (t->schema) {
            m_schemaAttributes -= std::min(m_schemaAttributes, t->schema->attributes.size());
            for (es_attribute* a : t->schema->attributes)
                recycle(a, faces);
            t->schema.reset();
        }
        t->schemaGen = kStale;
        t->listed = false;
    }
    forgetHandles(faces);
}

const std::vector<std::pair<int64_t, uint32_t>>& Catalog::attributeIds(es_table* table)
{
    static const std::vector<std::pair<int64_t, uint32_t>> none;
    const auto& list = attributes(table);
    if (!table->schema) return none;
    Schema& schema = *table->schema;
    if (!fresh(schema.byIdGen)) {
        schema.byId.clear();
        schema.byId.reserve(list.size());
        for (es_attribute* a : list)
            schema.byId.emplace_back(a->id, a->index);
        std::sort(schema.byId.begin(), schema.byId.end());
        schema.byIdGen = m_gen;
    }
    return schema.byId;
}

es_attribute* Catalog::findAttribute(es_table* table, std::u16string_view name)
{
    const auto& list = attributes(table);
    if (list.size() <= 16) {
        for (es_attribute* a : list)
            if (*a->name == name) return a;
        return nullptr;
    }
    Schema& schema = *table->schema;
    if (!fresh(schema.byNameGen)) {
        schema.byName.clear();
        for (es_attribute* a : list)
            schema.byName.emplace(*a->name, a);
        schema.byNameGen = m_gen;
    }
    auto it = schema.byName.find(name);
    return it == schema.byName.end() ? nullptr : it->second;
}

es_attribute* Catalog::addAttribute(es_table* table, std::u16string_view name,
                                    std::u16string_view description, uint32_t type)
{
    return addAttribute(table, name, description, type, nullptr);
}

es_attribute* Catalog::addAttribute(es_table* table, std::u16string_view name,
                                    std::u16string_view description, uint32_t type,
                                    const AttrFields* fields)
{
    if (name.empty() || findAttribute(table, name)) return nullptr;
    // The cached schema is fresh here (findAttribute read it): no query for the numbers.
    Schema& schema = schemaOf(table);
    int32_t number = 1;
    for (es_attribute* other : schema.attributes)
        if (other->number >= number) number = other->number + 1;
    int32_t oldNumber = number;
    if (fields) {
        number = fields->number;
        oldNumber = fields->oldNumber;
    }
    const int64_t pos = schema.maxPos + 1;
    int64_t id = writeSingle([&] {
        Query ins = query(fields ? sInsertAttrFull : sInsertAttr);
        ins.bind(1, table->folder->id)
            .bind(2, pos)
            .bindInt(3, number)
            .bindInt(4, oldNumber)
            .bind(5, name)
            .bind(6, description)
            .bind(7, int64_t(type));
        if (fields) ins.bind(8, fields->varName).bind(9, fields->measure).bind(10, fields->formula);
        ins.run();
        return int64_t(sqlite3_last_insert_rowid(m_db));
    });
    es_attribute* a = newAttribute(id, table);
    a->index = static_cast<uint32_t>(schema.attributes.size());
    a->number = number;
    a->oldNumber = oldNumber;
    a->type = type;
    a->name = intern(name);
    a->description = intern(description);
    if (fields) {
        a->varName = intern(fields->varName);
        a->measure = intern(fields->measure);
        a->formula = intern(fields->formula);
    }
    schema.maxPos = pos;
    schema.attributes.push_back(a);
    if (fresh(schema.byNameGen)) schema.byName.emplace(*a->name, a);
    // Row ids only grow: the new one sorts last.
    if (fresh(schema.byIdGen)) schema.byId.emplace_back(a->id, a->index);
    created(Kind::Attribute, a);
    schemaResized(table, schema.attributes.size() - 1);
    return a;
}

bool Catalog::setAttributeNumber(es_attribute* a, int32_t number, bool old)
{
    writeSingle([&] {
        Query q = query(old ? sAttrOldNumber : sAttrNumber);
        q.bindInt(1, number).bind(2, a->id).run();
        return true;
    });
    (old ? a->oldNumber : a->number) = number;
    return true;
}

bool Catalog::setAttributeText(es_attribute* a, AttrText field, std::u16string_view text)
{
    Stmt s = field == AttrText::VarName   ? sAttrVarName
             : field == AttrText::Measure ? sAttrMeasure
                                          : sAttrFormula;
    writeSingle([&] {
        Query q = query(s);
        q.bind(1, text).bind(2, a->id).run();
        return true;
    });
    const std::u16string*& target = field == AttrText::VarName   ? a->varName
                                    : field == AttrText::Measure ? a->measure
                                                                 : a->formula;
    const std::u16string* old = target;
    target = intern(text);
    release(old);
    return true;
}

es_stdsize* Catalog::makeElement(int64_t id, es_folder* folder, std::u16string_view ident,
                                 std::u16string_view type)
{
    es_stdsize& e = m_elementArena.emplace();
    e.id = id;
    e.folder = folder;
    e.ident = keepText(ident);
    e.type = intern(type);
    e.model.element = &e;
    e.projections.element = &e;
    m_elements.insert(&e);
    return &e;
}

es_stdsize* Catalog::elementById(int64_t id)
{
    if (es_stdsize* e = m_elements.find(id)) return e;
    int64_t folderId = 0;
    std::u16string ident, type;
    {
        Query q = query(sElementById);
        q.bind(1, id);
        if (!q.next()) return nullptr;
        folderId = q.i64(0);
        ident = q.text(2);
        type = q.text(3);
    }
    es_folder* folder = folderById(folderId);
    if (!folder) return nullptr;
    return makeElement(id, folder, ident, type);
}

// Like folders, the elements of a whole packet are listed in one query.
void Catalog::loadPacketElements(es_packet* packet)
{
    if (!fresh(packet->foldersGen)) loadPacketFolders(packet);
    for (es_folder* f : packet->folders)
        f->table.elements.clear();
    Query q = query(sElements);
    q.bind(1, packet->id);
    while (q.next()) {
        int64_t id = q.i64(0);
        es_folder* folder = folderById(q.i64(1));
        if (!folder) continue;
        es_stdsize* e = m_elements.find(id);
        if (!e) e = makeElement(id, folder, q.text(2), q.text(3));
        folder->table.elements.push_back(e);
        folder->table.elementsGen = m_gen;
    }
    for (es_folder* f : packet->folders)
        f->table.elementsGen = m_gen;
}

const ShellList<es_stdsize>& Catalog::elements(es_table* table)
{
    if (!fresh(table->elementsGen)) {
        if (es_packet* p = packetById(table->folder->packetId)) loadPacketElements(p);
        if (!fresh(table->elementsGen)) {
            table->elements.clear();
            table->elementsGen = m_gen;
        }
    }
    return table->elements;
}

es_stdsize* Catalog::addElement(es_table* table, std::u16string_view ident)
{
    es_folder* folder = table->folder;
    if (ident.empty()) return nullptr;
    {
        Query q = query(sElementByIdent);
        q.bind(1, folder->packetId).bind(2, ident);
        if (q.next()) return nullptr;
    }
    int64_t id = writeSingle([&] {
        Query ins = query(sInsertElement);
        ins.bind(1, folder->packetId).bind(2, folder->id).bind(3, ident).run();
        return int64_t(sqlite3_last_insert_rowid(m_db));
    });
    // Nothing of a new element is cached: an import writes thousands of elements that nobody
    // reads back, and their shells live until the catalog closes.
    es_stdsize* e = makeElement(id, folder, ident, {});
    created(Kind::Element, e);
    if (fresh(table->elementsGen)) table->elements.push_back(e);
    return e;
}

bool Catalog::deleteElement(es_table* table, es_stdsize* element)
{
    if (element->folder != table->folder) return false;
    writeSingle([&] {
        collectFiles(sElementFiles, element->id);
        Query del = query(sDeleteElement);
        del.bind(1, element->id).run();
        return true;
    });
    killed(Kind::Element, element);
    if (fresh(table->elementsGen)) table->elements.erase(element);
    removeUnused();
    return true;
}

// ---- elements -----------------------------------------------------------------------------

bool Catalog::setType(es_stdsize* e, std::u16string_view type)
{
    writeSingle([&] {
        Query q = query(sSetType);
        q.bind(1, type).bind(2, e->id).run();
        return true;
    });
    const std::u16string* old = e->type;
    e->type = intern(type);
    release(old);
    return true;
}

// How many elements keep what was read of them (values, model, fragments, representation)
// at once.
constexpr size_t kCachedElements = 256;

ElementCache& Catalog::cacheOf(es_stdsize* e)
{
    if (!e->cache) {
        // The oldest go: read again from the catalog when asked for. Their room is used
        // again, so that a walk allocates little once the cache is full.
        while (m_cached.size() >= kCachedElements) {
            es_stdsize* old = m_cached.front();
            m_cached.pop_front();
            if (!m_spareCache) m_spareCache = std::move(old->cache);
            old->cache.reset();
        }
        if (m_spareCache) {
            e->cache = std::move(m_spareCache);
            ElementCache& c = *e->cache;
            c.valuesGen = c.reprGen = c.modelGen = c.projectionsGen = c.specsGen = kStale;
            // Large bytes are not kept for an element that may have none.
            if (c.repr.capacity() > 65536) std::vector<uint8_t>().swap(c.repr);
        } else {
            e->cache = std::make_unique<ElementCache>();
        }
        m_cached.push_back(e);
    }
    return *e->cache;
}

void Catalog::loadValues(es_stdsize* e)
{
    es_table* table = &e->folder->table;
    const auto& byId = attributeIds(table);
    ElementCache& c = cacheOf(e);
    c.values.assign(byId.size(), Value());
    // The element's values in attribute order, merged with the schema's ids in that order.
    Query q = query(sValues);
    q.bind(1, e->id);
    size_t k = 0;
    while (k < byId.size() && q.next()) {
        const int64_t id = q.i64(0);
        while (k < byId.size() && byId[k].first < id)
            ++k;
        if (k < byId.size() && byId[k].first == id) readValue(q, 1, c.values[byId[k].second]);
    }
    c.valuesGen = m_gen;
}

const std::vector<Value>& Catalog::values(es_stdsize* e)
{
    if (!e->cache || !fresh(e->cache->valuesGen)) loadValues(e);
    return e->cache->values;
}

const Value* Catalog::value(es_stdsize* e, es_attribute* a)
{
    es_table* table = &e->folder->table;
    attributes(table);
    if (a->table != table || a->dead) return nullptr;
    const std::vector<Value>& list = values(e);
    return a->index < list.size() ? &list[a->index] : &kEmptyValue;
}

bool Catalog::setValue(es_stdsize* e, es_attribute* a, Value v)
{
    es_table* table = &e->folder->table;
    const size_t n = attributes(table).size();
    if (a->table != table) return false;
    writeSingle([&] {
        Query q = query(sSetValue);
        q.bind(1, e->id).bind(2, a->id);
        if (v.kind == ES_VALUE_INT)
            q.bind(3, int64_t(v.i));
        else if (v.kind == ES_VALUE_REAL)
            q.bindReal(3, v.d);
        else
            q.bind(3, std::u16string_view(v.s));
        q.run();
        return true;
    });
    if (e->cache && fresh(e->cache->valuesGen)) {
        std::vector<Value>& list = e->cache->values;
        if (list.size() < n) list.resize(n);
        list[a->index] = std::move(v);
    }
    return true;
}

const std::vector<uint8_t>& Catalog::representation(es_stdsize* e)
{
    ElementCache& c = cacheOf(e);
    if (!fresh(c.reprGen)) {
        Query q = query(sRepr);
        q.bind(1, e->id);
        if (q.next())
            q.blob(0, c.repr);
        else
            c.repr.clear();
        c.reprGen = m_gen;
    }
    return c.repr;
}

bool Catalog::setRepresentation(es_stdsize* e, const void* data, size_t size)
{
    writeSingle([&] {
        Query q = query(sSetRepr);
        q.bindBlob(1, data, size).bind(2, e->id).run();
        return true;
    });
    // Read back from the catalog when asked for: the handle keeps no copy of the bytes.
    if (e->cache) {
        std::vector<uint8_t>().swap(e->cache->repr);
        e->cache->reprGen = kStale;
    }
    return true;
}

const ModelData& Catalog::model(es_stdsize* e)
{
    ElementCache& c = cacheOf(e);
    if (!fresh(c.modelGen)) {
        ModelData& m = c.model;
        Query q = query(sModel);
        q.bind(1, e->id);
        m.present = q.next();
        if (m.present) {
            storedPath(q, 0, m.file);
            q.text(1, m.digest);
            q.text(2, m.name);
            m.version = q.i32(3);
            q.blob(4, m.icon);
        } else {
            m = ModelData();
        }
        c.modelGen = m_gen;
    }
    return c.model;
}

bool Catalog::clearModel(es_model* m)
{
    writeSingle([&] {
        collectFiles(sModelFile, m->element->id);
        Query q = query(sClearModel);
        q.bind(1, m->element->id).run();
        return true;
    });
    if (m->element->cache) m->element->cache->modelGen = kStale;
    removeUnused();
    return true;
}

std::u16string Catalog::storeAhead(std::u16string_view file, bool move) const
{
    refuseIfReadOnly();
    const QString folder = toQString(m_filesDir);
    if (!QDir().mkpath(folder))
        throw StoreError(Fault::Write, "cannot create the folder " + folder.toStdString());
    const StoredFile stored = storeFile(folder, toQString(file), move);
    const std::u16string name = fromQString(stored.name);
    // Not removed as unused while the write it was stored for is still to come.
    storedAhead(name);
    return filePath(name);
}

uint32_t Catalog::removeUnusedFiles(const std::vector<std::u16string>& files)
{
    // Files are shared by content: one is unused only when no row of any element names it.
    // The write lock keeps another connection from committing such a row in between; a scope
    // of this thread already holds it, and its own rows count.
    refuseIfReadOnly();
    const bool own = !m_inScope;
    endRead();
    if (own) query(sBegin).run();
    try {
        std::unordered_set<std::u16string> named;
        {
            Query q = query(sNamedFiles);
            // Folded: on a disk that ignores case, "A.M3D" and "a.m3d" are one file.
            while (q.next())
                named.insert(fromQString(toQString(q.text(0)).toCaseFolded()));
        }
        const QString folder = QFileInfo(toQString(m_filesDir)).canonicalFilePath();
        uint32_t removed = 0;
        for (const std::u16string& file : files) {
            const QFileInfo info(toQString(file));
            if (folder.isEmpty() || !info.isFile() || info.canonicalPath() != folder) continue;
            if (named.count(fromQString(info.fileName().toCaseFolded()))) continue;
            if (QFile::remove(info.absoluteFilePath())) ++removed;
        }
        if (own) query(sCommit).run();
        return removed;
    } catch (...) {
        if (own) sqlite3_exec(m_db, "ROLLBACK", nullptr, nullptr, nullptr);
        throw;
    }
}

void Catalog::ensureStored(std::u16string_view file, std::u16string& name, std::u16string& digest)
{
    // Checked under the write lock: another connection's removal of unused files may have
    // taken the file after it was stored and before this row could name it. Stored again
    // now, no remover can come in between.
    if (!QFileInfo::exists(toQString(filePath(name)))) storeCopy(file, name, digest);
    named(name);
}

void Catalog::collectFiles(Stmt s, int64_t id)
{
    Query q = query(s);
    q.bind(1, id);
    while (q.next())
        m_unused.push_back(q.text(0));
}

void Catalog::addFileIndexes()
{
    // Catalogs made before the removal of unused files have no index on stored file names. A
    // catalog that cannot be written to works without it.
    sqlite3_exec(m_db,
                 "CREATE INDEX IF NOT EXISTS es_model_file ON es_model(file COLLATE NOCASE);"
                 "CREATE INDEX IF NOT EXISTS es_projection_file ON es_projection(file COLLATE "
                 "NOCASE)",
                 nullptr, nullptr, nullptr);
}

static std::u16string folded(std::u16string_view name)
{
    return fromQString(toQString(name).toCaseFolded());
}

void Catalog::storedAhead(const std::u16string& name) const
{
    std::lock_guard lock(m_aheadMutex);
    ++m_ahead[folded(name)];
}

void Catalog::named(const std::u16string& name)
{
    std::lock_guard lock(m_aheadMutex);
    if (auto it = m_ahead.find(folded(name)); it != m_ahead.end() && --it->second <= 0)
        m_ahead.erase(it);
}

void Catalog::removeUnused()
{
    if (m_unused.empty() || m_inScope) return;
    endRead();
    // Without waiting: a catalog held by another writer keeps the names for the next time.
    sqlite3_busy_timeout(m_db, 0);
    try {
        query(sBegin).run();
        try {
            std::vector<std::u16string> keep;
            for (const std::u16string& name : m_unused) {
                bool stillNamed = false;
                {
                    Query q = query(sFileNamed);
                    q.bind(1, name);
                    stillNamed = q.next();
                }
                bool ahead = false;
                {
                    std::lock_guard lock(m_aheadMutex);
                    ahead = m_ahead.count(folded(name)) > 0;
                }
                if (stillNamed || ahead) continue;
                const QString path = toQString(filePath(name));
                if (QFileInfo::exists(path) && !QFile::remove(path)) keep.push_back(name);
            }
            query(sCommit).run();
            m_unused = std::move(keep);
        } catch (...) {
            sqlite3_exec(m_db, "ROLLBACK", nullptr, nullptr, nullptr);
            throw;
        }
    } catch (...) {
        // The data are written; the files wait for the next removal.
        if (m_unused.size() > 4096) m_unused.clear();
    }
    sqlite3_busy_timeout(m_db, kBusyMilliseconds);
}

bool Catalog::storeCopy(std::u16string_view file, std::u16string& name, std::u16string& digest)
{
    refuseIfReadOnly();
    if (!m_filesDirReady) {
        if (!QDir().mkpath(toQString(m_filesDir)))
            throw StoreError(Fault::Write,
                             "cannot create the folder " + toQString(m_filesDir).toStdString());
        m_filesDirReady = true;
    }
    const StoredFile stored = storeFile(toQString(m_filesDir), toQString(file), false);
    name = fromQString(stored.name);
    digest = fromQString(stored.digest);
    return true;
}

bool Catalog::setModel(es_model* m, std::u16string_view file, std::u16string_view icon,
                       std::u16string_view name, int32_t version)
{
    std::u16string stored, digest;
    storeCopy(file, stored, digest);
    std::vector<uint8_t> iconBytes;
    readBytes(toQString(icon), iconBytes);
    writeSingle([&] {
        ensureStored(file, stored, digest);
        collectFiles(sModelFile, m->element->id);
        Query q = query(sSetModel);
        q.bind(1, m->element->id)
            .bind(2, stored)
            .bind(3, digest)
            .bind(4, name)
            .bindInt(5, version)
            .bindBlob(6, iconBytes.data(), iconBytes.size())
            .run();
        return true;
    });
    if (ElementCache* c = m->element->cache.get()) {
        c->model.present = true;
        c->model.file = filePath(stored);
        c->model.digest = std::move(digest);
        c->model.name = name;
        c->model.version = version;
        c->model.icon = std::move(iconBytes);
        c->modelGen = m_gen;
    }
    removeUnused();
    return true;
}

const std::vector<es_projection*>& Catalog::projections(es_projections* list)
{
    es_stdsize* e = list->element;
    ElementCache& c = cacheOf(e);
    if (!fresh(c.projectionsGen)) {
        c.projections.clear();
        // Entries read before are filled again in place.
        size_t n = 0;
        Query q = query(sProjections);
        q.bind(1, e->id);
        while (q.next()) {
            const int64_t id = q.i64(0);
            es_projection* p = e->fragments;
            while (p && p->id != id)
                p = p->next;
            if (!p) p = makeProjection(e, id);
            if (n == c.projectionData.size()) c.projectionData.emplace_back();
            ProjectionData& d = c.projectionData[n++];
            q.text(1, d.name);
            q.text(2, d.description);
            d.type = static_cast<uint32_t>(q.i64(3));
            d.viewType = static_cast<uint32_t>(q.i64(4));
            storedPath(q, 5, d.file);
            q.text(6, d.digest);
            q.blob(7, d.icon);
            c.projections.push_back(p);
        }
        c.projectionData.resize(n);
        c.projectionsGen = m_gen;
    }
    return c.projections;
}

const ProjectionData& Catalog::projection(es_projection* p)
{
    static const ProjectionData none;
    const auto& list = projections(&p->element->projections);
    for (size_t i = 0; i < list.size(); ++i)
        if (list[i] == p) return p->element->cache->projectionData[i];
    return none;
}

es_projection* Catalog::makeProjection(es_stdsize* e, int64_t id)
{
    es_projection* p = &m_projectionArena.emplace();
    p->id = id;
    p->element = e;
    p->next = e->fragments;
    e->fragments = p;
    return p;
}

es_projection* Catalog::addProjection(es_projections* list, std::u16string_view name,
                                      std::u16string_view file, std::u16string_view icon,
                                      uint32_t type, std::u16string_view description,
                                      uint32_t viewType)
{
    std::u16string stored, digest;
    storeCopy(file, stored, digest);
    std::vector<uint8_t> iconBytes;
    readBytes(toQString(icon), iconBytes);
    es_stdsize* e = list->element;
    int64_t id = writeSingle([&] {
        ensureStored(file, stored, digest);
        int64_t pos = 0;
        {
            Query q = query(sProjNextPos);
            q.bind(1, e->id);
            q.next();
            pos = q.i64(0);
        }
        Query ins = query(sInsertProj);
        ins.bind(1, e->id)
            .bind(2, pos)
            .bind(3, name)
            .bind(4, description)
            .bind(5, int64_t(type))
            .bind(6, int64_t(viewType))
            .bind(7, stored)
            .bind(8, digest)
            .bindBlob(9, iconBytes.data(), iconBytes.size())
            .run();
        return int64_t(sqlite3_last_insert_rowid(m_db));
    });
    es_projection* p = makeProjection(e, id);
    created(Kind::Projection, p);
    if (ElementCache* c = e->cache.get(); c && fresh(c->projectionsGen)) {
        ProjectionData& d = c->projectionData.emplace_back();
        d.name = name;
        d.description = description;
        d.type = type;
        d.viewType = viewType;
        d.file = filePath(stored);
        d.digest = std::move(digest);
        d.icon = std::move(iconBytes);
        c->projections.push_back(p);
    }
    return p;
}

bool Catalog::deleteProjection(es_projections* list, es_projection* p)
{
    if (p->element != list->element) return false;
    writeSingle([&] {
        collectFiles(sProjFile, p->id);
        Query q = query(sDeleteProj);
        q.bind(1, p->id).run();
        return true;
    });
    killed(Kind::Projection, p);
    if (ElementCache* c = p->element->cache.get())
        for (size_t i = 0; fresh(c->projectionsGen) && i < c->projections.size(); ++i)
            if (c->projections[i] == p) {
                c->projections.erase(c->projections.begin() + ptrdiff_t(i));
                c->projectionData.erase(c->projectionData.begin() + ptrdiff_t(i));
                break;
            }
    removeUnused();
    return true;
}

const std::vector<es_spec*>& Catalog::specs(es_stdsize* e)
{
    ElementCache& c = cacheOf(e);
    if (!fresh(c.specsGen)) {
        c.specs.clear();
        Query q = query(sSpecs);
        q.bind(1, e->id);
        es_spec* current = nullptr;
        while (q.next()) {
            int64_t id = q.i64(0);
            if (!current || current->id != id) {
                current = e->specShells;
                while (current && current->id != id)
                    current = current->next;
                if (!current) {
                    current = &m_specArena.emplace();
                    current->id = id;
                    current->element = e;
                    current->next = e->specShells;
                    e->specShells = current;
                    if (m_inScope && m_scopeFirstSpec > 0 && id >= m_scopeFirstSpec)
                        created(Kind::Spec, current);
                }
                q.text(1, current->libName);
                current->style = q.i32(2);
                current->firstPart = q.i32(3);
                current->secondPart = q.i32(4);
                current->columns.clear();
                c.specs.push_back(current);
            }
            if (!q.isNull(5)) current->columns.emplace_back(q.i32(5), q.text(6));
        }
        c.specsGen = m_gen;
    }
    return c.specs;
}

bool Catalog::runCommand(std::u16string_view xml)
{
    std::vector<CreateSpec> commands;
    std::string error;
    if (!parseCommands(xml, commands, error)) throw std::runtime_error(error);
    std::vector<es_stdsize*> targets;
    for (const CreateSpec& c : commands) {
        es_packet* packet = findPacket(c.packet);
        es_stdsize* e = packet ? findElement(packet, c.id) : nullptr;
        if (!e || e->dead)
            throw std::runtime_error("create_spec: no element \"" + toQString(c.id).toStdString() +
                                     "\" in packet \"" + toQString(c.packet).toStdString() + "\"");
        targets.push_back(e);
    }
    write([&] {
        for (size_t k = 0; k < commands.size(); ++k) {
            es_stdsize* e = targets[k];
            Query del = query(sDeleteSpecs);
            del.bind(1, e->id).run();
            int64_t pos = 0;
            for (const SpecRecord& s : commands[k].specs) {
                {
                    Query ins = query(sInsertSpec);
                    ins.bind(1, e->id)
                        .bind(2, ++pos)
                        .bind(3, s.libName)
                        .bindInt(4, s.style)
                        .bindInt(5, s.firstPart)
                        .bindInt(6, s.secondPart)
                        .run();
                }
                int64_t spec = sqlite3_last_insert_rowid(m_db);
                if (m_inScope && m_scopeFirstSpec == 0) m_scopeFirstSpec = spec;
                int64_t col = 0;
                for (const auto& [num, formula] : s.columns) {
                    Query c = query(sInsertColumn);
                    c.bind(1, spec).bind(2, ++col).bindInt(3, num).bind(4, formula).run();
                }
            }
        }
        return true;
    });
    // Every record a target had is replaced, so each shell made of them dies. Shells of the
    // new records are made when somebody asks for them: an import writes thousands of
    // lists that nobody reads back.
    for (es_stdsize* e : targets) {
        for (es_spec* s = e->specShells; s; s = s->next)
            killed(Kind::Spec, s);
        if (e->cache) e->cache->specsGen = kStale;
    }
    return true;
}

bool Catalog::checkIntegrity()
{
    sqlite3_stmt* st = nullptr;
    if (sqlite3_prepare_v2(m_db, "PRAGMA quick_check(20)", -1, &st, nullptr) != SQLITE_OK)
        throwSql(m_db, "integrity check");
    std::vector<std::u16string> rows;
    try {
        Query q(m_db, st);
        while (q.next())
            rows.push_back(q.text(0));
    } catch (...) {
        sqlite3_finalize(st);
        throw;
    }
    sqlite3_finalize(st);
    if (rows.size() == 1 && rows[0] == u"ok") return true;
    QString what;
    for (const std::u16string& r : rows)
        what += (what.isEmpty() ? QString() : QStringLiteral("; ")) + toQString(r);
    throw StoreError(Fault::Damaged, "Каталог повреждён: " + what.toStdString());
}

// ---- objects ------------------------------------------------------------------------------

es_object* Catalog::createObject(es_stdsize* e)
{
    auto o = new es_object;
    o->cat = this;
    o->element = e;
    o->values = values(e);
    m_objects.insert(o);
    return o;
}

void Catalog::deleteObject(es_object* o)
{
    m_objects.erase(o);
}

// ---- the multi-call scope -----------------------------------------------------------------

bool Catalog::scopeOwnedByOtherThread() const
{
    return m_inScope && m_scopeOwner != std::this_thread::get_id();
}

bool Catalog::begin()
{
    if (m_inScope) throw std::runtime_error("a transaction scope is already open");
    refuseIfReadOnly();
    endRead();
    query(sBegin).run();
    m_inScope = true;
    ++m_scopeSerial;
    m_unusedBeforeScope = m_unused.size();
    m_scopeOwner = std::this_thread::get_id();
    m_scopeCreated.clear();
    m_scopeKilled.clear();
    m_scopeFirstSpec = 0;
    return true;
}

bool Catalog::commit()
{
    if (!m_inScope || scopeOwnedByOtherThread())
        throw std::runtime_error("no transaction scope of this thread is open");
    query(sCommit).run();
    m_inScope = false;
    m_scopeCreated.clear();
    m_scopeKilled.clear();
    m_scopeFirstSpec = 0;
    // Files named by rows the scope deleted go once the deletion is committed: a rolled back
    // scope brings its rows back with their files.
    removeUnused();
    return true;
}

const char16_t* Catalog::keepText(std::u16string_view s)
{
    if (s.empty()) return u"";
    constexpr size_t kBlock = 16384;
    const size_t need = s.size() + 1;
    char16_t* at = nullptr;
    if (need > kBlock / 8) {
        // A long text has a block of its own.
        at = m_longTexts.emplace_back(std::make_unique<char16_t[]>(need)).get();
    } else {
        if (m_textBlocks.empty() || m_textFree < need) {
            m_textBlocks.push_back(std::make_unique<char16_t[]>(kBlock));
            m_textFree = kBlock;
        }
        at = m_textBlocks.back().get() + (kBlock - m_textFree);
        m_textFree -= need;
    }
    std::copy(s.begin(), s.end(), at);
    at[s.size()] = u'\0';
    return at;
}

const std::u16string* Catalog::intern(std::u16string_view s)
{
    if (s.empty()) return &kNoText;
    m_scratch.assign(s);
    auto it = m_strings.try_emplace(m_scratch, 0).first;
    ++it->second;
    return &it->first;
}

const std::u16string* Catalog::intern(const Query& q, int column)
{
    q.text(column, m_scratch);
    if (m_scratch.empty()) return &kNoText;
    auto it = m_strings.find(m_scratch);
    if (it == m_strings.end()) it = m_strings.emplace(m_scratch, 0).first;
    ++it->second;
    return &it->first;
}

const std::u16string* Catalog::internRow(const Query& q, size_t row, size_t field, int column)
{
    const std::string_view raw = q.utf8(column);
    if (raw.empty()) return &kNoText;
    if (row < m_lastRows.size()) {
        LastText& last = m_lastRows[row][field];
        if (last.entry && last.utf8 == raw) {
            ++last.entry->second;
            return &last.entry->first;
        }
    }
    q.text(column, m_scratch);
    auto it = m_strings.find(m_scratch);
    if (it == m_strings.end()) it = m_strings.emplace(m_scratch, 0).first;
    // One use for the caller, one for the row remembered here.
    it->second += 2;
    if (row >= m_lastRows.size()) m_lastRows.resize(row + 1);
    LastText& last = m_lastRows[row][field];
    if (last.entry) release(&last.entry->first);
    last.utf8.assign(raw);
    last.entry = &*it;
    return &it->first;
}

void Catalog::release(const std::u16string* s)
{
    if (!s || s == &kNoText) return;
    if (auto it = m_strings.find(*s); it != m_strings.end() && --it->second == 0)
        m_strings.erase(it);
}

void Catalog::abandonScope()
{
    if (!m_inScope || scopeOwnedByOtherThread()) return;
    try {
        rollback();
    } catch (...) {
        m_inScope = false;
    }
    mutex.unlock();
}

void Catalog::eraseFromMap(const Tracked& t)
{
    switch (t.kind) {
    case Kind::Packet:
        m_packets.erase(t.h->id);
        break;
    case Kind::Folder:
        m_folders.erase(t.h->id);
        break;
    case Kind::Attribute:
        break;
    case Kind::Element:
        m_elements.erase(t.h->id);
        break;
    case Kind::Projection:
    case Kind::Spec:
        // Found through their element by row id, which a later insert may take again.
        t.h->id = 0;
        break;
    }
}

void Catalog::noticeOtherWriters()
{
    // Inside a scope this connection holds the write lock: nobody else commits meanwhile.
    if (m_inScope) return;
    // The look costs a read transaction; a walk making a million calls looks once a
    // millisecond, so another program's commit is seen at most a millisecond late. Reading
    // the clock costs more than many a call: the precise clock is read when the coarse one
    // (a few milliseconds a tick, almost free) moved and otherwise every few calls, which in a
    // walk are microseconds apart.
    const int64_t tick = coarseNow();
    m_lastCall.store(tick, std::memory_order_relaxed);
    if (m_dataVersion != 0) {
        const bool ticked = tick != m_lastTick;
        m_lastTick = tick;
        if (!ticked && ++m_callsSinceClock < kCallsPerClock) return;
    }
    m_callsSinceClock = 0;
    const auto now = std::chrono::steady_clock::now();
    if (m_dataVersion != 0 && now - m_lastLook < std::chrono::milliseconds(1)) {
        beginRead();
        return;
    }
    m_lastLook = now;
    // Out of the read transaction, whose snapshot would hide what was committed since.
    endRead();
    int64_t version = 0;
    {
        Query q = query(sDataVersion);
        if (q.next()) version = q.i64(0);
    }
    beginRead();
    if (version == m_dataVersion) return;
    const bool first = m_dataVersion == 0;
    m_dataVersion = version;
    if (!first) dropCaches();
}

void Catalog::dropCaches()
{
    // Every cache is read again on its next use.
    ++m_gen;
    Query q = query(sAllTypes);
    while (q.next())
        if (es_stdsize* e = m_elements.find(q.i64(0))) {
            const std::u16string* old = e->type;
            e->type = intern(q, 1);
            release(old);
        }
}

bool Catalog::rollback()
{
    if (!m_inScope || scopeOwnedByOtherThread())
        throw std::runtime_error("no transaction scope of this thread is open");
    query(sRollback).run();
    m_inScope = false;
    m_unused.resize(std::min(m_unused.size(), m_unusedBeforeScope));
    // What was killed inside lives again; what was made inside never existed. The order
    // matters for a handle both made and killed inside the scope.
    for (const Tracked& t : m_scopeKilled)
        t.h->dead = false;
    std::vector<const void*> faces;
    for (const Tracked& t : m_scopeCreated) {
        t.h->dead = true;
        eraseFromMap(t);
        // An attribute made inside goes from its schema at once; its object is used again.
        if (t.kind == Kind::Attribute) {
            auto* a = static_cast<es_attribute*>(t.h);
            if (es_table* table = a->table; table && table->schema) {
                std::erase(table->schema->attributes, a);
                if (table->listed) m_schemaAttributes -= std::min<size_t>(m_schemaAttributes, 1);
                table->schemaGen = table->schema->byNameGen = table->schema->byIdGen = kStale;
            }
            recycle(a, faces);
        }
    }
    forgetHandles(faces);
    m_scopeCreated.clear();
    m_scopeKilled.clear();
    m_scopeFirstSpec = 0;
    dropCaches();
    return true;
}

} // namespace esdata
