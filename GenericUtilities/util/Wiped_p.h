// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <openssl/crypto.h>

#include <cstddef>
#include <utility>

namespace qvgen {

/// An array (QByteArray, QVector, std::array) that nobody else shares, overwritten with zeros when it dies.
template <class Array> class Wiped {
public:
    explicit Wiped(Array array)
        : m_array(std::move(array))
    {
        static_cast<void>(m_array.data()); // detaches what is shared
    }
    Wiped(Wiped const&) = delete;
    Wiped& operator=(Wiped const&) = delete;
    ~Wiped() { OPENSSL_cleanse(m_array.data(), std::size_t(m_array.size()) * sizeof(*m_array.data())); }

    Array& operator*() { return m_array; }
    Array const& operator*() const { return m_array; }
    Array* operator->() { return &m_array; }
    Array const* operator->() const { return &m_array; }

private:
    Array m_array;
};

} // namespace qvgen
