// The readers of ink in documents: the input as InkML, CSV, JSON and as a recording.

#include "failures.h"
#include "fuzzer.h"
#include "inkml.h"
#include "inktables.h"
#include "inkto.h"

#include <limits>

namespace {

const QString Name = QStringLiteral("input");

// Nothing known beside the document, and everything.
template <bool isKnown>
Circumstances circumstances()
{
    return isKnown ? Circumstances{&g_PadK210, 19.685} : Circumstances{};
}

template <bool isKnown>
QByteArray writtenAsInkMl(const CInkSnapshot& ink)
{
    return toInkMl(ink, circumstances<isKnown>());
}

template <bool isKnown>
CInkSnapshot readAsInkMl(const QByteArray& text, const QString& name)
{
    return fromInkMl(text, name, circumstances<isKnown>());
}

// What is accepted is ink, and as that the same when it has gone there and back.
void read(CInkSnapshot (*reader)(const QByteArray&, const QString&),
          QByteArray (*writer)(const CInkSnapshot&), const QByteArray& text)
{
    CInkSnapshot ink;
    try {
        ink = reader(text, Name);
    } catch (const Failure& failure) {
        require(failure.reason.startsWith(Name + QLatin1Char(':')), "a refusal names the file and the place");
        require(!failure.reason.contains(QLatin1Char('\n')), "a refusal is one line");
        return;
    }
    for (std::size_t index = 1; index < ink.Count(); ++index)
        require(ink.At(index).llTick >= ink.At(index - 1).llTick, "times do not go back");
    if (writer)
        require(toCsv(reader(writer(ink), Name)) == toCsv(ink),
                "nothing gets lost on the way there and back");
}

} // namespace

int LLVMFuzzerInitialize(int*, char***)
{
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size > std::numeric_limits<int>::max() / 2)
        return 0;
    const QByteArray text(reinterpret_cast<const char*>(data), static_cast<int>(size));
    read(readAsInkMl<false>, writtenAsInkMl<false>, text);
    read(readAsInkMl<true>, writtenAsInkMl<true>, text);
    read(fromCsv, toCsv, text);
    read(fromJson, toJson, text);
    read(fromRecording, nullptr, text); // the pad that it names is not kept
    return 0;
}
