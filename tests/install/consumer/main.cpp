// Builds the sample site plan through the installed headers and libraries and says
// what it holds; exits 1 if the image came out empty.
#include <cstdio>

#include "utils/vector/SampleSitePlan.h"

int main() {
    const auto blob = buildSampleSitePlan();
    if (!blob || blob->getPointCount() == 0) return 1;
    std::printf("sample site plan: %u points, %u lines\n", blob->getPointCount(), blob->getLineCount());
    return 0;
}
