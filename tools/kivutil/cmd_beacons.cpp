// kivutil beacons: the beacons of a beacon list file with their parsed position,
// frequency and rate; optionally only the operational ones, nearest first.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "platform/host/TextCodec.h"
#include "platform/kivutils/KivFormats.h"
#include "tools/kivutil/Command.h"
#include "utils/devices/Beacons.h"

namespace {

struct BeaconOptions {
    std::string file, near;
    bool operational = false;
};

struct Row {
    TBeacon* beacon;
    bool located;
    double lat, lon, km;
};

// Great-circle distance on a sphere of the mean earth radius: plenty to order beacons.
double DistanceKm(double lat1, double lon1, double lat2, double lon2) {
    const double r = 3.14159265358979323846 / 180.0;
    const double a = std::sin((lat2 - lat1) * r / 2), b = std::sin((lon2 - lon1) * r / 2);
    const double h = a * a + std::cos(lat1 * r) * std::cos(lat2 * r) * b * b;
    return 2 * 6371.0 * std::asin(std::min(1.0, std::sqrt(h)));
}

bool ParseNear(const std::string& text, double& lat, double& lon) {
    const size_t comma = text.find(',');
    if (comma == std::string::npos) return false;
    const std::wstring a = kiv_text::FromUtf8(text.substr(0, comma)), b = kiv_text::FromUtf8(text.substr(comma + 1));
    return kiv_formats::StringToDouble(a.c_str(), lat) && kiv_formats::StringToDouble(b.c_str(), lon) && std::fabs(lat) <= 90 &&
           std::fabs(lon) <= 180;
}

std::string Utf8(const CKivStringT& s) { return kiv_text::ToUtf8(s.view()); }

int RunBeacons(const BeaconOptions& o) {
    if (o.file.empty()) return kivutil::BadInput("beacons needs the beacon list file, e.g. kivutil beacons list.txt --near 45.4,-75.7");
    double nearLat = 0, nearLon = 0;
    const bool sorted = !o.near.empty();
    if (sorted && !ParseNear(o.near, nearLat, nearLon))
        return kivutil::BadInput("--near takes <lat>,<lon> in decimal degrees, south and west negative, e.g. --near 45.4,-75.7");
    std::error_code ec;
    if (!std::filesystem::is_regular_file(o.file, ec)) {
        std::fprintf(stderr, "kivutil: cannot read the beacon list %s; check the file name\n", o.file.c_str());
        return kivutil::kExitFailed;
    }
    CKivArray<TBeacon*> beacons;
    LoadBeaconsFile(CKivStringT(kiv_text::FromUtf8(o.file)), beacons);
    std::vector<Row> rows;
    for (TBeacon* b : beacons) {
        if (o.operational && !b->GetStatus()) continue;
        Row row{b, false, 0, 0, 0};
        row.located = b->GetPosition(row.lat, row.lon);
        if (row.located && sorted) row.km = DistanceKm(nearLat, nearLon, row.lat, row.lon);
        rows.push_back(row);
    }
    if (sorted)  // beacons without a readable position go last
        std::stable_sort(rows.begin(), rows.end(), [](const Row& a, const Row& b) {
            return a.located != b.located ? a.located : a.km < b.km;
        });
    std::printf("%-24s %-14s %-16s %10s %11s %10s %8s%s\n", "name", "country", "status", "latitude", "longitude", "frequency",
                "rate", sorted ? "  distance" : "");
    for (const Row& r : rows) {
        TBeacon& b = *r.beacon;
        std::string lat = "-", lon = "-", km;
        if (r.located) {
            lat = Utf8(kiv_formats::DoubleToString(r.lat, 5));
            lon = Utf8(kiv_formats::DoubleToString(r.lon, 5));
            if (sorted) km = "  " + Utf8(kiv_formats::DoubleToString(r.km, 1)) + " km";
        }
        const std::string freq = b.transmissionFrequency.IsEmpty() ? "-" : Utf8(kiv_formats::DoubleToString(b.GetFrequency(), 1));
        const std::string rate = b.transmissionRate.IsEmpty() ? "-" : Utf8(kiv_formats::DoubleToString(b.GetBaudRate(), 0));
        std::printf("%-24s %-14s %-16s %10s %11s %10s %8s%s\n", Utf8(b.name).c_str(), Utf8(b.country).c_str(),
                    Utf8(b.status).c_str(), lat.c_str(), lon.c_str(), freq.c_str(), rate.c_str(), km.c_str());
    }
    std::printf("%zu beacon%s of %d in the file\n", rows.size(), rows.size() == 1 ? "" : "s", beacons.GetSize());
    DeleteBeacons(beacons);
    return kivutil::kExitOk;
}

kivutil::Registration reg(51, [](CLI::App& app, std::function<int()>& run) {
    auto o = std::make_shared<BeaconOptions>();
    auto* sub = app.add_subcommand("beacons", "List the beacons of a beacon list file with position, frequency and rate");
    sub->add_option("file", o->file, "beacon list file (ANSI, UTF-8 or UTF-16)");
    sub->add_flag("--operational", o->operational, "only beacons whose status says Operational");
    sub->add_option("--near", o->near, "<lat>,<lon>: sort by distance from this point");
    sub->callback([&run, o] { run = [o] { return RunBeacons(*o); }; });
});

}  // namespace
