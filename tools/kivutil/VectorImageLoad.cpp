// Loading the image of a kivutil command, with one line on failure saying why.
#include "tools/kivutil/VectorImageLoad.h"

#include <cstdint>
#include <iostream>

#include "platform/host/TextCodec.h"
#include "utils/runtime/FileChecks.h"
#include "utils/vector/MappedVectorImage.h"
#include "utils/vector/SampleSitePlan.h"
#include "utils/vector/VectorFile.h"
#include "utils/vector/VectorImageLibrary.h"

namespace kivutil {

std::optional<LoadedImage> LoadVectorImage(const std::string& file) {
    LoadedImage image;
    if (file.empty()) {
        image.blob = buildSampleSitePlan();
        image.label = "(built-in sample)";
        image.name = L"sample";
        if (!image.blob) std::cerr << "kivutil: cannot build the sample image: no memory for its pools\n";
        return image.blob ? std::optional<LoadedImage>(image) : std::nullopt;
    }
    std::shared_ptr<unsigned char[]> bytes;
    using kiv_vector_detail::EReadResult;
    const EReadResult read = kiv_vector_detail::readWholeFile(kiv_text::FromUtf8(file).c_str(),
                                                              VectorImageLibrary::kMaxImageBytes, bytes, image.bytes);
    const char* why = nullptr;
    switch (read) {
        case EReadResult::eRead: break;
        case EReadResult::eNoFile: why = "the file does not exist or cannot be opened"; break;
        case EReadResult::eTooLarge: why = "the file is larger than 2 GiB"; break;
        case EReadResult::eNoMemory: why = "there is not enough memory to hold it"; break;
        case EReadResult::eReadFailed: why = "the file could not be read completely"; break;
    }
    if (why == nullptr) {
        image.blob.reset(new VectorBlob());
        if (image.blob->deserialize(bytes, static_cast<int>(image.bytes))) {
            image.label = file;
            const std::string base = file.substr(file.find_last_of("/\\") + 1);
            image.name = kiv_text::FromUtf8(base.substr(0, base.find_last_of('.')));
            return image;
        }
        why = image.blob->getDirectory() != nullptr
                  ? "required entities are missing (the lines above name them)"
                  : "it is not a vector image, or its directory or fixup table is damaged";
    }
    std::cerr << "kivutil: cannot load " << file << ": " << why << "\n";
    return std::nullopt;
}

std::optional<LoadedImage> LoadMappedVectorImage(const std::string& file) {
    EMappedLoadResult result = EMappedLoadResult::eNoFile;
    LoadedImage image;
    const std::wstring path = kiv_text::FromUtf8(file);
    image.blob = loadMappedVectorImage(path.c_str(), &result);
    const char* why = nullptr;
    switch (result) {
        case EMappedLoadResult::eLoaded: break;
        case EMappedLoadResult::eNoFile: why = "the file does not exist or cannot be mapped"; break;
        case EMappedLoadResult::eEmpty: why = "the file is empty"; break;
        case EMappedLoadResult::eTooLarge: why = "the file is larger than 2 GiB"; break;
        case EMappedLoadResult::eNotAnImage:
            why = "it is not a vector image, or its directory or fixup table is damaged, or required entities are missing";
            break;
    }
    if (why != nullptr) {
        std::cerr << "kivutil: cannot map " << file << ": " << why << "\n";
        return std::nullopt;
    }
    std::uint64_t size = 0;
    if (FileChecks::GetSize(path.c_str(), size)) image.bytes = static_cast<std::size_t>(size);
    image.label = file + " (mapped)";
    const std::string base = file.substr(file.find_last_of("/\\") + 1);
    image.name = kiv_text::FromUtf8(base.substr(0, base.find_last_of('.')));
    return image;
}

}  // namespace kivutil
