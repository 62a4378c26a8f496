#include "krohost/host/model/timesFromFileNames.h"

#include <charconv>
#include <filesystem>

namespace krohost {

namespace {

constexpr std::string_view digits = "0123456789";

std::size_t endOfDigits(std::string_view text, std::size_t position) {
    const std::size_t end = text.find_first_not_of(digits, position);
    return end == std::string_view::npos ? text.size() : end;
}

/// Behind `[.digits][e[sign]digits]`, or where it started when an optional part is not there.
std::size_t endOfNumber(std::string_view text, std::size_t position) {
    std::size_t end = endOfDigits(text, position);
    if (end < text.size() && text[end] == '.')
        if (const std::size_t fractionEnd = endOfDigits(text, end + 1); fractionEnd > end + 1)
            end = fractionEnd;
    if (end < text.size() && (text[end] == 'e' || text[end] == 'E')) {
        const bool isSigned = end + 1 < text.size() && (text[end + 1] == '-' || text[end + 1] == '+');
        const std::size_t exponent = end + (isSigned ? 2 : 1);
        if (exponent < text.size() && endOfDigits(text, exponent) > exponent)
            end = endOfDigits(text, exponent);
    }
    return end;
}

} // namespace

std::optional<double> timeFromFileName(std::string_view fileName) {
    const std::string stem = std::filesystem::path{fileName}.stem().string();
    const std::string_view text = stem;
    std::string_view number;
    for (std::size_t begin = text.find_first_of(digits); begin < text.size();
         begin = text.find_first_of(digits, begin)) {
        const std::size_t end = endOfNumber(text, begin);
        number = text.substr(begin, end - begin);
        begin = end;
    }
    double time = 0;
    const auto result = std::from_chars(number.data(), number.data() + number.size(), time);
    return result.ec == std::errc{} ? std::optional{time} : std::nullopt;
}

std::optional<std::vector<double>> timesFromFileNames(const std::vector<std::string>& fileNames) {
    std::vector<double> times;
    for (const std::string& fileName : fileNames) {
        const auto time = timeFromFileName(fileName);
        if (!time)
            return std::nullopt;
        times.push_back(*time);
    }
    return times.empty() ? std::nullopt : std::optional{times};
}

} // namespace krohost
