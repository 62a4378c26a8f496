#include "krohost/Host.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/VtuBuilder.h"
#include "tests/support/meshes.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace {

/// Loads of the add-on in a folder with "cube.vtu", and what crossed the line: all but the fractions of the progress,
/// which follow the bytes of the file.
class Transcript : public testing::Test {
protected:
    Transcript() {
        const test::MeshPiece cube = test::hexahedron().withCellData(reals("p", test::ElementType::Float64, {0.5}));
        test::vtu()
            .piece(cube.withPointData(variedValues("p", test::ElementType::Int16, 8)))
            .write(folder / "cube.vtu");
        folder.write("broken.vtu", "<VTKFile>");
        std::filesystem::current_path(folder.path());
        host.loadAddOn(ADD_ON);
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

    test::TemporaryFolder folder;
    krohost::Host host{{.journal = krohost::JournalDetail::calls}};
};

const std::string registered = R"(
-> InitKroAddOn113()
KroUtilLockOn()
KroUtilAddOnRegister(110, "VTU/VTM/TRIX Data Loader", "1.0.0", "Veltra") = add-on 1
KroUtilImportAddLoaderX("LoaderName"="VTK Data Loader", "FileNameExtensions"="*.pvtu *.vtm *.vtu", "LoaderCallbackVersion"=2, "LoaderCallback"=function, "LoaderSelectedCallback"=function, "ClientData"=pointer, "AllowMultiFileSelection"=1, "LoaderAdvancedOptions"=0) = 1
KroUtilImportAddLoaderX("LoaderName"="TRIX Loader", "FileNameExtensions"="*.trix", "LoaderCallbackVersion"=2, "LoaderCallback"=function, "LoaderSelectedCallback"=function, "ClientData"=pointer, "AllowMultiFileSelection"=1, "LoaderAdvancedOptions"=0) = 1
KroUtilStateChangeAddCallbackX("CallbackFunction"=function, "StateChangeMode"=2, "StateChangeCallbackAPI"=1) = 1
KroUtilLockOff()
<- InitKroAddOn113)";

const std::string begun = R"(
KroUtilLockStart(add-on 1)
KroUtilDataLoadStart()
KroUtilProgressStart("Working..."))";

const std::string parsed = R"(
KroUtilProgressText("cube.vtu: Opening file...")
KroUtilProgressText("cube.vtu: Parsing XML file...")
KroUtilProgressText("cube.vtu: Parsing PointData...")
KroUtilProgressText("cube.vtu: Parsing CellData...")
KroUtilProgressText("cube.vtu: Parsing Points...")
KroUtilProgressText("cube.vtu: Parsing Cells..."))";

const std::string created = R"(
KroUtilDataSetCreateX("LoaderName"="VTK Data Loader", "DataSetTitle"="VTK Data") = 1
KroUtilDataSetAddVar("X") = 1
KroUtilDataSetAddVar("Y") = 2
KroUtilDataSetAddVar("Z") = 3
KroUtilDataSetAddVar("p") = 4
KroUtilDataSetAddVar("p") = 5)";

const std::string registering = R"(
KroUtilProgressText("Registering zones...")
KroUtilProgressText("cube.vtu: Registering zones..."))";

/// The call that adds a zone "cube", and those about it.
std::string addedZone(int number, int strand, double time) {
    return fmt::format(R"(
KroUtilDataSetGetNumVars() = 5
KroUtilDataSetGetNumVars() = 5
KroUtilDataSetAddZoneX("Name"="cube", "ZoneType"=4, "DeferVarCreation"=1, "DeferNodeMapCreation"=1, "StrandID"={1}, "SolutionTime"={2}, "IMax"=8, "JMax"=1, "VarDataType"=[1, 1, 1, 4, 2], "ValueLocation"=[1, 1, 1, 1, 0]) = 1
KroUtilDataSetGetNumZones() = {0}
KroUtilDataValueCustomLOD({0}, 1) = 1
KroUtilDataValueCustomLOD({0}, 2) = 1
KroUtilDataValueCustomLOD({0}, 3) = 1
KroUtilDataValueCustomLOD({0}, 4) = 1
KroUtilDataValueCustomLOD({0}, 5) = 1
KroUtilDataNodeCustomLOD({0}) = 1
KroUtilDataSetGetNumZones() = {0})",
                       number, strand, time);
}

} // namespace

