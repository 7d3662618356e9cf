// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/VariantStream_p.h>

#include <GenericUtilities/expressions/Expression.h>
#include <GenericUtilities/expressions/PatternBounds_p.h>

#include <QDateTime>
#include <QRect>
#include <QRegExp>
#include <QStringList>

#include <algorithm>
#include <vector>

namespace qvgen {

namespace {

    constexpr int maxContainerDepth = 100;

    QVariant readValue(QDataStream& in, int containerDepth);

    void setCorrupt(QDataStream& in)
    {
        in.setStatus(QDataStream::ReadCorruptData);
    }

    bool isOk(QDataStream const& in)
    {
        return in.status() == QDataStream::Ok;
    }

    template <class Value> void readPlain(QDataStream& in, void* value, int)
    {
        in >> *static_cast<Value*>(value);
    }

    // Calls `readElement` as often as the stored count says, as long as there is something to read.
    template <class ReadElement> void readElements(QDataStream& in, ReadElement const& readElement)
    {
        quint32 count = 0;
        in >> count;
        for (quint32 i = 0; i < count && isOk(in); ++i)
            readElement();
    }

    void readStringList(QDataStream& in, void* value, int)
    {
        readElements(in, [&] {
            QString text;
            in >> text;
            static_cast<QStringList*>(value)->append(text);
        });
    }

    // Elements that may be containers themselves.
    template <class ReadElement> void readNested(QDataStream& in, int depth, ReadElement const& readElement)
    {
        if (depth >= maxContainerDepth)
            setCorrupt(in);
        else
            readElements(in, readElement);
    }

    void readList(QDataStream& in, void* value, int depth)
    {
        readNested(in, depth, [&] { static_cast<QVariantList*>(value)->append(readValue(in, depth + 1)); });
    }

    // Many keys of one hash value turn a hash, or a cast to one, into a list that is searched from end to end. The seed
    // of hashes does not prevent that: keys of one length collide for every seed or for none.
    template <class Map> bool areSpread(Map const& map)
    {
        constexpr std::size_t maxEqual = 100;
        auto const seed = static_cast<uint>(qGlobalQHashSeed());
        std::vector<uint> hashes;
        for (auto each = map.keyBegin(); each != map.keyEnd(); ++each)
            hashes.push_back(qHash(*each, seed));
        std::sort(hashes.begin(), hashes.end());
        for (std::size_t i = maxEqual; i < hashes.size(); ++i) {
            if (hashes[i] == hashes[i - maxEqual])
                return false;
        }
        return true;
    }

    void readMap(QDataStream& in, void* value, int depth)
    {
        auto& map = *static_cast<QVariantMap*>(value);
        readNested(in, depth, [&] {
            QString key;
            in >> key;
            map.insert(key, readValue(in, depth + 1));
        });
        if (!areSpread(map))
            setCorrupt(in);
    }

    void readHash(QDataStream& in, void* value, int depth)
    {
        QVariantMap map;
        readMap(in, &map, depth);
        auto& hash = *static_cast<QVariantHash*>(value);
        for (auto each = map.cbegin(); each != map.cend() && isOk(in); ++each)
            hash.insert(each.key(), each.value());
    }

    void readDateTimeInto(QDataStream& in, void* value, int)
    {
        *static_cast<QDateTime*>(value) = readDateTime(in);
    }

    bool isBounded(PatternShape const& shape)
    {
        return shape.isBounded() && Reading::allows(shape.bytes());
    }

    void readRegExp(QDataStream& in, void* value, int)
    {
        QString pattern;
        quint8 caseSensitive = 0;
        quint8 syntax = 0;
        quint8 isMinimal = 0;
        in >> pattern >> caseSensitive >> syntax >> isMinimal;
        if (!isOk(in))
            return;
        auto const patternSyntax = static_cast<QRegExp::PatternSyntax>(syntax);
        if (syntax > QRegExp::W3CXmlSchema11 || !isBounded(shapeOf(pattern, patternSyntax)))
            return setCorrupt(in);
        auto* const expression = static_cast<QRegExp*>(value);
        expression->setPattern(pattern);
        expression->setCaseSensitivity(caseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive);
        expression->setPatternSyntax(patternSyntax);
        expression->setMinimal(isMinimal);
        // The first copy compiles the pattern, in the original. Made here, no two threads do so at once.
        static_cast<void>(QRegExp(*expression));
    }

    struct StoredType {
        int type;
        // Reads into a default-constructed value of the type.
        void (*read)(QDataStream& in, void* value, int containerDepth);
    };

