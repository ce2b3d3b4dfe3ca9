// CEntityWriter: the small file writer that PoolManager::serialize drives. It writes
// entities and raw words at chosen file positions.
#pragma once

#include "platform/kivutils/Heap.h"
#include "platform/kivutils/KivString.h"
#include "utils/vector/VectorFile.h"
#include "utils/vector/VectorFormat.h"

class CEntityWriter : public SharedHeapObject {
public:
    // Stores the path; opens nothing.
    explicit CEntityWriter(const wchar_t* path);
    // Closes the file (see close()).
    ~CEntityWriter();
    CEntityWriter(const CEntityWriter&) = delete;
    CEntityWriter& operator=(const CEntityWriter&) = delete;

    // Creates the file for writing, truncated. The bytes go to a sibling temporary file
    // that replaces the target when the writer closes, so a failed write never leaves a
    // truncated image behind. True if the file could be created; false, with nothing
    // created, wherever creating the target itself would fail (read-only, a folder, held
    // by a reader, an absent folder), so that a refused image is left unspent.
    bool open();
    // One write of all bytes at the current position.
    bool write(const void* data, int bytes);
    // The 8 bytes {id, size} at the current position.
    bool writeEntityHeader(int id, int size);
    // Header and payload of `entity` at `offset` from the file's start; false when that
    // position cannot be reached.
    bool writeEntity(VectorFormat::Entity<char>* entity, unsigned int offset);
    // Finishes the file: true when every write succeeded and the file now stands under
    // its name; otherwise the old file (or none) remains whole. Closing twice is harmless.
    bool close();

    const CKivStringT& getPath() const { return path_; }

private:
    kiv_vector_detail::AtomicFileWriter file_;
    CKivStringT path_;
    bool committed_ = false;
};
