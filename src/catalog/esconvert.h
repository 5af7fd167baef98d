#pragma once

#include <esdata/esdata.h>

#include <QString>

#include <cstdint>
#include <string>

namespace edw {

// Texts cross the catalog boundary as NUL-terminated UTF-16; they become QString here, once.
QString fromEs(const char16_t* text);
std::u16string toEs(const QString& text);

// The text form of a stored value: integers in decimal, reals in the shortest text that
// reads back to the same double (with "." as separator), texts as they are, empty as "".
QString valueToText(const es_value& value);

// Whole text as a base-10 integer, else 0.
int32_t textToInt(const QString& text);
// Every "," read as "."; the whole text must parse, else 0.0. So "2,5" and "2.5" give 2.5.
double textToReal(const QString& text);

// Writes text into the element's value of attribute with the setter of the attribute's type
// code (1 integer, 2 real, 3 text). Other codes are not written: false.
bool writeValue(es_stdsize_t* element, es_attribute_t* attribute, const QString& text);

} // namespace edw
