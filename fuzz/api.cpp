// The whole interface: the input is a sequence of calls with their arguments, of all families, and of what
// the pad does meanwhile. Each result has to be one of those documented, for a host that gives anything but
// pointers that lead nowhere.

#include "fuzzer.h"
#include "scriberasdk.h"
#include "scriberasdk_ext.h"
#include "simclient.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <climits>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <dlfcn.h>
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

constexpr int TimeoutMs = 30000;
constexpr int FingerprintSize = 208 * 288;

// ---- a /tmp of its own, since the library's files there have fixed names and are everybody's

const char* const FixedNames[] = {"scriberasdk.log", "scriberasdk_inthread.log", "Scrsign.svg"};

class PrivateTmp
{
public:
    // The folders that are there still show; the files do not.
    bool make()
    {
        m_real = open("/tmp", O_PATH | O_DIRECTORY | O_CLOEXEC);
        m_before = realFiles();
        if (!enterNamespace() || mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
            return false;
        std::vector<std::pair<fs::path, int>> folders;
        for (const fs::directory_entry& entry : fs::directory_iterator("/tmp")) {
            if (!entry.is_symlink() && entry.is_directory())
                folders.emplace_back(entry.path(), open(entry.path().c_str(), O_PATH | O_CLOEXEC));
        }
        if (mount("scribera-fuzz", "/tmp", "tmpfs", MS_NOSUID | MS_NODEV, "mode=1777") != 0)
            return false;
        bool shown = true;
        for (const auto& [path, folder] : folders) {
            std::error_code failure;
            fs::create_directory(path, failure);
            const std::string source = "/proc/self/fd/" + std::to_string(folder);
            shown = mount(source.c_str(), path.c_str(), nullptr, MS_BIND | MS_REC, nullptr) == 0 && shown;
            close(folder);
        }
        return shown;
    }

    // Nothing went to the files that everybody sees. Whoever else logs there meanwhile looks the same.
    bool isRealOneUntouched() const { return realFiles() == m_before; }

    static void empty()
    {
        std::error_code ignored;
        for (const char* name : FixedNames)
            fs::remove(fs::path("/tmp") / name, ignored);
    }

private:
    using Files = std::vector<std::array<long long, 4>>;

    static bool writeText(const char* path, const std::string& text)
    {
        std::ofstream out(path);
        out << text << std::flush;
        return out.good();
    }
    static bool enterNamespace()
    {
        const std::string user = std::to_string(geteuid());
        const std::string group = std::to_string(getegid());
        return unshare(CLONE_NEWNS) == 0 ||
               (unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 && writeText("/proc/self/setgroups", "deny") &&
                writeText("/proc/self/uid_map", user + " " + user + " 1") &&
                writeText("/proc/self/gid_map", group + " " + group + " 1"));
    }
    Files realFiles() const
    {
        Files files;
        for (const char* name : FixedNames) {
            struct stat status
            {
            };
            if (fstatat(m_real, name, &status, AT_SYMLINK_NOFOLLOW) == 0)
                files.push_back({static_cast<long long>(status.st_ino), status.st_size, status.st_mtim.tv_sec,
                                 status.st_mtim.tv_nsec});
            else
                files.push_back({});
        }
        return files;
    }

    int m_real = -1;
    Files m_before;
};

PrivateTmp g_tmp;

// ---- the interface, once for each family

// X(model, name, result, parameters)
#define COMMON_OPERATIONS(X, model)                                                                          \
    X(model, InitialDevice, bool, (int, QWidget*, int, int, int, int))                                       \
    X(model, InitialDeviceByWId, bool, (int, unsigned long long, int, int, int, int))                        \
    X(model, UnInitialDevice, int, (int))                                                                    \
    X(model, Clear, int, (int))                                                                              \
    X(model, GetHWPadID, int, (int, char*, int))                                                             \
    X(model, GetHWVersionID, int, (int, char*, int))                                                         \
    X(model, getDeviceInfo, int, (int, int, void*))                                                          \
    X(model, SetPenStyle, int, (int, bool))                                                                  \
    X(model, SetPenWidth, int, (int, int))                                                                   \
    X(model, SetPenColor, int, (int, int, int, int))                                                         \
    X(model, SignatureStatusCallback, int, (int, ScriberaSignatureStatusCallback))                           \
    X(model, RealTimeSignatureDataCallback, bool, (int, ScriberaRealTimeSignDataCallback))                   \
    X(model, GetDeviceConfirmOrCancelKeyStatus, int, (int))                                                  \
    X(model, GetTotalPacketsNumber, int, (int))                                                              \
    X(model, getPackets, int, (int, _PACKETS*))                                                              \
    X(model, GetInkPointTime, char*, (int, int))                                                             \
    X(model, FreeInkPointTime, void, (int, char*))                                                           \
    X(model, SaveDrawingImage, int, (int, int, wchar_t*, int))                                               \
    X(model, SetSaveCenterImageClip, int, (int, bool, int, int))                                             \
    X(model, PacketsBase64Encode, char*, (int, int))                                                         \
    X(model, PacketsBase64EncodeFree, void, (int, char*))                                                    \
    X(model, PacketsBase64EncodeEx, char*, (int, int, bool))                                                 \
    X(model, PacketsBase64EncodeExFree, void, (int, char*))                                                  \
    X(model, GetSVGImageBase64Data, char*, (int))                                                            \
    X(model, FreeSVGImageBase64Data, void, (int, char*))                                                     \
    X(model, Base64Decode, int, (int, int, const char*, wchar_t*))                                           \
    X(model, GetTotalDecodePacketsNumber, int, (int))                                                        \
    X(model, GetDecodePacketsData, int, (int, int, int))                                                     \
    X(model, AboutBox, void, (QWidget*))                                                                     \
    X(model, AboutBoxByWId, void, (unsigned long long))                                                      \
    X(model, GetAboutInfo, void, (int, char*))
#define SCREEN_OPERATIONS(X, model)                                                                          \
    X(model, OpenLCD, int, (int, bool))                                                                      \
    X(model, GetHWPenID, int, (int, char*, int))                                                             \
    X(model, DisplayHWVersion, int, (int, bool))
#define FINGERPRINT_OPERATIONS(X, model)                                                                     \
    X(model, SetDisplayedFPImageAt, int, (int, QWidget*, int, int, int, int, int, int))                      \
    X(model, SetDisplayedFPImageAtByWId, int, (int, unsigned long long, int, int, int, int, int, int))       \
    X(model, GetFPImageBase64Data, char*, (int, int, bool))                                                  \
    X(model, FreeFPImageBase64Data, void, (int, char*))

// In this order, by which inputs choose.
enum Model : std::size_t
{
#define X(model) model,
    SCRIBERA_FAMILIES(X) ModelCount
#undef X
};

struct Family
{
    int type = 0;
#define X(model, name, result, parameters) result(*name) parameters = nullptr;
    COMMON_OPERATIONS(X, )
    SCREEN_OPERATIONS(X, )
    FINGERPRINT_OPERATIONS(X, )
#undef X
};

std::array<Family, ModelCount> makeFamilies()
{
    std::array<Family, ModelCount> families;
#define TAKE(model, name, result, parameters) families[model].name = SC##model##_##name;
#define COMMON(model)                                                                                        \
    families[model].type = SC##model##_DEVICE;                                                               \
    COMMON_OPERATIONS(TAKE, model)
#define SCREEN(model) SCREEN_OPERATIONS(TAKE, model)
#define FINGERPRINT(model) FINGERPRINT_OPERATIONS(TAKE, model)
    SCRIBERA_FAMILIES(COMMON)
    SCRIBERA_FAMILIES_WITH_SCREEN(SCREEN)
    SCRIBERA_FAMILIES_WITH_FINGERPRINT(FINGERPRINT)
#undef TAKE
#undef COMMON
#undef SCREEN
#undef FINGERPRINT
    return families;
}

const std::array<Family, ModelCount> families = makeFamilies();

// ---- the pad

simulator::Client g_pad;
fs::path g_directory;

const char* const EntryPoints[] = {"SCRDAPI_Initial",
                                   "SCRDAPI_OpenDeviceLCD",
                                   "SCRDAPI_ClearDeviceContent",
                                   "SCRDAPI_GetDevicePenID",
                                   "SCRDAPI_GetDevicePadID",
                                   "SCRDAPI_GetDevicePartsVersion",
                                   "SCRDAPI_ShowVersionInfoOnDevice",
                                   "SCRDAPI_SetDevicePenStyle",
                                   "SCRDAPI_ShowFPImageOnDevice"};

const char* const TextEntryPoints[] = {"SCRDAPI_GetDevicePartsVersion", "SCRDAPI_GetDevicePadID",
                                       "SCRDAPI_GetDevicePenID"};

// ---- the input

// Read in statements of their own, never as several arguments of one call: each compiler has its own order of
// evaluating those, and an input has to do the same everywhere. And the same of them for all families, so
// that an input for one is one for the others.
class Bytes
{
public:
    Bytes(const std::uint8_t* data, std::size_t size) : m_next(data), m_end(data + size) {}

