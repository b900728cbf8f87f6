// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <map>
#include <string>

namespace documented {

/// What the `@threadsafe` text of a header allows two threads to do at once.
enum class Threads {
    OnOneObject,      ///< "Always"
    OnObjectsOfOwn,   ///< "Between objects", "Between inputs"
    OneThreadAtATime, ///< "From one thread", "Not against ..."
};

struct ThreadWords {
    std::map<std::string, Threads> operations; ///< by name, including `Release`; overloads have the same text
    Threads factory = Threads::OneThreadAtATime;
};

/// Of an interface, from its header. Throws for unknown texts.
ThreadWords threadWords(const std::string& interface);

} // namespace documented
