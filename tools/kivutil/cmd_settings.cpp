// kivutil settings: show, read, write and delete entries of an XML settings file
// ("kiv_config"), addressed as group/sub-group/value.
#include <charconv>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "platform/host/TextCodec.h"
#include "platform/kivutils/FileFuncs.h"
#include "platform/kivutils/XmlParser.h"
#include "tools/kivutil/Command.h"
#include "utils/settings/XmlConfigStorage.h"

namespace {

struct SettingsOptions {
    std::string file;
    std::string path;
    std::string intValue, doubleValue, boolValue, stringValue;
    // An empty text is a value like any other, so --string is counted when given, not
    // when non-empty.
    bool stringGiven = false;
};

std::string Utf8(const CKivStringT& s) { return kiv_text::ToUtf8(s.view()); }
CKivStringT Wide(const std::string& s) { return CKivStringT(kiv_text::FromUtf8(s)); }

std::vector<CKivStringT> SplitPath(const std::string& path) {
    std::vector<CKivStringT> parts;
    size_t start = 0;
    while (start <= path.size()) {
        const size_t slash = path.find('/', start);
        const size_t end = slash == std::string::npos ? path.size() : slash;
        parts.push_back(Wide(path.substr(start, end - start)));
        if (slash == std::string::npos) break;
        start = slash + 1;
    }
    return parts;
}

bool ValidPath(const std::vector<CKivStringT>& parts, size_t minimum) {
    if (parts.size() < minimum) return false;
    for (const CKivStringT& p : parts)
        if (p.IsEmpty()) return false;
    return true;
}

// The group at parts[0..count) if every step exists in the file; null otherwise.
CConfigGroup* FindExistingGroup(CXmlConfigStorage& storage, const std::vector<CKivStringT>& parts, size_t count) {
    CConfigGroup* group = nullptr;
    for (size_t i = 0; i < count; ++i) {
        const unsigned n = group ? group->GetNumberOfGroups() : storage.GetNumberOfGroups();
        CConfigGroup* next = nullptr;
        for (unsigned k = 0; k < n && !next; ++k) {
            CConfigGroup& g = group ? group->GetGroup(k) : storage.GetGroup(k);
            if (g.GetName() == parts[i]) next = &g;
        }
        if (!next) return nullptr;
        group = next;
    }
    return group;
}

CConfigValue* FindExistingValue(CConfigGroup& group, const CKivStringT& name) {
    const unsigned n = group.GetNumberOfValues();
    for (unsigned k = 0; k < n; ++k)
        if (group.GetValue(k).GetName() == name && group.GetValue(k).HasValue()) return &group.GetValue(k);
    return nullptr;
}

const char* TypeName(CConfigValue::EValueType type) {
    switch (type) {
        case CConfigValue::String: return "str";
        case CConfigValue::Integer: return "int";
        case CConfigValue::Double: return "dbl";
        case CConfigValue::Boolean: return "bool";
        default: return "none";
    }
}

std::string ValueText(CConfigValue& v) {
    char buffer[64];
    switch (v.GetType()) {
        case CConfigValue::Integer: return std::to_string(v.GetAsInteger(0));
        case CConfigValue::Double: {
            auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, v.GetAsDouble(0.0));
            return ec == std::errc() ? std::string(buffer, end) : "#####";
        }
        case CConfigValue::Boolean: return v.GetAsBoolean(false) ? "true" : "false";
        default: return Utf8(v.GetAsString());
    }
}

bool FileReadable(const std::string& file) { return FileFuncs::IsFileExist(Wide(file)); }

void ShowGroup(CConfigGroup& group, int depth) {
    const std::string indent(static_cast<size_t>(depth) * 2, ' ');
    std::printf("%s%s/\n", indent.c_str(), Utf8(group.GetName()).c_str());
    for (unsigned i = 0; i < group.GetNumberOfValues(); ++i) {
        CConfigValue& v = group.GetValue(i);
        std::printf("%s  %s (%s) = %s\n", indent.c_str(), Utf8(v.GetName()).c_str(), TypeName(v.GetType()),
                    ValueText(v).c_str());
    }
    for (unsigned i = 0; i < group.GetNumberOfGroups(); ++i) ShowGroup(group.GetGroup(i), depth + 1);
}

int Show(const SettingsOptions& o) {
    if (!FileReadable(o.file)) return kivutil::BadInput("cannot read " + o.file + "; give an existing settings file");
    CXmlConfigStorage storage(Wide(o.file));
    for (unsigned i = 0; i < storage.GetNumberOfGroups(); ++i) ShowGroup(storage.GetGroup(i), 0);
    return kivutil::kExitOk;
}

int Get(const SettingsOptions& o) {
    const auto parts = SplitPath(o.path);
    if (!ValidPath(parts, 2)) return kivutil::BadInput("give the value as group/value or group/sub/value");
    if (!FileReadable(o.file)) return kivutil::BadInput("cannot read " + o.file + "; give an existing settings file");
    CXmlConfigStorage storage(Wide(o.file));
    CConfigGroup* group = FindExistingGroup(storage, parts, parts.size() - 1);
    CConfigValue* value = group ? FindExistingValue(*group, parts.back()) : nullptr;
    if (!value) {
        std::fprintf(stderr, "kivutil: %s holds no value %s\n", o.file.c_str(), o.path.c_str());
        return kivutil::kExitFailed;
    }
    std::printf("%s (%s)\n", ValueText(*value).c_str(), TypeName(value->GetType()));
    return kivutil::kExitOk;
}

