#include "loader/xml/TagLimits.h"

#include "loader/xml/messages.h"

#include "loader/sdk/exceptions.h"

#include <algorithm>

namespace veltra::vtkfile {

namespace {

/// More than any writer's tag needs. The XML reader compares the attributes of a tag each with each.
constexpr std::size_t markupByteLimit = 0x10000;

constexpr std::size_t innerEndLimit = 1000;
constexpr std::size_t equalsLimit = 1000;    // the reader compares every attribute of a tag with every other
constexpr std::size_t referenceLimit = 1000; // each may be an entity of 4096 characters

/// Elements within elements; the XML reader keeps a record of each.
constexpr std::size_t depthLimit = 1000;

/// Declarations of namespaces that are in force; the XML reader looks through them at every tag.
constexpr std::size_t namespaceLimit = 100;

/// No more than a tag could hold without entities.
constexpr std::size_t expandedLimit = markupByteLimit;

} // namespace

void TagLimits::add(std::span<const std::uint8_t> bytes) {
    byteCount_ += bytes.size();
    if (byteCount_ > markupByteLimit)
        throw IOException(markupTooLong(markupByteLimit));
    const auto countOf = [bytes](char character) {
        return static_cast<std::size_t>(std::ranges::count(bytes, character));
    };
    if ((equalsCount_ += countOf('=')) > equalsLimit)
        throw IOException(tooManyInTag(equalsLimit, '='));
    if ((referenceCount_ += countOf('&')) > referenceLimit)
        throw IOException(tooManyInTag(referenceLimit, '&'));
}

void TagLimits::addInnerEnd() {
    if (++innerEndCount_ > innerEndLimit)
        throw IOException(tooManyInTag(innerEndLimit, '>'));
}

void TagLimits::openElement(std::size_t namespaceCount) {
    if (depth() == depthLimit)
        throw IOException(nestedTooDeep(depthLimit));
    namespaceCount_ += namespaceCount;
    if (namespaceCount_ > namespaceLimit)
        throw IOException(tooManyNamespaces(namespaceLimit));
    namespaceCounts_.push_back(namespaceCount_);
}

void TagLimits::closeElement() {
    namespaceCounts_.pop_back();
    namespaceCount_ = namespaceCounts_.empty() ? 0 : namespaceCounts_.back();
}

void TagLimits::checkAttributeCount(std::size_t count) {
    if (count > equalsLimit)
        throw IOException(tooManyInTag(equalsLimit, '='));
}

void TagLimits::checkCharacterCount(std::size_t count) {
    if (count > expandedLimit)
        throw IOException(expandedTooFar(expandedLimit));
}

} // namespace veltra::vtkfile
