#include "gapi.h"

#include "base_app.h"
#include "host_error.h"
#include "module.h"

#include <mutex>

namespace gapi {

namespace {

std::mutex& cache_mutex()
{
    static std::mutex m;
    return m;
}

abi::IAutomation* g_automation = nullptr;
abi::IGravisApplication* g_native = nullptr;
abi::IApplication7* g_application7 = nullptr;
base_app* g_app = nullptr;

template <class I>
I* load(const std::filesystem::path& folder, const std::filesystem::path& module, const char* entry)
{
    const host::load_result r = host::load_object(folder, module, entry, I::iid, I::iid_text);
    return static_cast<I*>(r.object);
}

} // namespace

void set_application_object(base_app* app)
{
    g_app = app;
}

base_app* application_object()
{
    return g_app;
}

namespace detail {

com_ptr<abi::IAutomation> automation_from(const std::filesystem::path& folder)
{
    {
        std::lock_guard lock(cache_mutex());
        if (g_automation) return com_ptr<abi::IAutomation>::share(g_automation);
        g_automation =
            load<abi::IAutomation>(folder, abi::automation_module, abi::automation_entry);
        if (!g_automation) return {};
    }
    // Only the acquisition that filled the cache gets here.
    if (g_app) g_app->start_subscription();
    return com_ptr<abi::IAutomation>::share(g_automation);
}

com_ptr<abi::IApplication7> application7_from(const std::filesystem::path& folder)
{
    std::lock_guard lock(cache_mutex());
    if (g_application7) return com_ptr<abi::IApplication7>::share(g_application7);
    if (folder.empty())
        throw std::runtime_error(
            "Не смогли получить API7, причина: не смогли получить путь к модулю");
    const host::load_result r =
        host::load_object(folder, abi::application7_module, abi::application7_entry,
                          abi::IApplication7::iid, abi::IApplication7::iid_text);
    switch (r.status) {
    case host::load_status::not_loaded:
        throw std::runtime_error("Не смогли получить API7, причина: не смогли загрузить gAPI7.dll");
    case host::load_status::no_entry:
        throw std::runtime_error("Не смогли получить API7, причина: не смогли получить указатель "
                                 "на функцию, возвращающую интерфейс");
    default:
        break;
    }
    g_application7 = static_cast<abi::IApplication7*>(r.object);
    return com_ptr<abi::IApplication7>::share(g_application7);
}

void clear_caches()
{
    std::lock_guard lock(cache_mutex());
    for (abi::IUnknown* p :
         {static_cast<abi::IUnknown*>(g_automation), static_cast<abi::IUnknown*>(g_native),
          static_cast<abi::IUnknown*>(g_application7)})
        if (p) p->Release();
    g_automation = nullptr;
    g_native = nullptr;
    g_application7 = nullptr;
}

} // namespace detail

com_ptr<abi::IAutomation> automation()
{
    {
        std::lock_guard lock(cache_mutex());
        if (g_automation) return com_ptr<abi::IAutomation>::share(g_automation);
    }
    return detail::automation_from(host::executable_folder());
}

com_ptr<abi::IGravisApplication> native_application()
{
    std::lock_guard lock(cache_mutex());
    if (!g_native)
        g_native = load<abi::IGravisApplication>(host::executable_folder(), abi::native_module,
                                                 abi::native_application_entry);
    return com_ptr<abi::IGravisApplication>::share(g_native);
}

com_ptr<abi::IApplication7> application7()
{
    {
        std::lock_guard lock(cache_mutex());
        if (g_application7) return com_ptr<abi::IApplication7>::share(g_application7);
    }
    return detail::application7_from(host::executable_folder());
}

void forget_application7()
{
    std::lock_guard lock(cache_mutex());
    g_application7 = nullptr;
}

abi::variant_t invoke(abi::IAutomation* automation, int dispatchId, abi::invoke_kind kind,
                      const abi::variant_t* args, unsigned argc)
{
    if (!automation) throw_host_error(abi::e_pointer, abi::IAutomation::iid_text);
    abi::variant_t result;
    check(automation->Invoke(dispatchId, kind, args, argc, &result), abi::IAutomation::iid_text);
    return result;
}

} // namespace gapi
