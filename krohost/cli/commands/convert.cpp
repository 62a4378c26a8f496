#include "krohost/cli/commands/table.h"
#include "krohost/cli/report/jsonReport.h"
#include "krohost/cli/report/lossReport.h"
#include "krohost/cli/terminal/Failure.h"
#include "krohost/convert/WriteError.h"
#include "krohost/convert/conversion.h"
#include "krohost/text/counted.h"
#include "krohost/text/printable.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <map>
#include <numeric>

namespace krohost::cli {

namespace {

using nlohmann::ordered_json;

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

std::uint64_t byteCount(const convert::Conversion& conversion) {
    return std::accumulate(
        conversion.files.begin(), conversion.files.end(), std::uint64_t{0},
        [](std::uint64_t sum, const convert::Outputs::Published& file) { return sum + file.byteCount; });
}

/// docs/schemas/convert.schema.json describes it.
ordered_json convertDocument(const convert::Conversion& conversion, const Report& report) {
    ordered_json files = ordered_json::array(), notes = files;
    for (const convert::Loss& loss : conversion.losses.list())
        notes.push_back(convert::sentence(loss));
    for (const convert::Outputs::Published& file : conversion.files)
        files.push_back({{"path", file.path.string()}, {"bytes", file.byteCount}});
    return {{"loader", textOrNull(report.loaderName)},
            {"converted", !conversion.files.empty()},
            {"zones", conversion.zoneCount},
            {"bytes", byteCount(conversion)},
            {"files", files},
            {"notes", notes},
            {"losses", lossList(conversion.losses)},
            {"stoppedAt", textOrNull(report.stoppedAt)}};
}

/// Loads what the plan says and writes it, or writes a file that is not loaded so that it is.
class Convert : public Command {
public:
    explicit Convert(CLI::App& app) {
        addNewLoadOptions(app, input);
        using enum convert::FileFormat;
        using enum convert::Format;
        app.add_option("-o,--output", outputFile_, "File to write")->required()->type_name("FILE");
        app.add_option_function<std::string>(
               "--to", [&](const std::string& name) { format_ = convert::fileFormat(name); },
               "Its format (default: by its extension)")
            ->check(CLI::IsMember({"vtu", "vtm", "pvd", "vtkhdf", "cgns", "csv"}).description(""))
            ->type_name("vtu|vtm|pvd|vtkhdf|cgns|csv");
        addWords(app, "--encoding", encoding_.format,
                 {{"ascii", ascii}, {"base64", base64}, {"raw", raw}, {"appended-base64", appendedBase64}},
                 "How .vtu files hold values (default: raw)");
        addWords(app, "--compress", encoding_.isCompressed, {{"zlib", true}, {"none", false}},
                 "How .vtu and .vtkhdf files are compressed (default: zlib)");
        addWords<std::size_t>(app, "--header", encoding_.headerWordByteCount, {{"UInt32", 4}, {"UInt64", 8}},
                              "Header words of .vtu files (default: UInt64)");
        addWords(app, "--byte-order", encoding_.isBigEndian, {{"little", false}, {"big", true}},
                 "Byte order of .vtu files (default: little)");
        addForceOption(app, writing);
        addStrictOption(app, writing);
        app.add_flag("--repair", isRepairing_,
                     "Read a .vtu that the loader refuses, without it: LZ4 and LZMA are decompressed, cells of lower "
                     "dimensions and of unknown types left out (exit code 1)");
        addHostOptions(app, host);
        addJsonOption(app, output);
        addOutputOptions(app, output);
    }

    std::vector<PlannedOutput> outputs() const override { return {{outputFile_, false}}; }
    bool usesLoaders() const override { return !isRepairing_; }

    /// Throws Failure for what can be known before the load.
    Outcome run(Session& session) override {
        const convert::Request wanted = request(session.plan);
        Outcome outcome;
        convert::Conversion conversion;
        if (isRepairing_) {
            if (session.plan.files.size() != 1)
                throw Failure("--repair takes one file.", Exit_Usage);
            outcome.report.isLoaded = true; // the only load is that of the result
            conversion = attempt(
                outcome, [&] { return convert::repairFile(session.host, session.plan.files.front().path, wanted); });
        } else if (load(session, input, outcome.report)) {
            const std::vector<std::string> names = paths(session.plan.files);
            conversion = attempt(outcome, [&] {
                return convert::convertZones(session.host, {names.begin(), names.end()}, wanted);
            });
        }
        describe(conversion, outcome);
        return outcome;
    }

private:
    /// What is asked for, as far as it can be known before the load that it can be done.
    convert::Request request(const Plan& plan) const {
        const std::filesystem::path path{outputFile_};
        const auto format = format_ ? format_ : convert::fileFormat(path.extension().string());
        if (!format)
            throw Failure(
                fmt::format("The format of \"{}\" does not follow from its extension; name it with --to.", outputFile_),
                Exit_Usage);
        if (*format == convert::FileFormat::vtm || *format == convert::FileFormat::pvd)
            requireCollectionName(path);
        return {path, *format, encoding_, plan.permission, writing.isStrict};
    }

    /// Runs a conversion, whose failures become the outcome's error.
    template <class Write>
    static convert::Conversion attempt(Outcome& outcome, const Write& write) {
        convert::Conversion conversion;
        try {
            conversion = write();
        } catch (const convert::NotReplaceable& error) {
            throw Failure(error.what(), Exit_Usage);
        } catch (const convert::LossesNotAllowed& error) {
            conversion.losses = error.losses();
            outcome.error = error.what();
        } catch (const convert::WriteError& error) {
            outcome.error = error.what();
        } catch (const convert::Interrupted&) {
            // The host knows.
        }
        return conversion;
    }

    void describe(const convert::Conversion& conversion, Outcome& outcome) const {
        const bool isConverted = !conversion.files.empty();
        outcome.isSound = isConverted && !conversion.isIncomplete;
        outcome.report.losses = conversion.losses;
        if (conversion.isIncomplete)
            outcome.reason = convert::sentence(conversion.losses.list().front());
        if (isConverted)
            outcome.text = fmt::format("{}: {} in {}, {} bytes\n", printableLine(outputFile_),
                                       counted(conversion.zoneCount, "zone"), counted(conversion.files.size(), "file"),
                                       byteCount(conversion));
        if (output.form == Form::json)
            outcome.document = convertDocument(conversion, outcome.report);
    }

    std::string outputFile_;
    std::optional<convert::FileFormat> format_; // by the output's extension when there is none
    convert::Encoding encoding_;
    bool isRepairing_ = false; // the file is read without the add-on
};

} // namespace

const CommandEntry convertCommand{
    "convert", "Write what was loaded as .vtu, .vtm, .pvd, .vtkhdf, .cgns or .csv",
    "  krohost convert wing.vtu -o wing.cgns\n"
    "  krohost convert 'step*.vtu' -o all.pvd    a file for each zone, and one that names them\n"
    "  krohost convert --repair lz4.vtu -o zlib.vtu\n",
    makeCommand<Convert>};

} // namespace krohost::cli
