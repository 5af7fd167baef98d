// The host's automation module.
#include "host_objects.h"

GAPI_MODULE_ENTRY gapi::abi::IUnknown* GAPI_CALL CreateGravisObject()
{
    return sandbox::create_automation();
}
