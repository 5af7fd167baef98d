#pragma once

#include "ziptestsupport.h"

#include <esdata/esdata.h>

#include <QByteArray>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

#include <functional>
#include <string>

// Runs the real ussctl binary and builds small catalogs through the store's C API, so that
// every test sees exactly what a user of the command line sees.
namespace clitest {

struct Run
{
    int exitCode = -1;
    QString out;
    QString err;
};

// inChild runs in the child process before ussctl starts (limits, another user).
Run ussctl(const QStringList& args, const QProcessEnvironment& env = {},
           const std::function<void()>& inChild = {});

std::u16string es(const QString& text);

// A catalog kept open by the test; closed on destruction so that ussctl may open it.
class TestCatalog
{
public:
    TestCatalog(const QString& path, const QString& databaseName);
    ~TestCatalog();
    TestCatalog(const TestCatalog&) = delete;
    TestCatalog& operator=(const TestCatalog&) = delete;

    es_provider_t* provider() const { return m_provider; }
    // Adds an element with the bookkeeping attributes, one real and one text attribute, in
    // folder (a "\"-joined path) of packet. A non-empty modelFile gives it a model.
    es_stdsize_t* addElement(const QString& packet, const QString& folder, const QString& id,
                             const QString& date, const QString& author, double length,
                             const QString& modelFile = {});

private:
    es_provider_t* m_provider = nullptr;
};

// Reads one value of an element as text; empty when the element or attribute is missing.
QString valueOf(const QString& catalogPath, const QString& packet, const QString& id,
                const QString& attribute);

using ziptest::readFile;
using ziptest::writeFile;

} // namespace clitest
