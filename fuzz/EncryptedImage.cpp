// SPDX-License-Identifier: LGPL-2.1-or-later
#include "EncryptedImage.h"

#include <QMap>
#include <QtEndian>

#include <openssl/evp.h>
#include <openssl/hmac.h>

#include <algorithm>

// Written from docs/formats.md alone, so that a mistake in the library is not one here, too.
namespace fuzz {
namespace {

    constexpr int HeaderSize = 128;
    constexpr int RecordOverhead = 64; // 44 before the payload, 20 behind
    constexpr int PayloadOffset = 44;
    constexpr quint16 SessionType = 1;
    constexpr quint16 DataType = 2;
    constexpr int SaltSize = 32;

    template <class T> T number(QByteArray const& bytes, int offset)
    {
        return qFromLittleEndian<T>(bytes.constData() + offset);
    }

    template <class T> void put(QByteArray& bytes, int offset, T value)
    {
        qToLittleEndian(value, bytes.data() + offset);
    }

    quint32 crc32c(QByteArray const& bytes)
    {
        quint32 crc = 0xffffffff;
        for (char const byte : bytes) {
            crc ^= static_cast<quint8>(byte);
            for (int bit = 0; bit < 8; ++bit)
                crc = crc >> 1 ^ (crc & 1 ? 0x82f63b78 : 0);
        }
        return ~crc;
    }

    uchar* raw(QByteArray& bytes)
    {
        return reinterpret_cast<uchar*>(bytes.data());
    }
    uchar const* raw(QByteArray const& bytes)
    {
        return reinterpret_cast<uchar const*>(bytes.constData());
    }

    QByteArray hmac(QByteArray const& key, QByteArray const& text)
    {
        QByteArray result(32, '\0');
        HMAC(EVP_sha256(), key.constData(), key.size(), raw(text), static_cast<std::size_t>(text.size()), raw(result),
            nullptr);
        return result;
    }

    QByteArray hkdf(QByteArray const& key, QByteArray const& salt, QByteArray const& info)
    {
        return hmac(hmac(salt, key), info + '\x01');
    }

    /// Appends the tag to the text that it encrypts.
    QByteArray sealed(QByteArray const& key, quint64 nonce, QByteArray const& associated, QByteArray const& text)
    {
        QByteArray iv(12, '\0');
        put(iv, 0, nonce);
        QByteArray result(text.size(), '\0');
        QByteArray tag(16, '\0');
        int length = 0;
        EVP_CIPHER_CTX* const context = EVP_CIPHER_CTX_new();
        EVP_EncryptInit_ex(context, EVP_aes_256_gcm(), nullptr, raw(key), raw(iv));
        EVP_EncryptUpdate(context, nullptr, &length, raw(associated), associated.size());
        EVP_EncryptUpdate(context, raw(result), &length, raw(text), text.size());
        EVP_EncryptFinal_ex(context, raw(tag), &length);
        EVP_CIPHER_CTX_ctrl(context, EVP_CTRL_AEAD_GET_TAG, tag.size(), tag.data());
        EVP_CIPHER_CTX_free(context);
        return result + tag;
    }

    /// Goes through the bytes from front to end, and puts each piece right on the way.
    class Repairer {
    public:
        Repairer(QByteArray const& bytes, unsigned repairs)
            : m_repairs(repairs)
        {
            m_image.bytes = bytes;
        }

        EncryptedImage run()
        {
            if (m_image.bytes.size() < HeaderSize)
                return m_image;
            repairHeader();
            while (m_repairs & RepairChecksums && repairRecord())
                ;
            if (repairs(RepairEnd))
                m_image.bytes.truncate(m_offset);
            m_image.arePlacesRight = repairs(RepairPlaces);
            m_image.isWhole = (m_repairs & RepairAll) == RepairAll && !m_image.asksTooMuch && m_isUsual
                && !m_followsSession && m_offset == m_image.bytes.size();
            return m_image;
        }

    private:
        bool repairs(Repair which) const { return m_repairs & which; }

        void repairHeader()
        {
            QByteArray& bytes = m_image.bytes;
            bytes.replace(0, 8, "\x89\x41\x4c\x45\x0d\x0a\x1a\x0a", 8);
            if (repairs(RepairPlaces)) {
                put<quint16>(bytes, 8, 1);
                put<quint32>(bytes, 12, HeaderSize);
            }
            bool const isGranted = limitCost();
            m_image.asksTooMuch = !isGranted && repairs(RepairChecksums); // Else it may count as torn.
            if (isGranted && repairs(RepairSecrets))
                repairHeaderSecret();
            m_chain = bytes.mid(108, 16);
            if (repairs(RepairChecksums))
                put(bytes, 124, crc32c(bytes.left(124)));
        }

