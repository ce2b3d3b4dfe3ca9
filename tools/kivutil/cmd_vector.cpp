// kivutil vector: write the built-in sample image, and load an image file to show its
// directory, its spatial index, or what lies nearest a position.
#include <charconv>
#include <cstdio>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include <fmt/format.h>

#include "platform/host/TextCodec.h"
#include "tools/kivutil/Command.h"
#include "tools/kivutil/VectorImageLoad.h"
#include "utils/vector/Quadtree.h"
#include "utils/vector/SampleSitePlan.h"
#include "utils/vector/VectorFile.h"
#include "utils/vector/VectorImageLibrary.h"

namespace {

using kivutil::BadInput;
using kivutil::LoadVectorImage;
using kivutil::LoadMappedVectorImage;

std::wstring Wide(const std::string& s) { return kiv_text::FromUtf8(s); }

std::optional<double> ParseNumber(const std::string& text) {
    double value = 0.0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size()) return std::nullopt;
    return value;
}

std::string Box(const BoundingBox& box) {
    if (!box.isValid()) return "empty";
    return fmt::format("x {:.3f} .. {:.3f}, y {:.3f} .. {:.3f} ({:.3f} x {:.3f})", box.left, box.right, box.bottom,
                       box.top, box.getWidth(), box.getHeight());
}

// The record size of each list kind, 0 for kinds that are not arrays of records.
std::uint32_t RecordBytes(std::uint32_t kind) {
    using namespace VectorFormat;
    switch (kind) {
        case ePointsList: return kPointRecordBytes;
        case eLinesList: return kLineRecordBytes;
        case eArcsList: return kArcRecordBytes;
        case eStringsData: return 1;
        case eLabelsList: return kLabelRecordBytes;
        case eLineStylesList: return kLineStyleRecordBytes;
        case eTextStylesList: return kTextStyleRecordBytes;
        case ePolyLinesList: return kPolyLineRecordBytes;
        case ePolyLineElementsLists: return kPolyLineElementRecordBytes;
        case eSplinesList: return kSplineRecordBytes;
        case eSplinesControlPoints: return kSplineControlPointRecordBytes;
        case eSplinesKnots: return kSplineKnotRecordBytes;
        case ePointStylesList: return kPointStyleRecordBytes;
        default: return 0;
    }
}

int RunSample(const std::string& output) {
    auto blob = buildSampleSitePlan();
    if (!blob) {
        std::cerr << "kivutil: cannot build the sample image: no memory for its pools\n";
        return kivutil::kExitFailed;
    }
    const std::string summary = fmt::format("{} points, {} lines, {} arcs, {} labels", blob->getPointCount(),
                                            blob->getLineCount(), blob->getArcCount(), blob->getLabelCount());
    CEntityWriter writer(Wide(output).c_str());
    if (!blob->serialize(writer) || !writer.close()) {
        std::cerr << "kivutil: cannot write " << output << "; check that its folder exists and is writable\n";
        return kivutil::kExitFailed;
    }
    std::cout << "wrote " << output << ": sample site plan, " << summary << "\n";
    return kivutil::kExitOk;
}

std::string Colour(COLORREF c) { return fmt::format("#{:02X}{:02X}{:02X}", GetRValue(c), GetGValue(c), GetBValue(c)); }

std::string At(const TCoord3d& p) { return fmt::format("{:.3f}, {:.3f}", p.x, p.y); }

