// The C exports: each checks its arguments, locks the catalog and forwards to it. Nothing
// thrown inside crosses this file; a failure becomes the function's empty result and the
// reason is kept for esx_LastError.
#include "esdata/esdata.h"

#include "catalog.h"
#include "registry.h"
#include "sql.h"
#include "text.h"

#include <QFileInfo>

#include <cmath>
#include <mutex>

using esdata::Catalog;
using esdata::view;

namespace {

constexpr const char16_t* kEmptyText = u"";
constexpr const char* kNotLive =
    "not a live handle of this kind (its catalog is closed, it is a handle of another kind, or "
    "the store let its item go and it is no longer valid)";

using esdata::HandleKind;

constexpr HandleKind kindOf(const es_provider*)
{
    return HandleKind::Provider;
}
constexpr HandleKind kindOf(const es_pool*)
{
    return HandleKind::Pool;
}
constexpr HandleKind kindOf(const es_packet*)
{
    return HandleKind::Packet;
}
constexpr HandleKind kindOf(const es_folder*)
{
    return HandleKind::Folder;
}
constexpr HandleKind kindOf(const es_table*)
{
    return HandleKind::Table;
}
constexpr HandleKind kindOf(const es_attribute*)
{
    return HandleKind::Attribute;
}
constexpr HandleKind kindOf(const es_stdsize*)
{
    return HandleKind::Element;
}
constexpr HandleKind kindOf(const es_model*)
{
    return HandleKind::Model;
}
constexpr HandleKind kindOf(const es_projections*)
{
    return HandleKind::Projections;
}
constexpr HandleKind kindOf(const es_projection*)
{
    return HandleKind::Projection;
}
constexpr HandleKind kindOf(const es_spec*)
{
    return HandleKind::Spec;
}

// What a caller's handle stands for, found while the catalog is held: most handles are the
// item's own address; an attribute's is a face that names its object only while the object
// still belongs to it. Null when the face was let go meanwhile.
template <class H> H* inward(const void* /*handle*/, void* object)
{
    return static_cast<H*>(object);
}
template <> es_attribute* inward<es_attribute>(const void* handle, void* object)
{
    auto* a = static_cast<es_attribute*>(object);
    if (a->face != handle) return nullptr;
    // Used in this call: its schema is not let go before the call ends.
    if (a->table) a->table->recent = true;
    return a;
}

// What the caller is given for an item.
template <class R> R outward(R r)
{
    return r;
}
template <> es_attribute* outward<es_attribute*>(es_attribute* a)
{
    return a ? static_cast<es_attribute*>(const_cast<void*>(a->face)) : nullptr;
}

// A handle given as an argument beside the one a call is made on: of its kind and of the
// same catalog, or the call fails. h is turned into what it stands for.
template <class H> bool ours(const Catalog& c, H*& h)
{
    void* object = nullptr;
    if (!h || !esdata::isHandle(h, kindOf(h), &c, &object)) return false;
    h = inward<H>(h, object);
    return h != nullptr;
}

bool alive(const es_provider*)
{
    return true;
}
bool alive(const es_pool*)
{
    return true;
}
bool alive(const es_packet* p)
{
    return !p->dead;
}
bool alive(const es_folder* f)
{
    return !f->dead;
}
bool alive(const es_table* t)
{
    return !t->folder->dead;
}
bool alive(const es_attribute* a)
{
    return !a->dead && !a->table->folder->dead;
}
bool alive(const es_stdsize* e)
{
    return !e->dead;
}
bool alive(const es_model* m)
{
    return !m->element->dead;
}
bool alive(const es_projections* l)
{
    return !l->element->dead;
}
bool alive(const es_projection* p)
{
    return !p->dead && !p->element->dead;
}
bool alive(const es_spec* s)
{
    return !s->dead && !s->element->dead;
}

template <class F, class R> R guarded(Catalog* cat, R fail, F&& f)
{
    try {
        std::lock_guard lock(cat->mutex);
        return f(*cat);
    } catch (const esdata::StoreError& e) {
        esdata::setLastError(std::string(e.what()), int(e.fault));
    } catch (const std::exception& e) {
        esdata::setLastError(std::string(e.what()));
    } catch (...) {
        esdata::setLastError(std::string("unexpected failure"));
    }
    return fail;
}

// Runs f(catalog) on a live handle; fail for a null or dead one. h, the caller's argument, is
// turned into what it stands for before f runs, and a handle f returns into what the caller
// is given.
template <class H, class R, class F> R call(H*& h, R fail, F&& f)
{
    esdata::clearLastError();
    if (!h) {
        esdata::setLastError(std::string("null handle"));
        return fail;
    }
    // Known by address before anything of it is read: a handle of a closed catalog or of
    // another kind is refused here.
    void* object = nullptr;
    const std::shared_ptr<Catalog> owner = esdata::catalogFor(h, kindOf(h), &object);
    if (!owner) {
        esdata::setLastError(std::string(kNotLive));
        return fail;
    }
    return guarded(owner.get(), fail, [&](Catalog& cat) -> R {
        const void* handle = h;
        h = inward<H>(handle, object);
        if (!h) {
            // Let go between the look-up and the lock.
            h = static_cast<H*>(const_cast<void*>(handle));
            esdata::setLastError(std::string(kNotLive));
            return fail;
        }
        if (!alive(h)) {
            esdata::setLastError(std::string("the handle is dead (its item was deleted)"));
            return fail;
        }
        cat.noticeOtherWriters();
        return outward<R>(f(cat));
    });
}

size_t bytesOut(const std::vector<uint8_t>& bytes, const void** data)
{
    if (data) *data = bytes.empty() ? nullptr : bytes.data();
    return bytes.size();
}

void clearValue(es_value* out)
{
    if (out) *out = es_value{ES_VALUE_EMPTY, 0, 0.0, nullptr};
}

template <class H> bool valueOut(H* h, es_value* out, const esdata::Value* v)
{
    if (!v) {
        clearValue(out);
        return false;
    }
    if (out) v->fill(out);
    (void)h;
    return true;
}

esdata::Value intValue(int32_t i)
{
    esdata::Value v;
    v.kind = ES_VALUE_INT;
    v.i = i;
    return v;
}

esdata::Value realValue(double d)
{
    esdata::Value v;
    v.kind = ES_VALUE_REAL;
    v.d = d;
    return v;
}

esdata::Value textValue(const char16_t* s)
{
    esdata::Value v;
    v.kind = ES_VALUE_TEXT;
    v.s = view(s);
    return v;
}

bool objectSet(es_object* object, es_attribute* attribute, esdata::Value v)
{
    esdata::clearLastError();
    if (!object || !object->cat || !attribute) return false;
    return guarded(object->cat, false, [&](Catalog& cat) {
        if (!object->element || object->element->dead || !ours(cat, attribute) || !alive(attribute))
            return false;
        es_table* table = &object->element->folder->table;
        const size_t n = cat.attributes(table).size();
        if (attribute->table != table) return false;
        if (object->values.size() < n) object->values.resize(n);
        object->values[attribute->index] = std::move(v);
        return true;
    });
}

} // namespace

