// PoolManager: writing the pools as one file with a directory and a fixup table, and
// loading a file image in place with one addition per pointer field.
#include "utils/vector/PoolManager.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <set>
#include <vector>

using VectorFormat::readU32;
using VectorFormat::writeU32;

namespace {

std::uintptr_t addressOf(const void* p) { return reinterpret_cast<std::uintptr_t>(p); }

// True when the 32-bit word at `field` lies wholly inside a block of the map.
bool fieldInBlock(const BlockIntervalMap& map, const unsigned char* field, BlockIntervalMap::Block& block) {
    return map.lookup(addressOf(field), block) && addressOf(field) + 4 <= block.end;
}

}  // namespace

bool BlockIntervalMap::lookup(std::uintptr_t address, Block& found) const {
    auto it = blocks_.upper_bound(address);
    if (it == blocks_.begin()) return false;
    --it;
    if (address >= it->second.first) return false;
    found = Block{it->first, it->second.first, it->second.second};
    return true;
}

PoolManager::PoolManager(IReader& reader) { collectPtrs(reader); }

void PoolManager::collectPtrs(IReader& reader) {
    unlistedTable_ = nullptr;
    collector_.fields.RemoveAll();
    reader.enumPointers(collector_);
}

void PoolManager::listFields() const {
    if (unlistedTable_ == nullptr) return;
    const VectorFormat::FixupTable* table = unlistedTable_;
    unlistedTable_ = nullptr;
    // One slot per table word, in table order, filled in one go.
    const int fieldCount = static_cast<int>(table->getSize() / 4);
    collector_.fields.SetSize(fieldCount);
    unsigned char** fields = collector_.fields.GetData();
    for (int i = 0; i < fieldCount; ++i) fields[i] = image_ + readU32(table->data() + 4 * static_cast<std::size_t>(i));
}

unsigned char* PoolManager::alloc(int bytes) {
    if (bytes < 0 || image_ != nullptr) return nullptr;
    if (!arena_) arena_ = kiv_vector_detail::PoolArena::reserve();
    return arena_ ? arena_->carve(static_cast<std::size_t>(bytes)) : nullptr;
}

void PoolManager::registerPool(Entity* pool) {
    if (pool != nullptr) pools_.Add(pool);
}

void PoolManager::unregisterPool(Entity* pool) {
    for (int i = 0; i < pools_.GetSize(); ++i) {
        if (pools_[i] == pool) {
            pools_.RemoveAt(i);
            return;
        }
    }
}

PoolManager::Entity* PoolManager::getPool(int id) const {
    for (int i = 0; i < pools_.GetSize(); ++i) {
        if (pools_[i]->getId() == static_cast<std::uint32_t>(id)) return pools_[i];
    }
    return nullptr;
}

unsigned char* PoolManager::arenaBase() const { return image_ ? image_ : (arena_ ? arena_->base() : nullptr); }

std::size_t PoolManager::arenaExtent() const { return image_ ? imageBytes_ : (arena_ ? arena_->used() : 0); }

std::uintptr_t PoolManager::wordBase() const {
    if constexpr (sizeof(std::uintptr_t) <= sizeof(std::uint32_t)) {
        return 0;
    } else {
        return addressOf(arenaBase());
    }
}

std::uint32_t PoolManager::toWord(const void* address) const {
    return static_cast<std::uint32_t>(addressOf(address) - wordBase());
}

unsigned char* PoolManager::fromWord(std::uint32_t word, std::size_t bytes) const {
    // Wraps like the device's own address arithmetic; contains() then refuses anything
    // that does not land inside the image.
    const std::uintptr_t at = wordBase() + word;
    return contains(reinterpret_cast<const void*>(at), bytes) ? reinterpret_cast<unsigned char*>(at) : nullptr;
}

bool PoolManager::contains(const void* address, std::size_t bytes) const {
    const std::uintptr_t base = addressOf(arenaBase());
    const std::uintptr_t at = addressOf(address);
    return base != 0 && at >= base && bytes <= arenaExtent() && at - base <= arenaExtent() - bytes;
}