        /// False for more than is ever granted, and leaves it so.
        bool limitCost()
        {
            auto const logN = number<quint32>(m_image.bytes, 16);
            auto const r = number<quint32>(m_image.bytes, 20);
            auto const p = number<quint32>(m_image.bytes, 24);
            m_isUsual = logN > 0 && r > 0 && p > 0;
            if (logN > 17 || r > 8 || p > 8)
                return false;
            put(m_image.bytes, 16, std::min<quint32>(logN, 6));
            return true;
        }

        void repairHeaderSecret()
        {
            QByteArray& bytes = m_image.bytes;
            QByteArray const salt = bytes.mid(28, 32) + imageUser;
            QByteArray const id = bytes.mid(60, 32);
            QByteArray kek(32, '\0');
            EVP_PBE_scrypt(imagePassword, 1, raw(salt), static_cast<std::size_t>(salt.size()),
                quint64{1} << number<quint32>(bytes, 16), number<quint32>(bytes, 20), number<quint32>(bytes, 24), 0,
                raw(kek), 32);
            bytes.replace(92, 32, hmac(hkdf(kek, id, "header"), bytes.left(92)));
            m_fileKey = hkdf(kek, id, "file");
        }

        /// False where no record fits any more.
        bool repairRecord()
        {
            int const room = m_image.bytes.size() - m_offset;
            bool const isFirst = m_sessions.isEmpty();
            int const least = RecordOverhead + (isFirst ? SaltSize : 1);
            if (room < least)
                return false;
            auto const wanted = number<quint32>(m_image.bytes, m_offset);
            int length = std::max(least, static_cast<int>(wanted % static_cast<quint32>(room + 1)));
            QByteArray record = m_image.bytes.mid(m_offset, length);
            // No device writes a session without data.
            bool const isSession = isFirst || (number<quint16>(record, 4) == SessionType && !m_followsSession);
            if (isSession && repairs(RepairPlaces) && length >= RecordOverhead + SaltSize)
                record.truncate(length = RecordOverhead + SaltSize);
            put(record, 0, static_cast<quint32>(length));
            if (repairs(RepairPlaces))
                repairPlace(record, isSession && length == RecordOverhead + SaltSize);
            put(record, 40, crc32c(record.left(40)));
            if (repairs(RepairSecrets))
                repairTag(record);
            put(record, length - 4, static_cast<quint32>(length));
            m_image.bytes.replace(m_offset, length, record);
            m_chain = record.mid(length - 20, 16);
            m_offset += length;
            ++m_index;
            return true;
        }

        void repairPlace(QByteArray& record, bool isSession)
        {
            if (isSession)
                m_session = static_cast<quint64>(m_offset);
            m_number = isSession ? 0 : m_number + 1;
            m_place = m_followsSession ? 1 : 0;
            m_followsSession = isSession;
            put<quint16>(record, 4, isSession ? SessionType : DataType);
            put<quint16>(record, 6, isSession ? quint16{0} : m_place);
            put(record, 8, m_index);
            put(record, 16, static_cast<quint64>(m_image.text.size()));
            put(record, 24, m_session);
            put(record, 32, m_number);
        }

        void repairTag(QByteArray& record)
        {
            int const payloadSize = record.size() - RecordOverhead;
            QByteArray const payload = record.mid(PayloadOffset, payloadSize);
            bool const isSession = number<quint16>(record, 4) == SessionType;
            if (isSession)
                m_sessions[static_cast<quint64>(m_offset)] = hkdf(m_fileKey, payload, "session");
            QByteArray const key = m_sessions.value(number<quint64>(record, 24), QByteArray(32, '\0'));
            QByteArray const associated = record.left(PayloadOffset) + m_chain + (isSession ? payload : QByteArray());
            QByteArray const result
                = sealed(key, number<quint64>(record, 32), associated, isSession ? QByteArray() : payload);
            record.replace(record.size() - 20 - (isSession ? 0 : payloadSize), result.size(), result);
            m_image.text += isSession ? QByteArray() : payload;
        }

        EncryptedImage m_image;
        unsigned m_repairs;
        bool m_isUsual = false;
        QByteArray m_fileKey;
        QByteArray m_chain;
        QMap<quint64, QByteArray> m_sessions;
        int m_offset = HeaderSize;
        quint64 m_index = 0;
        quint64 m_session = 0;
        quint64 m_number = 0;
        quint16 m_place = 0;
        bool m_followsSession = false;
    };

} // namespace

EncryptedImage repaired(QByteArray const& bytes, unsigned repairs)
{
    return Repairer(bytes, repairs).run();
}

EncryptedImage changed(EncryptedImage image, QByteArray const& changes)
{
    if (!image.isWhole)
        return image;
    QByteArray const original = image.bytes;
    for (int at = 0; at + 3 <= changes.size(); at += 3) {
        int const place = number<quint16>(changes, at) % image.bytes.size();
        image.bytes[place] = static_cast<char>(image.bytes.at(place) ^ changes.at(at + 2));
    }
    image.isChanged = image.bytes != original;
    image.isWhole = !image.isChanged;
    return image;
}

} // namespace fuzz
