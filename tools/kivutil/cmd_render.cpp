// kivutil render: draws a vector image through its index and the Drawer into a window's
// surface, as a map view does, and saves the window as a PNG picture. With the geodata
// bridge built in, --from and --to draw an image of one coordinate system in another.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <chrono>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include <fmt/format.h>

#include "platform/host/TextCodec.h"
#include "platform/win32/PictureFiles.h"
#include "platform/win32/Win32.h"
#include "tools/kivutil/Command.h"
#include "tools/kivutil/VectorImageLoad.h"
#include "utils/render/Drawer.h"
#include "utils/render/SurfaceRenderer.h"
#include "utils/vector/Quadtree.h"
#include "utils/vector/TransformBBox.h"
#include "utils/vector/Viewport.h"
#ifdef KIVUTIL_WITH_GEODATA
#include "geodata/ProjCs.h"
#endif

namespace {

using kivutil::BadInput;

struct RenderOptions {
    std::string file;
    std::string output = "map.png";
    std::string size = "1024x768";
    std::string extent;
    std::string rotate = "0";
    std::string highlight;
    std::string from, to;  // the image's coordinate system and the picture's
};

// The picture's axes: the picture's coordinate system (the plane), then the view turned
// and centred in it.
class ViewCs : public Csx::CCs {
public:
    ViewCs(const Csx::CCs& plane, double rotationDegrees, double centreX, double centreY)
        : plane_(plane), view_(rotationDegrees, 1.0, centreX, centreY) {}
    TCoord3d toWorld(const TCoord3d& p) const override { return plane_.toWorld(view_.toWorld(p)); }
    TCoord3d fromWorld(const TCoord3d& p) const override { return view_.fromWorld(plane_.fromWorld(p)); }

private:
    const Csx::CCs& plane_;
    Csx::CAffineCs view_;
};

// The image's system and the picture's: both the plane of the image's own units unless
// --from and --to name two systems PROJ knows. Null, after the one line that says why,
// when they cannot be made.
struct SystemPair {
    std::unique_ptr<Csx::CCs> image, picture;
};
std::optional<SystemPair> MakeSystems(const RenderOptions& o) {
    SystemPair pair;
    if (o.from.empty() && o.to.empty()) {
        pair.image = std::make_unique<Csx::CIdentityCs>();
        pair.picture = std::make_unique<Csx::CIdentityCs>();
        return pair;
    }
    if (o.from.empty() || o.to.empty()) {
        BadInput("--from and --to go together: give the image's system and the picture's, e.g. --from EPSG:32633 "
                 "--to EPSG:3857");
        return std::nullopt;
    }
#ifdef KIVUTIL_WITH_GEODATA
    for (const auto& [definition, target, option] :
         {std::tuple{&o.from, &pair.image, "--from"}, std::tuple{&o.to, &pair.picture, "--to"}}) {
        std::string error;
        *target = Csx::CProjCs::create(*definition, error);
        if (!*target) {
            BadInput(std::string(option) + ": " + error + "; give an EPSG code such as EPSG:32633 or a PROJ string");
            return std::nullopt;
        }
    }
    return pair;
#else
    BadInput("--from and --to need the geodata bridge (GDAL and PROJ), which this kivutil was built without; "
             "draw the image in its own units without them");
    return std::nullopt;
#endif
}

// Numbers separated by `separator`, exactly `count` of them, each finite.
std::optional<std::vector<double>> ParseNumbers(const std::string& text, char separator, std::size_t count) {
    std::vector<double> values;
    std::size_t start = 0;
    while (values.size() < count) {
        const std::size_t end = std::min(text.find(separator, start), text.size());
        double value = 0.0;
        const char* first = text.data() + start;
        const char* last = text.data() + end;
        const auto result = std::from_chars(first, last, value);
        if (first == last || result.ec != std::errc() || result.ptr != last || !std::isfinite(value)) return std::nullopt;
        values.push_back(value);
        if (end == text.size()) break;
        start = end + 1;
    }
    if (values.size() != count || start > text.size()) return std::nullopt;
    return values;
}

LRESULT CALLBACK MapWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return DefWindowProcW(window, message, wParam, lParam);
}

