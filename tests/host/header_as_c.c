/* The public header as C11 without any Qt header, and a C host's way through it. */
#include "scriberasdk.h"
#include "scriberasdk_ext.h"

#include <stdio.h>

static void OnStatus(int nStatus)
{
    (void)nStatus;
}

static void OnPoint(unsigned long ulPosition, long lPen)
{
    (void)ulPosition;
    (void)lPen;
}

static int Expect(int nCondition, const char* pWhat)
{
    if (!nCondition)
        fprintf(stderr, "failed: %s\n", pWhat);
    return nCondition ? 0 : 1;
}

int main(void)
{
    int nFailures = 0;
    wchar_t wszPath[] = L"none.png";
    struct _PACKETS packet = {0};
    QWidget* pNoWidget = NULL;

    nFailures +=
        Expect(g_pSignWidget == NULL && g_bUseSignObj == 0 && g_bEnableLog == 0, "variables are zero");
    nFailures += Expect(!SCK210_InitialDevice(SCK420_DEVICE, pNoWidget, 0, 0, 10, 10), "another device type");
    nFailures += Expect(SCK210_GetTotalPacketsNumber(SCK210_DEVICE) == -8, "no points without object");
    nFailures += Expect(SCK421B_getPackets(SCK421B_DEVICE, &packet) == -1, "no record without object");
    nFailures +=
        Expect(SCKM730_SignatureStatusCallback(SCKM730_DEVICE, OnStatus) == -1, "no status callback");
    nFailures += Expect(!SCT580_RealTimeSignatureDataCallback(SCT580_DEVICE, OnPoint), "no point callback");
    nFailures +=
        Expect(SCK420_SaveDrawingImage(SCK420_DEVICE, EBITI_PNG, wszPath, 0) == -1, "nothing to save");
    nFailures += Expect(SCK210_GetInkPointTime(SCK210_DEVICE, 0) == NULL, "no time");
    nFailures += Expect(SCRX_Version() == SCRX_VERSION, "another version of the library");
    nFailures += Expect(SCRX_LastStartFailure(NULL, 0) == SCRX_START_WRONG_DEVICE_TYPE, "the failed start");
    nFailures += Expect(SCRX_SetWorkers(SCRX_WORKERS_WAIT) == ARI_SUCCESS, "the worker threads");
    nFailures += Expect(SCK210_UnInitialDevice(SCK210_DEVICE) == ARI_SUCCESS, "stop without object");
    return nFailures == 0 ? 0 : 1;
}