    // What a constant may be; any other type is refused.
    constexpr StoredType storedTypes[] = {
        {QMetaType::Bool, readPlain<bool>},
        {QMetaType::Int, readPlain<int>},
        {QMetaType::UInt, readPlain<uint>},
        {QMetaType::LongLong, readPlain<qlonglong>},
        {QMetaType::ULongLong, readPlain<qulonglong>},
        {QMetaType::Double, readPlain<double>},
        {QMetaType::Float, readPlain<float>},
        {QMetaType::QChar, readPlain<QChar>},
        {QMetaType::QString, readPlain<QString>},
        {QMetaType::QStringList, readStringList},
        {QMetaType::QByteArray, readPlain<QByteArray>},
        {QMetaType::QDate, readPlain<QDate>},
        {QMetaType::QTime, readPlain<QTime>},
        {QMetaType::QDateTime, readDateTimeInto},
        {QMetaType::QRegExp, readRegExp},
        {QMetaType::QRect, readPlain<QRect>},
        {QMetaType::QVariantList, readList},
        {QMetaType::QVariantMap, readMap},
        {QMetaType::QVariantHash, readHash},
    };

    StoredType const* storedType(quint32 type)
    {
        auto const* const row = std::find_if(std::begin(storedTypes), std::end(storedTypes),
            [=](StoredType const& each) { return static_cast<quint32>(each.type) == type; });
        return row == std::end(storedTypes) ? nullptr : row;
    }

    bool isReadable(QVariant const& value, int containerDepth);

    template <class Container> bool areReadable(QVariant const& container, int depth)
    {
        auto const& values = *static_cast<Container const*>(container.constData());
        return depth < maxContainerDepth && std::all_of(values.cbegin(), values.cend(), [&](auto const& each) {
            return isReadable(each, depth + 1);
        });
    }

    template <class Map> bool isReadableMap(QVariant const& map, int depth)
    {
        return areReadable<Map>(map, depth) && areSpread(*static_cast<Map const*>(map.constData()));
    }

    bool isReadable(QVariant const& value, int containerDepth)
    {
        switch (value.userType()) {
        case QMetaType::UnknownType:
            return true;
        case QMetaType::QVariantList:
            return areReadable<QVariantList>(value, containerDepth);
        case QMetaType::QVariantMap:
            return isReadableMap<QVariantMap>(value, containerDepth);
        case QMetaType::QVariantHash:
            return isReadableMap<QVariantHash>(value, containerDepth);
        case QMetaType::QRegExp: {
            auto const& expression = *static_cast<QRegExp const*>(value.constData());
            return shapeOf(expression.pattern(), expression.patternSyntax()).isBounded();
        }
        default:
            return storedType(static_cast<quint32>(value.userType()));
        }
    }

    // Qt 4 counted the types of its core library on from 128; Qt 5 moved them down.
    quint32 currentType(QDataStream const& in, quint32 type)
    {
        constexpr quint32 firstExtended = 128;
        constexpr quint32 moved = 97;
        bool const isOld = in.version() < QDataStream::Qt_5_0;
        return isOld && type >= firstExtended ? type - moved : type;
    }

    // Qt 4 put an empty text where there is no value.
    void skipInvalid(QDataStream& in)
    {
        QString text;
        if (in.version() < QDataStream::Qt_5_0)
            in >> text;
    }

    // The flag stands beside the value, which is read although the flag is set. Only its lowest bit has ever counted.
    QVariant defaultValue(int type, qint8 nullFlag)
    {
        return (nullFlag & 1) ? QVariant(static_cast<QVariant::Type>(type)) : QVariant(type, nullptr);
    }

    QVariant readValue(QDataStream& in, int containerDepth)
    {
        quint32 type = 0;
        qint8 nullFlag = 0;
        in >> type;
        if (in.version() >= QDataStream::Qt_4_2)
            in >> nullFlag;
        StoredType const* const stored = storedType(currentType(in, type));
        QVariant value;
        // Before Qt 4, types had other numbers.
        bool const isOfOldQt = in.version() < QDataStream::Qt_4_0;
        if (isOfOldQt || (!stored && type != QMetaType::UnknownType))
            setCorrupt(in);
        else if (type == QMetaType::UnknownType)
            skipInvalid(in);
        else if (isOk(in)) {
            value = defaultValue(stored->type, nullFlag);
            stored->read(in, value.data(), containerDepth);
        }
        return value;
    }

} // namespace

thread_local Reading::State Reading::s_state = {0, 0};

Reading::Reading()
{
    if (s_state.depth++ == 0)
        s_state.patternBytes = 0;
}

Reading::~Reading()
{
    --s_state.depth;
}

bool Reading::isTooDeep() const
{
    return s_state.depth > Expression::MaxDepth;
}

bool Reading::allows(double bytes)
{
    constexpr double maxPatternBytes = 8e6;
    s_state.patternBytes += bytes;
    return s_state.patternBytes <= maxPatternBytes;
}

bool isReadable(QVariant const& value)
{
    return isReadable(value, 0);
}

QVariant readVariant(QDataStream& in)
{
    return readValue(in, 0);
}

} // namespace qvgen
