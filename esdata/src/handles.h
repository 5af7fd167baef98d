// The objects behind the opaque handles of the C API. They live in arenas of their catalog
// until it is closed, so a handle of something deleted stays readable and is known dead.
#ifndef ESDATA_HANDLES_H
#define ESDATA_HANDLES_H

#include "esdata/esdata.h"
#include "shell_list.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace esdata {
class Catalog;

// The cached value of one attribute in one element (or object).
struct Value
{
    es_value_kind kind = ES_VALUE_EMPTY;
    int32_t i = 0;
    double d = 0.0;
    std::u16string s;

    void fill(es_value* out) const
    {
        out->kind = kind;
        out->i = kind == ES_VALUE_INT ? i : 0;
        out->d = kind == ES_VALUE_REAL ? d : 0.0;
        out->s = kind == ES_VALUE_TEXT ? s.c_str() : nullptr;
    }
};

// A cache is fresh while its generation equals the catalog's; a rolled-back scope bumps the
// catalog's generation so that everything is read again.
constexpr uint64_t kStale = 0;

inline const std::u16string kNoText;

struct Handle
{
    int64_t id = 0;
    bool dead = false;
};

} // namespace esdata

struct es_provider
{
    esdata::Catalog* cat = nullptr;
};

struct es_pool
{
    esdata::Catalog* cat = nullptr;
};

struct es_packet : esdata::Handle
{
    std::u16string name;
    int64_t rootId = 0;
    std::u16string uniqueValues;
    uint64_t foldersGen = esdata::kStale;
    std::vector<es_folder*> folders; // every folder of the packet, in creation order
};

namespace esdata {

// A table's schema while the catalog holds it: let go as a whole when too many are held.
struct Schema
{
    std::vector<es_attribute*> attributes;
    int64_t maxPos = 0;                  // highest stored position of the schema
    uint64_t byNameGen = esdata::kStale; // the name index is built for wide tables only
    // Keyed by the attributes' interned names, which live as long as the attributes.
    std::unordered_map<std::u16string_view, es_attribute*> byName;
    // The attributes' row ids in ascending order with their index, to place an element's
    // values read in row id order.
    uint64_t byIdGen = esdata::kStale;
    std::vector<std::pair<int64_t, uint32_t>> byId;
};

} // namespace esdata

// Tables, folders, elements and fragments stay in memory as small shells (identity,
// liveness, row id) for as long as their catalog is open, since callers keep their handles;
// what is large is read into caches bounded by count and read again when asked for.
struct es_table
{
    es_folder* folder = nullptr;
    uint64_t schemaGen = esdata::kStale;
    std::unique_ptr<esdata::Schema> schema; // null while the catalog holds no attribute of it
    // The schema is let go when the catalog holds too many attributes: listed while it holds
    // any, recent when used since the last look, pinned by the scope that added some.
    bool listed = false;
    bool recent = false;
    uint64_t scopePin = 0;
    uint64_t elementsGen = esdata::kStale;
    esdata::ShellList<es_stdsize> elements;
};

struct es_folder : esdata::Handle
{
    int64_t packetId = 0;
    int64_t parentId = 0;               // 0: the root folder of its packet
    const char16_t* name = u"";         // kept by the catalog until it closes
    uint64_t childrenGen = esdata::kStale;
    esdata::ShellList<es_folder> children;
    es_table table;
};

struct es_attribute : esdata::Handle
{
    // The handle callers are given: the object is used again for another attribute once its
    // table's schema is let go, and a handle kept past that is refused.
    const void* face = nullptr;
    es_table* table = nullptr;
    uint32_t index = 0;
    int32_t number = 0;
    int32_t oldNumber = 0;
    uint32_t type = 0;
    // Interned in the catalog: schemas repeat the same texts in table after table.
    const std::u16string* name = &esdata::kNoText;
    const std::u16string* description = &esdata::kNoText;
    const std::u16string* varName = &esdata::kNoText;
    const std::u16string* measure = &esdata::kNoText;
    const std::u16string* formula = &esdata::kNoText;
};

// The model slot and the projection list of an element are handles of their own, inside the
// element's shell; what they hold is in the element's cache.
struct es_model
{
    es_stdsize* element = nullptr;
};

struct es_projections
{
    es_stdsize* element = nullptr;
};

struct es_projection : esdata::Handle
{
    es_stdsize* element = nullptr;
    es_projection* next = nullptr; // the element's other fragment shells, newest first
};

struct es_spec : esdata::Handle
{
    es_stdsize* element = nullptr;
    es_spec* next = nullptr; // the element's other specification shells, newest first
    std::u16string libName;
    int32_t style = 0, firstPart = 0, secondPart = 0;
    std::vector<std::pair<int32_t, std::u16string>> columns;
};

namespace esdata {

struct ModelData
{
    bool present = false;
    std::u16string file; // full path of the stored copy
    std::u16string digest, name;
    int32_t version = 0;
    std::vector<uint8_t> icon;
};

struct ProjectionData
{
    std::u16string name, description, file, digest;
    uint32_t type = 0;
    uint32_t viewType = 0;
    std::vector<uint8_t> icon;
};

// What is read of an element beyond its identity, kept for the elements read last only.
struct ElementCache
{
    uint64_t valuesGen = kStale;
    std::vector<Value> values; // by attribute index of the table
    uint64_t reprGen = kStale;
    std::vector<uint8_t> repr;
    uint64_t modelGen = kStale;
    ModelData model;
    uint64_t projectionsGen = kStale;
    std::vector<es_projection*> projections;
    std::vector<ProjectionData> projectionData; // beside projections
    uint64_t specsGen = kStale;
    std::vector<es_spec*> specs;
};

} // namespace esdata

struct es_stdsize : esdata::Handle
{
    es_folder* folder = nullptr;
    const char16_t* ident = u"";                    // kept by the catalog until it closes
    const std::u16string* type = &esdata::kNoText; // interned
    es_model model;
    es_projections projections;
    es_projection* fragments = nullptr; // every fragment shell made for it, newest first
    es_spec* specShells = nullptr;      // likewise its specification shells
    std::unique_ptr<esdata::ElementCache> cache;
};

struct es_object
{
    esdata::Catalog* cat = nullptr; // null once the catalog is closed
    es_stdsize* element = nullptr;
    std::vector<esdata::Value> values; // by attribute index of the element's table
};

#endif
