// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/settings/Persistable.h>
#include <GenericUtilities/settings/Settings.h>
#include <qvbase/Log.h>

#include <support/VirtualSlots.h>

#include <QTemporaryDir>
#include <QtTest>

#include <sstream>
#include <streambuf>
#include <thread>

namespace {

constexpr int warning = 2;

enum Operation { Load, Save };

class Derived : public qv::Persistable { };

/// A class that does what it is asked for.
class Counter : public qv::Persistable {
public:
    void load(qv::IPersistDestination* destination) override
    {
        m_count = destination->value(QStringLiteral("Count"), 0).toInt();
    }
    void save(qv::IPersistDestination* destination) override
    {
        destination->setValue(QStringLiteral("Count"), m_count);
    }

    int m_count = 0;
};

/// Looks at each piece that is written, and at each flush, whether another thread could take the log's mutex.
class MutexWatch : public std::streambuf {
public:
    int flushes = 0;
    bool isAlwaysHeld = true;

protected:
    std::streamsize xsputn(char const*, std::streamsize count) override
    {
        look();
        return count;
    }
    int_type overflow(int_type character) override
    {
        look();
        return character;
    }
    int sync() override
    {
        look();
        ++flushes;
        return 0;
    }

private:
    void look()
    {
        std::thread([this] {
            qv::Mutex& mutex = qv::Log::instance()->mutex();
            if (!mutex.tryLock())
                return;
            mutex.unlock();
            isAlwaysHeld = false;
        }).join();
    }
};

void run(qv::Persistable& object, Operation operation, qv::IPersistDestination* destination)
{
    if (operation == Load)
        object.load(destination);
    else
        object.save(destination);
}

} // namespace

Q_DECLARE_METATYPE(Operation)

class tst_Persistable : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_log.str({});
        m_log.width(0);
        qv::Log::instance()->setStream(warning, &m_log);
        qv::Log::instance()->setLogLevel(warning);
    }
    void cleanup()
    {
        qv::Log::instance()->setStream(warning, nullptr);
        qv::Log::instance()->setLogLevel(warning);
    }

    void defaultsComplain_data();
    void defaultsComplain();
    void complaintNeedsStreamAndLevel_data();
    void complaintNeedsStreamAndLevel();
    void complaintKeepsStreamWidth();
    void complaintIsOneLineUnderTheMutex();
    void defaultsLeaveTheDestinationUntouched();
    void nullDestinationIsNotTouched();
    void overridesAreCalled();
    void operationsKeepTheirSlots();

private:
    std::ostringstream m_log;
};

void tst_Persistable::defaultsComplain_data()
{
    QTest::addColumn<bool>("derived");
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<QByteArray>("line");
    QByteArray const load = "WARNING: You should overwrite Persistable::load for class PN2qv11PersistableE\n";
    QByteArray const save = "WARNING: You should overwrite Persistable::save for class PN2qv11PersistableE\n";
    QTest::newRow("load of the base") << false << Load << load;
    QTest::newRow("save of the base") << false << Save << save;
    QTest::newRow("load names the base in a derived class, too") << true << Load << load;
    QTest::newRow("save names the base in a derived class, too") << true << Save << save;
}

void tst_Persistable::defaultsComplain()
{
    QFETCH(bool, derived);
    QFETCH(Operation, operation);
    qv::Persistable base;
    Derived other;
    run(derived ? other : base, operation, nullptr);
    QTEST(QByteArray::fromStdString(m_log.str()), "line");
}

void tst_Persistable::complaintNeedsStreamAndLevel_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<bool>("hasStream");
    QTest::addColumn<bool>("isWritten");
    QTest::newRow("debug") << 0 << true << true;
    QTest::newRow("information") << 1 << true << true;
    QTest::newRow("warning") << 2 << true << true;
    QTest::newRow("errors only") << 3 << true << false;
    QTest::newRow("nothing at all") << 4 << true << false;
    QTest::newRow("silenced") << 0 << false << false;
}

void tst_Persistable::complaintNeedsStreamAndLevel()
{
    QFETCH(int, level);
    QFETCH(bool, hasStream);
    qv::Log::instance()->setLogLevel(level);
    qv::Log::instance()->setStream(warning, hasStream ? &m_log : nullptr);
    qv::Persistable().save(nullptr);
    QTEST(!m_log.str().empty(), "isWritten");
}

void tst_Persistable::complaintKeepsStreamWidth()
{
    m_log.width(200);
    qv::Persistable().load(nullptr);
    QCOMPARE(int(m_log.width()), 200);
    QVERIFY(m_log.str().rfind("WARNING: You", 0) == 0);
}

void tst_Persistable::complaintIsOneLineUnderTheMutex()
{
    MutexWatch watch;
    std::ostream log(&watch);
    qv::Log::instance()->setStream(warning, &log);
    qv::Persistable object;
    object.save(nullptr);
    object.load(nullptr);
    QCOMPARE(watch.flushes, 2);
    QVERIFY(watch.isAlwaysHeld);
}

void tst_Persistable::defaultsLeaveTheDestinationUntouched()
{
    QTemporaryDir folder;
    QSettings settings(folder.filePath(QStringLiteral("file.ini")), QSettings::IniFormat);
    settings.setValue(QStringLiteral("kept"), 1);
    qv::Settings destination(&settings);
    qv::Persistable object;
    object.save(&destination);
    object.load(&destination);
    QCOMPARE(settings.allKeys(), QStringList(QStringLiteral("kept")));
    QCOMPARE(settings.group(), QString());
}

void tst_Persistable::nullDestinationIsNotTouched()
{
    qv::Persistable object;
    object.save(nullptr);
    object.load(nullptr);
    QCOMPARE(QByteArray::fromStdString(m_log.str()).count('\n'), 2);
}

void tst_Persistable::overridesAreCalled()
{
    QTemporaryDir folder;
    qv::Settings destination(folder.filePath(QStringLiteral("file.ini")), QSettings::IniFormat);
    Counter saved;
    saved.m_count = 7;
    Counter loaded;
    run(saved, Save, &destination);
    run(loaded, Load, &destination);
    QCOMPARE(loaded.m_count, 7);
    QVERIFY(m_log.str().empty());
}

void tst_Persistable::operationsKeepTheirSlots()
{
    QCOMPARE(support::slotOf(&qv::Persistable::load), 2);
    QCOMPARE(support::slotOf(&qv::Persistable::save), 3);
}

QTEST_APPLESS_MAIN(tst_Persistable)
#include "tst_Persistable.moc"