// Every point, line, arc and label with its position to the millimetre and its colour,
// so that an image can be checked against its source record by record.
void ListEntities(const VectorBlob& blob) {
    for (std::uint32_t i = 0; i < blob.getPointCount(); ++i) {
        TPointStyle style;
        blob.getPointStyle(i, style);
        std::cout << fmt::format("point {} at {} colour {}\n", i, At(blob.getPointsList()->getPosition(i)),
                                 Colour(style.colour));
    }
    for (std::uint32_t i = 0; i < blob.getLineCount(); ++i) {
        TLineStyle style;
        blob.getLineStyle(i, style);
        const auto& lines = *blob.getLinesList();
        std::cout << fmt::format("line {} from {} to {} colour {} width {} polyline {}\n", i, At(lines.getStart(i)),
                                 At(lines.getEnd(i)), Colour(style.colour), style.width, blob.getLinePolyLineIndex(i));
    }
    for (std::uint32_t i = 0; i < blob.getArcCount(); ++i) {
        TLineStyle style;
        blob.getArcStyle(i, style);
        const auto& arcs = *blob.getArcsList();
        std::cout << fmt::format("arc {} from {} to {} centre {} {} colour {}\n", i, At(arcs.getStart(i)),
                                 At(arcs.getEnd(i)), At(arcs.getCenter(i)),
                                 arcs.getDirection(i) > 0.0 ? "counter-clockwise" : "clockwise", Colour(style.colour));
    }
    for (std::uint32_t i = 0; i < blob.getLabelCount(); ++i) {
        TLabel label;
        if (!blob.getLabel(i, label)) continue;
        std::cout << fmt::format("label {} \"{}\" at {} height {:.2f} colour {}\n", i,
                                 kiv_text::ToUtf8(label.text.GetString()), At(label.position), label.style.height,
                                 Colour(label.style.colour));
    }
}

int RunInfo(const std::string& file, bool mapped, bool list) {
    if (mapped && file.empty()) return BadInput("--mapped needs an image file; the built-in sample is not a file");
    const auto image = mapped ? LoadMappedVectorImage(file) : LoadVectorImage(file);
    if (!image) return kivutil::kExitFailed;
    VectorBlob& blob = *image->blob;
    std::cout << "image: " << image->label;
    if (image->bytes) std::cout << " (" << image->bytes << " bytes)";
    std::cout << "\n";
    if (const auto* directory = blob.getDirectory()) {
        std::cout << "directory: " << directory->getSize() / 8 << " entries\n";
    } else {
        std::cout << "directory: none (built in memory)\n";
    }
    std::cout << fmt::format("  {:<22} {:>10} {:>10} {:>9}\n", "kind", "id", "bytes", "records");
    const PoolManager& pools = blob.getPoolManager();
    for (int i = 0; i < pools.getPoolCount(); ++i) {
        const auto* pool = pools.getPoolAt(i);
        const std::uint32_t recordBytes = RecordBytes(pool->getId() & VectorFormat::kKindMask);
        const std::string records = recordBytes ? std::to_string(pool->getSize() / recordBytes) : "-";
        std::cout << fmt::format("  {:<22} {:>10} {:>10} {:>9}\n", VectorFormat::getEntityKindName(pool->getId()),
                                 fmt::format("{:08X}", pool->getId()), pool->getSize(), records);
    }
    std::cout << "pointer fields: " << pools.getPointerList().GetSize() << "\n";
    const bool complete = blob.verifyTagSet();
    std::cout << "tag set: " << (complete ? "complete" : "incomplete") << "\n";
    std::cout << "extent: " << Box(buildQuadtree(blob)->getRoot()->getBBox()) << "\n";
    std::cout << fmt::format("entities: {} points, {} lines, {} arcs, {} labels; {} polylines\n", blob.getPointCount(),
                             blob.getLineCount(), blob.getArcCount(), blob.getLabelCount(), blob.getPolyLineCount());
    if (list) ListEntities(blob);
    return complete ? kivutil::kExitOk : kivutil::kExitFailed;
}

int RunIndex(const std::string& file) {
    const auto image = LoadVectorImage(file);
    if (!image) return kivutil::kExitFailed;
    auto tree = buildQuadtree(*image->blob);
    const TQuadtreeStats stats = getQuadtreeStats(*tree->getRoot());
    const int features = static_cast<int>(image->blob->getPointCount() + image->blob->getLineCount() +
                                          image->blob->getArcCount());
    std::cout << "image: " << image->label << "\n"
              << "features: " << features << " (" << image->blob->getPointCount() << " points, "
              << image->blob->getLineCount() << " lines, " << image->blob->getArcCount() << " arcs)\n"
              << "extent: " << Box(tree->getRoot()->getBBox()) << "\n"
              << "depth: " << stats.depth << "\n"
              << "nodes: " << stats.nodes << "\n"
              << "leaves: " << stats.leaves << "\n"
              << fmt::format("features per leaf: min {}, mean {:.1f}, max {}\n", stats.minLeafFeatures,
                             stats.leaves ? static_cast<double>(stats.leafFeatures) / stats.leaves : 0.0,
                             stats.maxLeafFeatures);
    return kivutil::kExitOk;
}

