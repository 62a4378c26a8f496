// One fault after the other below every command that writes files, at every place where it can happen.

#include "tests/krohost/runKrohost.h"

#include <gtest/gtest.h>

#include <iostream>

namespace {

struct Row {
    const char* arguments;     ///< of the tool
    const char* outputs;       ///< the files that it writes
    const char* stride = "31"; ///< which of the allocations fail
    bool isTwice = false;      ///< also where there are no old files
};

class WriteFaults : public InFolder {
protected:
    WriteFaults() {
        const test::MeshPiece mesh = test::mixed().withCellData(variedValues("c", test::ElementType::Int16, 4));
        test::vtu().timeValue(2.5).piece(mesh).write(folder / "a.vtu");
        folder.write("two.vtm", R"(<VTKFile type="vtkMultiBlockDataSet"><vtkMultiBlockDataSet>
            <DataSet file="a.vtu"/><DataSet file="a.vtu"/></vtkMultiBlockDataSet></VTKFile>)");
    }

    void sweep(const Row& row, const std::string& rest = "") const {
        const Outcome outcome = runShell(
            folder, "env LD_PRELOAD='" WRITE_FAULTS "' FAULT_OUTPUTS=" + std::string{row.outputs} +
                        " FAULT_STRIDE=" + row.stride + rest + " \"$krohost\" " + row.arguments + " -q --force");
        EXPECT_EQ(outcome.exitCode, 0) << row.arguments << '\n' << outcome.output << outcome.errors;
        std::cout << row.arguments << ": " << outcome.output;
    }
};

} // namespace

TEST_F(WriteFaults, OneLeavesTheOldFileOrTheWholeNewOne) {
    for (const Row& row : {Row{"convert a.vtu -o b.vtu", "b.vtu", "7", true},
                           {"convert two.vtm -o b.vtm", "b.vtm:b/b_0.vtu:b/b_1.vtu", "31", true},
                           {"convert two.vtm -o b.pvd", "b.pvd:b/b_0.vtu:b/b_1.vtu"},
                           {"convert a.vtu -o b.csv", "b.csv:b-cells.csv"},
                           {"convert a.vtu -o b.vtkhdf", "b.vtkhdf"},
                           {"convert a.vtu -o b.cgns", "b.cgns"},
                           {"convert a.vtu --repair -o b.vtu", "b.vtu"},
                           {"dump a.vtu --variable X -o x", "x"},
                           {"info --demand -j 1 a.vtu --record x", "x"}}) {
        sweep(row);
        if (row.isTwice)
            sweep(row, " FAULT_NEW=1");
    }
}
