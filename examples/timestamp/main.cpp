// SPDX-License-Identifier: LGPL-2.1-or-later
// Stamps the time into frame after frame of a small image sequence and writes the frames side by side into one PNG.
// FrameStamp.cpp has what matters: glyphs of qv::CText2Image on a frame. Run it with --help.

#include "FrameStamp.h"
#include "Scene.h"

#include <GenericUtilities/util/TimeConversions.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QPainter>
#include <QTextStream>

namespace {

constexpr int frameCount = 4;
constexpr int columns = 2;
constexpr quint64 frameInterval = 250000; // microseconds

/// The sequence, row by row.
QImage stampedSequence(quint64 begin)
{
    QImage sheet(columns * sceneSize.width(), frameCount / columns * sceneSize.height(), QImage::Format_RGB32);
    QPainter painter(&sheet);
    for (int i = 0; i < frameCount; ++i) {
        QImage frame = drawScene(i);
        stampTime(frame, begin + quint64(i) * frameInterval);
        painter.drawImage(i % columns * sceneSize.width(), i / columns * sceneSize.height(), frame);
    }
    return sheet;
}

int fail(QString const& message)
{
    QTextStream(stderr) << "timestamp: " << message << Qt::endl;
    return 2;
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication const application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("timestamp"));
    QCoreApplication::setApplicationVersion(QStringLiteral(TIMESTAMP_VERSION));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Stamps the time into four small frames and writes them as a PNG."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("file"), QStringLiteral("The PNG to be written."));
    QCommandLineOption const beginOption(QStringLiteral("begin"),
        QStringLiteral("Time of the first frame in microseconds since 1970 UTC, instead of now."),
        QStringLiteral("microseconds"));
    parser.addOption(beginOption);
    parser.process(application);

    if (parser.positionalArguments().size() != 1)
        return fail(QStringLiteral("name one file to be written"));
    bool isNumber = true;
    quint64 const begin
        = parser.isSet(beginOption) ? parser.value(beginOption).toULongLong(&isNumber) : qv::currentFrameTime();
    if (!isNumber)
        return fail(QStringLiteral("--begin is a number of microseconds"));
    QString const file = parser.positionalArguments().constFirst();
    if (!stampedSequence(begin).save(file, "PNG"))
        return fail(QStringLiteral("'%1' cannot be written").arg(file));
    return 0;
}
