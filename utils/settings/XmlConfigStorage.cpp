// Reading and writing the XML settings file. Values are read as the platform's parser
// gives them and written in one pass; the new file replaces the old one atomically.
#include "utils/settings/XmlConfigStorage.h"

#include <climits>
#include <memory>
#include <new>
#include <cstdlib>
#include <cwchar>

#include "platform/host/NeutralLocale.h"
#include "platform/host/TextCodec.h"
#include "platform/kivutils/FileFuncs.h"
#include "platform/kivutils/KivArray.h"
#include "platform/kivutils/KivLog.h"
#include "platform/kivutils/XmlParser.h"
#include "platform/mfc/File.h"
#include "utils/settings/AppStrPaths.h"
#include "utils/settings/SettingsFastReader.h"

namespace {

const wchar_t kRoot[] = L"kiv_config";
const wchar_t kGroup[] = L"group";
const wchar_t kValue[] = L"value";

bool IsEndTagOf(const CKivStringT& tag, const wchar_t* name) {
    return tag.GetLength() > 0 && tag[0] == L'/' && tag.Mid(1).Compare(name) == 0;
}

const wchar_t* TypeWord(CConfigValue::EValueType type) {
    switch (type) {
        case CConfigValue::String: return L"str";
        case CConfigValue::Integer: return L"int";
        case CConfigValue::Double: return L"dbl";
        case CConfigValue::Boolean: return L"bool";
        default: return nullptr;
    }
}

// Text of a stored value: "%d", "%lf" (six decimals), "1"/"0", or the text as it stands.
CKivStringT ValueText(CConfigValue& value) {
    CKivStringT text;
    switch (value.GetType()) {
        case CConfigValue::Integer: text.Format(L"%d", value.GetAsInteger(0)); break;
        case CConfigValue::Double: text.Format(L"%lf", value.GetAsDouble(0.0)); break;
        case CConfigValue::Boolean: text = value.GetAsBoolean(false) ? L"1" : L"0"; break;
        default: text = value.GetAsString(); break;
    }
    return text;
}

// As _wtol reads: leading blanks, a sign and decimal digits; anything else ends the
// number, and a number beyond the 32-bit range gives its nearest end.
int ReadLong(const CKivStringT& text) {
    const long v = std::wcstol(text.GetString(), nullptr, 10);
    return v > INT_MAX ? INT_MAX : v < INT_MIN ? INT_MIN : static_cast<int>(v);
}

// As wcstod reads: blanks, then the longest prefix that is a number (decimal or
// hexadecimal, with its exponent), "inf", "infinity" or "nan" with its optional
// parenthesis, in any case; text without a number reads 0, and a number beyond the range
// of a double reads as infinity of its sign. The call runs under the C locale, so that
// '.' is the decimal point whatever the process locale says.
double ReadDouble(const CKivStringT& text) {
    return kiv_text::NeutralWcstod(text.GetString());
}

}  // namespace

namespace kiv_settings_detail {

void CreateLoadedValue(CXmlConfigGroup& group, const CKivStringT& name, const CKivStringT& type,
                       const CKivStringT& content) {
    // Type words compare case-sensitively; an unknown one creates nothing.
    if (type.Compare(L"str") == 0) {
        group.AddLoadedValue(name.view(), content);
    } else if (type.Compare(L"int") == 0) {
        group.AddLoadedValue(name.view(), content.IsEmpty() ? 0 : ReadLong(content));
    } else if (type.Compare(L"dbl") == 0) {
        group.AddLoadedValue(name.view(), content.IsEmpty() ? 0.0 : ReadDouble(content));
    } else if (type.Compare(L"bool") == 0) {
        // Deliberate: only a non-zero number reads as true; "true" written by hand is false.
        group.AddLoadedValue(name.view(), !content.IsEmpty() && ReadLong(content) != 0);
    }
}

}  // namespace kiv_settings_detail

