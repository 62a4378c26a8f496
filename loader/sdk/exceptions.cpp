#include "loader/sdk/exceptions.h"

namespace veltra::kroutilutil {

InvalidInstructionsException::InvalidInstructionsException(const std::string& loaderName, const std::string& message)
    : ExceptionBase(loaderName + (message.starts_with(':') ? "" : ": ") + message) {}

} // namespace veltra::kroutilutil
