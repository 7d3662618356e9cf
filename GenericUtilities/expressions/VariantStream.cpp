// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/expressions/VariantStream_p.h>

#include <GenericUtilities/expressions/PatternBounds_p.h>

#include <QDataStream>
#include <QDate>
#include <QRect>
#include <QRegExp>
#include <QStringList>

namespace qvgen {

namespace {

    constexpr int maxContainerDepth = 100;

    QVariant readValue(QDataStream& in, int containerDepth);

    template <class Value> QVariant readPlain(QDataStream& in)
    {
        Value value{};
        in >> value;
        return QVariant::fromValue(value);
    }

    // Calls `readElement` as often as the stored count says, as long as there is something to read.
    template <class ReadElement> void readElements(QDataStream& in, ReadElement const& readElement)
    {
        quint32 count = 0;
        in >> count;
        for (quint32 i = 0; i < count && isOk(in); ++i)
            readElement();
    }

    QVariant readStringList(QDataStream& in)
    {
        QStringList list;
        readElements(in, [&] {
            QString text;
            in >> text;
            list.append(text);
        });
        return list;
    }

    QVariant readList(QDataStream& in, int depth)
    {
        QVariantList list;
        readElements(in, [&] { list.append(readValue(in, depth)); });
        return list;
    }

    template <class Map> QVariant readMap(QDataStream& in, int depth)
    {
        Map map;
        readElements(in, [&] {
            QString key;
            in >> key;
            map.insert(key, readValue(in, depth));
        });
        return map;
    }

    QVariant readRegExp(QDataStream& in)
    {
        QString pattern;
        quint8 caseSensitive = 0;
        quint8 syntax = 0;
        quint8 isMinimal = 0;
        in >> pattern >> caseSensitive >> syntax >> isMinimal;
        if (!isOk(in))
            return {};
        if (syntax > QRegExp::W3CXmlSchema11
            || !shapeOf(pattern, static_cast<QRegExp::PatternSyntax>(syntax)).isBounded())
            return corrupt(in);
        // Set in place: any other way copies the expression, which compiles its pattern.
        QVariant value = QRegExp();
        auto* const expression = static_cast<QRegExp*>(value.data());
        expression->setPattern(pattern);
        expression->setCaseSensitivity(caseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive);
        expression->setPatternSyntax(static_cast<QRegExp::PatternSyntax>(syntax));
        expression->setMinimal(isMinimal);
        return value;
    }

    // Qt 4 counted the types of its core library on from 128; Qt 5 moved them down.
    quint32 currentType(QDataStream const& in, quint32 storedType)
    {
        constexpr quint32 firstExtended = 128;
        constexpr quint32 moved = 97;
        bool const isOld = in.version() < QDataStream::Qt_5_0;
        return isOld && storedType >= firstExtended ? storedType - moved : storedType;
    }

    QVariant readData(QDataStream& in, quint32 type, int containerDepth)
    {
        switch (type) {
        case QMetaType::UnknownType:
            if (in.version() < QDataStream::Qt_5_0)
                readPlain<QString>(in);
            return {};
        case QMetaType::Bool:
            return readPlain<bool>(in);
        case QMetaType::Int:
            return readPlain<int>(in);
        case QMetaType::UInt:
            return readPlain<uint>(in);
        case QMetaType::LongLong:
            return readPlain<qlonglong>(in);
        case QMetaType::ULongLong:
            return readPlain<qulonglong>(in);
        case QMetaType::Double:
            return readPlain<double>(in);
        case QMetaType::Float:
            return readPlain<float>(in);
        case QMetaType::QChar:
            return readPlain<QChar>(in);
        case QMetaType::QString:
            return readPlain<QString>(in);
        case QMetaType::QByteArray:
            return readPlain<QByteArray>(in);
        case QMetaType::QDate:
            return readPlain<QDate>(in);
        case QMetaType::QTime:
            return readPlain<QTime>(in);
        case QMetaType::QRect:
            return readPlain<QRect>(in);
        case QMetaType::QStringList:
            return readStringList(in);
        case QMetaType::QDateTime:
            return readDateTime(in);
        case QMetaType::QRegExp:
            return readRegExp(in);
        case QMetaType::QVariantList:
            return readList(in, containerDepth + 1);
        case QMetaType::QVariantMap:
            return readMap<QVariantMap>(in, containerDepth + 1);
        case QMetaType::QVariantHash:
            return readMap<QVariantHash>(in, containerDepth + 1);
        default:
            return corrupt(in);
        }
    }

    QVariant readValue(QDataStream& in, int containerDepth)
    {
        // Before Qt 4 types had other numbers.
        if (containerDepth > maxContainerDepth || in.version() < QDataStream::Qt_4_0)
            return corrupt(in);
        quint32 storedType = 0;
        qint8 isNull = 0;
        in >> storedType;
        if (in.version() >= QDataStream::Qt_4_2)
            in >> isNull;
        if (!isOk(in))
            return {};
        quint32 const type = currentType(in, storedType);
        QVariant const value = readData(in, type, containerDepth);
        return isNull && value.isValid() ? QVariant(static_cast<QVariant::Type>(type)) : value;
    }

} // namespace

QVariant corrupt(QDataStream& in)
{
    in.setStatus(QDataStream::ReadCorruptData);
    return {};
}

QVariant readVariant(QDataStream& in)
{
    return readValue(in, 0);
}

} // namespace qvgen
