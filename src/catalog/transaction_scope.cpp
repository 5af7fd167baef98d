#include "transaction_scope.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace edw {

namespace {

using TransactionFn = bool (*)(es_provider_t*);

struct TransactionFunctions
{
    TransactionFn begin = nullptr;
    TransactionFn commit = nullptr;
    TransactionFn rollback = nullptr;

    bool complete() const { return begin && commit && rollback; }
};

// Looks the functions up in the module that holds the catalog API the program is linked
// with, whatever scope the loader put it in.
TransactionFunctions lookUp()
{
    TransactionFunctions fns;
    auto anchor = reinterpret_cast<const void*>(&provider_GetDatabaseName);
#if defined(_WIN32)
    HMODULE module = nullptr;
    if (!GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                                GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                            static_cast<LPCWSTR>(anchor), &module))
        return fns;
    fns.begin = reinterpret_cast<TransactionFn>(GetProcAddress(module, "esx_Begin"));
    fns.commit = reinterpret_cast<TransactionFn>(GetProcAddress(module, "esx_Commit"));
    fns.rollback = reinterpret_cast<TransactionFn>(GetProcAddress(module, "esx_Rollback"));
#else
    Dl_info info{};
    if (!dladdr(anchor, &info) || !info.dli_fname) return fns;
    void* module = dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD);
    if (!module) return fns;
    fns.begin = reinterpret_cast<TransactionFn>(dlsym(module, "esx_Begin"));
    fns.commit = reinterpret_cast<TransactionFn>(dlsym(module, "esx_Commit"));
    fns.rollback = reinterpret_cast<TransactionFn>(dlsym(module, "esx_Rollback"));
    // The library stays loaded: the program is linked with it.
    dlclose(module);
#endif
    return fns;
}

const TransactionFunctions& functions()
{
    static const TransactionFunctions fns = lookUp();
    return fns;
}

} // namespace

TransactionScope::TransactionScope(es_provider_t* provider) : m_provider(provider)
{
    const TransactionFunctions& fns = functions();
    if (provider && fns.complete()) m_active = fns.begin(provider);
}

TransactionScope::~TransactionScope()
{
    rollback();
}

bool TransactionScope::commit()
{
    if (!m_active) return true;
    m_active = false;
    if (functions().commit(m_provider)) return true;
    functions().rollback(m_provider);
    return false;
}

void TransactionScope::rollback()
{
    if (!m_active) return;
    m_active = false;
    functions().rollback(m_provider);
}

bool TransactionScope::supported()
{
    return functions().complete();
}

} // namespace edw
