// Base64Decode of one image type: the input is what the text decodes to.

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
    if (size == 0 || size > std::numeric_limits<int>::max() / 2)
        return 0;
    const auto bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<int>(size));
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
