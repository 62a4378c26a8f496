#include "krohost/Host.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/VtuBuilder.h"
#include "tests/support/meshes.h"

#include <gtest/gtest.h>

namespace {

/// Loads of the add-on in a folder with "cube.vtu", and what crossed the line: all but the fractions of the progress,
/// which follow the bytes of the file.
class Transcript : public testing::Test {
protected:
    Transcript() {
        test::vtu().piece(test::hexahedron()).write(folder_ / "cube.vtu");
        folder_.write("broken.vtu", "<VTKFile>");
        std::filesystem::current_path(folder_.path());
        host.loadAddOn(ADD_ON);
        host.clearJournalLines();
    }
    ~Transcript() override {
        std::filesystem::current_path("/");
        host.shutDown();
        EXPECT_EQ(host.violations(), std::vector<std::string>{});
    }

    std::string lines() {
        std::string text = "\n";
        for (const std::string& line : host.journal().lines())
            if (!line.starts_with("KroUtilProgressUpdate("))
                text += line + "\n";
        host.clearJournalLines();
        return text;
    }

    bool replay(std::vector<std::string> instructions) {
        instructions.insert(instructions.begin(), {"STANDARDSYNTAX", "1.0"});
        return host.loadInstructions(host.loaders().front(), instructions);
    }

private:
    test::TemporaryFolder folder_;

protected:
    krohost::Host host{{.journal = krohost::JournalDetail::calls}};
};

} // namespace

TEST_F(Transcript, OfPickedFiles) {
    EXPECT_TRUE(host.loadFiles({"cube.vtu"}));
    EXPECT_EQ(lines(), R"(
-> LoaderSelectedCallback(["cube.vtu"])
KroUtilLockStart(add-on 1)
KroUtilDataLoadStart()
KroUtilProgressStart("Working...")
KroUtilProgressText("cube.vtu: Opening file...")
KroUtilProgressText("cube.vtu: Parsing XML file...")
KroUtilProgressText("cube.vtu: Parsing Points...")
KroUtilProgressText("cube.vtu: Parsing Cells...")
KroUtilDataSetCreateX("LoaderName"="VTK Data Loader", "DataSetTitle"="VTK Data") = 1
KroUtilDataSetAddVar("X") = 1
KroUtilDataSetAddVar("Y") = 2
KroUtilDataSetAddVar("Z") = 3
KroUtilExtractTimesFromFileNames(["cube.vtu"]) = 0
KroUtilProgressText("Registering zones...")
KroUtilProgressText("cube.vtu: Registering zones...")
KroUtilDataSetGetNumVars() = 3
KroUtilDataSetGetNumVars() = 3
KroUtilDataSetAddZoneX("Name"="cube", "ZoneType"=4, "DeferVarCreation"=1, "DeferNodeMapCreation"=1, "StrandID"=-1, "SolutionTime"=0, "IMax"=8, "JMax"=1, "VarDataType"=[1, 1, 1], "ValueLocation"=[1, 1, 1]) = 1
KroUtilDataSetGetNumZones() = 1
KroUtilDataValueCustomLOD(1, 1) = 1
KroUtilDataValueCustomLOD(1, 2) = 1
KroUtilDataValueCustomLOD(1, 3) = 1
KroUtilDataNodeCustomLOD(1) = 1
KroUtilDataSetGetNumZones() = 1
KroUtilImportSetLoaderInstr("VTK Data Loader", ["STANDARDSYNTAX", "1.0", "FILENAME_FILE", "cube.vtu"]) = 1
KroUtilProgressFinish()
KroUtilDataLoadFinishX("ResetStyle"=0, "ShowInitialPlot"=1, "PromptForOptions"=0) = 1
KroUtilLockFinish(add-on 1)
<- LoaderSelectedCallback = 1
)");
}

TEST_F(Transcript, OfAReplay) {
    EXPECT_TRUE(replay({"filename_file", "cube.vtu", "SOLUTION_TIMES", "1", "2.5"}));
    EXPECT_EQ(lines(), R"(
-> LoaderCallback(["STANDARDSYNTAX", "1.0", "filename_file", "cube.vtu", "SOLUTION_TIMES", "1", "2.5"])
KroUtilLockStart(add-on 1)
KroUtilDataLoadStart()
KroUtilProgressStart("Working...")
KroUtilProgressText("cube.vtu: Opening file...")
KroUtilProgressText("cube.vtu: Parsing XML file...")
KroUtilProgressText("cube.vtu: Parsing Points...")
KroUtilProgressText("cube.vtu: Parsing Cells...")
KroUtilDataSetCreateX("LoaderName"="VTK Data Loader", "DataSetTitle"="VTK Data") = 1
KroUtilDataSetAddVar("X") = 1
KroUtilDataSetAddVar("Y") = 2
KroUtilDataSetAddVar("Z") = 3
KroUtilProgressText("Registering zones...")
KroUtilProgressText("cube.vtu: Registering zones...")
KroUtilDataSetGetNumVars() = 3
KroUtilDataSetGetNumVars() = 3
KroUtilDataSetAddZoneX("Name"="cube", "ZoneType"=4, "DeferVarCreation"=1, "DeferNodeMapCreation"=1, "StrandID"=-1, "SolutionTime"=2.5, "IMax"=8, "JMax"=1, "VarDataType"=[1, 1, 1], "ValueLocation"=[1, 1, 1]) = 1
KroUtilDataSetGetNumZones() = 1
KroUtilDataValueCustomLOD(1, 1) = 1
KroUtilDataValueCustomLOD(1, 2) = 1
KroUtilDataValueCustomLOD(1, 3) = 1
KroUtilDataNodeCustomLOD(1) = 1
KroUtilDataSetGetNumZones() = 1
KroUtilImportSetLoaderInstr("VTK Data Loader", ["STANDARDSYNTAX", "1.0", "FILENAME_FILE", "cube.vtu", "SOLUTION_TIMES", "1", "2.500000"]) = 1
KroUtilProgressFinish()
KroUtilDataLoadFinishX() = 1
KroUtilLockFinish(add-on 1)
<- LoaderCallback = 1
)");
}

