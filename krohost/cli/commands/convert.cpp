#include "krohost/cli/commands/convert.h"

#include "krohost/cli/Failure.h"
#include "krohost/cli/options.h"
#include "krohost/cli/report/lossReport.h"
#include "krohost/convert/WriteError.h"
#include "krohost/text/printable.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <map>
#include <numeric>

namespace krohost::cli {

namespace {

/// An option that takes one of some words.
template <class Value>
CLI::Option* addWords(CLI::App& command, const char* name, Value& value, const std::map<std::string, Value>& words,
                      const char* help) {
    std::string names;
    for (const auto& [word, meaning] : words)
        names += (names.empty() ? "" : "|") + word;
    return command.add_option(name, value, help)
        ->transform(CLI::CheckedTransformer(words, CLI::ignore_case).description(""))
        ->type_name(names);
}

/// Members are in a folder that is named like their collection, which says so in XML.
void requireCollectionName(const std::filesystem::path& path) {
    const std::string stem = path.stem().string();
    if (inXml(stem) != stem)
        throw Failure(fmt::format("The collection \"{}\" cannot be written: XML cannot hold the names of its members.",
                                  path.string()),
                      Exit_Usage);
    if (stem == "." || stem == "..")
        throw Failure(fmt::format("The collection \"{}\" cannot be written: its members would be in the folder \"{}\".",
                                  path.string(), stem),
                      Exit_Usage);
}

/// What is asked for, as far as it can be known before the load that it can be done.
convert::Request request(const CommandLine& line, const Plan& plan) {
    const ConvertOptions& options = line.convert;
    const std::filesystem::path path{options.output};
    const auto format = options.format ? options.format : convert::fileFormat(path.extension().string());
    if (!format)
        throw Failure(
            fmt::format("The format of \"{}\" does not follow from its extension; name it with --to.", options.output),
            Exit_Usage);
    if (*format == convert::FileFormat::vtm || *format == convert::FileFormat::pvd)
        requireCollectionName(path);
    return {path, *format, options.encoding, plan.permission, line.isStrict};
}

/// Runs a conversion, whose failures become the outcome's error.
template <class Write>
void attempt(ConvertOutcome& outcome, const Write& write) {
    try {
        outcome.conversion = write();
    } catch (const convert::NotReplaceable& error) {
        throw Failure(error.what(), Exit_Usage);
    } catch (const convert::LossesNotAllowed& error) {
        outcome.conversion.losses = error.losses();
        outcome.error = error.what();
    } catch (const convert::WriteError& error) {
        outcome.error = error.what();
    } catch (const convert::Interrupted&) {
        // The host knows.
    }
}

std::uint64_t byteCount(const convert::Conversion& conversion) {
    return std::accumulate(
        conversion.files.begin(), conversion.files.end(), std::uint64_t{0},
        [](std::uint64_t sum, const convert::Outputs::Published& file) { return sum + file.byteCount; });
}

std::string plural(std::size_t count, const char* noun) {
    return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

} // namespace

void addConvertOptions(CLI::App& command, CommandLine& line) {
    ConvertOptions& options = line.convert;
    addNewLoadOptions(command, line);
    using enum convert::FileFormat;
    using enum convert::Format;
    convert::Encoding& encoding = options.encoding;
    command.add_option("-o,--output", options.output, "File to write")->required()->type_name("FILE");
    command
        .add_option_function<std::string>(
            "--to", [&](const std::string& name) { options.format = convert::fileFormat(name); },
            "Its format (default: by its extension)")
        ->check(CLI::IsMember({"vtu", "vtm", "pvd", "vtkhdf", "cgns", "csv"}).description(""))
        ->type_name("vtu|vtm|pvd|vtkhdf|cgns|csv");
    addWords(command, "--encoding", encoding.format,
             {{"ascii", ascii}, {"base64", base64}, {"raw", raw}, {"appended-base64", appendedBase64}},
             "How .vtu files hold values (default: raw)");
    addWords(command, "--compress", encoding.isCompressed, {{"zlib", true}, {"none", false}},
             "How .vtu and .vtkhdf files are compressed (default: zlib)");
    addWords<std::size_t>(command, "--header", encoding.headerWordByteCount, {{"UInt32", 4}, {"UInt64", 8}},
                          "Header words of .vtu files (default: UInt64)");
    addWords(command, "--byte-order", encoding.isBigEndian, {{"little", false}, {"big", true}},
             "Byte order of .vtu files (default: little)");
    addForceOption(command, line);
    addStrictOption(command, line);
    command.add_flag("--repair", options.isRepairing,
                     "Read a .vtu that the loader refuses, without it: LZ4 and LZMA are decompressed, cells of lower "
                     "dimensions and of unknown types left out (exit code 1)");
    addHostOptions(command, line);
    command.add_flag("--json", line.isJson, "Print one JSON document");
    addOutputOptions(command, line);
}

ConvertOutcome convert(Host& host, const CommandLine& line, const Plan& plan) {
    const convert::Request wanted = request(line, plan);
    ConvertOutcome outcome;
    outcome.report.loaderName = loaderName(host, line, plan);
    outcome.report.isLoaded = load(host, outcome.report.loaderName, line, plan);
    outcome.report.stoppedAt = host.stoppedAt().value_or("");
    std::vector<std::filesystem::path> inputs;
    for (const SeriesFile& file : plan.files)
        inputs.emplace_back(file.path);
    if (outcome.report.isLoaded)
        attempt(outcome, [&] { return convert::convertZones(host, inputs, wanted); });
    return outcome;
}

ConvertOutcome repair(Host& host, const CommandLine& line, const Plan& plan) {
    const convert::Request wanted = request(line, plan);
    if (plan.files.size() != 1)
        throw Failure("--repair takes one file.", Exit_Usage);
    ConvertOutcome outcome;
    outcome.report.isLoaded = true; // the only load is that of the result
    attempt(outcome, [&] { return convert::repairFile(host, plan.files.front().path, wanted); });
    return outcome;
}

std::string convertText(const CommandLine& line, const ConvertOutcome& outcome) {
    const convert::Conversion& conversion = outcome.conversion;
    return outcome.isConverted() ? fmt::format("{}: {} in {}, {} bytes\n", printableLine(line.convert.output),
                                               plural(conversion.zoneCount, "zone"),
                                               plural(conversion.files.size(), "file"), byteCount(conversion))
                                 : "";
}

nlohmann::ordered_json convertDocument(const ConvertOutcome& outcome) {
    using nlohmann::ordered_json;
    const auto textOrNull = [](const std::string& text) { return text.empty() ? ordered_json() : ordered_json(text); };
    const convert::Conversion& conversion = outcome.conversion;
    ordered_json files = ordered_json::array(), notes = files;
    for (const convert::Loss& loss : conversion.losses.list())
        notes.push_back(convert::sentence(loss));
    for (const convert::Outputs::Published& file : conversion.files)
        files.push_back({{"path", file.path.string()}, {"bytes", file.byteCount}});
    return {{"loader", textOrNull(outcome.report.loaderName)},
            {"converted", outcome.isConverted()},
            {"zones", conversion.zoneCount},
            {"bytes", byteCount(conversion)},
            {"files", files},
            {"notes", notes},
            {"losses", lossList(conversion.losses)},
            {"stoppedAt", textOrNull(outcome.report.stoppedAt)}};
}

} // namespace krohost::cli
