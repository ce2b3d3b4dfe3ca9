// Typed text from the user: every reader of lengths, angles and feet-and-inches text
// must take any text without reading outside it, and its answers must be consistent.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "platform/host/TextCodec.h"
#include "platform/kivutils/KivFormats.h"
#include "utils/units/UnitConvertEx.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::wstring wide = kiv_text::FromUtf8(std::string_view(reinterpret_cast<const char*>(data), size));
    const CKivStringT text(wide);

    for (int u = -1; u <= 11; ++u) {
        double value = 0;
        StringToLinearValEx(text, value, static_cast<kiv_df::UNITS>(u));
    }
    for (int a = 0; a <= 5; ++a) {
        double degrees = 0;
        ToDegreesHAExStr(text, degrees, static_cast<kiv_df::ANGLES>(a), true);
        ToDegreesVAExStr(text, degrees, static_cast<kiv_df::ANGLES>(a), true);
    }

    double degrees = 0;
    const wchar_t* end = nullptr;
    if (kiv_formats::StringToDegree(text, degrees, &end)) {
        if (end < text.GetString() || end > text.GetString() + text.GetLength()) std::abort();
    }
    CKivStringT feet = text;
    ConvertFeetInchesToNormalDoubleString(feet);
    CKivArray<CKivStringT> fields;
    kiv_formats::ParseDelimitersValues(text, L" '\"./", fields);
    kiv_formats::StringToInt(text);

    // A number that reads must print and read back to itself.
    double v = 0;
    if (kiv_formats::StringToDouble(text, v)) {
        double back = 0;
        if (!kiv_formats::StringToDouble(kiv_formats::DoubleToString(v, 17), back)) std::abort();
    }
    return 0;
}
