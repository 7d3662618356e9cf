// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/EncryptedFiles.h>
#include <qvbase/EncryptedKeys.h>

#include <algorithm>
#include <array>
#include <malloc.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr char mask = 0x5A;

/// What is searched for must not stand in the searcher's own memory as it is.
QByteArray masked(QByteArray bytes)
{
    std::transform(bytes.cbegin(), bytes.cend(), bytes.begin(), [](char c) { return char(c ^ mask); });
    return bytes;
}

/// A password so long that whatever takes its place in memory leaves some of it, but masked.
QByteArray maskedPassword()
{
    QByteArray letters;
    for (int i = 0; i < 16; ++i)
        letters += char(('a' + 7 * i % 26) ^ mask);
    return letters.repeated(100);
}

/// As UTF-16, which is not what is searched for.
QString unmasked(QByteArray const& bytes)
{
    QString result;
    for (char const c : bytes)
        result += QLatin1Char(char(c ^ mask));
    return result;
}

struct Range {
    quint64 begin;
    quint64 end;
};

/// Whether what @p wanted masks stands there. The system copies what is looked at, since parts of it may be gone by
/// now.
bool isWithin(Range const& range, QByteArray const& wanted)
{
    static std::array<char, 65536> window;
    bool isFound = false;
    for (quint64 at = range.begin; at < range.end && !isFound; at += window.size() - quint64(wanted.size())) {
        iovec const local = {window.data(), window.size()};
        iovec const remote = {reinterpret_cast<void*>(at), std::min<size_t>(window.size(), range.end - at)};
        ssize_t const count = ::process_vm_readv(::getpid(), &local, 1, &remote, 1, 0);
        char* const end = window.data() + qMax(count, ssize_t(0));
        isFound = std::search(window.data(), end, wanted.begin(), wanted.end(), [](char found, char masked) {
            return char(found ^ mask) == masked;
        }) != end;
        // Or it were found here the next time.
        window.fill(0);
    }
    return isFound;
}

/// Heap and stack of this process as they are when this is made. holds() needs no memory of its own, which might take
/// the place of what it looks for.
class Memory {
public:
    Memory()
    {
        // Larger ones are a sanitizer's.
        constexpr quint64 maxSize = 64 << 20;
        for (QByteArray const& line : encrypted::rawBytes(QStringLiteral("/proc/self/maps")).split('\n')) {
            QList<QByteArray> const words = line.simplified().split(' ');
            bool const isData = words.size() == 5 || line.endsWith("[heap]") || line.endsWith("[stack]");
            if (!isData || !words[1].startsWith("rw"))
                continue;
            QList<QByteArray> const range = words[0].split('-');
            quint64 const begin = range[0].toULongLong(nullptr, 16);
            quint64 const end = range[1].toULongLong(nullptr, 16);
            if (end - begin <= maxSize)
                m_ranges.append(Range{begin, end});
        }
    }

    /// Whether what @p wanted masks stands in it.
    bool holds(QByteArray const& wanted) const
    {
        return std::any_of(
            m_ranges.begin(), m_ranges.end(), [&](Range const& range) { return isWithin(range, wanted); });
    }

private:
    QVector<Range> m_ranges;
};

QByteArray outputOf(int pipe)
{
    QFile file;
    return file.open(pipe, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle) ? file.readAll() : QByteArray();
}

} // namespace

/// Keys and passwords stay in memory no longer than they are needed.
class tst_FileEncryptSecrets : public QObject {
    Q_OBJECT

private slots:
    /// Memory once got is kept, to be looked at.
    void initTestCase() { ::mallopt(M_TRIM_THRESHOLD, 1 << 30); }
    void init();
    void cleanup() { qv::FileEncryptTesting::setRandomSource({}); }
    void keyOfAWriter();
    void keyOfAReader();
    void password();

private:
    static QByteArray maskedFileKey();
    QString name() const { return m_folder->filePath(QStringLiteral("log.qvl")); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_FileEncryptSecrets::init()
{
    encrypted::useCheapKeys();
    qv::FileEncryptTesting::clearKeyCache();
    qv::FileEncryptTesting::setRandomSource(encrypted::counting());
    m_folder = encrypted::folder();
}

/// Derived by another process, so that this one holds no other copy.
QByteArray tst_FileEncryptSecrets::maskedFileKey()
{
    int ends[2] = {};
    if (::pipe(ends) != 0)
        return {};
    pid_t const child = ::fork();
    if (child == 0) {
        QByteArray const key = masked(encrypted::fileKey());
        ::_exit(::write(ends[1], key.constData(), size_t(key.size())) == key.size() ? 0 : 1);
    }
    ::close(ends[1]);
    QByteArray const key = outputOf(ends[0]);
    int status = -1;
    return ::waitpid(child, &status, 0) == child && status == 0 ? key : QByteArray();
}

void tst_FileEncryptSecrets::keyOfAWriter()
{
    QByteArray const key = maskedFileKey();
    QCOMPARE(key.size(), 32);
    auto const file = encrypted::device(name());
    QVERIFY(file->open(QIODevice::Append));
    QCOMPARE(file->write("x"), qint64(1));
    Memory const memory;
    QVERIFY(memory.holds(key));
    file->close();
    QVERIFY(!memory.holds(key));
}

void tst_FileEncryptSecrets::keyOfAReader()
{
    QByteArray const key = maskedFileKey();
    QCOMPARE(key.size(), 32);
    encrypted::appendAll(name(), {"x"});
    auto const file = encrypted::device(name());
    QVERIFY(file->open(QIODevice::ReadOnly));
    QCOMPARE(file->readAll(), QByteArray("x"));
    Memory const memory;
    QVERIFY(memory.holds(key));
    file->close();
    QVERIFY(!memory.holds(key));
}

void tst_FileEncryptSecrets::password()
{
    QByteArray const password = maskedPassword();
    auto file = std::make_unique<qv::FileEncrypt>(name());
    file->setFileUserPassword(QStringLiteral("alice"), unmasked(password));
    QVERIFY(file->open(QIODevice::Append));
    QCOMPARE(file->write("x"), qint64(1));
    QByteArray const part = password.left(16);
    Memory const memory;
    QVERIFY(memory.holds(part));
    file.reset();
    QVERIFY(!memory.holds(part));
}

QTEST_GUILESS_MAIN(tst_FileEncryptSecrets)
#include "tst_FileEncryptSecrets.moc"
