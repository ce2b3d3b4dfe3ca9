#include "tests/geodata/kivgeo/GeoSamples.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace kiv_geo_test {

SampleFolder::SampleFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "kivgeo-XXXXXX").string();
    path_ = mkdtemp(pattern.data()) ? pattern : std::string();
}

SampleFolder::~SampleFolder() {
    std::error_code ignored;
    if (!path_.empty()) std::filesystem::remove_all(path_, ignored);
}

std::string SampleFolder::write(const std::string& name, const std::string& text) const {
    const std::string file = path(name);
    std::ofstream(file, std::ios::binary) << text;
    return file;
}

int Shell(const std::string& command) { return std::system((command + " >/dev/null 2>&1").c_str()); }

std::string Capture(const std::string& command) {
    std::string out;
    if (FILE* pipe = popen(command.c_str(), "r")) {
        char buffer[4096];
        std::size_t n;
        while ((n = fread(buffer, 1, sizeof buffer, pipe)) > 0) out.append(buffer, n);
        pclose(pipe);
    }
    return out;
}

}  // namespace kiv_geo_test
