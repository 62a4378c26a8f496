#include "krohost/check/checkFile.h"

#include "krohost/check/documentChecks.h"

#include <algorithm>
#include <iterator>
#include <set>

namespace krohost::check {

namespace {

std::vector<Finding> checkOne(const reader::Document& document, const Depth& depth, const Poll& poll) {
    Findings findings{document.path.string()};
    if (depth.isExplaining)
        checkDocument(document, findings);
    if (depth.isExplaining)
        checkArrayHeaders(document, findings, poll);
    checkCells(document, findings, depth.isDeep, poll);
    if (depth.isDeep)
        checkArrayValues(document, findings, poll);
    if (depth.isDeep)
        checkNarrowing(document, findings, poll);
    return findings.take();
}

std::vector<Finding> checkMember(const reader::Document& member, const Depth& depth, const Poll& poll) {
    if (!member.isCollection())
        return checkOne(member, depth, poll);
    Findings findings{member.path.string()};
    findings.error("nested-collection", member.root.position,
                   "a collection names another collection (accepted: grids)");
    return findings.take();
}

void append(std::vector<Finding>& list, std::vector<Finding> more) {
    list.insert(list.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
}

} // namespace

std::vector<Finding> checkFile(const std::filesystem::path& path, const Depth& depth, const Poll& poll) {
    const reader::Document document = reader::readDocument(path, poll);
    std::vector<Finding> list = checkOne(document, depth, poll);
    std::set<std::filesystem::path> seen;
    std::error_code ignored;
    for (const reader::Member& member : document.members) {
        if (poll)
            poll();
        if (std::filesystem::is_regular_file(member.path, ignored) && seen.insert(member.path).second)
            append(list, checkMember(reader::readDocument(member.path, poll), depth, poll));
    }
    return list;
}

bool isExplained(const std::vector<Finding>& findings) {
    return std::any_of(findings.begin(), findings.end(),
                       [](const Finding& finding) { return finding.severity == Severity::error && finding.position; });
}

} // namespace krohost::check