struct PickOptions {
    std::string file, x, y, tolerance = "1.0";
    bool pointsOnly = false, linesOnly = false;
};

int RunPick(const PickOptions& o) {
    const auto x = ParseNumber(o.x), y = ParseNumber(o.y), tolerance = ParseNumber(o.tolerance);
    if (!x || !y) return BadInput("cannot read \"" + o.x + " " + o.y + "\" as a position; give x and y as numbers, e.g. 5050.5 8035");
    if (!tolerance || !(*tolerance >= 0.0)) return BadInput("the tolerance must be a number of 0 or more");
    if (o.pointsOnly && o.linesOnly) return BadInput("--points-only and --lines-only exclude each other");
    const auto image = LoadVectorImage(o.file == "-" ? std::string() : o.file);
    if (!image) return kivutil::kExitFailed;
    StakeableEntities kinds;
    if (!o.linesOnly) kinds.insert(eStakeablePoint);
    if (!o.pointsOnly) kinds.insert(eStakeableLine);
    auto tree = buildQuadtree(*image->blob);
    Csx::CIdentityCs grid;
    TCoord2d at{*x, *y};
    TPickResult found;
    if (!tree->pick(at, grid, grid, *tolerance, kinds, found)) {
        std::cout << fmt::format("nothing within {} of ({}, {})\n", *tolerance, *x, *y);
        return kivutil::kExitFailed;
    }
    const bool point = found.kind == TPickResult::ePoint;
    const CKivStringT name = point ? generateVectorImagePointName(image->name.c_str(), found.index)
                                   : generateVectorImageLineName(image->name.c_str(), found.index);
    std::cout << kiv_text::ToUtf8(name.GetString()) << ": " << (point ? "point " : "polyline ") << found.index
              << fmt::format(" at ({:.3f}, {:.3f}), distance {:.3f}\n", at.x, at.y, found.distance);
    return kivutil::kExitOk;
}

kivutil::Registration vector(40, [](CLI::App& app, std::function<int()>& run) {
    auto* sub = app.add_subcommand("vector", "Vector images: write the sample, show an image's contents, index or picks");
    sub->require_subcommand(1);

    auto output = std::make_shared<std::string>("site.vec");
    auto* sample = sub->add_subcommand("sample", "Write the built-in sample site plan as a vector image file");
    sample->add_option("-o,--output", *output, "file to write")->capture_default_str();
    sample->callback([&run, output] { run = [output] { return RunSample(*output); }; });

    auto infoFile = std::make_shared<std::string>();
    auto infoMapped = std::make_shared<bool>(false);
    auto* info = sub->add_subcommand("info", "Show an image's entities, record counts, tag-set verdict and extent");
    info->add_option("file", *infoFile, "vector image file (default: the built-in sample)");
    info->add_flag("--mapped", *infoMapped, "load the file through a memory mapping instead of reading it");
    auto infoList = std::make_shared<bool>(false);
    info->add_flag("--list", *infoList, "list every point, line, arc and label with its position and colour");
    info->callback([&run, infoFile, infoMapped, infoList] {
        run = [infoFile, infoMapped, infoList] { return RunInfo(*infoFile, *infoMapped, *infoList); };
    });

    auto indexFile = std::make_shared<std::string>();
    auto* index = sub->add_subcommand("index", "Show the shape of an image's quadtree index");
    index->add_option("file", *indexFile, "vector image file (default: the built-in sample)");
    index->callback([&run, indexFile] { run = [indexFile] { return RunIndex(*indexFile); }; });

    auto pick = std::make_shared<PickOptions>();
    auto* pickCmd = sub->add_subcommand("pick", "Find the point or polyline nearest a position (\"-\" for the sample)");
    pickCmd->add_option("file", pick->file, "vector image file, or - for the built-in sample")->required();
    pickCmd->add_option("x", pick->x, "easting in the image's units")->required();
    pickCmd->add_option("y", pick->y, "northing in the image's units")->required();
    pickCmd->add_option("-t,--tolerance", pick->tolerance, "search radius in the image's units")->capture_default_str();
    pickCmd->add_flag("--points-only", pick->pointsOnly, "consider points only");
    pickCmd->add_flag("--lines-only", pick->linesOnly, "consider polylines only");
    pickCmd->callback([&run, pick] { run = [pick] { return RunPick(*pick); }; });
});

}  // namespace
