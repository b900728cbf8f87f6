// SPDX-License-Identifier: LicenseRef-HXAux
#include "tests/threads/ThreadWords.h"

#include <fstream>
#include <regex>
#include <stdexcept>

namespace documented {

namespace {

Threads meaningOf(const std::string& words, const std::string& of)
{
    if (words.starts_with("Always") || words.find("several threads may use one object") != std::string::npos)
        return Threads::OnOneObject;
    if (words.starts_with("Between objects") || words.starts_with("Between inputs"))
        return Threads::OnObjectsOfOwn;
    if (words.starts_with("From one thread") || words.starts_with("Not against"))
        return Threads::OneThreadAtATime;
    throw std::runtime_error{"no known thread words at " + of + ": \"" + words + '"'};
}

/// The text after `@threadsafe` in a comment, up to its end; empty if there is none.
std::string wordsIn(const std::string& comment)
{
    constexpr std::string_view kTag = "@threadsafe ";
    const std::size_t at = comment.find(kTag);
    return at == std::string::npos ? "" : comment.substr(at + kTag.size());
}

} // namespace

ThreadWords threadWords(const std::string& interface)
{
    static const std::regex kOperation{R"(virtual eErr (\w+)\()"};
    std::ifstream stream{HX_HEADERS "/" + interface + ".h"};
    if (!stream)
        throw std::runtime_error{"no header " + interface};
    ThreadWords result;
    std::string ofClass;
    std::string comment;
    for (std::string line; std::getline(stream, line);) {
        std::smatch found;
        const std::string words = wordsIn(comment);
        if (line == "class " + interface + " {")
            ofClass = words;
        else if (std::regex_search(line, found, kOperation))
            result.operations[found[1]] = meaningOf(words.empty() ? ofClass : words, interface + "::" + found[1].str());
        else if (line.starts_with("HX_EXPORT") && line.find(" Get" + interface + "(") != std::string::npos)
            result.factory = meaningOf(words, "Get" + interface);
        const std::size_t begin = line.find("///");
        comment = begin == std::string::npos ? "" : comment + line.substr(begin + 3);
    }
    return result;
}

} // namespace documented
