// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/util/Crypt.h>

#include <support/Random.h>

#include <QTest>

#include <array>
#include <atomic>
#include <functional>
#include <thread>
#include <vector>

using qvgen::Crypt;

namespace {

struct Known {
    char const* password;
    char const* hash; // begins with the salt
};

constexpr Known knowns[] = {
    {"p", "ab8Smhzf5D4wA"},
    {"", "SDbsugeBiC58A"},
    {"password", "abJnggxhB/yWI"},
    {"rasmuslerdorf", "rl.3StKT.4T8M"},
    {"U*U***U", "CCX.K.MFy4Ois"},
    {"U*U***U*", "CC4rMpbg9AMZ."},
    {"U*U*U*U*", "CCNf8Sbh3HDfQ"},
    {"*U*U*U*U", "XXxzOu6maQKqQ"},
};

bool vectorFormHolds(Known const& known)
{
    return Crypt::crypt(known.password, known.hash) == QLatin1String(known.hash);
}

bool reentrantFormHolds(Known const& known)
{
    std::array<char, 14> out = {};
    return QByteArray(Crypt::crypt_r(known.password, known.hash, out.data())) == known.hash;
}

bool saltlessFormHolds(Known const& known)
{
    return Crypt::crypt(known.password).startsWith(QLatin1String("nd"));
}

bool accessLineHolds(Known const& known)
{
    QStringList const fields = Crypt::cameraUserAccess("u", known.password, "g", "r").split(':');
    return fields.size() == 4 && Crypt::crypt(known.password, fields[2]) == fields[2];
}

} // namespace

Q_DECLARE_METATYPE(std::function<bool(Known const&)>)

/// Eight threads at once; meant for the thread sanitizer besides.
class tst_CryptThreads : public QObject {
    Q_OBJECT

private slots:
    void threadsDoNotDisturbEachOther_data();
    void threadsDoNotDisturbEachOther();
};

void tst_CryptThreads::threadsDoNotDisturbEachOther_data()
{
    QTest::addColumn<std::function<bool(Known const&)>>("holds");
    auto const row = [](char const* name, bool (*holds)(Known const&)) {
        QTest::newRow(name) << std::function<bool(Known const&)>(holds);
    };
    row("with salt", &vectorFormHolds);
    row("reentrant", &reentrantFormHolds);
    row("without salt", &saltlessFormHolds);
    row("access lines", &accessLineHolds);
}

void tst_CryptThreads::threadsDoNotDisturbEachOther()
{
    QFETCH(std::function<bool(Known const&)>, holds);
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (Known const& known : knowns) {
        threads.emplace_back([&] {
            for (int i = 0; i < support::rounds(2000); ++i)
                failures += holds(known) ? 0 : 1;
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    QCOMPARE(failures.load(), 0);
}

QTEST_APPLESS_MAIN(tst_CryptThreads)
#include "tst_CryptThreads.moc"
