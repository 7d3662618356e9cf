// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/util/Crypt.h>
#include <GenericUtilities/util/DesTables_p.h>

#include <QtGlobal>

// DES works on numbered bits. Here bit n of a half block, in the count of FIPS 46-3, is bit n - 1 of a word, the least
// significant being bit 0. Halves are kept turned left by one besides: so the inputs of S1, S3, S5 and S7 that the
// expansion asks for stand in the low six bits of the four bytes, and those of S2, S4, S6 and S8 four bits higher.

namespace qvgen::des {

/// What C and D, 28 bits each, take up of a word.
constexpr unsigned halfKey = 0x0fffffff;

/// Eight bytes as two words, the least significant byte first.
struct Block {
    unsigned low = 0;
    unsigned high = 0;
};

constexpr unsigned turnedLeft(unsigned word, int count)
{
    return (word << count) | (word >> (32 - count));
}

constexpr unsigned turnedRight(unsigned word, int count)
{
    return turnedLeft(word, 32 - count);
}

constexpr quint64 joined(unsigned low, unsigned high, int lowSize)
{
    return low | quint64(high) << lowSize;
}

/// The word of a block's bit n (1 to 64) and its place there: bit 1 is the highest of byte 0.
constexpr Block blockOfBit(int n)
{
    int const byte = (n - 1) / 8;
    unsigned const word = 1U << (byte % 4 * 8 + 7 - (n - 1) % 8);
    return byte < 4 ? Block{word, 0} : Block{0, word};
}

/// IP: the high word becomes the left half, the low word the right one, bit n at place n - 1.
constexpr void permuteInitially(Block& block)
{
    Crypt::PermOperation(block.high, block.low, 4, 0x0f0f0f0f);
    Crypt::PermOperation(block.low, block.high, 16, 0x0000ffff);
    Crypt::PermOperation(block.high, block.low, 2, 0x33333333);
    Crypt::PermOperation(block.low, block.high, 8, 0x00ff00ff);
    Crypt::PermOperation(block.high, block.low, 1, 0x55555555);
}

/// IP's inverse: the same exchanges from the last to the first.
constexpr void permuteFinally(Block& block)
{
    Crypt::PermOperation(block.high, block.low, 1, 0x55555555);
    Crypt::PermOperation(block.low, block.high, 8, 0x00ff00ff);
    Crypt::PermOperation(block.high, block.low, 2, 0x33333333);
    Crypt::PermOperation(block.low, block.high, 16, 0x0000ffff);
    Crypt::PermOperation(block.high, block.low, 4, 0x0f0f0f0f);
}

/// PC-1: the low word becomes C, the high one D, bit n at place n - 1.
constexpr void chooseKeyBits(Block& key)
{
    unsigned& c = key.low;
    unsigned& d = key.high;
    Crypt::PermOperation(d, c, 4, 0x0f0f0f0f);
    c = Crypt::HPermOperation(c, -2, 0xcccc0000);
    d = Crypt::HPermOperation(d, -2, 0xcccc0000);
    Crypt::PermOperation(d, c, 1, 0x55555555);
    Crypt::PermOperation(c, d, 8, 0x00ff00ff);
    Crypt::PermOperation(d, c, 1, 0x55555555);
    d = ((d & 0x0000ff) << 16) | (d & 0x00ff00) | ((d & 0xff0000) >> 16) | ((c & 0xf0000000) >> 4);
    c &= halfKey;
}

// What the exchanges above do is what the standard's tables say.

constexpr bool isInitialPermutation()
{
    for (unsigned i = 0; i < initialPermutation.size(); ++i) {
        Block block = blockOfBit(initialPermutation[i]);
        permuteInitially(block);
        if (joined(block.high, block.low, 32) != quint64(1) << i)
            return false;
    }
    return true;
}
static_assert(isInitialPermutation());

constexpr bool isFinalPermutation()
{
    for (unsigned i = 0; i < initialPermutation.size(); ++i) {
        Block const original = blockOfBit(int(i) + 1);
        Block block = original;
        permuteInitially(block);
        permuteFinally(block);
        if (block.low != original.low || block.high != original.high)
            return false;
    }
    return true;
}
static_assert(isFinalPermutation());

constexpr bool isPermutedChoice1()
{
    for (unsigned i = 0; i < permutedChoice1.size(); ++i) {
        Block key = blockOfBit(permutedChoice1[i]);
        chooseKeyBits(key);
        if (joined(key.low, key.high, 28) != quint64(1) << i)
            return false;
    }
    return true;
}
static_assert(isPermutedChoice1());

constexpr bool isExpansion()
{
    for (unsigned i = 0; i < expansion.size(); ++i) {
        unsigned const half = turnedLeft(1U << (expansion[i] - 1), 1);
        unsigned const inputs = i / 6 % 2 == 0 ? half : turnedRight(half, 4);
        if (((inputs >> (i / 12 * 8 + i % 6)) & 1) != 1)
            return false;
    }
    return true;
}
static_assert(isExpansion());

} // namespace qvgen::des
