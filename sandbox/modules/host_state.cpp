#include "host_state.h"

#include "host_objects.h"

#include "../../src/frame/host/com_object.h"

#include <QCoreApplication>
#include <QFile>
#include <QHash>
#include <QImage>
#include <QMap>
#include <QPainter>
#include <QSaveFile>
#include <QSvgRenderer>

#include <pugixml.hpp>

#include <map>
#include <memory>
#include <mutex>
#include <sstream>

namespace sandbox {

namespace {

struct Document
{
    QString path;
    bool visible = true;
    pugi::xml_document xml;
};

struct State
{
    std::recursive_mutex mutex;
    quintptr mainWindow = 0;
    int theme = theme_light;
    QMap<int, QString> folders;
    QStringList messages;
    QList<MessageBoxCall> boxes;
    MessagePresenter presenter;
    std::map<int, std::unique_ptr<Document>> documents;
    int nextDocument = 1;
    QString lastError;
    std::map<std::uint32_t, gapi::abi::IAppEvents*> sinks;
    std::uint32_t nextCookie = 1;
    QList<bool> longOperations;
    int messageRounds = 0;
};

// Never destroyed: module objects may still be released while the process exits.
State& state()
{
    static State* s = new State;
    return *s;
}

using Lock = std::lock_guard<std::recursive_mutex>;

pugi::xml_node svg_root(const pugi::xml_document& xml)
{
    return xml.child("svg");
}

template <class Fn> void for_each_layer(pugi::xml_node node, Fn&& fn)
{
    for (pugi::xml_node child : node.children()) {
        if (child.type() != pugi::node_element) continue;
        if (std::string_view(child.name()) == "g" && child.attribute("data-layer")) fn(child);
        for_each_layer(child, fn);
    }
}

Document* find(int id)
{
    auto it = state().documents.find(id);
    return it == state().documents.end() ? nullptr : it->second.get();
}

// Calls every sink with an added reference, so that a sink may unsubscribe while called.
template <class Fn> void each_sink(Fn&& fn)
{
    std::vector<gapi::abi::IAppEvents*> sinks;
    {
        Lock lock(state().mutex);
        for (auto& [cookie, sink] : state().sinks) {
            sink->AddRef();
            sinks.push_back(sink);
        }
    }
    for (auto* sink : sinks) {
        fn(sink);
        sink->Release();
    }
}

template <class Fn> void with_document(int id, Fn&& fn)
{
    gapi::abi::IGravisDocument* doc = document_object(id);
    if (!doc) return;
    fn(doc);
    doc->Release();
}

class String final : public gapi::com_object<gapi::abi::IStringReadOnly>
{
public:
    explicit String(const QString& s) : m_text(s) {}
    const char16_t* GAPI_CALL Data() override
    {
        return reinterpret_cast<const char16_t*>(m_text.utf16());
    }
    std::uint32_t GAPI_CALL Length() override { return std::uint32_t(m_text.size()); }

private:
    QString m_text;
};

} // namespace

void set_main_window(quintptr handle)
{
    Lock lock(state().mutex);
    state().mainWindow = handle;
}

quintptr main_window()
{
    Lock lock(state().mutex);
    return state().mainWindow;
}

void set_theme(int value)
{
    Lock lock(state().mutex);
    state().theme = value;
}

int theme()
{
    Lock lock(state().mutex);
    return state().theme;
}

void set_folder(int kind, const QString& path)
{
    Lock lock(state().mutex);
    if (path.isEmpty())
        state().folders.remove(kind);
    else
        state().folders[kind] = path;
}

QString folder(int kind)
{
    Lock lock(state().mutex);
    return state().folders.value(kind);
}

QStringList shown_messages()
{
    Lock lock(state().mutex);
    return state().messages;
}

QList<MessageBoxCall> shown_message_boxes()
{
    Lock lock(state().mutex);
    return state().boxes;
}

void clear_shown()
{
    Lock lock(state().mutex);
    state().messages.clear();
    state().boxes.clear();
}

void set_message_presenter(MessagePresenter presenter)
{
    Lock lock(state().mutex);
    state().presenter = std::move(presenter);
}

void note_long_operation(bool started)
{
    Lock lock(state().mutex);
    state().longOperations.push_back(started);
}

QList<bool> long_operation_notices()
{
    Lock lock(state().mutex);
    return state().longOperations;
}

void process_messages()
{
    {
        Lock lock(state().mutex);
        ++state().messageRounds;
    }
    QCoreApplication::processEvents();
}

int processed_message_rounds()
{
    Lock lock(state().mutex);
    return state().messageRounds;
}

// Used by the module objects.
int present_message(const QString& text, const QString& caption, int style, bool box)
{
    MessagePresenter presenter;
    {
        Lock lock(state().mutex);
        if (box)
            state().boxes.push_back({text, caption, style});
        else
            state().messages.push_back(text);
        presenter = state().presenter;
    }
    return presenter ? presenter(text, caption, style) : 1;
}

int open_document(const QString& path, bool visible)
{
    auto doc = std::make_unique<Document>();
    doc->path = path;
    doc->visible = visible;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        Lock lock(state().mutex);
        state().lastError = QStringLiteral("cannot read %1").arg(path);
        return 0;
    }
    const QByteArray data = file.readAll();
    const auto parsed = doc->xml.load_buffer(data.constData(), std::size_t(data.size()));
    const pugi::xml_node root = svg_root(doc->xml);
    int id = 0;
    {
        Lock lock(state().mutex);
        if (!parsed || !root || !root.attribute("data-version")) {
            state().lastError = QStringLiteral("not a host document: %1").arg(path);
            return 0;
        }
        if (root.attribute("data-version").as_int() > host_document_version) {
            state().lastError = QStringLiteral("made by a later version: %1").arg(path);
            return 0;
        }
        id = state().nextDocument++;
        state().documents.emplace(id, std::move(doc));
        state().lastError.clear();
    }
    if (visible) fire_document_opened(id);
    return id;
}

