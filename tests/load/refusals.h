/// Files that the add-on refuses, and the one sentence that it says of each.
#pragma once

#include "krohost/check/checkFile.h"
#include "tests/load/Load.h"
#include "tests/support/meshes.h"

#include <gtest/gtest.h>

#include <sstream>

namespace test {

inline const std::string fileError = "An error occurred while reading data from the VTK file.\nReason: ";
inline const std::string inputError = "An error occurred while reading data from the input file.\nReason: ";

inline std::string badNodeCount(const std::string& name, const std::string& count) {
    return "Veltra supports P1 through P4 high-order Lagrange elements. The VTK cell type \"" + name + "\" has " +
           count + " nodes and is not yet supported";
}

/// Cells of these types and numbers of nodes: "12:8 10:4".
inline VtuBuilder withCells(const std::string& cells) {
    MeshPiece piece = hexahedron();
    piece.cells.clear();
    std::istringstream numbers(cells);
    std::size_t nodeCount = 0;
    char colon{};
    for (int type = 0; numbers >> type >> colon >> nodeCount;)
        piece.cells.push_back({type, std::vector<std::int64_t>(nodeCount)});
    return vtu().piece(piece);
}

struct Refusal {
    Files file;
    std::string dialog;
    std::string demand = {}; // what is demanded after the load; empty when that is refused
};

/// What the host itself finds in the file names the cause, and where it is.
inline void expectExplanation(const Load& load) {
    const auto findings = krohost::check::checkFile(load.path(), {true, load.loaded()}, {});
    EXPECT_TRUE(krohost::check::isExplained(findings)) << load.dialog();
}

/// Each file's only dialog is its text with this beginning, and the file shows why.
inline void expectRefusals(const std::string& beginning, const std::vector<Refusal>& refusals) {
    for (const Refusal& refusal : refusals) {
        SCOPED_TRACE(refusal.dialog);
        Load load{refusal.file};
        EXPECT_EQ(load.loaded(), !refusal.demand.empty());
        if (load.loaded()) {
            EXPECT_EQ(load.dialog(), "");
            EXPECT_FALSE(refusal.demand == "node map" ? load.nodeMap().has_value() : !!load.values(refusal.demand));
        }
        EXPECT_EQ(load.dialog(), "VTK Data Loader: " + beginning + refusal.dialog);
        expectExplanation(load);
    }
}

} // namespace test
