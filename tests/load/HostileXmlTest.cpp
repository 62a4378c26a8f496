// Documents that are made to take all the time or memory there is, or to be read as something else.

#include "tests/load/limits.h"
#include "tests/load/refusals.h"
#include "tests/support/sound.h"
#include "tests/support/text.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <tuple>

namespace test {

namespace {

using namespace std::string_literals;

constexpr std::size_t million = 1000000;

/// The sound file with text at these places.
std::string with(const std::string& inPieceTag, const std::string& betweenTags = "") {
    return sound().markup("<Piece ", "<Piece " + inPieceTag).markup("<Points>", betweenTags + "<Points>").text();
}
std::string inEncoding(const std::string& name, const std::string& points = "<Points>") {
    return sound()
        .markup("<?xml version=\"1.0\"?>", "<?xml version=\"1.0\" encoding=\"" + name + "\"?>")
        .markup("<Points>", points)
        .text();
}
std::string withEntities(const std::string& entities, const std::string& inTag, const std::string& inText = "") {
    const std::string text = with("a=\"" + inTag + "\" ", inText);
    return std::string(text).insert(text.find("<VTKFile"), "<!DOCTYPE VTKFile [" + entities + "]>");
}
Files blocks(const std::string& content) {
    return {{"a.vtm", "<VTKFile type=\"vtkMultiBlockDataSet\">" + content + "</VTKFile>"}};
}

enum class End { dialog, soundMesh };

} // namespace

TEST(HostileXml, EndsInADialogOrASoundMesh) {
    const std::string laughs = "<!ENTITY e0 'ha'>" + numbered(30, "<!ENTITY e{0} '&e{1};&e{1};'>");
    const std::string longText = "<!ENTITY e '" + repeated("x", 4000) + "'>", x = repeated("x", million);
    const std::vector<std::tuple<const char*, Files, End>> rows{
        {"laughs in a tag", withEntities(laughs, "&e30;"), End::dialog},
        {"laughs in text", withEntities(laughs, "", "&e30;"), End::dialog},
        {"laughs in no text", withEntities(laughs, "", "<![CDATA[&e30;]]><!-- &e30; -->"), End::soundMesh},
        {"an entity in itself", withEntities("<!ENTITY e '&e;'>", "&e;"), End::dialog},
        {"an external entity", withEntities("<!ENTITY e SYSTEM '/etc/passwd'>", "&e;"), End::dialog},
        {"a long entity many times", withEntities(longText, repeated("&e;", 20000)), End::dialog},
        {"entities that a tag has room for", withEntities(longText, repeated("&e;", 16)), End::soundMesh},
        {"a long entity a thousand times", withEntities(longText, repeated("&e;", 1000)), End::dialog},
        {"a million entities", withEntities(repeated("<!ENTITY e ''>", million), ""), End::dialog},
        {"a million attributes in a tag", with(repeated("a='' ", million)), End::dialog},
        {"many attributes", with("", repeated("<a " + numbered(500, "a{0}='' ") + "/>", 200)), End::soundMesh},
        {"a million nested elements", with("", repeated("<a>", million)), End::dialog},
        {"a million nested blocks", blocks(repeated("<Block>", million)), End::dialog},
        {"many blocks", blocks(repeated("<Block/>", million / 5)), End::dialog},
        {"a long value", with("a='" + x + "' "), End::dialog},
        {"a long name", with(x), End::dialog},
        {"a long comment", with("", "<!--" + x + "-->"), End::soundMesh},
        {"a long instruction", with("", "<?a " + x + "?>"), End::soundMesh},
        {"a zero byte in a tag", with("a='\0' "s), End::dialog},
        {"a zero byte between tags", with("", "\0"s), End::soundMesh},
        {"bytes that are no UTF-8", with("a='\xC0\x80\xFF' "), End::dialog},
        {"the same attribute twice", with("NumberOfPoints='23' "), End::dialog},
        {"a document that says it is in UTF-16", inEncoding("UTF-16"), End::dialog},
        {"an encoding that there is not", inEncoding("ASCII-2000"), End::dialog},
        {"another encoding", inEncoding("ISO-8859-1", "<Points a='\xE9'>"), End::soundMesh},
        {"a mark and another encoding", "\xEF\xBB\xBF" + inEncoding("ISO-8859-1"), End::soundMesh},
        {"what is no element, with bytes that are no UTF-8",
         "\xEF\xBB\xBF<?a>\xFF?><!-- a > \xFF -- > --><?xml-a?>" +
             sound()
                 .markup("<?xml version=\"1.0\"?>", "")
                 .markup("</DataArray>", "<!--\xFF > b --><![CDATA[\xFF <a>]]><?a > \xFF?></DataArray>")
                 .markup("<Points>", "\xFF<Points a='\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80'>")
                 .text(),
         End::soundMesh},
        {"namespaces", with("", repeated("<a xmlns='u'><a xmlns='v'/></a>", 100)), End::soundMesh},
    };
    for (const auto& [name, files, end] : rows) {
        SCOPED_TRACE(name);
        Limits limits{0};
        Load load{files};
        limits.check();
        if (end == End::soundMesh) {
            expectZone(load, sound().expected());
        } else {
            EXPECT_TRUE(!load.loaded() && load.host.dialogs().size() == 1) << load.dialog();
            expectExplanation(load);
        }
    }
}

TEST(HostileXml, TakesTimeInProportion) {
    const auto piece = [](const std::string& inFieldData, const std::string& blockTable) {
        return "<VTKFile type='UnstructuredGrid' compressor='vtkZLibDataCompressor'><FieldData>" + inFieldData +
               "</FieldData><AppendedData encoding='raw'>_" + blockTable;
    };
    const std::string many = numbered(500, "a{0}='' ");
    const std::vector<std::tuple<const char*, std::size_t, std::function<std::string(std::size_t)>>> rows{
        {"attributes", 20, [&](std::size_t count) { return with("", repeated("<a " + many + "/>", count)); }},
        {"tags", 20000, [](std::size_t count) { return with("", repeated("<a/>", count)); }},
        {"comments", 20000, [](std::size_t count) { return with("", repeated("<!-- <a/> -->", count)); }},
        {"tags below namespaces", 10000,
         [](std::size_t count) {
             return with("", "<a " + numbered(100, "xmlns:n{0}='u' ") + ">" + repeated("<a/>", count) + "</a>");
         }},
        {"elements with namespaces", 1000,
         [](std::size_t count) { return with("", repeated("<a " + numbered(10, "xmlns:n{0}='u' ") + "/>", count)); }},
        {"entities", 200,
         [](std::size_t count) {
             return withEntities("<!ENTITY e '" + repeated("x", 4000) + "'>", "&e;",
                                 repeated("<a b='" + repeated("&e;", 16) + "'/>", count));
         }},
        {"field data that share a table of blocks", 300, [&](std::size_t count) {
             return piece(repeated("<DataArray Name='f' type='Int8' format='appended'/>", count),
                          valueBytes(static_cast<std::uint32_t>(100 * count), false) + "\1\0\0\0\0\0\0\0"s +
                              repeated("\1\0\0\0x", 100 * count));
         }}};
    for (const auto& [name, count, make] : rows) {
        SCOPED_TRACE(name);
        Load load{Files{{"mesh.vtu", ""}}};
        std::map<std::size_t, std::string> texts{{count, make(count)}, {2 * count, make(2 * count)}};
        expectLinear(count, [&, &make = make](std::size_t partCount) {
            writeFile(load.path(), texts[partCount]);
            load.loadAgain();
        });
    }
}

TEST(HostileXml, OfAGigabyteIsNotKept) {
    constexpr std::size_t gigabyte = std::size_t{1} << 30,
                          part = gigabyte / 8; // of what is looked through byte by byte
    const std::vector<std::pair<const char*, std::size_t>> rows{{"<VTKFile a=\"", gigabyte},
                                                                {"<a ", gigabyte},
                                                                {"<", gigabyte},
                                                                {"<?xml version='1.0'", gigabyte},
                                                                {"", gigabyte},
                                                                {"<!--", part},
                                                                {"<VTKFile type=\"UnstructuredGrid\">", part}};
    for (const auto& [beginning, byteCount] : rows) {
        SCOPED_TRACE(beginning);
        Load load{Files{{"mesh.vtu", beginning}}};
        const std::size_t dialogCount = load.host.dialogs().size();
        truncate(load.path(), byteCount); // with zeros, which take no room
        Limits limits{0};
        EXPECT_FALSE(load.loadAgain());
        limits.check();
        EXPECT_EQ(load.host.dialogs().size(), dialogCount + 1);
    }
}

} // namespace test
