#include "module.h"

#include "host_error.h"

namespace gapi::host {

load_result load_object(const std::filesystem::path& folder, const std::filesystem::path& module,
                        const char* entry, const abi::iid_t& iid, const char* iidText)
{
    load_result result;
    if (folder.empty()) return result;
    void* handle = open_module(folder / module);
    if (!handle) {
        result.status = load_status::not_loaded;
        return result;
    }
    // The host keeps its modules loaded itself; this reference is dropped on every path.
    struct unload
    {
        void* h;
        ~unload() { close_module(h); }
    } guard{handle};

    auto create = reinterpret_cast<abi::create_object_fn>(module_symbol(handle, entry));
    if (!create) {
        result.status = load_status::no_entry;
        return result;
    }
    result.status = load_status::no_interface;
    abi::IUnknown* created = create();
    if (!created) return result;
    void* wanted = nullptr;
    const abi::result_t code = created->QueryInterface(iid, &wanted);
    created->Release();
    if (code == abi::e_nointerface || (!abi::failed(code) && !wanted)) return result;
    if (abi::failed(code)) throw_host_error(code, iidText);
    result.status = load_status::loaded;
    result.object = static_cast<abi::IUnknown*>(wanted);
    return result;
}

} // namespace gapi::host
