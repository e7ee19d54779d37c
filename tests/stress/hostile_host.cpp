#include "hostile_host.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <optional>

// The leak checker's, where the tests are built with it.
extern "C" void __lsan_disable() __attribute__((weak));
extern "C" void __lsan_enable() __attribute__((weak));

namespace scribera::test {

namespace {

// A text that is taken while another thread closes the pad cannot be given back any more, as documented: what
// is allocated meanwhile is not looked at as a leak.
class LeaksAreExpected
{
public:
    LeaksAreExpected()
    {
        if (__lsan_disable)
            __lsan_disable();
    }
    ~LeaksAreExpected()
    {
        if (__lsan_enable)
            __lsan_enable();
    }
    LeaksAreExpected(const LeaksAreExpected&) = delete;
    LeaksAreExpected& operator=(const LeaksAreExpected&) = delete;
};

bool isRaster(int imageType)
{
    return imageType == ImageBmp || imageType == ImageJpeg || imageType == ImagePng;
}

} // namespace

HostileHost::HostileHost(const PadCase& padCase, Caller caller, unsigned seed, QWidget* parent)
    : m_case(padCase), m_api(Library::instance().family(*padCase.model)), m_caller(caller), m_random(seed),
      m_parent(parent)
{
    const std::string own = caller == Caller::HostThread ? "host-"
                            : caller == Caller::Callback ? "callback-"
                                                         : "bystander" + std::to_string(seed) + "-";
    for (const char* name : {"a.bmp", "b.jpg", "c.png", "d.pdf", "e.svg", "f", "missing/g.png"})
        m_paths.push_back(wide(own + name));
    m_paths.push_back(L"");
    m_paths.push_back(L"/");
    m_paths.push_back(L"/dev/full");
    m_paths.push_back(std::wstring(5000, L'n') + L".png");
    m_paths.push_back(wide(own) + L"\U0001F58B.png");
    m_paths.push_back(std::wstring(1, static_cast<wchar_t>(0x7fffffff)) + L".png");
    m_texts = {"",     "A",        "AAAA", std::string(64, 'A'),    "Qk0=", "iVBORw0KGgo=", "/9j/2Q==",
               "====", "\x80\xff", "%s%n", std::string(100000, 'z')};
    if (caller != Caller::Bystander)
        addLifecycle();
    addPad();
    addPen();
    addPoints();
    addFiles();
    addTexts();
    addFingerprint();
    addAbout();
}

void HostileHost::setCallbacks(StatusCallback status, RealTimeCallback realTime)
{
    m_status = status;
    m_realTime = realTime;
}

void HostileHost::round(const std::function<void(const std::function<void()>&)>& guard)
{
    std::shuffle(m_operations.begin(), m_operations.end(), m_random);
    std::optional<LeaksAreExpected> leaks;
    if (m_caller != Caller::HostThread)
        leaks.emplace();
    for (const Call& call : m_operations) {
        m_current = call.name.c_str();
        guard(call.make);
        ++m_calls;
    }
}

void HostileHost::one()
{
    const LeaksAreExpected leaks;
    const Call& call = m_operations[static_cast<std::size_t>(below(static_cast<int>(m_operations.size())))];
    m_current = call.name.c_str();
    call.make();
    ++m_calls;
}

// ---- arguments

int HostileHost::below(int count)
{
    return static_cast<int>(m_random() % static_cast<unsigned>(count));
}

int HostileHost::number()
{
    static constexpr int extremes[] = {INT_MIN, INT_MIN + 1, -65536, -1,          0,
                                       1,       65535,       65536,  INT_MAX - 1, INT_MAX};
    switch (below(4)) {
    case 0:
        return extremes[below(static_cast<int>(std::size(extremes)))];
    case 1:
        return static_cast<int>(m_random());
    default:
        return below(40) - 8;
    }
}

int HostileHost::typeArgument()
{
    if (chance(88))
        return m_case.model->deviceType;
    return flag() ? number() : otherModel(*m_case.model).deviceType;
}

int HostileHost::imageType()
{
    return chance(80) ? 1 + below(8) : number();
}

wchar_t* HostileHost::path()
{
    const int index = below(static_cast<int>(m_paths.size()) + 1);
    return index == 0 ? nullptr : m_paths[static_cast<std::size_t>(index - 1)].data();
}

const char* HostileHost::encodedText()
{
    const int index = below(static_cast<int>(m_texts.size()) + 1);
    return index == 0 ? nullptr : m_texts[static_cast<std::size_t>(index - 1)].c_str();
}

WindowId HostileHost::windowId()
{
    static constexpr WindowId ids[] = {0, 1, 0x7ffffff0, ~WindowId(0)};
    return ids[below(static_cast<int>(std::size(ids)))];
}

// ---- results

void HostileHost::expectOneOf(int deviceType, int result, const std::vector<int>& documented)
{
    if (deviceType != m_case.model->deviceType) {
        EXPECT_EQ(result, -2) << m_current << " with device type " << deviceType;
        return;
    }
    const bool gone = m_caller != Caller::HostThread && (result == -1 || result == -8);
    EXPECT_TRUE(gone || std::find(documented.begin(), documented.end(), result) != documented.end())
        << m_current << " gave " << result;
}

void HostileHost::expectTruth(int deviceType, bool result, bool documented)
{
    if (deviceType != m_case.model->deviceType) {
        EXPECT_FALSE(result) << m_current << " with device type " << deviceType;
    } else if (m_caller == Caller::HostThread) {
        EXPECT_EQ(result, documented) << m_current;
    }
}

void HostileHost::expectText(int deviceType, char* text, bool accepted, void (*giveBack)(int, char*))
{
    const bool allowed = deviceType == m_case.model->deviceType && accepted;
    EXPECT_TRUE(allowed || !text) << m_current << " gave a text for device type " << deviceType;
    if (text) {
        const std::size_t length = std::strlen(text);
        EXPECT_EQ(length % 4, 0u) << m_current;
        giveBack(m_case.model->deviceType, text);
    }
}

// ---- operations

void HostileHost::addLifecycle()
{
    add("InitialDevice", [this](int type) {
        expectTruth(type, m_api.InitialDevice(type, flag() ? m_parent : nullptr, number(), number(), 30, 20),
                    true);
    });
    add("InitialDeviceByWId", [this](int type) {
        expectTruth(type, m_api.InitialDeviceByWId(type, windowId(), number(), number(), 30, 20), true);
    });
    if (m_caller == Caller::Callback) {
        add("UnInitialDevice", [this](int type) {
            EXPECT_EQ(m_api.UnInitialDevice(type), type == m_case.model->deviceType ? -1 : -2);
        });
    }
}

void HostileHost::addPad()
{
    using Ask = int (*)(int, char*, int);
    const auto addQuestion = [this](const char* name, Ask ask) {
        add(name, [this, ask](int type) {
            char buffer[64];
            const bool null = chance(20);
            const int size = flag() ? static_cast<int>(sizeof buffer) : std::min(number(), 64);
            expectOneOf(type, ask(type, null ? nullptr : buffer, size), {null || size <= 0 ? -2 : 0});
        });
    };
    addQuestion("GetHWPadID", m_api.GetHWPadID);
    addQuestion("GetHWVersionID", m_api.GetHWVersionID);
    if (m_case.model->hasScreen) {
        addQuestion("GetHWPenID", m_api.GetHWPenID);
        add("OpenLCD", [this](int type) { expectOneOf(type, m_api.OpenLCD(type, flag()), {0}); });
        add("DisplayHWVersion",
            [this](int type) { expectOneOf(type, m_api.DisplayHWVersion(type, flag()), {0}); });
    }
    add("Clear", [this](int type) { expectOneOf(type, m_api.Clear(type), {0}); });
    add("getDeviceInfo", [this](int type) {
        const int index = chance(80) ? 1 + below(7) : number();
        char answer[16];
        const bool null = chance(15);
        const bool good = index >= 1 && index <= 7 && !null;
        expectOneOf(type, m_api.getDeviceInfo(type, index, null ? nullptr : answer), {good ? 0 : -2});
    });
}

void HostileHost::addPen()
{
    add("SetPenStyle", [this](int type) { expectOneOf(type, m_api.SetPenStyle(type, flag()), {0}); });
    add("SetPenWidth", [this](int type) {
        const int width = number();
        expectOneOf(type, m_api.SetPenWidth(type, width), {width >= 1 && width <= 10 ? 0 : -2});
    });
    add("SetPenColor",
        [this](int type) { expectOneOf(type, m_api.SetPenColor(type, number(), number(), number()), {0}); });
    add("SignatureStatusCallback", [this](int type) {
        expectOneOf(type, m_api.SignatureStatusCallback(type, chance(20) ? nullptr : m_status), {0});
    });
    add("RealTimeSignatureDataCallback", [this](int type) {
        const RealTimeCallback callback = chance(20) ? nullptr : m_realTime;
        expectTruth(type, m_api.RealTimeSignatureDataCallback(type, callback), callback != nullptr);
    });
    add("GetDeviceConfirmOrCancelKeyStatus", [this](int type) {
        expectOneOf(type, m_api.GetDeviceConfirmOrCancelKeyStatus(type), {-1, 0, 1});
    });
}

void HostileHost::addPoints()
{
    add("GetTotalPacketsNumber", [this](int type) {
        const int count = m_api.GetTotalPacketsNumber(type);
        expectOneOf(type, count > 0 ? 1 : count, {1, -8});
    });
    add("getPackets", [this](int type) {
        Packet packet{number(), 0, 0, 0, 9};
        if (chance(15)) {
            expectOneOf(type, m_api.getPackets(type, nullptr), {-2});
            return;
        }
        const int result = m_api.getPackets(type, &packet);
        expectOneOf(type, result, {0, -1});
        EXPECT_EQ(packet.status > 1, result != 0);
    });
    add("GetInkPointTime", [this](int type) {
        char* text = m_api.GetInkPointTime(type, number());
        EXPECT_TRUE(!text || type == m_case.model->deviceType);
        if (text) {
            EXPECT_EQ(std::strlen(text), std::strlen("2024-03-09 14:05:17.482")) << text;
        }
        m_api.FreeInkPointTime(m_case.model->deviceType, text);
        m_api.FreeInkPointTime(typeArgument(), nullptr);
    });
    add("GetTotalDecodePacketsNumber", [this](int type) {
        const int count = m_api.GetTotalDecodePacketsNumber(type);
        expectOneOf(type, count > 0 ? 1 : count, {1, -8});
    });
    add("GetDecodePacketsData", [this](int type) {
        const int selector = chance(80) ? 1 + below(3) : number();
        const int result = m_api.GetDecodePacketsData(type, number(), selector);
        if (selector < 1 || selector > 3 || type != m_case.model->deviceType) {
            EXPECT_EQ(result, -2);
        } else {
            EXPECT_TRUE(result >= SHRT_MIN && result <= SHRT_MAX) << result;
        }
    });
}

void HostileHost::addFiles()
{
    add("SaveDrawingImage", [this](int type) {
        const int image = imageType();
        const bool savable = isRaster(image) || image == ImagePdf || image == ImageSvg;
        const int result = m_api.SaveDrawingImage(type, image, path(), number());
        expectOneOf(type, result, savable ? std::vector<int>{0, -8} : std::vector<int>{-2});
    });
    add("SetSaveCenterImageClip", [this](int type) {
        const int marginX = number();
        const int marginY = number();
        expectOneOf(type, m_api.SetSaveCenterImageClip(type, flag(), marginX, marginY),
                    {marginX < 0 || marginY < 0 ? -2 : 0});
    });
    add("Base64Decode", [this](int type) {
        const int image = imageType();
        const char* text = encodedText();
        const bool good = (isRaster(image) || image == ImageInk) && text && *text;
        const int result = m_api.Base64Decode(type, image, text, path());
        if (!good)
            expectOneOf(type, result, {-2});
        else
            expectOneOf(type, result, {image == ImageInk ? 0 : -8}); // none of the texts is a whole picture
    });
}

void HostileHost::addTexts()
{
    add("PacketsBase64Encode", [this](int type) {
        const int image = imageType();
        expectText(type, m_api.PacketsBase64Encode(type, image), isRaster(image) || image == ImageInk,
                   m_api.PacketsBase64EncodeFree);
        m_api.PacketsBase64EncodeFree(typeArgument(), nullptr);
    });
    add("PacketsBase64EncodeEx", [this](int type) {
        const int image = imageType();
        expectText(type, m_api.PacketsBase64EncodeEx(type, image, flag()),
                   isRaster(image) || image == ImageInk, m_api.PacketsBase64EncodeExFree);
        m_api.PacketsBase64EncodeExFree(typeArgument(), nullptr);
    });
    add("GetSVGImageBase64Data", [this](int type) {
        if (m_api.GetTotalPacketsNumber(m_case.model->deviceType) > 20000)
            m_api.Clear(m_case.model->deviceType); // a drawing of all of them would take the rest of the time
        expectText(type, m_api.GetSVGImageBase64Data(type), true, m_api.FreeSVGImageBase64Data);
        m_api.FreeSVGImageBase64Data(typeArgument(), nullptr);
    });
}

void HostileHost::addFingerprint()
{
    if (!m_case.model->hasFingerprint)
        return;
    // Every placement stays until the end, so there are not too many of them.
    const auto place = [this](int type, auto call) {
        if (m_placements == 200)
            return;
        const int left = number();
        const int width = number();
        // A widget is placed on its own thread only, and this is another.
        const std::vector<int> documented =
            m_case.isWidget() ? std::vector<int>{-1} : std::vector<int>{0, -2};
        const int result = call(left, width);
        expectOneOf(type, result, documented);
        m_placements += type == m_case.model->deviceType;
    };
    add("SetDisplayedFPImageAt", [this, place](int type) {
        place(type, [=, this](int left, int width) {
            return m_api.SetDisplayedFPImageAt(type, flag() ? m_parent : nullptr, 100 + below(200), 80, left,
                                               3, width, 40);
        });
    });
    add("SetDisplayedFPImageAtByWId", [this, place](int type) {
        place(type, [=, this](int left, int width) {
            return m_api.SetDisplayedFPImageAtByWId(type, windowId(), 100 + below(200), 80, left, 3, width,
                                                    40);
        });
    });
    add("GetFPImageBase64Data", [this](int type) {
        const int image = imageType();
        expectText(type, m_api.GetFPImageBase64Data(type, image, flag()), isRaster(image),
                   m_api.FreeFPImageBase64Data);
        m_api.FreeFPImageBase64Data(typeArgument(), nullptr);
    });
}

void HostileHost::addAbout()
{
    // Away from the GUI thread nothing is shown.
    add("AboutBox", [this](int) { m_api.AboutBox(flag() ? m_parent : nullptr); });
    add("AboutBoxByWId", [this](int) { m_api.AboutBoxByWId(windowId()); });
    add("GetAboutInfo", [this](int type) {
        char buffer[128] = "";
        m_api.GetAboutInfo(type, buffer);
        EXPECT_EQ(std::strncmp(buffer, "About\n", 6) == 0, type == m_case.model->deviceType);
        m_api.GetAboutInfo(type, nullptr);
    });
}

} // namespace scribera::test
