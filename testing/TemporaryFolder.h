// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <system_error>

/// A directory for one test, removed with its contents.
class TemporaryFolder {
public:
    TemporaryFolder() : path_{std::filesystem::temp_directory_path() / "hx-test-XXXXXX"}
    {
        if (mkdtemp(path_.data()) == nullptr)
            throw std::runtime_error{"cannot create " + path_};
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder()
    {
        std::error_code ignored;
        while (std::filesystem::exists(path_, ignored)) // a stopping unit removes its files at the same time
            std::filesystem::remove_all(path_, ignored);
    }

    [[nodiscard]] const std::string& path() const { return path_; }
    [[nodiscard]] std::string operator/(const std::string& name) const { return path_ + '/' + name; }
    /// Writes a file and returns its path.
    [[nodiscard]] std::string file(const std::string& name, const std::string& content) const
    {
        std::ofstream{*this / name, std::ios::binary} << content;
        return *this / name;
    }

private:
    std::string path_;
};
