// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/UserAccount_p.h>

#include <cerrno>
#include <cstddef>
#include <pwd.h>
#include <unistd.h>
#include <vector>

namespace qv {
namespace {

    // An entry holds six short texts; a directory service that asks for more than the last size is out of its mind.
    constexpr std::size_t FirstBufferSize = 1024;
    constexpr std::size_t LastBufferSize = 1024 * FirstBufferSize;

    // The first of the comma-separated fields. By old custom "&" in it stands for the login name, capitalised.
    QString fullNameOf(passwd const& entry)
    {
        QString const login = QString::fromUtf8(entry.pw_name);
        QString const field = QString::fromUtf8(entry.pw_gecos).section(QLatin1Char(','), 0, 0).trimmed();
        return QString(field).replace(QLatin1Char('&'), login.left(1).toUpper() + login.mid(1));
    }

    template <class Call> int ask(Call const& call, UserAccount& account, std::vector<char>& buffer)
    {
        passwd entry{};
        passwd* found = nullptr;
        int error = EINTR;
        while (error == EINTR)
            error = call(&entry, buffer.data(), buffer.size(), &found);
        if (error == 0 && found)
            account = {QString::fromUtf8(entry.pw_name), fullNameOf(entry), QByteArray(entry.pw_dir)};
        return error == 0 && !found ? ENOENT : error;
    }

    template <class Call> int askWithRoom(Call const& call, UserAccount& account)
    {
        int error = ERANGE;
        for (std::size_t size = FirstBufferSize; error == ERANGE && size <= LastBufferSize; size *= 2) {
            std::vector<char> buffer(size);
            error = ask(call, account, buffer);
        }
        return error;
    }

} // namespace

int findUserAccount(QString const& name, UserAccount& account)
{
    if (name.contains(QChar::Null)) // The system would look up what stands before it.
        return ENOENT;
    QByteArray const bytes = name.toUtf8();
    return askWithRoom([&bytes](passwd* entry, char* buffer, std::size_t size,
                           passwd** found) { return getpwnam_r(bytes.constData(), entry, buffer, size, found); },
        account);
}

int findOwnUserAccount(UserAccount& account)
{
    return askWithRoom([](passwd* entry, char* buffer, std::size_t size,
                           passwd** found) { return getpwuid_r(geteuid(), entry, buffer, size, found); },
        account);
}

} // namespace qv
