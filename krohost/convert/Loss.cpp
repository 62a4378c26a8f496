#include "krohost/convert/Loss.h"

#include "krohost/convert/WriteError.h"
#include "krohost/convert/damage.h"
#include "krohost/host/runtime/Host.h"

#include <fmt/format.h>

#include <set>
#include <utility>

namespace krohost::convert {

namespace {

namespace fs = std::filesystem;

void addNarrowing(const reader::Document& document, const reader::PiecewiseArray& array, Losses& losses) {
    const reader::Narrowing narrowing = reader::narrowingOf(document, array, pollInterrupt);
    if (narrowing.narrowedCount == 0)
        return;
    const std::string location = locationWord(array.first().association);
    const std::string file = document.path.string();
    const std::string number = array.isConnectivity()
                                   ? std::to_string(narrowing.narrowedCount)
                                   : fmt::format("{} of {}", narrowing.narrowedCount, narrowing.valueCount);
    losses.add({"narrowed",
                fmt::format("The host holds {} values of the array \"{}\" ({}) of \"{}\" otherwise: {}.", number,
                            array.first().name, location, file, reader::inWords(narrowing.first, array.first())),
                array.first().name, location, file, 1, narrowing.narrowedCount, narrowing.first});
}

bool isUsed(const reader::PiecewiseArray& array, const UsedArrays& used) {
    return array.isConnectivity() ? used.areNodes : used.isVariable(array.first());
}

void addNarrowings(const reader::Document& document, const UsedArrays& used, Losses& losses) {
    const std::string file = document.path.string();
    if (document.malformation)
        losses.add(
            {.what = "changed",
             .message = fmt::format("What is lost of \"{}\" cannot be told: {}.", file, document.malformation->message),
             .file = file});
    for (const reader::PiecewiseArray& array : reader::piecewiseArrays(document))
        if (isUsed(array, used))
            addNarrowing(document, array, losses);
}

} // namespace

void Losses::add(Loss loss) {
    const auto key = std::tuple{loss.what, loss.location, loss.array, loss.kind};
    const auto [found, isNew] = places_.emplace(key, Place{list_.size(), loss.file});
    if (isNew || loss.array.empty()) {
        list_.push_back(std::move(loss));
        return;
    }
    Loss& equal = list_[found->second.index];
    equal.count += loss.count;
    if (loss.fileCount > 1 || loss.file != found->second.file)
        equal.fileCount += loss.fileCount;
    found->second.file = std::move(loss.file);
}

void Losses::add(const Losses& others) {
    for (const Loss& loss : others.list_)
        add(loss);
}

std::string sentence(const Loss& loss) {
    return loss.fileCount > 1 ? fmt::format("{} (files with the same: {} more)", loss.message, loss.fileCount - 1)
                              : loss.message;
}

Losses narrowingLosses(const std::vector<fs::path>& files, const UsedArrays& used) {
    Losses losses;
    std::set<fs::path> seen;
    std::vector<fs::path> waiting{files.rbegin(), files.rend()};
    while (!waiting.empty()) {
        const fs::path next = std::move(waiting.back());
        waiting.pop_back();
        if (!seen.insert(next).second)
            continue;
        pollInterrupt();
        const reader::Document document = reader::readDocument(next, pollInterrupt);
        for (auto member = document.members.rbegin(); member != document.members.rend(); ++member)
            waiting.push_back(member->path);
        if (used.isVerified)
            addDamage(document, used.isVerified, losses);
        addNarrowings(document, used, losses);
    }
    return losses;
}

void pollInterrupt() {
    if (Host::isInterrupted())
        throw Interrupted();
}

std::string locationWord(reader::Association association) {
    switch (association) {
    case reader::Association::points:
        return "points";
    case reader::Association::cells:
        return "cells";
    case reader::Association::pointData:
        return "nodal";
    case reader::Association::cellData:
        return "cell";
    case reader::Association::fieldData:
        break;
    }
    return "field";
}

} // namespace krohost::convert
