// Base64Decode of one image type: the input is what the text decodes to.

#include "fuzzer.h"
#include "live_pad.h"

#include <QBuffer>
#include <QImageReader>
#include <QSize>

#include <limits>

namespace {

// A few bytes may claim a picture that is accepted and takes a second. A replay has time for those of the
// corpus; an engine would make more and more of them.
bool isForReplayOnly([[maybe_unused]] const QByteArray& bytes)
{
#ifdef SCRIBERA_FUZZ_ENGINE
    constexpr qint64 Large = 1 << 20;
    constexpr qint64 Refused = 1 << 26;
    QBuffer buffer;
    buffer.setData(bytes);
    const QSize size = QImageReader(&buffer).size();
    const qint64 pixels = qint64{size.width()} * size.height();
    return pixels > Large && pixels <= Refused;
#else
    return false;
#endif
}

} // namespace

int LLVMFuzzerInitialize(int*, char***)
{
    startPad();
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0 || size > std::numeric_limits<int>::max() / 2)
        return 0;
    const auto bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<int>(size));
    if (isForReplayOnly(bytes))
        return 0;
    constexpr int imageType = SCRIBERA_FUZZ_TYPE;
    const int result = decode(imageType, bytes.toBase64());
    if (imageType == EBITI_INK) {
        require(result == ARI_SUCCESS, "an ink text is always taken");
        requireDecodedPoints(bytes);
    } else {
        require(result == (hasDecodedFile() ? ARI_SUCCESS : -8), "the result tells whether there is a file");
        requireDecodedPoints({});
    }
    return 0;
}
