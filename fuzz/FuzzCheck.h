#pragma once

#include <cstdio>
#include <cstdlib>

// A broken invariant is a finding: abort, so that libFuzzer keeps the input,
// and say which one.
#define FUZZ_CHECK(condition)                                                                  \
    do {                                                                                       \
        if (!(condition)) {                                                                    \
            std::fprintf(stderr, "%s:%d: broken: %s\n", __FILE__, __LINE__, #condition);      \
            std::abort();                                                                      \
        }                                                                                      \
    } while (false)
