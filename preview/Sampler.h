#pragma once

#include "preview/Vec.h"

#include <bit>
#include <cstddef>
#include <cstdint>

namespace Preview {

/// The random numbers of one sample of one pixel: points of Owen-scrambled Sobol sequences, shuffled anew for each pair
/// of dimensions. They depend on seed, pixel and sample alone, so any number of threads gives the same picture, and
/// they use integer operations alone, so any compiler does too.
/// Burley, "Practical Hash-based Owen Scrambling", JCGT 9(4), 2020.
class Sampler {
  public:
    Sampler(std::uint64_t seed, std::uint32_t pixel, std::uint32_t sample_)
        : Sampler(firstState(mixHigh(seed), seed, pixel), reverseBits(sample_)) {}

    /// Two numbers in [0, 1) that belong together.
    Vec2 next2() {
        const std::uint32_t index = reverseBits(shuffle());
        return {firstOf(index), secondOf(index)};
    }

    float next1() { return firstOf(reverseBits(shuffle())); }

  private:
    friend class SamplerRow;

    Sampler(std::uint32_t state_, std::uint32_t reversed_sample_) : state(state_), reversed_sample(reversed_sample_) {}

    static std::uint32_t mixHigh(std::uint64_t seed) {
        return mixBits(static_cast<std::uint32_t>(seed >> 32) ^ 0x9E3779B9u);
    }
    static std::uint32_t firstState(std::uint32_t mixed_high, std::uint64_t seed, std::uint32_t pixel) {
        return mixBits(mixed_high ^ mixBits(static_cast<std::uint32_t>(seed) + 0x85EBCA6Bu * pixel) ^ pixel);
    }

    // The numbers of the dimensions that `state` was mixed for last.

    float firstOf(std::uint32_t index) const { return toUnit(reverseBits(permute(index, state ^ 0x68BC21EBu))); }
    float secondOf(std::uint32_t index) const {
        return toUnit(reverseBits(permute(reversedSobolOfSecondDimension(index), state ^ 0x02E5BE93u)));
    }

    static float toUnit(std::uint32_t bits) { return static_cast<float>(bits >> 8) * 0x1p-24f; }

    /// A hash of 32 bits of good avalanche; the constants are those of "lowbias32" (Wellons, 2018).
    static std::uint32_t mixBits(std::uint32_t v) {
        v ^= v >> 16;
        v *= 0x7FEB352Du;
        v ^= v >> 15;
        v *= 0x846CA68Bu;
        return v ^ (v >> 16);
    }

    static std::uint32_t reverseBits(std::uint32_t v) {
        // Bytes first and halves last: next to each other, compilers would make one instruction of them, which there
        // isn't for several numbers at once.
        v = ((v >> 8) & 0x00FF00FFu) | ((v & 0x00FF00FFu) << 8);
        v = ((v >> 1) & 0x55555555u) | ((v & 0x55555555u) << 1);
        v = ((v >> 2) & 0x33333333u) | ((v & 0x33333333u) << 2);
        v = ((v >> 4) & 0x0F0F0F0Fu) | ((v & 0x0F0F0F0Fu) << 4);
        return std::rotl(v, 16);
    }

    /// The sample's place in the shuffled sequence of the next dimensions, its bits reversed.
    std::uint32_t shuffle() {
        state = mixBits(state + 0x9E3779B9u);
        return permute(reversed_sample, state);
    }

    /// Owen's nested scrambling of bits that are reversed, from the lowest up, by the permutation of Laine and Karras.
    static std::uint32_t permute(std::uint32_t v, std::uint32_t seed) {
        v ^= v * 0x3D20ADEAu;
        v += seed;
        v *= (seed >> 16) | 1u;
        v ^= v * 0x05526C56u;
        return v ^ (v * 0x53A22864u);
    }

    /// The second dimension of Sobol's sequence, whose generator matrix is Pascal's triangle modulo 2, with its bits
    /// reversed: multiplied bit by bit in five steps.
    static std::uint32_t reversedSobolOfSecondDimension(std::uint32_t v) {
        v ^= v >> 16;
        v ^= (v & 0xFF00FF00u) >> 8;
        v ^= (v & 0xF0F0F0F0u) >> 4;
        v ^= (v & 0xCCCCCCCCu) >> 2;
        v ^= (v & 0xAAAAAAAAu) >> 1;
        return v;
    }

