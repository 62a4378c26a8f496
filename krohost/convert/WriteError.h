#pragma once

#include <exception>
#include <stdexcept>

namespace krohost::convert {

/// What keeps a file from being written, as a sentence for the user.
class WriteError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The same, where the user has named a file that must stay as it is.
class NotReplaceable : public WriteError {
    using WriteError::WriteError;
};

/// The reason why a file cannot be written, for a sentence that names the file.
class FileError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The user has asked to stop.
class Interrupted : public std::exception {};

} // namespace krohost::convert
