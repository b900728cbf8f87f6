// SPDX-License-Identifier: LicenseRef-HXAux
// What the processes of these tests do, chosen by the first word. Lines of output tell the test how far they are.
#include "hx-aux/Buzzer.h"
#include "settings/IniSettings.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

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

/// PREFIX COUNT: sets that many keys, each with a settings object of its own.
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

/// KEY TIMES: reads the settings and says the first value that is not "whole".
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

/// KEY VALUE: sets one key when the settings can be had.
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

/// NAME: tries the semaphore, says what came of it, and keeps what it got until it is killed.
int take(const char* name)
{
    int sema = 0;
    if (!LinuxWrapper::CreateSema(sema, name))
        return 1;
    say(LinuxWrapper::WaitForSema(sema, false) ? "taken" : "refused");
    waitToBeKilled();
}

/// NAME: gives the semaphore back once.
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

/// NAME: leaves the semaphore with a count of one, whatever its last holder did.
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

/// TIME HOW: beeps, "waiting" or "aside" on a thread, and says what was answered; stays for the thread's sake.
int beep(int time, const std::string& how)
{
    Buzzer* buzzer = GetBuzzer();
    say("answer " + std::to_string(buzzer->buzze(time, how == "waiting")));
    if (how == "aside")
        waitToBeKilled();
    buzzer->Release();
    return 0;
}

} // namespace

int main(int count, char** words)
{
    const std::string deed = count > 1 ? words[1] : "";
    if (deed == "write" && count == 4)
        return write(words[2], std::atoi(words[3]));
    if (deed == "read" && count == 4)
        return read(words[2], std::atoi(words[3]));
    if (deed == "set" && count == 4)
        return set(words[2], words[3]);
    if (deed == "beep" && count == 4)
        return beep(std::atoi(words[2]), words[3]);
    if (deed == "hold")
        return hold();
    if (deed == "rewrite")
        return rewrite();
    if (deed == "take" && count == 3)
        return take(words[2]);
    if (deed == "post" && count == 3)
        return post(words[2]);
    if (deed == "free" && count == 3)
        return setFree(words[2]);
    return 2;
}
