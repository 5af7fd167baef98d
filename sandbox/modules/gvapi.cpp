// The host's native API module.
#include "host_objects.h"

GAPI_MODULE_ENTRY gapi::abi::IUnknown* GAPI_CALL GetGravisApplication()
{
    return sandbox::create_native_application();
}
