#pragma once

// Conversion between the host's wide strings and the library's strings.

#include "com_ptr.h"

#include <QString>

namespace gapi {

// Text of a host string; empty for none.
QString to_qstring(abi::IStringReadOnly* s);
// Takes over a returned reference, releases it and gives its text.
QString take_string(abi::IStringReadOnly* s);
// A host string holding text, to be passed as an argument.
com_ptr<abi::IString> make_string(const QString& text);

} // namespace gapi
