// Feeds arbitrary bytes to the history verifier: it must end with a verdict, never read
// outside the input or crash.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "utils/settings/HistoryVerifier.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto verdict = kiv_history::VerifyHistory(std::string_view(reinterpret_cast<const char*>(data), size));
    if (verdict.ok && !verdict.problem.empty()) __builtin_trap();
    return 0;
}
