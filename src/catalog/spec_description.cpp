#include "spec_description.h"

#include "catalog_tree.h"
#include "esconvert.h"

#include <pugixml.hpp>

#include <sstream>

namespace edw {

std::vector<SpecDescription> readSpecifications(es_stdsize_t* element)
{
    std::vector<SpecDescription> result;
    const uint32_t count = stdsize_GetSpecificationCount(element);
    for (uint32_t i = 0; i < count; ++i) {
        es_spec_t* spec = stdsize_GetSpecification(element, i);
        if (!spec) continue;
        SpecDescription description;
        description.libName = fromEs(spec_LibName(spec));
        description.styleNum = spec_Style(spec);
        description.firstPart = spec_FirstPart(spec);
        description.secondPart = spec_SecondPart(spec);
        const uint32_t columns = spec_ColumnCount(spec);
        for (uint32_t c = 0; c < columns; ++c)
            description.columns.push_back(
                {spec_ColumnNumber(spec, c), fromEs(spec_ColumnFormula(spec, c))});
        result.push_back(std::move(description));
    }
    return result;
}

QString createSpecDocument(const std::vector<SpecDescription>& specs, const QString& packet,
                           const QString& id)
{
    pugi::xml_document doc;
    doc.load_string("<?xml version=\"1.0\" encoding=\"utf-8\"?><commands></commands>",
                    pugi::parse_default | pugi::parse_declaration);
    pugi::xml_node command = doc.child("commands").append_child("command");
    command.append_attribute("type") = "create_spec";
    pugi::xml_node stdSize = command.append_child("stdSize");
    stdSize.append_attribute("packet") = packet.toStdString().c_str();
    stdSize.append_attribute("id") = id.toStdString().c_str();
    for (const SpecDescription& description : specs) {
        pugi::xml_node spec = command.append_child("spec");
        spec.append_attribute("styleNum") = description.styleNum;
        spec.append_attribute("libName") = description.libName.toStdString().c_str();
        spec.append_attribute("firstPart") = description.firstPart;
        spec.append_attribute("secondPart") = description.secondPart;
        for (const SpecColumn& column : description.columns) {
            pugi::xml_node node = spec.append_child("column");
            node.append_attribute("num") = column.num;
            node.append_attribute("formula") = column.formula.toStdString().c_str();
        }
    }
    std::ostringstream out;
    doc.save(out, "\t", pugi::format_default, pugi::encoding_utf8);
    return QString::fromStdString(out.str());
}

bool runCreateSpec(const std::vector<SpecDescription>& specs, es_stdsize_t* element)
{
    es_provider_t* provider = providerOf(element);
    if (!provider) return false;
    const QString text = createSpecDocument(specs, fromEs(packet_GetName(packetOf(element))),
                                            fromEs(stdsize_GetID(element)));
    return provider_RunCommand(provider, toEs(text).c_str());
}

} // namespace edw
