// scribera-pad info: what a pad is.
#include "commands.h"
#include "optionvalues.h"
#include "output.h"
#include "pens.h"
#include "program.h"
#include "text.h"
#include "waiting.h"

#include <scriberasdk.h>

namespace {

QString orNone(const QString& text)
{
    return text.isEmpty() ? Text::tr("none", "no value") : text;
}

NamedLines padText(const Session& session)
{
    const CPadModel& model = session.model();
    NamedLines lines(16);
    lines.add(Text::tr("pad:"), orNone(session.padId()));
    lines.add(Text::tr("pen:"), orNone(session.penId()));
    lines.add(Text::tr("version:"), orNone(session.version()));
    lines.add(Text::tr("model:"),
              Text::tr("%1, device type %2, of %3")
                  .arg(session.text(6), QString::number(model.m_nDeviceType), session.text(5)));
    lines.add(Text::tr("library:"), QStringLiteral("%1, %2.%3")
                                        .arg(libraryFile())
                                        .arg(session.number(DIID_GET_DRV_VER, 0))
                                        .arg(session.number(DIID_GET_DRV_VER, 1)));
    lines.add(Text::tr("writing area:"), Text::tr("%1 x %2 units, the first at %3,%4")
                                             .arg(session.number(2, 1))
                                             .arg(session.number(3, 1))
                                             .arg(model.m_nPadOriginX)
                                             .arg(model.m_nPadOriginY));
    lines.add(Text::tr("pressure:"), Text::tr("up to %1").arg(session.number(4, 0)));
    lines.add(Text::tr("keys:"), model.m_eKeyRule == EKeyRule::AtTouch
                                     ? Text::tr("act when they are touched")
                                     : Text::tr("act when the pen is lifted from them"));
    return lines;
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
    NamedLines lines = [&] {
        const Session session(model, driver, nullptr, QSize(1, 1));
        return padText(session);
    }();
    lines.add(Text::tr("driver:"), driver.path + QStringLiteral(", ") + nameOf(driver.kind));
    QString text = lines.text();
    if (driver.kind == Driver::Kind::Pen)
        text += deviceOf(model);
    writeOutput(text.toLocal8Bit(), QStringLiteral("-"));
    return Done;
}
