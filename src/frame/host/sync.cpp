#include "sync.h"

#include "gapi.h"
#include "gstring.h"
#include "host_error.h"

namespace gapi::sync {

document::document(com_ptr<abi::IGravisDocument> doc) : synced_item(std::move(doc), 0)
{
    if (m_item) m_documentId = m_item->Reference();
}

std::shared_ptr<document> document::wrap(abi::IGravisDocument* doc)
{
    if (!doc) return {};
    return std::make_shared<document>(com_ptr<abi::IGravisDocument>::share(doc));
}

bool document::no_file_name() const
{
    return !m_item || path().isEmpty();
}

QString document::path() const
{
    if (!m_item) return {};
    return synced([](abi::IGravisDocument* d) {
        abi::IStringReadOnly* s = nullptr;
        check(d->PathName(&s), abi::IGravisDocument::iid_text);
        return take_string(s);
    });
}

int document::format_version() const
{
    return m_item ? synced([](abi::IGravisDocument* d) { return d->FormatVersion(); }) : 0;
}

bool document::visible() const
{
    return m_item && synced([](abi::IGravisDocument* d) { return d->Visible(); });
}

template <class W, class I>
static std::shared_ptr<W> query_part(const com_ptr<abi::IGravisDocument>& doc, std::int64_t id)
{
    if (!doc) return {};
    std::lock_guard guard(lock_of(id));
    com_ptr<I> part = doc.query<I>();
    if (!part) return {};
    return std::make_shared<W>(std::move(part), id);
}

std::shared_ptr<document_views> document::views() const
{
    return query_part<document_views, abi::IViews>(m_item, m_documentId);
}

std::shared_ptr<document_sheets> document::sheets() const
{
    return query_part<document_sheets, abi::ILayoutSheets>(m_item, m_documentId);
}

std::shared_ptr<document2d_layers> document::layers() const
{
    return query_part<document2d_layers, abi::ILayers>(m_item, m_documentId);
}

void document::save() const
{
    if (!m_item) throw_host_error(abi::e_pointer, abi::IGravisDocument::iid_text);
    synced([](abi::IGravisDocument* d) { check(d->Save(), abi::IGravisDocument::iid_text); });
}

void document::save_as(const QString& file) const
{
    if (!m_item) throw_host_error(abi::e_pointer, abi::IGravisDocument::iid_text);
    auto name = make_string(file);
    synced([&](abi::IGravisDocument* d) {
        check(d->SaveAs(name.get()), abi::IGravisDocument::iid_text);
    });
}

void document::save_as_previous(const QString& file, int version) const
{
    if (!m_item) throw_host_error(abi::e_pointer, abi::IGravisDocument::iid_text);
    auto name = make_string(file);
    synced([&](abi::IGravisDocument* d) {
        check(d->SaveAsPrevious(name.get(), version), abi::IGravisDocument::iid_text);
    });
}

void document::save_preview(const QString& pngFile, int size) const
{
    if (!m_item) throw_host_error(abi::e_pointer, abi::IGravisDocument::iid_text);
    auto name = make_string(pngFile);
    synced([&](abi::IGravisDocument* d) {
        check(d->SavePreview(name.get(), size), abi::IGravisDocument::iid_text);
    });
}

void document::close() const
{
    if (m_item)
        synced([](abi::IGravisDocument* d) { check(d->Close(), abi::IGravisDocument::iid_text); });
}

std::shared_ptr<document> open_document(const QString& file, bool visible)
{
    com_ptr<abi::IApplication7> app = application7();
    if (!app) throw_host_error(abi::e_pointer, abi::IApplication7::iid_text);
    auto name = make_string(file);
    com_ptr<abi::IGravisDocument> doc;
    check(app->OpenDocument(name.get(), visible, doc.put()), abi::IApplication7::iid_text);
    if (!doc) throw_host_error(abi::e_pointer, abi::IApplication7::iid_text);
    return std::make_shared<document>(std::move(doc));
}

int document_views::count() const
{
    return m_item ? synced([](abi::IViews* v) { return int(v->Count()); }) : 0;
}

std::shared_ptr<document_view> document_views::item(int index) const
{
    if (!m_item) return {};
    com_ptr<abi::IView> view;
    synced([&](abi::IViews* v) { return v->Item(index, view.put()); });
    return view ? std::make_shared<document_view>(std::move(view), m_documentId) : nullptr;
}

int document_view::number() const
{
    return m_item ? synced([](abi::IView* v) { return int(v->Number()); }) : -1;
}

QString document_view::name() const
{
    if (!m_item) return {};
    return synced([](abi::IView* v) {
        abi::IStringReadOnly* s = nullptr;
        check(v->Name(&s), abi::IView::iid_text);
        return take_string(s);
    });
}

double document_view::scale() const
{
    return m_item ? synced([](abi::IView* v) { return v->Scale(); }) : 0.0;
}

int document_sheets::count() const
{
    return m_item ? synced([](abi::ILayoutSheets* s) { return int(s->Count()); }) : 0;
}

std::shared_ptr<document_sheet> document_sheets::item(int index) const
{
    if (!m_item) return {};
    com_ptr<abi::ILayoutSheet> sheet;
    synced([&](abi::ILayoutSheets* s) { return s->Item(index, sheet.put()); });
    return sheet ? std::make_shared<document_sheet>(std::move(sheet), m_documentId) : nullptr;
}

double document_sheet::width() const
{
    return m_item ? synced([](abi::ILayoutSheet* s) { return s->Width(); }) : 0.0;
}

double document_sheet::height() const
{
    return m_item ? synced([](abi::ILayoutSheet* s) { return s->Height(); }) : 0.0;
}

int document2d_layers::count() const
{
    return m_item ? synced([](abi::ILayers* l) { return int(l->Count()); }) : 0;
}

std::shared_ptr<document2d_layer> document2d_layers::item(int index) const
{
    if (!m_item) return {};
    com_ptr<abi::ILayer> layer;
    synced([&](abi::ILayers* l) { return l->Item(index, layer.put()); });
    return layer ? std::make_shared<document2d_layer>(std::move(layer), m_documentId) : nullptr;
}

std::vector<int> document2d_layers::hidden_numbers() const
{
    std::vector<int> hidden;
    if (!m_item) return hidden;
    std::lock_guard guard(lock_of(m_documentId));
    const int n = count();
    for (int i = 0; i < n; ++i)
        if (auto layer = item(i); layer && !layer->visible()) hidden.push_back(layer->number());
    return hidden;
}

int document2d_layer::number() const
{
    return m_item ? synced([](abi::ILayer* l) { return int(l->Number()); }) : -1;
}

bool document2d_layer::visible() const
{
    return m_item && synced([](abi::ILayer* l) { return l->Visible(); });
}

void document2d_layer::set_visible(bool visible) const
{
    if (m_item)
        synced([&](abi::ILayer* l) { check(l->SetVisible(visible), abi::ILayer::iid_text); });
}

} // namespace gapi::sync
