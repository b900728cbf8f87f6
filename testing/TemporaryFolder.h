// SPDX-License-Identifier: LicenseRef-HXAux
#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>

/// A private directory, removed with its contents.
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
        std::filesystem::remove_all(path_, ignored);
    }

    const std::string& path() const { return path_; }

private:
    std::string path_;
};
