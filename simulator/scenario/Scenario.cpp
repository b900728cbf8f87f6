// SPDX-License-Identifier: LicenseRef-HXAux
#include "simulator/scenario/Scenario.h"

#include "simulator/client/Duration.h"
#include "simulator/model/LightProfile.h"
#include "simulator/model/NameCheck.h"
#include "simulator/model/Unit.h"
#include "tools/cli/NearNames.h"

#include <algorithm>

namespace hxsim {

namespace {

using Words = std::vector<std::string>;
using Kind = Statement::Kind;

/// How long 'wait' waits without 'within'.
constexpr Time kPatience = std::chrono::seconds{60};

/// Makes statements of lines. The commands are tried on a unit of its own, which refuses what any unit refuses.
class Parser {
public:
    explicit Parser(const ScenarioFiles& files) : files_{files}
    {
        for (const auto& [name, property] : unit_.properties().all())
            vocabulary_.properties.push_back(name);
        for (const auto& [path, node] : unit_.nodes())
            if (node.recorded())
                vocabulary_.devices.push_back(path);
    }

    Statement parse(const ScenarioLine& line)
    {
        Statement statement{.file = line.file, .line = line.number, .text = line.text};
        std::string text = line.text;
        const Words parts = words(text);
        if (parts.empty())
            throw BadText{"nothing is left of the line: its variables are empty"};
        if (parts[0] == "at") {
            if (parts.size() < 2)
                throw BadText{"expected a duration after 'at' (20ms, 2s, 1m)"};
            statement.at = parseDuration(parts[1]);
            text = trimmed(text.substr(text.find(parts[1], 2) + parts[1].size()));
            if (text.empty())
                return statement;
        }
        parseAction(statement, text);
        return statement;
    }

private:
    using Handler = void (Parser::*)(Statement&, const std::string&);
    struct Row {
        const char* name;
        Handler handler;
    };
    static const std::vector<Row>& table()
    {
        static const std::vector<Row> kRows{
            {"do", &Parser::act},      {"expect", &Parser::expect}, {"fail", &Parser::fail},
            {"light", &Parser::light}, {"never", &Parser::never},   {"press", &Parser::press},
            {"ramp", &Parser::ramp},   {"remove", &Parser::remove}, {"restore", &Parser::restore},
            {"run", &Parser::run},     {"set", &Parser::set},       {"unfail", &Parser::unfail},
            {"wait", &Parser::wait}};
        return kRows;
    }

    void parseAction(Statement& statement, const std::string& text)
    {
        const std::string name = text.substr(0, text.find_first_of(" \t"));
        Words names{"at", "examples", "include", "let"};
        for (const Row& row : table()) {
            names.emplace_back(row.name);
            if (name == row.name)
                return (this->*row.handler)(statement, trimmed(text.substr(name.size())));
        }
        const Words near = cli::nearNames(name, names);
        throw BadText{"there is no statement " + inQuotes(name) +
                      (near.empty() ? "" : "; did you mean '" + near.front() + "'?")};
    }

    /// Sets a property of the parser's unit; what it refuses is a mistake of the scenario.
    void tryToSet(const std::string& property, const std::string& value) { unit_.properties().set(property, value); }

    void set(Statement& statement, const std::string& rest)
    {
        const std::size_t end = std::min(rest.find_first_of(" \t="), rest.size());
        statement.property = rest.substr(0, end);
        std::string value = trimmed(rest.substr(end));
        if (value.starts_with('='))
            value = trimmed(value.substr(1));
        if (statement.property.empty())
            throw BadText{"expected a property and its value after 'set', for example: set light 250"};
        tryToSet(statement.property, value);
        command(statement, {"set", statement.property + " = " + value});
    }

    void ramp(Statement& statement, const std::string& rest)
    {
        const Words parts = words(rest);
        if (parts.size() != 7 || parts[1] != "from" || parts[3] != "to" || parts[5] != "over")
            throw BadText{
                "expected KEY from A to B over T after 'ramp', for example: ramp light from 10 to 500 over 5s"};
        for (const std::string& end : {parts[2], parts[4]}) {
            (void)parseReal(end);
            tryToSet(parts[0], end);
        }
        statement.property = parts[0];
        const Time time = parseDuration(parts[6]);
        command(statement, {"ramp", parts[0], parts[2], parts[4], std::to_string(time.count())});
    }