// ---- CXmlConfigValue ------------------------------------------------------------------------

CXmlConfigValue::CXmlConfigValue(CXmlConfigGroup& parent, const CKivStringT& name) : CConfigValue(parent, name) {}
CXmlConfigValue::CXmlConfigValue(CXmlConfigGroup& parent, const CKivStringT& name, const CKivStringT& value)
    : CConfigValue(parent, name) {
    SetValue(value);
}
CXmlConfigValue::CXmlConfigValue(CXmlConfigGroup& parent, const CKivStringT& name, int value)
    : CConfigValue(parent, name) {
    SetValue(value);
}
CXmlConfigValue::CXmlConfigValue(CXmlConfigGroup& parent, const CKivStringT& name, double value)
    : CConfigValue(parent, name) {
    SetValue(value);
}
CXmlConfigValue::CXmlConfigValue(CXmlConfigGroup& parent, const CKivStringT& name, bool value)
    : CConfigValue(parent, name) {
    SetValue(value);
}
CXmlConfigValue::~CXmlConfigValue() = default;

// The whole file is in memory, so the per-item operations have nothing to do.
bool CXmlConfigValue::DoDelete() { return true; }
bool CXmlConfigValue::DoLoad() { return true; }
void CXmlConfigValue::DoSave(bool) {}
void CXmlConfigValue::DoSave(double) {}
void CXmlConfigValue::DoSave(int) {}
void CXmlConfigValue::DoSave(const CKivStringT&) {}
bool CXmlConfigValue::DoLoad(bool&) { return true; }
bool CXmlConfigValue::DoLoad(double&) { return true; }
bool CXmlConfigValue::DoLoad(int&) { return true; }
bool CXmlConfigValue::DoLoad(CKivStringT&) { return true; }

// ---- CXmlConfigGroup ------------------------------------------------------------------------

CXmlConfigGroup::CXmlConfigGroup(CConfigGroup& parent, const CKivStringT& name) : CConfigGroup(parent, name) {}
CXmlConfigGroup::~CXmlConfigGroup() = default;

bool CXmlConfigGroup::ShouldAlwaysLoadAllValues() { return true; }
bool CXmlConfigGroup::ShouldAlwaysLoadAllGroups() { return true; }
CConfigValue* CXmlConfigGroup::CreateValue(const CKivStringT& name) { return new CXmlConfigValue(*this, name); }
CConfigGroup* CXmlConfigGroup::CreateGroup(const CKivStringT& name) { return new CXmlConfigGroup(*this, name); }
CConfigValue* CXmlConfigGroup::FindValue(const CKivStringT&) { return nullptr; }
CConfigGroup* CXmlConfigGroup::FindGroup(const CKivStringT&) { return nullptr; }
void CXmlConfigGroup::DoDelete() {}
void CXmlConfigGroup::LoadAllValues() {}
void CXmlConfigGroup::LoadAllGroups() {}
void CXmlConfigGroup::DoSave() {}

int CXmlConfigGroup::Depth() {
    int depth = 0;
    for (CConfigGroup* g = this; g->GetParent() != nullptr; g = g->GetParent()) ++depth;
    return depth;
}

void CXmlConfigGroup::Load(CXmlParser& parser) {
    CKivStringT tag, attributes, content;
    CKivArray<CKivStringT> unused;
    while (parser.ReadToken(tag, attributes, content)) {
        // Deliberate: the end tag of a skipped, nameless group ends this group early.
        if (IsEndTagOf(tag, kGroup)) break;
        if (tag.Compare(kGroup) == 0) {
            const CKivStringT name = CXmlParser::ReadAttrib(attributes, L"name");
            // A group too deep is skipped as a nameless one is, so recursion stays bounded.
            if (!name.IsEmpty() && Depth() < kiv_settings_detail::kMaxGroupDepth)
                (new CXmlConfigGroup(*this, name))->Load(parser);
        } else if (tag.Compare(kValue) == 0) {
            const CKivStringT name = CXmlParser::ReadAttrib(attributes, L"name");
            const CKivStringT type = CXmlParser::ReadAttrib(attributes, L"type");
            if (name.IsEmpty() || type.IsEmpty()) continue;
            unused.RemoveAll();
            if (CXmlParser::ParseValuesInBrackets(content, unused, L';'))
                kiv_settings_detail::CreateLoadedValue(*this, name, type, content);
        }
    }
    LoadFinished();
}

