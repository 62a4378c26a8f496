#pragma once

#include "krohost/Host.h"

#include <string>
#include <utility>

/// A host that has the fake add-on and has loaded one file.
struct Loaded {
    explicit Loaded(const std::string& file, krohost::HostOptions options = {}) : host{std::move(options)} {
        host.loadAddOn(FAKE_ADD_ON);
        isLoaded = host.loadFiles({file});
    }

    krohost::Host host;
    bool isLoaded = false;
};
