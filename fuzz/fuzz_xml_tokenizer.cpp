// Fuzzes the XML tokenizer and attribute reader on any bytes, and checks that any text
// formed as an attribute reads back unchanged.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "platform/host/TextCodec.h"
#include "platform/kivutils/XmlParser.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::wstring text = kiv_text::DecodeText(std::string_view(reinterpret_cast<const char*>(data), size));
    CXmlParser parser(text);
    CKivStringT tag, attributes, content;
    CKivArray<CKivStringT> list;
    size_t tokens = 0;
    while (parser.ReadToken(tag, attributes, content)) {
        if (++tokens > text.size() + 1) __builtin_trap();  // every token consumes input
        CXmlParser::ReadAttrib(attributes, L"name");
        CXmlParser::ReadAttrib(attributes, L"type");
        if (!CXmlParser::ParseValuesInBrackets(content, list, L';')) __builtin_trap();
    }
    const std::wstring value(text.c_str());  // FormAttrib takes a C string
    const CKivStringT formed = CXmlParserBase::FormAttrib(L"name", value.c_str(), false);
    if (CXmlParser::ReadAttrib(formed, L"name") != value.c_str()) __builtin_trap();
    return 0;
}
