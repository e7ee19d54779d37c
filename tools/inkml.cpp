#include "inkml.h"

#include "failures.h"
#include "incoming.h"
#include "text.h"

#include <QDateTime>
#include <QHash>
#include <QLocale>
#include <QTimeZone>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <map>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace {

const QString Namespace = QStringLiteral("http://www.w3.org/2003/InkML");
const QString XmlNamespace = QStringLiteral("http://www.w3.org/XML/1998/namespace");
// The annotation with the first record's tick, to which the times of the traces are relative.
const QString FirstTick = QStringLiteral("first-tick");
// A channel of ours: the wall clock.
const QString SecondsChannel = QStringLiteral("seconds");
// The property of a channel that tells what a step of it is.
const QString Resolution = QStringLiteral("resolution");

using Number = long double; // holds every whole number of 64 bits, with or without sign
static_assert(std::numeric_limits<Number>::digits >= 64);

// Writing

struct WrittenChannel
{
    QString name;
    const char* type;
    const char* units; // null for none
};

const WrittenChannel WrittenChannels[] = {
    {QStringLiteral("X"), "integer", "dev"}, {QStringLiteral("Y"), "integer", "dev"},
    {QStringLiteral("F"), "integer", "dev"}, {QStringLiteral("S"), "boolean", nullptr},
    {QStringLiteral("T"), "integer", "ms"},  {SecondsChannel, "integer", "s"},
};

QByteArray pointText(const _POINTDATA& point, std::int64_t firstTick)
{
    const std::uint64_t elapsed =
        static_cast<std::uint64_t>(point.llTick) - static_cast<std::uint64_t>(firstTick);
    return QByteArray::number(point.usX) + ' ' + QByteArray::number(point.sY) + ' ' +
           QByteArray::number(point.sPressure) + (point.ucStatus == kStatusOnStroke ? " T " : " F ") +
           QByteArray::number(qulonglong{elapsed}) + ' ' + QByteArray::number(qlonglong{point.llSeconds});
}

void writeFormat(QXmlStreamWriter& xml)
{
    xml.writeStartElement(Namespace, QStringLiteral("traceFormat"));
    for (const WrittenChannel& channel : WrittenChannels) {
        xml.writeEmptyElement(Namespace, QStringLiteral("channel"));
        xml.writeAttribute(QStringLiteral("name"), channel.name);
        xml.writeAttribute(QStringLiteral("type"), QLatin1String(channel.type));
        if (channel.units)
            xml.writeAttribute(QStringLiteral("units"), QLatin1String(channel.units));
        if (channel.name == QLatin1String("T"))
            xml.writeAttribute(QStringLiteral("respectTo"), QStringLiteral("#start"));
    }
    xml.writeEndElement();
}

// So many of the units of X and Y are in a millimetre.
void writeResolution(QXmlStreamWriter& xml, double unitsPerMillimetre)
{
    const QString number = QString::number(unitsPerMillimetre, 'f', QLocale::FloatingPointShortest);
    xml.writeStartElement(Namespace, QStringLiteral("channelProperties"));
    for (const char* channel : {"X", "Y"}) {
        xml.writeEmptyElement(Namespace, QStringLiteral("channelProperty"));
        xml.writeAttribute(QStringLiteral("channel"), QLatin1String(channel));
        xml.writeAttribute(QStringLiteral("name"), Resolution);
        xml.writeAttribute(QStringLiteral("value"), number);
        xml.writeAttribute(QStringLiteral("units"), QStringLiteral("1/mm"));
    }
    xml.writeEndElement();
}

// A timestamp is not negative and of 64 bits. A clock that shows anything else stands in the points alone.
bool canBeTimestamp(std::int64_t seconds)
{
    return seconds >= 0 &&
           static_cast<std::uint64_t>(seconds) <= std::numeric_limits<std::uint64_t>::max() / 1000;
}

// Reading

enum class Role
{
    X,
    Y,
    Force,
    Time,
    TipSwitch,
    Seconds,
    Other
};

Role roleOf(const QString& name)
{
    static const std::pair<QString, Role> roles[] = {
        {QStringLiteral("X"), Role::X},         {QStringLiteral("Y"), Role::Y},
        {QStringLiteral("F"), Role::Force},     {QStringLiteral("T"), Role::Time},
        {QStringLiteral("S"), Role::TipSwitch}, {SecondsChannel, Role::Seconds}};
    for (const auto& [known, role] : roles)
        if (name == known)
            return role;
    return Role::Other;
}

