#include "addon/VtkFileLoaderInstructions.h"

#include "host/exceptions.h"
#include "krohost/Host.h"

#include <gtest/gtest.h>

namespace test {

namespace {

using veltra::vtk::VtkFileLoaderInstructions;
using Items = std::vector<std::string>;

class Instructions : public testing::Test {
protected:
    static VtkFileLoaderInstructions parse(const Items& items) {
        veltra::toolbox::StringList list;
        for (const std::string& item : items)
            list.append(item);
        return {std::make_shared<const std::string>("L"), list.get()};
    }
    static std::string failure(const Items& items) {
        try {
            parse(items);
            return "none";
        } catch (const veltra::kroutilutil::InvalidInstructionsException& error) {
            return error.what();
        }
    }
    static Items written(const VtkFileLoaderInstructions& instructions) {
        veltra::toolbox::StringList list;
        list.append("earlier");
        instructions.write(list);
        Items items;
        for (std::int64_t number = 1; number <= KroUtilStringListGetCount(list.get()); ++number)
            items.emplace_back(KroUtilStringListGetRawStringPtr(list.get(), number));
        return items;
    }
    static Items after(const Items& items) {
        Items all{"StandardSyntax", "1.0"};
        all.insert(all.end(), items.begin(), items.end());
        return all;
    }

    krohost::Host host;
};

} // namespace

TEST_F(Instructions, AreRefusedWithTheseSentences) {
    const std::string preamble = "L: Malformed or missing STANDARDSYNTAX preamble in the $!READDATASET command";
    for (const Items& items : {Items{}, Items{"STANDARDSYNTAX"}, Items{"STANDARDSYNTAX", "1.00"}, Items{"X", "1.0"}})
        EXPECT_EQ(failure(items), preamble);
    const std::vector<std::pair<Items, std::string>> rows{
        {{"FILENAME_FILE"}, "Invalid instruction, filename in FILENAME_FILE instruction"},
        {{"SOLUTIONTIMESOURCE"}, "Missing SOLUTIONTIMESOURCE value for SOLUTIONTIMESOURCE instruction"},
        {{"SOLUTIONTIMESOURCE", "file"},
         "Unexpected value for SOLUTIONTIMESOURCE instruction. Found, \"FILE\" but was "
         "expecting FROMFIELDDATA, FROMFILENAME, AUTO or NONE"},
        {{"STRAND_ID"}, "Missing STRAND_ID value for STRAND_ID instruction"},
        {{"STRAND_ID", "1x"},
         "Unexpected value for STRAND_ID instruction. Found, \"1x\" but was expecting an integer value."},
        {{"STRAND_ID", "2147483648"},
         "Unexpected value for STRAND_ID instruction. Found, \"2147483648\" but was expecting an integer value."},
        {{"Colour", "red"}, "Unrecognized load parameter: Colour"},
        {{"SOLUTION_TIMES"}, "Missing count for SOLUTION_TIMES instruction"},
        {{"FILELIST_DATAFILES", "0"}, "Bad or missing count for in FILELIST_DATAFILES instruction"},
        {{"FILELIST_DATAFILES", "2x", "a", "b"}, "Bad or missing count for in FILELIST_DATAFILES instruction"},
        {{"SOLUTION_TIMES", "2", "1"}, "Missing entries in SOLUTION_TIMES instruction"},
        {{"SOLUTION_TIMES", "9223372036854775807", "1"}, "Missing entries in SOLUTION_TIMES instruction"}};
    for (const auto& [items, message] : rows)
        EXPECT_EQ(failure(after(items)), "L: " + message);
}

TEST_F(Instructions, AreWrittenInOneOrderWhateverTheOrderTheyCameIn) {
    const std::vector<std::pair<Items, Items>> rows{
        {{}, {"FILELIST_DATAFILES", "0"}},
        {{"filename_file", "a b.vtu"}, {"FILENAME_FILE", "a b.vtu"}},
        {{"SOLUTION_TIMES", "3", "0.0000001", "x", "2.5", "FileList_DataFiles", "2", "a", "b", "Strand_Id", "-7",
          "SolutionTimeSource", "fromFileName"},
         {"SOLUTIONTIMESOURCE", "FROMFILENAME", "STRAND_ID", "-7", "FILELIST_DATAFILES", "2", "a", "b",
          "SOLUTION_TIMES", "2", "0.000000", "2.500000"}},
        {{"SOLUTIONTIMESOURCE", "none", "SOLUTIONTIMESOURCE", "auto", "FILENAME_FILE", "a", "FILELIST_DATAFILES", "1",
          "c"},
         {"FILENAME_FILE", "c"}}};
    for (const auto& [items, expected] : rows) {
        Items all{"STANDARDSYNTAX", "1.0"};
        all.insert(all.end(), expected.begin(), expected.end());
        EXPECT_EQ(written(parse(after(items))), all);
    }
}

} // namespace test
