// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <map>
#include <string>

namespace documented {

/// What a header's `@threadsafe` words allow two threads to do at once.
enum class Threads {
    OnOneObject,      ///< "Always"
    OnObjectsOfOwn,   ///< "Between objects", "Between inputs"
    OneThreadAtATime, ///< "From one thread", "Not against ..."
};

struct ThreadWords {
    std::map<std::string, Threads> operations; ///< by name, `Release` too; overloads say the same
    Threads factory = Threads::OneThreadAtATime;
};

/// Of an interface, from its header. Throws for words that it does not know.
ThreadWords threadWords(const std::string& interface);

} // namespace documented