struct Unit
{
    const char* name;
    Number size;
};

// In millimetres. The last one is not the Recommendation's, but widely used.
constexpr Unit Lengths[] = {{"m", 1000},        {"cm", 10},        {"mm", 1},         {"in", 25.4L},
                            {"pt", 25.4L / 72}, {"pc", 25.4L / 6}, {"himetric", .01L}};
constexpr Unit Times[] = {{"s", 1000}, {"ms", 1}}; // in milliseconds

// Of a unit of the channel's quantity; 0 for any other.
Number sizeOfUnit(Role role, const QString& name)
{
    const auto find = [&name](const auto& units) -> Number {
        for (const Unit& unit : units)
            if (name == QLatin1String(unit.name))
                return unit.size;
        return 0;
    };
    return role == Role::X || role == Role::Y ? find(Lengths) : role == Role::Time ? find(Times) : 0;
}

struct Channel
{
    Role role = Role::Other;
    Number initial = 0;
    QString respectTo;
    QString units;
    bool isWhole = false;    // its values are whole numbers
    bool isReversed = false; // they increase the other way
    std::optional<Number> smallest;
    std::optional<Number> largest;
};

// What becomes of a channel's values.
struct Scale
{
    Number factor = 1;
    Number offset = 0;
};

struct Format
{
    std::vector<Channel> channels;
    std::size_t regular = 0;      // so many of them have a value in every point
    std::map<Role, Number> steps; // of the source's resolutions

    bool has(Role role) const
    {
        for (const Channel& channel : channels)
            if (channel.role == role)
                return true;
        return false;
    }

    // What a step is, in millimetres or milliseconds, where there is a resolution; 0 for one that does not
    // tell.
    std::optional<Number> step(Role role) const
    {
        const auto found = steps.find(role);
        return found == steps.end() ? std::nullopt : std::optional<Number>(found->second);
    }

    // Whole numbers with a resolution count its steps, and name the units for which it is.
    bool isInUnits(const Channel& channel) const
    {
        return sizeOfUnit(channel.role, channel.units) > 0 && !(channel.isWhole && step(channel.role));
    }

    // Of what is 1 in a channel, in millimetres or milliseconds; 0 where that is not told.
    Number sizeOfValue(const Channel& channel) const
    {
        return isInUnits(channel) ? sizeOfUnit(channel.role, channel.units) : step(channel.role).value_or(0);
    }
};

Format defaultFormat()
{
    Format format;
    for (const Role role : {Role::X, Role::Y})
        format.channels.emplace_back().role = role;
    format.regular = format.channels.size();
    return format;
}

// A channel's values, of which each may be told as a difference to those before it.
class ChannelValue
{
public:
    explicit ChannelValue(Number initial) : m_value(initial) {}

    void setOrder(int order) { m_order = order; }
    void take(Number told)
    {
        const Number before = m_value;
        if (m_order == 0)
            m_value = told;
        else if (m_order == 1)
            m_value += told;
        else
            m_value += m_difference + told;
        m_change = m_value - before - m_difference;
        m_difference = m_value - before;
    }
    // The last value, or the last difference, once more.
    void repeat() { take(m_order == 0 ? m_value : m_order == 1 ? m_difference : m_change); }
    Number value() const { return m_value; }

private:
    int m_order = 0; // how many times the values told are differences
    Number m_value;
    Number m_difference = 0;
    Number m_change = 0; // of the difference
};

// Cuts a trace's text into points and these into values.
class TraceText
{
public:
    explicit TraceText(std::string_view text) : m_rest(text) { skipBlanks(); }

    bool atEnd() const { return m_rest.empty(); }
    bool atComma() const { return m_rest.starts_with(','); }
    void skipComma() { skip(1); }