bool close_document(int id)
{
    fire_document_closing(id);
    Lock lock(state().mutex);
    return state().documents.erase(id) > 0;
}

QList<DocumentInfo> documents()
{
    Lock lock(state().mutex);
    QList<DocumentInfo> list;
    for (auto& [id, doc] : state().documents)
        list.push_back({id, doc->path, doc->visible});
    return list;
}

DocumentInfo document(int id)
{
    Lock lock(state().mutex);
    if (Document* doc = find(id)) return {id, doc->path, doc->visible};
    return {};
}

QString last_error()
{
    Lock lock(state().mutex);
    return state().lastError;
}

bool write_sample_document(const QString& path, const QList<int>& layers, const QList<int>& hidden,
                           int version)
{
    QString text = QStringLiteral("<svg xmlns=\"http://www.w3.org/2000/svg\" data-version=\"%1\" "
                                  "width=\"200\" height=\"100\" viewBox=\"0 0 200 100\">\n")
                       .arg(version);
    int y = 10;
    for (int layer : layers) {
        const bool isHidden = hidden.contains(layer);
        text +=
            QStringLiteral("  <g data-layer=\"%1\"%2>\n")
                .arg(layer)
                .arg(isHidden ? QStringLiteral(" data-hidden=\"1\" display=\"none\"") : QString());
        text +=
            QStringLiteral("    <line x1=\"10\" y1=\"%1\" x2=\"190\" y2=\"%1\" stroke=\"black\" "
                           "stroke-width=\"2\"/>\n")
                .arg(y);
        text += QStringLiteral("  </g>\n");
        y = (y + 15) % 100;
    }
    text += QStringLiteral("</svg>\n");
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return false;
    file.write(text.toUtf8());
    return file.commit();
}

int subscriber_count()
{
    Lock lock(state().mutex);
    return int(state().sinks.size());
}

std::uint32_t advise(gapi::abi::IAppEvents* sink)
{
    Lock lock(state().mutex);
    sink->AddRef();
    const std::uint32_t cookie = state().nextCookie++;
    state().sinks.emplace(cookie, sink);
    return cookie;
}

bool unadvise(std::uint32_t cookie)
{
    gapi::abi::IAppEvents* sink = nullptr;
    {
        Lock lock(state().mutex);
        auto it = state().sinks.find(cookie);
        if (it == state().sinks.end()) return false;
        sink = it->second;
        state().sinks.erase(it);
    }
    sink->Release();
    return true;
}

bool fire_key_down(int& key, int repeat, int pressedKeys)
{
    bool all = true;
    each_sink([&](auto* s) { all = s->KeyDown(key, repeat, pressedKeys) && all; });
    return all;
}

bool fire_key_up(int& key, int repeat, int pressedKeys)
{
    bool all = true;
    each_sink([&](auto* s) { all = s->KeyUp(key, repeat, pressedKeys) && all; });
    return all;
}

bool fire_theme_changed(int value)
{
    set_theme(value);
    bool all = true;
    each_sink([&](auto* s) { all = s->ThemeChanged(value) && all; });
    return all;
}

void fire_application_closing()
{
    each_sink([&](auto* s) { s->ApplicationClosing(); });
}

bool fire_can_proceed()
{
    bool all = true;
    each_sink([&](auto* s) { all = s->CanProceed() && all; });
    return all;
}