PoolManager::Entity* PoolManager::expandPool(Entity* pool, int newSize) {
    listFields();
    // The block holds the header too: a size within 8 of the largest int has no block.
    if (pool == nullptr || newSize < 0 || newSize > std::numeric_limits<int>::max() - 8) return nullptr;
    const std::uint32_t oldSize = pool->getSize();
    auto* grown = reinterpret_cast<Entity*>(alloc(newSize + 8));
    if (grown == nullptr) return nullptr;
    // A shrinking pool keeps only what fits; copying the whole old payload would run
    // past the new block.
    const std::size_t kept = std::min<std::size_t>(oldSize, static_cast<std::size_t>(newSize));
    std::memcpy(grown->bytes(), pool->bytes(), 8 + kept);
    grown->setSize(static_cast<std::uint32_t>(newSize));

    // The distance in 8-byte header units, rounded towards minus infinity. Deliberate:
    // the recorded field addresses move by 4 x d bytes and the targets by d bytes, the
    // units of the original pointer arithmetic, neither of them the byte distance.
    const auto distance = static_cast<std::int64_t>(addressOf(grown)) - static_cast<std::int64_t>(addressOf(pool));
    const std::int64_t d = distance >= 0 ? distance / 8 : -((-distance + 7) / 8);
    const std::uintptr_t oldPayload = addressOf(pool->data());
    const std::uintptr_t oldEnd = oldPayload + oldSize;
    const std::uintptr_t base = wordBase();
    for (int i = 0; i < collector_.fields.GetSize(); ++i) {
        unsigned char*& field = collector_.fields[i];
        // A recorded field that a previous expansion moved outside the image is not read.
        if (!contains(field, 4)) continue;
        const std::uint32_t value = readU32(field);
        if (addressOf(field) >= oldPayload && addressOf(field) < oldEnd) {
            field = reinterpret_cast<unsigned char*>(addressOf(field) + static_cast<std::uintptr_t>(4 * d));
        }
        // Deliberate: the adjustment goes to whatever word stands at the recorded address
        // as it now is; after a move that is usually not the field whose value was read.
        const std::uintptr_t target = base + value;
        if (target >= oldPayload && target < oldEnd && contains(field, 4)) {
            writeU32(field, readU32(field) + static_cast<std::uint32_t>(d));
        }
    }
    // The old block stays in the arena until the arena goes; arenas give nothing back
    // block by block.
    return grown;
}

void PoolManager::setupPoolMap() {
    const int pointerCount = collector_.fields.GetSize();
    unsigned long offset = 8ul * (pools_.GetSize() + 3) + 4ul * pointerCount;
    for (int i = 0; i < pools_.GetSize(); ++i) {
        Entity* pool = pools_[i];
        const unsigned long bytes = 8ul + pool->getSize();
        blockMap_.set(addressOf(pool), addressOf(pool) + bytes, offset);
        offset += bytes;
    }
}

void PoolManager::patchPointers(CKivArray<unsigned char*>& pointers, BlockIntervalMap& map,
                                CKivArray<unsigned long>& fixups) {
    fixups.RemoveAll();
    const std::uintptr_t base = wordBase();
    for (int i = 0; i < pointers.GetSize(); ++i) {
        unsigned char* field = pointers[i];
        BlockIntervalMap::Block fieldBlock, targetBlock;
        // A field is written only where all four of its bytes lie in a pool.
        if (!fieldInBlock(map, field, fieldBlock)) continue;
        const std::uint32_t value = readU32(field);
        if (!map.lookup(base + value, targetBlock)) {
            // The field's pool kind is looked up for diagnostics only; the field keeps its
            // raw value and gets no fixup, as the format has always done.
            BlockIntervalMap::Block owner;
            if (map.lookup(addressOf(field), owner)) {
                (void)VectorFormat::getEntityKindName(readU32(reinterpret_cast<const void*>(owner.start)));
            }
            continue;
        }
        writeU32(field, static_cast<std::uint32_t>(base + value - targetBlock.start + targetBlock.offset));
        fixups.Add(addressOf(field) - fieldBlock.start + fieldBlock.offset);
    }
}

