// One open catalog database: its connection, prepared statements, handle arenas and caches.
// Every method expects the caller to hold mutex.
#ifndef ESDATA_CATALOG_H
#define ESDATA_CATALOG_H

#include "handles.h"
#include "id_index.h"
#include "registry.h"
#include "slab.h"

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <unordered_set>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace esdata {

class Query;

enum class AttrText
{
    VarName,
    Measure,
    Formula
};

// What an attribute is given beyond its name, description and type when added in one go.
struct AttrFields
{
    int32_t number = 0;
    int32_t oldNumber = 0;
    std::u16string_view varName, measure, formula;
};

class Catalog
{
public:
    // Opens (or creates) the catalog at path; null with a reason when it is not a catalog.
    static std::unique_ptr<Catalog> open(const std::u16string& path, std::u16string_view dbName,
                                         bool create, std::string& error, bool readOnly = false);
    ~Catalog();
    Catalog(const Catalog&) = delete;
    Catalog& operator=(const Catalog&) = delete;

    std::recursive_mutex mutex;
    std::weak_ptr<Catalog> self; // for calls that keep the catalog while they run
    es_provider provider;
    es_pool pool;

    const std::u16string& path() const { return m_path; }
    const std::u16string& databaseName() const { return m_dbName; }
    bool readOnly() const { return m_readOnly; }
    uint64_t generation() const { return m_gen; }
    // Copies (or moves) file into the file folder ahead of the write that will refer to it and
    // gives the stored file's path. Touches nothing that the mutex guards: callable while
    // another thread holds the catalog.
    std::u16string storeAhead(std::u16string_view file, bool move) const;
    // Removes those of files (stored files) that no model or projection names; returns how many
    // it removed. Holds the database's write lock meanwhile, unless a scope already does.
    uint32_t removeUnusedFiles(const std::vector<std::u16string>& files);

    // packets
    const std::vector<es_packet*>& packets();
    es_packet* addPacket(std::u16string_view name);
    es_packet* findPacket(std::u16string_view name);
    es_packet* packetById(int64_t id);
    es_folder* rootFolder(es_packet* packet);
    es_stdsize* findElement(es_packet* packet, std::u16string_view ident);
    const std::u16string& uniqueValues(es_packet* packet, std::u16string_view attribute);

    // folders
    es_folder* folderById(int64_t id);
    es_folder* parentFolder(es_folder* folder);
    const ShellList<es_folder>& children(es_folder* folder);
    es_folder* addChild(es_folder* folder, std::u16string_view name);
    bool deleteChild(es_folder* folder, es_folder* child);

    // tables
    const std::vector<es_attribute*>& attributes(es_table* table);
    es_attribute* findAttribute(es_table* table, std::u16string_view name);
    // The table's attribute row ids, ascending, each with the attribute's index.
    const std::vector<std::pair<int64_t, uint32_t>>& attributeIds(es_table* table);
    es_attribute* addAttribute(es_table* table, std::u16string_view name,
                               std::u16string_view description, uint32_t type);
    es_attribute* addAttribute(es_table* table, std::u16string_view name,
                               std::u16string_view description, uint32_t type,
                               const AttrFields* fields);
    bool setAttributeNumber(es_attribute* a, int32_t number, bool old);
    bool setAttributeText(es_attribute* a, AttrText field, std::u16string_view text);
    const ShellList<es_stdsize>& elements(es_table* table);
    es_stdsize* addElement(es_table* table, std::u16string_view ident);
    bool deleteElement(es_table* table, es_stdsize* element);

    // elements
    bool setType(es_stdsize* e, std::u16string_view type);
    // By attribute index of the element's table.
    const std::vector<Value>& values(es_stdsize* e);
    // Null when the attribute is not of the element's table.
    const Value* value(es_stdsize* e, es_attribute* a);
    bool setValue(es_stdsize* e, es_attribute* a, Value v);
    const std::vector<uint8_t>& representation(es_stdsize* e);
    bool setRepresentation(es_stdsize* e, const void* data, size_t size);
    const ModelData& model(es_stdsize* e);
    bool clearModel(es_model* m);
    bool setModel(es_model* m, std::u16string_view file, std::u16string_view icon,
                  std::u16string_view name, int32_t version);
    const std::vector<es_projection*>& projections(es_projections* list);
    // What p holds; empty when it is no longer among its element's fragments.
    const ProjectionData& projection(es_projection* p);
    es_projection* addProjection(es_projections* list, std::u16string_view name,
                                 std::u16string_view file, std::u16string_view icon, uint32_t type,
                                 std::u16string_view description, uint32_t viewType);
    bool deleteProjection(es_projections* list, es_projection* p);
    const std::vector<es_spec*>& specs(es_stdsize* e);

    bool runCommand(std::u16string_view xml);
    // PRAGMA quick_check: true when the database is whole; throws what is damaged otherwise.
    bool checkIntegrity();

    // objects
    es_object* createObject(es_stdsize* e);
    void deleteObject(es_object* o);

    // the multi-call scope
    bool begin();
    bool commit();
    bool rollback();
    bool scopeOwnedByOtherThread() const;
    // Drops every cache when another connection (another program) committed since the last
    // look: called before a call is served from them.
    void noticeOtherWriters();
    // Rolls back a scope of this thread still open at closing, releasing the lock it holds.
    void abandonScope();

private:
    enum Stmt : unsigned;
    enum class Kind
    {
        Packet,
        Folder,
        Attribute,
        Element,
        Projection,
        Spec
    };
    struct SchemaRow
    {
        int64_t id = 0, pos = 0;
        int32_t number = 0, oldNumber = 0;
        uint32_t type = 0;
        std::array<const std::u16string*, 5> texts{}; // name, description, var, measure, formula
    };
    struct Tracked
    {
        Kind kind;
        Handle* h;
    };

    Catalog() = default;
    bool initialise(bool create, std::string& error);
    sqlite3_stmt* stmt(Stmt s);
    Query query(Stmt s);
    template <class F> auto write(F&& f) -> decltype(f());
    template <class F> auto writeSingle(F&& f) -> decltype(f());
    // Every write of a catalog opened for reading fails with this before it touches anything.
    void refuseIfReadOnly() const;
    void beginRead();
    void endRead();
    static int64_t coarseNow(); // nanoseconds, a few milliseconds a tick
    void releaseIdleReads();
    void created(Kind k, Handle* h);
    void killed(Kind k, Handle* h);
    bool fresh(uint64_t g) const { return g == m_gen; }
    es_folder* makeFolder(int64_t id, int64_t packet, int64_t parent, std::u16string_view name);
    es_stdsize* makeElement(int64_t id, es_folder* folder, std::u16string_view ident,
                            std::u16string_view type);
    es_projection* makeProjection(es_stdsize* e, int64_t id);
    es_stdsize* elementById(int64_t id);
    Schema& schemaOf(es_table* table);
    // The element's cache, made (and the oldest let go) when it has none.
    ElementCache& cacheOf(es_stdsize* e);
    void loadValues(es_stdsize* e);
    // A copy of s kept until the catalog closes, for texts that never change.
    const char16_t* keepText(std::u16string_view s);
    void loadPacketFolders(es_packet* packet);
    void loadPacketElements(es_packet* packet);
    void markNewFolder(es_folder* f);
    void eraseFromMap(const Tracked& t);
    const std::u16string* intern(std::u16string_view s);
    const std::u16string* intern(const Query& q, int column);
    // Like intern(q, column) for field of a schema's row: schemas read one after another are
    // often alike, so the text of the same row and field of the last schema read is
    // recognised by its stored bytes, neither decoded nor looked up.
    const std::u16string* internRow(const Query& q, size_t row, size_t field, int column);
    // Lets go of one use of an interned text.
    void release(const std::u16string* s);
    // An attribute object for row id of table under a new face, tracked at once or, with
    // untracked, noted there for the caller to track.
    es_attribute* newAttribute(int64_t id, es_table* table,
                               std::vector<std::pair<const void*, void*>>* untracked = nullptr);
    // Lets go of the attribute: its face is refused from now on, its texts released and the
    // object kept for the next attribute.
    void recycle(es_attribute* a, std::vector<const void*>& faces);
    // Notes that table's schema changed from oldSize attributes to its present size, and lets
    // go of the schemas used least recently while more attributes than the bound are held.
    void schemaResized(es_table* table, size_t oldSize);
    void trimSchemas(es_table* keep);
    void ensureStored(std::u16string_view file, std::u16string& name, std::u16string& digest);
    // Notes the stored files the rows about to be deleted by s (of id) name.
    void collectFiles(Stmt s, int64_t id);
    // Removes the noted files that no row names any more (outside a scope, or once it is
    // committed) and that no write of this process is still to name.
    void removeUnused();
    void addFileIndexes();
    void dropCaches();
    void storedAhead(const std::u16string& name) const;
    void named(const std::u16string& name);
    bool storeCopy(std::u16string_view file, std::u16string& name, std::u16string& digest);
    std::u16string filePath(const std::u16string& name) const;
    // filePath of the stored name in column of q, into out.
    void storedPath(const Query& q, int column, std::u16string& out);

    sqlite3* m_db = nullptr;
    std::vector<sqlite3_stmt*> m_stmts;
    std::u16string m_path, m_dbName, m_filesDir;
    uint64_t m_gen = 1;
    int64_t m_dataVersion = 0;
    std::chrono::steady_clock::time_point m_lastLook;
    static constexpr uint32_t kCallsPerClock = 8;
    int64_t m_lastTick = 0;
    uint32_t m_callsSinceClock = 0;
    // Elements with a cache, oldest first: a walk over a large catalog keeps only the most
    // recent ones.
    std::deque<es_stdsize*> m_cached;
    std::unique_ptr<ElementCache> m_spareCache; // the room of the last one let go
    // Blocks of kept texts.
    std::vector<std::unique_ptr<char16_t[]>> m_textBlocks, m_longTexts;
    size_t m_textFree = 0;
    bool m_filesDirReady = false;
    bool m_readOnly = false;
    // Interned texts with the number of their uses.
    std::unordered_map<std::u16string, uint32_t> m_strings;
    // Tables whose schema is held, in the order they came to hold it; how many attributes
    // they hold together; attribute objects free for use again.
    std::deque<es_table*> m_schemas;
    size_t m_schemaAttributes = 0;
    size_t m_heldAttributes = 0;
    std::vector<es_attribute*> m_freeAttributes;
    uint64_t m_scopeSerial = 0;
    std::u16string m_scratch;
    std::vector<SchemaRow> m_schemaRows;
    struct LastText
    {
        std::string utf8;
        std::pair<const std::u16string, uint32_t>* entry = nullptr; // holds a use
    };
    std::vector<std::array<LastText, 5>> m_lastRows;

    std::deque<es_packet> m_packetArena;
    std::deque<es_attribute> m_attributeArena;
    Slab<es_folder> m_folderArena{this,
                                  {{0, HandleKind::Folder},
                                   {memberOffset(&es_folder::table), HandleKind::Table}}};
    Slab<es_stdsize> m_elementArena{
        this,
        {{0, HandleKind::Element},
         {memberOffset(&es_stdsize::model), HandleKind::Model},
         {memberOffset(&es_stdsize::projections), HandleKind::Projections}}};
    Slab<es_projection> m_projectionArena{this, {{0, HandleKind::Projection}}};
    Slab<es_spec> m_specArena{this, {{0, HandleKind::Spec}}};
    std::unordered_map<int64_t, es_packet*> m_packets;
    IdIndex<es_folder> m_folders;
    IdIndex<es_stdsize> m_elements;
    uint64_t m_packetListGen = kStale;
    std::vector<es_packet*> m_packetList;
    std::unordered_set<es_object*> m_objects;

    std::vector<std::u16string> m_unused; // stored names of deleted rows
    size_t m_unusedBeforeScope = 0;
    // The first specification row written in the open scope (0: none yet). Row ids only
    // grow, so a shell made later of a row at or past it is of a row the scope made.
    int64_t m_scopeFirstSpec = 0;
    mutable std::mutex m_aheadMutex;
    mutable std::unordered_map<std::u16string, int> m_ahead; // case folded, stored ahead

    bool m_inScope = false;
    bool m_reading = false;   // a read transaction is held between calls
    bool m_holdReads = false; // only in WAL mode, where a reader holds up no writer
    // Ends the read transaction once no call came for a while.
    std::thread m_idleReader;
    std::mutex m_idleMutex;
    std::condition_variable m_idleWake;
    bool m_idleStop = false;
    bool m_readHeld = false;   // under m_idleMutex
    bool m_idleAsleep = false; // likewise: waiting for a read to be held
    std::atomic<int64_t> m_lastCall{0};
    std::thread::id m_scopeOwner;
    std::vector<Tracked> m_scopeCreated, m_scopeKilled;
};

} // namespace esdata

#endif