bool fire_create_document_request(int documentType)
{
    bool all = true;
    each_sink([&](auto* s) { all = s->CreateDocumentRequest(documentType) && all; });
    return all;
}

bool fire_open_document_request(const QString& path)
{
    bool all = true;
    auto* text = new String(path);
    each_sink([&](auto* s) { all = s->OpenDocumentRequest(text) && all; });
    text->Release();
    return all;
}

void fire_document_opened(int documentId)
{
    with_document(documentId,
                  [](auto* doc) { each_sink([&](auto* s) { s->DocumentOpened(doc); }); });
}

void fire_document_activated(int documentId)
{
    with_document(documentId,
                  [](auto* doc) { each_sink([&](auto* s) { s->DocumentActivated(doc); }); });
}

void fire_document_closing(int documentId)
{
    with_document(documentId,
                  [](auto* doc) { each_sink([&](auto* s) { s->DocumentClosing(doc); }); });
}

bool fire_save_previous_request(int documentId, int version, bool& flag)
{
    bool all = true;
    with_document(documentId, [&](auto* doc) {
        each_sink(
            [&](auto* s) { all = s->SavePreviousRequest(doc, version, nullptr, flag) && all; });
    });
    return all;
}

void fire_save_previous_started(int documentId, int version)
{
    with_document(documentId, [&](auto* doc) {
        each_sink([&](auto* s) { s->SavePreviousStarted(doc, version, nullptr); });
    });
}

void fire_save_previous_finished(int documentId, int version)
{
    with_document(documentId, [&](auto* doc) {
        each_sink([&](auto* s) { s->SavePreviousFinished(doc, version, nullptr); });
    });
}

void reset()
{
    Lock lock(state().mutex);
    State& s = state();
    s.mainWindow = 0;
    s.theme = theme_light;
    s.folders.clear();
    s.messages.clear();
    s.boxes.clear();
    s.presenter = {};
    s.documents.clear();
    s.lastError.clear();
    s.longOperations.clear();
    s.messageRounds = 0;
}

QList<LayerInfo> document_layers(int id)
{
    Lock lock(state().mutex);
    QList<LayerInfo> layers;
    if (Document* doc = find(id))
        for_each_layer(svg_root(doc->xml), [&](pugi::xml_node g) {
            layers.push_back(
                {g.attribute("data-layer").as_int(), g.attribute("data-hidden").as_int() == 1});
        });
    return layers;
}

bool set_layer_hidden(int id, int number, bool hidden)
{
    Lock lock(state().mutex);
    Document* doc = find(id);
    bool found = false;
    if (doc)
        for_each_layer(svg_root(doc->xml), [&](pugi::xml_node g) {
            if (g.attribute("data-layer").as_int() != number) return;
            found = true;
            g.remove_attribute("data-hidden");
            g.remove_attribute("display");
            if (hidden) {
                g.append_attribute("data-hidden") = "1";
                g.append_attribute("display") = "none";
            }
        });
    return found;
}

int document_version(int id)
{
    Lock lock(state().mutex);
    Document* doc = find(id);
    return doc ? svg_root(doc->xml).attribute("data-version").as_int() : 0;
}

QSizeF document_size(int id)
{
    Lock lock(state().mutex);
    Document* doc = find(id);
    if (!doc) return {};
    pugi::xml_node root = svg_root(doc->xml);
    return {root.attribute("width").as_double(), root.attribute("height").as_double()};
}

static QByteArray serialize(Document* doc, int version)
{
    pugi::xml_document copy;
    copy.reset(doc->xml);
    svg_root(copy).attribute("data-version").set_value(version);
    std::ostringstream out;
    copy.save(out, "  ");
    return QByteArray::fromStdString(out.str());
}

bool save_document(int id, const QString& path, int version)
{
    QByteArray data;
    {
        Lock lock(state().mutex);
        Document* doc = find(id);
        if (!doc) return false;
        data = serialize(doc, version);
    }
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return false;
    file.write(data);
    return file.commit();
}

bool save_preview(int id, const QString& pngPath, int size)
{
    QByteArray data;
    {
        Lock lock(state().mutex);
        Document* doc = find(id);
        if (!doc) return false;
        data = serialize(doc, host_document_version);
    }
    QSvgRenderer renderer(data);
    if (!renderer.isValid() || size <= 0) return false;
    QSize target = renderer.defaultSize();
    if (target.isEmpty()) target = QSize(size, size);
    target.scale(size, size, Qt::KeepAspectRatio);
    QImage image(target, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    QPainter painter(&image);
    renderer.render(&painter);
    painter.end();
    return image.save(pngPath, "PNG");
}

} // namespace sandbox
