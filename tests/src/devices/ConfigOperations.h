// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include "hx-aux/Config.h"
#include "testing/Named.h"

#include <cstdint>
#include <map>
#include <ostream>
#include <string>
#include <vector>

/// One row per operation of the configuration, as the supervisor sees it: from its register map, not from the library.
namespace config {

/// A getter with its value as a number; the output has the number before the call.
using Get = Halvix::eErr (*)(Halvix::Config&, double&);
using Set = Halvix::eErr (*)(Halvix::Config&, double);

struct Getter : Named {
    Get call;
    const char* neededVersion; ///< of the supervisor, null for any
    std::map<std::uint8_t, std::uint16_t> registers;
    std::vector<std::string> requests;
    double value;
};

struct Setter : Named {
    Set call;
    const char* neededVersion;
    double value;
    std::vector<std::string> requests;
};

const std::vector<Getter>& getters();
const std::vector<Setter>& setters();

} // namespace config