    // Takes the next value of the channel. False when there is none.
    bool read(ChannelValue& channel)
    {
        constexpr std::string_view orders = "!'\"";
        const std::size_t order = atEnd() ? std::string_view::npos : orders.find(m_rest.front());
        if (order != std::string_view::npos) {
            channel.setOrder(static_cast<int>(order));
            skip(1);
        }
        if (atEnd())
            return false;
        switch (m_rest.front()) {
        case 'T':
        case 'F':
            channel.take(m_rest.front() == 'T' ? 1 : 0);
            skip(1);
            return true;
        case '*':
            channel.repeat();
            skip(1);
            return true;
        case '?':
            skip(1);
            return true;
        case '#':
            return readHexadecimal(channel);
        default:
            return readDecimal(channel);
        }
    }

private:
    void skip(std::size_t count)
    {
        m_rest.remove_prefix(count);
        skipBlanks();
    }
    void skipBlanks()
    {
        while (!m_rest.empty() && std::string_view(" \t\r\n").find(m_rest.front()) != std::string_view::npos)
            m_rest.remove_prefix(1);
    }

    bool readHexadecimal(ChannelValue& channel)
    {
        std::int64_t number = 0;
        const char* const first = m_rest.data() + 1;
        const auto [behind, fault] = std::from_chars(first, m_rest.data() + m_rest.size(), number, 16);
        if (fault != std::errc())
            return false;
        channel.take(static_cast<Number>(number));
        skip(static_cast<std::size_t>(behind - m_rest.data()));
        return true;
    }

    bool readDecimal(ChannelValue& channel)
    {
        Number number = 0;
        const char* const first = m_rest.data();
        const char* const last = first + m_rest.size();
        // What from_chars() takes for a number beside these, a word, is none here.
        const std::size_t sign = m_rest.front() == '-' ? 1 : 0;
        if (m_rest.size() <= sign || (m_rest[sign] != '.' && (m_rest[sign] < '0' || m_rest[sign] > '9')))
            return false;
        std::int64_t whole = 0; // which is read many times as fast
        auto [behind, fault] = std::from_chars(first, last, whole);
        if (fault == std::errc() && (behind == last || *behind != '.')) {
            number = static_cast<Number>(whole);
        } else {
            const auto result = std::from_chars(first, last, number, std::chars_format::fixed);
            if (result.ec != std::errc())
                return false;
            behind = result.ptr;
        }
        channel.take(number);
        skip(static_cast<std::size_t>(behind - first));
        return true;
    }

    std::string_view m_rest;
};

class InkMlReader
{
public:
    // A largest pressure that is assumed where none is told, for values that are not whole.
    InkMlReader(const QByteArray& text, const QString& name, const Circumstances& circumstances,
                std::optional<Number> largestPressure)
        : m_xml(text), m_name(name), m_circumstances(circumstances), m_largestPressure(largestPressure),
          m_ink(name, IncomingInk::Places::Points)
    {
    }

    CInkSnapshot read()
    {
        // Without a document type there are no entities that could grow.
        while (!m_xml.atEnd() && m_xml.readNext() != QXmlStreamReader::StartElement)
            if (m_xml.isDTD())
                refuse(Text::tr("has a document type, which is not read"));
        if (!m_xml.hasError() && (m_xml.name() != QLatin1String("ink") || m_xml.namespaceUri() != Namespace))
            refuse(Text::tr("is not an InkML document"));
        readContent(false, {}, 0);
        while (!m_xml.atEnd())
            m_xml.readNext();
        if (m_xml.hasError())
            refuse(m_xml.errorString());
        return m_ink.ink();
    }

    // Whether pressures whose range is not told were all of 0 to 1, of which rounding leaves nothing.
    bool hasShares() const { return m_pressuresAreShares.value_or(false); }

private:
    static constexpr int DeepestGroup = 64;
    static constexpr std::size_t MostChannels = 64; // of a format

    [[noreturn]] void refuse(const QString& reason) const
    {
        throw Failure{QStringLiteral("%1:%2: ").arg(m_name).arg(m_xml.lineNumber()) + reason};
    }

    bool is(const char* element) const
    {
        return m_xml.name() == QLatin1String(element) && m_xml.namespaceUri() == Namespace;
    }
    QString attribute(const char* name) const
    {
        return m_xml.attributes().value(QLatin1String(name)).toString();
    }
    std::optional<Number> number(const char* name) const
    {
        bool isNumber = false;
        const double value = attribute(name).toDouble(&isNumber);
        return isNumber && std::isfinite(value) ? std::optional<Number>(value) : std::nullopt;
    }
    QString id() const { return m_xml.attributes().value(XmlNamespace, QStringLiteral("id")).toString(); }

