#include "inktables.h"

#include "failures.h"
#include "incoming.h"
#include "text.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QVariant>

#include <algorithm>
#include <charconv>
#include <iterator>
#include <string_view>

namespace {

struct Column
{
    const char* name;
    qint64 (*valueOf)(const _POINTDATA& point);
    std::int64_t IncomingPoint::*incoming;
};

constexpr Column Columns[] = {
    {"x", [](const _POINTDATA& point) { return qint64{point.usX}; }, &IncomingPoint::x},
    {"y", [](const _POINTDATA& point) { return qint64{point.sY}; }, &IncomingPoint::y},
    {"pressure", [](const _POINTDATA& point) { return qint64{point.sPressure}; }, &IncomingPoint::pressure},
    {"status", [](const _POINTDATA& point) { return qint64{point.ucStatus}; }, &IncomingPoint::status},
    {"tick", [](const _POINTDATA& point) { return qint64{point.llTick}; }, &IncomingPoint::tick},
    {"seconds", [](const _POINTDATA& point) { return qint64{point.llSeconds}; }, &IncomingPoint::seconds},
};

// The cells of all columns with a comma between them.
template <typename TCell>
QByteArray row(TCell cell)
{
    QByteArray cells;
    for (const Column& column : Columns) {
        if (!cells.isEmpty())
            cells += ',';
        cells += cell(column);
    }
    return cells;
}

QByteArray headerLine()
{
    return row([](const Column& column) { return QByteArray(column.name); });
}

// The next line, without its end; it is taken from the text.
std::string_view nextLine(std::string_view& text)
{
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    return line;
}

// Whether the line is one number for each column.
bool readRow(std::string_view line, IncomingPoint& point)
{
    const char* next = line.data();
    const char* const end = next + line.size();
    for (const Column& column : Columns) {
        if (&column != std::begin(Columns) && (next == end || *next++ != ','))
            return false;
        const auto [behind, fault] = std::from_chars(next, end, point.*column.incoming);
        if (fault != std::errc())
            return false;
        next = behind;
    }
    return next == end;
}

} // namespace

QByteArray toCsv(const CInkSnapshot& ink)
{
    QByteArray text = headerLine() + '\n';
    for (std::size_t index = 0; index < ink.Count(); ++index) {
        const _POINTDATA& point = ink.At(index);
        text += row([&point](const Column& column) { return QByteArray::number(column.valueOf(point)); });
        text += '\n';
    }
    return text;
}

QByteArray toJson(const CInkSnapshot& ink)
{
    QByteArray text = "{\"points\":[";
    for (std::size_t index = 0; index < ink.Count(); ++index) {
        const _POINTDATA& point = ink.At(index);
        text += index == 0 ? "\n{" : ",\n{";
        text += row([&point](const Column& column) {
            return '"' + QByteArray(column.name) + "\":" + QByteArray::number(column.valueOf(point));
        });
        text += '}';
    }
    return text + "\n]}\n";
}

CInkSnapshot fromCsv(const QByteArray& text, const QString& name)
{
    IncomingInk ink(name, IncomingInk::Places::Lines);
    std::string_view rest(text.constData(), static_cast<std::size_t>(text.size()));
    // The mark with which spreadsheets begin a file in UTF-8.
    if (constexpr std::string_view mark = "\xef\xbb\xbf"; rest.starts_with(mark))
        rest.remove_prefix(mark.size());
    if (nextLine(rest) != std::string_view(headerLine().constData()))
        ink.refuse(1, Text::tr("is not the header line %1").arg(QLatin1String(headerLine())));
    for (std::size_t number = 2; !rest.empty(); ++number) {
        IncomingPoint point;
        if (!readRow(nextLine(rest), point))
            ink.refuse(number, Text::tr("is not six whole numbers with commas between them"));
        ink.append(point, number);
    }
    return ink.ink();
}

CInkSnapshot fromJson(const QByteArray& text, const QString& name)
{
    QJsonParseError fault;
    const QJsonDocument document = QJsonDocument::fromJson(text, &fault);
    if (fault.error != QJsonParseError::NoError)
        throw Failure{QStringLiteral("%1:%2: ").arg(name).arg(fault.offset) + fault.errorString()};
    const QJsonValue points = document.object().value(QLatin1String("points"));
    if (!points.isArray())
        throw Failure{Text::tr("%1: has no list of points").arg(name)};
    IncomingInk ink(name, IncomingInk::Places::Points);
    std::size_t number = 0;
    const QJsonArray list = points.toArray();
    for (const auto& element : list) {
        ++number;
        const QJsonObject object = element.toObject();
        IncomingPoint point;
        for (const Column& column : Columns) {
            // Whole numbers stay whole in a variant, to the last digit.
            const QVariant value = object.value(QLatin1String(column.name)).toVariant();
            if (value.userType() != QMetaType::LongLong)
                ink.refuse(number, Text::tr("%1 is not a whole number").arg(QLatin1String(column.name)));
            point.*column.incoming = value.toLongLong();
        }
        ink.append(point, number);
    }
    return ink.ink();
}
