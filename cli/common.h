#pragma once

#include <QString>
#include <QStringList>

#include <stdexcept>

struct es_provider;

namespace ussctl {

// Exit codes shared by every command; the usage text lists them.
enum ExitCode : int
{
    ExitOk = 0,
    ExitFailed = 1,   // the operation ran and failed, or the input was rejected
    ExitUsage = 2,    // bad options or arguments
    ExitNotFound = 3, // an input file is missing or cannot be opened
};

// A failure that ends the command with a message on stderr and the given exit code.
class CommandError : public std::runtime_error
{
public:
    CommandError(int code, const QString& message);
    int code() const { return m_code; }
    QString message() const { return m_message; }

private:
    int m_code;
    QString m_message;
};

// One catalog kind: the short name used on the command line, the database name a new catalog
// gets, the key of its exchange document and the extension of its archives.
struct Kind
{
    int code;
    QString name;
    QString databaseName;
    QString key;
    QString extension;
};

const QList<Kind>& kinds();
// Throws a usage error naming the accepted kinds.
const Kind& kindByName(const QString& name);
// The kind whose marker occurs first in the table order in the database name; null when none.
const Kind* kindOfDatabase(const QString& databaseName);

// Writes text (UTF-8) to stdout / stderr; a newline is not added.
void out(const QString& text);
void err(const QString& text);
// Whether message was the last message printed to stderr (so that a failure is told once).
bool alreadyPrinted(const QString& message);
void noteMessage(const QString& message);
// A message written for a dialog, as it reads on a terminal: a dialog's help button is not
// there.
QString forTerminal(const QString& message);

// An open catalog closed on destruction.
class Catalog
{
public:
    // Opens an existing catalog; missing file or not a catalog throws CommandError. A
    // catalog opened forReading is only read: a file or folder the user may not write is
    // fine where the store can open such a catalog. One opened for writing that can only be
    // read is refused with the reason.
    static Catalog open(const QString& path, bool forReading = false);
    // Creates a new catalog; an existing file throws CommandError.
    static Catalog create(const QString& path, const Kind& kind);
    Catalog(Catalog&& other) noexcept;
    Catalog& operator=(Catalog&&) = delete;
    ~Catalog();

    es_provider* provider() const { return m_provider; }
    QString databaseName() const;
    // The catalog's kind; a database of unknown kind throws CommandError.
    const Kind& kind() const;
    void close();

private:
    explicit Catalog(es_provider* provider) : m_provider(provider) {}
    es_provider* m_provider;
};

QString fromEs(const char16_t* text);
std::u16string toEs(const QString& text);

} // namespace ussctl
