// SPDX-License-Identifier: LicenseRef-HXAux
// The processes of these tests; the first argument selects the action. Their output reports their progress to the test.
#include "hx-aux/Buzzer.h"
#include "settings/IniSettings.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>

using namespace Halvix;

namespace {

void say(const std::string& word)
{
    std::printf("%s\n", word.c_str());
    std::fflush(stdout);
}

[[noreturn]] void waitToBeKilled()
{
    for (;;)
        pause();
}

/// PREFIX COUNT: sets that many keys, each with its own settings object.
int write(const std::string& prefix, int count)
{
    say("started");
    for (int i = 0; i < count; ++i) {
        IniSettings settings;
        settings.load(LinuxWrapper::GetSettingsFileName());
        settings.set(prefix + std::to_string(i), std::to_string(i));
    }
    say("done");
    return 0;
}

/// KEY TIMES: reads the settings and prints the first value that is not "whole".
int read(const std::string& key, int times)
{
    say("started");
    for (int i = 0; i < times; ++i) {
        IniSettings settings;
        settings.load(LinuxWrapper::GetSettingsFileName());
        if (const std::string value = settings.get(key); value != "whole") {
            say("saw '" + value + "'");
            return 1;
        }
    }
    say("whole");
    return 0;
}

int hold()
{
    const IniSettings settings;
    say("held");
    waitToBeKilled();
}

/// KEY VALUE: sets one key once the settings are available.
int set(const std::string& key, const std::string& value)
{
    say("started");
    IniSettings settings;
    settings.load(LinuxWrapper::GetSettingsFileName());
    settings.set(key, value);
    say("done");
    return 0;
}

/// Rewrites the settings, "A = old" and "A = new" in turn among many others, until it is killed.
int rewrite()
{
    say("started");
    for (bool old = false;; old = !old) {
        IniSettings settings;
        settings.load(LinuxWrapper::GetSettingsFileName());
        settings.set("A", old ? "old" : "new");
    }
}

/// NAME: tries to acquire the semaphore, prints the result, and keeps it until it is killed.
int take(const char* name)
{
    int sema = 0;
    if (!LinuxWrapper::CreateSema(sema, name))
        return 1;
    say(LinuxWrapper::WaitForSema(sema, false) ? "taken" : "refused");
    waitToBeKilled();
}

/// NAME: posts the semaphore once.
int post(const char* name)
{
    int sema = 0;
    if (!LinuxWrapper::CreateSema(sema, name))
        return 1;
    LinuxWrapper::ReleaseSema(sema);
    LinuxWrapper::CloseSema(sema);
    say("posted");
    return 0;
}

/// NAME: sets the semaphore to a count of one, whatever its state.
int setFree(const char* name)
{
    int sema = 0;
    if (!LinuxWrapper::CreateSema(sema, name))
        return 1;
    (void)LinuxWrapper::WaitForSema(sema, false);
    LinuxWrapper::ReleaseSema(sema);
    LinuxWrapper::CloseSema(sema);
    return 0;
}

/// TIME HOW: beeps, "waiting" or "background", and prints the result; keeps running for the background thread.
int beep(int time, const std::string& how)
{
    Buzzer* buzzer = GetBuzzer();
    say("answer " + std::to_string(buzzer->buzze(time, how == "waiting")));
    if (how == "background")
        waitToBeKilled();
    buzzer->Release();
    return 0;
}

} // namespace

int main(int count, char** words)
{
    const std::string command = count > 1 ? words[1] : "";
    if (command == "write" && count == 4)
        return write(words[2], std::atoi(words[3]));
    if (command == "read" && count == 4)
        return read(words[2], std::atoi(words[3]));
    if (command == "set" && count == 4)
        return set(words[2], words[3]);
    if (command == "beep" && count == 4)
        return beep(std::atoi(words[2]), words[3]);
    if (command == "hold")
        return hold();
    if (command == "rewrite")
        return rewrite();
    if (command == "take" && count == 3)
        return take(words[2]);
    if (command == "post" && count == 3)
        return post(words[2]);
    if (command == "free" && count == 3)
        return setFree(words[2]);
    return 2;
}
