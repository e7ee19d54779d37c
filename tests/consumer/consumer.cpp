// The same in C++, with a clipped document and the ink as text.
#include <scriberasdk.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <thread>

namespace {

std::atomic<int> key{-1};

} // namespace

int main()
{
    wchar_t path[] = L"consumer-cxx.pdf";
    if (!SCK420_InitialDevice(SCK420_DEVICE, nullptr, 0, 0, 600, 300)) {
        std::fprintf(stderr, "no pad\n");
        return 1;
    }
    SCK420_SignatureStatusCallback(SCK420_DEVICE, [](int status) { key = status; });
    for (int i = 0; i < 3000 && key < 0; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    SCK420_SetSaveCenterImageClip(SCK420_DEVICE, true, 12, 12);
    const int saved = SCK420_SaveDrawingImage(SCK420_DEVICE, EBITI_PDF, path, 0);
    char* const ink = SCK420_PacketsBase64Encode(SCK420_DEVICE, EBITI_INK);
    const std::size_t length = ink ? std::strlen(ink) : 0;
    SCK420_PacketsBase64EncodeFree(SCK420_DEVICE, ink);
    const int closed = SCK420_UnInitialDevice(SCK420_DEVICE);
    std::printf("key %d, ink text of %zu characters, saved %d, closed %d\n", key.load(), length, saved,
                closed);
    return key == 1 && length > 1000 && saved == ARI_SUCCESS && closed == ARI_SUCCESS ? 0 : 1;
}
