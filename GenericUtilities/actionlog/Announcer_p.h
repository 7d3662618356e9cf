// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <deque>
#include <functional>

namespace qv {

/// What is to be told, in order. What comes up while receivers are being told waits until they were told all before it,
/// so that each of them sees one change at a time, whole.
///
/// Belongs to whoever holds the lock of the log.
class Announcer {
public:
    using Step = std::function<void()>;

    void add(Step step);
    /// An error met while receivers are being told of one is not told: one who logs each error would never end.
    void addError(Step step);
    /// Takes the steps one by one; within a step it does nothing.
    void run();

private:
    std::deque<Step> m_steps;
    bool m_isRunning = false;
    bool m_isTellingError = false;
};

} // namespace qv