    bool isAtEnd() const { return m_next == m_end; }
    std::uint8_t byte() { return isAtEnd() ? 0 : *m_next++; }
    bool flag() { return (byte() & 1) != 0; }
    int number() // a small one in a byte, any in five
    {
        const std::uint8_t first = byte();
        if (first < 0xf0)
            return first - 0x10;
        std::uint32_t bits = 0;
        for (int i = 0; i < 4; ++i)
            bits = bits << 8 | byte();
        return static_cast<int>(bits);
    }
    int number(unsigned factor) { return static_cast<int>(static_cast<unsigned>(number()) * factor); }
    int status() // mostly one of the five
    {
        const std::uint8_t first = byte();
        return first < 0xf0 ? first % 6 : number();
    }
    std::string text()
    {
        std::string text;
        for (std::size_t left = byte(); left > 0 && !isAtEnd(); --left)
            text += static_cast<char>(byte());
        return text;
    }

private:
    const std::uint8_t* m_next;
    const std::uint8_t* m_end;
};

// ---- callbacks

std::atomic<const Family*> g_inCallback = nullptr;
std::atomic<unsigned> g_callbackDoes = 0;
std::atomic<bool> g_tellsKeys = false;
std::atomic<unsigned> g_keysTold = 0;

void callBack()
{
    const Family& family = *g_inCallback;
    const int type = family.type;
    require(family.UnInitialDevice(type) == -1, "no callback closes the pad");
    family.GetTotalPacketsNumber(type);
    _PACKETS packet{};
    const int result = family.getPackets(type, &packet);
    require(result == 0 || result == -1, "a point or none");
    switch (g_callbackDoes % 7) {
    case 0:
        family.SetPenWidth(type, 4);
        break;
    case 1:
        family.Clear(type);
        break;
    case 2:
        family.InitialDevice(type, nullptr, 0, 0, 64, 32);
        break;
    case 3:
        family.SetSaveCenterImageClip(type, true, 1, 1);
        break;
    case 4:
        g_tellsKeys = false;
        family.SignatureStatusCallback(type, nullptr);
        break;
    case 5:
        family.SetPenStyle(type, false);
        break;
    default:
        if (family.OpenLCD)
            family.OpenLCD(type, false);
        break;
    }
}

void onStatus(int status)
{
    require(status == 0 || status == 1, "a key is 0 or 1");
    callBack();
    ++g_keysTold;
}

void onPoint(unsigned long position, long pen)
{
    require(position >> 32 == 0 && (pen >> 16 == 0 || pen >> 16 == 1), "a point is packed");
    // The pad is waited for before it is closed, so that the text can be given back.
    const Family& family = *g_inCallback;
    family.PacketsBase64EncodeFree(family.type, family.PacketsBase64Encode(family.type, EBITI_INK));
    callBack();
}

// ---- calls

bool isRaster(int imageType)
{
    return imageType == EBITI_BITMAP || imageType == EBITI_JPG || imageType == EBITI_PNG;
}

// The library's threads read it meanwhile.
void enableLog(bool enabled)
{
    std::atomic_ref(g_bEnableLog).store(enabled ? 1 : 0);
}

class Host
{
public:
    explicit Host(Bytes bytes) : m_bytes(bytes) {}

