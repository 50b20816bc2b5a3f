#pragma once
// A consistency check inside a fuzz target. libFuzzer ignores what a target returns, so a
// failed check stops the process instead, in every build type: the fuzzer then keeps the
// input as a crash, and the corpus replay of the ordinary tests fails on it.

#define QX_FUZZ_CHECK(condition)                                                                                       \
    do {                                                                                                               \
        if (!(condition)) __builtin_trap();                                                                            \
    } while (false)
