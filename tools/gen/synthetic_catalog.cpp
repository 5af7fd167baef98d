#include "synthetic_catalog.h"

#include "pngwriter.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QStringList>

#include <string>
#include <vector>

namespace gen {

namespace {

// splitmix64: small, fast and the same on every platform, so a seed means one catalog.
class Random
{
public:
    explicit Random(uint64_t seed) : m_state(seed) {}
    uint64_t next()
    {
        uint64_t z = (m_state += 0x9e3779b97f4a7c15ull);
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ull;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebull;
        return z ^ (z >> 31);
    }
    int below(int n) { return n <= 0 ? 0 : int(next() % uint64_t(n)); }
    QByteArray bytes(int n)
    {
        QByteArray b(n, Qt::Uninitialized);
        for (int i = 0; i < n; ++i)
            b[i] = char(next() & 0xff);
        return b;
    }

private:
    uint64_t m_state;
};

std::u16string u16(const QString& s)
{
    return std::u16string(reinterpret_cast<const char16_t*>(s.utf16()), size_t(s.size()));
}

struct AttributeSpec
{
    QString name, description;
    uint32_t type;
    QString varName, measure, formula;
};

// The bookkeeping and common attributes first, then numbered parameters of mixed types.
std::vector<AttributeSpec> schemaFor(int count)
{
    std::vector<AttributeSpec> s = {
        {"USS_AUTHOR", "Автор", ES_ATTR_TEXT, "", "", ""},
        {"USS_LAST_CHANGE_DATE", "Дата изменения", ES_ATTR_TEXT, "", "", ""},
        {"USS_CATEGORY_NAME", "Категория", ES_ATTR_TEXT, "", "", ""},
        {"NAME_VALUE", "Наименование", ES_ATTR_TEXT, "", "", ""},
        {"Length", "Длина", ES_ATTR_REAL, "L", "мм", ""},
        {"Width", "Ширина", ES_ATTR_REAL, "W", "мм", ""},
        {"Height", "Высота", ES_ATTR_REAL, "H", "мм", ""},
        {"MASS_VALUE", "Масса", ES_ATTR_REAL, "", "кг", ""},
        {"CODE_VALUE", "Код", ES_ATTR_TEXT, "", "", ""},
        {"NOTE_VALUE", "Примечание", ES_ATTR_TEXT, "", "", ""},
    };
    if (count < 2) count = 2;
    if (int(s.size()) > count) s.resize(size_t(count));
    for (int i = int(s.size()); i < count; ++i) {
        AttributeSpec a{QString("P%1").arg(i),
                        QString("Параметр %1").arg(i),
                        uint32_t(i % 3 + 1),
                        QString("p%1").arg(i),
                        "",
                        ""};
        if (i % 7 == 3) a.formula = "{R(A5)}*2+{A6}"; // Length and Width by number
        if (a.type != ES_ATTR_TEXT && i % 4 == 0) a.measure = "мм";
        s.push_back(a);
    }
    return s;
}

const char* const kWords[] = {"Кран",    "Задвижка", "Отвод",  "Тройник", "Фланец",
                              "Переход", "Клапан",   "Фильтр", "Насос",   "Опора"};

QString words(Random& r, int n)
{
    QStringList w;
    for (int i = 0; i < n; ++i)
        w << kWords[r.below(10)];
    return w.join(' ');
}

// A document in the sandbox host's format: layers as groups, one of them hidden.
QByteArray svgDocument(Random& r, int size, bool compressible)
{
    QByteArray doc = "<svg xmlns=\"http://www.w3.org/2000/svg\" data-version=\"231\" "
                     "width=\"200\" height=\"200\" viewBox=\"0 0 200 200\">\n"
                     "<g data-layer=\"0\">\n";
    QByteArray hidden = "</g>\n<g data-layer=\"1\" data-hidden=\"1\" display=\"none\">\n"
                        "<text x=\"10\" y=\"20\">hidden layer</text>\n</g>\n";
    if (compressible) {
        while (doc.size() + hidden.size() + 8 < size)
            doc += "<line x1=\"" + QByteArray::number(r.below(200)) + "\" y1=\"" +
                   QByteArray::number(r.below(200)) + "\" x2=\"" +
                   QByteArray::number(r.below(200)) + "\" y2=\"" +
                   QByteArray::number(r.below(200)) + "\" stroke=\"black\"/>\n";
    } else {
        doc += "<rect x=\"20\" y=\"20\" width=\"160\" height=\"160\" fill=\"none\" "
               "stroke=\"black\"/>\n<metadata>";
        int room = size - int(doc.size()) - int(hidden.size()) - 20;
        doc += r.bytes(std::max(16, room * 3 / 4)).toBase64();
        doc += "</metadata>\n";
    }
    return doc + hidden + "</svg>\n";
}

QByteArray icon(Random& r)
{
    const int w = 16, h = 16;
    QByteArray rgb(w * h * 3, Qt::Uninitialized);
    char c0 = char(r.below(256)), c1 = char(r.below(256)), c2 = char(r.below(256));
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            bool edge = x == 0 || y == 0 || x == w - 1 || y == h - 1 || x == y;
            int i = (y * w + x) * 3;
            rgb[i] = edge ? 0 : c0;
            rgb[i + 1] = edge ? 0 : c1;
            rgb[i + 2] = edge ? 0 : c2;
        }
    return encodePng(w, h, rgb);
}

bool writeIfChanged(const QString& path, const QByteArray& bytes)
{
    QFile existing(path);
    if (existing.open(QIODevice::ReadOnly) && existing.size() == bytes.size() &&
        existing.readAll() == bytes)
        return true;
    existing.close();
    QFile f(path);
    return f.open(QIODevice::WriteOnly | QIODevice::Truncate) && f.write(bytes) == bytes.size();
}

struct SourceFile
{
    QString file, icon;
};

struct ViewKind
{
    const char* name;
    uint32_t type, view;
};

// Projection and view type by view kind (0–10).
const ViewKind kViews[] = {
    {"Вид сверху", 1, 0},         {"Вид спереди", 2, 0},      {"Вид сзади", 3, 0},
    {"Вид слева", 4, 0},          {"Вид справа", 5, 0},       {"Упрощённый сверху", 1, 1},
    {"Упрощённый спереди", 2, 1}, {"Упрощённый сзади", 3, 1}, {"Упрощённый слева", 4, 1},
    {"Упрощённый справа", 5, 1},  {"Чертёжный вид", 1, 2},
};

QString xmlEscape(QString s)
{
    return s.replace('&', "&amp;").replace('<', "&lt;").replace('"', "&quot;");
}

class Generator
{
public:
    Generator(es_provider_t* p, const Options& o, const Progress& progress)
        : m_p(p), m_o(o), m_progress(progress), m_schema(schemaFor(o.attributes))
    {}

