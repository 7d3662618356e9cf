// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/EncryptedFiles.h>

#include <support/Random.h>

#include <QDir>
#include <QSet>

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <new>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using Pair = std::array<char, 44>;

Pair pairOf(QByteArray const& key, QByteArray const& nonce)
{
    Pair pair = {};
    QByteArray const bytes = key + nonce;
    std::copy_n(bytes.constBegin(), std::min(bytes.size(), int(pair.size())), pair.begin());
    return pair;
}

/// Pairs that several processes note down, some of which are killed.
class SharedPairs {
public:
    explicit SharedPairs(size_t capacity)
        : m_size(sizeof(Counter) + capacity * sizeof(Slot))
        , m_memory(::mmap(nullptr, m_size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0))
        , m_count(new (m_memory) Counter(0))
        , m_slots(reinterpret_cast<Slot*>(static_cast<char*>(m_memory) + sizeof(Counter)))
    {
    }
    ~SharedPairs() { ::munmap(m_memory, m_size); }
    SharedPairs(SharedPairs const&) = delete;
    SharedPairs& operator=(SharedPairs const&) = delete;

    void add(Pair const& pair)
    {
        Slot& slot = m_slots[m_count->fetch_add(1)];
        slot.pair = pair;
        slot.isWhole.store(true, std::memory_order_release);
    }
    size_t count() const { return *m_count; }
    /// Sorted; without those that a process was killed over while it noted them.
    std::vector<Pair> pairs() const
    {
        std::vector<Pair> result;
        std::for_each(m_slots, m_slots + count(), [&](Slot const& slot) {
            if (slot.isWhole.load(std::memory_order_acquire))
                result.push_back(slot.pair);
        });
        std::sort(result.begin(), result.end());
        return result;
    }
    bool areDistinct() const
    {
        std::vector<Pair> const sorted = pairs();
        return std::adjacent_find(sorted.begin(), sorted.end()) == sorted.end();
    }
    int keyCount() const
    {
        QSet<QByteArray> keys;
        for (Pair const& pair : pairs())
            keys.insert(QByteArray(pair.data(), 32));
        return keys.size();
    }

private:
    using Counter = std::atomic<size_t>;
    struct Slot {
        Pair pair;
        std::atomic<bool> isWhole;
    };

    size_t m_size;
    void* m_memory;
    Counter* m_count;
    Slot* m_slots;
};

} // namespace

/// No key meets the same nonce twice, and nothing of what is secret is found in a file.
class tst_FileEncryptNonces : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { encrypted::useCheapKeys(); }
    void init();
    void cleanup();
    void aMillionPairs();
    void afterAFailedWrite();
    void copiedFileGoesOnUnderAnotherKey();
    void sessionIsRenewed_data();
    void sessionIsRenewed();
    void nothingPlainInTheFile_data();
    void nothingPlainInTheFile();

private:
    void writeSome(qv::FileEncrypt& file, int count);
    void writeInChild(qv::FileEncrypt& file, int count);
    void writeUntilKilled(qv::FileEncrypt& file, unsigned microseconds);
    QString name() const { return m_folder->filePath(QStringLiteral("log.qvl")); }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<SharedPairs> m_pairs;
};

void tst_FileEncryptNonces::init()
{
    m_folder = encrypted::folder();
    m_pairs = std::make_unique<SharedPairs>(2000000);
    qv::FileEncryptTesting::setNonceObserver(
        [this](QByteArray const& key, QByteArray const& nonce) { m_pairs->add(pairOf(key, nonce)); });
}

void tst_FileEncryptNonces::cleanup()
{
    qv::FileEncryptTesting::setNonceObserver({});
    qv::FileEncryptTesting::setSessionLimits(0, 0);
}

void tst_FileEncryptNonces::writeSome(qv::FileEncrypt& file, int count)
{
    for (int i = 0; i < count; ++i)
        QCOMPARE(file.write("x"), qint64(1));
}

/// The device is open already: the child inherits it.
void tst_FileEncryptNonces::writeInChild(qv::FileEncrypt& file, int count)
{
    pid_t const child = ::fork();
    QVERIFY(child >= 0);
    if (child == 0) {
        writeSome(file, count);
        ::_exit(QTest::currentTestFailed() ? 1 : 0);
    }
    // At the same time as the child.
    writeSome(file, count);
    int status = -1;
    QCOMPARE(::waitpid(child, &status, 0), child);
    QCOMPARE(status, 0);
}

void tst_FileEncryptNonces::writeUntilKilled(qv::FileEncrypt& file, unsigned microseconds)
{
    pid_t const child = ::fork();
    QVERIFY(child >= 0);
    if (child == 0) {
        for (;;)
            file.write(QByteArray(1000, 'x'));
    }
    ::usleep(microseconds);
    QCOMPARE(::kill(child, SIGKILL), 0);
    QCOMPARE(::waitpid(child, nullptr, 0), child);
}

