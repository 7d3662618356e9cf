// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/Log.h>

#include <QTemporaryFile>
#include <QTest>
#include <QTextStream>
#include <QVector>

#include <cstdio>
#include <iostream>
#include <limits>
#include <sstream>
#include <unistd.h>

namespace {

constexpr int warningLevel = 2;

/// What a piece of code writes to standard error.
template <class Write> QByteArray standardErrorOf(Write write)
{
    QTemporaryFile file;
    if (!file.open())
        return "no temporary file";
    std::fflush(stderr);
    int const saved = dup(STDERR_FILENO);
    dup2(file.handle(), STDERR_FILENO);
    write();
    std::fflush(stderr);
    dup2(saved, STDERR_FILENO);
    close(saved);
    file.seek(0);
    return file.readAll();
}

void levels()
{
    QTest::addColumn<int>("level");
    QTest::newRow("debug") << 0;
    QTest::newRow("info") << 1;
    QTest::newRow("warning") << 2;
    QTest::newRow("error") << 3;
}

void noLevels()
{
    QTest::addColumn<int>("level");
    QTest::newRow("below debug") << -1;
    QTest::newRow("above error") << 4;
    QTest::newRow("lowest number") << std::numeric_limits<int>::min();
    QTest::newRow("highest number") << std::numeric_limits<int>::max();
}

} // namespace

class tst_Log : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();
    void thereIsOneInstance();
    void levelStartsAtWarning();
    void setLogLevel();
    void prefix_data();
    void prefix();
    void streamStartsAtStandardError_data() { levels(); }
    void streamStartsAtStandardError();
    void setStreamConcernsItsLevelOnly_data() { levels(); }
    void setStreamConcernsItsLevelOnly();
    void nullStreamSilencesALevel_data() { levels(); }
    void nullStreamSilencesALevel();
    void unknownLevelHasNoStream_data() { noLevels(); }
    void unknownLevelHasNoStream();
    void textStreamReplacedByTheCallerStaysTheCallers();
    void streamsCanBeReachedUnderTheMutex();

private:
    // What a fresh process finds; restored after every test.
    int m_logLevel = -1;
    int m_logLevelQt = -1;
    QVector<std::ostream*> m_streams;
    QVector<QTextStream*> m_streamsQt;
};

void tst_Log::initTestCase()
{
    m_logLevel = qv::Log::instance()->logLevel();
    m_logLevelQt = qv::LogQt::instance()->logLevel();
    for (int level = 0; level < qv::Log::LevelCount; ++level) {
        m_streams << qv::Log::instance()->getStream(level);
        m_streamsQt << qv::LogQt::instance()->getStream(level);
    }
}

void tst_Log::cleanup()
{
    for (int level = 0; level < qv::Log::LevelCount; ++level) {
        qv::Log::instance()->setStream(level, m_streams[level]);
        qv::LogQt::instance()->setStream(level, m_streamsQt[level]);
    }
    qv::Log::instance()->setLogLevel(m_logLevel);
    qv::LogQt::instance()->setLogLevel(m_logLevelQt);
}

void tst_Log::thereIsOneInstance()
{
    QVERIFY(qv::Log::instance());
    QCOMPARE(qv::Log::instance(), qv::Log::instance());
    QVERIFY(qv::LogQt::instance());
    QCOMPARE(qv::LogQt::instance(), qv::LogQt::instance());
}

void tst_Log::levelStartsAtWarning()
{
    QCOMPARE(qv::Log::instance()->logLevel(), warningLevel);
    QCOMPARE(qv::LogQt::instance()->logLevel(), warningLevel);
}

void tst_Log::setLogLevel()
{
    qv::Log::instance()->setLogLevel(0);
    QCOMPARE(qv::Log::instance()->logLevel(), 0);
    QCOMPARE(qv::LogQt::instance()->logLevel(), warningLevel);
    qv::LogQt::instance()->setLogLevel(3);
    QCOMPARE(qv::LogQt::instance()->logLevel(), 3);
    QCOMPARE(qv::Log::instance()->logLevel(), 0);
}

