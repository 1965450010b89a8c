// Lane operations for the pixel loops that are written once and compiled for two instruction
// sets: SSE2, which every x86-64 processor has, in namespace sse2_lanes, and AVX2, which most have
// had since 2013, in namespace avx2_lanes (pixel_loop_lanes says which one the frame uses). In each
// set `floats` and `ints` hold LANES floats and LANES 32-bit integers as GCC vectors, so that
// arithmetic, comparisons (all ones where true) and bit operations are written as operators, each
// lane computing exactly what the same operation on one value gives.
#pragma once

#include <immintrin.h>
#include <stdint.h>
#include <string.h>

#include "render/pixel_pipeline.h"

// Everything between these is compiled for AVX2; it may run only where the processor has it.
#if defined(__clang__)
#define AVX2_FUNCTIONS_BEGIN _Pragma("clang attribute push(__attribute__((target(\"avx2\"))), apply_to = function)")
#define AVX2_FUNCTIONS_END _Pragma("clang attribute pop")
#else
#define AVX2_FUNCTIONS_BEGIN _Pragma("GCC push_options") _Pragma("GCC target(\"avx2\")")
#define AVX2_FUNCTIONS_END _Pragma("GCC pop_options")
#endif

namespace sse2_lanes {

constexpr int32_t LANES = 4;
using floats = __m128;
typedef int32_t ints __attribute__((vector_size(16)));

PIXEL_INLINE floats splat(float value)
{
    return _mm_set1_ps(value);
}
PIXEL_INLINE ints splat(int32_t value)
{
    return reinterpret_cast<ints>(_mm_set1_epi32(value));
}
// Towards zero; a value outside the 32-bit range becomes 0x80000000, as in the plain loop.
PIXEL_INLINE ints truncate(floats value)
{
    return reinterpret_cast<ints>(_mm_cvttps_epi32(value));
}
PIXEL_INLINE floats to_floats(ints value)
{
    return _mm_cvtepi32_ps(reinterpret_cast<__m128i>(value));
}
// The lanes whose mask is all ones, as bits.
PIXEL_INLINE int lane_bits(ints mask)
{
    return _mm_movemask_ps(reinterpret_cast<__m128>(mask));
}
// All ones where !(a >= b): also where either is not a number.
PIXEL_INLINE ints not_at_least(floats a, floats b)
{
    return reinterpret_cast<ints>(_mm_cmpnge_ps(a, b));
}
// Lane by lane: `when_set` where the mask is all ones, else `when_clear` (where it is all zeros).
PIXEL_INLINE ints select(ints mask, ints when_set, ints when_clear)
{
    return (when_set & mask) | (when_clear & ~mask);
}
PIXEL_INLINE floats load_floats(const float* from)
{
    return _mm_loadu_ps(from);
}
PIXEL_INLINE void store_floats(float* to, floats value)
{
    _mm_storeu_ps(to, value);
}
PIXEL_INLINE ints load_pixels(const uint16_t* from)
{
    __m128i pixels = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(from));
    return reinterpret_cast<ints>(_mm_unpacklo_epi16(pixels, _mm_setzero_si128()));
}
// The low 16 bits of each lane, each sign-extended from there first so that the saturating pack
// keeps its bits.
PIXEL_INLINE void store_pixels(uint16_t* to, ints pixels)
{
    __m128i widened = reinterpret_cast<__m128i>((pixels << 16) >> 16);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(to), _mm_packs_epi32(widened, widened));
}
// SSE2 has no gather: the indices go through memory and the entries come back through registers
// (four stores read back as one vector would stall).
template <typename entry> PIXEL_INLINE ints gather_entries(const entry* table, ints index)
{
    alignas(16) int32_t at[4];
    memcpy(at, &index, sizeof at);
    return reinterpret_cast<ints>(_mm_setr_epi32(table[at[0]], table[at[1]], table[at[2]], table[at[3]]));
}
PIXEL_INLINE ints gather_texels(const uint16_t* table, ints index)
{
    return gather_entries(table, index);
}
// Each lane moved `by` (1 ... 3) lanes up; the lanes below get what fell off the top. SSE2 has no
// shuffle chosen at run time: the vector is written out twice in a row and read back from inside.
PIXEL_INLINE floats lanes_moved_up(floats value, int32_t by)
{
    alignas(16) float twice[8];
    _mm_store_ps(twice, value);
    _mm_store_ps(twice + 4, value);
    return _mm_loadu_ps(twice + 4 - by);
}
PIXEL_INLINE ints gather_bytes(const uint8_t* table, ints index)
{
    return gather_entries(table, index);
}
#include "render/vector_lanes.inc"

} // namespace sse2_lanes

