#include "addon/VtkFileLoaderInstructions.h"

#include "host/exceptions.h"
#include "krohost/Host.h"

#include <gtest/gtest.h>

#include <sstream>

namespace test {

namespace {

/// What is written of instructions after they were read, or why they are refused. Items are separated by commas.
std::string written(const std::string& instructions) {
    veltra::toolbox::StringList list;
    std::istringstream items(instructions);
    for (std::string item; std::getline(items, item, ',');)
        list.append(item);
    try {
        const veltra::vtk::VtkFileLoaderInstructions read{std::make_shared<const std::string>("L"), list.get()};
        list.append("earlier");
        read.write(list);
    } catch (const veltra::kroutilutil::InvalidInstructionsException& error) {
        return error.what();
    }
    std::string text;
    for (std::int64_t number = 1; number <= KroUtilStringListGetCount(list.get()); ++number)
        text += (number > 1 ? "," : "") + std::string(KroUtilStringListGetRawStringPtr(list.get(), number));
    return text;
}

} // namespace

TEST(Instructions, AreWrittenInOneOrderOrRefusedWithASentence) {
    krohost::Host host;
    for (const char* items : {"", "STANDARDSYNTAX", "STANDARDSYNTAX,1.00", "X,1.0"})
        EXPECT_EQ(written(items), "L: Malformed or missing STANDARDSYNTAX preamble in the $!READDATASET command");
    const std::string badStrand = "L: Unexpected value for STRAND_ID instruction. Found, \"",
                      notANumber = "\" but was expecting an integer value.";
    const std::string badCount = "L: Bad or missing count for in FILELIST_DATAFILES instruction";
    const std::vector<std::pair<std::string, std::string>> rows{
        {"FILENAME_FILE", "L: Invalid instruction, filename in FILENAME_FILE instruction"},
        {"SOLUTIONTIMESOURCE", "L: Missing SOLUTIONTIMESOURCE value for SOLUTIONTIMESOURCE instruction"},
        {"SOLUTIONTIMESOURCE,file", "L: Unexpected value for SOLUTIONTIMESOURCE instruction. Found, \"FILE\" but was "
                                    "expecting FROMFIELDDATA, FROMFILENAME, AUTO or NONE"},
        {"STRAND_ID", "L: Missing STRAND_ID value for STRAND_ID instruction"},
        {"STRAND_ID,1x", badStrand + "1x" + notANumber},
        {"STRAND_ID,2147483648", badStrand + "2147483648" + notANumber},
        {"Colour,red", "L: Unrecognized load parameter: Colour"},
        {"SOLUTION_TIMES", "L: Missing count for SOLUTION_TIMES instruction"},
        {"FILELIST_DATAFILES,0", badCount},
        {"FILELIST_DATAFILES,2x,a,b", badCount},
        {"SOLUTION_TIMES,2,1", "L: Missing entries in SOLUTION_TIMES instruction"},
        {"SOLUTION_TIMES,9223372036854775807,1", "L: Missing entries in SOLUTION_TIMES instruction"},
        {"", "STANDARDSYNTAX,1.0,FILELIST_DATAFILES,0"},
        {"filename_file,a b.vtu", "STANDARDSYNTAX,1.0,FILENAME_FILE,a b.vtu"},
        {"SOLUTION_TIMES,3,0.0000001,x,2.5,FileList_DataFiles,2,a,b,Strand_Id,-7,SolutionTimeSource,fromFileName",
         "STANDARDSYNTAX,1.0,SOLUTIONTIMESOURCE,FROMFILENAME,STRAND_ID,-7,FILELIST_DATAFILES,2,a,b,SOLUTION_TIMES,2,"
         "0.000000,2.500000"},
        {"SOLUTIONTIMESOURCE,none,SOLUTIONTIMESOURCE,auto,FILENAME_FILE,a,FILELIST_DATAFILES,1,c",
         "STANDARDSYNTAX,1.0,FILENAME_FILE,c"}};
    for (const auto& [items, outcome] : rows)
        EXPECT_EQ(written("StandardSyntax,1.0," + items), outcome);
}

} // namespace test