int RunRender(const RenderOptions& o) {
    const auto size = ParseNumbers(o.size, 'x', 2);
    if (!size || (*size)[0] != std::floor((*size)[0]) || (*size)[1] != std::floor((*size)[1]) || (*size)[0] < 1 ||
        (*size)[1] < 1 || (*size)[0] > 8192 || (*size)[1] > 8192) {
        return BadInput("--size '" + o.size + "' is not WIDTHxHEIGHT in whole pixels from 1 to 8192, e.g. 1024x768");
    }
    std::optional<std::vector<double>> extent;
    if (!o.extent.empty()) {
        extent = ParseNumbers(o.extent, ',', 4);
        if (!extent || !((*extent)[0] < (*extent)[2]) || !((*extent)[1] < (*extent)[3])) {
            return BadInput("--extent '" + o.extent +
                            "' is not x0,y0,x1,y1 with x0 < x1 and y0 < y1 (the south-west and north-east corners)");
        }
    }
    const auto rotate = ParseNumbers(o.rotate, ',', 1);
    if (!rotate) return BadInput("--rotate '" + o.rotate + "' is not a number of degrees, e.g. 30 or -12.5");
    std::optional<std::vector<double>> highlight;
    if (!o.highlight.empty()) {
        highlight = ParseNumbers(o.highlight, ',', 2);
        if (!highlight) return BadInput("--highlight '" + o.highlight + "' is not x,y in the image's units, e.g. 5100,8070");
    }

    const auto systems = MakeSystems(o);
    if (!systems) return kivutil::kExitBadInput;
    const bool projected = !o.from.empty();

    const auto image = kivutil::LoadVectorImage(o.file);
    if (!image) return kivutil::kExitFailed;
    const auto start = std::chrono::steady_clock::now();
    std::shared_ptr<IRenderTree> tree = buildQuadtree(*image->blob);

    // The extent is in the picture's system; by default the image's whole box carried into it.
    const Csx::CCs& imageCs = *systems->image;
    BoundingBox shown = extent ? BoundingBox((*extent)[0], (*extent)[3], (*extent)[2], (*extent)[1])
                               : tree->getRoot()->getBBox();
    if (!extent && projected && shown.isValid()) shown = transformBBox(shown, imageCs, *systems->picture);
    if (!shown.isValid() || !std::isfinite(shown.getWidth()) || !std::isfinite(shown.getHeight())) {
        if (projected) {
            std::cerr << "kivutil: the image's extent has no place in " << o.to << "; check --from, or give --extent\n";
            return kivutil::kExitFailed;
        }
        shown = BoundingBox(0, 1, 1, 0);
    }
    if (!extent) shown = shown.inflated(0.03 * std::max(shown.getWidth(), shown.getHeight()));
    const double cx = (shown.left + shown.right) / 2, cy = (shown.bottom + shown.top) / 2;
    // The view's axes turn clockwise about the middle of what is shown, so that the map
    // turns counter-clockwise on the picture.
    const ViewCs viewCs(*systems->picture, -(*rotate)[0], cx, cy);
    const BoundingBox viewport(-shown.getWidth() / 2, shown.getHeight() / 2, shown.getWidth() / 2,
                               -shown.getHeight() / 2);

    const int width = static_cast<int>((*size)[0]), height = static_cast<int>((*size)[1]);
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = MapWindowProc;
    windowClass.lpszClassName = L"kivutil map";
    RegisterClassW(&windowClass);
    HWND window = CreateWindowExW(0, L"kivutil map", L"map", 0, 0, 0, width, height, nullptr, nullptr, nullptr, nullptr);
    kiv_render::Drawer drawer;
    const RECT plot{0, 0, width, height};
    if (window == nullptr || !drawer.Create(window, &plot) || drawer.getMapSurface() == nullptr) {
        std::cerr << "kivutil: cannot make a " << width << " x " << height << " drawing surface: not enough memory\n";
        return kivutil::kExitFailed;
    }
    HDC windowDc = GetDC(window);
    drawer.StartRendering(windowDc);
    kiv_render::SurfaceRenderer renderer(*drawer.getMapSurface(), viewCs, viewport);
    tree->render(0, imageCs, viewCs, &renderer);
    const TRenderStats stats = tree->getRenderStats();

    std::string picked;
    if (highlight) {
        TCoord2d at{(*highlight)[0], (*highlight)[1]};
        TPickResult result;
        const double tolerance = 10 * renderer.getPixelSize();
        if (tree->pick(at, imageCs, imageCs, tolerance, {eStakeablePoint, eStakeableLine}, result) &&
            highlightStakeableEntity(&renderer, imageCs, tree, result)) {
            const CKivStringT name = result.kind == TPickResult::ePoint
                                         ? generateVectorImagePointName(image->name.c_str(), result.index)
                                         : generateVectorImageLineName(image->name.c_str(), result.index);
            picked = fmt::format("highlighted {} nearest {:.3f}, {:.3f} ({:.3f} away)\n",
                                 kiv_text::ToUtf8(name.GetString()), (*highlight)[0], (*highlight)[1], result.distance);
        } else {
            picked = fmt::format("nothing to highlight within {:.3f} of {:.3f}, {:.3f}\n", tolerance, (*highlight)[0],
                                 (*highlight)[1]);
        }
    }
    drawer.EndRendering();
    ReleaseDC(window, windowDc);
    const double ms = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();

    const bool saved = kiv_host::SavePicture(window, kiv_text::FromUtf8(o.output).c_str(), kiv_host::PictureFormat::Png);
    DestroyWindow(window);
    if (!saved) {
        std::cerr << "kivutil: cannot write " << o.output << "; check that its folder exists and is writable\n";
        return kivutil::kExitFailed;
    }
    const BoundingBox inImage = getViewportBBox(&renderer, imageCs);
    std::cout << fmt::format("rendered {} into {}: {} x {} pixels, {:.4g} units a pixel, turned {} degrees\n",
                             image->label, o.output, width, height, renderer.getPixelSize(), (*rotate)[0]);
    std::cout << fmt::format("view: x {:.3f} .. {:.3f}, y {:.3f} .. {:.3f}\n", inImage.left, inImage.right,
                             inImage.bottom, inImage.top);
    if (projected)
        std::cout << fmt::format("drawn in {} from {}: x {:.3f} .. {:.3f}, y {:.3f} .. {:.3f}\n", o.to, o.from,
                                 shown.left, shown.right, shown.bottom, shown.top);
    std::cout << fmt::format("drew {} features, visited {} nodes ({} features looked at), {:.1f} ms\n",
                             stats.featuresDrawn, stats.nodesVisited, stats.featuresVisited, ms);
    std::cout << picked;
    return kivutil::kExitOk;
}

kivutil::Registration render(45, [](CLI::App& app, std::function<int()>& run) {
    auto options = std::make_shared<RenderOptions>();
    auto* sub = app.add_subcommand("render", "Draw a vector image through its index and the drawer into a PNG picture");
    sub->add_option("file", options->file, "vector image file (default: the built-in sample)");
    sub->add_option("-o,--output", options->output, "PNG file to write")->capture_default_str();
    sub->add_option("--size", options->size, "picture size WIDTHxHEIGHT in pixels")->capture_default_str();
    sub->add_option("--extent", options->extent, "area to show, x0,y0,x1,y1 (default: the whole image)");
    sub->add_option("--rotate", options->rotate, "turn the map this many degrees counter-clockwise")
        ->capture_default_str();
    sub->add_option("--highlight", options->highlight, "x,y: emphasise the point or polyline nearest this position");
    sub->add_option("--from", options->from, "the image's coordinate system, EPSG:n or a PROJ string (with --to)");
    sub->add_option("--to", options->to, "draw in this coordinate system, EPSG:n or a PROJ string (with --from)");
    sub->callback([&run, options] { run = [options] { return RunRender(*options); }; });
});

}  // namespace
