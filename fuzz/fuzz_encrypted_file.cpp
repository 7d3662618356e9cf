// SPDX-License-Identifier: LGPL-2.1-or-later
#include "EncryptedImage.h"
#include "Input.h"

#include <qvbase/FileEncrypt.h>
#include <qvbase/FileEncryptTesting_p.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QTemporaryDir>

#include <algorithm>

using qv::FileEncrypt;
using VerifyResult = qv::FileEncrypt::VerifyResult;
using fuzz::EncryptedImage;
using fuzz::require;

/// Takes the bytes behind the first for an encrypted file, of which the first byte says what is put right, and whether
/// the last bytes are taken for changes that somebody without the password makes in the end.
namespace {

constexpr uint8_t ChangesFollow = 16;
constexpr int ChangesBytes = 12;

/// The file under test, alone in a folder of its own; in memory where the system has such a place.
class Scene {
public:
    Scene()
        : m_dir((QFileInfo(memory).isWritable() ? memory : QDir::tempPath()) + "/encrypted_file-XXXXXX")
    {
    }

    QString path() const { return m_dir.filePath("log.qvl"); }

    void put(QByteArray const& bytes) const
    {
        for (QString const& name : QDir(m_dir.path()).entryList(QDir::Files))
            QFile::remove(m_dir.filePath(name));
        QFile file(path());
        require(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size(), "the input can be stored");
    }
    QByteArray bytes() const
    {
        QFile file(path());
        require(file.open(QIODevice::ReadOnly), "the file is there");
        return file.readAll();
    }

private:
    QString const memory = QStringLiteral("/dev/shm");
    QTemporaryDir m_dir;
};

class Device : public FileEncrypt {
public:
    explicit Device(Scene const& scene)
        : FileEncrypt(scene.path())
    {
        setFileUserPassword(fuzz::imageUser, fuzz::imagePassword);
    }
};

struct Reading {
    FileEncrypt::HeaderError headerError = FileEncrypt::NoHeaderError;
    bool isOpen = false;
    QByteArray text;
    qint64 size = -1;
    VerifyResult found;
};

Reading read(Scene const& scene)
{
    Reading reading;
    Device device(scene);
    QElapsedTimer timer;
    timer.start();
    reading.isOpen = device.open(QIODevice::ReadOnly);
    require(timer.elapsed() < 2000, "a file is opened or refused in no time");
    reading.headerError = device.headerError();
    reading.text = reading.isOpen ? device.readAll() : QByteArray();
    reading.size = reading.isOpen ? device.size() : -1;
    reading.found = device.verify();
    return reading;
}

void checkReading(EncryptedImage const& image, Reading const& reading)
{
    require(reading.isOpen || reading.headerError != FileEncrypt::NoHeaderError, "a file that is there can be opened");
    require(reading.isOpen || reading.found.result == VerifyResult::HeaderRefused, "verify() refuses what open() does");
    if (reading.isOpen && reading.found.result == VerifyResult::Intact)
        require(reading.text.size() == reading.size, "an intact file is read to its end");
    if (image.isWhole) {
        require(reading.isOpen && reading.found.result == VerifyResult::Intact, "a whole file is intact");
        require(reading.text == image.text, "a whole file is read as written");
    }
    if (image.isChanged) {
        require(reading.found.result != VerifyResult::Intact, "a change is noticed");
        require(image.text.startsWith(reading.text), "what is read was written");
    }
    if (image.asksTooMuch)
        require(!reading.isOpen, "too much key derivation is refused");
}

void checkSeeking(Scene const& scene, QByteArray const& text)
{
    Device device(scene);
    require(device.open(QIODevice::ReadOnly), "a file can be opened again");
    for (int position = text.size(); position >= 0; position -= 1 + text.size() / 7) {
        require(device.seek(position), "every place can be sought");
        require(device.read(16) == text.mid(position, 16), "what stands at a place is what was read in order");
    }
}

/// An appending device looks at the end of the file only: damage in its midst stays what it was.
void checkDamageStays(Scene const& scene, EncryptedImage const& image, Reading const& before)
{
    Reading const after = read(scene);
    require(after.found.result == VerifyResult::RecordDamaged, "damage stays damage");
    require(after.found.offset == before.found.offset, "damage stays where it was");
    // Records that lie about their place, as only the owner of the password could make them, lie about the size, too.
    if (image.arePlacesRight)
        require(after.text == before.text, "what stood before the damage stands there still");
}

void checkAppending(Scene const& scene, EncryptedImage const& image, Reading const& before)
{
    Device device(scene);
    bool const isWritten = device.open(QIODevice::WriteOnly | QIODevice::Append) && device.write("more") == 4;
    device.close();
    if (!isWritten) {
        require(!before.isOpen || before.found.result == VerifyResult::RecordDamaged,
            "what is not damaged can be extended");
        require(scene.bytes() == image.bytes, "a refused file is left as it is");
        return;
    }
    require(before.isOpen, "who may write may read");
    if (before.found.result == VerifyResult::RecordDamaged)
        return checkDamageStays(scene, image, before);
    Reading const after = read(scene);
    require(after.found.result == VerifyResult::Intact, "an extended file is intact");
    require(after.text == before.text + "more", "what was there is kept, in order, once");
}

void checkShortening(Scene const& scene, QByteArray const& text)
{
    Device device(scene);
    int const size = text.size() / 2;
    if (!device.open(QIODevice::ReadWrite) || !device.resize(size))
        return;
    device.close();
    Reading const after = read(scene);
    require(after.found.result == VerifyResult::Intact, "a shortened file is intact");
    require(after.text == text.left(size), "a shortened file holds its beginning");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    static Scene const scene;
    if (size == 0)
        return 0;
    qv::FileEncryptTesting::setScryptCost(4, 1, 1);
    auto const bytes = QByteArray(reinterpret_cast<char const*>(data) + 1, static_cast<int>(size) - 1);
    EncryptedImage const image = data[0] & ChangesFollow
        ? fuzz::changed(
            fuzz::repaired(bytes.chopped(std::min(ChangesBytes, bytes.size())), data[0]), bytes.right(ChangesBytes))
        : fuzz::repaired(bytes, data[0]);
    scene.put(image.bytes);
    Reading const reading = read(scene);
    require(scene.bytes() == image.bytes, "reading changes nothing");
    checkReading(image, reading);
    if (reading.isOpen && reading.found.result == VerifyResult::Intact)
        checkSeeking(scene, reading.text);
    checkAppending(scene, image, reading);
    scene.put(image.bytes);
    if (reading.found.result == VerifyResult::Intact)
        checkShortening(scene, reading.text);
    return 0;
}
