// The readers of signature time series: the input as a record of the full and of the compact form.

#include "failures.h"
#include "fuzzer.h"
#include "isosignature.h"

#include <limits>
#include <optional>

namespace {

const QString Name = QStringLiteral("input");

template <typename TRead>
std::optional<CInkSnapshot> accepted(TRead read)
{
    try {
        return read();
    } catch (const Failure& failure) {
        require(failure.reason.startsWith(Name + QLatin1Char(':')), "a refusal names the file and the place");
        require(!failure.reason.contains(QLatin1Char('\n')), "a refusal is one line");
        return std::nullopt;
    }
}

void requireTimesInOrder(const CInkSnapshot& ink)
{
    for (std::size_t index = 1; index < ink.Count(); ++index)
        require(ink.At(index).llTick >= ink.At(index - 1).llTick, "times do not go back");
}

void readFull(const QByteArray& bytes, std::optional<double> unitsPerMillimetre)
{
    const auto ink = accepted([&] { return fromIsoSignature(bytes, Name, unitsPerMillimetre); });
    if (!ink)
        return;
    requireTimesInOrder(*ink);
    QByteArray written;
    try {
        written = toIsoSignature(*ink, unitsPerMillimetre);
    } catch (const Failure&) {
        return; // what was read by steps and scales may be more than one record can tell
    }
    require(toIsoSignature(fromIsoSignature(written, Name, unitsPerMillimetre), unitsPerMillimetre) ==
                written,
            "what is written can be read");
}

void readCompact(const QByteArray& bytes)
{
    for (const CPadModel* pad : AllPads()) {
        const auto ink = accepted([&] { return fromCompactIsoSignature(bytes, Name, *pad); });
        require(ink.has_value() == (bytes.size() % 5 == 0), "whole points are accepted, and nothing else");
        if (!ink)
            return;
        requireTimesInOrder(*ink);
        const QByteArray written = toCompactIsoSignature(*ink, *pad);
        require(toCompactIsoSignature(fromCompactIsoSignature(written, Name, *pad), *pad) == written,
                "what is written can be read");
    }
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
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<int>(size));
    readFull(bytes, std::nullopt);
    readFull(bytes, 19.685);
    readCompact(bytes);
    return 0;
}
