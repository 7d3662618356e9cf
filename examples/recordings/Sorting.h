// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/expressions/Expression.h>
#include <GenericUtilities/properties/PropertySet.h>

#include <QStringList>
#include <QVector>

/// Sort terms from @p texts such as "size,-name": columns of @p recording by name, after a minus downwards. Throws
/// qv::IllegalArgumentException where one is none.
qvgen::ExpressionList sortTerms(QStringList const& texts, qvgen::PropertySet const& recording);

/// Sorts @p rows, which are in ascending order, by the terms of @p order as SQLite does: numbers by value, texts by the
/// bytes of their UTF-8.
void sortRows(QVector<int>& rows, qvgen::ExpressionList const& order, QVector<qvgen::PropertySet> const& recordings);
