#pragma once

#include "spec_description.h"

#include <esdata/esdata.h>

#include <QString>

#include <vector>

namespace edw {

// A formula converted from the user's form (attribute names in braces) to the catalog's form
// (attributes by number). On failure text is empty and error says why.
struct FormulaResult
{
    QString text;
    QString error;
};

// Converts a formula against the attributes of table: {Name} → {A<number>},
// {Name,R} → {R(A<number>)}; blocks holding "*", "/", "+" or "-" are operations and stay as
// they are; nested blocks are converted and spliced in without braces of their own.
FormulaResult convertFormula(const QString& formula, es_table_t* table);

// Converts every column formula of specs in place against the element's table. A column that
// fails is warned about and left with an empty formula.
void convertSpecFormulas(std::vector<SpecDescription>& specs, es_stdsize_t* element);

// The type of the command named command in a host library's command description file;
// "NONE" when the command has no type, empty when the file cannot be read (after a warning).
QString commandType(const QString& descriptionFile, const QString& command);

} // namespace edw
