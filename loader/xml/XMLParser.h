#pragma once

#include "loader/sdk/lexical_cast.h"

#include <boost/filesystem/path.hpp>

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace veltra::vtkfile {

/// Refuses a file that begins so if that is with a UTF-16 byte-order mark: throws IOException.
void checkEncoding(std::span<const std::uint8_t> bytes);

/// A pull parser over an XML file that always knows its place in the file to the byte.
///
/// The XML reader inside is fed tag by tag. Text, comments, instructions and CDATA between tags are passed over in the
/// stream's buffer and never reach it, wherever they are, so that memory does not grow with the text, and bytes that
/// are not XML can be where the caller expects them. Strings are UTF-8. One parser per file, on one thread.
class XMLParser {
public:
    /// Alternative spellings of an attribute's name; the first that is present counts.
    using Names = std::initializer_list<std::string_view>;

    explicit XMLParser(boost::filesystem::path path);
    virtual ~XMLParser();

    /// Opens the file. False when it cannot be opened or is empty; throws IOException when it is UTF-16.
    bool open();

    /// Goes to the next token. False when the document is malformed or ends early; errorString() says how.
    /// Throws IOException when the file cannot be read, a tag is longer or nested deeper than any sound file's, a tag
    /// of a document in UTF-8 holds a byte that is not, or text of a document with a document type holds a reference.
    bool readNext();

    /// Whether the root element, once begun, is still open.
    bool hasMoreInput() const;

    std::string errorString() const;

    bool isStartElement(std::string_view name) const;
    bool isEndElement(std::string_view name) const;
    bool isStartElement() const;
    /// The name of the current element, as it is written.
    std::string elementName() const;
    /// Whether the start element was written as an empty-element tag, so that nothing is before its end.
    bool isEmptyElement() const;

    bool hasAttribute(std::string_view name) const { return hasAnyAttribute({name}); }
    bool hasAnyAttribute(Names names) const;

    /// The value of a required attribute. Throws IOException when there is none, naming the first spelling.
    std::string getAttribute(std::string_view name) const { return getAnyAttribute({name}); }
    std::string getAnyAttribute(Names names) const;

    /// The value of an optional attribute, empty when there is none.
    std::string getOptionalAttribute(Names names) const;

    /// The value of a numeric attribute without the blanks around it, or `defaultValue` when it is absent or blank.
    /// Throws bad_lexical_cast and bad_numeric_cast.
    template <class T>
    T getAttributeAs(Names names, T defaultValue) const {
        const std::string value = numericText(names);
        return value.empty() ? defaultValue : lexical_cast<T>(value);
    }
    template <class T>
    T getAttributeAs(std::string_view name, T defaultValue) const {
        return getAttributeAs<T>({name}, defaultValue);
    }

    /// Passes over white space. position() is then that of the first byte that is not white space.
    void skipWhitespace();

    /// Passes over the bytes through the first `byte`; false if the file ends before. A `<` begins the next tag. After
    /// skipWhitespace(), position() is then that of `byte` itself, otherwise that of the byte after it. Throws
    /// IOException as readNext() does.
    bool feedThrough(char byte);

    /// Where the parser is in the file, in bytes: after a tag, just after its `>`.
    std::uint64_t position() const;

private:
    std::string numericText(Names names) const;

    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace veltra::vtkfile
