// One line per measured figure, the same for every benchmark, so that
// bench/report.sh can gather all of them into a single table:
//
//   BENCH|<figure>|<value>|<unit>|<limit>|<ratio>|<met: 1, 0, or - without a limit>
//
// <limit> is text with its direction ("<= 10 ms", ">= 0.85 x ..."); <ratio>
// is the value over the limit, or, where the limit bounds a ratio to a
// reference, that ratio itself.
#pragma once

#include <cmath>
#include <cstdio>
#include <string>

namespace torvex::bench {

// About four significant digits, and no exponent from 0.001 up: readable in
// the table, still parsed by any number reader.
inline std::string number(double x)
{
    char text[32];
    const double magnitude = std::fabs(x);
    if (!std::isfinite(x) || (magnitude != 0 && magnitude < 1e-3)) {
        std::snprintf(text, sizeof text, "%.3g", x);
    } else {
        const int digits = magnitude == 0 ? 0 : static_cast<int>(std::floor(std::log10(magnitude)));
        std::snprintf(text, sizeof text, "%.*f", digits >= 3 ? 0 : 3 - digits, x);
    }
    return text;
}

// A constant of a limit as written in the source: 0.01, 1.3, 150.
inline std::string constant(double x)
{
    char text[32];
    std::snprintf(text, sizeof text, "%g", x);
    return text;
}

// The fields are split on '|', so none may hold one.
inline std::string field(std::string text)
{
    for (char& c : text)
        if (c == '|' || c == '\n') c = '/';
    return text;
}

inline void reportLine(const std::string& figure, const std::string& value, const std::string& unit,
                       const std::string& limit, const std::string& ratio, const char* met)
{
    std::printf("BENCH|%s|%s|%s|%s|%s|%s\n", field(figure).c_str(), value.c_str(), field(unit).c_str(),
                field(limit).c_str(), ratio.c_str(), met);
    // Flushed now: a benchmark may start a copy of itself, or stop half-way.
    std::fflush(stdout);
}

inline void reportFigure(const std::string& figure, double value, const std::string& unit, const std::string& limit,
                         double ratio, bool met)
{
    reportLine(figure, number(value), unit, limit, number(ratio), met ? "1" : "0");
}

// A figure bounded from above in its own unit.
inline void reportAtMost(const std::string& figure, double value, const std::string& unit, double limit)
{
    reportFigure(figure, value, unit, "<= " + constant(limit) + " " + unit, value / limit, value <= limit);
}

// A figure shown for comparison only, with no limit of its own.
inline void reportInfo(const std::string& figure, double value, const std::string& unit)
{
    reportLine(figure, number(value), unit, "-", "-", "-");
}

} // namespace torvex::bench
