// Base64Decode of all image types: the first byte of the input picks one, the others are the text as a host
// passes it, Base64 or not.

#include "fuzzer.h"
#include "live_pad.h"

#include <limits>

int LLVMFuzzerInitialize(int*, char***)
{
    startPad();
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr int Types[] = {EBITI_BITMAP, EBITI_JPG, EBITI_PNG, EBITI_INK};
    if (size < 1 || size > std::numeric_limits<int>::max() / 2)
        return 0;
    const int type = Types[data[0] % 4];
    const QByteArray text(
        QByteArray(reinterpret_cast<const char*>(data + 1), static_cast<int>(size - 1)).constData());
    const int result = decode(type, text);
    if (text.isEmpty()) {
        require(result == ARI_INVALID_PARAMETERS, "an empty text is refused");
    } else if (type == EBITI_INK) {
        require(result == ARI_SUCCESS, "an ink text is always taken");
        requireDecodedPoints(QByteArray::fromBase64(text));
    } else {
        require(result == (hasDecodedFile() ? ARI_SUCCESS : -8), "the result tells whether there is a file");
        requireDecodedPoints({});
    }
    return 0;
}