void PoolManager::unpatchPointers(CKivArray<unsigned char*>& pointers, BlockIntervalMap& /*map*/,
                                  CKivArray<unsigned long>& fixups) {
    // Deliberate: this subtracts each field's own file offset instead of restoring its
    // address, so a written image is spent. Where fields were skipped the two arrays run
    // out of step, which is kept too: a skipped field, in a pool or not, still takes the
    // fixup of its place in the list. Fields past the last fixup have nothing to subtract.
    // Only a field outside the image's own memory is passed over.
    const int count = std::min(pointers.GetSize(), fixups.GetSize());
    for (int i = 0; i < count; ++i) {
        if (!contains(pointers[i], 4)) continue;
        writeU32(pointers[i], readU32(pointers[i]) - static_cast<std::uint32_t>(fixups[i]));
    }
}

bool PoolManager::layoutFitsFileWords() const {
    // Everything the file places is counted in 32-bit words (the fixup table's size,
    // 4 x N at most, and every pool's offset) and the writer's counts and the loader's
    // size are ints. The end of the last pool bounds them all; it is summed in 64 bits.
    std::uint64_t end = 8ull * (static_cast<std::uint64_t>(pools_.GetSize()) + 3) +
                        4ull * static_cast<std::uint64_t>(collector_.fields.GetSize());
    for (int i = 0; i < pools_.GetSize(); ++i) end += 8ull + pools_[i]->getSize();
    return end <= static_cast<std::uint64_t>(std::numeric_limits<int>::max());
}

bool PoolManager::serialize(CEntityWriter& writer) {
    // An image whose file would be too large to describe is refused before the file is
    // created, so that, as when the file cannot be created, nothing has changed.
    if (!layoutFitsFileWords()) return false;
    listFields();
    if (!writer.open()) return false;
    setupPoolMap();
    CKivArray<unsigned long> fixups;
    patchPointers(collector_.fields, blockMap_, fixups);

    const int poolCount = pools_.GetSize();
    writer.writeEntityHeader(VectorFormat::eTagDirectory, poolCount + 1);  // placeholder, overwritten below

    std::vector<unsigned char> directory(8 + 8 * static_cast<std::size_t>(poolCount + 1), 0);
    writeU32(&directory[0], VectorFormat::eTagDirectory);
    writeU32(&directory[4], 8u * static_cast<std::uint32_t>(poolCount + 1));
    writeU32(&directory[8], VectorFormat::eFixupTable);
    writeU32(&directory[12], getFixupTableOffset());
    std::size_t entry = 16;
    blockMap_.forEach([&](const BlockIntervalMap::Block& block) {
        if (entry + 8 > directory.size()) return;  // the map outgrew the pools: no room
        writeU32(&directory[entry], readU32(reinterpret_cast<const void*>(block.start)));
        writeU32(&directory[entry + 4], static_cast<std::uint32_t>(block.offset));
        entry += 8;
    });
    writer.writeEntity(reinterpret_cast<Entity*>(directory.data()), 0);

    // F <= N, so the table's size fits an int (checked above, in 64 bits).
    const std::uint64_t tableBytes = 4ull * static_cast<std::uint64_t>(fixups.GetSize());
    writer.writeEntityHeader(VectorFormat::eFixupTable, static_cast<int>(tableBytes));
    if (fixups.GetSize() > 0) {
        std::vector<unsigned char> words(static_cast<std::size_t>(tableBytes));
        for (int i = 0; i < fixups.GetSize(); ++i) {
            writeU32(&words[4 * static_cast<std::size_t>(i)], static_cast<std::uint32_t>(fixups[i]));
        }
        writer.write(words.data(), static_cast<int>(words.size()));
    }
    blockMap_.forEach([&](const BlockIntervalMap::Block& block) {
        writer.writeEntity(reinterpret_cast<Entity*>(block.start), static_cast<unsigned int>(block.offset));
    });

    unpatchPointers(collector_.fields, blockMap_, fixups);
    return true;
}

