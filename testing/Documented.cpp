// SPDX-License-Identifier: LicenseRef-HXAux
#include "testing/Documented.h"

#include <filesystem>
#include <fstream>
#include <regex>
#include <stdexcept>
#include <utility>

namespace documented {

namespace {

std::ifstream header(const std::string& name)
{
    std::ifstream stream{HX_HEADERS "/" + name + ".h"};
    if (!stream)
        throw std::runtime_error{"no header " + name};
    return stream;
}

std::map<int, std::string> readCodes()
{
    static const std::regex kLine{R"(\s*(ERR_\w+) =\s*(\d*),?.*)"};
    std::map<int, std::string> names;
    std::string line;
    std::string pending; // one name has a line of its own
    for (std::ifstream stream = header("errors"); std::getline(stream, line);) {
        std::smatch found;
        if (!pending.empty() && std::regex_search(line, found, std::regex{R"(^\s*(\d+),)"}))
            names[std::stoi(found[1])] = std::exchange(pending, "");
        else if (std::regex_match(line, found, kLine))
            found[2].length() != 0 ? void(names[std::stoi(found[2])] = found[1]) : void(pending = found[1]);
    }
    return names;
}

} // namespace

Interface interface(const std::string& name)
{
    static const std::regex kCode{R"(@retval\s+(ERR_\w+))"};
    static const std::regex kOperation{R"(virtual eErr (\w+)\()"};
    Interface result;
    std::set<std::string> codes;
    bool throws = false;
    std::string line;
    for (std::ifstream stream = header(name); std::getline(stream, line);) {
        std::smatch found;
        if (std::regex_search(line, found, kCode))
            codes.insert(found[1]);
        throws = throws || line.find("bad_alloc") != std::string::npos;
        if (std::regex_search(line, found, kOperation)) {
            result.codes[found[1]].merge(codes);
            if (found[1] != "Release")
                ++result.overloads[found[1]];
        }
        if (line.find("HX_EXPORT") == 0)
            result.factoryThrows = throws;
        if (line.find("///") == std::string::npos) {
            codes.clear();
            throws = false;
        }
    }
    return result;
}

std::set<std::string> interfaces()
{
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator{HX_HEADERS})
        if (const std::string name = entry.path().stem(); interface(name).codes.contains("Release"))
            names.insert(name);
    return names;
}

std::string nameOf(int code)
{
    static const std::map<int, std::string> names = readCodes();
    const auto found = names.find(code);
    return found == names.end() ? "" : found->second;
}

} // namespace documented
