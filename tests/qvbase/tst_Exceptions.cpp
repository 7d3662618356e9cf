// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/Exceptions.h>

#include <QTest>

#include <memory>
#include <stdexcept>

class tst_Exceptions : public QObject {
    Q_OBJECT

private slots:
    void message_data();
    void message();
    void causeDefaultsToNone();
    void causeCanBeThrownAgain();
    void causesChain();
    void unexpectedTypeKeepsItsTextsInOrder();
    void unexpectedTypeKeepsItsCause();
    void illegalArgument_data();
    void illegalArgument();
    void copyOutlivesTheOriginal();
    void assignmentTakesEverything();
    void caughtAsBase_data();
    void caughtAsBase();
};

namespace {

std::exception_ptr causeNamed(char const* text)
{
    return std::make_exception_ptr(std::runtime_error(text));
}

QByteArray whatOf(std::exception_ptr const& exception)
{
    try {
        std::rethrow_exception(exception);
    } catch (std::exception const& error) {
        return error.what();
    }
}

} // namespace

void tst_Exceptions::message_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<QByteArray>("what");
    QTest::newRow("null") << QString() << QByteArray("");
    QTest::newRow("empty") << "" << QByteArray("");
    QTest::newRow("ASCII") << "disk full" << QByteArray("disk full");
    QTest::newRow("two bytes in UTF-8") << QString(QChar(0xe9)) << QByteArray("\xc3\xa9");
    QTest::newRow("beyond the first plane") << QString::fromUcs4(U"\x1f4f7", 1) << QByteArray("\xf0\x9f\x93\xb7");
    QTest::newRow("percent signs") << "%s %1 %n" << QByteArray("%s %1 %n");
    QTest::newRow("long") << QString(100000, 'x') << QByteArray(100000, 'x');
}

void tst_Exceptions::message()
{
    QFETCH(QString, message);
    QFETCH(QByteArray, what);
    qv::ExceptionQt const error(message);
    QCOMPARE(error.message(), message);
    QCOMPARE(QByteArray(error.what()), what);
}

void tst_Exceptions::causeDefaultsToNone()
{
    QVERIFY(!qv::ExceptionQt("m").cause());
    QVERIFY(!qv::UnexpectedTypeException("n", "a", "e", "m").cause());
    QVERIFY(!qv::IllegalArgumentException("m").cause());
}

void tst_Exceptions::causeCanBeThrownAgain()
{
    qv::ExceptionQt const error("outer", causeNamed("inner"));
    QCOMPARE(whatOf(error.cause()), QByteArray("inner"));
}

void tst_Exceptions::causesChain()
{
    qv::ExceptionQt const middle("middle", causeNamed("innermost"));
    qv::ExceptionQt const outer("outer", std::make_exception_ptr(middle));
    QVERIFY_EXCEPTION_THROWN(std::rethrow_exception(outer.cause()), qv::ExceptionQt);
    try {
        std::rethrow_exception(outer.cause());
    } catch (qv::ExceptionQt const& error) {
        QCOMPARE(whatOf(error.cause()), QByteArray("innermost"));
    }
}

void tst_Exceptions::unexpectedTypeKeepsItsTextsInOrder()
{
    qv::UnexpectedTypeException const error("name", "actual", "expected", "message");
    QCOMPARE(error.name(), QString("name"));
    QCOMPARE(error.actualType(), QString("actual"));
    QCOMPARE(error.expectedType(), QString("expected"));
    QCOMPARE(error.message(), QString("message"));
    QCOMPARE(QByteArray(error.what()), QByteArray("message"));
}

void tst_Exceptions::unexpectedTypeKeepsItsCause()
{
    qv::UnexpectedTypeException const error("name", "actual", "expected", "message", causeNamed("inner"));
    QCOMPARE(whatOf(error.cause()), QByteArray("inner"));
}

void tst_Exceptions::illegalArgument_data()
{
    QTest::addColumn<QString>("argument");
    QTest::newRow("none") << QString();
    QTest::newRow("empty") << QString("");
    QTest::newRow("some") << QString("-1");
}

void tst_Exceptions::illegalArgument()
{
    QFETCH(QString, argument);
    qv::IllegalArgumentException const error("can't compare values", argument);
    QCOMPARE(error.message(), QString("can't compare values"));
    QCOMPARE(error.argument(), argument);
    QVERIFY(qv::IllegalArgumentException("m").argument().isNull());
}

void tst_Exceptions::copyOutlivesTheOriginal()
{
    auto original = std::make_unique<qv::UnexpectedTypeException>("n", "a", "e", "m", causeNamed("inner"));
    qv::UnexpectedTypeException const copy(*original);
    original.reset();
    QCOMPARE(QByteArray(copy.what()), QByteArray("m"));
    QCOMPARE(copy.expectedType(), QString("e"));
    QCOMPARE(whatOf(copy.cause()), QByteArray("inner"));
}

void tst_Exceptions::assignmentTakesEverything()
{
    qv::IllegalArgumentException error("old message", "old argument");
    error = qv::IllegalArgumentException("new message", "new argument");
    QCOMPARE(QByteArray(error.what()), QByteArray("new message"));
    QCOMPARE(error.message(), QString("new message"));
    QCOMPARE(error.argument(), QString("new argument"));
}

void tst_Exceptions::caughtAsBase_data()
{
    QTest::addColumn<int>("which");
    QTest::newRow("plain") << 0;
    QTest::newRow("unexpected type") << 1;
    QTest::newRow("illegal argument") << 2;
}

void tst_Exceptions::caughtAsBase()
{
    QFETCH(int, which);
    auto const thrower = [which] {
        if (which == 1)
            throw qv::UnexpectedTypeException("n", "a", "e", "m");
        if (which == 2)
            throw qv::IllegalArgumentException("m", "a");
        throw qv::ExceptionQt("m");
    };
    QVERIFY_EXCEPTION_THROWN(thrower(), qv::ExceptionQt);
    try {
        thrower();
    } catch (std::exception const& error) {
        QCOMPARE(QByteArray(error.what()), QByteArray("m"));
    }
}

QTEST_GUILESS_MAIN(tst_Exceptions)
#include "tst_Exceptions.moc"