extern "C" {

// ---- pool ---------------------------------------------------------------------------------

es_pool_t* esGetLibraryProviderPool(const char16_t* libraryId)
{
    esdata::clearLastError();
    try {
        return esdata::poolForLibrary(view(libraryId));
    } catch (...) {
        return nullptr;
    }
}

es_packet_t* pool_FindPacket(es_pool_t* pool, const char16_t* packetName)
{
    return call(pool, static_cast<es_packet_t*>(nullptr),
                [&](Catalog& c) { return c.findPacket(view(packetName)); });
}

es_object_t* pool_CreateObject(es_pool_t* pool, es_stdsize_t* element, const char16_t*)
{
    if (!element) return nullptr;
    return call(pool, static_cast<es_object_t*>(nullptr), [&](Catalog& c) -> es_object_t* {
        if (!ours(c, element) || element->dead) return nullptr;
        return c.createObject(element);
    });
}

// ---- provider -----------------------------------------------------------------------------

uint32_t provider_GetPacketCount(es_provider_t* provider)
{
    return call(provider, 0u,
                [&](Catalog& c) { return static_cast<uint32_t>(c.packets().size()); });
}

es_packet_t* provider_GetPacket(es_provider_t* provider, uint32_t i)
{
    return call(provider, static_cast<es_packet_t*>(nullptr), [&](Catalog& c) -> es_packet_t* {
        const auto& list = c.packets();
        return i < list.size() ? list[i] : nullptr;
    });
}

es_packet_t* provider_AddPacket(es_provider_t* provider, const char16_t* name)
{
    return call(provider, static_cast<es_packet_t*>(nullptr),
                [&](Catalog& c) { return c.addPacket(view(name)); });
}

const char16_t* provider_GetDatabaseName(es_provider_t* provider)
{
    return call(provider, kEmptyText, [&](Catalog& c) { return c.databaseName().c_str(); });
}

bool provider_RunCommand(es_provider_t* provider, const char16_t* commandXml)
{
    return call(provider, false, [&](Catalog& c) { return c.runCommand(view(commandXml)); });
}

// ---- packet -------------------------------------------------------------------------------

const char16_t* packet_GetName(es_packet_t* packet)
{
    return call(packet, kEmptyText, [&](Catalog&) { return packet->name.c_str(); });
}

es_folder_t* packet_GetRootFolder(es_packet_t* packet)
{
    return call(packet, static_cast<es_folder_t*>(nullptr),
                [&](Catalog& c) { return c.rootFolder(packet); });
}

es_provider_t* packet_GetProvider(es_packet_t* packet)
{
    return call(packet, static_cast<es_provider_t*>(nullptr),
                [&](Catalog& c) { return &c.provider; });
}

es_stdsize_t* packet_FindStdSize(es_packet_t* packet, const char16_t* id)
{
    return call(packet, static_cast<es_stdsize_t*>(nullptr),
                [&](Catalog& c) { return c.findElement(packet, view(id)); });
}

const char16_t* packet_GetAttributeUniqueValues(es_packet_t* packet, const char16_t* attributeName)
{
    return call(packet, kEmptyText,
                [&](Catalog& c) { return c.uniqueValues(packet, view(attributeName)).c_str(); });
}

// ---- folder -------------------------------------------------------------------------------

const char16_t* folder_GetName(es_folder_t* folder)
{
    return call(folder, kEmptyText, [&](Catalog&) { return folder->name; });
}

es_packet_t* folder_GetPacket(es_folder_t* folder)
{
    return call(folder, static_cast<es_packet_t*>(nullptr),
                [&](Catalog& c) { return c.packetById(folder->packetId); });
}

es_folder_t* folder_GetParentFolder(es_folder_t* folder)
{
    return call(folder, static_cast<es_folder_t*>(nullptr),
                [&](Catalog& c) { return c.parentFolder(folder); });
}

uint32_t folder_GetChildFolderCount(es_folder_t* folder)
{
    return call(folder, 0u,
                [&](Catalog& c) { return static_cast<uint32_t>(c.children(folder).size()); });
}

es_folder_t* folder_GetChildFolder(es_folder_t* folder, uint32_t i)
{
    return call(folder, static_cast<es_folder_t*>(nullptr), [&](Catalog& c) -> es_folder_t* {
        const auto& list = c.children(folder);
        return i < list.size() ? list[i] : nullptr;
    });
}

es_folder_t* folder_AddChildFolder(es_folder_t* folder, const char16_t* name)
{
    return call(folder, static_cast<es_folder_t*>(nullptr),
                [&](Catalog& c) { return c.addChild(folder, view(name)); });
}

bool folder_DeleteChildFolder(es_folder_t* folder, es_folder_t* child)
{
    if (!child) return false;
    return call(folder, false, [&](Catalog& c) {
        return ours(c, child) && !child->dead && c.deleteChild(folder, child);
    });
}

es_table_t* folder_GetTable(es_folder_t* folder)
{
    return call(folder, static_cast<es_table_t*>(nullptr),
                [&](Catalog&) { return &folder->table; });
}

// ---- table --------------------------------------------------------------------------------

es_folder_t* table_GetFolder(es_table_t* table)
{
    return call(table, static_cast<es_folder_t*>(nullptr), [&](Catalog&) { return table->folder; });
}

uint32_t table_GetAttributeCount(es_table_t* table)
{
    return call(table, 0u,
                [&](Catalog& c) { return static_cast<uint32_t>(c.attributes(table).size()); });
}

es_attribute_t* table_GetAttribute(es_table_t* table, uint32_t i)
{
    return call(table, static_cast<es_attribute_t*>(nullptr), [&](Catalog& c) -> es_attribute_t* {
        const auto& list = c.attributes(table);
        return i < list.size() ? list[i] : nullptr;
    });
}

es_attribute_t* table_FindAttribute(es_table_t* table, const char16_t* name)
{
    return call(table, static_cast<es_attribute_t*>(nullptr),
                [&](Catalog& c) { return c.findAttribute(table, view(name)); });
}

es_attribute_t* table_AddAttribute(es_table_t* table, const char16_t* name,
                                   const char16_t* description, uint32_t type)
{
    return call(table, static_cast<es_attribute_t*>(nullptr), [&](Catalog& c) {
        return c.addAttribute(table, view(name), view(description), type);
    });
}

es_attribute_t* esx_AddAttributeEx(es_table_t* table, const char16_t* name,
                                   const char16_t* description, uint32_t type, int32_t number,
                                   int32_t oldNumber, const char16_t* varName,
                                   const char16_t* measure, const char16_t* formula)
{
    return call(table, static_cast<es_attribute_t*>(nullptr), [&](Catalog& c) {
        const esdata::AttrFields fields{number, oldNumber, view(varName), view(measure),
                                        view(formula)};
        return c.addAttribute(table, view(name), view(description), type, &fields);
    });
}

uint32_t table_GetStdSizeCount(es_table_t* table)
{
    return call(table, 0u,
                [&](Catalog& c) { return static_cast<uint32_t>(c.elements(table).size()); });
}

es_stdsize_t* table_GetStdSize(es_table_t* table, uint32_t i)
{
    return call(table, static_cast<es_stdsize_t*>(nullptr), [&](Catalog& c) -> es_stdsize_t* {
        const auto& list = c.elements(table);
        return i < list.size() ? list[i] : nullptr;
    });
}

es_stdsize_t* table_AddStdSize(es_table_t* table, const char16_t* id)
{
    return call(table, static_cast<es_stdsize_t*>(nullptr),
                [&](Catalog& c) { return c.addElement(table, view(id)); });
}

bool table_DeleteStdSize(es_table_t* table, es_stdsize_t* element)
{
    if (!element) return false;
    return call(table, false, [&](Catalog& c) {
        return ours(c, element) && !element->dead && c.deleteElement(table, element);
    });
}

// ---- stdsize ------------------------------------------------------------------------------

const char16_t* stdsize_GetID(es_stdsize_t* element)
{
    return call(element, kEmptyText, [&](Catalog&) { return element->ident; });
}

const char16_t* stdsize_GetType(es_stdsize_t* element)
{
    return call(element, kEmptyText, [&](Catalog&) { return element->type->c_str(); });
}

bool stdsize_SetType(es_stdsize_t* element, const char16_t* type)
{
    return call(element, false, [&](Catalog& c) { return c.setType(element, view(type)); });
}

es_table_t* stdsize_GetTable(es_stdsize_t* element)
{
    return call(element, static_cast<es_table_t*>(nullptr),
                [&](Catalog&) { return &element->folder->table; });
}

bool stdsize_GetValue(es_stdsize_t* element, es_attribute_t* attribute, es_value* out)
{
    clearValue(out);
    if (!attribute) return false;
    return call(element, false, [&](Catalog& c) {
        if (!ours(c, attribute) || !alive(attribute)) return false;
        return valueOut(element, out, c.value(element, attribute));
    });
}

bool stdsize_GetValueByName(es_stdsize_t* element, const char16_t* name, es_value* out)
{
    clearValue(out);
    return call(element, false, [&](Catalog& c) {
        es_attribute* a = c.findAttribute(&element->folder->table, view(name));
        return a && valueOut(element, out, c.value(element, a));
    });
}

bool stdsize_SetValueI(es_stdsize_t* element, es_attribute_t* attribute, int32_t value)
{
    if (!attribute) return false;
    return call(element, false, [&](Catalog& c) {
        return ours(c, attribute) && alive(attribute) &&
               c.setValue(element, attribute, intValue(value));
    });
}

// A real value is a finite number: not a number and infinities have no stored form.
static bool finiteReal(double value)
{
    if (std::isfinite(value)) return true;
    esdata::setLastError(std::string("a real value must be a finite number"));
    return false;
}

bool stdsize_SetValueD(es_stdsize_t* element, es_attribute_t* attribute, double value)
{
    esdata::clearLastError();
    if (!attribute || !finiteReal(value)) return false;
    return call(element, false, [&](Catalog& c) {
        return ours(c, attribute) && alive(attribute) &&
               c.setValue(element, attribute, realValue(value));
    });
}

bool stdsize_SetValueS(es_stdsize_t* element, es_attribute_t* attribute, const char16_t* value)
{
    if (!attribute) return false;
    return call(element, false, [&](Catalog& c) {
        return ours(c, attribute) && alive(attribute) &&
               c.setValue(element, attribute, textValue(value));
    });
}

es_model_t* stdsize_GetModel(es_stdsize_t* element)
{
    return call(element, static_cast<es_model_t*>(nullptr),
                [&](Catalog&) { return &element->model; });
}

es_projections_t* stdsize_GetProjections(es_stdsize_t* element)
{
    return call(element, static_cast<es_projections_t*>(nullptr),
                [&](Catalog&) { return &element->projections; });
}

uint32_t stdsize_GetSpecificationCount(es_stdsize_t* element)
{
    return call(element, 0u,
                [&](Catalog& c) { return static_cast<uint32_t>(c.specs(element).size()); });
}

es_spec_t* stdsize_GetSpecification(es_stdsize_t* element, uint32_t i)
{
    return call(element, static_cast<es_spec_t*>(nullptr), [&](Catalog& c) -> es_spec_t* {
        const auto& list = c.specs(element);
        return i < list.size() ? list[i] : nullptr;
    });
}

size_t stdsize_GetRepresentationData(es_stdsize_t* element, const void** data)
{
    if (data) *data = nullptr;
    return call(element, size_t(0),
                [&](Catalog& c) { return bytesOut(c.representation(element), data); });
}

bool stdsize_SetRepresentationData(es_stdsize_t* element, const void* data, size_t size)
{
    if (!data) size = 0;
    return call(element, false,
                [&](Catalog& c) { return c.setRepresentation(element, data, size); });
}

// ---- attribute ----------------------------------------------------------------------------

int32_t attribute_GetNumber(es_attribute_t* attribute)
{
    return call(attribute, 0, [&](Catalog& c) {
        c.attributes(attribute->table);
        return attribute->number;
    });
}

bool attribute_SetNumber(es_attribute_t* attribute, int32_t number)
{
    return call(attribute, false,
                [&](Catalog& c) { return c.setAttributeNumber(attribute, number, false); });
}

int32_t attribute_GetOldNumber(es_attribute_t* attribute)
{
    return call(attribute, 0, [&](Catalog& c) {
        c.attributes(attribute->table);
        return attribute->oldNumber;
    });
}

bool attribute_SetOldNumber(es_attribute_t* attribute, int32_t number)
{
    return call(attribute, false,
                [&](Catalog& c) { return c.setAttributeNumber(attribute, number, true); });
}

// Attribute fields are refreshed with their table's schema after a rolled-back scope.
#define ESDATA_ATTRIBUTE_TEXT(fn, member)                                                          \
    const char16_t* fn(es_attribute_t* attribute)                                                  \
    {                                                                                              \
        return call(attribute, kEmptyText, [&](Catalog& c) {                                       \
            c.attributes(attribute->table);                                                        \
            return attribute->member->c_str();                                                     \
        });                                                                                        \
    }

ESDATA_ATTRIBUTE_TEXT(attribute_GetName, name)
ESDATA_ATTRIBUTE_TEXT(attribute_GetDescription, description)
ESDATA_ATTRIBUTE_TEXT(attribute_GetVarName, varName)
ESDATA_ATTRIBUTE_TEXT(attribute_GetMeasure, measure)
ESDATA_ATTRIBUTE_TEXT(attribute_GetFormula, formula)
#undef ESDATA_ATTRIBUTE_TEXT

uint32_t attribute_GetType(es_attribute_t* attribute)
{
    return call(attribute, 0u, [&](Catalog& c) {
        c.attributes(attribute->table);
        return attribute->type;
    });
}

bool attribute_SetVarName(es_attribute_t* attribute, const char16_t* varName)
{
    return call(attribute, false, [&](Catalog& c) {
        return c.setAttributeText(attribute, esdata::AttrText::VarName, view(varName));
    });
}

bool attribute_SetMeasure(es_attribute_t* attribute, const char16_t* measure)
{
    return call(attribute, false, [&](Catalog& c) {
        return c.setAttributeText(attribute, esdata::AttrText::Measure, view(measure));
    });
}

bool attribute_SetFormula(es_attribute_t* attribute, const char16_t* formula)
{
    return call(attribute, false, [&](Catalog& c) {
        return c.setAttributeText(attribute, esdata::AttrText::Formula, view(formula));
    });
}

// ---- model --------------------------------------------------------------------------------

bool model_Clear(es_model_t* model)
{
    return call(model, false, [&](Catalog& c) { return c.clearModel(model); });
}

bool model_IsEmpty(es_model_t* model)
{
    return call(model, true, [&](Catalog& c) { return !c.model(model->element).present; });
}

const char16_t* model_GetModelFile(es_model_t* model)
{
    return call(model, kEmptyText,
                [&](Catalog& c) { return c.model(model->element).file.c_str(); });
}

const char16_t* model_GetModelName(es_model_t* model)
{
    return call(model, kEmptyText,
                [&](Catalog& c) { return c.model(model->element).name.c_str(); });
}

size_t model_GetIconData(es_model_t* model, const void** data)
{
    if (data) *data = nullptr;
    return call(model, size_t(0),
                [&](Catalog& c) { return bytesOut(c.model(model->element).icon, data); });
}

const char16_t* model_GetDigest(es_model_t* model)
{
    return call(model, kEmptyText,
                [&](Catalog& c) { return c.model(model->element).digest.c_str(); });
}

int32_t model_GetVersion(es_model_t* model)
{
    return call(model, 0, [&](Catalog& c) { return c.model(model->element).version; });
}

bool model_SetModelEx(es_model_t* model, const char16_t* modelFile, const char16_t* iconFile,
                      const char16_t* name, int32_t version)
{
    return call(model, false, [&](Catalog& c) {
        return c.setModel(model, view(modelFile), view(iconFile), view(name), version);
    });
}

// ---- projections / projection -------------------------------------------------------------

uint32_t projections_GetProjectioCount(es_projections_t* list)
{
    return call(list, 0u,
                [&](Catalog& c) { return static_cast<uint32_t>(c.projections(list).size()); });
}

es_projection_t* projections_GetProjection(es_projections_t* list, uint32_t i)
{
    return call(list, static_cast<es_projection_t*>(nullptr), [&](Catalog& c) -> es_projection_t* {
        const auto& items = c.projections(list);
        return i < items.size() ? items[i] : nullptr;
    });
}

es_projection_t* projections_AddProjectionEx(es_projections_t* list, const char16_t* name,
                                             const char16_t* fragmentFile, const char16_t* iconFile,
                                             uint32_t type, const char16_t* description,
                                             uint32_t viewType)
{
    return call(list, static_cast<es_projection_t*>(nullptr), [&](Catalog& c) {
        return c.addProjection(list, view(name), view(fragmentFile), view(iconFile), type,
                               view(description), viewType);
    });
}

bool projections_DeleteProjection(es_projections_t* list, es_projection_t* projection)
{
    if (!projection) return false;
    return call(list, false, [&](Catalog& c) {
        return ours(c, projection) && alive(projection) && c.deleteProjection(list, projection);
    });
}

// Projection fields are read with their element's list (again after it left the cache or a
// rolled-back scope).
#define ESDATA_PROJECTION_FIELD(type, fn, fail, expr)                                              \
    type fn(es_projection_t* projection)                                                           \
    {                                                                                              \
        return call(projection, fail, [&](Catalog& c) -> type {                                    \
            const esdata::ProjectionData& d = c.projection(projection);                            \
            return expr;                                                                           \
        });                                                                                        \
    }

ESDATA_PROJECTION_FIELD(const char16_t*, projection_GetName, kEmptyText, d.name.c_str())
ESDATA_PROJECTION_FIELD(const char16_t*, projection_GetDescription, kEmptyText,
                        d.description.c_str())
ESDATA_PROJECTION_FIELD(uint32_t, projection_GetType, 0u, d.type)
ESDATA_PROJECTION_FIELD(uint32_t, projection_GetViewType, 0u, d.viewType)
ESDATA_PROJECTION_FIELD(const char16_t*, projection_GetFragmentFile, kEmptyText, d.file.c_str())
ESDATA_PROJECTION_FIELD(const char16_t*, projection_GetDigest, kEmptyText, d.digest.c_str())
#undef ESDATA_PROJECTION_FIELD

size_t projection_GetIconData(es_projection_t* projection, const void** data)
{
    if (data) *data = nullptr;
    return call(projection, size_t(0), [&](Catalog& c) {
        return bytesOut(c.projection(projection).icon, data);
    });
}

// ---- spec ---------------------------------------------------------------------------------

const char16_t* spec_LibName(es_spec_t* spec)
{
    return call(spec, kEmptyText, [&](Catalog&) { return spec->libName.c_str(); });
}

int32_t spec_Style(es_spec_t* spec)
{
    return call(spec, 0, [&](Catalog&) { return spec->style; });
}

int32_t spec_FirstPart(es_spec_t* spec)
{
    return call(spec, 0, [&](Catalog&) { return spec->firstPart; });
}

int32_t spec_SecondPart(es_spec_t* spec)
{
    return call(spec, 0, [&](Catalog&) { return spec->secondPart; });
}

uint32_t spec_ColumnCount(es_spec_t* spec)
{
    return call(spec, 0u, [&](Catalog&) { return static_cast<uint32_t>(spec->columns.size()); });
}

int32_t spec_ColumnNumber(es_spec_t* spec, uint32_t i)
{
    return call(spec, 0,
                [&](Catalog&) { return i < spec->columns.size() ? spec->columns[i].first : 0; });
}

const char16_t* spec_ColumnFormula(es_spec_t* spec, uint32_t i)
{
    return call(spec, kEmptyText, [&](Catalog&) {
        return i < spec->columns.size() ? spec->columns[i].second.c_str() : kEmptyText;
    });
}

// ---- object -------------------------------------------------------------------------------

es_stdsize_t* object_GetStdSize(es_object_t* object)
{
    esdata::clearLastError();
    if (!object || !object->cat) return nullptr;
    return guarded(object->cat, static_cast<es_stdsize_t*>(nullptr), [&](Catalog&) {
        return object->element && !object->element->dead ? object->element : nullptr;
    });
}

bool object_GetValueByName(es_object_t* object, const char16_t* name, es_value* out)
{
    esdata::clearLastError();
    clearValue(out);
    if (!object || !object->cat) return false;
    return guarded(object->cat, false, [&](Catalog& c) {
        if (!object->element || object->element->dead) return false;
        es_attribute* a = c.findAttribute(&object->element->folder->table, view(name));
        if (!a) return false;
        if (a->index < object->values.size()) object->values[a->index].fill(out);
        return true;
    });
}

bool object_SetValueI(es_object_t* object, es_attribute_t* attribute, int32_t value)
{
    return objectSet(object, attribute, intValue(value));
}

bool object_SetValueD(es_object_t* object, es_attribute_t* attribute, double value)
{
    esdata::clearLastError();
    if (!finiteReal(value)) return false;
    return objectSet(object, attribute, realValue(value));
}

bool object_SetValueS(es_object_t* object, es_attribute_t* attribute, const char16_t* value)
{
    return objectSet(object, attribute, textValue(value));
}

void object_Delete(es_object_t* object)
{
    if (!object) return;
    if (object->cat) {
        try {
            std::lock_guard lock(object->cat->mutex);
            object->cat->deleteObject(object);
        } catch (...) {
        }
    }
    delete object;
}

// ---- drawing update -----------------------------------------------------------------------

bool esUpdateRtw(const char16_t* itemFile)
{
    esdata::clearLastError();
    try {
        // An item whose file cannot be read cannot be brought up to date.
        const QFileInfo file(esdata::toQString(view(itemFile)));
        if (!file.isFile() || !file.isReadable()) {
            esdata::setLastError(u"the item file cannot be read");
            return false;
        }
        return esdata::recordUpdated(view(itemFile));
    } catch (...) {
        return false;
    }
}

// ---- embedded store only ------------------------------------------------------------------

es_provider_t* esx_OpenCatalog(const char16_t* path, const char16_t* dbName, bool create)
{
    esdata::clearLastError();
    try {
        return esdata::openCatalog(view(path), view(dbName), create);
    } catch (const std::exception& e) {
        esdata::setLastError(std::string(e.what()));
    } catch (...) {
    }
    return nullptr;
}

es_provider_t* esx_OpenCatalogForReading(const char16_t* path)
{
    esdata::clearLastError();
    try {
        return esdata::openCatalog(view(path), u"", false, true);
    } catch (const std::exception& e) {
        esdata::setLastError(std::string(e.what()));
    } catch (...) {
    }
    return nullptr;
}

void esx_CloseCatalog(es_provider_t* provider)
{
    esdata::clearLastError();
    if (!provider) return;
    try {
        esdata::closeCatalog(provider);
    } catch (...) {
    }
}

const char16_t* esx_CatalogPath(es_provider_t* provider)
{
    return call(provider, kEmptyText, [&](Catalog& c) { return c.path().c_str(); });
}

// The scope keeps the catalog locked for its thread until it ends, so another thread's calls
// wait instead of slipping into it.
bool esx_Begin(es_provider_t* provider)
{
    return call(provider, false, [&](Catalog& c) {
        c.begin();
        c.mutex.lock();
        return true;
    });
}

bool esx_Commit(es_provider_t* provider)
{
    return call(provider, false, [&](Catalog& c) {
        c.commit();
        c.mutex.unlock();
        return true;
    });
}

bool esx_Rollback(es_provider_t* provider)
{
    return call(provider, false, [&](Catalog& c) {
        c.rollback();
        c.mutex.unlock();
        return true;
    });
}

const char16_t* esx_StoreFileAhead(es_provider_t* provider, const char16_t* path, bool move)
{
    esdata::clearLastError();
    if (!provider || !path) {
        esdata::setLastError(std::string("null handle"));
        return nullptr;
    }
    // No lock: the catalog may be held by a transaction scope of the thread that will write.
    try {
        thread_local std::u16string stored;
        const std::shared_ptr<Catalog> owner = esdata::catalogFor(provider, kindOf(provider));
        if (!owner) throw std::runtime_error("not a live catalog");
        stored = owner->storeAhead(view(path), move);
        return stored.c_str();
    } catch (const esdata::StoreError& e) {
        esdata::setLastError(std::string(e.what()), int(e.fault));
    } catch (const std::exception& e) {
        esdata::setLastError(std::string(e.what()));
    } catch (...) {
        esdata::setLastError(std::string("unexpected failure"));
    }
    return nullptr;
}

uint32_t esx_RemoveUnusedFiles(es_provider_t* provider, const char16_t* const* paths,
                               uint32_t count)
{
    return call(provider, uint32_t(0), [&](Catalog& c) {
        std::vector<std::u16string> files;
        files.reserve(paths ? count : 0);
        for (uint32_t i = 0; paths && i < count; ++i)
            if (paths[i]) files.emplace_back(paths[i]);
        return c.removeUnusedFiles(files);
    });
}

const char16_t* esx_UpdatedRtw(void)
{
    try {
        return esdata::updatedItems();
    } catch (...) {
        return kEmptyText;
    }
}

const char16_t* esx_LastError(void)
{
    return esdata::lastError();
}

int esx_LastErrorCode(void)
{
    return esdata::lastErrorCode();
}

bool esx_CheckIntegrity(es_provider_t* provider)
{
    return call(provider, false, [&](Catalog& c) { return c.checkIntegrity(); });
}

void esx_TestFailWrite(uint32_t n)
{
    esdata::failWriteAt(n);
}

} // extern "C"