    std::uint32_t state;
    std::uint32_t reversed_sample;
};

/// The samplers of neighbouring pixels after their first two numbers, all of which are computed at once: the processor
/// does several with each instruction.
class SamplerRow {
  public:
    static constexpr std::uint32_t capacity = 32;

    /// Of at most `capacity` pixels. Their samplers are those of `Sampler`.
    SamplerRow(std::uint64_t seed, std::uint32_t first_pixel, std::uint32_t count, std::uint32_t sample)
        : reversed_sample(Sampler::reverseBits(sample)) {
        const std::uint32_t mixed_high = Sampler::mixHigh(seed);
        const std::uint32_t reversed = reversed_sample;
        for (std::uint32_t i = 0; i < count; ++i) {
            Sampler sampler(Sampler::firstState(mixed_high, seed, first_pixel + i), reversed);
            const std::uint32_t index = Sampler::reverseBits(sampler.shuffle());
            x[i] = sampler.firstOf(index);
            y[i] = sampler.secondOf(index);
            states[i] = sampler.state;
        }
    }

    Sampler operator[](std::size_t i) const { return {states[i], reversed_sample}; }
    void set(std::size_t i, const Sampler& sampler) { states[i] = sampler.state; }

    // The first two numbers of each.
    float x[capacity];
    float y[capacity];

  private:
    std::uint32_t states[capacity];
    std::uint32_t reversed_sample;
};

/// Sine and cosine of 2 pi x for x in [0, 1), by polynomials of plain arithmetic: the libraries of different systems
/// differ in the last bit. The error is below 1e-7.
inline void sinCosOfTurn(float x, float& sine, float& cosine) {
    const float quarter = x * 4.0f;
    // Between two quadrants either does, and compilers can't compute lround for several samples at once.
    const int quadrant = static_cast<int>(quarter + 0.5f); // NOLINT(bugprone-incorrect-roundings)
    // Within half a quadrant of an axis: Taylor's series needs few terms there.
    const float a = (quarter - static_cast<float>(quadrant)) * 1.57079632679f;
    const float a2 = a * a;
    const float s = a * (1.0f + a2 * (-1.0f / 6 + a2 * (1.0f / 120 + a2 * (-1.0f / 5040 + a2 / 362880))));
    const float c = 1.0f + a2 * (-0.5f + a2 * (1.0f / 24 + a2 * (-1.0f / 720 + a2 / 40320)));
    switch (quadrant & 3) {
    case 0:
        sine = s, cosine = c;
        break;
    case 1:
        sine = c, cosine = -s;
        break;
    case 2:
        sine = -s, cosine = -c;
        break;
    default:
        sine = -c, cosine = s;
        break;
    }
}

/// A point of the unit disc, uniform by area.
inline Vec2 sampleDisc(const Vec2& u) {
    const float r = std::sqrt(u.x);
    float s = 0.0f;
    float c = 0.0f;
    sinCosOfTurn(u.y, s, c);
    return {r * c, r * s};
}

/// A direction of the hemisphere around the unit vector `n`, with the density cosine / pi (Malley's method).
inline Vec3 sampleCosine(const Vec3& n, const Vec2& u) {
    const Vec2 d = sampleDisc(u);
    Vec3 s;
    Vec3 t;
    basisAround(n, s, t);
    return s * d.x + t * d.y + n * std::sqrt(std::max(0.0f, 1.0f - u.x));
}

/// A direction uniform over the cap around the unit vector `axis` down to the cosine `cosine_of_edge`.
inline Vec3 sampleCap(const Vec3& axis, float cosine_of_edge, const Vec2& u) {
    // 1 - cosine is small for narrow caps and is kept apart, so that it keeps its digits.
    const float drop = u.x * (1.0f - cosine_of_edge);
    const float r = std::sqrt(std::max(0.0f, drop * (2.0f - drop)));
    float sine = 0.0f;
    float cosine = 0.0f;
    sinCosOfTurn(u.y, sine, cosine);
    Vec3 s;
    Vec3 t;
    basisAround(axis, s, t);
    return s * (r * cosine) + t * (r * sine) + axis * (1.0f - drop);
}

} // namespace Preview
