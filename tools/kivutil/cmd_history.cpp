// kivutil history: append one element to a checksummed history document, or verify
// every CheckSum element of one.
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <string>

#include "platform/host/TextCodec.h"
#include "tools/kivutil/Command.h"
#include "utils/settings/HistoryVerifier.h"

namespace {

struct VerifyOptions {
    std::string file;
};

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
    auto* history = app.add_subcommand("history", "append to or verify a checksummed history document");
    history->require_subcommand(1);

    auto verify = std::make_shared<VerifyOptions>();
    auto* v = history->add_subcommand("verify", "check every CheckSum element against the running checksum");
    v->add_option("file", verify->file, "history document (UTF-16LE with BOM)")->required();
    v->callback([&run, verify] { run = [verify] { return RunVerify(*verify); }; });
});

}  // namespace