    // What a reference to something in this document, further up, leads to.
    template <typename T>
    const T& referred(const QHash<QString, T>& known, const QString& reference) const
    {
        const auto found = known.constFind(reference.mid(1));
        if (!reference.startsWith(QLatin1Char('#')) || found == known.constEnd())
            refuse(Text::tr("reference %1 leads to nothing above it").arg(reference.left(40)));
        return *found;
    }

    // The elements of a document, its definitions or a group of traces.
    void readContent(bool defines, const std::optional<Format>& format, int depth)
    {
        if (depth > DeepestGroup)
            refuse(Text::tr("groups lie deeper than %1").arg(DeepestGroup));
        while (m_xml.readNextStartElement()) {
            if (is("trace")) {
                readTrace(format);
            } else if (is("traceGroup")) {
                const QString reference = attribute("contextRef");
                readContent(defines, reference.isEmpty() ? format : referred(m_formats, reference),
                            depth + 1);
            } else if (is("definitions")) {
                readContent(true, format, depth + 1);
            } else if (is("context") || is("inkSource") || is("traceFormat")) {
                // The last two stand outside of definitions in many documents, where they can mean one thing
                // only.
                const Format read = is("context")     ? readContext()
                                    : is("inkSource") ? readSource()
                                                      : readFormat();
                if (!defines)
                    m_current = read;
            } else if (is("timestamp")) {
                readTimestamp();
            } else if (is("annotation") && attribute("type") == FirstTick) {
                readFirstTick();
            } else {
                m_xml.skipCurrentElement();
            }
        }
    }

    void remember(const QString& id, const Format& format)
    {
        if (!id.isEmpty())
            m_formats.insert(id, format);
    }

    Format readContext()
    {
        const QString itsId = id();
        Format format = m_current;
        for (const char* reference : {"contextRef", "inkSourceRef"})
            if (const QString to = attribute(reference);
                !to.isEmpty() && to != QLatin1String("#DefaultContext"))
                format = referred(m_formats, to);
        std::optional<Format> own; // which comes before the source's
        if (const QString to = attribute("traceFormatRef"); !to.isEmpty())
            own = referred(m_formats, to);
        while (m_xml.readNextStartElement()) {
            if (is("inkSource"))
                format = readSource();
            else if (is("traceFormat"))
                own = readFormat();
            else if (is("timestamp"))
                readTimestamp();
            else
                m_xml.skipCurrentElement();
        }
        if (own) {
            own->steps.insert(format.steps.begin(), format.steps.end());
            format = *own;
        }
        remember(itsId, format);
        return format;
    }

    Format readSource()
    {
        const QString itsId = id();
        Format format = defaultFormat();
        while (m_xml.readNextStartElement()) {
            if (is("traceFormat"))
                format = readFormat();
            else if (is("channelProperties"))
                readProperties(format);
            else
                m_xml.skipCurrentElement();
        }
        remember(itsId, format);
        return format;
    }

    void readProperties(Format& format)
    {
        while (m_xml.readNextStartElement()) {
            if (const Role role = roleOf(attribute("channel"));
                is("channelProperty") && attribute("name") == Resolution)
                format.steps[role] = stepOf(role);
            m_xml.skipCurrentElement();
        }
    }

    // Of the resolution that is being read: so many in a unit, or so many units.
    Number stepOf(Role role) const
    {
        const Number value = number("value").value_or(0);
        const QString units = attribute("units");
        if (!(value > 0))
            return 0;
        return units.startsWith(QLatin1String("1/")) ? sizeOfUnit(role, units.mid(2)) / value
                                                     : sizeOfUnit(role, units) * value;
    }

    Format readFormat()
    {
        const QString itsId = id();
        Format format;
        while (m_xml.readNextStartElement()) {
            if (is("channel")) {
                format.channels.push_back(readChannel());
                format.regular = format.channels.size();
            } else if (is("intermittentChannels")) {
                while (m_xml.readNextStartElement()) {
                    if (is("channel"))
                        format.channels.push_back(readChannel());
                    else
                        m_xml.skipCurrentElement();
                }
            } else {
                m_xml.skipCurrentElement();
            }
        }
        if (format.channels.size() > MostChannels)
            refuse(Text::tr("has too many channels"));
        if (!m_xml.hasError() && (!format.has(Role::X) || !format.has(Role::Y)))
            refuse(Text::tr("the trace format has no channels X and Y"));
        remember(itsId, format);
        return format;
    }

