// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/src/backlight/LogCapture.h"

#include "backlight/Log.h"

#include <mutex>

namespace {

struct Kept {
    std::mutex lock;
    std::vector<std::string> sampler;
    std::vector<std::string> controller;
};

Kept& kept()
{
    static auto* const lines = new Kept; // detached threads write until the end of the process
    return *lines;
}

std::vector<std::string> copied(const std::vector<std::string>& lines)
{
    const std::lock_guard guard{kept().lock};
    return lines;
}

} // namespace

std::vector<std::string> samplerLog()
{
    return copied(kept().sampler);
}

std::vector<std::string> controllerLog()
{
    return copied(kept().controller);
}

void forgetLogs()
{
    const std::lock_guard guard{kept().lock};
    kept().sampler.clear();
    kept().controller.clear();
}

namespace Halvix {

void WriteLog(const char* line)
{
    const std::lock_guard guard{kept().lock};
    kept().sampler.emplace_back(line);
}

void WriteLog2(const char* line)
{
    const std::lock_guard guard{kept().lock};
    kept().controller.emplace_back(line);
}

} // namespace Halvix
