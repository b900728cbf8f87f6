// SPDX-License-Identifier: LicenseRef-HXAux
// What the files of verbs use of the table of commands, and the tool's exit statuses.
#pragma once

#include "tools/cli/Command.h"

namespace hxaux {

using cli::Argument;
using cli::Candidates;
using cli::Names;
using cli::Object;
using cli::Repeat;
using cli::Verb;
using cli::Words;

using cli::choice;
using cli::file;
using cli::flag;
using cli::integer;
using cli::kOnOff;
using cli::namesOf;
using cli::real;
using cli::text;
using cli::toInteger;
using cli::toReal;

/// Exit statuses of the tool. A signal ends it as signals do, which a shell reports as 128 and the signal's number.
enum class Exit {
    Done = 0,
    Refused = 1,
    Usage = 2,
    File = 3,
    Difference = 4,
    Busy = 5,
    NoConnection = 6,
    HungUp = 129,
    Interrupted = 130,
    Terminated = 143
};

} // namespace hxaux
