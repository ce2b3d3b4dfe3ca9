// kivutil vector import / export: GIS and CAD files to vector images and back. Built
// only with the geodata bridge; these subcommands join the existing vector command.
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "geodata/GeoExport.h"
#include "geodata/GeoImport.h"
#include "platform/host/TextCodec.h"
#include "tools/kivutil/Command.h"
#include "utils/vector/EntityWriter.h"
#include "utils/vector/VectorFile.h"
#include "utils/vector/VectorImageLibrary.h"

namespace {

int RunImport(const kiv_geo::TImportOptions& given, const std::string& output) {
    if (output.empty()) return kivutil::BadInput("name the image to write with -o FILE.vec");
    kiv_geo::TImportOptions options = given;
    options.progress = [](const std::string& line) { std::cerr << "kivutil: " << line << "\n"; };
    kiv_geo::TImportSummary summary;
    auto blob = kiv_geo::importGeodata(options, summary);
    if (!blob) {
        if (summary.badInput) return kivutil::BadInput(summary.error);
        std::cerr << "kivutil: " << summary.error << "\n";
        return kivutil::kExitFailed;
    }
    const std::string counts = fmt::format("{} points, {} lines, {} arcs, {} labels", blob->getPointCount(),
                                           blob->getLineCount(), blob->getArcCount(), blob->getLabelCount());
    CEntityWriter writer(kiv_text::FromUtf8(output).c_str());
    if (!blob->serialize(writer) || !writer.close()) {
        std::cerr << "kivutil: cannot write " << output << "; check that its folder exists and is writable\n";
        return kivutil::kExitFailed;
    }
    std::string skipped;
    for (const auto& [why, count] : summary.skipped) skipped += fmt::format("{}{} {}", skipped.empty() ? " (" : ", ", count, why);
    if (!skipped.empty()) skipped += ")";
    std::cout << fmt::format("wrote {}: {} features read, {} written, {} skipped{}; {}\n", output, summary.read,
                             summary.written, summary.skippedTotal(), skipped, counts);
    return kivutil::kExitOk;
}

int RunExport(const std::string& file, const kiv_geo::TExportOptions& options) {
    std::shared_ptr<unsigned char[]> bytes;
    std::size_t size = 0;
    const auto read = kiv_vector_detail::readWholeFile(kiv_text::FromUtf8(file).c_str(),
                                                       VectorImageLibrary::kMaxImageBytes, bytes, size);
    auto blob = std::make_shared<VectorBlob>();
    if (read != kiv_vector_detail::EReadResult::eRead || !blob->deserialize(bytes, static_cast<int>(size))) {
        std::cerr << "kivutil: cannot load " << file << " as a vector image; \"kivutil vector info " << file
                  << "\" says why\n";
        return kivutil::kExitFailed;
    }
    kiv_geo::TExportSummary summary;
    if (!kiv_geo::exportGeodata(*blob, options, summary)) {
        if (summary.badInput) return kivutil::BadInput(summary.error);
        std::cerr << "kivutil: " << summary.error << "\n";
        return kivutil::kExitFailed;
    }
    std::cout << fmt::format("wrote {} ({}): {} points, {} polylines, {} labels\n", options.output, summary.format,
                             summary.points, summary.polylines, summary.labels);
    return kivutil::kExitOk;
}

// Registered after the vector command, whose subcommand it extends.
kivutil::Registration vectorGeo(41, [](CLI::App& app, std::function<int()>& run) {
    CLI::App* vector = app.get_subcommand("vector");

    struct ImportArgs {
        kiv_geo::TImportOptions options;
        std::string output;
    };
    auto args = std::make_shared<ImportArgs>();
    auto* import = vector->add_subcommand("import", "Read a GIS or CAD file (shapefile, GeoJSON, DXF, GeoPackage, KML, ...) into a vector image");
    import->add_option("source", args->options.source, "file or data source to read")->required();
    import->add_option("-o,--output", args->output, "vector image to write")->required();
    import->add_option("--layer", args->options.layers, "read only this layer (repeatable; default: every layer)");
    import->add_option("--where", args->options.where, "read only features matching this attribute filter (OGR SQL)");
    import->add_option("--to", args->options.to, "convert into this system: EPSG:n or a PROJ string");
    import->add_option("--label-field", args->options.labelField, "label each feature with this field's text");
    import->add_option("--style-field", args->options.styleField, "take each feature's style string from this field");
    import->callback([&run, args] { run = [args] { return RunImport(args->options, args->output); }; });

    struct ExportArgs {
        std::string file;
        kiv_geo::TExportOptions options;
    };
    auto exportArgs = std::make_shared<ExportArgs>();
    auto* exportCmd = vector->add_subcommand("export", "Write a vector image as a GIS or CAD file to check it in any GIS");
    exportCmd->add_option("file", exportArgs->file, "vector image file")->required();
    exportCmd->add_option("-o,--output", exportArgs->options.output, "file (or shapefile folder) to write")->required();
    exportCmd->add_option("--format", exportArgs->options.format,
                          "GeoJSON, GPKG, DXF or \"ESRI Shapefile\" (default: by the output's extension)");
    exportCmd->callback([&run, exportArgs] { run = [exportArgs] { return RunExport(exportArgs->file, exportArgs->options); }; });
});

}  // namespace
