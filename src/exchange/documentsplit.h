#pragma once

#include <cstddef>
#include <vector>

namespace exchange {

// Where the elements of an exchange document lie in its text, found without building a tree,
// so that each element can be parsed on its own (and on several threads).
struct DocumentLayout
{
    struct Span
    {
        size_t begin = 0;
        size_t end = 0; // one past the element's last byte
    };
    // The "std-size" array of the top object: from its "[" to one past its "]".
    Span list;
    std::vector<Span> elements;
};

// Finds the layout of a document that is plain enough to be split safely: one top object
// whose "std-size" member, given once, is an array; no comments; no escapes in the top
// object's names. Anything else, including text that is not JSON at all, gives false, and the
// document is then parsed whole, which reports its errors as usual. Only the text between
// the elements is checked here; each element is checked when it is parsed.
bool splitDocument(const char* text, size_t size, DocumentLayout& layout);

} // namespace exchange
