// A folder of a fuzz run's own under the host's temporary folder; it goes when the run ends.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <string>
#include <system_error>

class ScratchFolder {
public:
    explicit ScratchFolder(const char* prefix) {
        std::string pattern = (std::filesystem::temp_directory_path() / (std::string(prefix) + "-XXXXXX")).string();
        if (::mkdtemp(pattern.data()) != nullptr) path_ = pattern;
    }
    ~ScratchFolder() {
        std::error_code ignored;
        if (!path_.empty()) std::filesystem::remove_all(path_, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    bool ready() const { return !path_.empty(); }
    const std::string& path() const { return path_; }

private:
    std::string path_;
};