AVX2_FUNCTIONS_BEGIN
namespace avx2_lanes {

constexpr int32_t LANES = 8;
using floats = __m256;
typedef int32_t ints __attribute__((vector_size(32)));

PIXEL_INLINE floats splat(float value)
{
    return _mm256_set1_ps(value);
}
PIXEL_INLINE ints splat(int32_t value)
{
    return reinterpret_cast<ints>(_mm256_set1_epi32(value));
}
PIXEL_INLINE ints truncate(floats value)
{
    return reinterpret_cast<ints>(_mm256_cvttps_epi32(value));
}
PIXEL_INLINE floats to_floats(ints value)
{
    return _mm256_cvtepi32_ps(reinterpret_cast<__m256i>(value));
}
PIXEL_INLINE int lane_bits(ints mask)
{
    return _mm256_movemask_ps(reinterpret_cast<__m256>(mask));
}
PIXEL_INLINE ints not_at_least(floats a, floats b)
{
    return reinterpret_cast<ints>(_mm256_cmp_ps(a, b, _CMP_NGE_UQ));
}
// One instruction where SSE2 takes three: the blend looks only at the top bit of each lane.
PIXEL_INLINE ints select(ints mask, ints when_set, ints when_clear)
{
    __m256 chosen = _mm256_blendv_ps(reinterpret_cast<__m256>(when_clear), reinterpret_cast<__m256>(when_set),
                                     reinterpret_cast<__m256>(mask));
    return reinterpret_cast<ints>(chosen);
}
PIXEL_INLINE floats load_floats(const float* from)
{
    return _mm256_loadu_ps(from);
}
PIXEL_INLINE void store_floats(float* to, floats value)
{
    _mm256_storeu_ps(to, value);
}
PIXEL_INLINE ints load_pixels(const uint16_t* from)
{
    return reinterpret_cast<ints>(_mm256_cvtepu16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(from))));
}
// Every lane holds 0 ... 0xFFFF, which the unsigned saturating pack keeps as it is.
PIXEL_INLINE void store_pixels(uint16_t* to, ints pixels)
{
    __m256i wide = reinterpret_cast<__m256i>(pixels);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to),
                     _mm_packus_epi32(_mm256_castsi256_si128(wide), _mm256_extracti128_si256(wide, 1)));
}
// Each lane moved `by` (1 ... 7) lanes up; the lanes below get what fell off the top.
PIXEL_INLINE floats lanes_moved_up(floats value, int32_t by)
{
    __m256i from = _mm256_sub_epi32(_mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7), _mm256_set1_epi32(by));
    return _mm256_permutevar8x32_ps(value, from);
}
// Each entry is read as the four bytes from its own: the tables and the textures end in a spare
// entry, so the last one's read stays inside.
PIXEL_INLINE ints gather_texels(const uint16_t* table, ints index)
{
    __m256i words = _mm256_i32gather_epi32(reinterpret_cast<const int*>(table), reinterpret_cast<__m256i>(index), 2);
    return reinterpret_cast<ints>(words) & splat(0xFFFF);
}
// The rows of bytes these read are followed by more rows of the same block of tables.
PIXEL_INLINE ints gather_bytes(const uint8_t* table, ints index)
{
    __m256i words = _mm256_i32gather_epi32(reinterpret_cast<const int*>(table), reinterpret_cast<__m256i>(index), 1);
    return reinterpret_cast<ints>(words) & splat(0xFF);
}
#include "render/vector_lanes.inc"

} // namespace avx2_lanes
AVX2_FUNCTIONS_END
