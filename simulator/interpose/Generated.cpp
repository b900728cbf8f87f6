// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/interpose/Generated.h"

#include <map>
#include <mutex>
#include <pthread.h>

namespace hxsim {

namespace {

struct Table {
    std::mutex lock;
    std::map<std::string, std::string> patterns;
};

Table& table()
{
    static auto* const names = new Table; // used until the very end of the program
    return *names;
}

/// Another thread must not hold the lock at a fork, or the child would wait for it forever.
__attribute__((constructor)) void keepAcrossForks()
{
    pthread_atfork([] { table().lock.lock(); }, [] { table().lock.unlock(); }, [] { table().lock.unlock(); });
}

} // namespace

void rememberGenerated(const std::string& name, const std::string& pattern)
{
    const std::lock_guard guard{table().lock};
    table().patterns[name] = pattern;
}

bool isGenerated(const std::string& name)
{
    const std::lock_guard guard{table().lock};
    return table().patterns.contains(name);
}

std::string shownName(const std::string& name)
{
    const std::lock_guard guard{table().lock};
    const auto found = table().patterns.find(name);
    return found == table().patterns.end() ? name : found->second;
}

} // namespace hxsim