    void run();

private:
    void padDoes();
    void pressKey();
    void open();
    void askPad();
    void pen();
    void points();
    void files();
    void texts();
    void fingerprint();
    void about();
    void additions();

    const Family& family() const { return families[m_family]; }
    bool isLive() const { return m_live == &family(); }
    int type() // mostly the family's own
    {
        m_type = m_bytes.byte() % 8 == 7 ? m_bytes.number() : family().type;
        return m_type;
    }
    // What a function of the object gives: -2 for the type, its own for bad arguments, missing without a pad.
    void check(int result, std::initializer_list<int> documented, int missing = -1, bool badArguments = false)
    {
        if (m_type != family().type)
            require(result == -2, "another device type is refused");
        else if (badArguments)
            require(result == -2, "bad arguments are refused");
        else if (!isLive())
            require(result == missing, "without a pad there is nothing");
        else
            require(std::find(documented.begin(), documented.end(), result) != documented.end(),
                    "the result is documented");
    }
    // Codes that the driver was told to give are passed on.
    void checkDriver(int result)
    {
        if (m_driverFails && isLive() && m_type == family().type)
            return;
        check(result, {0, -1, -2});
    }
    void takeText(char* text, bool accepted, void (*giveBack)(int, char*), int otherType)
    {
        require(!text || (m_type == family().type && isLive() && accepted), "no text for a refused call");
        if (text)
            require(std::strlen(text) % 4 == 0, "a text is whole Base64");
        giveBack(family().type, text);
        giveBack(otherType, nullptr);
    }
    wchar_t* path()
    {
        static const char* const names[] = {"a.bmp", "b.jpg", "c.png", "d", "missing/e.png", "", "."};
        const std::uint8_t choice = m_bytes.byte() % 9;
        if (choice == 8)
            return nullptr;
        m_path = choice == 7 ? std::wstring(5000, L'x') : fs::path(g_directory / names[choice]).wstring();
        return m_path.data();
    }

