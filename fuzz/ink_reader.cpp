// The strict reader of ink packet streams: the input as the text itself, and as the bytes that a text decodes
// to.

#include "fuzzer.h"
#include "ink/inkstream.h"

#include <cstring>
#include <limits>

namespace {

void read(const QByteArray& text)
{
    CInkPointList points;
    const std::optional<CInkStreamFault> fault = ReadInkStreamText(text, points);
    if (fault) {
        require(fault->m_nOffset >= 0 && fault->m_nOffset <= text.size(), "the fault lies in the text");
        require(!fault->m_strReason.isEmpty(), "the fault has a reason");
        require(points.Count() == 0, "nothing of a faulty text is taken");
        return;
    }
    QByteArray unbroken = text;
    unbroken.replace('\n', "").replace('\r', "");
    const QByteArray written = PackInkStream(points.Snapshot()).toBase64();
    require(unbroken.startsWith(written), "what is accepted is what the library writes, but for line breaks");
    require(std::strspn(unbroken.constData() + written.size(), " \t") ==
                static_cast<std::size_t>(unbroken.size() - written.size()),
            "only blanks follow");
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
    read(bytes);
    read(bytes.toBase64());
    return 0;
}
