// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <string>
#include <vector>

namespace hxsim {

/// The place on this machine that belongs to one unit while it runs: a folder "hx-sim-<user>/<unit>/" under
/// $XDG_RUNTIME_DIR or /tmp, and the named semaphores that begin with its prefix. Gone when the object goes; what a
/// killed unit left is removed by `sweep`. Directories without the simulator's mark are never removed.
class UnitFolder {
public:
    /// Throws std::runtime_error when a unit of this name is already running or the directory cannot be created.
    explicit UnitFolder(const std::string& unit);
    UnitFolder(const UnitFolder&) = delete;
    UnitFolder& operator=(const UnitFolder&) = delete;
    ~UnitFolder();

    /// Removes everything from the machine early; the names remain valid.
    void remove() const;

    [[nodiscard]] const std::string& path() const { return path_; }
    /// The location of a file of the unit; its directory exists.
    [[nodiscard]] std::string fileOf(const std::string& unitPath) const;
    [[nodiscard]] const std::string& unit() const { return unit_; }

    /// What is wrong with the name of a unit, or nothing. Names are [A-Za-z0-9][A-Za-z0-9._-]*.
    static std::string whatIsWrongWith(const std::string& unit);
    /// The folder of all units of this user.
    static std::string base();
    /// Throws BadUsage when no unit can have this name.
    static std::string pathOf(const std::string& unit);
    /// "<unit>-<number>": distinguishes the unit from those of the same name in other directories, which semaphores
    /// lack.
    static std::string markOf(const std::string& folder);
    /// "/hxsim-<user>-<mark>-<ABI>-": semaphores have another size in 32-bit and 64-bit programs, so each ABI has its
    /// own.
    static std::string semaphorePrefix(const std::string& mark);
    /// Whether programs can still reach the unit of this directory. Semaphores that a program creates afterwards are
    /// not removed with the unit.
    static bool isOpen(const std::string& folder);
    /// Names of the running units.
    static std::vector<std::string> running();
    /// Why this user's units cannot be listed, running or not; or nothing.
    static std::string whatHidesThem();
    /// Removes the remains of units whose process is gone.
    static void sweep();

private:
    std::string unit_;
    std::string path_;
};

} // namespace hxsim
