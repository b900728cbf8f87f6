// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/client/hx-sim/client.h"

#include "simulator/client/Follower.h"
#include "simulator/client/ProgramRun.h"
#include "simulator/model/Text.h"

#include <atomic>
#include <optional>
#include <unistd.h>

namespace hxsim {
inline namespace client {

struct Unit::Inside {
    std::string name;
    Follower follower;
    std::optional<Vocabulary> vocabulary{}; ///< when an expectation has been checked

    explicit Inside(const std::string& unit) : name{unit}, follower{unit, {}} {}
    Finding check(const std::string& expectation);
};

struct Program::Inside {
    ProgramRun run;
};

namespace {

/// Errors of the unit reach the application as the one type of its header.
template <typename Work>
auto translated(Work work)
{
    try {
        return work();
    } catch (const BadText& bad) {
        throw Error{bad.what()};
    }
}

std::string newName()
{
    static std::atomic<int> made{0};
    return "test-" + std::to_string(getpid()) + '-' + std::to_string(++made);
}

std::vector<std::string> startCommand(const std::string& name, const Options& options)
{
    std::vector<std::string> words{"start", name};
    if (options.isVirtual)
        words.emplace_back("--virtual");
    if (options.scale != 1)
        words.insert(words.end(), {"--scale", decimal(options.scale)});
    for (const std::string& line : options.settings) {
        words.emplace_back("--set");
        words.push_back(line);
    }
    return words;
}

Result resultOf(const Finding& finding)
{
    return {finding.met, finding.time, finding.seen};
}

} // namespace

Finding Unit::Inside::check(const std::string& expectation)
{
    return translated([&] {
        if (!vocabulary)
            vocabulary = vocabularyOf(name);
        return follower.check(parseExpectation(expectation, *vocabulary));
    });
}

Program::Program(std::unique_ptr<Inside> inside) : inside_{std::move(inside)} {}
Program::Program(Program&& other) noexcept = default;
Program& Program::operator=(Program&& other) noexcept = default;
Program::~Program() = default;

int Program::wait()
{
    return wait(std::chrono::nanoseconds::max()).value_or(-1);
}

std::optional<int> Program::wait(std::chrono::nanoseconds patience)
{
    return translated([&] { return inside_->run.wait(patience); });
}

void Program::stop()
{
    inside_->run.stop();
}

std::string Program::output() const
{
    return inside_->run.output();
}

bool Program::isRunning()
{
    return !inside_->run.status();
}

void onSignal(std::function<void()> handler)
{
    Connection::onSignal(std::move(handler));
}

Unit::Unit(const Options& options)
{
    translated([&] {
        const std::string name = newName();
        runHxSim(startCommand(name, options));
        inside_ = std::make_unique<Inside>(name);
        (void)inside_->follower.ask({"own"});
    });
}

Unit::Unit(std::unique_ptr<Inside> inside) : inside_{std::move(inside)} {}
Unit::Unit(Unit&& other) noexcept = default;
Unit& Unit::operator=(Unit&& other) noexcept = default;
Unit::~Unit() = default;

Unit Unit::attach(const std::string& name)
{
    return translated([&] { return Unit{std::make_unique<Inside>(name)}; });
}

const std::string& Unit::name() const
{
    return inside_->name;
}

std::string Unit::get(const std::string& property)
{
    return translated([&] {
        std::string text = inside_->follower.ask({"get", property});
        if (!text.empty())
            text.pop_back(); // the line break
        return text;
    });
}

void Unit::set(const std::string& property, const std::string& value)
{
    translated([&] { (void)inside_->follower.act({"set", property + " = " + value}); });
}

void Unit::act(const std::string& action)
{
    translated([&] {
        std::vector<std::string> command{"do"};
        for (std::string& word : words(action))
            command.push_back(std::move(word));
        (void)inside_->follower.act(command);
    });
}

void Unit::fail(const std::string& node, const std::string& call, const std::string& error, int count)
{
    translated([&] {
        std::vector<std::string> command{"fail", node};
        for (std::string& word : words(call + ' ' + error))
            command.push_back(std::move(word));
        if (count > 0)
            command.push_back(std::to_string(count));
        (void)inside_->follower.act(command);
    });
}

void Unit::unfail(const std::string& node)
{
    translated([&] {
        (void)inside_->follower.act(node.empty() ? std::vector<std::string>{"unfail"}
                                                 : std::vector<std::string>{"unfail", node});
    });
}

void Unit::remove(const std::string& path)
{
    translated([&] { (void)inside_->follower.act({"remove", path}); });
}

void Unit::restore(const std::string& path)
{
    translated([&] { (void)inside_->follower.act({"restore", path}); });
}

void Unit::follow(const std::string& property)
{
    translated([&] { inside_->follower.follow(property); });
}

Program Unit::run(const std::vector<std::string>& command)
{
    return translated([&] {
        inside_->follower.mark();
        return Program{std::unique_ptr<Program::Inside>{new Program::Inside{{inside_->name, command}}}};
    });
}

Result Unit::check(const std::string& expectation)
{
    return resultOf(inside_->check(expectation));
}

void Unit::expect(const std::string& expectation)
{
    require(expectation, check(expectation));
}

Result Unit::wait(const std::string& expectation)
{
    const Finding finding = inside_->check(expectation);
    if (finding.met)
        inside_->follower.mark(finding);
    return resultOf(finding);
}

void Unit::require(const std::string& expectation, const Result& result)
{
    if (!result)
        throw Error{"expected " + expectation + "; " + result.seen};
}

void Unit::sleep(std::chrono::nanoseconds time)
{
    translated([&] { inside_->follower.sleepUntil(inside_->follower.now() + time); });
}

std::chrono::nanoseconds Unit::time()
{
    return translated([&] { return inside_->follower.now(); });
}

std::string Unit::log()
{
    return translated([&] { return inside_->follower.ask({"log"}); });
}

std::string Unit::text(double value)
{
    return decimal(value);
}

std::string Unit::literal(const std::string& value)
{
    std::string quoted{'"'};
    for (const char c : value)
        quoted += c == '"' || c == '\\' ? std::string{'\\', c} : std::string{c};
    return quoted + '"';
}

} // namespace client
} // namespace hxsim
