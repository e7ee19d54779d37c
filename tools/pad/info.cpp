// scribera-pad info: what a pad is.
#include "commands.h"
#include "optionvalues.h"
#include "output.h"
#include "pens.h"
#include "program.h"
#include "waiting.h"

#include <scriberasdk.h>

namespace {

QString orNone(const QString& text)
{
    return text.isEmpty() ? QStringLiteral("none") : text;
}

QString padText(const Session& session)
{
    const CPadModel& model = session.model();
    QString text;
    const auto line = [&text](const char* name, const QString& value) {
        text += QString::fromLatin1(name).leftJustified(16) + value + QLatin1Char('\n');
    };
    line("pad:", orNone(session.padId()));
    line("pen:", orNone(session.penId()));
    line("version:", orNone(session.version()));
    line("model:", QStringLiteral("%1, device type %2, of %3")
                       .arg(session.text(6))
                       .arg(model.m_nDeviceType)
                       .arg(session.text(5)));
    line("library:", QStringLiteral("%1, %2.%3")
                         .arg(libraryFile())
                         .arg(session.number(DIID_GET_DRV_VER, 0))
                         .arg(session.number(DIID_GET_DRV_VER, 1)));
    line("writing area:", QStringLiteral("%1 x %2 units, the first at %3,%4")
                              .arg(session.number(2, 1))
                              .arg(session.number(3, 1))
                              .arg(model.m_nPadOriginX)
                              .arg(model.m_nPadOriginY));
    line("pressure:", QStringLiteral("up to %1").arg(session.number(4, 0)));
    line("keys:", model.m_eKeyRule == EKeyRule::AtTouch
                      ? QStringLiteral("act when they are touched")
                      : QStringLiteral("act when the pen is lifted from them"));
    return text;
}

} // namespace

void addPadOptions(QCommandLineParser& parser)
{
    addDriverAndModel(parser);
}

int tellOfPad(const QCommandLineParser& parser, const QString&)
{
    const CPadModel& model = modelOption(parser);
    const Driver driver = driverOption(parser);
    QString text;
    {
        const Session session(model, driver, nullptr, QSize(1, 1));
        text = padText(session) + QStringLiteral("driver:").leftJustified(16) + driver.path +
               QStringLiteral(", ") + nameOf(driver.kind) + QLatin1Char('\n');
    }
    if (driver.kind == Driver::Kind::Pen)
        text += deviceOf(model);
    writeOutput(text.toLocal8Bit(), QStringLiteral("-"));
    return Done;
}
