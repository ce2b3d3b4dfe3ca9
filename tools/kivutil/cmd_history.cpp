// kivutil history: append one element to a checksummed history document, or verify
// every CheckSum element of one.
#include <cwctype>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <string>

#include "platform/host/Host.h"
#include "platform/host/TextCodec.h"
#include "tools/kivutil/Command.h"
#include "utils/settings/HistoryVerifier.h"
#include "utils/settings/XMLWriter.h"

namespace {

struct VerifyOptions {
    std::string file;
};

struct AppendOptions {
    std::string file, element, text;
};

// An element name the history can carry: letters, digits, '_', '-', '.', ':', not
// starting with a digit, '-' or '.'.
bool IsElementName(const std::wstring& name) {
    if (name.empty() || std::iswdigit(name[0]) || name[0] == L'-' || name[0] == L'.') return false;
    for (wchar_t c : name)
        if (!(std::iswalnum(c) || c == L'_' || c == L'-' || c == L'.' || c == L':')) return false;
    return true;
}

// True when the file exists but does not begin with the UTF-16 mark every history has.
bool ExistsButIsNoHistory(const std::wstring& path) {
    std::ifstream in(kiv_host::ToHostPath(path), std::ios::binary);
    if (!in) return false;
    char mark[2] = {};
    return !in.read(mark, 2) || mark[0] != '\xFF' || mark[1] != '\xFE';
}

int RunAppend(const AppendOptions& opts) {
    const std::wstring element = kiv_text::FromUtf8(opts.element);
    const std::wstring text = kiv_text::FromUtf8(opts.text);
    if (!IsElementName(element)) return kivutil::BadInput("'" + opts.element + "' is not an element name; use letters, digits and _");
    if (text.find_first_of(L"<&") != std::wstring::npos)
        return kivutil::BadInput("the text may not hold '<' or '&': the history stores text as it stands");
    // The writer continues an existing file as it stands, whatever it holds; a file that
    // is not a history would gain elements without a header, so it is left alone here.
    if (ExistsButIsNoHistory(kiv_text::FromUtf8(opts.file)))
        return kivutil::BadInput(opts.file + " exists but is not a history document; give a history or a new file");
    CXMLWriter writer;
    bool created = false;
    if (!writer.Open(CKivStringT(kiv_text::FromUtf8(opts.file)), created)) {
        std::cerr << "kivutil: cannot open " << opts.file << " for appending; check its folder and permissions\n";
        return kivutil::kExitFailed;
    }
    writer.WriteElementString(CKivStringT(element), CKivStringT(text));
    writer.WriteCheckSum();
    writer.WriteEndElement();
    writer.Close();
    std::printf("%s %s\n", created ? "created" : "appended to", opts.file.c_str());
    return kivutil::kExitOk;
}

const char* BasisText(kiv_history::EHistoryBasis basis) {
    switch (basis) {
        case kiv_history::eRestored: return "the checksum restored on reopening";
        case kiv_history::eRestarted: return "the checksum restarted from zero on reopening";
        default: return "the running checksum";
    }
}

int RunVerify(const VerifyOptions& opts) {
    std::ifstream in(opts.file, std::ios::binary);
    if (!in) {
        std::cerr << "kivutil: cannot open " << opts.file << "; check the file name and its permissions\n";
        return kivutil::kExitFailed;
    }
    const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    const auto verdict = kiv_history::VerifyHistory(bytes);
    for (const auto& check : verdict.checks)
        std::printf("line %d: CheckSum %X matches %s\n", check.line, check.stored, BasisText(check.basis));
    if (!verdict.ok) {
        std::printf("line %d: %s\n", verdict.failLine, kiv_text::ToUtf8(verdict.problem).c_str());
        std::printf("FAILED: %s\n", opts.file.c_str());
        return kivutil::kExitFailed;
    }
    std::printf("ok: %zu CheckSum element%s verified, document complete\n", verdict.checks.size(),
                verdict.checks.size() == 1 ? "" : "s");
    return kivutil::kExitOk;
}

kivutil::Registration reg(31, [](CLI::App& app, std::function<int()>& run) {
    auto* history = app.add_subcommand("history", "Append to or verify a checksummed history document");
    history->require_subcommand(1);

    auto append = std::make_shared<AppendOptions>();
    auto* a = history->add_subcommand("append", "Add one element and a new checksum, then close the document");
    a->add_option("file", append->file, "history document (made if missing)")->required();
    a->add_option("element", append->element, "element name")->required();
    a->add_option("text", append->text, "element text")->required();
    a->callback([&run, append] { run = [append] { return RunAppend(*append); }; });

    auto verify = std::make_shared<VerifyOptions>();
    auto* v = history->add_subcommand("verify", "Check every CheckSum element against the running checksum");
    v->add_option("file", verify->file, "history document (UTF-16LE with BOM)")->required();
    v->callback([&run, verify] { run = [verify] { return RunVerify(*verify); }; });
});

}  // namespace
