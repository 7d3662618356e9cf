// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/settings/FeatureGroup.h>

#include <QtAlgorithms>

#include <utility>

namespace qv {

Feature::Feature(int id, QString name)
    : m_id(id)
    , m_name(std::move(name))
{
}

Feature::~Feature() = default;

UserGroup::UserGroup(int id, QString name)
    : m_id(id)
    , m_name(std::move(name))
{
}

UserGroup::~UserGroup() = default;

FeatureGroup::FeatureGroup(int id, QString name, QString description)
    : m_id(id)
    , m_name(std::move(name))
    , m_description(std::move(description))
{
}

FeatureGroup::~FeatureGroup()
{
    if (m_ownsFeatures)
        qDeleteAll(m_features);
}

void FeatureGroup::addFeature(Feature* feature)
{
    if (feature)
        m_features[feature->id()] = feature;
}

} // namespace qv
