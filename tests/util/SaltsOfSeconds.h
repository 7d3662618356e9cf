// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QByteArrayList>

#include <cstdlib>
#include <ctime>

/// The salts that hashes made from @p first to @p last, in seconds since 1970, may bear: the low twelve bits of the
/// first random number that the second, as the seed, gives.
inline QByteArrayList saltsOfSeconds(std::time_t first, std::time_t last)
{
    QByteArray const alphabet = "./0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    QByteArrayList salts;
    for (std::time_t second = first; second <= last; ++second) {
        auto seed = static_cast<unsigned>(second);
        int const number = rand_r(&seed);
        salts += QByteArray().append(alphabet[number % 64]).append(alphabet[number / 64 % 64]);
    }
    return salts;
}
