// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <qvbase/Export.h>

#include <QByteArray>
#include <QtGlobal>

#include <functional>

/// Hooks for tests of qv::FileEncrypt, process wide, not guarded: set them before a device is opened.
namespace qv::FileEncryptTesting {

/// Cost of the key derivation in files made from now on; it is stored in them. Tests take logN 4, r 1, p 1.
QVBASE_EXPORT void setScryptCost(quint32 logN, quint32 r, quint32 p);

/// Where salts and ids come from, instead of the system's random numbers; an empty function restores those.
using RandomSource = std::function<void(uchar* bytes, int count)>;
QVBASE_EXPORT void setRandomSource(RandomSource source);

/// Is told the key (32 bytes) and nonce (12 bytes) of every record that is sealed, before it is.
using NonceObserver = std::function<void(QByteArray const& key, QByteArray const& nonce)>;
QVBASE_EXPORT void setNonceObserver(NonceObserver observer);

/// After how many records or plain bytes a session is renewed; 0 restores the built-in limits.
QVBASE_EXPORT void setSessionLimits(quint64 records, quint64 bytes);

/// How long a device waits for the lock of a file; 0 restores the built-in limit.
QVBASE_EXPORT void setLockWait(int milliseconds);

/// Forgets derived keys, as a new process has none.
QVBASE_EXPORT void clearKeyCache();

} // namespace qv::FileEncryptTesting
