// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace hxsim {

/// The connection of a command to a running unit.
class UnitClient {
public:
    /// Throws NoUnit when no such unit is running, or when this user may not reach it.
    explicit UnitClient(const std::string& unit);
    UnitClient(const UnitClient&) = delete;
    UnitClient& operator=(const UnitClient&) = delete;
    ~UnitClient();

    class NoUnit : public std::exception {
    public:
        explicit NoUnit(std::string text) : text_{std::move(text)} {}
        [[nodiscard]] const char* what() const noexcept override { return text_.c_str(); }

    private:
        std::string text_;
    };

    /// Returns the unit's answer; throws BadText with its message when it refuses.
    std::string request(const std::vector<std::string>& words);
    /// Passes each further text that the unit sends to `take`, until the unit stops.
    void listen(const std::function<void(const std::string&)>& take);

    /// Selects the unit: the one named, the one that this program runs on, or the only running one.
    static std::string choose(const std::string& named);
    /// The same for what is alike on all units: any running one is good enough.
    static std::string chooseAny(const std::string& named);

private:
    int fd_;
};

} // namespace hxsim
