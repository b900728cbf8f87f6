// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/Serve.h"

#include "hx-aux/Backlight.h"
#include "hx-aux/HXAuxPrivate.h"
#include "hx-aux/Lightsensor.h"
#include "tools/hxaux/Call.h"
#include "tools/hxaux/Interface.h"
#include "tools/hxaux/Signals.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace hxaux {

namespace {

using namespace std::chrono_literals;

// Ensures that one process of the unit serves. The lock is on the settings file of the automatic backlight, so it
// belongs to the unit and not to the machine, and the kernel releases it when the process ends. The library locks the
// file's contents in another way; the two locks are independent.
class ServingPlace {
public:
    explicit ServingPlace(Call& call)
        : file_(::open("/opt/etc/hxaux.ini", O_RDONLY | O_CREAT | O_NONBLOCK | O_CLOEXEC,
                       S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH))
    {
        if (file_ < 0)
            call.fail(Exit::File, "the settings file /opt/etc/hxaux.ini cannot be opened");
        if (::flock(file_, LOCK_EX | LOCK_NB) != 0) {
            ::close(file_);
            call.fail(Exit::Busy, "another process already serves the automatic backlight of this unit");
        }
    }
    ~ServingPlace() { ::close(file_); }
    ServingPlace(const ServingPlace&) = delete;
    ServingPlace& operator=(const ServingPlace&) = delete;

private:
    int file_;
};

// Whether a program averages the light sensor. Only setting the range reports it, so the range is set to its own value.
bool isAveraging(Halvix::Lightsensor& sensor)
{
    auto range = Halvix::RangeStandard;
    (void)sensor.getOperatingRange(&range);
    return sensor.setOperatingRange(range) == Halvix::ERR_AVERAGE_CALC_STARTED;
}

// The sampler and the controller end within one pass of 800 ms and 70 ms more; a busy machine may take longer.
bool becomesFree(Halvix::Lightsensor& sensor, const HeldSignals& signals)
{
    for (int tries = 0; tries < 100; ++tries) {
        if (!isAveraging(sensor))
            return true;
        (void)signals.take(100ms);
    }
    return false;
}

// Switches the automatic backlight off, so that its averaging ends, and keeps the settings.
void endInOrder(Call& call, Halvix::HXAuxPrivate& service, const HeldSignals& signals)
{
    const Interface<Halvix::Backlight> backlight(GetBacklight());
    const Interface<Halvix::Lightsensor> sensor(GetLightsensor());
    unsigned char enabled = 0;
    (void)backlight->getAutomaticBLStatus(&enabled); // an unreadable setting reads as off, and then nothing runs
    if (enabled == 0)
        return;
    bool freed = false;
    for (int tries = 0; tries < 3 && !freed; ++tries) {
        call.check(backlight->stopAutomaticBL());
        freed = becomesFree(*sensor, signals);
        // Stored without a notice: the controller of this process must not start again.
        call.check(service.setFileSetting("ABL_status", "1"));
        freed = freed && !isAveraging(*sensor); // another program may have notified it in between
    }
    if (!freed)
        call.fail(Exit::Busy, "the averaging of the light sensor stays reserved until the unit restarts");
}

} // namespace

void serveBacklight(Call& call)
{
    const HeldSignals signals; // before any thread starts, so that none of them receives the signals
    const ServingPlace place(call);
    const Interface<Halvix::HXAuxPrivate> service(GetHXAuxPrivate());
    {
        const Interface<Halvix::Lightsensor> sensor(GetLightsensor());
        if (isAveraging(*sensor))
            call.note("another program is averaging the light sensor; the automatic backlight waits until it stops");
    }
    call.check(service->automaticBacklightInit());
    call.note("serving the automatic backlight");
    call.show();
    while (!signals.await(1h)) {
    }
    try {
        endInOrder(call, *service, signals);
    } catch (const Stop&) {
        call.show(); // the signal then ends the program at once
        throw;
    }
}

} // namespace hxaux