    Bytes m_bytes;
    std::size_t m_family = 0;
    const Family* m_live = nullptr;
    int m_type = 0;
    bool m_driverFails = false;
    std::wstring m_path;
};

void Host::padDoes()
{
    switch (m_bytes.byte() % 6) {
    case 0: {
        std::vector<ScrSimSample> samples(m_bytes.byte() % 32);
        for (ScrSimSample& sample : samples)
            sample = {m_bytes.number(40), m_bytes.number(30), m_bytes.number(8), m_bytes.status()};
        g_pad.SendSamples(samples.data(), static_cast<int>(samples.size()));
        break;
    }
    case 1:
        pressKey();
        break;
    case 2: {
        std::vector<unsigned char> print(FingerprintSize);
        const std::uint8_t first = m_bytes.byte();
        const std::uint8_t step = m_bytes.byte();
        for (std::size_t i = 0; i < print.size(); ++i)
            print[i] = static_cast<unsigned char>(first + i * step);
        const bool null = m_bytes.flag();
        const int length = std::min(m_bytes.number(), FingerprintSize); // as many are read from print
        g_pad.SendFingerprint(null ? nullptr : print.data(), length, m_bytes.number());
        break;
    }
    case 3: {
        const char* const entryPoint = EntryPoints[m_bytes.byte() % std::size(EntryPoints)];
        m_driverFails = true;
        g_pad.SetResult(entryPoint, m_bytes.number());
        break;
    }
    case 4: {
        const std::string text = m_bytes.text();
        m_driverFails = true;
        const bool terminate = m_bytes.flag();
        g_pad.SetText(TextEntryPoints[m_bytes.byte() % std::size(TextEntryPoints)], text.data(),
                      static_cast<int>(text.size()), terminate);
        break;
    }
    default:
        g_pad.Reset();
        m_driverFails = false;
        break;
    }
    require(g_pad.WaitIdle(TimeoutMs) == 0, "the pad's samples are taken");
}

// The library's own thread tells of a key. It is waited for, so that an input does the same every time.
void Host::pressKey()
{
    const unsigned before = g_keysTold;
    const bool pressed = g_pad.PressKey(m_bytes.byte() % 2) == 0;
    if (!pressed || !m_live || !g_tellsKeys)
        return;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(TimeoutMs);
    while (g_keysTold == before && g_tellsKeys) {
        require(std::chrono::steady_clock::now() < deadline, "a key is told");
        std::this_thread::yield();
    }
}

void Host::open()
{
    const std::uint8_t what = m_bytes.byte() % 4;
    if (what == 3) {
        const int deviceType = type();
        const int result = family().UnInitialDevice(deviceType);
        require(result == (deviceType == family().type ? 0 : -2), "closing succeeds");
        if (deviceType == family().type && isLive()) {
            m_live = nullptr;
            g_tellsKeys = false;
        }
        return;
    }
    static constexpr int sizes[][2] = {{64, 32}, {300, 150}, {0, 0}, {-5, 10}, {INT_MAX, INT_MAX}, {5000, 1}};
    const auto& size = sizes[m_bytes.byte() % std::size(sizes)];
    const int deviceType = type();
    const int x = m_bytes.number();
    const unsigned long long window = what == 0 && m_bytes.byte() % 8 == 7 ? static_cast<unsigned>(x) : 0;
    const bool opened = what == 0 ? family().InitialDeviceByWId(deviceType, window, x, 0, size[0], size[1])
                                  : family().InitialDevice(deviceType, nullptr, x, 0, size[0], size[1]);
    if (deviceType != family().type)
        require(!opened, "another device type opens nothing");
    else if (m_live)
        require(opened, "an open pad stays open");
    else if (window != 0)
        require(!opened, "no widget of this process has the id");
    else if (!m_driverFails)
        require(opened, "the pad opens");
    if (opened && !m_live)
        m_live = &family();
    require((g_pSignWidget != nullptr) == (m_live != nullptr), "the variable tells whether a pad is open");
}

void Host::askPad()
{
    std::array<char, 64> buffer{};
    char* const target = m_bytes.flag() ? nullptr : buffer.data();
    const int size = std::min(m_bytes.number(), static_cast<int>(buffer.size()));
    const std::uint8_t what = m_bytes.byte() % 7;
    const bool on = m_bytes.flag();
    const int index = m_bytes.number();
    const int deviceType = type();
    if (what >= 4 && !family().OpenLCD)
        return;
    switch (what) {
    case 0:
        checkDriver(family().GetHWPadID(deviceType, target, size));
        break;
    case 1:
        checkDriver(family().GetHWVersionID(deviceType, target, size));
        break;
    case 2:
        check(family().getDeviceInfo(deviceType, index, target), {0}, -1, index < 1 || index > 7 || !target);
        break;
    case 3:
        checkDriver(family().Clear(deviceType));
        break;
    case 4:
        checkDriver(family().OpenLCD(deviceType, on));
        break;
    case 5:
        checkDriver(family().GetHWPenID(deviceType, target, size));
        break;
    default:
        checkDriver(family().DisplayHWVersion(deviceType, on));
        break;
    }
}

void Host::pen()
{
    switch (m_bytes.byte() % 6) {
    case 0: {
        const bool pressureOn = m_bytes.flag();
        checkDriver(family().SetPenStyle(type(), pressureOn));
        break;
    }
    case 1: {
        const int width = m_bytes.number();
        const int result = family().SetPenWidth(type(), width);
        check(result, {width >= 1 && width <= 10 ? 0 : -2});
        break;
    }
    case 2: {
        const int red = m_bytes.number();
        const int green = m_bytes.number();
        const int blue = m_bytes.number();
        check(family().SetPenColor(type(), red, green, blue), {0});
        break;
    }
    case 3: {
        const bool tells = m_bytes.flag();
        g_callbackDoes = m_bytes.byte();
        const int deviceType = type();
        const int result = family().SignatureStatusCallback(deviceType, tells ? onStatus : nullptr);
        check(result, {0});
        if (result == 0)
            g_tellsKeys = tells;
        break;
    }
    case 4: {
        const bool null = m_bytes.flag();
        g_callbackDoes = m_bytes.byte();
        const int deviceType = type();
        const bool taken = family().RealTimeSignatureDataCallback(deviceType, null ? nullptr : onPoint);
        require(taken == (deviceType == family().type && !null && isLive()),
                "a callback is taken or refused");
        break;
    }
    default:
        check(family().GetDeviceConfirmOrCancelKeyStatus(type()), {-1, 0, 1});
        break;
    }
}

void Host::points()
{
    const int index = m_bytes.number();
    switch (m_bytes.byte() % 5) {
    case 0: {
        const int count = family().GetTotalPacketsNumber(type());
        check(count > 0 ? 1 : count, {1, -8}, -8);
        break;
    }
    case 1: {
        _PACKETS packet{index, 0, 0, 0, 9};
        const bool null = m_bytes.flag();
        check(family().getPackets(type(), null ? nullptr : &packet), {null ? -2 : 0, null ? -2 : -1});
        break;
    }
    case 2: {
        const int deviceType = type();
        char* const text = family().GetInkPointTime(deviceType, index);
        require(!text || (isLive() && deviceType == family().type && index >= 0), "no time without a point");
        require(!text || std::strlen(text) >= 23, "a time is whole");
        family().FreeInkPointTime(family().type, text);
        family().FreeInkPointTime(deviceType, nullptr);
        break;
    }
    case 3: {
        const int count = family().GetTotalDecodePacketsNumber(type());
        check(count > 0 ? 1 : count, {1, -8}, -8);
        break;
    }
    default: {
        const int selector = m_bytes.number();
        const int deviceType = type();
        const int result = family().GetDecodePacketsData(deviceType, index, selector);
        if (deviceType != family().type || selector < 1 || selector > 3)
            require(result == -2, "bad arguments are refused");
        else if (!isLive())
            require(result == -1, "without a pad there is nothing");
        else
            require(result >= SHRT_MIN && result <= SHRT_MAX, "a number of 16 bits");
        break;
    }
    }
}

void Host::files()
{
    const int imageType = m_bytes.number();
    switch (m_bytes.byte() % 3) {
    case 0: {
        const bool savable = isRaster(imageType) || imageType == EBITI_PDF || imageType == EBITI_SVG;
        wchar_t* const file = path();
        const int level = m_bytes.number();
        check(family().SaveDrawingImage(type(), imageType, file, level), {0, -8}, -1, !savable);
        break;
    }
    case 1: {
        const int marginX = m_bytes.number();
        const int marginY = m_bytes.number();
        const bool clips = m_bytes.flag();
        check(family().SetSaveCenterImageClip(type(), clips, marginX, marginY), {0}, -1,
              marginX < 0 || marginY < 0);
        break;
    }
    default: {
        const std::string text = m_bytes.text();
        const bool null = m_bytes.flag();
        const bool bad = (!isRaster(imageType) && imageType != EBITI_INK) || null || text.c_str()[0] == '\0';
        wchar_t* const file = path();
        check(family().Base64Decode(type(), imageType, null ? nullptr : text.c_str(), file), {0, -8}, -1,
              bad);
        break;
    }
    }
}

void Host::texts()
{
    const int imageType = m_bytes.number();
    const bool encodable = isRaster(imageType) || imageType == EBITI_INK;
    const bool transparent = m_bytes.flag();
    const int otherType = m_bytes.number();
    switch (m_bytes.byte() % 3) {
    case 0:
        takeText(family().PacketsBase64Encode(type(), imageType), encodable, family().PacketsBase64EncodeFree,
                 otherType);
        break;
    case 1:
        takeText(family().PacketsBase64EncodeEx(type(), imageType, transparent), encodable,
                 family().PacketsBase64EncodeExFree, otherType);
        break;
    default:
        takeText(family().GetSVGImageBase64Data(type()), true, family().FreeSVGImageBase64Data, otherType);
        break;
    }
}

void Host::fingerprint()
{
    const std::uint8_t what = m_bytes.byte() % 3;
    const int imageType = m_bytes.number();
    const bool only = m_bytes.flag();
    const int width = m_bytes.byte() * 4;
    const int height = m_bytes.byte() * 4;
    int rectangle[4];
    for (int& side : rectangle)
        side = m_bytes.number();
    const unsigned long long window = m_bytes.byte();
    const int otherType = m_bytes.number();
    const int deviceType = type();
    if (!family().SetDisplayedFPImageAt)
        return;
    switch (what) {
    case 0:
        check(family().SetDisplayedFPImageAt(deviceType, nullptr, width, height, rectangle[0], rectangle[1],
                                             rectangle[2], rectangle[3]),
              {0, -2});
        break;
    case 1:
        check(family().SetDisplayedFPImageAtByWId(deviceType, window, width, height, rectangle[0],
                                                  rectangle[1], rectangle[2], rectangle[3]),
              {0, -2});
        break;
    default:
        takeText(family().GetFPImageBase64Data(deviceType, imageType, only), isRaster(imageType),
                 family().FreeFPImageBase64Data, otherType);
        break;
    }
}

void Host::about()
{
    const std::uint8_t what = m_bytes.byte();
    enableLog((what & 1) != 0);
    if ((what & 2) != 0)
        additions();
    family().AboutBox(nullptr); // no application: nothing is shown
    family().AboutBoxByWId(m_bytes.byte());
    std::array<char, 128> buffer{};
    const int deviceType = type();
    family().GetAboutInfo(deviceType, m_bytes.flag() ? nullptr : buffer.data());
    require(buffer[0] == '\0' ||
                (deviceType == family().type && std::strncmp(buffer.data(), "About\n", 6) == 0),
            "the text is that of the box");
}

void Host::additions()
{
    require(SCRX_Version() == SCRX_VERSION, "the library is that of the header");
    const int mode = m_bytes.number();
    const bool known = mode == SCRX_WORKERS_POLL || mode == SCRX_WORKERS_WAIT;
    require(SCRX_SetWorkers(mode) == (known ? ARI_SUCCESS : ARI_INVALID_PARAMETERS),
            "a mode is taken or refused");
    std::array<char, 64> buffer;
    buffer.fill('x');
    const int size = std::min(m_bytes.number(), static_cast<int>(buffer.size()));
    char* const target = m_bytes.flag() ? nullptr : buffer.data();
    const int code = SCRX_LastStartFailure(target, size);
    require(code >= SCRX_START_OK && code <= SCRX_START_WRONG_DEVICE_TYPE, "the code is documented");
    if (target && size > 0)
        require(std::memchr(target, '\0', static_cast<std::size_t>(size)) != nullptr, "the sentence ends");
    else
        require(buffer.front() == 'x', "nothing is written");
}

void Host::run()
{
    while (!m_bytes.isAtEnd()) {
        const std::uint8_t what = m_bytes.byte();
        // The family of the open pad, or now and then another.
        if (!m_live || what >= 0xe0)
            m_family = m_bytes.byte() % families.size();
        else
            m_family = static_cast<std::size_t>(m_live - families.data());
        g_inCallback = m_live ? m_live : &family();
        switch (what % 10) {
        case 0:
            open();
            break;
        case 1:
            askPad();
            break;
        case 2:
            pen();
            break;
        case 3:
            points();
            break;
        case 4:
            files();
            break;
        case 5:
            texts();
            break;
        case 6:
            fingerprint();
            break;
        case 7:
            about();
            break;
        default:
            padDoes();
            break;
        }
    }
    for (const Family& each : families)
        require(each.UnInitialDevice(each.type) == 0, "closing succeeds");
    require(g_pSignWidget == nullptr && g_bUseSignObj == 0, "nothing is left open");
    SCRX_SetWorkers(SCRX_WORKERS_POLL);
    enableLog(false);
    g_callbackDoes = 0;
    g_tellsKeys = false;
    g_pad.Reset();
}

// The library polls on threads of its own, which yield: on one core to whoever is wanted next, on several to
// nobody, and who is woken beside them waits for the end of a slice.
void stayOnOneCore()
{
    cpu_set_t cores;
    CPU_ZERO(&cores);
    CPU_SET(static_cast<std::size_t>(std::max(sched_getcpu(), 0)), &cores);
    sched_setaffinity(0, sizeof cores, &cores); // without it everything only takes longer
}

void tidyUp()
{
    std::error_code ignored;
    fs::current_path("/", ignored);
    fs::remove_all(g_directory, ignored);
}

} // namespace

