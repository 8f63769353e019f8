#pragma once

#include <QByteArrayView>

#include <cstdint>
#include <vector>

namespace torvex {

// Where data may start after a header the bytes show: one of text ("KEY =
// value" lines, a title) or of zeros. For text: where it ends, after each of
// its first line breaks, and at the end of the block of 512 bytes such a
// line break falls in (padding); for zeros: where they end, and the block of
// 512 bytes before that (data may start with zeros too). Data bytes may read
// as text as well, so the text's run can overshoot; line breaks and blocks
// are where writers end it. Empty when the file starts with neither.
std::vector<int64_t> headerEnds(QByteArrayView bytes);

} // namespace torvex
