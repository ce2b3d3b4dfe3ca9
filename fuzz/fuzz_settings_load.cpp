// Feeds arbitrary bytes to the XML settings loader, both ways in: the tokenizer must read
// anything without fault, and whenever the quick reader accepts a text, its tree must
// equal the tokenizer's.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "platform/host/TextCodec.h"
#include "platform/kivutils/XmlParser.h"
#include "utils/settings/SettingsFastReader.h"
#include "utils/settings/XmlConfigStorage.h"

namespace {

CConfigGroup& RootOf(CXmlConfigStorage& storage) {
    CConfigGroup& probe = storage.GetGroup(L"probe");
    CConfigGroup& root = *probe.GetParent();
    probe.Delete();
    return root;
}

bool SameTree(CConfigGroup& a, CConfigGroup& b) {
    if (a.GetName() != b.GetName() || a.GetNumberOfValues() != b.GetNumberOfValues() ||
        a.GetNumberOfGroups() != b.GetNumberOfGroups())
        return false;
    for (unsigned i = 0; i < a.GetNumberOfValues(); ++i) {
        CConfigValue& x = a.GetValue(i);
        CConfigValue& y = b.GetValue(i);
        if (x.GetName() != y.GetName() || x.GetType() != y.GetType()) return false;
        const bool same = x.GetType() == CConfigValue::String    ? x.GetAsString() == y.GetAsString()
                          : x.GetType() == CConfigValue::Integer ? x.GetAsInteger(0) == y.GetAsInteger(0)
                          : x.GetType() == CConfigValue::Boolean ? x.GetAsBoolean(false) == y.GetAsBoolean(false)
                                                                  : x.IsEqualTo(y.GetAsDouble(0.0)) ||
                                                                        x.GetAsDouble(0.0) != x.GetAsDouble(0.0);
        if (!same) return false;
    }
    for (unsigned i = 0; i < a.GetNumberOfGroups(); ++i)
        if (!SameTree(a.GetGroup(i), b.GetGroup(i))) return false;
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    CXmlConfigStorage quick(L"/nonexistent/quick.xml");
    CXmlConfigStorage tokens(L"/nonexistent/tokens.xml");
    CConfigGroup& quickRoot = RootOf(quick);
    CConfigGroup& tokenRoot = RootOf(tokens);
    CXmlParser parser(kiv_text::DecodeText(bytes));
    kiv_settings_detail::ReadSettingsTokens(parser, tokenRoot);
    if (kiv_settings_detail::ReadOrdinarySettings(bytes, quickRoot) && !SameTree(quickRoot, tokenRoot)) __builtin_trap();
    return 0;
}
