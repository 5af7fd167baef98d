// Process-wide state of the store: the open catalogs, the updated-item register and the
// per-thread last error.
#ifndef ESDATA_REGISTRY_H
#define ESDATA_REGISTRY_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct es_provider;
struct es_pool;

namespace esdata {

class Catalog;

// Every handle given out is known by its address with its kind and catalog, so that a handle
// of a closed catalog or of another kind is refused without being read.
enum class HandleKind : uint8_t
{
    Provider,
    Pool,
    Packet,
    Folder,
    Table,
    Attribute,
    Element,
    Model,
    Projections,
    Projection,
    Spec
};
// A range of count objects of size bytes each from begin, every one a handle from the moment
// the returned counter (of the objects in use, from the first) includes it: of kinds[i].second
// at offset kinds[i].first inside the object. Forgotten with the catalog's other handles.
std::atomic<uint32_t>* trackRange(const void* begin, size_t size, size_t count,
                                  const std::vector<std::pair<size_t, HandleKind>>& kinds,
                                  Catalog* cat);
// object: what h stands for, when h is not the item's own address (a face); h otherwise.
void trackHandle(const void* h, HandleKind kind, Catalog* cat, void* object = nullptr);
void forgetHandles(Catalog* cat);
// A handle value for an item whose memory is used again for other items once it is let go:
// never given before and never given again, and no address of anything, so that a handle
// kept past the item's release is refused, never taken for the item in its place.
const void* newFace();
// Tracks faces with what each stands for, at once.
void trackFaces(const std::vector<std::pair<const void*, void*>>& faces, HandleKind kind,
                Catalog* cat);
// Refuses the handles hs from now on.
void forgetHandles(const std::vector<const void*>& hs);
// The open catalog of h when h is a handle of that kind, kept alive while the result is held;
// object, when given, receives what h stands for.
std::shared_ptr<Catalog> catalogFor(const void* h, HandleKind kind, void** object = nullptr);
// True when h is a handle of that kind of catalog cat (which the caller holds); object, when
// given, receives what h stands for.
bool isHandle(const void* h, HandleKind kind, const Catalog* cat, void** object = nullptr);

// readOnly: every write fails; a catalog open for writing is not shared with it.
es_provider* openCatalog(std::u16string_view path, std::u16string_view dbName, bool create,
                         bool readOnly = false);
void closeCatalog(es_provider* provider);
es_pool* poolForLibrary(std::u16string_view libraryId);

bool recordUpdated(std::u16string_view item);
const char16_t* updatedItems();

void setLastError(std::u16string_view text);
// code: an ESX_ERROR_ code (1, failed, unless told otherwise).
void setLastError(const std::string& utf8, int code = 1);
void clearLastError();
const char16_t* lastError();
int lastErrorCode();

} // namespace esdata

#endif