bool PoolManager::fixupsStayInside(const VectorFormat::FixupTable& table) const {
    // Before the fixups a field holds its target's file offset, whatever the word base.
    const unsigned char* words = table.data();
    const std::uint32_t count = table.getSize() / 4;
    const std::uint64_t bytes = imageBytes_;
    // Both conditions of every word are folded into one flag, so the loop has no branch
    // that depends on the data and the processor streams through the table.
    bool outside = false;
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::uint32_t offset = readU32(words + 4 * std::size_t{i});
        const bool fieldOutside = static_cast<std::uint64_t>(offset) + 4 > bytes;
        // A field outside the image is not read: its offset is replaced by 0 for the read.
        const std::uint32_t value = readU32(image_ + (fieldOutside ? 0 : offset));
        outside |= fieldOutside | (static_cast<std::uint64_t>(value) >= bytes);
    }
    return !outside;
}

bool PoolManager::deserialize(void* image, int bytes) {
    if (image == nullptr) return false;
    // The directory header must be there to be read at all.
    if (bytes < 8) return false;
    auto* at = static_cast<unsigned char*>(image);
    // Only the kind half of the first word is examined.
    if ((readU32(at) & VectorFormat::kKindMask) != VectorFormat::eTagDirectory) return false;
    // Sizes and offsets are compared as 64-bit values: a word that a signed comparison
    // would take as negative names no place inside the image and is refused.
    const std::int64_t limit = bytes;
    const std::int64_t directorySize = readU32(at + 4);
    if (directorySize + 8 > limit) return false;
    const std::int64_t entries = directorySize >= 8 ? directorySize / 8 : 0;
    for (std::int64_t i = 0; i < entries; ++i) {
        const std::int64_t offset = readU32(at + 8 + 8 * i + 4);
        if (offset + 8 > limit) return false;
        if (offset + 8 + readU32(at + offset + 4) > limit) return false;
    }
    std::set<std::uint32_t> ids;
    for (std::int64_t i = 0; i < entries; ++i) {
        if (!ids.insert(readU32(at + 8 + 8 * i)).second) return false;
    }

    image_ = at;
    imageBytes_ = static_cast<std::size_t>(bytes);
    VectorFormat::FixupTable* table = nullptr;
    for (std::int64_t i = 0; i < entries; ++i) {
        const std::uint32_t offset = readU32(at + 8 + 8 * i + 4);
        auto* entity = reinterpret_cast<Entity*>(at + offset);
        if (entity->getId() != VectorFormat::eFixupTable) {
            registerPool(entity);
            blockMap_.set(addressOf(entity), addressOf(entity) + 8 + entity->getSize(), offset);
        } else {
            table = reinterpret_cast<VectorFormat::FixupTable*>(entity);
        }
    }
    if (entries == 0 || table == nullptr) return false;
    // Unlike the device, which trusted its files, a table that names a field outside
    // the image or a field that points outside it refuses the whole image: no file may
    // make the library read or write outside its bytes.
    if (!fixupsStayInside(*table)) return false;

    collector_.fields.RemoveAll();
    unlistedTable_ = table;
    // Where words are offsets, a loaded image is its own arena and its fields already
    // hold their targets' words: the addition of the base is of nothing and would only
    // rewrite every field. Where words are addresses, every field gets the image's.
    if (toWord(image) != 0) applyFixupTable(table, image);
    return true;
}

void PoolManager::applyFixupTable(VectorFormat::FixupTable* table, void* base) {
    if (table == nullptr || base == nullptr) return;
    auto* start = static_cast<unsigned char*>(base);
    const std::uint32_t baseWord = toWord(base);
    // A loaded image that is its own arena has base word 0 and every field already holds
    // its target's offset. Writing nothing keeps a mapped image's pages the file's own.
    if (baseWord == 0) return;
    for (std::uint32_t i = 0; i + 4 <= table->getSize(); i += 4) {
        unsigned char* field = start + readU32(table->data() + i);
        if (contains(field, 4)) writeU32(field, readU32(field) + baseWord);
    }
}

unsigned int PoolManager::getFixupTableOffset() const { return 8u * static_cast<unsigned int>(pools_.GetSize() + 2); }
