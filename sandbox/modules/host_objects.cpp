// The host's objects served to the library: the automation object, the native application
// with its event source, the new-API application and the documents with their views, sheets
// and layers.

#include "host_objects.h"

#include "host_items.h"

#include "../../src/frame/host/com_object.h"
#include "../../src/update/host_items.h"

#include <QDir>
#include <QFileInfo>

#include <atomic>
#include <cstring>

namespace sandbox {

using namespace gapi::abi;

namespace {

template <class... Is> using Object = gapi::com_object<Is...>;

QString text_of(IStringReadOnly* s)
{
    if (!s) return {};
    return QString::fromUtf16(s->Data(), qsizetype(s->Length()));
}

class String final : public Object<IString>
{
public:
    explicit String(QString s) : m_text(std::move(s)) {}
    const char16_t* GAPI_CALL Data() override
    {
        return reinterpret_cast<const char16_t*>(m_text.utf16());
    }
    std::uint32_t GAPI_CALL Length() override { return std::uint32_t(m_text.size()); }
    result_t GAPI_CALL Assign(const char16_t* data, std::uint32_t length) override
    {
        m_text = QString::fromUtf16(data, qsizetype(length));
        return ok;
    }

protected:
    void* base_interface(const iid_t& iid) override
    {
        return iid == IStringReadOnly::iid ? static_cast<IStringReadOnly*>(this) : nullptr;
    }

private:
    QString m_text;
};

IStringReadOnly* new_string(const QString& s)
{
    return new String(s);
}

class Layer final : public Object<ILayer>
{
public:
    Layer(int doc, int number) : m_doc(doc), m_number(number) {}
    std::int32_t GAPI_CALL Number() override { return m_number; }
    bool GAPI_CALL Visible() override
    {
        for (const LayerInfo& l : document_layers(m_doc))
            if (l.number == m_number) return !l.hidden;
        return false;
    }
    result_t GAPI_CALL SetVisible(bool visible) override
    {
        return set_layer_hidden(m_doc, m_number, !visible) ? ok : e_fail;
    }

private:
    int m_doc;
    int m_number;
};

class Layers final : public Object<ILayers>
{
public:
    explicit Layers(int doc) : m_doc(doc) {}
    std::int32_t GAPI_CALL Count() override { return std::int32_t(document_layers(m_doc).size()); }
    result_t GAPI_CALL Item(std::int32_t index, ILayer** out) override
    {
        if (!out) return e_pointer;
        *out = nullptr;
        const QList<LayerInfo> layers = document_layers(m_doc);
        if (index < 0 || index >= layers.size()) return e_invalidarg;
        *out = new Layer(m_doc, layers[index].number);
        return ok;
    }

private:
    int m_doc;
};

class Sheet final : public Object<ILayoutSheet>
{
public:
    explicit Sheet(int doc) : m_doc(doc) {}
    double GAPI_CALL Width() override { return document_size(m_doc).width(); }
    double GAPI_CALL Height() override { return document_size(m_doc).height(); }

private:
    int m_doc;
};

class Sheets final : public Object<ILayoutSheets>
{
public:
    explicit Sheets(int doc) : m_doc(doc) {}
    // A drawing of the sandbox has one sheet, the SVG canvas.
    std::int32_t GAPI_CALL Count() override { return 1; }
    result_t GAPI_CALL Item(std::int32_t index, ILayoutSheet** out) override
    {
        if (!out) return e_pointer;
        *out = index == 0 ? new Sheet(m_doc) : nullptr;
        return *out ? ok : e_invalidarg;
    }

private:
    int m_doc;
};

class View final : public Object<IView>
{
public:
    std::int32_t GAPI_CALL Number() override { return 0; }
    result_t GAPI_CALL Name(IStringReadOnly** out) override
    {
        if (!out) return e_pointer;
        *out = new_string(QStringLiteral("Системный вид"));
        return ok;
    }
    double GAPI_CALL Scale() override { return 1.0; }
};

class Views final : public Object<IViews>
{
public:
    // One view: the whole drawing at scale 1.
    std::int32_t GAPI_CALL Count() override { return 1; }
    result_t GAPI_CALL Item(std::int32_t index, IView** out) override
    {
        if (!out) return e_pointer;
        *out = index == 0 ? new View : nullptr;
        return *out ? ok : e_invalidarg;
    }
};

class Document final : public Object<IGravisDocument>
{
public:
    explicit Document(int id) : m_id(id) {}
    std::int64_t GAPI_CALL Reference() override { return m_id; }
    result_t GAPI_CALL PathName(IStringReadOnly** out) override
    {
        if (!out) return e_pointer;
        *out = new_string(document(m_id).path);
        return ok;
    }
    std::int32_t GAPI_CALL FormatVersion() override { return document_version(m_id); }
    bool GAPI_CALL Visible() override { return document(m_id).visible; }
    result_t GAPI_CALL Save() override
    {
        const DocumentInfo info = document(m_id);
        if (info.id == 0 || info.path.isEmpty()) return e_fail;
        return save_document(m_id, info.path, host_document_version) ? ok : e_fail;
    }
    result_t GAPI_CALL SaveAs(IStringReadOnly* path) override
    {
        return save_document(m_id, text_of(path), host_document_version) ? ok : e_fail;
    }
    result_t GAPI_CALL SaveAsPrevious(IStringReadOnly* path, std::int32_t version) override
    {
        if (version != previous_document_version) return e_invalidarg;
        return save_document(m_id, text_of(path), version) ? ok : e_fail;
    }
    result_t GAPI_CALL SavePreview(IStringReadOnly* pngPath, std::int32_t size) override
    {
        return save_preview(m_id, text_of(pngPath), size) ? ok : e_fail;
    }
    result_t GAPI_CALL Close() override { return close_document(m_id) ? ok : e_fail; }

protected:
    void* other_object(const iid_t& iid) override
    {
        if (iid == IViews::iid) return static_cast<IViews*>(new Views);
        if (iid == ILayoutSheets::iid) return static_cast<ILayoutSheets*>(new Sheets(m_id));
        if (iid == ILayers::iid) return static_cast<ILayers*>(new Layers(m_id));
        return nullptr;
    }

private:
    int m_id;
};

result_t document_at(std::int32_t index, IGravisDocument** out)
{
    if (!out) return e_pointer;
    *out = nullptr;
    const QList<DocumentInfo> docs = documents();
    if (index < 0 || index >= docs.size()) return e_invalidarg;
    *out = new Document(docs[index].id);
    return ok;
}

class Automation final : public Object<IAutomation>
{
public:
    result_t GAPI_CALL Invoke(std::int32_t dispatchId, std::uint16_t kind, const variant_t* args,
                              std::uint32_t argc, variant_t* result) override
    {
        variant_t ignored;
        variant_t& r = result ? *result : ignored;
        r.type = vt_empty;
        switch (dispatchId) {
        case disp_main_window:
            if (!(kind & invoke_property_get)) return e_invalidarg;
            r.type = vt_i4;
            r.i4 = std::int32_t(main_window());
            return ok;
        case disp_document_count:
            r.type = vt_i4;
            r.i4 = std::int32_t(documents().size());
            return ok;
        case disp_document_path: {
            if (argc != 1 || args[0].type != vt_i4) return e_invalidarg;
            const QList<DocumentInfo> docs = documents();
            if (args[0].i4 < 0 || args[0].i4 >= docs.size()) return e_invalidarg;
            r.type = vt_string;
            r.str = new_string(docs[args[0].i4].path);
            break;
        }
        case disp_folder:
            if (argc != 1 || args[0].type != vt_i4) return e_invalidarg;
            r.type = vt_string;
            r.str = new_string(folder(args[0].i4));
            break;
        case disp_long_operation:
            if (argc != 1 || args[0].type != vt_bool) return e_invalidarg;
            note_long_operation(args[0].boolean != 0);
            return ok;
        case disp_process_messages:
            process_messages();
            return ok;
        case disp_message:
            if (argc != 1 || args[0].type != vt_string) return e_invalidarg;
            present_message(text_of(args[0].str), QString(), 0, false);
            r.type = vt_bool;
            r.boolean = -1;
            return ok;
        default:
            return e_notimpl;
        }
        if (!result) r.clear();
        return ok;
    }
};

class EventSource final : public Object<IEventSource>
{
public:
    result_t GAPI_CALL Advise(const char16_t* name, IAppEvents* sink,
                              std::uint32_t* cookie) override
    {
        if (!sink || !cookie || !name) return e_pointer;
        *cookie = advise(sink);
        return ok;
    }
    result_t GAPI_CALL Unadvise(std::uint32_t cookie) override
    {
        return unadvise(cookie) ? ok : e_invalidarg;
    }
};

class NativeApplication final : public Object<IGravisApplication>
{
public:
    std::int32_t GAPI_CALL ShowMessageBox(IStringReadOnly* text, IStringReadOnly* caption,
                                          std::int32_t style, std::int32_t, std::int32_t) override
    {
        return present_message(text_of(text), text_of(caption), style, true);
    }
    std::int32_t GAPI_CALL DocumentCount() override { return std::int32_t(documents().size()); }
    result_t GAPI_CALL Document(std::int32_t index, IGravisDocument** out) override
    {
        return document_at(index, out);
    }
    result_t GAPI_CALL EventSource(IEventSource** out) override
    {
        if (!out) return e_pointer;
        *out = new sandbox::EventSource;
        return ok;
    }
};

// ---- catalog items ------------------------------------------------------------------------

class ItemReload final : public Object<IItemReload>
{
public:
    ItemReload(QString name, QString key, QString secondText)
        : m_name(std::move(name)), m_key(std::move(key)), m_secondText(std::move(secondText))
    {
    }
    result_t GAPI_CALL Execute(std::int32_t) override
    {
        return reload_item(m_name, m_key, m_secondText) ? ok : e_file_not_found;
    }

private:
    QString m_name, m_key, m_secondText;
};

class ItemReloadService final : public Object<IItemReloadService>
{
public:
    explicit ItemReloadService(QString name) : m_name(std::move(name)) {}
    result_t GAPI_CALL CreateReload(IStringReadOnly* key, IStringReadOnly* secondText,
                                    IItemReload** out) override
    {
        if (!out) return e_pointer;
        *out = new ItemReload(m_name, text_of(key), text_of(secondText));
        return ok;
    }

private:
    QString m_name;
};

class CatalogItem final : public Object<ICatalogItem>
{
public:
    explicit CatalogItem(QString name) : m_name(std::move(name)) {}
    result_t GAPI_CALL SecondText(IStringReadOnly** out) override
    {
        if (!out) return e_pointer;
        *out = new_string(item_second_text(m_name));
        return ok;
    }
    result_t GAPI_CALL SetUpdateState(std::int32_t value) override
    {
        set_item_state(m_name, value);
        return ok;
    }
    result_t GAPI_CALL FilePath(IStringReadOnly** out) override
    {
        if (!out) return e_pointer;
        *out = new_string(item_path(m_name));
        return ok;
    }
    result_t GAPI_CALL ReloadService(IItemReloadService** out) override
    {
        if (!out) return e_pointer;
        *out = new ItemReloadService(m_name);
        return ok;
    }

private:
    QString m_name;
};

class CatalogItems final : public Object<ICatalogItems>
{
public:
    result_t GAPI_CALL Item(const variant_t* name, ICatalogItem** out) override
    {
        if (!out) return e_pointer;
        *out = nullptr;
        if (!name || name->type != vt_string) return e_invalidarg;
        const QString text = text_of(name->str);
        if (item_exists(text)) *out = new CatalogItem(text);
        return ok;
    }
};

class CatalogItemProvider final : public Object<ICatalogItemProvider>
{
public:
    result_t GAPI_CALL Items(ICatalogItems** out) override
    {
        if (!out) return e_pointer;
        *out = item_collection_available() ? new CatalogItems : nullptr;
        return ok;
    }
};

class Application7 final : public Object<IApplication7Items>
{
public:
    result_t GAPI_CALL ItemProvider(ICatalogItemProvider** out) override
    {
        if (!out) return e_pointer;
        *out = new CatalogItemProvider;
        return ok;
    }
    std::int32_t GAPI_CALL Theme() override { return theme(); }
    result_t GAPI_CALL Version(IStringReadOnly** out) override
    {
        if (!out) return e_pointer;
        *out = new_string(QString::fromLatin1(host_version_text));
        return ok;
    }
    std::int32_t GAPI_CALL DocumentCount() override { return std::int32_t(documents().size()); }
    result_t GAPI_CALL Document(std::int32_t index, IGravisDocument** out) override
    {
        return document_at(index, out);
    }
    result_t GAPI_CALL OpenDocument(IStringReadOnly* path, bool visible,
                                    IGravisDocument** out) override
    {
        if (!out) return e_pointer;
        *out = nullptr;
        const QString file = text_of(path);
        if (!QFileInfo::exists(file)) return e_file_not_found;
        const int id = open_document(file, visible);
        if (id == 0)
            return last_error().startsWith(QLatin1String("made by a later version"))
                       ? e_later_version
                       : e_bad_document;
        *out = new sandbox::Document(id);
        return ok;
    }
};

} // namespace

IUnknown* create_automation()
{
    return static_cast<IAutomation*>(new Automation);
}

IUnknown* create_application7()
{
    return static_cast<IApplication7*>(new Application7);
}

IUnknown* create_native_application()
{
    return static_cast<IGravisApplication*>(new NativeApplication);
}

IGravisDocument* document_object(int id)
{
    if (document(id).id == 0) return nullptr;
    return new Document(id);
}

} // namespace sandbox
