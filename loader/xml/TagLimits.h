#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace veltra::vtkfile {

/// Counts what the XML reader would take very long for, or much memory, and throws IOException where a document has
/// more of it than any writer's.
class TagLimits {
public:
    /// Bytes of a tag, or of other markup that the reader gets.
    void add(std::span<const std::uint8_t> bytes);
    /// The `>` after the last bytes was not the tag's end. At each of them the reader begins anew to look for it.
    void addInnerEnd();
    void endTag() { byteCount_ = innerEndCount_ = equalsCount_ = referenceCount_ = 0; }

    bool isWithinTag() const { return byteCount_ > 0; }
    /// What a tag without these characters cannot have: declarations of namespaces, entities.
    bool hasEquals() const { return equalsCount_ > 0; }
    bool hasReferences() const { return referenceCount_ > 0; }

    void openElement(std::size_t namespaceCount);
    void closeElement();
    std::size_t depth() const { return namespaceCounts_.size(); } ///< open elements

    static void checkAttributeCount(std::size_t count);
    /// Of all attributes of a tag, with entities replaced.
    static void checkCharacterCount(std::size_t count);

private:
    std::size_t byteCount_ = 0; // since the last whole token
    std::size_t innerEndCount_ = 0, equalsCount_ = 0, referenceCount_ = 0;
    std::size_t namespaceCount_ = 0;           // of declarations in force
    std::vector<std::size_t> namespaceCounts_; // the same within each open element
};

} // namespace veltra::vtkfile
