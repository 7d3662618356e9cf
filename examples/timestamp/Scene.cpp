// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Scene.h"

#include <QLinearGradient>
#include <QPainter>

#include <algorithm>

namespace {

constexpr int horizon = 130;
constexpr int carStep = 70; // pixels a frame

/// From a bright day (0) to night (3): the stamp must be legible on all of them.
QColor dimmed(QColor const& colour, int number)
{
    return colour.darker(100 + 130 * number);
}

void drawCar(QPainter& painter, QPoint const& place, int number)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(dimmed(QColor(0xc0, 0x40, 0x30), number));
    painter.drawRoundedRect(QRect(place, QSize(90, 24)), 6, 6);
    painter.drawRoundedRect(QRect(place + QPoint(18, -18), QSize(50, 24)), 8, 8);
    painter.setBrush(QColor(0x18, 0x18, 0x18));
    painter.drawEllipse(QRect(place + QPoint(10, 14), QSize(20, 20)));
    painter.drawEllipse(QRect(place + QPoint(62, 14), QSize(20, 20)));
}

} // namespace

QImage drawScene(int number)
{
    int const hour = std::clamp(number, 0, 3);
    QImage scene(sceneSize, QImage::Format_RGB32);
    QPainter painter(&scene);
    painter.setRenderHint(QPainter::Antialiasing);

    QLinearGradient sky(0, 0, 0, horizon);
    sky.setColorAt(0, dimmed(QColor(0x90, 0xb8, 0xe0), hour));
    sky.setColorAt(1, dimmed(QColor(0xf0, 0xf4, 0xf8), hour));
    painter.fillRect(0, 0, sceneSize.width(), horizon, sky);
    painter.fillRect(
        0, horizon, sceneSize.width(), sceneSize.height() - horizon, dimmed(QColor(0xd0, 0xcc, 0xc0), hour));
    painter.fillRect(250, 50, 130, horizon - 40, dimmed(QColor(0xb0, 0x98, 0x80), hour));
    painter.fillRect(280, 90, 70, horizon - 80, dimmed(QColor(0x60, 0x68, 0x70), hour));
    drawCar(painter, {20 + carStep * number, 156}, hour);
    return scene;
}
