// SPDX-License-Identifier: LicenseRef-HXAux
#include "panel/server/HxauxCalls.h"

#include "tools/cli/Names.h"
#include "tools/cli/NearNames.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <unistd.h>

namespace hxpanel {

namespace {

using Words = std::vector<std::string>;

constexpr int kNever = -1;

/// An object with a verb, and up to how many values behind it only read.
struct Row {
    std::string_view call;
    int reads;
};

// Left out: 'upgrade', 'verify' and 'video snapshot', which use files of the machine; 'backlight serve' and
// 'calibrate run', which last; 'completion'. hxaux itself refuses values that are too many or wrong.
constexpr Row kCalls[] = {
    {"backlight auto filter", 0},
    {"backlight auto off", kNever},
    {"backlight auto on", kNever},
    {"backlight auto params", 0},
    {"backlight auto status", 0},
    {"backlight get", 0},
    {"backlight set", kNever},
    {"backlight status", 0},
    {"buzzer", 0},
    {"buzzer beep", kNever},
    {"buzzer frequency", 0},
    {"buzzer off", kNever},
    {"buzzer on", kNever},
    {"buzzer volume", 0},
    {"calibrate check", 1},
    {"calibrate mode", kNever},
    {"calibrate parameter", 1},
    {"calibrate point", kNever},
    {"can frame-type", 1},
    {"can get", 1},
    {"can set", kNever},
    {"config", 0},
    {"config button-time", 0},
    {"config can", 0},
    {"config fan", 0},
    {"config heating", 0},
    {"config long-press", 0},
    {"config power-on", 0},
    {"config short-press", 0},
    {"config signal", 0},
    {"config signal-time", 0},
    {"config suspend-time", 0},
    {"config trigger", 0},
    {"config video", 0},
    {"config voltage", 0},
    {"diag", 0},
    {"diag board", 0},
    {"diag clear-error", kNever},
    {"diag cycles", 0},
    {"diag error", 0},
    {"diag extremes", 0},
    {"diag module", 1},
    {"diag shutdown", 0},
    {"diag startup", 0},
    {"diag supervisor", 0},
    {"diag timers", 0},
    {"doctor", 1},
    {"eeprom get", 1},
    {"eeprom list", 0},
    {"eeprom set", kNever},
    {"info", 0},
    {"inputs", 0},
    {"led", 0},
    {"led color", 0},
    {"led idle-time", 0},
    {"led off", kNever},
    {"led off-time", 0},
    {"led on-time", 0},
    {"led pulses", 0},
    {"led rgb", 0},
    {"led signal", 0},
    {"led startup", 0},
    {"led-dimming", 0},
    {"light", 0},
    {"light range", 0},
    {"locks", 0},
    {"locks reset", kNever},
    {"monitor", 0},
    {"power", 0},
    {"power ack", kNever},
    {"power backlight", 0},
    {"power can", 0},
    {"power fan", 0},
    {"power transition", 0},
    {"power video", 0},
    {"settings get", 1},
    {"settings list", 0},
    {"settings set", kNever},
    {"shutdown", kNever},
    {"smart get", 1},
    {"smart set", kNever},
    {"telematics antenna", 0},
    {"telematics available", 0},
    {"telematics gprs", 0},
    {"telematics gprs start", 0},
    {"telematics status", 0},
    {"telematics wlan", 0},
    {"telematics wlan start", 0},
    {"touch advanced", 1},
    {"touch mode", 0},
    {"touch right-click", 0},
    {"version", 1},
    {"video area", 1},
    {"video channel", 1},
    {"video color-key", 1},
    {"video control", 1},
    {"video crop", 1},
    {"video decoder", 2},
    {"video fields", 1},
    {"video hide", kNever},
    {"video minimize", kNever},
    {"video mirror", 1},
    {"video raw", 1},
    {"video restore", kNever},
    {"video resume", kNever},
    {"video scale", 1},
    {"video show", kNever},
    {"video standard", 1},
    {"video status", 1},
    {"voltage", 1},
};

constexpr std::size_t kMostWords = 12;
constexpr std::size_t kLongestWord = 4096;

std::string joined(const Words& words, std::size_t count)
{
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
        text += (i == 0 ? "" : " ") + words[i];
    return text;
}

/// The row of the longest call that the words begin with, and how many of them it is.
std::pair<const Row*, std::size_t> rowOf(const Words& words)
{
    for (std::size_t count = std::min<std::size_t>(words.size(), 3); count > 0; --count) {
        const auto* const found = std::ranges::find(kCalls, joined(words, count), &Row::call);
        if (found != std::end(kCalls))
            return {found, count};
    }
    return {nullptr, 0};
}

HxauxCall refused(const std::string& why)
{
    return {.why = why};
}

bool isOption(const std::string& word)
{
    return word.starts_with("-") && !cli::toReal(word);
}

} // namespace

HxauxCall checkedCall(const Words& words)
{
    if (words.empty() || words.size() > kMostWords)
        return refused("expected 1 to " + std::to_string(kMostWords) + " words");
    for (const std::string& word : words)
        if (word.size() > kLongestWord || word.find('\0') != std::string::npos)
            return refused("a word is too long, or has a zero byte");
    const auto [row, count] = rowOf(words);
    if (row == nullptr) {
        Words known;
        for (const Row& each : kCalls)
            known.emplace_back(each.call);
        const std::string text = joined(words, std::min<std::size_t>(words.size(), 2));
        return refused("the panel does not call 'hxaux " + text + "'" + cli::suggestion(text, known));
    }
    Words values{words.begin() + static_cast<std::ptrdiff_t>(count), words.end()};
    const bool isStore = values.size() >= 2 && values[values.size() - 2] == "--store" && words[0] == "eeprom";
    const std::size_t plain = values.size() - (isStore ? 2 : 0);
    if (std::any_of(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(plain), isOption))
        return refused("the panel passes no options to hxaux");
    HxauxCall call{.words = words};
    if (words[0] == "monitor")
        call.words = {"monitor", "--count", "1"};
    const bool reads = row->reads != kNever && plain <= static_cast<std::size_t>(row->reads);
    call.kind = reads ? HxauxCall::Kind::Reads : HxauxCall::Kind::Changes;
    call.words.emplace_back("--json");
    return call;
}

std::string programNamed(const std::string& name)
{
    std::error_code none;
    const auto beside = std::filesystem::read_symlink("/proc/self/exe", none).parent_path() / name;
    return access(beside.c_str(), X_OK) == 0 ? beside.string() : name;
}

} // namespace hxpanel