void tst_FileEncryptNonces::aMillionPairs()
{
    size_t const wanted = size_t(support::rounds(300000, 1000000));
    QRandomGenerator random = support::generator();
    int round = 0;
    QByteArray olderCopy;
    for (; m_pairs->count() < wanted; ++round) {
        auto const file = encrypted::device(name());
        QVERIFY2(file->open(QIODevice::Append), qPrintable(file->errorString()));
        // A session has begun, which a fork copies.
        writeSome(*file, 1);
        int const count = 500 + int(random.bounded(1000u));
        switch (random.bounded(6)) {
        case 0:
            writeInChild(*file, count);
            break;
        case 1:
            writeUntilKilled(*file, random.bounded(3000u));
            writeSome(*file, count);
            break;
        case 2:
            QVERIFY(file->resize(file->size() / 2));
            writeSome(*file, count);
            break;
        case 3:
            writeSome(*file, count);
            file->close();
            QFile::resize(name(), QFileInfo(name()).size() - random.bounded(200));
            break;
        case 4:
            writeSome(*file, count);
            file->close();
            olderCopy = olderCopy.isEmpty() ? encrypted::rawBytes(name()) : olderCopy;
            encrypted::setRawBytes(name(), olderCopy);
            break;
        default:
            writeSome(*file, count);
        }
        QVERIFY(!QTest::currentTestFailed());
    }
    QVERIFY2(m_pairs->areDistinct(), qPrintable(support::seedNote(round)));
    QVERIFY(m_pairs->keyCount() >= round);
}

void tst_FileEncryptNonces::afterAFailedWrite()
{
    auto const file = encrypted::device(name());
    QVERIFY(file->open(QIODevice::ReadWrite));
    writeSome(*file, 3);
    QVERIFY(file->seek(1));
    QCOMPARE(file->write("refused"), qint64(-1));
    QVERIFY(file->seek(3));
    writeSome(*file, 3);
    QVERIFY(m_pairs->areDistinct());
}

void tst_FileEncryptNonces::copiedFileGoesOnUnderAnotherKey()
{
    auto const file = encrypted::device(name());
    QVERIFY(file->open(QIODevice::Append));
    writeSome(*file, 3);
    QString const copyName = m_folder->filePath(QStringLiteral("copy"));
    QVERIFY(QFile::copy(name(), copyName));
    auto const copy = encrypted::device(copyName);
    QVERIFY(copy->open(QIODevice::Append));
    writeSome(*file, 3);
    writeSome(*copy, 3);
    QCOMPARE(m_pairs->keyCount(), 2);
}

void tst_FileEncryptNonces::sessionIsRenewed_data()
{
    QTest::addColumn<int>("records");
    QTest::addColumn<int>("bytes");
    QTest::addColumn<int>("keys");
    // 30 writes of one byte. The session's own record counts as a record.
    QTest::newRow("never") << 1000 << 1000 << 1;
    QTest::newRow("every 10 records") << 10 << 1000 << 4;
    QTest::newRow("every 10 bytes") << 1000 << 10 << 3;
}

void tst_FileEncryptNonces::sessionIsRenewed()
{
    QFETCH(int, records);
    QFETCH(int, bytes);
    QFETCH(int, keys);
    qv::FileEncryptTesting::setSessionLimits(quint64(records), quint64(bytes));
    auto const file = encrypted::device(name());
    QVERIFY(file->open(QIODevice::Append));
    writeSome(*file, 30);
    QCOMPARE(m_pairs->keyCount(), keys);
    QCOMPARE(encrypted::readBack(name()).text, QByteArray(30, 'x'));
}

void tst_FileEncryptNonces::nothingPlainInTheFile_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("user") << QByteArray("operator-on-duty");
    QTest::newRow("password") << QByteArray("correct horse battery");
    QTest::newRow("entries") << QByteArray("<Entry Time=\"12:00\" Text=\"camera 17 switched off\"/>\n").repeated(50);
    QTest::newRow("eight equal bytes") << QByteArray(5000, ' ');
    QTest::newRow("zeros") << QByteArray(8, '\0').repeated(4);
}

void tst_FileEncryptNonces::nothingPlainInTheFile()
{
    QFETCH(QByteArray, text);
    auto const file
        = encrypted::device(name(), QStringLiteral("correct horse battery"), QStringLiteral("operator-on-duty"));
    QVERIFY(file->open(QIODevice::WriteOnly));
    QCOMPARE(file->write(text), qint64(text.size()));
    for (char const c : text.left(100))
        QVERIFY(file->putChar(c));
    file->close();
    QByteArray payloads;
    for (QByteArray const& record : encrypted::recordsOf(encrypted::rawBytes(name())))
        payloads += record.mid(44, record.size() - 64);
    QByteArray const searched = text.contains('\0') ? payloads : encrypted::rawBytes(name());
    for (int i = 0; i + 8 <= text.size(); ++i)
        QVERIFY2(!searched.contains(text.mid(i, 8)), text.mid(i, 8).constData());
}

QTEST_GUILESS_MAIN(tst_FileEncryptNonces)
#include "tst_FileEncryptNonces.moc"
