// Documents that are made to take all the time or memory there is, or to be read as something else.

#include "tests/load/Load.h"
#include "tests/load/limits.h"
#include "tests/support/sound.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace test {

namespace {

using namespace std::string_literals;

constexpr std::size_t million = 1000000;

std::string times(std::size_t count, const std::string& text) {
    std::string repetition;
    repetition.reserve(count * text.size());
    while (count-- > 0)
        repetition += text;
    return repetition;
}

std::string numbered(int count, const std::string& pattern) {
    std::string list;
    for (int number = 1; number <= count; ++number)
        list += fmt::format(fmt::runtime(pattern), number, number - 1);
    return list;
}

/// The sound file with text at these places.
std::string with(const std::string& inPieceTag, const std::string& betweenTags = "") {
    return sound().markup("<Piece ", "<Piece " + inPieceTag).markup("<Points>", betweenTags + "<Points>").text();
}
std::string inEncoding(const std::string& name) {
    return sound().markup("<?xml version=\"1.0\"?>", "<?xml version=\"1.0\" encoding=\"" + name + "\"?>").text();
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
    const std::string longText = "<!ENTITY e '" + times(4000, "x") + "'>", x = times(million, "x");
    const std::vector<std::tuple<const char*, Files, End>> rows{
        {"laughs in a tag", withEntities(laughs, "&e30;"), End::dialog},
        {"laughs in text", withEntities(laughs, "", "&e30;"), End::soundMesh},
        {"an entity in itself", withEntities("<!ENTITY e '&e;'>", "&e;"), End::dialog},
        {"an external entity", withEntities("<!ENTITY e SYSTEM '/etc/passwd'>", "&e;"), End::dialog},
        {"a long entity many times", withEntities(longText, times(20000, "&e;")), End::dialog},
        {"a long entity a thousand times", withEntities(longText, times(1000, "&e;")), End::soundMesh},
        {"a million entities", withEntities(times(million, "<!ENTITY e ''>"), ""), End::dialog},
        {"a million attributes in a tag", with(times(million, "a='' ")), End::dialog},
        {"many attributes", with("", times(200, "<a " + numbered(500, "a{0}='' ") + "/>")), End::soundMesh},
        {"a million nested elements", with("", times(million, "<a>")), End::dialog},
        {"a million nested blocks", blocks(times(million, "<Block>")), End::dialog},
        {"many blocks", blocks(times(million / 5, "<Block/>")), End::dialog},
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
        {"another encoding", inEncoding("ISO-8859-1"), End::soundMesh},
    };
    for (const auto& [name, files, end] : rows) {
        SCOPED_TRACE(name);
        Limits limits{0};
        Load load{files};
        limits.check();
        if (end == End::soundMesh)
            expectZone(load, sound().expected());
        else
            EXPECT_TRUE(!load.loaded() && load.host.dialogs().size() == 1) << load.dialog();
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
