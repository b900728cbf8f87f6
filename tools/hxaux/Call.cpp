// SPDX-License-Identifier: LicenseRef-HXAux
#include "tools/hxaux/Call.h"

#include "tools/hxaux/Objects.h"

#include <array>
#include <ctime>

namespace hxaux {

Exit statusOf(Halvix::eErr code)
{
    switch (code) {
    case Halvix::ERR_SUCCESS:
        return Exit::Done;
    case Halvix::ERR_IN_PROGRESS:
    case Halvix::ERR_AVERAGE_CALC_STARTED:
        return Exit::Busy;
    case Halvix::ERR_VERIFY_FAILED:
        return Exit::Difference;
    case Halvix::ERR_CHECKSUM:
        return Exit::File;
    default:
        return Exit::Refused;
    }
}

Call::Call(const cli::Arguments& arguments, Screen& screen, std::shared_ptr<void>& kept)
    : cli::Call(hxaux::program(), arguments), screen_(screen), kept_(kept)
{
    report_.object = arguments.object().name;
    report_.verb = arguments.verb().name;
}

void Call::check(Halvix::eErr code, const std::string& item)
{
    if (!attempt(item, code))
        throw Stop{};
}

bool Call::attempt(const std::string& item, Halvix::eErr code)
{
    if (code == Halvix::ERR_SUCCESS)
        return true;
    note(statusOf(code), {item, static_cast<int>(code), GetErrorStringA(code)});
    return false;
}

void Call::fail(Exit status, const std::string& text)
{
    problem(status, "", text);
    throw Stop{};
}

void Call::fail(Exit status, const std::string& item, Halvix::eErr code)
{
    note(status, {item, static_cast<int>(code), GetErrorStringA(code)});
    throw Stop{};
}

void Call::problem(Exit status, const std::string& item, const std::string& text)
{
    note(status, {item, -1, text});
}

void Call::note(Exit status, Problem problem)
{
    if (report_.status == Exit::Done)
        report_.status = status; // the first one decides
    report_.problems.push_back(std::move(problem));
}

void Call::print(const std::string& name, Value value, const std::string& unit)
{
    report_.result.push_back({name, std::move(value), unit});
}

void Call::printNamedByUser(const std::string& name, Value value)
{
    report_.result.push_back({name, std::move(value), "", NameOf::User});
}

// With its date and offset for programs, as a clock shows it for people.
void Call::noteTime()
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm local{};
    localtime_r(&now.tv_sec, &local);
    std::array<char, 40> text{};
    std::strftime(text.data(), text.size(), asJson() ? "%FT%T%z" : "%T", &local);
    report_.time = text.data();
}

void Call::document(const std::string& name, const std::string& text)
{
    if (asJson())
        return print(name, text);
    cli::Call::document(name, text);
    shown_ = true;
}

void Call::note(const std::string& text)
{
    report_.notes.push_back(text);
}

void Call::show()
{
    screen_.show(report_);
    report_.result.clear();
    report_.notes.clear();
    report_.problems.clear();
    shown_ = true;
}

void Call::end()
{
    // A verb without a result prints no text, but its JSON still reports success.
    const bool empty = report_.result.empty() && report_.notes.empty() && report_.problems.empty();
    if (!empty || !shown_)
        show();
}

} // namespace hxaux
