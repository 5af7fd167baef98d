#pragma once

// The host's three application objects, each acquired on first use from its module next to
// the host's executable and cached for the life of the process.

#include "com_ptr.h"

#include <QString>

#include <filesystem>
#include <stdexcept>

namespace gapi {

class base_app;

// The automation object, or none when the host cannot give one. The first successful
// acquisition subscribes the library object to the host's application events.
com_ptr<abi::IAutomation> automation();

// The native application interface, or none.
com_ptr<abi::IGravisApplication> native_application();

// The new-API application. Throws std::runtime_error with the reason when it cannot be had.
com_ptr<abi::IApplication7> application7();

// Forgets the cached new-API application without releasing it (the host may be gone).
void forget_application7();

// The library object subscribed on the first acquisition of the automation object. Not owned.
void set_application_object(base_app* app);
base_app* application_object();

// Automation members.
// Calls a member; throws std::system_error on a failure code.
abi::variant_t invoke(abi::IAutomation* automation, int dispatchId, abi::invoke_kind kind,
                      const abi::variant_t* args = nullptr, unsigned argc = 0);

namespace detail {
// Acquisition from a given folder (the executable's folder in normal use); exposed so that
// the failure paths can be reached without moving the executable.
com_ptr<abi::IAutomation> automation_from(const std::filesystem::path& folder);
com_ptr<abi::IApplication7> application7_from(const std::filesystem::path& folder);
// Drops the caches (tests only; the library never clears them).
void clear_caches();
} // namespace detail

} // namespace gapi
