// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/FileUserLogon.h>

#include <qvbase/UserAccount_p.h>

#include <mutex>
#include <system_error>
#include <utility>

namespace qv {
namespace {

    struct CurrentProvider {
        std::mutex mutex;
        FileUserLogon::Provider provider;
    };

    // Never destroyed, so that destructors of static objects may still log a user on.
    CurrentProvider& current()
    {
        static auto* const provider = new CurrentProvider;
        return *provider;
    }

    FileUserLogon::Provider currentProvider()
    {
        std::lock_guard<std::mutex> const lock(current().mutex);
        return current().provider;
    }

    std::unique_ptr<FileUserLogon> logonToSystem(
        QString const& user, QString const& /*password*/, QString* errorText, int* error)
    {
        UserAccount account;
        *error = findUserAccount(user, account);
        if (*error == 0)
            return std::make_unique<FileUserLogon>(account.name, account.fullName);
        *errorText = QString::fromStdString(std::generic_category().message(*error));
        return nullptr;
    }

} // namespace

FileUserLogon::FileUserLogon(QString firstName, QString secondName)
    : m_firstName(std::move(firstName))
    , m_secondName(std::move(secondName))
{
}

FileUserLogon::~FileUserLogon() = default;

std::unique_ptr<FileUserLogon> FileUserLogon::logon(
    QString const& user, QString const& password, QString* errorText, int* error)
{
    QString text;
    int number = 0;
    Provider const provider = currentProvider();
    auto result = provider ? provider(user, password, &text, &number) : logonToSystem(user, password, &text, &number);
    if (errorText)
        *errorText = result ? QString() : text;
    if (error)
        *error = result ? 0 : number;
    return result;
}

void FileUserLogon::setProvider(Provider provider)
{
    // The old one is destroyed outside of the lock: it may hold anything.
    std::unique_lock<std::mutex> lock(current().mutex);
    current().provider.swap(provider);
    lock.unlock();
}

} // namespace qv