    Result run()
    {
        if (!makeFiles()) return m_result;
        int done = 0;
        bool stop = false;
        const int perScope = std::max(1, m_o.elementsPerScope);
        while (done < m_o.elements && !stop) {
            bool scoped = esx_Begin(m_p);
            int end = std::min(m_o.elements, done + perScope);
            int n = done;
            for (; n < end; ++n) {
                if (!writeElement(n)) {
                    if (scoped) esx_Rollback(m_p);
                    return m_result;
                }
                if (m_progress && !m_progress(n + 1, m_o.elements)) {
                    stop = true;
                    ++n;
                    break;
                }
            }
            if (scoped && !esx_Commit(m_p)) {
                fail("cannot commit: " + QString::fromUtf16(esx_LastError()));
                return m_result;
            }
            done = n;
            m_result.elements = done;
        }
        m_result.ok = true;
        return m_result;
    }

private:
    void fail(const QString& why)
    {
        m_result.ok = false;
        if (m_result.error.isEmpty()) m_result.error = why;
    }

    bool makeFiles()
    {
        QString dir = m_o.filesFolder.isEmpty() ? m_o.catalogPath + ".src" : m_o.filesFolder;
        if (dir.isEmpty() || !QDir().mkpath(dir)) {
            fail("cannot create the files folder " + dir);
            return false;
        }
        int count = std::max(1, m_o.distinctFiles);
        for (int i = 0; i < count; ++i) {
            Random r(m_o.seed * 1000003ull + uint64_t(i));
            bool compressible = i % 2 == 0;
            QByteArray model = compressible ? svgDocument(r, m_o.fileSize, true)
                                            : r.bytes(std::max(1, m_o.fileSize));
            QByteArray fragment = svgDocument(r, m_o.fileSize, compressible);
            SourceFile m{dir + QString("/model_%1.m3d").arg(i),
                         dir + QString("/model_%1.png").arg(i)};
            SourceFile f{dir + QString("/fragment_%1.frw").arg(i),
                         dir + QString("/fragment_%1.png").arg(i)};
            if ((m_o.model &&
                 (!writeIfChanged(m.file, model) || !writeIfChanged(m.icon, icon(r)))) ||
                (m_o.projections > 0 &&
                 (!writeIfChanged(f.file, fragment) || !writeIfChanged(f.icon, icon(r))))) {
                fail("cannot write the generated files in " + dir);
                return false;
            }
            if (m_o.model) {
                m_models.push_back(m);
                ++m_result.files;
                m_result.fileBytes += model.size();
            }
            if (m_o.projections > 0) {
                m_fragments.push_back(f);
                ++m_result.files;
                m_result.fileBytes += fragment.size();
            }
        }
        return true;
    }

