#include "krohost/host/runtime/Host.h"
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

    /// Compares what has crossed the line since the last time with the file of that name in the folder transcripts.
    void expectTranscript(const std::string& name) {
        std::string text;
        for (const std::string& line : host.journal().lines())
            if (!line.starts_with("KroUtilProgressUpdate("))
                text += line + "\n";
        host.injection().clearJournal();
        EXPECT_EQ(text, test::readFile(std::filesystem::path(TRANSCRIPTS) / (name + ".txt")));
    }

    bool replay(std::vector<std::string> instructions) {
        instructions.insert(instructions.begin(), {"STANDARDSYNTAX", "1.0"});
        return host.loadInstructions(host.loaders().front(), instructions);
    }

    test::TemporaryFolder folder;
    krohost::Host host{{.journal = krohost::JournalDetail::calls}};
};

} // namespace

TEST_F(Transcript, OfPickedFiles) {
    EXPECT_TRUE(host.loadFiles({"cube.vtu"}));
    expectTranscript("picked");
}

TEST_F(Transcript, OfAReplay) {
    host.injection().clearJournal();
    EXPECT_TRUE(replay({"SolutionTimeSource", "none", "filename_file", "cube.vtu", "SOLUTION_TIMES", "1", "2.5"}));
    expectTranscript("replay");
}

TEST_F(Transcript, OfAnAppend) {
    EXPECT_TRUE(host.loadFiles({"cube.vtu"}));
    host.injection().clearJournal();
    EXPECT_TRUE(replay({"FILENAME_FILE", "cube.vtu", "STRAND_ID", "3"}));
    expectTranscript("append");
}

TEST_F(Transcript, OfAFailureHalfWayAfterWhichAllIsAsBefore) {
    host.injection().clearJournal();
    EXPECT_FALSE(host.loadFiles({"cube.vtu", "cube.vtu", "broken.vtu", "cube.vtu"}));
    expectTranscript("failure");
    EXPECT_EQ(host.stoppedAt(), "broken.vtu: Parsing XML file...");
    EXPECT_EQ(host.dataset().zones.size(), 0);
    EXPECT_TRUE(host.loadFiles({"cube.vtu"}));
    EXPECT_EQ(host.stoppedAt(), std::nullopt);
    EXPECT_FALSE(replay({"FILENAME_FILE", "broken.vtu", "STRAND_ID", "3"}));
    host.injection().refuse("KroUtilVarGetName", 2);
    EXPECT_FALSE(replay({"FILENAME_FILE", "cube.vtu", "STRAND_ID", "3"}));
    EXPECT_EQ(host.dataset().zones.size(), 1);
    EXPECT_EQ(host.dataset().instructions->strings.back(), "cube.vtu");
}
