// kivutil laser: frame a transmitter or sensor command, check a reply, convert a
// measured height with the instruments' offsets, show the transmitter data file.
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "platform/host/Host.h"
#include "platform/host/TextCodec.h"
#include "platform/kivutils/KivFormats.h"
#include "platform/win32/Win32.h"
#include "tools/kivutil/Command.h"
#include "utils/devices/LumaroParams.h"
#include "utils/settings/AppStrPaths.h"

namespace {

using namespace LumaroParams;

struct LaserOptions {
    bool sensor = false;
    bool slant = false;
    std::string text, kind;
};

bool IsPrintableAscii(const std::string& text) {
    for (unsigned char c : text)
        if (c < 0x20 || c > 0x7E) return false;
    return true;
}

// CR and LF made visible, so that the line end of a frame can be seen and copied.
std::string Shown(const std::string& text) {
    std::string out;
    for (char c : text) {
        if (c == '\r') out += "<CR>";
        else if (c == '\n') out += "<LF>";
        else out.push_back(c);
    }
    return out;
}

int RunFrame(const LaserOptions& o) {
    if (o.text.empty()) return kivutil::BadInput("laser frame needs the command text, e.g. kivutil laser frame \"P,1\"");
    if (!IsPrintableAscii(o.text))
        return kivutil::BadInput("the command must be printable ASCII (no line breaks); the frame adds CR LF itself");
    std::vector<char> out(o.text.size() + 13);
    const std::string frame = o.sensor ? MakeSensorCommand(o.text.c_str(), out.data()) : MakeTransmitterCommand(o.text.c_str(), out.data());
    std::printf("%s\n", Shown(frame).c_str());
    return kivutil::kExitOk;
}

const char* ResultName(EParseError e) {
    switch (e) {
    case ParseOk: return "ParseOk";
    case ParseBadFormat: return "ParseBadFormat (no prefix, an unexpected reply type or a channel digit outside 1-4)";
    case ParseTiltOffsetOver: return "ParseTiltOffsetOver (the device reports its tilt offset over)";
    case ParseDeviceError: return "ParseDeviceError (the reply begins with ER)";
    case ParseChecksumError: return "ParseChecksumError (the two digits after @ do not match)";
    }
    return "unknown";
}

// A reply as typed may carry its line end, written as it was shown or as CR LF itself.
std::string Unshown(std::string text) {
    for (const char* mark : {"<CR>", "<LF>", "\\r", "\\n"}) {
        for (size_t p; (p = text.find(mark)) != std::string::npos;) text.erase(p, std::strlen(mark));
    }
    while (!text.empty() && (text.back() == '\r' || text.back() == '\n')) text.pop_back();
    return text;
}

int RunParse(const LaserOptions& o) {
    if (o.text.empty())
        return kivutil::BadInput("laser parse needs a kind and the reply, e.g. kivutil laser parse data \"%NSP>T%Z,1,2,abc@7C\"");
    if (o.kind != "data" && o.kind != "version")
        return kivutil::BadInput("'" + o.kind + "' is not a reply kind; use data or version");
    std::string reply = Unshown(o.text);
    if (!IsPrintableAscii(reply)) return kivutil::BadInput("the reply must be printable ASCII, as the device sends it");
    std::vector<char> buffer(reply.begin(), reply.end());
    buffer.push_back('\0');
    EParseError result;
    std::string fields;
    if (o.kind == "version") {
        CKivStringT version;
        result = o.sensor ? ParseSensorVersion(buffer.data(), version) : ParseTransmitterVersion(buffer.data(), version);
        if (result == ParseOk) fields = "version \"" + kiv_text::ToUtf8(version.view()) + "\"";
    } else if (o.sensor) {
        result = ParseSensorData(buffer.data());
    } else {
        int channel = 0, slot = 0;
        std::vector<char> data(buffer.size() + 1);
        result = ParseTransmitterData(buffer.data(), &channel, &slot, data.data());
        if (result == ParseOk)
            fields = "channel " + std::to_string(channel + 1) + ", slot " + std::to_string(slot + 1) + ", data \"" +
                     std::string(data.data()) + "\"";
    }
    std::printf("%s\n", ResultName(result));
    if (!fields.empty()) std::printf("%s\n", fields.c_str());
    return result == ParseOk ? kivutil::kExitOk : kivutil::kExitFailed;
}

std::string Metres(double v) { return v != v ? "#####" : kiv_text::ToUtf8(kiv_formats::DoubleToString(v, 4).view()) + " m"; }

int RunHeights(const LaserOptions& o) {
    double h = 0;
    if (o.text.empty()) return kivutil::BadInput("laser heights needs the measured height in metres, e.g. kivutil laser heights 1.5");
    if (!kiv_formats::StringToDouble(kiv_text::FromUtf8(o.text).c_str(), h))
        return kivutil::BadInput("'" + o.text + "' is not a height; give metres as a decimal number, e.g. 1.5");
    std::printf("measured height        %s (%s)\n", Metres(h).c_str(), o.slant ? "slant" : "vertical");
    std::printf("sensor lens height     %s\n", Metres(ComputeSensorLenseHeight(h)).c_str());
    const double laser = ComputeTransmitterLaserHeight(h, !o.slant);
    std::printf("transmitter laser      %s%s\n", Metres(laser).c_str(),
                laser != laser ? "  (a slant height must be at least the 0.083 m radius)" : "");
    std::printf("transmitter mark       %s\n", Metres(ComputeTransmitterMarkHeight(h)).c_str());
    std::printf("transmitter base       %s\n", Metres(ComputeTransmitterBaseHeight(h)).c_str());
    return kivutil::kExitOk;
}

std::string OrDash(const CKivStringT& s) { return s.IsEmpty() ? "-" : kiv_text::ToUtf8(s.view()); }

int RunShow() {
    const CKivStringT path = AppStrPaths::GetSessionSettingsPath() + L"\\LumaroData.ini";
    TransInfo info;
    if (!LoadTransmitterInfo(info)) {
        const bool exists = GetFileAttributesW(path) != INVALID_FILE_ATTRIBUTES;
        std::fprintf(stderr, "kivutil: %s %s (%s)\n",
                     exists ? "the transmitter data file is unreadable or of an unknown version (1.00 and 0.1-0.5 are read):"
                            : "no transmitter data file yet; the laser set-up writes it at",
                     kiv_text::ToUtf8(path.view()).c_str(), kiv_host::ToHostPath(path.view()).c_str());
        return kivutil::kExitFailed;
    }
    std::printf("%s\n", kiv_host::ToHostPath(path.view()).c_str());
    for (int i = 0; i < 4; ++i) {
        const TransData& d = info.data[i];
        const TransPos& p = info.pos[i];
        std::printf("channel %d: ", i + 1);
        if (!d.valid) {
            std::printf("no transmitter\n");
            continue;
        }
        std::printf("serial %s\n", kiv_text::ToUtf8(d.serialNumber.view()).c_str());
        for (int b = 0; b < 4; ++b) std::printf("  data block %d  %s\n", b + 1, kiv_text::ToUtf8(d.dataBlocks[b].view()).c_str());
        if (p.fixedHeightCode != 0) std::printf("  height        fixed mount %d, %s\n", p.fixedHeightCode, Metres(p.transmitterHeight).c_str());
        else if (p.transmitterHeight != 0.0)
            std::printf("  height        %s %s\n", Metres(p.transmitterHeight).c_str(), p.vertical ? "vertical" : "slant");
        else std::printf("  height        none stored\n");
        std::printf("  name          %s\n", OrDash(p.transmitterName).c_str());
        std::printf("  known point   %s, offset %s\n", OrDash(p.knownPointName).c_str(), Metres(p.knownOffset).c_str());
    }
    return kivutil::kExitOk;
}

kivutil::Registration reg(50, [](CLI::App& app, std::function<int()>& run) {
    auto* laser = app.add_subcommand("laser", "Laser transmitter and sensor: frame commands, check replies, heights, data file");
    laser->callback([&run, laser] {
        if (laser->get_subcommands().empty())
            run = [] { return kivutil::BadInput("laser needs one of: frame, parse, heights, show (see kivutil laser --help)"); };
    });
    auto o = std::make_shared<LaserOptions>();

    auto* frame = laser->add_subcommand("frame", "Frame a command with its checksum (CR LF shown as <CR><LF>)");
    frame->add_flag("--sensor", o->sensor, "frame for the sensor instead of the transmitter");
    frame->add_option("command", o->text, "command text, e.g. \"P,1\"");
    frame->callback([&run, o] { run = [o] { return RunFrame(*o); }; });

    auto* parse = laser->add_subcommand("parse", "Check a reply and show its fields; exit 1 when it is refused");
    parse->add_flag("--sensor", o->sensor, "a reply of the sensor instead of the transmitter");
    parse->add_option("kind", o->kind, "data or version");
    parse->add_option("reply", o->text, "reply text as received, e.g. \"%NSP>T%Z,1,2,abc@7C\"");
    parse->callback([&run, o] { run = [o] { return RunParse(*o); }; });

    auto* heights = laser->add_subcommand("heights", "Heights of lens, laser, mark and base from a measured height");
    heights->add_option("height", o->text, "measured height in metres");
    heights->add_flag("--slant", o->slant, "the height was measured on the slant to the housing's edge");
    heights->callback([&run, o] { run = [o] { return RunHeights(*o); }; });

    auto* show = laser->add_subcommand("show", "Show the transmitter data file of the session settings, per channel");
    show->callback([&run] { run = [] { return RunShow(); }; });
});

}  // namespace
