#include "documentsplit.h"

#include "document.h"

#include <cstring>

namespace exchange {

namespace {

class Scanner
{
public:
    Scanner(const char* text, size_t size) : m_text(text), m_size(size) {}

    size_t pos() const { return m_pos; }
    bool atEnd() const { return m_pos >= m_size; }
    char peek() const { return atEnd() ? '\0' : m_text[m_pos]; }

    // False on a comment, which the full parser understands and this scanner does not.
    bool skipSpace()
    {
        while (!atEnd()) {
            const char c = m_text[m_pos];
            if (c == ' ' || c == '\t' || c == '\n' || c == '\r')
                ++m_pos;
            else
                return c != '/';
        }
        return true;
    }

    bool take(char c)
    {
        if (peek() != c) return false;
        ++m_pos;
        return true;
    }

    // A string starting at the current quote; plain is false when it holds an escape.
    bool string(bool& plain)
    {
        plain = true;
        if (!take('"')) return false;
        while (!atEnd()) {
            const char c = m_text[m_pos++];
            if (c == '"') return true;
            if (c == '\\') {
                plain = false;
                if (atEnd()) return false;
                ++m_pos;
            }
        }
        return false;
    }

    // Any value: strings are skipped whole, nesting is counted rather than followed, so that
    // no depth of input can exhaust the stack here.
    bool value()
    {
        const char first = peek();
        if (first == '"') {
            bool plain = true;
            return string(plain);
        }
        if (first == '{' || first == '[') {
            size_t depth = 0;
            while (!atEnd()) {
                const char c = m_text[m_pos];
                if (c == '"') {
                    bool plain = true;
                    if (!string(plain)) return false;
                    continue;
                }
                if (c == '/') return false;
                ++m_pos;
                if (c == '{' || c == '[') {
                    ++depth;
                } else if (c == '}' || c == ']') {
                    if (--depth == 0) return true;
                }
            }
            return false;
        }
        const size_t start = m_pos;
        while (!atEnd() && !std::strchr(",]} \t\n\r/", m_text[m_pos]))
            ++m_pos;
        return m_pos > start;
    }

    bool keyIs(size_t begin, const char* name) const
    {
        const size_t length = std::strlen(name);
        return m_pos - begin == length + 2 && std::memcmp(m_text + begin + 1, name, length) == 0;
    }

private:
    const char* m_text;
    size_t m_size;
    size_t m_pos = 0;
};

bool elementList(Scanner& s, DocumentLayout& layout)
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
    Scanner s(text, size);
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
