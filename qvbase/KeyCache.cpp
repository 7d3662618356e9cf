// SPDX-License-Identifier: LGPL-2.1-or-later
#include <qvbase/KeyCache_p.h>

#include <openssl/rand.h>

#include <algorithm>

namespace qv::encrypted {

namespace {
    constexpr size_t maxEntries = 16;
}

KeyCache& KeyCache::instance()
{
    // Never destroyed: devices of static objects may still be opened.
    static KeyCache& cache = *new KeyCache;
    return cache;
}

KeyCache::KeyCache()
{
    RAND_bytes(m_fingerprintKey.data(), SecretKey::size());
}

Bytes32 KeyCache::fingerprint(Credentials const& credentials) const
{
    QByteArray joined = QByteArray::number(credentials.user.size()) + ' ' + credentials.user + credentials.password;
    Bytes32 const result = sha256Mac(m_fingerprintKey, joined);
    joined.fill('\0');
    return result;
}

/// The latest entry that is wanted.
template <typename Wanted> std::optional<KeyCache::Salted> KeyCache::find(Wanted wanted) const
{
    std::lock_guard<std::mutex> const guard(m_mutex);
    auto const entry = std::find_if(m_entries.rbegin(), m_entries.rend(), wanted);
    return entry == m_entries.rend() ? std::nullopt : std::make_optional(entry->key);
}

std::optional<KeyCache::Kek> KeyCache::kekFor(Credentials const& credentials, FileHeader const& header)
{
    auto const known
        = find([who = fingerprint(credentials), salt = header.salt(), cost = header.cost()](
                   Entry const& entry) { return entry.who == who && entry.key.salt == salt && entry.cost == cost; });
    if (known)
        return Kek{known->kek, true};
    auto const derived = deriveKek(credentials, header.salt(), header.cost());
    return derived ? std::make_optional(Kek{*derived, false}) : std::nullopt;
}

std::optional<KeyCache::Salted> KeyCache::kekForNewFile(Credentials const& credentials, ScryptCost cost)
{
    auto known = find(
        [who = fingerprint(credentials), cost](Entry const& entry) { return entry.who == who && entry.cost == cost; });
    if (known)
        return known;
    auto const salt = randomBytes32();
    auto const kek = salt ? deriveKek(credentials, *salt, cost) : std::nullopt;
    return kek ? std::make_optional(Salted{*salt, *kek}) : std::nullopt;
}

void KeyCache::remember(Credentials const& credentials, FileHeader const& header, SecretKey const& kek)
{
    Entry const fresh = {fingerprint(credentials), header.cost(), {header.salt(), kek}};
    std::lock_guard<std::mutex> const guard(m_mutex);
    bool const isKnown = std::any_of(m_entries.begin(), m_entries.end(), [&](Entry const& entry) {
        return entry.who == fresh.who && entry.key.salt == fresh.key.salt && entry.cost == fresh.cost;
    });
    if (isKnown)
        return;
    if (m_entries.size() == maxEntries)
        m_entries.erase(m_entries.begin());
    m_entries.push_back(fresh);
}

void KeyCache::clear()
{
    std::lock_guard<std::mutex> const guard(m_mutex);
    m_entries.clear();
}

} // namespace qv::encrypted
