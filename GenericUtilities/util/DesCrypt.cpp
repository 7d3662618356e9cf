// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/util/Crypt.h>

#include <GenericUtilities/util/DesBlock_p.h>
#include <GenericUtilities/util/DesTables_p.h>

#include <openssl/crypto.h>

#include <cstddef>
#include <utility>

namespace qvgen {

using namespace des;

namespace {

    constexpr int roundCount = 16;

    /// C or D before the next round.
    constexpr unsigned shifted(unsigned half, int count)
    {
        return ((half >> count) | (half << (28 - count))) & halfKey;
    }

    /// PC-2, into the two words of a round: see SetDESKey().
    void chooseRoundKey(quint64 cAndD, unsigned* words)
    {
        for (unsigned bit = 0; bit < permutedChoice2.size(); ++bit) {
            unsigned const box = bit / 6;
            unsigned const place = box / 2 * 8 + bit % 6;
            words[box % 2] |= unsigned((cAndD >> (permutedChoice2[bit] - 1)) & 1) << place;
        }
    }

    /// @p words is to hold 32 zeros.
    void makeSchedule(Block key, unsigned* words)
    {
        chooseKeyBits(key);
        for (int const shift : keyShifts) {
            key = {shifted(key.low, shift), shifted(key.high, shift)};
            chooseRoundKey(joined(key.low, key.high, 28), words);
            words += 2;
        }
    }

    /// The four bits of an S-box for six bits of input, whose first is the lowest.
    constexpr unsigned substituted(unsigned box, unsigned input)
    {
        unsigned const row = (input & 1) << 1 | input >> 5;
        unsigned const column = (input & 2) << 2 | (input & 4) | (input & 8) >> 2 | (input & 16) >> 4;
        return sBoxes[box][row * 16 + column];
    }

    /// What an S-box adds to the cipher function's result, P applied, as halves are kept.
    constexpr unsigned substitutedAndPermuted(unsigned box, unsigned input)
    {
        unsigned const output = substituted(box, input);
        unsigned result = 0;
        for (unsigned bit = 0; bit < permutation.size(); ++bit) {
            unsigned const source = permutation[bit] - 1U;
            if (source / 4 == box)
                result |= ((output >> (3 - source % 4)) & 1) << bit;
        }
        return turnedLeft(result, 1);
    }

    using Substitutions = std::array<std::array<unsigned, 64>, 8>;

    constexpr Substitutions makeSubstitutions()
    {
        Substitutions result = {};
        for (unsigned box = 0; box < result.size(); ++box) {
            for (unsigned input = 0; input < result[box].size(); ++input)
                result[box][input] = substitutedAndPermuted(box, input);
        }
        return result;
    }

    constexpr Substitutions substitutions = makeSubstitutions();

    /// Exchanges inputs of S-boxes with those of the S-boxes four further on, where the salt says so.
    constexpr unsigned salted(unsigned inputs, unsigned saltBits)
    {
        unsigned const difference = (inputs ^ (inputs >> 16)) & saltBits;
        return inputs ^ difference ^ (difference << 16);
    }

    /// The cipher function f of a half and the two words of a round's key.
    inline unsigned cipherFunction(unsigned half, unsigned const* key, unsigned saltBits)
    {
        unsigned const first = salted(half, saltBits & sixBits) ^ key[0];
        unsigned const second = salted(turnedRight(half, 4), saltBits >> 6 & sixBits) ^ key[1];
        unsigned result = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            result |= substitutions[2 * i][(first >> (8 * i)) & sixBits];
            result |= substitutions[2 * i + 1][(second >> (8 * i)) & sixBits];
        }
        return result;
    }

    /// The two words of a round.
    constexpr unsigned const* keyOf(unsigned const* roundKeys, std::ptrdiff_t round)
    {
        return roundKeys + 2 * round;
    }

    /// 16 rounds over halves as they are kept, the exchange after the last included.
    void encrypt(Block& block, unsigned const* roundKeys, unsigned saltBits)
    {
        for (int round = 0; round < roundCount; round += 2)
            Crypt::DEncrypt(block.high, block.low, roundKeys, round, round + 1, saltBits);
        std::swap(block.low, block.high);
    }

    void decrypt(Block& block, unsigned const* roundKeys, unsigned saltBits)
    {
        for (int round = roundCount - 1; round > 0; round -= 2)
            Crypt::DEncrypt(block.high, block.low, roundKeys, round, round - 1, saltBits);
        std::swap(block.low, block.high);
    }

    Block fromBits(char const* bits)
    {
        Block block;
        for (int n = 1; n <= 64; ++n) {
            Block const bit = blockOfBit(n);
            unsigned const mask = 0U - (static_cast<unsigned>(bits[n - 1]) & 1U);
            block.low |= bit.low & mask;
            block.high |= bit.high & mask;
        }
        return block;
    }

    void toBits(Block const& block, char* bits)
    {
        for (int n = 1; n <= 64; ++n) {
            Block const bit = blockOfBit(n);
            bits[n - 1] = (block.low & bit.low) | (block.high & bit.high) ? 1 : 0;
        }
    }

} // namespace

Crypt::sched::~sched()
{
    OPENSSL_cleanse(this, sizeof(*this));
}

unsigned Crypt::FourBytesToInt(QByteArray const& bytes, unsigned offset)
{
    unsigned value = 0;
    for (int i = 3; i >= 0; --i) {
        quint64 const at = quint64(offset) + unsigned(i);
        value = value << 8 | (at < unsigned(bytes.size()) ? static_cast<uchar>(bytes[int(at)]) : 0U);
    }
    return value;
}

void Crypt::IntToFourBytes(unsigned value, QByteArray& bytes, unsigned offset)
{
    for (quint64 at = offset; at < quint64(offset) + 4 && at < unsigned(bytes.size()); ++at) {
        bytes[int(at)] = static_cast<char>(value);
        value >>= 8;
    }
}

QVector<unsigned> Crypt::SetDESKey(QByteArray const& key)
{
    QVector<unsigned> schedule(2 * roundCount);
    makeSchedule({FourBytesToInt(key, 0), FourBytesToInt(key, 4)}, schedule.data());
    return schedule;
}

void Crypt::DEncrypt(
    unsigned& left, unsigned& right, unsigned const* roundKeys, int first, int second, unsigned saltBits)
{
    left ^= cipherFunction(right, keyOf(roundKeys, first), saltBits);
    right ^= cipherFunction(left, keyOf(roundKeys, second), saltBits);
}

std::array<unsigned, 2> Crypt::Body(QVector<unsigned> const& schedule, unsigned saltBits)
{
    // The initial permutation leaves zeros as they are; between two encryptions it undoes the final one.
    Block block;
    for (int i = 0; i < cryptCount; ++i)
        encrypt(block, schedule.constData(), saltBits);
    block = {turnedRight(block.low, 1), turnedRight(block.high, 1)};
    permuteFinally(block);
    return {block.low, block.high};
}

void Crypt::setkey_r(sched* schedule, char const* key)
{
    schedule->roundKeys.fill(0);
    makeSchedule(fromBits(key), schedule->roundKeys.data());
}

void Crypt::encrypt_r(sched* schedule, char* block, int decrypting)
{
    Block halves = fromBits(block);
    permuteInitially(halves);
    halves = {turnedLeft(halves.low, 1), turnedLeft(halves.high, 1)};
    (decrypting ? decrypt : encrypt)(halves, schedule->roundKeys.data(), schedule->saltBits);
    halves = {turnedRight(halves.low, 1), turnedRight(halves.high, 1)};
    permuteFinally(halves);
    toBits(halves, block);
}

} // namespace qvgen
