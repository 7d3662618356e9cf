// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QRandomGenerator>
#include <QString>
#include <QtGlobal>

/// What tests with random input share.
namespace support {

/// How often a random test repeats: @p full times, or a tenth of it in an instrumented build. With
/// GENERICUTILITIES_FULL_TESTS set in the environment, always the full count.
inline int rounds(int full)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    return qEnvironmentVariableIsSet("GENERICUTILITIES_FULL_TESTS") ? full : full / 10;
#else
    return full;
#endif
}

/// A test too long for every day repeats @p usual times (as above), or, with GENERICUTILITIES_FULL_TESTS set, @p full
/// times. That outlasts Qt Test's patience: set QTEST_FUNCTION_TIMEOUT (milliseconds) as well.
inline int rounds(int usual, int full)
{
    return qEnvironmentVariableIsSet("GENERICUTILITIES_FULL_TESTS") ? full : rounds(usual);
}

/// The seed of a random test: GENERICUTILITIES_TEST_SEED from the environment, else the same in every run. A failing
/// test names it, see seedNote().
inline quint32 seed()
{
    bool isNumber = false;
    quint32 const chosen = qEnvironmentVariable("GENERICUTILITIES_TEST_SEED").toUInt(&isNumber);
    return isNumber ? chosen : 20200229;
}

/// For the message of a failing check.
inline QString seedNote(int round)
{
    return QStringLiteral("round %1 with GENERICUTILITIES_TEST_SEED=%2").arg(round).arg(seed());
}

inline QRandomGenerator generator()
{
    return QRandomGenerator(seed());
}

} // namespace support
