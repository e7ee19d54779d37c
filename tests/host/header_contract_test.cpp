// The public header against the table of operations that the tests keep by themselves.

#include <type_traits>

#include "scriberasdk.h"
#include "scriberasdk_ext.h"

#include "harness.h"

namespace scribera::test {
namespace {

template <class Signature>
struct WithHeaderRecord;
template <class Result, class... Arguments>
struct WithHeaderRecord<Result (*)(Arguments...)>
{
    template <class T>
    using Mapped = std::conditional_t<std::is_same_v<T, Packet*>, _PACKETS*, T>;
    using type = Result (*)(Mapped<Arguments>...);
};

template <class Declared, class Wanted>
constexpr bool sameSignature = std::is_same_v<Declared, typename WithHeaderRecord<Wanted>::type>;

// From the largest family to the smallest.
#define CHECK_All(prefix, name)                                                                              \
    static_assert(sameSignature<decltype(&prefix##name), decltype(Operations::name)>, #prefix #name);
#define CHECK_WithScreen(prefix, name) CHECK_All(prefix, name)
#define CHECK_WithFingerprint(prefix, name) CHECK_All(prefix, name)
#define X(name, families, result, arguments) CHECK_##families(SCK421B_, name)
SCRIBERA_OPERATIONS(X)
#undef X

#undef CHECK_WithFingerprint
#define CHECK_WithFingerprint(prefix, name)
#define X(name, families, result, arguments) CHECK_##families(SCK210_, name) CHECK_##families(SCK420_, name)
SCRIBERA_OPERATIONS(X)
#undef X

#undef CHECK_WithScreen
#define CHECK_WithScreen(prefix, name)
#define X(name, families, result, arguments) CHECK_##families(SCKM730_, name) CHECK_##families(SCT580_, name)
SCRIBERA_OPERATIONS(X)
#undef X

#define X(name, result, arguments)                                                                           \
    static_assert(std::is_same_v<decltype(&SCRX_##name), decltype(Extensions::name)>, "SCRX_" #name);
SCRIBERA_EXTENSIONS(X)
#undef X

static_assert(sizeof(_PACKETS) == sizeof(Packet));
static_assert(std::is_same_v<decltype(g_bEnableLog), unsigned char>);
static_assert(std::is_same_v<decltype(g_bUseSignObj), unsigned char>);
static_assert(std::is_same_v<decltype(g_pSignWidget), void*>);
static_assert(std::is_same_v<decltype(g_cKeyBuf), char[256]>);
static_assert(std::is_same_v<decltype(g_cKeyBuf_InThread), char[256]>);
static_assert(std::is_same_v<decltype(g_cValueBuf), char[256]>);
static_assert(std::is_same_v<decltype(g_cValueBuf_InThread), char[256]>);
static_assert(std::is_same_v<decltype(g_wszKeyBuf), wchar_t[256]>);
static_assert(std::is_same_v<decltype(g_wszValueBuf), wchar_t[256]>);

TEST(PublicHeader, NumbersOfTheAdditionsAreTheDocumentedOnes)
{
    EXPECT_EQ(SCRX_START_OK, StartOk);
    EXPECT_EQ(SCRX_START_DRIVER_MISSING, StartDriverMissing);
    EXPECT_EQ(SCRX_START_DRIVER_NOT_LOADED, StartDriverNotLoaded);
    EXPECT_EQ(SCRX_START_DRIVER_INCOMPLETE, StartDriverIncomplete);
    EXPECT_EQ(SCRX_START_DRIVER_REFUSED, StartDriverRefused);
    EXPECT_EQ(SCRX_START_MODEL_UNKNOWN, StartModelUnknown);
    EXPECT_EQ(SCRX_START_NO_MEMORY, StartNoMemory);
    EXPECT_EQ(SCRX_START_NO_THREAD, StartNoThread);
    EXPECT_EQ(SCRX_START_WRONG_THREAD, StartWrongThread);
    EXPECT_EQ(SCRX_START_WRONG_QT, StartWrongQt);
    EXPECT_EQ(SCRX_START_NO_APPLICATION, StartNoApplication);
    EXPECT_EQ(SCRX_START_NO_WINDOW, StartNoWindow);
    EXPECT_EQ(SCRX_START_IN_CALLBACK, StartInCallback);
    EXPECT_EQ(SCRX_START_WRONG_DEVICE_TYPE, StartWrongDeviceType);
    EXPECT_EQ(SCRX_WORKERS_POLL, WorkersPoll);
    EXPECT_EQ(SCRX_WORKERS_WAIT, WorkersWait);
}

TEST(PublicHeader, VersionIsThatOfTheProjectAndOfTheLibrary)
{
    EXPECT_EQ(std::to_string(SCRX_VERSION_MAJOR) + "." + std::to_string(SCRX_VERSION_MINOR) + "." +
                  std::to_string(SCRX_VERSION_PATCH),
              SCRIBERA_PROJECT_VERSION);
    EXPECT_EQ(SCRX_VERSION, SCRX_VERSION_MAJOR * 10000 + SCRX_VERSION_MINOR * 100 + SCRX_VERSION_PATCH);
    EXPECT_EQ(SCRX_Version(), SCRX_VERSION);
}

TEST(PublicHeader, NumbersAreTheDocumentedOnes)
{
    EXPECT_EQ(SCK210_DEVICE, padModel("K210").deviceType);
    EXPECT_EQ(SCKM730_DEVICE, padModel("KM730").deviceType);
    EXPECT_EQ(SCT580_DEVICE, padModel("T580").deviceType);
    EXPECT_EQ(SCK420_DEVICE, padModel("K420").deviceType);
    EXPECT_EQ(SCK421B_DEVICE, padModel("K421B").deviceType);
    EXPECT_EQ(ARI_SUCCESS, 0);
    EXPECT_EQ(ARI_INVALID_PARAMETERS, -2);
    EXPECT_EQ(EBITI_BITMAP, 1);
    EXPECT_EQ(EBITI_JPG, 2);
    EXPECT_EQ(EBITI_PNG, 3);
    EXPECT_EQ(EBITI_INK, 6);
    EXPECT_EQ(EBITI_PDF, 7);
    EXPECT_EQ(EBITI_SVG, 8);
    EXPECT_EQ(INKDATATYPE_X, 1);
    EXPECT_EQ(INKDATATYPE_Y, 2);
    EXPECT_EQ(INKDATATYPE_STROKEEND, 3);
    EXPECT_EQ(DIID_GET_STATUS, 1);
    EXPECT_EQ(DIID_GET_DRV_VER, 7);
    EXPECT_EQ(PENSTATUS_DOWN, 0);
    EXPECT_EQ(PENSTATUS_MOVE, 1);
    EXPECT_EQ(PENSTATUS_UP, 2);
    EXPECT_EQ(PENSTATUS_CANCELKEY_DOWN, 3);
    EXPECT_EQ(PENSTATUS_CONFIRMKEY_DOWN, 4);
}

} // namespace
} // namespace scribera::test