TEST_F(Transcript, OfAnAppend) {
    EXPECT_TRUE(host.loadFiles({"cube.vtu"}));
    host.clearJournalLines();
    EXPECT_TRUE(replay({"FILENAME_FILE", "cube.vtu", "STRAND_ID", "3"}));
    EXPECT_EQ(lines(), R"(
-> LoaderCallback(["STANDARDSYNTAX", "1.0", "FILENAME_FILE", "cube.vtu", "STRAND_ID", "3"])
KroUtilLockStart(add-on 1)
KroUtilDataSetGetNumVars() = 3
KroUtilVarGetName(1) = "X"
KroUtilVarGetValueLocation(1) = 1
KroUtilVarGetName(2) = "Y"
KroUtilVarGetValueLocation(2) = 1
KroUtilVarGetName(3) = "Z"
KroUtilVarGetValueLocation(3) = 1
KroUtilExtractTimesFromFileNames(["cube.vtu"]) = 0
KroUtilDataSetGetNumVars() = 3
KroUtilDataSetGetNumVars() = 3
KroUtilDataSetAddZoneX("Name"="cube", "ZoneType"=4, "DeferVarCreation"=1, "DeferNodeMapCreation"=1, "StrandID"=3, "SolutionTime"=0, "IMax"=8, "JMax"=1, "VarDataType"=[1, 1, 1], "ValueLocation"=[1, 1, 1]) = 1
KroUtilDataSetGetNumZones() = 2
KroUtilDataValueCustomLOD(2, 1) = 1
KroUtilDataValueCustomLOD(2, 2) = 1
KroUtilDataValueCustomLOD(2, 3) = 1
KroUtilDataNodeCustomLOD(2) = 1
KroUtilDataSetGetNumZones() = 2
KroUtilLockFinish(add-on 1)
<- LoaderCallback = 1
)");
}

TEST_F(Transcript, OfAFailureHalfWayAfterWhichAllIsAsBefore) {
    EXPECT_FALSE(host.loadFiles({"cube.vtu", "cube.vtu", "broken.vtu", "cube.vtu"}));
    EXPECT_EQ(lines(), R"(
-> LoaderSelectedCallback(["cube.vtu", "cube.vtu", "broken.vtu", "cube.vtu"])
KroUtilLockStart(add-on 1)
KroUtilDataLoadStart()
KroUtilProgressStart("Working...")
KroUtilProgressText("cube.vtu: Opening file...")
KroUtilProgressText("cube.vtu: Parsing XML file...")
KroUtilProgressText("cube.vtu: Parsing Points...")
KroUtilProgressText("cube.vtu: Parsing Cells...")
KroUtilProgressText("cube.vtu: Opening file...")
KroUtilProgressText("cube.vtu: Parsing XML file...")
KroUtilProgressText("cube.vtu: Parsing Points...")
KroUtilProgressText("cube.vtu: Parsing Cells...")
KroUtilProgressText("broken.vtu: Opening file...")
KroUtilProgressText("broken.vtu: Parsing XML file...")
KroUtilProgressFinish()
KroUtilDialogErrMsg("VTK Data Loader: An error occurred while reading data from the VTK file.\nReason:  \"type\" attribute is missing")
KroUtilDataLoadFinishX() = 1
KroUtilLockFinish(add-on 1)
<- LoaderSelectedCallback = 0
)");
    EXPECT_EQ(host.stoppedAt(), "broken.vtu: Parsing XML file...");
    EXPECT_EQ(host.dataset().zones.size(), 0);
    EXPECT_TRUE(host.loadFiles({"cube.vtu"}));
    EXPECT_EQ(host.stoppedAt(), std::nullopt);
    EXPECT_FALSE(replay({"FILENAME_FILE", "broken.vtu", "STRAND_ID", "3"}));
    EXPECT_EQ(host.dataset().zones.size(), 1);
    EXPECT_EQ(host.dataset().instructions->strings.back(), "cube.vtu");
}
