// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/Objects.h"

#include "tools/cli/Completion.h"

#include <algorithm>

namespace hxaux {

const Object objects::Completion = cli::completionObject("hxaux");

namespace {

std::vector<const Object*> allObjects()
{
    std::vector<const Object*> all{
#define HXAUX_OBJECT(name) &objects::name,
#include "tools/hxaux/Objects.def"
#undef HXAUX_OBJECT
    };
    std::ranges::sort(all, {}, &Object::name);
    return all;
}

} // namespace

const cli::Program& program()
{
    static const cli::Program table{
        .name = "hxaux",
        .summary = "read and control the unit's own hardware",
        .synopsis = "OBJECT [VERB] [VALUES] [--json]",
        .details = "Reads and controls the unit's own hardware. Every operation of its library has a verb. Results are "
                   "lines of a name, a colon, the value and its unit.",
        .version = HXAUX_VERSION,
        .kind = "object",
        .seeAlso = "hx-sim",
        .objects = allObjects(),
        .exits = {{0, "done"},
                  {1, "the unit refused; standard error has the text and the code"},
                  {2, "usage error"},
                  {3, "a file could not be read, or was refused"},
                  {4, "verification found a difference"},
                  {5, "busy: the same function is already running"},
                  {6, "no connection"},
                  {129, "ended by HUP"},
                  {130, "ended by INT (Ctrl-C)"},
                  {143, "ended by TERM"}},
        .always = {flag("json", "prints one line of JSON per result"),
                   flag("verbose", "prints each request to a device on standard error"),
                   real("timeout", 0.1, 86400, "s", "how long to wait for a lock of another program; else forever")},
        .whenRepeated = {flag("watch", "repeats until Ctrl-C"),
                         real("every", 0.01, 86400, "s", "repeats so often; --watch every second"),
                         integer("count", 1, 1e9, "times", "repeats so many times")},
    };
    return table;
}

} // namespace hxaux
