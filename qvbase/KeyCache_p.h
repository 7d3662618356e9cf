// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <qvbase/FileCipher_p.h>

#include <mutex>
#include <vector>

namespace qv::encrypted {

/// The keys that passwords of this process led to, so that a file reopened or begun anew costs no key derivation. Holds
/// no password; its keys are wiped as they leave.
class KeyCache {
public:
    static KeyCache& instance();

    struct Salted {
        Bytes32 salt;
        SecretKey kek;
    };

    struct Kek {
        SecretKey key;
        bool isKnown;
    };

    /// The key of a file's header; derived where it is not known. Nothing where the derivation fails.
    std::optional<Kek> kekFor(Credentials const& credentials, FileHeader const& header);
    /// A salt and its key for a new file: those last used with these credentials, else fresh ones.
    std::optional<Salted> kekForNewFile(Credentials const& credentials, ScryptCost cost);
    /// To be called once the key proved right.
    void remember(Credentials const& credentials, FileHeader const& header, SecretKey const& kek);
    void clear();

private:
    KeyCache();

    struct Entry {
        Bytes32 who;
        ScryptCost cost;
        Salted key;
    };
    template <typename Wanted> std::optional<Salted> find(Wanted wanted) const;
    Bytes32 fingerprint(Credentials const& credentials) const;

    mutable std::mutex m_mutex;
    /// Makes fingerprints worthless outside this process.
    SecretKey m_fingerprintKey;
    std::vector<Entry> m_entries;
};

} // namespace qv::encrypted
