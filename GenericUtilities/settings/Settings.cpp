// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/settings/Settings.h>

namespace qv {

std::string const IInterface::ID = "qv::IInterface";

IInterface::~IInterface() = default;

IInterface* IInterface::getInterface(std::string const& id)
{
    return id == ID ? this : nullptr;
}

IInterface const* IInterface::getInterface(std::string const& id) const
{
    // Through the other one, which is what derived classes override. It changes nothing.
    return const_cast<IInterface*>(this)->getInterface(id);
}

IPersistDestination::~IPersistDestination() = default;

Settings::Settings()
    : m_owned(std::make_unique<QSettings>())
    , m_settings(m_owned.get())
{
}

Settings::Settings(QString const& fileName, QSettings::Format format)
    : m_owned(std::make_unique<QSettings>(fileName, format))
    , m_settings(m_owned.get())
{
}

Settings::Settings(QSettings* settings)
    : m_settings(settings)
{
}

Settings::~Settings() = default;

QString Settings::fileName() const
{
    return m_settings->fileName();
}

void Settings::beginGroup(QString const& prefix)
{
    m_settings->beginGroup(prefix);
}

void Settings::endGroup()
{
    m_settings->endGroup();
}

void Settings::beginWriteArray(QString const& prefix, int size)
{
    m_settings->beginWriteArray(prefix, size);
}

int Settings::beginReadArray(QString const& prefix)
{
    return m_settings->beginReadArray(prefix);
}

void Settings::endArray()
{
    m_settings->endArray();
}

void Settings::setArrayIndex(int i)
{
    m_settings->setArrayIndex(i);
}

void Settings::setValue(QString const& key, QVariant const& value)
{
    m_settings->setValue(key, value);
}

QVariant Settings::value(QString const& key, QVariant const& defaultValue) const
{
    return m_settings->value(key, defaultValue);
}

void Settings::remove(QString const& key)
{
    m_settings->remove(key);
}

bool Settings::contains(QString const& key) const
{
    return m_settings->contains(key);
}

void Settings::sync()
{
    m_settings->sync();
}

} // namespace qv
