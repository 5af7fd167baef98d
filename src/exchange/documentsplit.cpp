#include "documentsplit.h"

#include "document.h"

namespace exchange {

namespace {

bool elementList(DocumentScanner& s, DocumentLayout& layout)
{
    layout.list.begin = s.pos();
    if (!s.take('[') || !s.skipSpace()) return false;
    if (s.take(']')) {
        layout.list.end = s.pos();
        return true;
    }
    for (;;) {
        DocumentLayout::Span element;
        element.begin = s.pos();
        if (!s.value()) return false;
        element.end = s.pos();
        layout.elements.push_back(element);
        // One past the bound is enough to refuse the document; listing every span of a list
        // of tiny elements would cost the memory the bound is there to save.
        if (layout.elements.size() > size_t(maxDocumentElements)) return true;
        if (!s.skipSpace()) return false;
        if (s.take(']')) break;
        if (!s.take(',') || !s.skipSpace()) return false;
    }
    layout.list.end = s.pos();
    return true;
}

} // namespace

bool splitDocument(const char* text, size_t size, DocumentLayout& layout)
{
    layout = {};
    DocumentScanner s(text, size);
    bool found = false;
    if (!s.skipSpace() || !s.take('{') || !s.skipSpace()) return false;
    if (!s.take('}')) {
        for (;;) {
            const size_t key = s.pos();
            bool plain = true;
            if (!s.string(plain) || !plain) return false;
            const bool isList = s.keyIs(key, "std-size");
            if (!s.skipSpace() || !s.take(':') || !s.skipSpace()) return false;
            if (isList) {
                if (found || s.peek() != '[' || !elementList(s, layout)) return false;
                if (layout.elements.size() > size_t(maxDocumentElements)) return true;
                found = true;
            } else if (!s.value()) {
                return false;
            }
            if (!s.skipSpace()) return false;
            if (s.take('}')) break;
            if (!s.take(',') || !s.skipSpace()) return false;
        }
    }
    if (!s.skipSpace()) return false;
    return found && s.atEnd();
}

} // namespace exchange
