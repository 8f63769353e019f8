#include "HeaderEnds.h"

#include "GuessTuning.h"

#include <algorithm>

namespace torvex {

namespace {

constexpr int64_t kLongestHeader = 1 << 20;
constexpr int64_t kBlock = 512;
constexpr int kLineEnds = 16;

bool isText(char c) { return (c >= 0x20 && c < 0x7f) || c == '\n' || c == '\r' || c == '\t'; }

} // namespace

std::vector<int64_t> headerEnds(QByteArrayView bytes)
{
    int64_t zeros = 0;
    while (zeros < bytes.size() && bytes[zeros] == 0) ++zeros;
    if (zeros >= kGuessTuning.minHeader && zeros < bytes.size()) return {zeros / kBlock * kBlock, zeros};
    const int64_t limit = std::min<int64_t>(bytes.size(), kLongestHeader);
    int64_t run = 0;
    while (run < limit && isText(bytes[run])) ++run;
    if (run < kGuessTuning.minHeader || run == bytes.size()) return {};
    const QByteArrayView text = bytes.first(run);
    std::vector<int64_t> ends{run};
    // Data bytes may read as line breaks too: every early one may end the text.
    for (int64_t lineEnd = text.indexOf('\n') + 1, n = 0; lineEnd > 0 && n < kLineEnds; ++n) {
        ends.push_back(lineEnd);
        if (const int64_t block = (lineEnd + kBlock - 1) / kBlock * kBlock; block <= bytes.size()) ends.push_back(block);
        lineEnd = text.indexOf('\n', lineEnd) + 1;
    }
    std::ranges::sort(ends);
    ends.erase(std::unique(ends.begin(), ends.end()), ends.end()); // clang 14 lacks ranges::unique on libstdc++ 12
    return ends;
}

} // namespace torvex