    Channel readChannel()
    {
        if (++m_channels > MostChannels * MostChannels)
            refuse(Text::tr("has too many channels"));
        Channel channel;
        channel.role = roleOf(attribute("name"));
        channel.respectTo = attribute("respectTo");
        channel.units = attribute("units");
        channel.isWhole = attribute("type") == QLatin1String("integer");
        channel.isReversed = attribute("orientation") == QLatin1String("-ve");
        channel.smallest = number("min");
        channel.largest = number("max");
        const QString initial = attribute("default");
        if (channel.role == Role::TipSwitch)
            channel.initial = initial == QLatin1String("F") ? 0 : 1;
        else
            channel.initial = static_cast<Number>(initial.toDouble());
        m_xml.skipCurrentElement();
        return channel;
    }

    void readTimestamp()
    {
        const QString itsId = id();
        double milliseconds = attribute("time").toDouble();
        if (const QString text = attribute("timeString"); !text.isEmpty()) {
            QDateTime time = QDateTime::fromString(text, Qt::ISODateWithMs);
            if (time.timeSpec() == Qt::LocalTime) // none was told
                time.setTimeSpec(Qt::UTC);
            milliseconds = static_cast<double>(time.toMSecsSinceEpoch());
        }
        if (const QString to = attribute("timestampRef"); !to.isEmpty())
            milliseconds = referred(m_timestamps, to);
        m_timestamps.insert(itsId, milliseconds + attribute("timeOffset").toDouble());
        m_xml.skipCurrentElement();
    }

    void readFirstTick()
    {
        bool isNumber = false;
        m_firstTick = m_xml.readElementText().toLongLong(&isNumber);
        if (!m_xml.hasError() && !isNumber)
            refuse(Text::tr("the first tick is not a whole number"));
    }

    void readTrace(const std::optional<Format>& ofGroup)
    {
        const QString reference = attribute("contextRef");
        const Format& format = !reference.isEmpty() ? referred(m_formats, reference)
                               : ofGroup            ? *ofGroup
                                                    : m_current;
        const bool isWritten = attribute("type") != QLatin1String("penUp");
        const QString continuation = attribute("continuation");
        const bool endsStroke =
            !format.has(Role::TipSwitch) && (continuation.isEmpty() || continuation == QLatin1String("end"));
        const QString offset = attribute("timeOffset");
        const std::vector<Scale> scales = isWritten ? scalesOf(format) : std::vector<Scale>();
        const QByteArray text = m_xml.readElementText().toUtf8();
        if (m_xml.hasError() || !isWritten)
            return;

        const std::size_t before = m_count;
        takePoints(format, scales, {text.constData(), static_cast<std::size_t>(text.size())}, offset);
        if (endsStroke && m_count > before) {
            IncomingPoint end = *m_ink.last();
            end.status = kStatusStrokeEnd;
            m_ink.append(end, m_count);
        }
    }

    std::vector<Scale> scalesOf(const Format& format) const
    {
        std::vector<Scale> scales;
        for (const Channel& channel : format.channels) {
            switch (channel.role) {
            case Role::X:
            case Role::Y:
                scales.push_back(scaled(channel, unitsOfValue(format, channel)));
                break;
            case Role::Force:
                scales.push_back(pressureScale(channel));
                break;
            case Role::Time:
                scales.push_back({format.sizeOfValue(channel) > 0 ? format.sizeOfValue(channel) : 1, 0});
                break;
            default:
                scales.emplace_back();
            }
        }
        return scales;
    }

    // The channel the way that the pads count, within the range that it tells, and so many times as large.
    static Scale scaled(const Channel& channel, Number factor)
    {
        if (!channel.isReversed)
            return {factor, 0};
        const Number ends = channel.largest ? channel.smallest.value_or(0) + *channel.largest : 0;
        return {-factor, ends * factor};
    }

