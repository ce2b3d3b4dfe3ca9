// The image library: folder handling, loading and saving by name.
#include "utils/vector/VectorImageLibrary.h"

#include "platform/kivutils/FileFuncs.h"
#include "utils/vector/VectorFile.h"

VectorImageLibrary::VectorImageLibrary(const TStr& folder) : folder_(folder) {
    if (!folder_.IsEmpty() && folder_[folder_.GetLength() - 1] == L'\\') folder_ = folder_.Left(folder_.GetLength() - 1);
    if (!FileFuncs::IsDirExist(folder_)) FileFuncs::CreateDir(folder_);
}

std::shared_ptr<VectorBlob> VectorImageLibrary::getImage(const wchar_t* name) const {
    const TStr path = folder_ + L"\\" + (name ? name : L"");
    std::shared_ptr<unsigned char[]> bytes;
    std::size_t size = 0;
    if (kiv_vector_detail::readWholeFile(path, kMaxImageBytes, bytes, size) != kiv_vector_detail::EReadResult::eRead) {
        return nullptr;
    }
    std::shared_ptr<VectorBlob> blob(new (std::nothrow) VectorBlob());
    if (!blob || !blob->deserialize(std::move(bytes), static_cast<int>(size))) return nullptr;
    return blob;
}

bool VectorImageLibrary::saveImage(const wchar_t* name, std::shared_ptr<VectorBlob> image) const {
    if (!image) return false;
    CEntityWriter writer(folder_ + L"\\" + (name ? name : L""));
    // The result is serialize's: false when the file cannot be created, the image then
    // untouched. Beyond that, the writer's close reports whether the new file is in
    // place: a write, flush or rename that fails leaves the old file whole and is
    // reported as not saved, since the file under the name is not this image.
    return image->serialize(writer) && writer.close();
}

TStr VectorImageLibrary::getLibraryPathFromFilePath(const TStr& path) {
    if (path.IsEmpty() || path[path.GetLength() - 1] == L'\\') return path;
    const int last = path.ReverseFind(L'\\');
    return last < 0 ? path : path.Left(last);
}

TStr VectorImageLibrary::getImageNameFromFilePath(const TStr& path) {
    if (path.IsEmpty() || path[path.GetLength() - 1] == L'\\') return path;
    const int last = path.ReverseFind(L'\\');
    return last < 0 ? path : path.Mid(last + 1);
}
