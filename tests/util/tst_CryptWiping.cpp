// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/util/Crypt.h>

#include "DesBits.h"

#include <QTest>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <malloc.h>
#include <pthread.h>
#include <sys/mman.h>
#include <vector>

using qvgen::Crypt;

// What is released to the heap is searched on its way: this free() stands before that of the C library.
extern "C" void __libc_free(void*); // NOLINT: glibc's name

namespace {

QString const password = QStringLiteral("Xq7#vR2!");

/// What must not be left behind, eight bytes or more each.
std::vector<QByteArray> makeSecrets()
{
    QByteArray const text = password.toLatin1();
    QByteArray key = text;
    for (char& character : key)
        character = static_cast<char>(static_cast<uchar>(character) << 1);
    std::vector<QByteArray> secrets = {text, key, bitsOf(key)};
    secrets.emplace_back(reinterpret_cast<char const*>(password.utf16()), 16);
    QVector<unsigned> const words = Crypt::SetDESKey(key);
    for (int round = 0; round < 16; ++round)
        secrets.emplace_back(reinterpret_cast<char const*>(&words[2 * round]), 8);
    return secrets;
}

std::vector<QByteArray> const& secrets()
{
    static std::vector<QByteArray> const all = makeSecrets();
    return all;
}

bool holdsSecret(void const* memory, size_t size)
{
    auto const* const begin = static_cast<char const*>(memory);
    return std::any_of(secrets().begin(), secrets().end(), [&](QByteArray const& secret) {
        return std::search(begin, begin + size, secret.begin(), secret.end()) != begin + size;
    });
}

std::atomic<bool> isWatching{false};
std::atomic<int> leaksToHeap{0};

using Operation = std::function<void()>;

void* callOperation(void* operation)
{
    (*static_cast<Operation*>(operation))();
    return nullptr;
}

/// Stack for one thread, which outlives it.
class Stack {
public:
    Stack()
        : m_memory(mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))
    {
    }
    Stack(Stack const&) = delete;
    Stack& operator=(Stack const&) = delete;
    ~Stack() { munmap(m_memory, size); }

    bool run(Operation operation)
    {
        pthread_attr_t attributes;
        pthread_t thread = {};
        return pthread_attr_init(&attributes) == 0 && pthread_attr_setstack(&attributes, m_memory, size) == 0
            && pthread_create(&thread, &attributes, &callOperation, &operation) == 0
            && pthread_join(thread, nullptr) == 0;
    }
    bool holdsSecret() const { return ::holdsSecret(m_memory, size); }

private:
    static constexpr size_t size = 1 << 20;

    void* m_memory;
};

} // namespace

extern "C" void free(void* memory)
{
    if (memory && isWatching && holdsSecret(memory, malloc_usable_size(memory))) {
        ++leaksToHeap;
        std::memset(memory, 0, malloc_usable_size(memory)); // not to be found again by who gets this memory next
    }
    __libc_free(memory);
}

Q_DECLARE_METATYPE(Operation)

/// Reads what the operations leave behind on the stack of a thread and in memory that goes back to the heap.
class tst_CryptWiping : public QObject {
    Q_OBJECT

private slots:
    void searchFindsWhatIsLeft_data();
    void searchFindsWhatIsLeft();
    void nothingIsLeft_data();
    void nothingIsLeft();

private:
    /// Whether a secret was found on the stack, and in the heap.
    static QPair<bool, bool> leaks(Operation const& operation);
};

QPair<bool, bool> tst_CryptWiping::leaks(Operation const& operation)
{
    secrets(); // made before anyone watches
    operation(); // The dynamic linker, looking functions up at their first call, leaves registers on the stack.
    leaksToHeap = 0;
    Stack stack;
    isWatching = true;
    bool const hasRun = stack.run(operation);
    isWatching = false;
    bool const isOnStack = stack.holdsSecret();
    return {isOnStack || !hasRun, leaksToHeap > 0 || !hasRun};
}

void tst_CryptWiping::searchFindsWhatIsLeft_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<bool>("isOnStack");
    QTest::addColumn<bool>("isInHeap");

    QTest::newRow("nothing") << Operation([] {}) << false << false;
    QTest::newRow("schedule in the heap") << Operation([] { Crypt::SetDESKey(secrets()[1]); }) << false << true;
    QTest::newRow("bits on the stack") << Operation([] {
        char volatile bits[4096]; // deep enough not to be overwritten by the end of the thread
        std::copy(secrets()[2].begin(), secrets()[2].end(), bits);
    }) << true << false;
}

void tst_CryptWiping::searchFindsWhatIsLeft()
{
    QFETCH(Operation, operation);
    auto const found = leaks(operation);
    QTEST(found.first, "isOnStack");
    QTEST(found.second, "isInHeap");
}

void tst_CryptWiping::nothingIsLeft_data()
{
    QTest::addColumn<Operation>("operation");

    QTest::newRow("with salt") << Operation([] { Crypt::crypt(password, "ab"); });
    QTest::newRow("without salt") << Operation([] { Crypt::crypt(password); });
    QTest::newRow("reentrant") << Operation([] {
        std::array<char, 14> out = {};
        Crypt::crypt_r(secrets()[0].constData(), "ab", out.data());
    });
    QTest::newRow("schedule of the caller") << Operation([] {
        Crypt::sched schedule;
        Crypt::setkey_r(&schedule, secrets()[2].constData());
    });
    QTest::newRow("access line") << Operation([] { Crypt::cameraUserAccess("user", password, "label", "realm"); });
    QTest::newRow("digest of OpenSSL's") << Operation(
        [] { std::free(Crypt::md5_sql(secrets()[0].constData(), static_cast<unsigned long>(secrets()[0].size()))); });
    QTest::newRow("scrypt") << Operation([] { Crypt::hashPassword(password); });
    QTest::newRow("scrypt verified") << Operation(
        [] { Crypt::verifyPassword(password, "$scrypt$ln=4,r=1,p=1$c2FsdHNhbHQ$AAAAAAAAAAAAAAAAAAAAAA"); });
}

void tst_CryptWiping::nothingIsLeft()
{
    QFETCH(Operation, operation);
    auto const found = leaks(operation);
    QVERIFY(!found.first);
    QVERIFY(!found.second);
}

QTEST_APPLESS_MAIN(tst_CryptWiping)
#include "tst_CryptWiping.moc"