    void press(Statement& statement, const std::string& rest) { act(statement, "press " + rest); }

    void act(Statement& statement, const std::string& rest)
    {
        Words parts = words(rest);
        if (parts.empty())
            throw BadText{"expected an action after 'do', for example: do touch 3"};
        unit_.actions().run(parts[0], {parts.begin() + 1, parts.end()});
        parts.insert(parts.begin(), "do");
        command(statement, std::move(parts));
    }

    void fail(Statement& statement, const std::string& rest)
    {
        unit_.addFault(rest);
        command(statement, {"fail", rest});
    }

    void unfail(Statement& statement, const std::string& rest)
    {
        if (!rest.empty())
            checkSubject(unit_, rest);
        command(statement, rest.empty() ? Words{"unfail"} : Words{"unfail", rest});
    }

    void remove(Statement& statement, const std::string& rest) { partsCommand(statement, "remove", rest); }

    void restore(Statement& statement, const std::string& rest) { partsCommand(statement, "restore", rest); }

    void partsCommand(Statement& statement, const std::string& name, const std::string& rest)
    {
        Words parts = words(rest);
        if (parts.empty())
            throw BadText{"expected a device after '" + name + "'"};
        for (const std::string& part : parts)
            checkPart(unit_, part);
        parts.insert(parts.begin(), name);
        command(statement, std::move(parts));
    }

    void light(Statement& statement, const std::string& rest)
    {
        if (rest.empty())
            throw BadText{"expected a light profile after 'light'"};
        const std::string content = files_(pathBeside(statement.file, rest));
        try {
            (void)LightProfile::parse(content);
        } catch (const BadText& bad) {
            throw BadText{rest + ": " + bad.what()};
        }
        statement.property = "light";
        command(statement, {"set", LightProfile::asLine(content)});
    }

    void wait(Statement& statement, const std::string& rest)
    {
        if (isDuration(rest)) {
            statement.kind = Kind::Sleep;
            statement.duration = parseDuration(rest);
            return;
        }
        expect(statement, rest);
        statement.kind = Kind::Wait;
        if (statement.expectation.never)
            throw BadText{"'wait' does not go with 'never'; write: never CONDITION for T"};
        if (!statement.expectation.within)
            statement.expectation.within = kPatience;
    }

    void expect(Statement& statement, const std::string& rest)
    {
        statement.kind = Kind::Expect;
        statement.expectation = parseExpectation(rest, vocabulary_);
        if (statement.expectation.condition.lasts())
            statement.property = statement.expectation.condition.subject;
    }

    void never(Statement& statement, const std::string& rest) { expect(statement, "never " + rest); }

    void run(Statement& statement, const std::string& rest)
    {
        statement.kind = Kind::Run;
        for (const Word& word : quotedWords(rest))
            statement.words.push_back(word.text);
        if (statement.words.empty())
            throw BadText{"expected a program after 'run'"};
    }

    static void command(Statement& statement, Words words)
    {
        statement.kind = Kind::Command;
        statement.words = std::move(words);
    }

    const ScenarioFiles& files_;
    Unit unit_{};
    Vocabulary vocabulary_{};
};

} // namespace

std::vector<Scenario> parseScenario(const std::string& file, const std::string& content, const ScenarioFiles& files)
{
    std::vector<Scenario> scenarios;
    for (const ScenarioRow& row : readScenario(file, content, files)) {
        Parser parser{files};
        Scenario scenario{row.name, {}};
        for (const ScenarioLine& line : row.lines) {
            try {
                scenario.statements.push_back(parser.parse(line));
            } catch (const BadText& bad) {
                throw BadScenario{line.file, line.number, bad.what()};
            }
        }
        scenarios.push_back(std::move(scenario));
    }
    return scenarios;
}

} // namespace hxsim
