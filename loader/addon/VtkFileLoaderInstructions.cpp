#include "loader/addon/VtkFileLoaderInstructions.h"

#include "loader/addon/messages.h"

#include "loader/sdk/exceptions.h"
#include "loader/sdk/lexical_cast.h"
#include "loader/sdk/messages.h"
#include "loader/xml/equalsIgnoringCase.h"

#include <boost/algorithm/string/case_conv.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <locale>
#include <new>
#include <stdexcept>
#include <string_view>

namespace veltra::vtk {

namespace {

using kroutilutil::InvalidInstructionsException;

constexpr const char* preamble = "STANDARDSYNTAX";
constexpr const char* preambleVersion = "1.0";
constexpr const char* fileNameKeyword = "FILENAME_FILE";
constexpr const char* fileListKeyword = "FILELIST_DATAFILES";
constexpr const char* timeSourceKeyword = "SOLUTIONTIMESOURCE";
constexpr const char* timesKeyword = "SOLUTION_TIMES";
constexpr const char* strandKeyword = "STRAND_ID";

struct TimeSourceName {
    SolutionTimeSource source;
    std::string_view name;
};
constexpr std::array<TimeSourceName, 4> timeSourceNames{{{SolutionTimeSource::FromFieldData, "FROMFIELDDATA"},
                                                         {SolutionTimeSource::FromFileName, "FROMFILENAME"},
                                                         {SolutionTimeSource::Auto, "AUTO"},
                                                         {SolutionTimeSource::None, "NONE"}}};

/// The decimal integer that is the whole text; none when there is another character or it does not fit.
template <class Integer>
std::optional<Integer> wholeInteger(const std::string& text) {
    try {
        return lexical_cast<Integer>(text);
    } catch (const ExceptionBase&) {
        return std::nullopt;
    }
}

std::shared_ptr<const boost::filesystem::path> toPath(const std::string& text) {
    return std::make_shared<const boost::filesystem::path>(text);
}

/// As printf's "%f" in the C locale, whatever the process's.
std::string fixedPoint(double value) {
    std::array<char, 400> text; // the largest number has 309 digits before the point
    const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, 6);
    return {text.data(), end};
}

double toTime(const std::string& text) {
    const auto time = lexical_cast<double>(text);
    if (!std::isfinite(time))
        throw std::domain_error(notANumber(text, "a time"));
    return time;
}

/// Walks the items of an instruction list from the first to the last.
class Parser {
public:
    Parser(const std::string& loaderName, const KroStringList* list)
        : loaderName_(loaderName), items_(toolbox::items(list)) {}

    void parse(VtkFileLoaderInstructions& instructions) {
        if (items_.size() < 2 || !vtkfile::equalsIgnoringCase(items_[0], preamble) || items_[1] != preambleVersion)
            fail(badPreamble());
        next_ = 2;
        while (!atEnd())
            parseGroup(instructions, take());
        checkTimes(instructions.solutionTimes.size(), instructions.files.size());
    }

private:
    void parseGroup(VtkFileLoaderInstructions& instructions, const std::string& keyword) {
        if (vtkfile::equalsIgnoringCase(keyword, fileNameKeyword))
            instructions.files.push_back(toPath(takeValue(missingFileName())));
        else if (vtkfile::equalsIgnoringCase(keyword, fileListKeyword))
            instructions.files = takeList(fileListKeyword, toPath);
        else if (vtkfile::equalsIgnoringCase(keyword, timesKeyword))
            instructions.solutionTimes = takeList(timesKeyword, toTime, &leftOutTime_);
        else if (vtkfile::equalsIgnoringCase(keyword, timeSourceKeyword))
            instructions.solutionTimeSource = timeSource(takeValue(missingValue(timeSourceKeyword)));
        else if (vtkfile::equalsIgnoringCase(keyword, strandKeyword))
            instructions.strand = strand(takeValue(missingValue(strandKeyword)));
        else
            fail(unknownKeyword(keyword));
    }

    /// Where an entry was left out and the counts differ, nobody knows which file each of the times is for.
    void checkTimes(std::size_t timeCount, std::size_t fileCount) const {
        if (!leftOutTime_.empty() && timeCount > 0 && timeCount != fileCount)
            fail(invalidValue(timesLeft(leftOutTime_, timeCount, fileCount)));
    }

    SolutionTimeSource timeSource(const std::string& value) const {
        const std::string name = boost::algorithm::to_upper_copy(value, std::locale::classic());
        const auto found = std::find_if(timeSourceNames.begin(), timeSourceNames.end(),
                                        [&](const TimeSourceName& entry) { return entry.name == name; });
        if (found == timeSourceNames.end())
            fail(unknownTimeSource(name));
        return found->source;
    }

    std::int32_t strand(const std::string& value) const {
        const auto strand = wholeInteger<std::int32_t>(value);
        if (!strand)
            fail(strandNotAnInteger(value));
        return *strand;
    }

    template <class Entry>
    std::vector<Entry> takeList(const std::string& keyword, Entry (*convert)(const std::string&),
                                std::string* leftOut = nullptr) {
        if (leftOut)
            leftOut->clear();
        const auto count = wholeInteger<std::int64_t>(takeValue(missingCount(keyword)));
        if (!count || *count < 1)
            fail(badCount(keyword));
        if (static_cast<std::uint64_t>(*count) > items_.size() - next_)
            fail(missingEntries(keyword));
        std::vector<Entry> entries;
        for (std::int64_t entry = 0; entry < *count; ++entry) {
            const std::string& text = take();
            try {
                entries.push_back(convert(text));
            } catch (const ExceptionBase& error) {
                // Layouts written by hand hold blanks and remarks among their times; such entries never counted.
                if (leftOut)
                    *leftOut = error.what();
            }
        }
        return entries;
    }

    bool atEnd() const { return next_ == items_.size(); }
    const std::string& take() { return items_[next_++]; }
    const std::string& takeValue(const std::string& messageWhenMissing) {
        if (atEnd())
            fail(messageWhenMissing);
        return take();
    }

    [[noreturn]] void fail(const std::string& message) const {
        throw InvalidInstructionsException(loaderName_, message);
    }

    const std::string& loaderName_;
    std::vector<std::string> items_;
    std::size_t next_ = 0;
    std::string leftOutTime_; // why one of the times was; empty when all count
};

} // namespace

VtkFileLoaderInstructions::VtkFileLoaderInstructions(const std::shared_ptr<const std::string>& loaderName,
                                                     const KroStringList* list) {
    try {
        Parser(*loaderName, list).parse(*this);
    } catch (const InvalidInstructionsException&) {
        throw;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        throw InvalidInstructionsException(*loaderName, invalidValue(error.what()));
    }
}

void VtkFileLoaderInstructions::write(toolbox::StringList& list) const {
    list.clear();
    const auto append = [&list](const auto&... items) { (list.append(items), ...); };
    append(preamble, preambleVersion);
    if (solutionTimeSource != SolutionTimeSource::Auto)
        append(timeSourceKeyword, std::string(timeSourceNames.at(static_cast<std::size_t>(solutionTimeSource)).name));
    if (strand)
        append(strandKeyword, std::to_string(*strand));
    if (files.size() == 1)
        append(fileNameKeyword);
    else
        append(fileListKeyword, std::to_string(files.size()));
    for (const auto& file : files)
        append(file->string());
    if (!solutionTimes.empty())
        append(timesKeyword, std::to_string(solutionTimes.size()));
    for (const double time : solutionTimes)
        append(fixedPoint(time));
}

} // namespace veltra::vtk
