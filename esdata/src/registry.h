// Process-wide state of the store: the open catalogs, the updated-item register and the
// per-thread last error.
#ifndef ESDATA_REGISTRY_H
#define ESDATA_REGISTRY_H

#include <string>
#include <string_view>

struct es_provider;
struct es_pool;

namespace esdata {

class Catalog;

es_provider* openCatalog(std::u16string_view path, std::u16string_view dbName, bool create);
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
