#include "store_extension.h"

#include <esdata/esdata.h>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace edw {

void* storeFunction(const char* name)
{
    auto anchor = reinterpret_cast<const void*>(&provider_GetDatabaseName);
#if defined(_WIN32)
    HMODULE module = nullptr;
    if (!GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                                GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                            static_cast<LPCWSTR>(anchor), &module))
        return nullptr;
    return reinterpret_cast<void*>(GetProcAddress(module, name));
#else
    Dl_info info{};
    if (!dladdr(anchor, &info) || !info.dli_fname) return nullptr;
    void* module = dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD);
    if (!module) return nullptr;
    void* fn = dlsym(module, name);
    // The library stays loaded: the program is linked with it.
    dlclose(module);
    return fn;
#endif
}

} // namespace edw
