#include "krohost/cli/shell/manPage.h"

#include "krohost/cli/shell/commandModel.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <map>

namespace krohost::cli {

namespace {

constexpr const char* beginning = R"(.TH KROHOST 1 "" "krohost {}" "User Commands"
.SH NAME
krohost \- load simulation files through a data\-loader add\-on and show what it makes of them
.SH SYNOPSIS
.B krohost
.RI [ COMMAND ]
.RI [ OPTION ...]
.IR FILE ...
.SH DESCRIPTION
.B krohost
is a host in which data\-loader add\-ons run: it loads one, has it load files, and shows the zones, sections and
variables that come of them.
It is strict: what breaks the contract between host and add\-on is reported.
.PP
Results go to standard output, everything else to standard error.
Without a command,
.B info
is meant.
.SH COMMANDS
)";

constexpr const char* end = R"(.SH ENVIRONMENT
.TP
.B KROHOST_ADDON_PATH
Files and folders, separated by colons, in which to look for the add\-on, instead of the places below.
.B \-\-addon
takes precedence.
.TP
.B NO_COLOR
Set to anything, keeps colours away unless
.B \-\-color always
asks for them.
.SH FILES
The add\-on is looked for in these places, seen from the folder of
.BR krohost :
.TP
.I ../lib/vtk\-data\-loader.so
where it is built
.TP
.I {}/vtk\-data\-loader.so
where it is installed)";

/// With nothing left that the formatter would take for one of its own.
std::string escaped(const std::string& text) {
    std::string result;
    for (const char character : text) {
        const bool startsLine = result.empty() || result.back() == '\n';
        if (character == '-' || character == '\\')
            result += '\\';
        else if (startsLine && (character == '.' || character == '\''))
            result += "\\&";
        result += character == '\\' ? 'e' : character;
    }
    return result;
}

/// The parts of a footer: lines under a heading ("Exit codes:"), set apart by empty lines.
std::map<std::string, std::string> sections(const std::string& footer) {
    std::map<std::string, std::string> result;
    std::istringstream stream{footer};
    std::string heading;
    for (std::string line; std::getline(stream, line);)
        if (line.empty())
            heading.clear();
        else if (line.back() == ':' && line.front() != ' ')
            heading = line.substr(0, line.size() - 1);
        else if (!heading.empty())
            result[heading] += line + '\n';
    return result;
}

std::string verbatim(const std::string& lines) {
    return ".nf\n" + escaped(lines) + ".fi\n";
}

std::string optionText(const OptionModel& option) {
    std::string text = ".TP\n";
    for (const std::string& name : option.names)
        text += (name == option.names.front() ? "\\fB" : ", \\fB") + escaped(name) + "\\fR";
    if (option.kind != ValueKind::none)
        text += (option.names.empty() ? "\\fI" : " \\fI") + escaped(option.valueName) + "\\fR";
    text += '\n' + escaped(option.description) + '\n';
    if (option.kind != ValueKind::choice || option.valueName.find('|') != std::string::npos)
        return text; // the choices, if any, are in place of the value
    text += "(one of";
    for (const std::string& choice : option.choices)
        text += (choice == option.choices.front() ? " \\fB" : ", \\fB") + escaped(choice) + "\\fR";
    return text + ")\n";
}

std::string commandText(const CommandModel& command, const std::map<std::string, std::string>& sharedSections) {
    std::string text = ".SS krohost " + escaped(command.name);
    for (const OptionModel& positional : command.positionals)
        text += ' ' + escaped(positional.valueName) + (positional.takesSeveral ? "..." : "");
    text += '\n' + escaped(command.description) + ".\n";
    for (const auto* options : {&command.positionals, &command.options})
        for (const OptionModel& option : *options)
            text += optionText(option);
    for (const auto& [heading, lines] : sections(command.footer))
        if (const auto shared = sharedSections.find(heading); shared == sharedSections.end() || shared->second != lines)
            text += ".PP\n" + escaped(heading) + ":\n" + verbatim(lines);
    return text;
}

std::string inCapitals(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char letter) { return std::toupper(letter); });
    return text;
}

std::string manPage(const CLI::App& app) {
    const auto toolSections = sections(app.get_footer());
    std::string text = fmt::format(beginning, KROHOST_VERSION);
    for (const CommandModel& command : subcommandModels(app))
        text += commandText(command, toolSections);
    for (const auto& [heading, lines] : toolSections)
        text += ".SH " + inCapitals(escaped(heading)) + '\n' + verbatim(lines);
    return text + fmt::format(end, escaped(KROHOST_ADDON_FOLDER));
}

} // namespace

void addManPageOption(CLI::App& app) {
    app.add_flag_callback("--man",
                          // What a version flag carries is printed instead of a run.
                          [&app] { throw CLI::CallForVersion(manPage(app), CLI::ExitCodes::Success); })
        ->group("");
}

} // namespace krohost::cli
