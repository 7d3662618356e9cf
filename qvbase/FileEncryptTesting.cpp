// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/FileEncryptTesting_p.h>

#include <qvbase/KeyCache_p.h>
#include <qvbase/NamedFile_p.h>

#include <utility>

namespace qv::FileEncryptTesting {

using encrypted::hooks;

void setScryptCost(quint32 logN, quint32 r, quint32 p)
{
    hooks().cost = {logN, r, p};
}

void setRandomSource(RandomSource source)
{
    hooks().random = std::move(source);
}

void setNonceObserver(NonceObserver observer)
{
    hooks().observer = std::move(observer);
}

void setSessionLimits(quint64 records, quint64 bytes)
{
    encrypted::Hooks const builtIn;
    hooks().sessionRecords = records ? records : builtIn.sessionRecords;
    hooks().sessionBytes = bytes ? bytes : builtIn.sessionBytes;
}

void setLockWait(int milliseconds)
{
    posix::lockWait() = milliseconds > 0 ? std::chrono::milliseconds(milliseconds) : posix::MaxLockWait;
}

void clearKeyCache()
{
    encrypted::KeyCache::instance().clear();
}

} // namespace qv::FileEncryptTesting
