// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/properties/CommonProperties.h>

#include "Nodes.h"
#include "StreamBytes.h"

#include <QFile>
#include <QThread>

#include <ctime>
#include <exception>
#include <functional>
#include <memory>

/// Reads bytes of any origin and does with the result all that clients do, on a small stack.
namespace hostile {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool isInstrumented = true;
#else
inline constexpr bool isInstrumented = false;
#endif

#if defined(__OPTIMIZE__)
inline constexpr bool isOptimized = !isInstrumented;
#else
inline constexpr bool isOptimized = false;
#endif

/// What a tree of the highest depth must do with: 1 MiB in a build as users install it.
inline constexpr uint stackBytes = isOptimized ? 1U << 20 : 8U << 20;

inline qvgen::PropertySet const& properties()
{
    static qvgen::PropertySet const* const set = [] {
        auto* const made = new qvgen::PropertySet;
        nodes::add<qvgen::IntProperty>(*made, "age", 42);
        nodes::add<qvgen::DoubleProperty>(*made, "rate", 12.5);
        nodes::add<qvgen::StringProperty>(*made, "camera name", QStringLiteral("Lobby"));
        nodes::add<qvgen::DateTimeProperty>(*made, "start", QDateTime(QDate(2020, 1, 2), QTime(3, 4), Qt::UTC));
        return made;
    }();
    return *set;
}

/// Every combination of flags has a number below this.
inline constexpr int styleCount = 64;

inline qvgen::Expression::PrintStyle style(int number)
{
    int const flags = number % (styleCount / 2);
    return static_cast<qvgen::Expression::PrintStyle>(
        number % styleCount < styleCount / 2 ? flags : flags | qvgen::Expression::StyleNested);
}

inline void printInEveryStyle(qvgen::ExpressionHandle const& tree)
{
    for (int number = 0; number < styleCount; ++number)
        tree.toString(style(number));
}

inline void runOnSmallStack(std::function<void()> const& work)
{
    std::unique_ptr<QThread> const thread(QThread::create(work));
    thread->setStackSize(stackBytes);
    thread->start();
    thread->wait();
}

struct Outcome {
    QDataStream::Status status = QDataStream::Ok;
    bool isEmptyHandle = false;
    int depth = 0;
    bool wasThrown = false;
    bool comesBack = false; ///< written and read again it is the same
};

inline Outcome outcomeHere(QByteArray const& bytes, int version)
{
    Outcome outcome;
    try {
        stream::Reading const reading = stream::read(bytes, version);
        outcome.status = reading.status;
        outcome.isEmptyHandle = stream::isEmptyHandle(reading.tree);
        outcome.depth = reading.tree.constData()->depth();
        bool isConstant = false;
        reading.tree.evaluate(properties(), &isConstant);
        printInEveryStyle(reading.tree);
        reading.tree.collectPlaceholders();
        QByteArray const written = stream::written(reading.tree, version);
        outcome.comesBack = stream::written(stream::read(written, version).tree, version) == written;
    } catch (std::exception const&) {
        outcome.wasThrown = true;
    }
    return outcome;
}

inline Outcome outcome(QByteArray const& bytes, int version)
{
    Outcome result;
    runOnSmallStack([&] { result = outcomeHere(bytes, version); });
    return result;
}

inline bool isRefused(Outcome const& outcome)
{
    return outcome.status == QDataStream::ReadCorruptData && outcome.isEmptyHandle && !outcome.wasThrown;
}

inline bool isAccepted(Outcome const& outcome)
{
    return outcome.status == QDataStream::Ok && !outcome.wasThrown && outcome.comesBack;
}

inline bool isCutShort(Outcome const& outcome)
{
    return outcome.status == QDataStream::ReadPastEnd && !outcome.wasThrown;
}

} // namespace hostile