    // Pad units in what is 1 in a channel of positions.
    Number unitsOfValue(const Format& format, const Channel& channel) const
    {
        const QLatin1String name(channel.role == Role::X ? "X" : "Y");
        if (!m_circumstances.unitsPerMillimetre) {
            if (format.isInUnits(channel))
                refuse(Text::tr("channel %1 is in %2; --units-per-mm has to tell how many pad units are in a "
                                "millimetre")
                           .arg(name, channel.units));
            return 1;
        }
        const Number size = format.sizeOfValue(channel);
        if (size <= 0)
            refuse(Text::tr("channel %1 tells no length; without --units-per-mm its values are taken as pad "
                            "units")
                       .arg(name));
        return size * *m_circumstances.unitsPerMillimetre;
    }

    // A range of pressures becomes the levels of the pad, where that is known. Otherwise one of which
    // rounding would leave little is spread.
    Scale pressureScale(Channel channel) const
    {
        constexpr Number spread = 1024;
        if (isUnbounded(channel))
            channel.largest = m_largestPressure;
        const Number smallest = channel.smallest.value_or(0);
        const Number range = channel.largest.value_or(smallest) - smallest;
        const bool isKept = !m_circumstances.pad && (channel.isWhole || range >= spread);
        if (range <= 0 || isKept)
            return scaled(channel, 1);
        const Number factor =
            (m_circumstances.pad ? m_circumstances.pad->m_nInitialMaxPressure : spread) / range;
        Scale scale = scaled(channel, factor);
        scale.offset -= smallest * factor;
        return scale;
    }

    // Whether a pressure is told in a way that leaves open what is the largest.
    static bool isUnbounded(const Channel& channel) { return !channel.isWhole && !channel.largest; }

    void takePoints(const Format& format, const std::vector<Scale>& scales, std::string_view text,
                    const QString& offset)
    {
        std::vector<ChannelValue> values;
        for (const Channel& channel : format.channels)
            values.emplace_back(channel.initial);
        TraceText rest(text);
        while (!rest.atEnd()) {
            ++m_count;
            std::size_t index = 0;
            while (index < values.size() && !rest.atEnd() && !rest.atComma()) {
                if (!rest.read(values[index]))
                    m_ink.refuse(m_count, Text::tr("value %1 is not a number").arg(index + 1));
                ++index;
            }
            if (index < format.regular)
                m_ink.refuse(m_count, Text::tr("has %1 of the %2 values").arg(index).arg(format.regular));
            if (rest.atComma())
                rest.skipComma();
            else if (!rest.atEnd())
                m_ink.refuse(m_count, Text::tr("has more than the %1 values").arg(values.size()));
            take(format, scales, values, offset);
        }
    }

    std::int64_t whole(Number value) const
    {
        const Number rounded = std::round(value);
        constexpr Number limit = 9223372036854775808.0L; // beyond the largest of 64 bits
        if (!(rounded >= -limit && rounded < limit))
            m_ink.refuse(m_count, Text::tr("a value does not fit into 64 bits"));
        return static_cast<std::int64_t>(rounded);
    }

    void take(const Format& format, const std::vector<Scale>& scales, const std::vector<ChannelValue>& values,
              const QString& offset)
    {
        IncomingPoint point;
        const std::optional<IncomingPoint>& last = m_ink.last();
        bool isTimed = false;
        bool isDated = false;
        std::optional<double> timestamp;
        Number time = 0;
        for (std::size_t index = 0; index < values.size(); ++index) {
            const Number told = values[index].value();
            const Number value = told * scales[index].factor + scales[index].offset;
            switch (format.channels[index].role) {
            case Role::X:
                point.x = whole(value);
                break;
            case Role::Y:
                point.y = whole(value);
                break;
            case Role::Force:
                point.pressure = whole(value);
                if (isUnbounded(format.channels[index]))
                    m_pressuresAreShares = m_pressuresAreShares.value_or(true) && told >= 0 && told <= 1;
                break;
            case Role::TipSwitch:
                point.status = value > 0 ? kStatusOnStroke : kStatusStrokeEnd;
                break;
            case Role::Seconds:
                point.seconds = whole(value);
                isDated = true;
                break;
            case Role::Time:
                isTimed = true;
                time = value;
                if (const QString& to = format.channels[index].respectTo; !to.isEmpty())
                    timestamp = referred(m_timestamps, to);
                else
                    time += static_cast<Number>(offset.toDouble());
                break;
            case Role::Other:
                break;
            }
        }
        if (isTimed)
            point.tick = whole(static_cast<Number>(m_firstTick) + std::round(time));
        else if (last)
            point.tick = last->tick + AssumedStep;
        else
            point.tick = whole(static_cast<Number>(offset.toDouble()));
        if (!isDated && timestamp)
            point.seconds = whole(std::floor((static_cast<Number>(*timestamp) + time) / 1000));
        m_ink.append(point, m_count);
    }

