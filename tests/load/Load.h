#pragma once

#include "krohost/host/runtime/Host.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/VtuBuilder.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace test {

/// Files with their names; the first is the one to load. A single one is "mesh.vtu".
struct Files : std::vector<std::pair<std::string, std::string>> {
    using vector::vector;
    Files(const std::string& text) : vector{{"mesh.vtu", text}} {}
    Files(const VtuBuilder& file) : Files(file.text()) {}
};

/// Files in a folder of their own and a host that has the add-on and has loaded the first of them. At its end the host
/// shuts down, and the test fails if the add-on has broken the interface's contract.
class Load {
public:
    /// `prepare` is called before the host gets the add-on.
    explicit Load(const Files& files, krohost::HostOptions options = {},
                  const std::function<void(krohost::Host&)>& prepare = {});
    ~Load();
    Load(const Load&) = delete;
    Load& operator=(const Load&) = delete;

    bool loaded() const { return loaded_; }
    const std::string& path() const { return path_; }
    bool loadAgain() { return loaded_ = host.loadFiles({path_}); }

    const krohost::Zone& zone() const { return host.dataset().zones.at(0); }
    /// The first variable that has the name.
    std::int32_t variableNumber(const std::string& name) const;
    std::optional<std::vector<double>> values(const std::string& name);
    std::optional<std::vector<std::vector<std::int64_t>>> nodeMap() { return host.demandNodeMap(1); }
    /// What is in the storage of a variable, as bytes; nothing when the load fails.
    std::optional<std::string> bytes(std::int32_t variable);

    /// The texts of all dialogs, with a line between them.
    std::string dialog() const;

private:
    TemporaryFolder folder_;
    std::string path_;
    bool loaded_ = false;

public:
    krohost::Host host;
};

/// Demands everything that the first zone has and compares it.
void expectZone(Load& load, const ExpectedZone& expected);

} // namespace test
