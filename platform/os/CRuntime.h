#pragma once
// The Windows C runtime's number parsing and random numbers, which parameter texts and
// effects depend on. Each parser reads the longest valid prefix after blanks and an
// optional sign and gives 0 when there is none; none depends on the locale.
#include <cstdint>
#include <string_view>

namespace qx::os {

/// `_wtol`: decimal 32-bit integer; values beyond the range clamp to its ends.
int32_t _wtol(std::u16string_view text);
/// `_wtoi`: the same as `_wtol`, Windows int and long being both 32-bit.
int32_t _wtoi(std::u16string_view text);
/// `_wtof`: decimal floating point with optional fraction and exponent; no hex, no "inf".
double _wtof(std::u16string_view text);
/// `wcstoul` in base 10: a minus sign negates modulo 2^32; overflow gives 0xFFFFFFFF.
/// `consumed` receives how many units were read (0 when no digit was found).
uint32_t wcstoul(std::u16string_view text, size_t* consumed = nullptr);

/// The largest value `rand` returns.
inline constexpr int kRandMax = 32767;
/// The process-wide generator of the Windows C runtime: seed * 214013 + 2531011, result
/// bits 16..30. It starts from seed 1, as a process does before any `srand`.
int rand();
void srand(uint32_t seed);

}  // namespace qx::os