void tst_Log::prefix_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<QString>("prefix");
    QTest::newRow("debug") << 0 << "DEBUG: ";
    QTest::newRow("info") << 1 << "INFO: ";
    QTest::newRow("warning") << 2 << "WARNING: ";
    QTest::newRow("error") << 3 << "ERROR: ";
    QTest::newRow("below debug") << -1 << "";
    QTest::newRow("above error") << 4 << "";
}

void tst_Log::prefix()
{
    QFETCH(int, level);
    QFETCH(QString, prefix);
    QCOMPARE(QString::fromStdString(qv::Log::instance()->pre(level)), prefix);
    QCOMPARE(qv::LogQt::instance()->pre(level), prefix);
}

void tst_Log::streamStartsAtStandardError()
{
    QFETCH(int, level);
    QCOMPARE(qv::Log::instance()->getStream(level), &std::cerr);
    QTextStream* const stream = qv::LogQt::instance()->getStream(level);
    QVERIFY(stream);
    QCOMPARE(standardErrorOf([=] { *stream << "a line" << Qt::endl; }), QByteArray("a line\n"));
}

void tst_Log::setStreamConcernsItsLevelOnly()
{
    QFETCH(int, level);
    std::ostringstream stream;
    qv::Log::instance()->setStream(level, &stream);
    for (int other = 0; other < qv::Log::LevelCount; ++other)
        QCOMPARE(qv::Log::instance()->getStream(other) == &stream, other == level);
    QString text;
    QTextStream textStream(&text);
    qv::LogQt::instance()->setStream(level, &textStream);
    for (int other = 0; other < qv::LogQt::LevelCount; ++other)
        QCOMPARE(qv::LogQt::instance()->getStream(other) == &textStream, other == level);
}

void tst_Log::nullStreamSilencesALevel()
{
    QFETCH(int, level);
    qv::Log::instance()->setStream(level, nullptr);
    qv::LogQt::instance()->setStream(level, nullptr);
    for (int other = 0; other < qv::Log::LevelCount; ++other) {
        QCOMPARE(!qv::Log::instance()->getStream(other), other == level);
        QCOMPARE(!qv::LogQt::instance()->getStream(other), other == level);
    }
}

void tst_Log::unknownLevelHasNoStream()
{
    QFETCH(int, level);
    QString text;
    QTextStream textStream(&text);
    qv::Log::instance()->setStream(level, &std::cout);
    qv::LogQt::instance()->setStream(level, &textStream);
    QVERIFY(!qv::Log::instance()->getStream(level));
    QVERIFY(!qv::LogQt::instance()->getStream(level));
}

void tst_Log::textStreamReplacedByTheCallerStaysTheCallers()
{
    QString text;
    {
        QTextStream stream(&text);
        qv::LogQt::instance()->setStream(warningLevel, &stream);
        *qv::LogQt::instance()->getStream(warningLevel) << qv::LogQt::instance()->pre(warningLevel) << "late";
        qv::LogQt::instance()->setStream(warningLevel, nullptr);
        stream << " but here";
    }
    QCOMPARE(text, QString("WARNING: late but here"));
}

void tst_Log::streamsCanBeReachedUnderTheMutex()
{
    qv::MutexLocker const locker(qv::Log::instance()->mutex());
    qv::MutexLocker const lockerQt(qv::LogQt::instance()->mutex());
    qv::Log::instance()->setStream(warningLevel, &std::cout);
    QCOMPARE(qv::Log::instance()->getStream(warningLevel), &std::cout);
    qv::LogQt::instance()->setStream(warningLevel, nullptr);
    QVERIFY(!qv::LogQt::instance()->getStream(warningLevel));
}

QTEST_GUILESS_MAIN(tst_Log)
#include "tst_Log.moc"
