// The vector image a kivutil command works on: a file, or the built-in sample.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "utils/vector/VectorBlob.h"

namespace kivutil {

struct LoadedImage {
    std::shared_ptr<VectorBlob> blob;
    std::string label;   // the file name or "(built-in sample)"
    std::wstring name;   // for entity names: the file's name without folder and extension
    std::size_t bytes = 0;
};

// Loads the file (read whole, made usable in place), or builds the sample when `file`
// is empty. On failure prints one line saying why; the loader's own lines, naming
// missing kinds, have gone to the log already.
std::optional<LoadedImage> LoadVectorImage(const std::string& file);

// Maps the file copy-on-write and makes it usable in place: nothing is read or copied
// up front. On failure prints one line saying why.
std::optional<LoadedImage> LoadMappedVectorImage(const std::string& file);

}  // namespace kivutil
