#pragma once

// The catalog items of the host's new object API: the application's item provider, its item
// collection, the items and their reload service. Members keep the host's published order:
// the slots the library does not call are declared as reserved placeholders so that the ones
// it calls sit at their published numbers (counting QueryInterface, AddRef and Release as 0 to
// 2). Qt-free, so that the host's modules include it as well.

#include "../frame/host/host_api.h"

#define GAPI_RESERVED_MEMBER(n)                                                                    \
    virtual result_t GAPI_CALL reserved_##n()                                                      \
    {                                                                                              \
        return e_notimpl;                                                                          \
    }

namespace gapi::abi {

// Performs the reload of one item (member 13).
struct IItemReload : IUnknown
{
    GAPI_INTERFACE_ID("3d6f1c2a-7b41-4e0c-9a55-2c8e6b1f4a31");
    GAPI_RESERVED_MEMBER(3)
    GAPI_RESERVED_MEMBER(4)
    GAPI_RESERVED_MEMBER(5)
    GAPI_RESERVED_MEMBER(6)
    GAPI_RESERVED_MEMBER(7)
    GAPI_RESERVED_MEMBER(8)
    GAPI_RESERVED_MEMBER(9)
    GAPI_RESERVED_MEMBER(10)
    GAPI_RESERVED_MEMBER(11)
    GAPI_RESERVED_MEMBER(12)
    // 13: reloads; the library passes -1 (every view of the item).
    virtual result_t GAPI_CALL Execute(std::int32_t scope) = 0;
};

struct IItemReloadService : IUnknown
{
    GAPI_INTERFACE_ID("3d6f1c2a-7b41-4e0c-9a55-2c8e6b1f4a32");
    GAPI_RESERVED_MEMBER(3)
    GAPI_RESERVED_MEMBER(4)
    GAPI_RESERVED_MEMBER(5)
    GAPI_RESERVED_MEMBER(6)
    GAPI_RESERVED_MEMBER(7)
    GAPI_RESERVED_MEMBER(8)
    GAPI_RESERVED_MEMBER(9)
    GAPI_RESERVED_MEMBER(10)
    GAPI_RESERVED_MEMBER(11)
    GAPI_RESERVED_MEMBER(12)
    GAPI_RESERVED_MEMBER(13)
    // 14: a reload of the item filed under key with the given second text.
    virtual result_t GAPI_CALL CreateReload(IStringReadOnly* key, IStringReadOnly* secondText,
                                            IItemReload** out) = 0;
};

struct ICatalogItem : IUnknown
{
    GAPI_INTERFACE_ID("3d6f1c2a-7b41-4e0c-9a55-2c8e6b1f4a33");
    GAPI_RESERVED_MEMBER(3)
    GAPI_RESERVED_MEMBER(4)
    GAPI_RESERVED_MEMBER(5)
    GAPI_RESERVED_MEMBER(6)
    GAPI_RESERVED_MEMBER(7)
    GAPI_RESERVED_MEMBER(8)
    GAPI_RESERVED_MEMBER(9)
    GAPI_RESERVED_MEMBER(10)
    // 11: the item's second text.
    virtual result_t GAPI_CALL SecondText(IStringReadOnly** out) = 0;
    GAPI_RESERVED_MEMBER(12)
    // 13: the item's update state; 0 before its catalog record is updated.
    virtual result_t GAPI_CALL SetUpdateState(std::int32_t state) = 0;
    GAPI_RESERVED_MEMBER(14)
    GAPI_RESERVED_MEMBER(15)
    // 16: the item's file.
    virtual result_t GAPI_CALL FilePath(IStringReadOnly** out) = 0;
    GAPI_RESERVED_MEMBER(17)
    GAPI_RESERVED_MEMBER(18)
    GAPI_RESERVED_MEMBER(19)
    GAPI_RESERVED_MEMBER(20)
    GAPI_RESERVED_MEMBER(21)
    GAPI_RESERVED_MEMBER(22)
    GAPI_RESERVED_MEMBER(23)
    GAPI_RESERVED_MEMBER(24)
    GAPI_RESERVED_MEMBER(25)
    GAPI_RESERVED_MEMBER(26)
    GAPI_RESERVED_MEMBER(27)
    GAPI_RESERVED_MEMBER(28)
    GAPI_RESERVED_MEMBER(29)
    GAPI_RESERVED_MEMBER(30)
    // 31: the item's reload service.
    virtual result_t GAPI_CALL ReloadService(IItemReloadService** out) = 0;
};

struct ICatalogItems : IUnknown
{
    GAPI_INTERFACE_ID("3d6f1c2a-7b41-4e0c-9a55-2c8e6b1f4a34");
    GAPI_RESERVED_MEMBER(3)
    GAPI_RESERVED_MEMBER(4)
    GAPI_RESERVED_MEMBER(5)
    GAPI_RESERVED_MEMBER(6)
    GAPI_RESERVED_MEMBER(7)
    GAPI_RESERVED_MEMBER(8)
    GAPI_RESERVED_MEMBER(9)
    GAPI_RESERVED_MEMBER(10)
    GAPI_RESERVED_MEMBER(11)
    GAPI_RESERVED_MEMBER(12)
    // 13: the item named by a string variant; *out null (and ok) when there is none.
    virtual result_t GAPI_CALL Item(const variant_t* name, ICatalogItem** out) = 0;
};

struct ICatalogItemProvider : IUnknown
{
    GAPI_INTERFACE_ID("3d6f1c2a-7b41-4e0c-9a55-2c8e6b1f4a35");
    GAPI_RESERVED_MEMBER(3)
    GAPI_RESERVED_MEMBER(4)
    GAPI_RESERVED_MEMBER(5)
    GAPI_RESERVED_MEMBER(6)
    GAPI_RESERVED_MEMBER(7)
    GAPI_RESERVED_MEMBER(8)
    GAPI_RESERVED_MEMBER(9)
    GAPI_RESERVED_MEMBER(10)
    // 11: the item collection; *out null (and ok) when the host has none.
    virtual result_t GAPI_CALL Items(ICatalogItems** out) = 0;
};

// The new-API application with its members up to the item provider: the members 3 to 7 are
// those of IApplication7, the item provider is member 20. The same object and identity.
struct IApplication7Items : IApplication7
{
    GAPI_RESERVED_MEMBER(8)
    GAPI_RESERVED_MEMBER(9)
    GAPI_RESERVED_MEMBER(10)
    GAPI_RESERVED_MEMBER(11)
    GAPI_RESERVED_MEMBER(12)
    GAPI_RESERVED_MEMBER(13)
    GAPI_RESERVED_MEMBER(14)
    GAPI_RESERVED_MEMBER(15)
    GAPI_RESERVED_MEMBER(16)
    GAPI_RESERVED_MEMBER(17)
    GAPI_RESERVED_MEMBER(18)
    GAPI_RESERVED_MEMBER(19)
    // 20: the catalog item provider.
    virtual result_t GAPI_CALL ItemProvider(ICatalogItemProvider** out) = 0;
};

} // namespace gapi::abi

#undef GAPI_RESERVED_MEMBER
