// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/BooleanOperators.h>
#include <GenericUtilities/expressions/Comparator.h>
#include <GenericUtilities/properties/CommonProperties.h>
#include <GenericUtilities/properties/PropertySet.h>
#include <qvbase/Log.h>

#include <QTextStream>

#include <cstdio>

using namespace qvgen;

int main()
{
    PropertySet camera;
    camera.add(qvm::smart<BaseProperty>(new StringProperty("name", "as operators know it", "Gate 3")));
    camera.add(qvm::smart<BaseProperty>(new IntProperty("channel", "of the recorder, from 1", 7)));

    ExpressionHandle const condition = camera["channel"] >= 5 && camera["name"] != QString("Lobby");

    QTextStream out(stdout);
    out << condition.toString(Expression::StyleSql | Expression::StylePlaceholders) << '\n';
    bool const isFound = condition.evaluate(camera).toBool();
    return isFound && condition.collectPlaceholders().size() == 2 && qv::Log::instance()->logLevel() == 2 ? 0 : 1;
}
