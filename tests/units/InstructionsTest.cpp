#include "addon/VtkFileLoaderInstructions.h"

#include "krohost/Host.h"

#include <gtest/gtest.h>

#include <sstream>

namespace test {

namespace {

/// What is written of instructions after they were read. Items are separated by commas.
std::string written(const std::string& instructions) {
    veltra::toolbox::StringList list;
    std::istringstream items(instructions);
    for (std::string item; std::getline(items, item, ',');)
        list.append(item);
    const veltra::vtk::VtkFileLoaderInstructions read{std::make_shared<const std::string>("L"), list.get()};
    list.append("earlier");
    read.write(list);
    std::string text;
    for (const std::string& item : veltra::toolbox::items(list.get()))
        text += (text.empty() ? "" : ",") + item;
    return text;
}

} // namespace

TEST(Instructions, AreWrittenInOneOrder) {
    krohost::Host host;
    const std::vector<std::pair<std::string, std::string>> rows{
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