    es_packet_t* packet(const QString& name)
    {
        if (auto it = m_packets.find(name); it != m_packets.end()) return it.value();
        std::u16string n = u16(name);
        es_packet_t* p = nullptr;
        for (uint32_t i = 0, c = provider_GetPacketCount(m_p); i < c && !p; ++i)
            if (packet_GetName(provider_GetPacket(m_p, i)) == n) p = provider_GetPacket(m_p, i);
        if (!p) p = provider_AddPacket(m_p, n.c_str());
        if (p) m_packets.insert(name, p);
        return p;
    }

    es_folder_t* child(es_folder_t* parent, const QString& path, const QString& name)
    {
        if (auto it = m_folders.find(path); it != m_folders.end()) return it.value();
        std::u16string n = u16(name);
        es_folder_t* f = nullptr;
        for (uint32_t i = 0, c = folder_GetChildFolderCount(parent); i < c && !f; ++i)
            if (folder_GetName(folder_GetChildFolder(parent, i)) == n)
                f = folder_GetChildFolder(parent, i);
        if (!f) f = folder_AddChildFolder(parent, n.c_str());
        if (f) m_folders.insert(path, f);
        return f;
    }

    bool writeElement(int n)
    {
        Random r(m_o.seed * 0x100000001b3ull + uint64_t(n) * 7919u + 17u);
        const QString id = QString("G%1-%2").arg(m_o.seed).arg(n, 6, 10, QChar('0'));
        const QString packetName = QString("Пакет %1").arg(n % std::max(1, m_o.packets) + 1);
        es_packet_t* pk = packet(packetName);
        if (!pk) {
            fail("cannot add the packet " + packetName);
            return false;
        }
        es_folder_t* folder = packet_GetRootFolder(pk);
        QString path = packetName;
        for (int level = 0; level < m_o.categoryDepth; ++level) {
            QString name = QString("Категория %1.%2")
                               .arg(level + 1)
                               .arg(r.below(std::max(1, m_o.categoriesPerLevel)) + 1);
            path += '\\' + name;
            folder = child(folder, path, name);
            if (!folder) {
                fail("cannot add the folder " + path);
                return false;
            }
        }
        const QString category = path;
        es_folder_t* own = folder_AddChildFolder(folder, u16("folder " + id).c_str());
        es_table_t* table = folder_GetTable(own);
        es_stdsize_t* e = table_AddStdSize(table, u16(id).c_str());
        if (!e) {
            fail("cannot add the element " + id + ": " + QString::fromUtf16(esx_LastError()));
            return false;
        }
        stdsize_SetType(e, u16(n % 3 == 0   ? "ARM_VALVE"
                               : n % 3 == 1 ? "PIPE_PART"
                                            : "EQUIPMENT")
                               .c_str());

        QDateTime changed =
            QDateTime(QDate(2024, 1, 1), QTime(8, 0)).addSecs(qint64(n) * 3607 % 31536000);
        for (size_t k = 0; k < m_schema.size(); ++k) {
            const AttributeSpec& s = m_schema[k];
            es_attribute_t* a =
                table_AddAttribute(table, u16(s.name).c_str(), u16(s.description).c_str(), s.type);
            if (!a) {
                fail("cannot add the attribute " + s.name + " to " + id);
                return false;
            }
            if (!s.varName.isEmpty()) attribute_SetVarName(a, u16(s.varName).c_str());
            if (!s.measure.isEmpty()) attribute_SetMeasure(a, u16(s.measure).c_str());
            if (!s.formula.isEmpty()) attribute_SetFormula(a, u16(s.formula).c_str());
            bool ok = true;
            if (s.name == "USS_AUTHOR")
                ok = stdsize_SetValueS(e, a, u"user\\pc");
            else if (s.name == "USS_LAST_CHANGE_DATE")
                ok = stdsize_SetValueS(e, a, u16(changed.toString("dd.MM.yyyy hh:mm:ss")).c_str());
            else if (s.name == "USS_CATEGORY_NAME")
                ok = stdsize_SetValueS(e, a, u16(category).c_str());
            else if (s.type == ES_ATTR_INT)
                ok = stdsize_SetValueI(e, a, r.below(2000) - 100);
            else if (s.type == ES_ATTR_REAL)
                ok = stdsize_SetValueD(e, a, double(r.below(1000000)) / 100.0);
            else
                ok = stdsize_SetValueS(e, a, u16(words(r, 1 + r.below(3))).c_str());
            if (!ok) {
                fail("cannot set the value " + s.name + " of " + id);
                return false;
            }
        }

        if (!m_models.empty()) {
            const SourceFile& m = m_models[size_t(r.below(int(m_models.size())))];
            if (!model_SetModelEx(stdsize_GetModel(e), u16(m.file).c_str(), u16(m.icon).c_str(),
                                  u16("Модель " + id).c_str(), 1 + r.below(3))) {
                fail("cannot store the model of " + id);
                return false;
            }
        }
        es_projections_t* list = stdsize_GetProjections(e);
        for (int j = 0; j < m_o.projections && !m_fragments.empty(); ++j) {
            const SourceFile& f = m_fragments[size_t(r.below(int(m_fragments.size())))];
            const ViewKind& v = kViews[j % 11];
            if (!projections_AddProjectionEx(list, u16(QString::fromUtf8(v.name)).c_str(),
                                             u16(f.file).c_str(), u16(f.icon).c_str(), v.type,
                                             u16(QString("Проекция %1").arg(j + 1)).c_str(),
                                             v.view)) {
                fail("cannot store a projection of " + id);
                return false;
            }
        }
        if (m_o.representation) {
            QByteArray repr = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<representation id=\"" +
                              id.toUtf8() + "\" scale=\"" + QByteArray::number(1 + r.below(4)) +
                              "\">\n  <symbol kind=\"" + QByteArray::number(r.below(12)) +
                              "\"/>\n</representation>\n";
            if (!stdsize_SetRepresentationData(e, repr.constData(), size_t(repr.size()))) {
                fail("cannot store the representation of " + id);
                return false;
            }
        }
        if (m_o.specification && !runSpec(packetName, id, r)) {
            fail("cannot store the specification of " + id + ": " +
                 QString::fromUtf16(esx_LastError()));
            return false;
        }
        return true;
    }

