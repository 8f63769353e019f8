#pragma once

#include <cstdint>

namespace torvex {

// Every figure the layout guess weighs its evidence with, in one place.
struct GuessTuning {
    // Places sampled per measure, and values read at each: few places, since each
    // costs a page fault on a mapped file; runs long enough to average out noise.
    int places = 48;
    int64_t run = 64;
    // Fewer for frames, whose lags are far apart: a page fault each, per height tried.
    int framePlaces = 16;
    // Places of one group at most this many elements apart: near enough to
    // share pages, and prime so that they fall on different columns of most rows.
    int64_t placeStep = 4099;
    // Elements a row of an image has at least and at most; rows a frame has
    // (beyond these, the name should tell).
    int64_t minWidth = 8;
    int64_t maxWidth = 16384;
    int64_t minHeight = 8;
    int64_t maxHeight = 8192;
    // Columns and rows aside from a lag against which a lag's likeness is measured:
    // close enough that smooth pictures still change little, far enough that rows do.
    int64_t aside = 3;
    // Below this share of the likeness a few columns aside, values a row apart are
    // rows of an image; noise and wrong row lengths stay near 1.
    double rowsAlike = 0.9;
    // Frames are claimed only when the same place one frame on is this much more
    // alike than a few rows aside: a single image's far rows are not.
    double framesAlike = 0.75;
    // Or when rows change this many times more across the seam of two frames
    // than either side of it: one picture's rows rarely do, at every seam.
    double seamRatio = 2.0;
    // Row lengths or frame heights with at least this share of the best's
    // evidence (in the log) count as as good: a multiple of the true one.
    double sameRows = 0.7;
    double sameFrames = 0.6;
    // Pictures rarely run longer than 4:1; beyond it each doubling costs this much
    // (in the log of likeness), which rules out strips of a few columns.
    double aspectRatio = 4;
    double aspectCost = 0.5;
    // Frames are looked for only up to this ratio of height to width or back.
    double framesAspect = 16;
    // A header the data alone suggests costs this much; one that reads as text, nothing.
    double headerCost = 0.7;
    // Evidence (the log of likeness, with penalties) weaker than this is
    // mostly noise: the seams of rows and frames then tell more.
    double weakEvidence = -0.2;
    // Evidence stronger than this needs no second opinion from the seams,
    // which cost reads of far more of a large file.
    double clearEvidence = -1.0;
    // A second layout within this cost of the best is named beside it.
    double closeCost = 0.15;
    // Bytes of text or zeros that make a header: a line of "KEY = value" at least.
    int64_t minHeader = 8;
    // Share of byte pairs equal for 16-bit values made from 8-bit ones (times 257).
    double equalBytePairs = 0.9;
    // A colour reading needs the same channel a pixel on this much more alike than the next byte.
    double channelsRepeat = 0.8;
    // 16-bit of equal bytes only where the pairs one byte on are this many times
    // as often unequal: flat 8-bit pictures have equal neighbours at either phase.
    double unequalPairsRatio = 4;
};

inline constexpr GuessTuning kGuessTuning{};

} // namespace torvex
