// Loads arbitrary bytes as a vector image in place, then exercises everything a loaded
// image offers a reader: typed lists, styles and labels through their pointers, the
// pointer enumeration, and the quadtree with a pick. A refused image is read the same
// way, since it keeps the pools it registered. An image that loads is loaded into the
// same blob once more, then saved again through the image library into a scratch
// folder, which turns its file-derived words back into offsets, and the saved file is
// loaded once more. Nothing may read or write outside the bytes.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

#include "fuzz/ScratchFolder.h"
#include "platform/host/Host.h"
#include "utils/vector/Quadtree.h"
#include "utils/vector/VectorBlob.h"
#include "utils/vector/VectorImageLibrary.h"

namespace {

struct Counter : VectorFormat::IPointerProcessor {
    std::size_t fields = 0;
    void processPointer(unsigned char*) override { ++fields; }
};

// A device root of the run's own; it goes when the run ends.
struct ScratchRoot : ScratchFolder {
    ScratchRoot() : ScratchFolder("kivfuzz") {
        if (ready()) kiv_host::SetDeviceRoot(path());
    }
};

void readEverything(VectorBlob& blob) {
    Counter counter;
    blob.enumPointers(counter);
    TPointStyle pointStyle;
    TLineStyle lineStyle;
    TLabel label;
    for (std::uint32_t i = 0; i < blob.getPointCount() && i < 4096; ++i) blob.getPointStyle(i, pointStyle);
    for (std::uint32_t i = 0; i < blob.getLineCount() && i < 4096; ++i) {
        blob.getLineStyle(i, lineStyle);
        blob.getLinePolyLineIndex(i);
    }
    for (std::uint32_t i = 0; i < blob.getArcCount() && i < 4096; ++i) {
        blob.getArcStyle(i, lineStyle);
        blob.getArcPolyLineIndex(i);
    }
    for (std::uint32_t i = 0; i < blob.getPolyLineCount() && i < 4096; ++i) blob.getPolyLineStyle(i, lineStyle);
    for (std::uint32_t i = 0; i < blob.getLabelCount() && i < 4096; ++i) blob.getLabel(i, label);

    auto tree = buildQuadtree(blob);
    Csx::CIdentityCs identity;
    TCoord2d at{0.0, 0.0};
    TPickResult found;
    tree->pick(at, identity, identity, 1.0, {eStakeablePoint, eStakeableLine}, found);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool quiet = [] {
        kiv_host::SetLogSink([](const kiv_host::LogEntry&) {});
        return true;
    }();
    (void)quiet;
    if (size > (1u << 20)) return 0;
    // An exactly sized copy, so that the sanitizer sees any byte read past the image.
    std::shared_ptr<unsigned char[]> image(new unsigned char[size == 0 ? 1 : size]);
    if (size) std::memcpy(image.get(), data, size);
    auto blob = std::shared_ptr<VectorBlob>(new VectorBlob());
    const bool loaded = blob->deserialize(image, static_cast<int>(size));
    readEverything(*blob);
    if (!loaded) return 0;
    // Loaded again from a copy of its own, the blob lets the first image go and must
    // keep nothing of it.
    {
        std::shared_ptr<unsigned char[]> second(new unsigned char[size]);
        std::memcpy(second.get(), data, size);
        image.reset();
        blob->deserialize(second, static_cast<int>(size));
        readEverything(*blob);
    }

    static ScratchRoot scratch;
    if (!scratch.ready()) return 0;
    static VectorImageLibrary library(L"\\images");
    if (library.saveImage(L"again.vec", blob)) {
        if (auto again = library.getImage(L"again.vec")) readEverything(*again);
    }
    return 0;
}
