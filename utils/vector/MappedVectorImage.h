// Loading a vector image through a file mapping instead of reading it: the blob lives in
// the mapped file's pages, which the system brings in as they are first read, so a large
// image costs no copy and no up-front read.
#pragma once

#include <memory>

#include "utils/vector/VectorBlob.h"

enum class EMappedLoadResult { eLoaded, eNoFile, eEmpty, eTooLarge, eNotAnImage };

// The image at `path` (device or host path), made usable in place inside a copy-on-write
// view of the file. Loading writes nothing, so every page stays the file's own; a page
// that a later change writes (saving the image, growing a pool) becomes a private copy,
// and the file itself is never changed. While the blob lives, the file can be read by
// others but not written. Null on failure, with the reason in `result` when given; an
// image that fails the checks has its log lines written, as with the ordinary load.
std::shared_ptr<VectorBlob> loadMappedVectorImage(const wchar_t* path, EMappedLoadResult* result = nullptr);
