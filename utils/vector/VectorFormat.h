// The framing of the vector image file: the entity (a 32-bit id, a 32-bit payload size
// and the payload), the entity kinds with their ids and names, and the two interfaces
// through which an image reports its pointer fields to the pool manager.
#pragma once

#include <cstdint>

#include "platform/kivutils/Heap.h"
#include "utils/vector/ByteOrder.h"

namespace VectorFormat {

// Entity kinds. The kind sits in the upper 16 bits of an id.
enum EEntityId : std::uint32_t {
    eTagDirectory = 0x00010000,
    eFixupTable = 0x00020000,
    ePointsList = 0x00030000,
    eLinesList = 0x00040000,
    eArcsList = 0x00050000,
    eStringsData = 0x00060000,
    eLabelsList = 0x00070000,
    eLineStylesList = 0x00080000,
    eTextStylesList = 0x00090000,
    ePolyLinesList = 0x000A0000,
    ePolyLineElementsLists = 0x000B0000,
    eSplinesList = 0x000C0000,
    eSplinesControlPoints = 0x000D0000,
    eSplinesKnots = 0x000E0000,
    ePointStylesList = 0x000F0000,
    eDummyEntity = 0x00100000,
};
constexpr std::uint32_t kKindMask = 0xFFFF0000;
constexpr std::uint32_t kEntityHeaderBytes = 8;

// The ten kinds every complete image holds, in the order they are checked and added.
constexpr std::uint32_t kRequiredKinds[] = {ePointsList,       ePointStylesList, eArcsList,      eLinesList,
                                            eStringsData,      eLabelsList,      eLineStylesList, eTextStylesList,
                                            ePolyLinesList,    ePolyLineElementsLists};

// One entity, in memory exactly as in the file: id, size, then `size` payload bytes.
// Entities sit at any byte offset of an image, so the header is kept as bytes and read
// through the little-endian helpers; T names what the payload holds.
template <typename T>
struct Entity {
    unsigned char header[kEntityHeaderBytes];

    std::uint32_t getId() const { return readU32(header); }
    void setId(std::uint32_t id) { writeU32(header, id); }
    std::uint32_t getSize() const { return readU32(header + 4); }
    void setSize(std::uint32_t size) { writeU32(header + 4, size); }
    // The first byte of the header, and the first byte of the payload.
    unsigned char* bytes() { return reinterpret_cast<unsigned char*>(this); }
    const unsigned char* bytes() const { return reinterpret_cast<const unsigned char*>(this); }
    unsigned char* data() { return bytes() + kEntityHeaderBytes; }
    const unsigned char* data() const { return bytes() + kEntityHeaderBytes; }
};
static_assert(sizeof(Entity<char>) == 8 && alignof(Entity<char>) == 1);

// The fixup table's payload is size / 4 file offsets of pointer fields.
using FixupTable = Entity<std::uint32_t>;

// The chain of kind descriptors that turns an id into a name for diagnostics. Its last
// descriptor is "Unknown" with id -1.
struct EntityKindDescriptor {
    std::uint32_t id;
    const char* name;
    const EntityKindDescriptor* next;
};
const EntityKindDescriptor* getFirstEntityKind();
// The name of the kind whose descriptor answers `id` exactly; "Invalid entity ID" when
// no descriptor does.
const char* getEntityKindName(std::uint32_t id);

// Receives the address of one 32-bit pointer field per call.
class IPointerProcessor {
public:
    virtual void processPointer(unsigned char* field) = 0;
    virtual ~IPointerProcessor() = default;
};

}  // namespace VectorFormat

// An image that can report every pointer field it holds.
class IReader {
public:
    virtual void enumPointers(VectorFormat::IPointerProcessor& processor) = 0;
    virtual ~IReader() = default;
};
