// VectorImageLibrary: a folder of vector image files. Loads an image by name into a
// VectorBlob (read whole, made usable in place) and saves one under a name.
#pragma once

#include <memory>

#include "platform/kivutils/Heap.h"
#include "platform/kivutils/KivString.h"
#include "utils/vector/VectorBlob.h"

class VectorImageLibrary : public SharedHeapObject {
public:
    // The largest image file the library loads; pointer words and sizes are 32-bit
    // signed counts in the loader.
    static constexpr std::size_t kMaxImageBytes = 0x7FFFFFFF;

    // Stores the folder without one trailing backslash and creates it when absent.
    explicit VectorImageLibrary(const TStr& folder);
    VectorImageLibrary(const VectorImageLibrary&) = default;
    VectorImageLibrary& operator=(const VectorImageLibrary&) = default;

    const TStr& getLibraryName() const { return folder_; }
    // The image `name` of the folder, read anew on every call; null when the file is
    // absent, cannot be read or fails the image checks (whose log lines are written).
    std::shared_ptr<VectorBlob> getImage(const wchar_t* name) const;
    // Writes the image as `name` in the folder, replacing any old file atomically. False
    // when the file cannot be created (read-only, a folder, held by a reader, an absent
    // folder): nothing is written and the image is left as it was, so it can be saved
    // again. False too when the new file cannot be completed or put in place; the old
    // file then stays whole, but the image has been written and is spent, as it is
    // after every save that got as far as the writing.
    bool saveImage(const wchar_t* name, std::shared_ptr<VectorBlob> image) const;

    // The folder part of a path (before its last backslash); a path ending in a
    // backslash, or holding none, comes back unchanged.
    static TStr getLibraryPathFromFilePath(const TStr& path);
    // The name part of a path (after its last backslash), with the same exceptions.
    static TStr getImageNameFromFilePath(const TStr& path);

private:
    TStr folder_;
};