int CannotWrite(const CXmlConfigStorage& storage, const std::string& file) {
    if (storage.IsFileRefused())
        std::fprintf(stderr, "kivutil: %s was not read (larger than %u MiB or unreadable) and is left as it is\n",
                     file.c_str(), static_cast<unsigned>(CXmlParser::kMaxFileBytes >> 20));
    else
        std::fprintf(stderr, "kivutil: cannot write %s; check that it and its folder are writable\n", file.c_str());
    return kivutil::kExitFailed;
}

template <class T>
bool ParseNumber(const std::string& text, T& value) {
    auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    return ec == std::errc() && end == text.data() + text.size() && !text.empty();
}

int Set(const SettingsOptions& o) {
    const auto parts = SplitPath(o.path);
    if (!ValidPath(parts, 2)) return kivutil::BadInput("give the value as group/value or group/sub/value");
    const int kinds = !o.intValue.empty() + !o.doubleValue.empty() + !o.boolValue.empty() + o.stringGiven;
    if (kinds != 1) return kivutil::BadInput("give exactly one of --int, --double, --bool, --string");
    int i = 0;
    double d = 0;
    bool b = false;
    if (!o.intValue.empty() && !ParseNumber(o.intValue, i))
        return kivutil::BadInput("--int takes a whole number from -2147483648 to 2147483647");
    if (!o.doubleValue.empty() && !ParseNumber(o.doubleValue, d))
        return kivutil::BadInput("--double takes a decimal number with '.' such as 0.05");
    if (!o.boolValue.empty()) {
        if (o.boolValue == "true" || o.boolValue == "1") b = true;
        else if (o.boolValue == "false" || o.boolValue == "0") b = false;
        else return kivutil::BadInput("--bool takes true, false, 1 or 0");
    }
    CXmlConfigStorage storage(Wide(o.file));
    CConfigGroup* group = &storage.GetGroup(parts[0]);
    for (size_t k = 1; k + 1 < parts.size(); ++k) group = &group->GetGroup(parts[k]);
    CConfigValue& value = group->GetValue(parts.back());
    if (!o.intValue.empty()) value.SetAsInteger(i);
    else if (!o.doubleValue.empty()) value.SetAsDouble(d);
    else if (!o.boolValue.empty()) value.SetAsBoolean(b);
    else value.SetAsString(Wide(o.stringValue));
    if (!storage.Flush()) return CannotWrite(storage, o.file);
    // The settings keep an empty text as no text at all; it reads back as empty.
    if (o.stringGiven && o.stringValue.empty()) std::printf("%s: empty text, stored as null\n", o.path.c_str());
    return kivutil::kExitOk;
}

int Delete(const SettingsOptions& o) {
    const auto parts = SplitPath(o.path);
    if (!ValidPath(parts, 1)) return kivutil::BadInput("give a group, group/sub or group/value to delete");
    if (!FileReadable(o.file)) return kivutil::BadInput("cannot read " + o.file + "; give an existing settings file");
    CXmlConfigStorage storage(Wide(o.file));
    CConfigGroup* parent = FindExistingGroup(storage, parts, parts.size() - 1);
    CConfigValue* value = parent ? FindExistingValue(*parent, parts.back()) : nullptr;
    CConfigGroup* group = FindExistingGroup(storage, parts, parts.size());
    if (value) value->Delete();
    else if (group) group->Delete();
    else {
        std::fprintf(stderr, "kivutil: %s holds no value or group %s\n", o.file.c_str(), o.path.c_str());
        return kivutil::kExitFailed;
    }
    if (!storage.Flush()) return CannotWrite(storage, o.file);
    return kivutil::kExitOk;
}

kivutil::Registration reg(30, [](CLI::App& app, std::function<int()>& run) {
    auto* settings = app.add_subcommand("settings", "Show, read, write or delete entries of an XML settings file");
    settings->require_subcommand(1);
    auto add = [&](const char* name, const char* help, bool withPath, int (*action)(const SettingsOptions&)) {
        auto opts = std::make_shared<SettingsOptions>();
        auto* sub = settings->add_subcommand(name, help);
        sub->add_option("file", opts->file, "settings file (.xml)")->required();
        if (withPath) sub->add_option("path", opts->path, "group/sub/value")->required();
        sub->callback([&run, opts, action] { run = [opts, action] { return action(*opts); }; });
        return std::make_pair(sub, opts);
    };
    add("show", "Print the tree with value types", false, Show);
    add("get", "Print one value and its type", true, Get);
    add("delete", "Delete a value or a group", true, Delete);
    auto [set, opts] = add("set", "Write one value (the file is made if missing)", true, Set);
    set->add_option("--int", opts->intValue, "a whole number");
    set->add_option("--double", opts->doubleValue, "a decimal number");
    set->add_option("--bool", opts->boolValue, "true or false");
    set->add_option_function<std::string>(
        "--string",
        [o = opts.get()](const std::string& text) {
            o->stringValue = text;
            o->stringGiven = true;
        },
        "a text (may be empty)");
});

}  // namespace