    QXmlStreamReader m_xml;
    const QString m_name;
    const Circumstances m_circumstances;
    const std::optional<Number> m_largestPressure;
    IncomingInk m_ink;
    std::optional<bool> m_pressuresAreShares; // of those whose range is not told, when there are any
    std::size_t m_count = 0;                  // of points
    std::size_t m_channels = 0;
    std::int64_t m_firstTick = 0;
    Format m_current = defaultFormat();
    // Those with an identifier; a context and a source of ink have one too.
    QHash<QString, Format> m_formats;
    QHash<QString, double> m_timestamps; // in milliseconds since 1970
};

} // namespace

QByteArray toInkMl(const CInkSnapshot& ink, const Circumstances& circumstances)
{
    const std::int64_t firstTick = ink.Count() > 0 ? ink.At(0).llTick : 0;
    const std::int64_t firstSeconds = ink.Count() > 0 ? ink.At(0).llSeconds : 0;
    QByteArray text;
    QXmlStreamWriter xml(&text);
    const QString lineEnd = QStringLiteral("\n");
    xml.writeStartDocument();
    xml.writeCharacters(lineEnd);
    xml.writeDefaultNamespace(Namespace);
    xml.writeStartElement(Namespace, QStringLiteral("ink"));
    xml.writeCharacters(lineEnd);
    xml.writeStartElement(Namespace, QStringLiteral("context"));
    xml.writeStartElement(Namespace, QStringLiteral("inkSource"));
    xml.writeAttribute(XmlNamespace, QStringLiteral("id"), QStringLiteral("pad"));
    if (circumstances.pad)
        xml.writeAttribute(QStringLiteral("model"), QLatin1String(circumstances.pad->m_pszName));
    writeFormat(xml);
    if (circumstances.unitsPerMillimetre)
        writeResolution(xml, *circumstances.unitsPerMillimetre);
    xml.writeEndElement();
    xml.writeEmptyElement(Namespace, QStringLiteral("timestamp"));
    xml.writeAttribute(XmlNamespace, QStringLiteral("id"), QStringLiteral("start"));
    if (canBeTimestamp(firstSeconds))
        xml.writeAttribute(QStringLiteral("time"), QString::number(qulonglong(firstSeconds) * 1000));
    xml.writeEndElement();
    xml.writeCharacters(lineEnd);
    xml.writeStartElement(Namespace, QStringLiteral("annotation"));
    xml.writeAttribute(QStringLiteral("type"), FirstTick);
    xml.writeCharacters(QString::number(qlonglong{firstTick}));
    xml.writeEndElement();
    xml.writeCharacters(lineEnd);
    bool isOpen = false;
    for (std::size_t index = 0; index < ink.Count(); ++index) {
        const _POINTDATA& point = ink.At(index);
        if (isOpen)
            xml.writeCharacters(QStringLiteral(","));
        else
            xml.writeStartElement(Namespace, QStringLiteral("trace"));
        xml.writeCharacters(QString::fromLatin1(pointText(point, firstTick)));
        isOpen = point.ucStatus == kStatusOnStroke;
        if (!isOpen || index + 1 == ink.Count()) {
            xml.writeEndElement();
            xml.writeCharacters(lineEnd);
        }
    }
    xml.writeEndElement();
    xml.writeEndDocument();
    return text;
}

CInkSnapshot fromInkMl(const QByteArray& text, const QString& name, const Circumstances& circumstances)
{
    InkMlReader reader(text, name, circumstances, std::nullopt);
    const CInkSnapshot ink = reader.read();
    return reader.hasShares() ? InkMlReader(text, name, circumstances, 1).read() : ink;
}
