#include "inktables.h"

namespace {

struct Column
{
    const char* name;
    qint64 (*valueOf)(const _POINTDATA& point);
};

constexpr Column Columns[] = {
    {"x", [](const _POINTDATA& point) { return qint64{point.usX}; }},
    {"y", [](const _POINTDATA& point) { return qint64{point.sY}; }},
    {"pressure", [](const _POINTDATA& point) { return qint64{point.sPressure}; }},
    {"status", [](const _POINTDATA& point) { return qint64{point.ucStatus}; }},
    {"tick", [](const _POINTDATA& point) { return qint64{point.llTick}; }},
    {"seconds", [](const _POINTDATA& point) { return qint64{point.llSeconds}; }},
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

} // namespace

QByteArray toCsv(const CInkSnapshot& ink)
{
    QByteArray text = row([](const Column& column) { return QByteArray(column.name); }) + '\n';
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
