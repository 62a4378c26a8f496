#include "loader/addon/messages.h"

#include "loader/sdk/messages.h"

namespace veltra::vtk {

std::string badPreamble() {
    return ": Malformed or missing STANDARDSYNTAX preamble in the $!READDATASET command";
}

std::string missingFileName() {
    return "Invalid instruction, filename in FILENAME_FILE instruction";
}

std::string missingValue(const std::string& keyword) {
    return "Missing " + keyword + " value for " + keyword + " instruction";
}

std::string unknownTimeSource(const std::string& value) {
    return "Unexpected value for SOLUTIONTIMESOURCE instruction. Found, \"" + excerpt(value) +
           "\" but was expecting FROMFIELDDATA, FROMFILENAME, AUTO or NONE";
}

std::string strandNotAnInteger(const std::string& value) {
    return "Unexpected value for STRAND_ID instruction. Found, \"" + excerpt(value) +
           "\" but was expecting an integer value.";
}

std::string unknownKeyword(const std::string& keyword) {
    return "Unrecognized load parameter: " + excerpt(keyword);
}

std::string missingCount(const std::string& keyword) {
    return "Missing count for " + keyword + " instruction";
}

// The stray "for in" is part of the sentence that scripts match.
std::string badCount(const std::string& keyword) {
    return "Bad or missing count for in " + keyword + " instruction";
}

std::string missingEntries(const std::string& keyword) {
    return "Missing entries in " + keyword + " instruction";
}

std::string timesLeft(const std::string& reason, std::size_t timeCount, std::size_t fileCount) {
    return reason + ", which leaves " + std::to_string(timeCount) + " solution times for " + std::to_string(fileCount) +
           " files";
}

std::string invalidValue(const std::string& reason) {
    return "Invalid parameter value: " + reason;
}

} // namespace veltra::vtk
