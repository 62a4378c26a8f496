#include "krohost/cli/commands/Command.h"

#include "krohost/cli/report/jsonReport.h"

namespace krohost::cli {

using nlohmann::ordered_json;

/// An item that is there already keeps its place.
std::string documentText(const Command& command, ordered_json document, const Ending& ending) {
    constexpr int indent = 2;
    document["error"] = textOrNull(ending.error);
    document["dialogs"] = ending.dialogs;
    document["violations"] = ending.violations;
    return jsonText(document, command.isOnOneLine() ? -1 : indent) + '\n';
}

std::string failureText(const Command& command, const std::string& message) {
    return command.output.form == Form::text ? std::string{}
                                             : documentText(command, command.emptyDocument(), {message, {message}, {}});
}

bool load(Session& session, const InputOptions& input, Report& report) {
    report.loaderName = loaderName(session.host, input, session.plan);
    report.isLoaded = load(session.host, report.loaderName, input, session.plan);
    report.stoppedAt = session.host.stoppedAt().value_or("");
    return report.isLoaded;
}

} // namespace krohost::cli
