// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <QImage>

constexpr QSize sceneSize(416, 234); // pixels

/// A yard at different hours, with a car on its way: what a camera might see in the frame of that number.
QImage drawScene(int number);
