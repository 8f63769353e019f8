#pragma once

#include "ElementSampler.h"

#include <QString>

#include <optional>

namespace torvex {

// How the bytes of a headerless file make pixels: an element reading and,
// for interleaved colour, three byte channels to a pixel.
struct PixelReading {
    ElementReading element;
    int channels = 1;
    bool redFirst = true; // of colour: whether the first byte of a pixel is red

    int bytes() const { return element.size() * channels; }
};

struct PixelChoice {
    std::optional<PixelReading> reading;
    QString reason; // why there is none
};

// The reading under which neighbouring values are smoothest, checked first
// for what a smoothness test takes for something else: interleaved colour
// (each byte like the one three on, less like the next) and 16-bit values
// made from 8-bit ones (both bytes equal, which reads as doubled 8-bit pixels).
PixelChoice choosePixelReading(QByteArrayView bytes);

} // namespace torvex
