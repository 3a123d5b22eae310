// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

// The receiver's number formats. PDP, Vesk and T numbers are arrays of 16-bit words in host order,
// as they stand in a frame; "Pc" is the host's IEEE 754. The functions are pure and never fail:
// what is out of range flushes to zero or saturates, as told for each.

// PDP single (2 words) and double (4 words): sign, 8-bit exponent excess 128, fraction with an
// implied leading 1 behind the binary point; most significant word first.

/// An exponent below 3 gives 0.0. Exact otherwise.
float CnvPdpF2PcF(const uint16_t* words);
/// Four zero words give 0.0. The low 3 of 55 fraction bits are dropped.
double CnvPdpD2PcD(const uint16_t* words);
/// IEEE exponents 0 and 1 give zero without a sign; 254 and 255 the largest magnitude.
void cnvpcs(const float* value, uint16_t* words);
/// IEEE exponents below 895 give zero without a sign; above 1149 the largest magnitude.
void cnvpcd(const double* value, uint16_t* words);
/// Fraction and, through `integerPart`, integer part of a PDP double, with no sub-second bit lost.
double PdpD_modf(const uint16_t* words, double* integerPart);

// Vesk extended (3 words) and single (2 words): the PDP number with its bytes in another order.

double CnvVeskD2PcD(const uint16_t* words);
float CnvVeskF2PcF(const uint16_t* words);
/// Truncates to 39 fraction bits; flushes and saturates like cnvpcd.
void CnvPcD2VeskE(double value, uint16_t* words);
void CnvPcF2VeskF(float value, uint16_t* words);

// T extended (4 words) and single (2 words): fraction of a negative number in two's complement.

double cnvte(const uint16_t* words);
float cnvts(const uint16_t* words);
void cnvten(const uint16_t* words, double* out);
void cnvtsn(const uint16_t* words, float* out);

// Helpers.

/// Swaps the two 16-bit halves in place and returns the new value.
uint32_t lswap(uint32_t* value);
/// The same on four bytes at any alignment.
void MSW16_LSW16_swap(void* bytes);
/// Swaps the two bytes in place and returns the new value.
uint16_t u16swap(uint16_t* value);
/// u16swap on each of `count` words; nothing for a count of 0 or less.
void ByteSwap(uint16_t* words, int count);

/// Four decimal digits, one in each nibble. An illegal digit counts as 0 in its place.
uint16_t FromNBCD(uint16_t word);
/// 0 for 0 and for values above 9999.
uint16_t ToNBCD(uint16_t value);

double DirectionRadiansFromVelocity(double y, double x);
float DirectionRadiansFromVelocityF(float y, float x);

/// Whole seconds, truncated toward zero, and the rest in nanoseconds; both with the sign of `time`.
void ToSecondsNanoseconds(int32_t* seconds, double* nanoseconds, double time);

/// Pattern test of a memory area with 0x55, 0xAA and 0x55; leaves it filled with 0x55. Returns 0,
/// or 1 when a byte did not read back.
int flushZero(void* buffer, uint16_t size);
