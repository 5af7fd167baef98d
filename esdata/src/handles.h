// The objects behind the opaque handles of the C API. They live in arenas of their catalog
// until it is closed, so a handle of something deleted stays readable and is known dead.
#ifndef ESDATA_HANDLES_H
#define ESDATA_HANDLES_H

#include "esdata/esdata.h"

#include <cstdint>
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
    Catalog* cat = nullptr;
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

struct es_table
{
    es_folder* folder = nullptr;
    uint64_t schemaGen = esdata::kStale;
    std::vector<es_attribute*> attributes;
    int64_t maxPos = 0;                  // highest stored position of the schema
    uint64_t byNameGen = esdata::kStale; // the name index is built for wide tables only
    // Keyed by the attributes' interned names, which live as long as the attributes.
    std::unordered_map<std::u16string_view, es_attribute*> byName;
    // The attributes' row ids in ascending order with their index, to place an element's
    // values read in row id order.
    uint64_t byIdGen = esdata::kStale;
    std::vector<std::pair<int64_t, uint32_t>> byId;
    // The schema's attributes are let go when the catalog holds too many: listed while it
    // holds any, recent when used since the last look, pinned by the scope that added some.
    bool listed = false;
    bool recent = false;
    uint64_t scopePin = 0;
    uint64_t elementsGen = esdata::kStale;
    std::vector<es_stdsize*> elements;
};

struct es_folder : esdata::Handle
{
    int64_t packetId = 0;
    int64_t parentId = 0; // 0: the root folder of its packet
    std::u16string name;
    uint64_t childrenGen = esdata::kStale;
    std::vector<es_folder*> children;
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

struct es_model
{
    es_stdsize* element = nullptr;
    uint64_t gen = esdata::kStale;
    bool present = false;
    std::u16string file; // full path of the stored copy
    std::u16string digest, name;
    int32_t version = 0;
    std::vector<uint8_t> icon;
};

struct es_projection : esdata::Handle
{
    es_stdsize* element = nullptr;
    std::u16string name, description, file, digest;
    uint32_t type = 0;
    uint32_t viewType = 0;
    std::vector<uint8_t> icon;
};

struct es_projections
{
    es_stdsize* element = nullptr;
    uint64_t gen = esdata::kStale;
    std::vector<es_projection*> items;
};

struct es_spec : esdata::Handle
{
    es_stdsize* element = nullptr;
    std::u16string libName;
    int32_t style = 0, firstPart = 0, secondPart = 0;
    std::vector<std::pair<int32_t, std::u16string>> columns;
};

struct es_stdsize : esdata::Handle
{
    es_folder* folder = nullptr;
    int64_t packetId = 0;
    std::u16string ident, type;
    uint64_t valuesGen = esdata::kStale;
    std::vector<esdata::Value> values; // by attribute index of the table
    uint64_t valuesLoad = 0;           // the last caching of values or model
    uint64_t reprGen = esdata::kStale;
    std::vector<uint8_t> repr;
    es_model model;
    es_projections projections;
    uint64_t specsGen = esdata::kStale;
    std::vector<es_spec*> specs;
};

struct es_object
{
    esdata::Catalog* cat = nullptr; // null once the catalog is closed
    es_stdsize* element = nullptr;
    std::vector<esdata::Value> values; // by attribute index of the element's table
};

#endif
