// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/Export.h>

#include <QSettings>
#include <QString>
#include <QVariant>

#include <memory>
#include <string>

namespace qv {

/// Root of the interfaces that are asked for by the text that identifies them.
class GENERICUTILITIES_EXPORT IInterface {
public:
    /// "qv::IInterface".
    static std::string const ID;

    IInterface() = default;
    IInterface(IInterface const&) = delete;
    IInterface& operator=(IInterface const&) = delete;
    virtual ~IInterface();

    /// This object where @p id is ID to the letter, else null. The object stays its owner's.
    virtual IInterface* getInterface(std::string const& id);
    virtual IInterface const* getInterface(std::string const& id) const;
};

/// Where objects save themselves to and load themselves from: keyed values in groups and arrays, as QSettings has them.
class GENERICUTILITIES_EXPORT IPersistDestination : public IInterface {
public:
    ~IPersistDestination() override;

    virtual void beginGroup(QString const& prefix) = 0;
    virtual void endGroup() = 0;
    virtual void beginWriteArray(QString const& prefix, int size) = 0;
    /// The number of elements; 0 for an array that is not there.
    virtual int beginReadArray(QString const& prefix) = 0;
    virtual void endArray() = 0;
    /// From 0.
    virtual void setArrayIndex(int i) = 0;
    virtual void setValue(QString const& key, QVariant const& value) = 0;
    virtual QVariant value(QString const& key, QVariant const& defaultValue) const = 0;
    virtual void remove(QString const& key) = 0;
    virtual bool contains(QString const& key) const = 0;
    virtual void sync() = 0;
};

/// A destination backed by a QSettings: each operation is that of QSettings, and so are errors and thread-safety.
/// A file of settings is trusted as the program itself: QSettings follows lists within lists to any depth and believes
/// any length, so that who can write the file can end the process. Nobody but the user may be able to.
class GENERICUTILITIES_EXPORT Settings : public IPersistDestination {
public:
    /// The settings of the running application, for this user.
    Settings();
    Settings(QString const& fileName, QSettings::Format format);
    /// Works on @p settings, which stays the caller's, must not be null and must outlive this object.
    explicit Settings(QSettings* settings);
    ~Settings() override;

    QString fileName() const;

    void beginGroup(QString const& prefix) override;
    void endGroup() override;
    void beginWriteArray(QString const& prefix, int size) override;
    int beginReadArray(QString const& prefix) override;
    void endArray() override;
    void setArrayIndex(int i) override;
    void setValue(QString const& key, QVariant const& value) override;
    QVariant value(QString const& key, QVariant const& defaultValue) const override;
    void remove(QString const& key) override;
    bool contains(QString const& key) const override;
    void sync() override;

private:
    std::unique_ptr<QSettings> m_owned; // null where the object is the caller's
    QSettings* m_settings;
};

} // namespace qv