TEST_F(Transcript, OfPickedFiles) {
    EXPECT_TRUE(host.loadFiles({"cube.vtu"}));
    EXPECT_EQ(lines(), registered + R"(
-> LoaderSelectedCallback(["cube.vtu"]))" +
                           begun + parsed + created + R"(
KroUtilExtractTimesFromFileNames(["cube.vtu"]) = 0)" +
                           registering + addedZone(1, -1, 0) + R"(
KroUtilImportSetLoaderInstr("VTK Data Loader", ["STANDARDSYNTAX", "1.0", "FILENAME_FILE", "cube.vtu"]) = 1
KroUtilProgressFinish()
KroUtilDataLoadFinishX("ResetStyle"=0, "ShowInitialPlot"=1, "PromptForOptions"=0) = 1
KroUtilLockFinish(add-on 1)
<- LoaderSelectedCallback = 1
)");
}

TEST_F(Transcript, OfAReplay) {
    host.clearJournalLines();
    EXPECT_TRUE(replay({"SolutionTimeSource", "none", "filename_file", "cube.vtu", "SOLUTION_TIMES", "1", "2.5"}));
    EXPECT_EQ(lines(), R"(
-> LoaderCallback(["STANDARDSYNTAX", "1.0", "SolutionTimeSource", "none", "filename_file", "cube.vtu", "SOLUTION_TIMES", "1", "2.5"]))" +
                           begun + parsed + created + registering + addedZone(1, -1, 2.5) + R"(
KroUtilImportSetLoaderInstr("VTK Data Loader", ["STANDARDSYNTAX", "1.0", "SOLUTIONTIMESOURCE", "NONE", "FILENAME_FILE", "cube.vtu", "SOLUTION_TIMES", "1", "2.500000"]) = 1
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
KroUtilDataSetGetNumVars() = 5
KroUtilVarGetName(1) = "X"
KroUtilVarGetValueLocation(1) = 1
KroUtilVarGetName(2) = "Y"
KroUtilVarGetValueLocation(2) = 1
KroUtilVarGetName(3) = "Z"
KroUtilVarGetValueLocation(3) = 1
KroUtilVarGetName(4) = "p"
KroUtilVarGetValueLocation(4) = 1
KroUtilVarGetName(5) = "p"
KroUtilVarGetValueLocation(5) = 0
KroUtilExtractTimesFromFileNames(["cube.vtu"]) = 0)" +
                           addedZone(2, 3, 0) + R"(
KroUtilLockFinish(add-on 1)
<- LoaderCallback = 1
)");
}

TEST_F(Transcript, OfAFailureHalfWayAfterWhichAllIsAsBefore) {
    host.clearJournalLines();
    EXPECT_FALSE(host.loadFiles({"cube.vtu", "cube.vtu", "broken.vtu", "cube.vtu"}));
    EXPECT_EQ(lines(), R"(
-> LoaderSelectedCallback(["cube.vtu", "cube.vtu", "broken.vtu", "cube.vtu"]))" +
                           begun + parsed + parsed + R"(
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
    host.refuse("KroUtilVarGetName", 2);
    EXPECT_FALSE(replay({"FILENAME_FILE", "cube.vtu", "STRAND_ID", "3"}));
    EXPECT_EQ(host.dataset().zones.size(), 1);
    EXPECT_EQ(host.dataset().instructions->strings.back(), "cube.vtu");
}
