// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/interpose/Generated.h"

#include "simulator/file/ThreadSafety.h"

#include <map>
#include <pthread.h>

namespace hxsim {

namespace {

struct Table {
    Mutex lock;
    std::map<std::string, std::string> patterns HXSIM_GUARDED_BY(lock);
};

Table& table()
{
    static auto* const names = new Table; // used until the very end of the program
    return *names;
}

/// Another thread must not hold the lock at a fork, or the child would wait for it forever.
__attribute__((constructor)) void keepAcrossForks()
{
    pthread_atfork([]() HXSIM_UNCHECKED_LOCKING { table().lock.lock(); },
                   []() HXSIM_UNCHECKED_LOCKING { table().lock.unlock(); },
                   []() HXSIM_UNCHECKED_LOCKING { table().lock.unlock(); });
}

} // namespace

void rememberGenerated(const std::string& name, const std::string& pattern)
{
    Table& names = table();
    const Held guard{names.lock};
    names.patterns[name] = pattern;
}

bool isGenerated(const std::string& name)
{
    Table& names = table();
    const Held guard{names.lock};
    return names.patterns.contains(name);
}

std::string shownName(const std::string& name)
{
    Table& names = table();
    const Held guard{names.lock};
    const auto found = names.patterns.find(name);
    return found == names.patterns.end() ? name : found->second;
}

} // namespace hxsim
