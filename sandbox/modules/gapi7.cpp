// The host's new object API module.
#include "host_objects.h"

GAPI_MODULE_ENTRY gapi::abi::IUnknown* GAPI_CALL CreateGravisApplication()
{
    return sandbox::create_application7();
}
