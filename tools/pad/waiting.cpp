#include "waiting.h"

#include "failures.h"
#include "inkpad.h"
#include "optionvalues.h"
#include "text.h"

#include <algorithm>

void addDriverAndModel(QCommandLineParser& parser)
{
    addDriverOption(parser);
    parser.addOption({QStringLiteral("model"),
                      Text::tr("The pad: %1; the pads' own names, such as SCK210, too. Default K210.")
                          .arg(padNames().join(QStringLiteral(", "))),
                      Text::tr("model"), QStringLiteral("K210")});
}

std::optional<int> secondsOption(const QCommandLineParser& parser, const char* option)
{
    constexpr int aDay = 86400;
    if (!parser.isSet(QLatin1String(option)))
        return std::nullopt;
    const int seconds = positiveNumber(parser.value(QLatin1String(option)), aDay);
    if (seconds == 0)
        throw UsageError{wrongValue(parser, option, Text::tr("1 to 86400 seconds"))};
    return seconds;
}

QSize canvasFor(const CPadModel& model, int height)
{
    return {(height * model.m_nAreaWidth + model.m_nAreaHeight / 2) / model.m_nAreaHeight, height};
}

int Deadline::wait(int atMost) const
{
    if (!m_seconds)
        return atMost;
    return static_cast<int>(std::clamp<qint64>(qint64{1000} * *m_seconds - m_clock.elapsed(), 0, atMost));
}

bool Presence::look()
{
    constexpr int interval = 500; // ms
    if (!m_clock.hasExpired(interval))
        return false;
    m_clock.restart();
    const bool isThere = m_session.isAnswering();
    return std::exchange(m_isThere, isThere) != isThere;
}
