#include "command.h"

#include <pugixml.hpp>

#include <QString>

#include <charconv>
#include <cstring>

namespace esdata {

namespace {

std::u16string utf16(const char* s)
{
    QString q = QString::fromUtf8(s);
    return std::u16string(reinterpret_cast<const char16_t*>(q.utf16()),
                          static_cast<size_t>(q.size()));
}

bool intAttr(const pugi::xml_node& n, const char* name, int32_t& out)
{
    pugi::xml_attribute a = n.attribute(name);
    if (!a) return false;
    const char* s = a.value();
    const char* e = s + std::strlen(s);
    while (s < e && (*s == ' ' || *s == '\t'))
        ++s;
    if (s < e && *s == '+') ++s;
    auto r = std::from_chars(s, e, out);
    return r.ec == std::errc() && r.ptr == e && s != e;
}

} // namespace

bool parseCommands(std::u16string_view xml, std::vector<CreateSpec>& out, std::string& error)
{
    out.clear();
    QByteArray utf8 = QString::fromUtf16(xml.data(), static_cast<qsizetype>(xml.size())).toUtf8();
    pugi::xml_document doc;
    pugi::xml_parse_result r =
        doc.load_buffer(utf8.constData(), utf8.size(), pugi::parse_default, pugi::encoding_utf8);
    if (!r) {
        error = std::string("malformed command document: ") + r.description();
        return false;
    }
    pugi::xml_node root = doc.document_element();
    if (std::strcmp(root.name(), "commands") != 0) {
        error = "the command document has no <commands> root";
        return false;
    }
    for (pugi::xml_node cmd : root.children()) {
        if (cmd.type() != pugi::node_element) continue;
        if (std::strcmp(cmd.name(), "command") != 0) {
            error = std::string("unexpected node <") + cmd.name() + ">";
            return false;
        }
        if (std::strcmp(cmd.attribute("type").value(), "create_spec") != 0) {
            error = std::string("unknown command type \"") + cmd.attribute("type").value() + "\"";
            return false;
        }
        pugi::xml_node target = cmd.child("stdSize");
        if (!target || !target.attribute("packet") || !target.attribute("id")) {
            error = "create_spec without <stdSize packet id>";
            return false;
        }
        CreateSpec c;
        c.packet = utf16(target.attribute("packet").value());
        c.id = utf16(target.attribute("id").value());
        for (pugi::xml_node spec : cmd.children("spec")) {
            SpecRecord s;
            s.libName = utf16(spec.attribute("libName").value());
            if (!intAttr(spec, "styleNum", s.style) || !intAttr(spec, "firstPart", s.firstPart) ||
                !intAttr(spec, "secondPart", s.secondPart)) {
                error = "a <spec> without numeric styleNum, firstPart and secondPart";
                return false;
            }
            for (pugi::xml_node col : spec.children("column")) {
                int32_t num = 0;
                if (!intAttr(col, "num", num)) {
                    error = "a <column> without a numeric num";
                    return false;
                }
                s.columns.emplace_back(num, utf16(col.attribute("formula").value()));
            }
            c.specs.push_back(std::move(s));
        }
        out.push_back(std::move(c));
    }
    if (out.empty()) {
        error = "the command document holds no command";
        return false;
    }
    return true;
}

} // namespace esdata
