// The mapped load: the blob holds the mapping through the shared byte array it is given,
// so the view goes when the last copy of the blob goes.
#include "utils/vector/MappedVectorImage.h"

#include <new>

#include "utils/runtime/KivMappedFile.h"
#include "utils/vector/VectorImageLibrary.h"

std::shared_ptr<VectorBlob> loadMappedVectorImage(const wchar_t* path, EMappedLoadResult* result) {
    EMappedLoadResult ignored;
    EMappedLoadResult& why = result ? *result : ignored;
    std::shared_ptr<CKivMappedFile> file(new (std::nothrow) CKivMappedFile());
    if (!file || !file->Open(path, CKivMappedFile::eCopyOnWrite)) {
        why = file && file->GetError() == ERROR_FILE_INVALID ? EMappedLoadResult::eEmpty : EMappedLoadResult::eNoFile;
        return nullptr;
    }
    if (file->GetSize() > VectorImageLibrary::kMaxImageBytes) {
        why = EMappedLoadResult::eTooLarge;
        return nullptr;
    }
    const int bytes = static_cast<int>(file->GetSize());
    // Shares the mapping's ownership and points at its first byte.
    std::shared_ptr<unsigned char[]> image(file, file->GetData());
    std::shared_ptr<VectorBlob> blob(new (std::nothrow) VectorBlob());
    if (!blob || !blob->deserialize(std::move(image), bytes)) {
        why = EMappedLoadResult::eNotAnImage;
        return nullptr;
    }
    why = EMappedLoadResult::eLoaded;
    return blob;
}
