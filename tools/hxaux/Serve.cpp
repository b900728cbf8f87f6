// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/Serve.h"

#include "hx-aux/Backlight.h"
#include "hx-aux/HXAuxPrivate.h"
#include "hx-aux/Lightsensor.h"
#include "tools/hxaux/Call.h"
#include "tools/hxaux/Interface.h"
#include "tools/hxaux/Signals.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace hxaux {

namespace {

using namespace std::chrono_literals;

// The one place of the serving process on this unit. The lock lies on the settings file that the automatic backlight
// works with, so it belongs to the unit and not to the machine, and it is gone with the process however that ends. The
// library locks the file's contents in another way; the two do not meet.
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
            call.fail(Exit::Busy, "another process serves the automatic backlight of this unit");
        }
    }
    ~ServingPlace() { ::close(file_); }
    ServingPlace(const ServingPlace&) = delete;
    ServingPlace& operator=(const ServingPlace&) = delete;

private:
    int file_;
};

// Whether somebody averages the light sensor. The library tells it where the range is set, so it is set to what it is.
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

// Switches the automatic backlight off, so that its averaging ends, and leaves the settings as they were.
void endInOrder(Call& call, Halvix::HXAuxPrivate& service, const HeldSignals& signals)
{
    const Interface<Halvix::Backlight> backlight(GetBacklight());
    const Interface<Halvix::Lightsensor> sensor(GetLightsensor());
    unsigned char enabled = 0;
    (void)backlight->getAutomaticBLStatus(&enabled); // unreadable reads as off, and nothing runs then
    if (enabled == 0)
        return;
    bool freed = false;
    for (int tries = 0; tries < 3 && !freed; ++tries) {
        call.check(backlight->stopAutomaticBL());
        freed = becomesFree(*sensor, signals);
        // Stored without a notice: the controller of this process must not start again.
        call.check(service.setFileSetting("ABL_status", "1"));
        freed = freed && !isAveraging(*sensor); // a notice of another program may have come in between
    }
    if (!freed)
        call.fail(Exit::Busy,
                  "the averaging of the light sensor stays reserved; it is free after a restart of the unit");
}

} // namespace

void serveBacklight(Call& call)
{
    const HeldSignals signals; // before any thread starts: none of them sees the signals
    const ServingPlace place(call);
    const Interface<Halvix::HXAuxPrivate> service(GetHXAuxPrivate());
    {
        const Interface<Halvix::Lightsensor> sensor(GetLightsensor());
        if (isAveraging(*sensor))
            call.note("another program averages the light sensor; the automatic backlight waits until it is free");
    }
    call.check(service->automaticBacklightInit());
    call.note("serving the automatic backlight");
    call.show();
    while (!signals.await(1h)) {
    }
    try {
        endInOrder(call, *service, signals);
    } catch (const Stop&) {
        call.show(); // the signal leaves no time for it later
        throw;
    }
}

} // namespace hxaux