// ---- CXmlConfigStorage ----------------------------------------------------------------------

CXmlConfigStorage::CXmlConfigStorage(const CKivStringT& path) : m_path(path) {}

CXmlConfigStorage::CXmlConfigStorage(const CXmlConfigStorage& other) : CConfigStorage(), m_path(other.m_path) {}

CXmlConfigStorage& CXmlConfigStorage::operator=(const CXmlConfigStorage& other) {
    if (this == &other) return *this;
    Release();
    CConfigStorage::operator=(other);
    m_path = other.m_path;
    m_fileRefused = other.m_fileRefused;  // it goes with the shared tree
    return *this;
}

CXmlConfigStorage::~CXmlConfigStorage() { Release(); }

void CXmlConfigStorage::OnValueAdded(CConfigValue&) { m_modified = true; }
void CXmlConfigStorage::OnValueChanged(CConfigValue&) { m_modified = true; }
void CXmlConfigStorage::OnGroupAdded(CConfigGroup&) { m_modified = true; }
bool CXmlConfigStorage::ShouldAlwaysLoadAllGroups() { return true; }

CConfigGroup* CXmlConfigStorage::CreateGroup(CConfigGroup& parent, const CKivStringT& name) {
    return new CXmlConfigGroup(parent, name);
}

CConfigGroup* CXmlConfigStorage::FindGroup(CConfigGroup&, const CKivStringT&) { return nullptr; }

CXmlConfigStorage CXmlConfigStorage::GetStakeoutSettings() {
    return CXmlConfigStorage(AppStrPaths::GetUserSettingsPath() + L"\\StakeoutSettings.xml");
}

namespace {

// The whole file, or false when it cannot be read or is larger than the tokenizer takes.
bool ReadWholeFile(const CKivStringT& path, std::unique_ptr<char[]>& bytes, DWORD& length) {
    CFile file;
    if (!file.Open(path, CFile::modeRead | CFile::shareDenyNone | CFile::typeBinary)) return false;
    length = file.GetLength();
    if (length > CXmlParser::kMaxFileBytes) return false;
    bytes.reset(new (std::nothrow) char[length ? length : 1]);
    return bytes && file.Read(bytes.get(), length) == length;
}

}  // namespace

void CXmlConfigStorage::LoadAllGroups(CConfigGroup& root) {
    // An ordinary file (the shape Save writes) is read in one quick pass; anything else
    // goes through the platform's tokenizer, which reads it as the format has it.
    std::unique_ptr<char[]> bytes;
    DWORD length = 0;
    if (ReadWholeFile(m_path, bytes, length) &&
        kiv_settings_detail::ReadOrdinarySettings(std::string_view(bytes.get(), length), root))
        return;
    CXmlParser* parser = nullptr;
    // A missing or unreadable file leaves the tree empty; a write makes a new file.
    if (CXmlParser::Initialize(m_path, parser) != 0 || parser == nullptr) {
        // The size cap is ours: the reader holds the whole text in memory, as wide
        // characters, so it stays. But a file that exists and was not read is somebody's
        // settings, and the empty tree must never be written over it.
        if (FileFuncs::IsFileExist(m_path)) {
            m_fileRefused = true;
            LOGMESSAGE(1, L"Settings file %s is not read (larger than %u MiB or unreadable); it will not be written",
                       m_path.GetString(), static_cast<unsigned>(CXmlParser::kMaxFileBytes >> 20));
        }
        return;
    }
    kiv_settings_detail::ReadSettingsTokens(*parser, root);
    CXmlParser::Destroy(parser);
}

