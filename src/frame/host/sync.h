#pragma once

// Wrappers of the host's documents and of their views, sheets and layers. Every operation
// holds the lock of its document for the duration of the host call, so that the user-interface
// thread and the import worker never call into one document at the same time.

#include "com_ptr.h"
#include "doc_lock.h"

#include <QString>

#include <memory>
#include <mutex>
#include <vector>

namespace gapi {

class IApiItem
{
public:
    virtual ~IApiItem() = default;
    // True when nothing of the host is wrapped.
    virtual bool is_null() const = 0;
};

class IDocumentView : public IApiItem
{
public:
    virtual int number() const = 0;
    virtual QString name() const = 0;
    virtual double scale() const = 0;
};

class IDocumentSheet : public IApiItem
{
public:
    virtual double width() const = 0;
    virtual double height() const = 0;
};

class IDocument : public IApiItem
{
public:
    // True while the document has no file name yet (or nothing is wrapped).
    virtual bool no_file_name() const = 0;
    virtual QString path() const = 0;
};

namespace sync {

class document_views;
class document_view;
class document_sheets;
class document_sheet;
class document2d_layers;
class document2d_layer;

// Base of the wrappers: the wrapped interface and the identifier of its document.
template <class I> class synced_item
{
public:
    synced_item(com_ptr<I> item, std::int64_t documentId)
        : m_item(std::move(item)), m_documentId(documentId)
    {}
    std::int64_t document_id() const { return m_documentId; }
    I* raw() const { return m_item.get(); }

protected:
    // Runs fn(item) under the document's lock.
    template <class Fn> auto synced(Fn&& fn) const
    {
        std::lock_guard guard(lock_of(m_documentId));
        return fn(m_item.get());
    }

    com_ptr<I> m_item;
    std::int64_t m_documentId;
};

class document final : public IDocument, public synced_item<abi::IGravisDocument>
{
public:
    explicit document(com_ptr<abi::IGravisDocument> doc);
    // Wraps a borrowed host document (adds a reference); null for none.
    static std::shared_ptr<document> wrap(abi::IGravisDocument* doc);

    bool is_null() const override { return !m_item; }
    bool no_file_name() const override;
    QString path() const override;
    int format_version() const;
    bool visible() const;

    std::shared_ptr<document_views> views() const;
    std::shared_ptr<document_sheets> sheets() const;
    std::shared_ptr<document2d_layers> layers() const;

    // These throw std::system_error with the host's failure code.
    void save() const;
    void save_as(const QString& file) const;
    void save_as_previous(const QString& file, int version) const;
    void save_preview(const QString& pngFile, int size) const;
    void close() const;
};

// Opens a document through the new API, in a window or invisibly. Throws std::system_error
// with the host's code (for instance "made by a later version") or std::runtime_error when the
// new API is missing.
std::shared_ptr<document> open_document(const QString& file, bool visible);

class document_views final : public IApiItem, public synced_item<abi::IViews>
{
public:
    using synced_item::synced_item;
    bool is_null() const override { return !m_item; }
    int count() const;
    std::shared_ptr<document_view> item(int index) const;
};

class document_view final : public IDocumentView, public synced_item<abi::IView>
{
public:
    using synced_item::synced_item;
    bool is_null() const override { return !m_item; }
    int number() const override;
    QString name() const override;
    double scale() const override;
};

class document_sheets final : public IApiItem, public synced_item<abi::ILayoutSheets>
{
public:
    using synced_item::synced_item;
    bool is_null() const override { return !m_item; }
    int count() const;
    std::shared_ptr<document_sheet> item(int index) const;
};

class document_sheet final : public IDocumentSheet, public synced_item<abi::ILayoutSheet>
{
public:
    using synced_item::synced_item;
    bool is_null() const override { return !m_item; }
    double width() const override;
    double height() const override;
};

class document2d_layers final : public IApiItem, public synced_item<abi::ILayers>
{
public:
    using synced_item::synced_item;
    bool is_null() const override { return !m_item; }
    int count() const;
    std::shared_ptr<document2d_layer> item(int index) const;
    // Numbers of the hidden layers in document order.
    std::vector<int> hidden_numbers() const;
};

class document2d_layer final : public IApiItem, public synced_item<abi::ILayer>
{
public:
    using synced_item::synced_item;
    bool is_null() const override { return !m_item; }
    int number() const;
    bool visible() const;
    void set_visible(bool visible) const;
};

} // namespace sync
} // namespace gapi
