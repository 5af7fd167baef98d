#include "ziperror.h"

namespace zipper {

namespace {
std::string compose(const std::string& what, const std::string& subject, int zipError,
                    int systemError)
{
    return what + ": " + subject + ". ZipErr=" + std::to_string(zipError) +
           ", SysErr=" + std::to_string(systemError);
}
} // namespace

error::error(const std::string& what, const std::string& subject, int zipError, int systemError)
    : std::runtime_error(compose(what, subject, zipError, systemError)), m_zipError(zipError),
      m_systemError(systemError)
{}

} // namespace zipper