int LLVMFuzzerInitialize(int*, char***)
{
    static void* library;
    if (!g_tmp.make()) {
        std::fprintf(stderr, "there can be no /tmp of its own here\n");
        std::_Exit(77); // for the tests: skipped
    }
    stayOnOneCore();
    std::string name = (fs::temp_directory_path() / "scribera-fuzz.XXXXXX").string();
    require(mkdtemp(name.data()) != nullptr, "there is a temporary directory");
    g_directory = name;
    fs::create_symlink(SCRIBERA_DRIVER_LIBRARY, g_directory / "libscriberadrv.so");
    library = dlopen((g_directory / "libscriberadrv.so").c_str(), RTLD_NOW | RTLD_LOCAL);
    require(library != nullptr, "there is a pad");
    require(!g_pad.resolve(library), "the pad can be controlled");
    std::atexit(tidyUp);
    enableLog(true);
    families[0].Clear(0);
    enableLog(false);
    require(fs::exists(fs::path("/tmp") / FixedNames[0]) && g_tmp.isRealOneUntouched(),
            "lines go to the log of this process alone");
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // The library looks for the driver where the process is; findings are written elsewhere.
    static const fs::path before = fs::current_path();
    fs::current_path(g_directory);
    Host(Bytes(data, size)).run();
    fs::current_path(before);
    require(g_tmp.isRealOneUntouched(), "nothing is written to everybody's /tmp");
    PrivateTmp::empty();
    return 0;
}
