// kivutil crc16: the CRC-16 of a file or of standard input, streamed in blocks.
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "tools/kivutil/Command.h"
#include "utils/settings/CRC16.h"

namespace {

struct Crc16Options {
    std::string input = "-";
    std::string init = "0";
};

int RunCrc16(const Crc16Options& opts) {
    unsigned long start = 0;
    try {
        size_t used = 0;
        start = std::stoul(opts.init, &used, 0);
        if (used != opts.init.size() || start > 0xFFFF) throw std::out_of_range("init");
    } catch (const std::exception&) {
        return kivutil::BadInput("--init must be a number from 0 to 0xFFFF, e.g. --init 0xFFFF");
    }
    const bool fromStdin = opts.input == "-";
    std::FILE* in = fromStdin ? stdin : std::fopen(opts.input.c_str(), "rb");
    if (!in) {
        std::fprintf(stderr, "kivutil: cannot open %s; check the file name and its permissions\n", opts.input.c_str());
        return kivutil::kExitFailed;
    }
    CCRC16 crc;
    unsigned short value = static_cast<unsigned short>(start);
    std::vector<unsigned char> block(1 << 16);
    size_t got = 0;
    while ((got = std::fread(block.data(), 1, block.size(), in)) > 0)
        value = crc.ComputeCRC16(value, block.data(), static_cast<int>(got));
    const bool failed = std::ferror(in) != 0;
    if (!fromStdin) std::fclose(in);
    if (failed) {
        std::fprintf(stderr, "kivutil: reading %s failed\n", opts.input.c_str());
        return kivutil::kExitFailed;
    }
    std::printf("%04X\n", value);
    return kivutil::kExitOk;
}

kivutil::Registration reg(42, [](CLI::App& app, std::function<int()>& run) {
    auto opts = std::make_shared<Crc16Options>();
    auto* sub = app.add_subcommand("crc16", "CRC-16 (polynomial 1021, MSB first) of a file or of stdin, in hex");
    sub->add_option("file", opts->input, "file to check, or - for standard input")->capture_default_str();
    sub->add_option("--init", opts->init, "starting value: 0 gives XMODEM, 0xFFFF gives CCITT-FALSE")->capture_default_str();
    sub->callback([&run, opts] { run = [opts] { return RunCrc16(*opts); }; });
});

}  // namespace
