#pragma once

#include <esdata/esdata.h>

#include <QString>

#include <cstdint>
#include <vector>

namespace edw {

// One column of an element's specification description.
struct SpecColumn
{
    int32_t num = 0;
    QString formula;
};

// A specification description of an element, as the catalog keeps it and as the
// "create_spec" command writes it.
struct SpecDescription
{
    QString libName;
    int32_t styleNum = 0;
    int32_t firstPart = 0;
    int32_t secondPart = 0;
    std::vector<SpecColumn> columns;
};

// The element's specification descriptions, in the catalog's order.
std::vector<SpecDescription> readSpecifications(es_stdsize_t* element);

// The text of the "create_spec" command document for the element identified by packet name
// and identifier: UTF-8 XML, tab indented.
QString createSpecDocument(const std::vector<SpecDescription>& specs, const QString& packet,
                           const QString& id);

// Replaces the element's specification descriptions with specs through the catalog's command
// interface (the only way to write them). The column formulas must already be in the
// catalog's form. Returns the command's success.
bool runCreateSpec(const std::vector<SpecDescription>& specs, es_stdsize_t* element);

} // namespace edw
