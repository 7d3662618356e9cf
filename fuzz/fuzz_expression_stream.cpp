// SPDX-License-Identifier: LGPL-2.1-or-later
#include "Input.h"

#include <GenericUtilities/expressions/Expression.h>
#include <GenericUtilities/properties/CommonProperties.h>
#include <GenericUtilities/properties/PropertySet.h>

using namespace qvgen;

/// Reads the bytes behind the first, which chooses the stream version, as a tree, and does with it what clients do.
namespace {

template <class Property, class Value> void add(PropertySet& set, char const* name, Value const& value)
{
    set.add(qvm::smart<BaseProperty>(new Property(QString::fromLatin1(name), QString(), value)));
}

PropertySet const& properties()
{
    static PropertySet const* const set = [] {
        auto* const made = new PropertySet;
        add<IntProperty>(*made, "age", 42);
        add<DoubleProperty>(*made, "rate", 12.5);
        add<StringProperty>(*made, "name", QStringLiteral("Lobby"));
        add<DateTimeProperty>(*made, "start", QDateTime(QDate(2020, 1, 2), QTime(3, 4), Qt::UTC));
        return made;
    }();
    return *set;
}

void use(ExpressionHandle const& tree)
{
    constexpr int allStyles = 0x1f | Expression::StyleNested;
    constexpr int someStyles[]
        = {0, Expression::StyleCode, Expression::StyleSql, Expression::StyleSql | Expression::StylePlaceholders,
            Expression::StyleSql | Expression::StyleOrderTerm, allStyles};
    bool isConstant = false;
    tree.evaluate(properties(), &isConstant);
    for (int const style : someStyles)
        tree.toString(static_cast<Expression::PrintStyle>(style));
    tree.collectPlaceholders();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    if (size == 0)
        return 0;
    int const version = fuzz::streamVersion(data[0]);
    auto const bytes = QByteArray(reinterpret_cast<char const*>(data) + 1, static_cast<int>(size) - 1);
    fuzz::Reading const reading = fuzz::read(bytes, version);
    use(reading.tree);
    fuzz::checkReading(reading, version);
    return 0;
}
