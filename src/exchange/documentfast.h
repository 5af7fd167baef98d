#pragma once

#include "importrecord.h"

namespace exchange {

// Reads one element of a UTF-8 document straight into its record, without a JSON tree, when
// the element has the plain form that the writer gives it: the known members once each, with
// their own types, integers without fraction or exponent, no comments. It gives false for
// anything else, good or bad, and the element is then read through the JSON tree, which
// accepts or refuses it with its own messages.
bool readPlainElement(const char* begin, const char* end, ImportElement& out);

} // namespace exchange
