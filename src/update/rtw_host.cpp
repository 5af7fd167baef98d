// The register's host: the catalog items of the new-API application.

#include "update/host_items.h"
#include "update/rtw_register.h"

#include "frame/host/gapi.h"
#include "frame/host/gstring.h"
#include "frame/host/host_error.h"

#include <esdata/esdata.h>

#include <string>

namespace edw {
namespace {

using namespace gapi::abi;

template <class T> gapi::com_ptr<T> required(gapi::com_ptr<T> p)
{
    if (!p) gapi::throw_host_error(e_pointer, T::iid_text);
    return p;
}

class HostItem final : public RtwItem
{
public:
    explicit HostItem(gapi::com_ptr<ICatalogItem> item) : m_item(std::move(item)) {}

    QString filePath() override
    {
        IStringReadOnly* text = nullptr;
        gapi::check(m_item->FilePath(&text), ICatalogItem::iid_text);
        return gapi::take_string(text);
    }
    QString secondText() override
    {
        IStringReadOnly* text = nullptr;
        gapi::check(m_item->SecondText(&text), ICatalogItem::iid_text);
        return gapi::take_string(text);
    }
    void prepareUpdate() override
    {
        gapi::check(m_item->SetUpdateState(0), ICatalogItem::iid_text);
    }
    void reload(const QString& key, const QString& secondText) override
    {
        gapi::com_ptr<IItemReloadService> service;
        gapi::check(m_item->ReloadService(service.put()), ICatalogItem::iid_text);
        required(service);
        const auto keyText = gapi::make_string(key);
        const auto second = gapi::make_string(secondText);
        gapi::com_ptr<IItemReload> reload;
        gapi::check(service->CreateReload(keyText.get(), second.get(), reload.put()),
                    IItemReloadService::iid_text);
        required(reload);
        gapi::check(reload->Execute(-1), IItemReload::iid_text);
    }

private:
    gapi::com_ptr<ICatalogItem> m_item;
};

class HostItems final : public RtwItems
{
public:
    explicit HostItems(gapi::com_ptr<ICatalogItems> items) : m_items(std::move(items)) {}

    std::unique_ptr<RtwItem> find(const QString& name) override
    {
        const auto text = gapi::make_string(name);
        variant_t arg;
        arg.type = vt_string;
        arg.str = text.get();
        gapi::com_ptr<ICatalogItem> item;
        gapi::check(m_items->Item(&arg, item.put()), ICatalogItems::iid_text);
        if (!item) return nullptr;
        return std::make_unique<HostItem>(std::move(item));
    }

private:
    gapi::com_ptr<ICatalogItems> m_items;
};

class HostRtw final : public RtwHost
{
public:
    std::unique_ptr<RtwItems> items() override
    {
        // The application object implements the full interface; the library only declares
        // the members it calls.
        const gapi::com_ptr<IApplication7> application = required(gapi::application7());
        auto* full = static_cast<IApplication7Items*>(application.get());
        gapi::com_ptr<ICatalogItemProvider> provider;
        gapi::check(full->ItemProvider(provider.put()), IApplication7::iid_text);
        required(provider);
        gapi::com_ptr<ICatalogItems> items;
        gapi::check(provider->Items(items.put()), ICatalogItemProvider::iid_text);
        if (!items) return nullptr;
        return std::make_unique<HostItems>(std::move(items));
    }
};

} // namespace

RtwHost& hostRtwItems()
{
    static HostRtw host;
    return host;
}

bool updateRtwInDatabase(const QString& itemFile)
{
    const std::u16string file(reinterpret_cast<const char16_t*>(itemFile.utf16()),
                              static_cast<size_t>(itemFile.size()));
    return esUpdateRtw(file.c_str());
}

} // namespace edw
