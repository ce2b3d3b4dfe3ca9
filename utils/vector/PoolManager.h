// PoolManager: the pools of one vector image, the list of every pointer field inside
// them, and the map from each pool's block to its place in a file. It writes the pools
// to one file (serialize) and makes a file image usable in place (deserialize).
//
// Pointer words. A pointer field is a 32-bit word. On a 32-bit host, as on the device,
// the word is its target's address: loading adds the image's address to every field
// the fixup table names. A 64-bit address does not fit, so there the word holds the
// target's offset from the image's arena base instead: a loaded image's arena is the
// file image itself (so a loaded field keeps the file offset of its target and loading
// writes nothing), a built image's pools are all carved out of one reserved arena.
// toWord() and fromWord() convert between words and addresses; fromWord() answers only
// for targets that lie inside the image.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>

#include "platform/kivutils/Heap.h"
#include "platform/kivutils/KivArray.h"
#include "utils/vector/EntityWriter.h"
#include "utils/vector/PoolArena.h"
#include "utils/vector/VectorFormat.h"

// Ordered map from a pool's start address to its end (exclusive) and file offset.
class BlockIntervalMap {
public:
    struct Block {
        std::uintptr_t start = 0;
        std::uintptr_t end = 0;
        unsigned long offset = 0;
    };

    void set(std::uintptr_t start, std::uintptr_t end, unsigned long offset) { blocks_[start] = {end, offset}; }
    // The block with the greatest start not above `address`, if `address` is below its end.
    bool lookup(std::uintptr_t address, Block& found) const;
    void clear() { blocks_.clear(); }
    bool empty() const { return blocks_.empty(); }
    std::size_t size() const { return blocks_.size(); }

    template <typename Visit>
    void forEach(Visit visit) const {
        for (const auto& [start, value] : blocks_) visit(Block{start, value.first, value.second});
    }

private:
    std::map<std::uintptr_t, std::pair<std::uintptr_t, unsigned long>> blocks_;
};

class PoolManager : public SharedHeapObject {
public:
    using Entity = VectorFormat::Entity<char>;

    PoolManager() = default;
    explicit PoolManager(IReader& reader);
    // Copies share the entity blocks (and the arena they live in).
    PoolManager(const PoolManager&) = default;
    PoolManager& operator=(const PoolManager&) = default;

    // Empties the pointer list and lets the reader report every pointer field into it.
    void collectPtrs(IReader& reader);
    VectorFormat::IPointerProcessor* getPointerCollector() {
        listFields();
        return &collector_;
    }
    const CKivArray<unsigned char*>& getPointerList() const {
        listFields();
        return collector_.fields;
    }

    // A new uninitialised block of `bytes` in this manager's arena (the caller lays the
    // 8-byte header in it). Null for a negative size, when the arena is exhausted, or
    // when the manager holds a loaded image, whose arena is the image and cannot grow.
    unsigned char* alloc(int bytes);
    void registerPool(Entity* pool);
    void unregisterPool(Entity* pool);
    // The first registered pool whose id equals `id` exactly; null if none.
    Entity* getPool(int id) const;
    int getPoolCount() const { return pools_.GetSize(); }
    Entity* getPoolAt(int index) const { return pools_[index]; }
    // A copy of `pool` with room for `newSize` payload bytes; the pointer fields into and
    // out of the old payload are moved (in the system's own units, see the definition).
    // The caller exchanges the registration. Null when no block can be had.
    Entity* expandPool(Entity* pool, int newSize);

    bool serialize(CEntityWriter& writer);
    bool deserialize(void* image, int bytes);
    // Adds the word of `base` to every field the table names that lies inside the image.
    void applyFixupTable(VectorFormat::FixupTable* table, void* base);
    unsigned int getFixupTableOffset() const;

    // Pointer words: the word that names `address`, and the address a word names when
    // [word, word + bytes) lies inside the image (null otherwise).
    std::uint32_t toWord(const void* address) const;
    unsigned char* fromWord(std::uint32_t word, std::size_t bytes) const;
    // True when [address, address + bytes) lies inside the image.
    bool contains(const void* address, std::size_t bytes) const;

private:
    struct PointerCollector : VectorFormat::IPointerProcessor {
        void processPointer(unsigned char* field) override { fields.Add(field); }
        CKivArray<unsigned char*> fields;
    };

    // A loaded image's pointer list is the fixup table's: it is written out only when
    // someone asks for it, so loading touches no more memory than the checks need.
    void listFields() const;
    void setupPoolMap();
    void patchPointers(CKivArray<unsigned char*>& pointers, BlockIntervalMap& map, CKivArray<unsigned long>& fixups);
    void unpatchPointers(CKivArray<unsigned char*>& pointers, BlockIntervalMap& map, CKivArray<unsigned long>& fixups);
    bool fixupsStayInside(const VectorFormat::FixupTable& table) const;
    bool layoutFitsFileWords() const;
    unsigned char* arenaBase() const;
    std::size_t arenaExtent() const;
    // The address that word 0 names: 0 where words are addresses, else the arena base.
    std::uintptr_t wordBase() const;

    CKivArray<Entity*> pools_;
    mutable PointerCollector collector_;
    // The loaded fixup table whose fields are not yet in the collector's list, if any.
    mutable const VectorFormat::FixupTable* unlistedTable_ = nullptr;
    BlockIntervalMap blockMap_;
    // A built image's arena; a loaded image is the arena itself (image_, imageBytes_).
    std::shared_ptr<kiv_vector_detail::PoolArena> arena_;
    unsigned char* image_ = nullptr;
    std::size_t imageBytes_ = 0;
};