void kiv_settings_detail::ReadSettingsTokens(CXmlParser& parser, CConfigGroup& root) {
    CKivStringT tag, attributes, content;
    while (parser.ReadToken(tag, attributes, content))
        if (tag.Compare(kRoot) == 0) CXmlConfigStorage::ParseAllGroups(root, parser);
}

void CXmlConfigStorage::ParseAllGroups(CConfigGroup& parent, CXmlParser& parser) {
    CKivStringT tag, attributes, content;
    while (parser.ReadToken(tag, attributes, content)) {
        if (IsEndTagOf(tag, kRoot)) return;
        if (tag.Compare(kGroup) != 0) continue;
        const CKivStringT name = CXmlParser::ReadAttrib(attributes, L"name");
        if (!name.IsEmpty()) (new CXmlConfigGroup(parent, name))->Load(parser);
    }
}

void CXmlConfigStorage::SaveGroup(std::wstring& out, CConfigGroup& group) {
    const int openFlags = CXmlParserBase::TagTypeFlag(2);
    out += CXmlParserBase::OpenTag(kGroup, openFlags).str();
    out += CXmlParserBase::FormAttrib(L"name", group.GetName(), false).str();
    out += L">\r\n";
    const unsigned values = group.GetNumberOfValues();
    for (unsigned i = 0; i < values; ++i) {
        CConfigValue& value = group.GetValue(i);
        // A value created by a read and never set has no type and is not written.
        const wchar_t* word = TypeWord(value.GetType());
        if (word == nullptr) continue;
        out += CXmlParserBase::OpenTag(kValue, openFlags).str();
        out += CXmlParserBase::FormAttrib(L"name", CKivStringT(value.NameView()), false).str();
        out += CXmlParserBase::FormAttrib(L"type", word, false).str();
        out += L">";
        // Deliberate: the text goes out as it stands; no escaping is added here.
        out += ValueText(value).str();
        out += CXmlParserBase::CloseTag(kValue, CXmlParserBase::TagTypeFlag(3)).str();
    }
    const unsigned groups = group.GetNumberOfGroups();
    for (unsigned i = 0; i < groups; ++i) SaveGroup(out, group.GetGroup(i));
    out += CXmlParserBase::CloseTag(kGroup, 2).str();
}

bool CXmlConfigStorage::Save() {
    if (m_fileRefused) {
        LOGMESSAGE(1, L"Settings file %s was not read, so the changes are not written over it", m_path.GetString());
        m_modified = false;  // they never can be; the last release need not try again
        return false;
    }
    std::wstring out = L"<?xml" + CXmlParserBase::FormAttrib(L"version", L"1.0", false).str() + L"?>\r\n";
    out += CXmlParserBase::OpenTag(kRoot, 2).str();
    const unsigned groups = GetNumberOfGroups();
    for (unsigned i = 0; i < groups; ++i) SaveGroup(out, GetGroup(i));
    out += CXmlParserBase::CloseTag(kRoot, 2).str();
    // The family's XML files are UTF-8 without a mark, as kiv_formats::WriteString
    // writes them. The whole text replaces the file atomically: a crash or a full disk
    // leaves the old file whole, and a read-only file or medium leaves it untouched.
    return FileFuncs::WriteWholeFile(m_path, kiv_text::ToUtf8(out));
}

bool CXmlConfigStorage::Flush() {
    if (!Save()) return false;
    m_modified = false;
    return true;
}

void CXmlConfigStorage::Release() {
    if (m_modified) {
        if (GetNumberOfReferences() == 1) {
            Save();
        } else if (auto* other = dynamic_cast<CXmlConfigStorage*>(AnotherHolderOfTree())) {
            // The tree outlives this handle: whoever releases it last still owes the file.
            other->m_modified = true;
        }
    }
    m_modified = false;
}
