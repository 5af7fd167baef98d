#pragma once

#include <cstddef>
#include <cstring>
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

// Steps over the top level of a document's text without building anything.
class DocumentScanner
{
public:
    DocumentScanner(const char* text, size_t size, size_t pos = 0)
        : m_text(text), m_size(size), m_pos(pos)
    {}

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

// Finds the layout of a document that is plain enough to be split safely: one top object
// whose "std-size" member, given once, is an array; no comments; no escapes in the top
// object's names. Anything else, including text that is not JSON at all, gives false, and the
// document is then parsed whole, which reports its errors as usual. Only the text between
// the elements is checked here; each element is checked when it is parsed.
bool splitDocument(const char* text, size_t size, DocumentLayout& layout);

} // namespace exchange
