// kivutil length, angle, area and volume: values shown in display units as the
// application shows them, and typed text read back as the application reads it.
#include <charconv>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "platform/host/TextCodec.h"
#include "platform/kivmath/KivMath.h"
#include "platform/kivutils/KivFormats.h"
#include "tools/kivutil/Command.h"
#include "utils/units/UnitConvertEx.h"

namespace {

using kivutil::BadInput;

template <class E>
struct NamedUnit {
    const char* name;
    E unit;
};

const std::vector<NamedUnit<kiv_df::UNITS>> kLengthUnits = {
    {"m", kiv_df::eMeters},       {"USft", kiv_df::eUSFeet},  {"Ift", kiv_df::eIntlFeet},
    {"USfti", kiv_df::eUSFeetInches}, {"Ifti", kiv_df::eIntlFeetInches},
    {"USch", kiv_df::eUSChains},  {"Ich", kiv_df::eIntlChains}};
const std::vector<NamedUnit<kiv_df::ANGLES>> kAngleUnits = {
    {"rad", kiv_df::eRadians}, {"grd", kiv_df::eGrads}, {"mls", kiv_df::eMils}, {"dms", kiv_df::eDMS}};

template <class E>
std::string Accepted(const std::vector<NamedUnit<E>>& table, const char* extra = nullptr) {
    std::string s;
    for (const auto& u : table) s += (s.empty() ? "" : ", ") + std::string(u.name);
    if (extra) s += std::string(", ") + extra;
    return s;
}

template <class E>
std::optional<E> FindUnit(const std::vector<NamedUnit<E>>& table, const std::string& name) {
    for (const auto& u : table)
        if (name == u.name) return u.unit;
    return std::nullopt;
}

std::wstring Wide(const std::string& s) { return kiv_text::FromUtf8(s); }
std::string Narrow(const wchar_t* s) { return s ? kiv_text::ToUtf8(s) : std::string(); }

std::optional<double> ParseNumber(const std::string& text) {
    double v;
    if (!kiv_formats::StringToDouble(Wide(text).c_str(), v)) return std::nullopt;
    return v;
}

// The shortest text that reads back as the same double.
std::string Exact(double v) {
    char buffer[64];
    const auto r = std::to_chars(buffer, buffer + sizeof buffer, v);
    return std::string(buffer, r.ptr);
}

struct LengthOptions {
    std::string value, parse, unit = "m";
    int decimals = 3;
    bool adaptive = false;
};

int RunLength(const LengthOptions& o) {
    const auto unit = FindUnit(kLengthUnits, o.unit);
    if (!unit) return BadInput("unknown length unit \"" + o.unit + "\"; accepted: " + Accepted(kLengthUnits));
    if (!o.parse.empty()) {
        double v;
        if (!StringToLinearValEx(CKivStringT(Wide(o.parse)), v, *unit))
            return BadInput("cannot read \"" + o.parse +
                            "\" as a length; type a number with an optional suffix m, f, if, fti, ifti, ch or ich");
        std::cout << Exact(v) << " " << o.unit << "\n" << Exact(ToMetersEx(v, *unit)) << " m\n";
        return kivutil::kExitOk;
    }
    if (o.value.empty()) return BadInput("give a length in metres, or --parse with typed text");
    const auto metres = ParseNumber(o.value);
    if (!metres) return BadInput("\"" + o.value + "\" is not a number of metres (use '.' as decimal point)");
    if (o.decimals < 0 || o.decimals > 15) return BadInput("--decimals must be 0 to 15");
    kiv_df::UNITS shown = *unit;
    const CKivStringT text = FromMetersStrEx(*metres, static_cast<EKivDecimalDigits>(o.decimals), shown, o.adaptive);
    std::cout << Narrow(text) << " " << Narrow(DispDistUnitsStrShortEx(shown)) << "\n";
    return kivutil::kExitOk;
}

struct AngleOptions {
    std::string value, parse, unit = "dms";
    int precision = 3;
    bool left = false, level = false;
};

int RunAngle(const AngleOptions& o) {
    const auto unit = FindUnit(kAngleUnits, o.unit);
    if (!unit) return BadInput("unknown angle unit \"" + o.unit + "\"; accepted: " + Accepted(kAngleUnits));
    if (o.left && o.level) return BadInput("--left applies to horizontal angles and --level to vertical ones; give one");
    if (!o.parse.empty()) {
        double degrees;
        const CKivStringT text(Wide(o.parse));
        const bool ok = o.level ? ToDegreesVAExStr(text, degrees, *unit, true)
                                : ToDegreesHAExStr(text, degrees, *unit, o.left);
        if (!ok)
            return BadInput("cannot read \"" + o.parse + "\" as an angle in " + o.unit +
                            (*unit == kiv_df::eDMS ? " (e.g. 12°30'15.5\", 12 30 15.5, 12:30:15.5, N 12 30)" : ""));
        std::cout << Exact(degrees) << " deg\n";
        return kivutil::kExitOk;
    }
    if (o.value.empty()) return BadInput("give an angle in decimal degrees, or --parse with typed text");
    const auto degrees = ParseNumber(o.value);
    if (!degrees) return BadInput("\"" + o.value + "\" is not a number of degrees (use '.' as decimal point)");
    if (o.precision < 0 || o.precision > 9) return BadInput("--precision must be 0 to 9");
    CKivStringT out;
    if (*unit == kiv_df::eDMS) {
        // Sexagesimal text is written from decimal degrees, after the same turning or
        // level conversion the numeric units get.
        double d = *degrees;
        if (o.left) d = HR2HL(d);
        if (o.level) d = Zenith2Level(d);
        FromDispDegStr(out, d, *unit, o.precision);
    } else {
        const double shown = o.level ? FromDegreesVAEx(*degrees, *unit, true, o.precision)
                                     : FromDegreesHAEx(*degrees, *unit, o.left, o.precision);
        FromDispDegStr(out, shown, *unit, o.precision);
    }
    const std::string suffix = Narrow(DispAngleUnitsStrShortEx(*unit));
    std::cout << Narrow(out) << (suffix.empty() ? "" : " " + suffix) << "\n";
    return kivutil::kExitOk;
}

struct MeasureOptions {
    std::string value, unit = "m";
    int decimals = 3;
};

int RunArea(const MeasureOptions& o) {
    const auto sq = ParseNumber(o.value);
    if (!sq) return BadInput("\"" + o.value + "\" is not a number of square metres");
    if (o.decimals < 0 || o.decimals > 15) return BadInput("--decimals must be 0 to 15");
    double v;
    std::string text;
    if (o.unit == "acres") {
        v = ConvertAreaToAcres(*sq);
        text = "acres";
    } else if (const auto unit = FindUnit(kLengthUnits, o.unit)) {
        v = ConvertAreaValueToDispUnits(*sq, *unit);
        text = o.unit + "²";
    } else {
        return BadInput("unknown area unit \"" + o.unit + "\"; accepted: " + Accepted(kLengthUnits, "acres"));
    }
    std::cout << Narrow(kiv_formats::DoubleToString(v, o.decimals)) << " " << text << "\n";
    return kivutil::kExitOk;
}

int RunVolume(const MeasureOptions& o) {
    const auto cubic = ParseNumber(o.value);
    if (!cubic) return BadInput("\"" + o.value + "\" is not a number of cubic metres");
    if (o.decimals < 0 || o.decimals > 15) return BadInput("--decimals must be 0 to 15");
    auto units = kLengthUnits;
    units.push_back({"Iyds", kiv_df::eIntlYards});
    units.push_back({"USyds", kiv_df::eUSYards});
    const auto unit = FindUnit(units, o.unit);
    if (!unit) return BadInput("unknown volume unit \"" + o.unit + "\"; accepted: " + Accepted(units));
    const double v = ConvertVolumeValueToDispUnits(*cubic, *unit);
    std::cout << Narrow(kiv_formats::DoubleToString(v, o.decimals)) << " " << o.unit << "³\n";
    return kivutil::kExitOk;
}

kivutil::Registration length(10, [](CLI::App& app, std::function<int()>& run) {
    auto o = std::make_shared<LengthOptions>();
    auto* sub = app.add_subcommand("length", "Show a length in metres in a display unit, or read typed text");
    sub->add_option("metres", o->value, "length in metres");
    sub->add_option("--parse", o->parse, "typed text to read, e.g. 12,5m, 10f, 5'6\"3/8");
    sub->add_option("--unit", o->unit, "display unit: " + Accepted(kLengthUnits));
    sub->add_option("--decimals", o->decimals, "decimals (finest fraction for feet and inches)");
    sub->add_flag("--adaptive", o->adaptive, "switch to kilometres or miles for long lengths");
    sub->callback([&run, o] { run = [o] { return RunLength(*o); }; });
});

kivutil::Registration angle(11, [](CLI::App& app, std::function<int()>& run) {
    auto o = std::make_shared<AngleOptions>();
    auto* sub = app.add_subcommand("angle", "Show an angle in decimal degrees in a display unit, or read typed text");
    sub->add_option("degrees", o->value, "angle in decimal degrees (clockwise, or from the zenith)");
    sub->add_option("--parse", o->parse, "typed text to read");
    sub->add_option("--unit", o->unit, "display unit: " + Accepted(kAngleUnits));
    sub->add_option("--precision", o->precision, "decimals (of a second for dms)");
    sub->add_flag("--left", o->left, "horizontal angle turning left");
    sub->add_flag("--level", o->level, "vertical angle from the horizon");
    sub->callback([&run, o] { run = [o] { return RunAngle(*o); }; });
});

kivutil::Registration area(12, [](CLI::App& app, std::function<int()>& run) {
    auto o = std::make_shared<MeasureOptions>();
    auto* sub = app.add_subcommand("area", "Show an area in square metres in a display unit");
    sub->add_option("square-metres", o->value, "area in square metres")->required();
    sub->add_option("--unit", o->unit, "unit: " + Accepted(kLengthUnits, "acres"));
    sub->add_option("--decimals", o->decimals, "decimals");
    sub->callback([&run, o] { run = [o] { return RunArea(*o); }; });
});

kivutil::Registration volume(13, [](CLI::App& app, std::function<int()>& run) {
    auto o = std::make_shared<MeasureOptions>();
    auto* sub = app.add_subcommand("volume", "Show a volume in cubic metres in a display unit");
    sub->add_option("cubic-metres", o->value, "volume in cubic metres")->required();
    sub->add_option("--unit", o->unit, "unit: " + Accepted(kLengthUnits, "Iyds, USyds"));
    sub->add_option("--decimals", o->decimals, "decimals");
    sub->callback([&run, o] { run = [o] { return RunVolume(*o); }; });
});

}  // namespace