    bool runSpec(const QString& packetName, const QString& id, Random& r)
    {
        auto number = [&](const char* name) -> QString {
            for (size_t k = 0; k < m_schema.size(); ++k)
                if (m_schema[k].name == name) return QString::number(k + 1);
            return "1";
        };
        QString xml = QString("<?xml version=\"1.0\" encoding=\"utf-8\"?><commands>"
                              "<command type=\"create_spec\"><stdSize packet=\"%1\" id=\"%2\"/>"
                              "<spec styleNum=\"%3\" libName=\"Оборудование\" firstPart=\"1\" "
                              "secondPart=\"%4\"><column num=\"1\" formula=\"{A%5}\"/>"
                              "<column num=\"2\" formula=\"{A%6}\"/><column num=\"3\" "
                              "formula=\"{R(A%7)}\"/></spec></command></commands>")
                          .arg(xmlEscape(packetName), xmlEscape(id))
                          .arg(1 + r.below(3))
                          .arg(r.below(4))
                          .arg(number("NAME_VALUE"), number("CODE_VALUE"), number("MASS_VALUE"));
        return provider_RunCommand(m_p, u16(xml).c_str());
    }

    es_provider_t* m_p;
    const Options& m_o;
    const Progress& m_progress;
    std::vector<AttributeSpec> m_schema;
    std::vector<SourceFile> m_models, m_fragments;
    QHash<QString, es_packet_t*> m_packets;
    QHash<QString, es_folder_t*> m_folders;
    Result m_result;
};

} // namespace

Result fillCatalog(es_provider_t* provider, const Options& options, const Progress& progress)
{
    if (!provider) {
        Result r;
        r.error = "no catalog";
        return r;
    }
    Options o = options;
    if (o.catalogPath.isEmpty()) o.catalogPath = QString::fromUtf16(esx_CatalogPath(provider));
    return Generator(provider, o, progress).run();
}

Result generateCatalog(const Options& options, const Progress& progress)
{
    Result r;
    if (options.catalogPath.isEmpty()) {
        r.error = "no catalog path";
        return r;
    }
    QFileInfo info(options.catalogPath);
    QDir().mkpath(info.absolutePath());
    es_provider_t* p =
        esx_OpenCatalog(u16(options.catalogPath).c_str(), u16(options.databaseName).c_str(), true);
    if (!p) {
        r.error = "cannot open " + options.catalogPath + ": " + QString::fromUtf16(esx_LastError());
        return r;
    }
    r = fillCatalog(p, options, progress);
    esx_CloseCatalog(p);
    return r;
}

} // namespace gen
