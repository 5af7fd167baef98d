#pragma once

#include <QString>
#include <QStringList>

#include <map>

namespace edw {

// The fixed bill-of-materials sections offered for elements of the engineering libraries:
// section name → its subsections in offer order. The map orders sections by UTF-16 code
// units. Built once on first use, shared and read-only; discipline codes other than 1, 2
// and 3 get the empty map.
const std::map<QString, QStringList>& specSections(int disciplineCode);

// The subsections of section in the table of disciplineCode; empty for an unknown section.
QStringList specSubsections(int disciplineCode, const QString& section);

} // namespace edw
