// A host that links the library: its own references reach the library's variables and functions.

#include <cstring>
#include <filesystem>

#include "scriberasdk.h"

#include "harness.h"

namespace scribera::test {
namespace {

TEST(LinkedHost, SwitchesLoggingThroughTheLinkedVariable)
{
    EXPECT_EQ(g_bEnableLog, 0);
    EXPECT_EQ(SCK210_Clear(0), ARI_INVALID_PARAMETERS);
    EXPECT_FALSE(std::filesystem::exists(mainLogFile));

    g_bEnableLog = 1;
    EXPECT_EQ(SCK210_Clear(0), ARI_INVALID_PARAMETERS);
    g_bEnableLog = 0;
    EXPECT_EQ(SCT580_Clear(0), ARI_INVALID_PARAMETERS);

    const std::vector<LogLine> lines = mainLog();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[1].label, "SCK210_Clear()");
    EXPECT_EQ(lines[1].text, "leave with ARI_INVALID_PARAMETERS due to (nDeviceType != SCK210_DEVICE) !");
    EXPECT_EQ(lines[1].message, std::string(g_cKeyBuf));
}

TEST(LinkedHost, SeesTheLiveObjectInTheLinkedVariables)
{
    installDriver();
    EXPECT_EQ(g_pSignWidget, nullptr);
    ASSERT_TRUE(SCK420_InitialDevice(SCK420_DEVICE, nullptr, 0, 0, 320, 160));
    EXPECT_NE(g_pSignWidget, nullptr);
    EXPECT_NE(g_bUseSignObj, 0);
    Simulator pad;
    pad.open();
    pad.send(wave(padModel("K420"), 20));
    EXPECT_EQ(SCK420_GetTotalPacketsNumber(SCK420_DEVICE), 22);
    _PACKETS packet;
    std::memset(&packet, 0, sizeof packet);
    packet.nIndex = 21;
    EXPECT_EQ(SCK420_getPackets(SCK420_DEVICE, &packet), ARI_SUCCESS);
    EXPECT_EQ(packet.ucStatus, 1);
    std::wstring path = L"linked.png";
    EXPECT_EQ(SCK420_SaveDrawingImage(SCK420_DEVICE, EBITI_PNG, path.data(), 0), ARI_SUCCESS);
    EXPECT_EQ(SCK420_UnInitialDevice(SCK420_DEVICE), ARI_SUCCESS);
    EXPECT_EQ(g_pSignWidget, nullptr);
    EXPECT_EQ(g_bUseSignObj, 0);
}

TEST(LinkedHost, FlagSetThroughTheLinkedVariableIsSeen)
{
    installDriver();
    ensureApplication();
    QWidget window;
    g_bUseSignObj = 1;
    ASSERT_TRUE(SCKM730_InitialDevice(SCKM730_DEVICE, &window, 0, 0, 320, 160));
    EXPECT_TRUE(window.findChildren<QWidget*>().isEmpty());
    EXPECT_EQ(SCKM730_UnInitialDevice(SCKM730_DEVICE), ARI_SUCCESS);
    EXPECT_EQ(g_bUseSignObj, 0);
}

} // namespace
} // namespace scribera::test
