#pragma once

#include <stdexcept>
#include <string>

namespace zipper {

// Every failure of the archive layer. The text reads "<what>: <subject>. ZipErr=<n>, SysErr=<n>"
// so that a log line alone tells which call failed on which file and why.
class error : public std::runtime_error
{
public:
    error(const std::string& what, const std::string& subject, int zipError, int systemError);

    int zipError() const noexcept { return m_zipError; }
    int systemError() const noexcept { return m_systemError; }

private:
    int m_zipError;
    int m_systemError;
};

} // namespace zipper
