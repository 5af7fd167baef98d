#pragma once

// Loading an object from a module of the host: the module lies next to the host's executable,
// its entry point creates the object, and the object is asked for one interface identity.
// Qt-free; one implementation file per platform provides the primitives.

#include "host_api.h"

#include <filesystem>
#include <string>

namespace gapi::host {

// Folder of the running executable (the path of the process's main module cut after its last
// separator); empty when the path cannot be read.
std::filesystem::path executable_folder();

enum class load_status
{
    loaded,       // the object answered the identity
    no_path,      // the executable's path could not be read
    not_loaded,   // the module did not load
    no_entry,     // the entry point is missing
    no_interface, // the object (or the entry) gave none, or answered "no such interface"
};

struct load_result
{
    load_status status = load_status::no_path;
    abi::IUnknown* object = nullptr; // a reference owned by the caller, of interface iid
};

// Loads folder/module, calls entry, asks the result for iid, unloads the module.
// A failure code other than "no such interface" is raised as std::system_error.
load_result load_object(const std::filesystem::path& folder, const std::filesystem::path& module,
                        const char* entry, const abi::iid_t& iid, const char* iidText);

// Platform primitives.
void* open_module(const std::filesystem::path& file);
void* module_symbol(void* module, const char* name);
void close_module(void* module);

} // namespace gapi::host
