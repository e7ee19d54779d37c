#include "exported_operations.h"

#include <climits>
#include <cstdint>

namespace scribera::test {

namespace {

char textBuffer[256];
int numberBuffer[16];
Packet packet{};
wchar_t imagePath[] = L"picture.png";
const char encoded[] = "AAAA";

void ignoreStatus(int) {}

void ignorePoint(unsigned long, long) {}

std::string hex32(const void* pointer) // as %x writes a pointer
{
    char text[16];
    std::snprintf(text, sizeof text, "%x", static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(pointer)));
    return text;
}

std::string noArguments()
{
    return "";
}

std::function<std::string()> fixed(const std::string& text)
{
    return [text] { return text; };
}

using Type = int;
using Api = const Operations&;

std::vector<ExportedOperation> everyOperation()
{
    const Families all = Families::All;
    const Families screen = Families::WithScreen;
    const Families finger = Families::WithFingerprint;
    using K = ResultKind;

    return {
        {"InitialDevice", all, K::Initial, "",
         [](Api api, Type type) { return Outcome(api.InitialDevice(type, nullptr, 1, -2, 30, 40)); }, "Enter",
         fixed(", pParentWidget=0, nX=1, nY=-2, nWidth=30, nHeight=40")},
        {"InitialDeviceByWId", all, K::Initial, "",
         [](Api api, Type type) { return Outcome(api.InitialDeviceByWId(type, 0, 1, -2, 30, 40)); }, "Enter",
         fixed(", nX=1, nY=-2, nWidth=30, nHeight=40")},
        {"UnInitialDevice", all, K::UnInitial, "",
         [](Api api, Type type) { return Outcome(api.UnInitialDevice(type)); }, "Enter", noArguments},
        {"OpenLCD", screen, K::Code, "", [](Api api, Type type) { return Outcome(api.OpenLCD(type, true)); },
         "Enter", fixed(", bOn=1")},
        {"Clear", all, K::Code, "", [](Api api, Type type) { return Outcome(api.Clear(type)); }, "Enter",
         noArguments},
        {"GetHWPenID", screen, K::Code, "",
         [](Api api, Type type) { return Outcome(api.GetHWPenID(type, textBuffer, 64)); }, "enter",
         [] { return ", pPenID=" + hex(textBuffer) + ", nMaxCount=64"; }},
        {"GetHWPadID", all, K::Code, "",
         [](Api api, Type type) { return Outcome(api.GetHWPadID(type, textBuffer, 64)); }, "Enter",
         [] { return ", pPadID=" + hex(textBuffer) + ", nMaxCount=64"; }},
        {"GetHWVersionID", all, K::Code, "",
         [](Api api, Type type) { return Outcome(api.GetHWVersionID(type, textBuffer, 64)); }, "Enter",
         [] { return ", pVersion=" + hex(textBuffer) + ", nMaxCount=64"; }},
        {"DisplayHWVersion", screen, K::Code, "",
         [](Api api, Type type) { return Outcome(api.DisplayHWVersion(type, true)); }, "Enter",
         fixed(", bOn=1")},
        {"SetPenStyle", all, K::Code, "",
         [](Api api, Type type) { return Outcome(api.SetPenStyle(type, true)); }, "Enter",
         fixed(", bPressureOn=1")},
        {"SetPenWidth", all, K::Code, "",
         [](Api api, Type type) { return Outcome(api.SetPenWidth(type, 3)); }, "Enter",
         fixed(", nPenWidth=3")},
        {"SetPenColor", all, K::Code, "",
         [](Api api, Type type) { return Outcome(api.SetPenColor(type, 0, 10, 255)); }, "Enter",
         fixed(", nR=0, nG=10, nB=255")},
        {"SignatureStatusCallback", all, K::Code, "",
         [](Api api, Type type) { return Outcome(api.SignatureStatusCallback(type, ignoreStatus)); }, "Enter",
         [] { return ", pStatus=" + hexOf(ignoreStatus); }},
        {"RealTimeSignatureDataCallback", all, K::Truth, "",
         [](Api api, Type type) { return Outcome(api.RealTimeSignatureDataCallback(type, ignorePoint)); },
         "Enter", [] { return ", pfnRealTimeSignDataCallback=" + hexOf(ignorePoint); }},
        {"GetTotalPacketsNumber", all, K::InkCount, "",
         [](Api api, Type type) { return Outcome(api.GetTotalPacketsNumber(type)); }, "enter", noArguments},
        {"getPackets", all, K::Code, "",
         [](Api api, Type type) { return Outcome(api.getPackets(type, &packet)); }, "enter", noArguments},
        {"GetInkPointTime", all, K::Pointer, "pInkPointTime",
         [](Api api, Type type) { return Outcome(api.GetInkPointTime(type, 0)); }, "enter",
         fixed(", nIndex=0")},
        {"FreeInkPointTime", all, K::Nothing, "",
         [](Api api, Type type) {
             api.FreeInkPointTime(type, nullptr);
             return Outcome::nothing();
         },
         "enter", fixed(", pInkPointTime=0")},
        {"GetDeviceConfirmOrCancelKeyStatus", all, K::KeyStatus, "",
         [](Api api, Type type) { return Outcome(api.GetDeviceConfirmOrCancelKeyStatus(type)); }, "Enter",
         noArguments},
        {"SaveDrawingImage", all, K::Code, "",
         [](Api api, Type type) { return Outcome(api.SaveDrawingImage(type, ImagePng, imagePath, 1)); },
         "enter", [] { return ", nImageTypeID=3, pImageFilePath=" + hex32(imagePath) + ", nDPILevel=1"; }},
        {"SetSaveCenterImageClip", all, K::Code, "",
         [](Api api, Type type) { return Outcome(api.SetSaveCenterImageClip(type, true, 5, 6)); }, "Enter",
         fixed(", bClipImage=1, nClipMarginX=5, nClipMarginY=6")},
        {"getDeviceInfo", all, K::Code, "",
         [](Api api, Type type) { return Outcome(api.getDeviceInfo(type, 4, numberBuffer)); }, "Enter",
         [] { return ", nIndex=4, pOutput=" + hex(numberBuffer); }},
        {"PacketsBase64Encode", all, K::Pointer, "pEncodeBase64Image",
         [](Api api, Type type) { return Outcome(api.PacketsBase64Encode(type, ImagePng)); }, "Enter",
         fixed(", nImageTypeID=3")},
        {"PacketsBase64EncodeFree", all, K::Nothing, "",
         [](Api api, Type type) {
             api.PacketsBase64EncodeFree(type, nullptr);
             return Outcome::nothing();
         },
         "enter", fixed(", pEncodedData=0")},
        {"PacketsBase64EncodeEx", all, K::Pointer, "pEncodeBase64Image",
         [](Api api, Type type) { return Outcome(api.PacketsBase64EncodeEx(type, ImageInk, true)); }, "Enter",
         fixed(", nImageTypeID=6, bEnableTransparentBackground=1")},
        {"PacketsBase64EncodeExFree", all, K::Nothing, "",
         [](Api api, Type type) {
             api.PacketsBase64EncodeExFree(type, nullptr);
             return Outcome::nothing();
         },
         "enter", fixed(", pEncodedData=0")},
        {"Base64Decode", all, K::Code, "",
         [](Api api, Type type) { return Outcome(api.Base64Decode(type, ImageInk, encoded, imagePath)); },
         "enter", [] { return ", nImageTypeID=6, pImageFilePath=" + hex32(imagePath); }},
        {"GetTotalDecodePacketsNumber", all, K::DecodedCount, "",
         [](Api api, Type type) { return Outcome(api.GetTotalDecodePacketsNumber(type)); }, "Enter",
         noArguments},
        {"GetDecodePacketsData", all, K::Packets, "",
         [](Api api, Type type) { return Outcome(api.GetDecodePacketsData(type, 0, 1)); }, "enter",
         fixed(", nIndex=0, nTypeID=1")},
        {"GetSVGImageBase64Data", all, K::Pointer, "pSVGBase64Image",
         [](Api api, Type type) { return Outcome(api.GetSVGImageBase64Data(type)); }, "Enter", noArguments},
        {"FreeSVGImageBase64Data", all, K::Nothing, "",
         [](Api api, Type type) {
             api.FreeSVGImageBase64Data(type, nullptr);
             return Outcome::nothing();
         },
         "enter", fixed(", pEncodedData=0")},
        {"SetDisplayedFPImageAt", finger, K::Code, "",
         [](Api api, Type type) {
             return Outcome(api.SetDisplayedFPImageAt(type, nullptr, 300, 200, 10, 20, 30, 40));
         },
         "Enter",
         fixed(", pParentWidget=0, nCanvasWidth=300, nCanvasHeight=200, nFPLeft=10, nFPTop=20, nFPWidth=30, "
               "nFPHeight=40")},
        {"SetDisplayedFPImageAtByWId", finger, K::Code, "",
         [](Api api, Type type) {
             return Outcome(api.SetDisplayedFPImageAtByWId(type, 0, 300, 200, 10, 20, 30, 40));
         },
         "Enter",
         fixed(", nCanvasWidth=300, nCanvasHeight=200, nFPLeft=10, nFPTop=20, nFPWidth=30, nFPHeight=40")},
        {"GetFPImageBase64Data", finger, K::Pointer, "pFPImageBase64Data",
         [](Api api, Type type) {
             char* text = api.GetFPImageBase64Data(type, ImagePng, true);
             const Outcome outcome(text);
             if (text) {
                 const bool logging = loggingIsOn();
                 setLogging(false);
                 api.FreeFPImageBase64Data(type, text);
                 setLogging(logging);
             }
             return outcome;
         },
         "enter", fixed(", nImageTypeID=3, bFPImageOnly=1")},
        {"FreeFPImageBase64Data", finger, K::Nothing, "",
         [](Api api, Type type) {
             api.FreeFPImageBase64Data(type, nullptr);
             return Outcome::nothing();
         },
         "enter", fixed(", pFPImageBase64Data=0")},
        {"AboutBox", all, K::About, "",
         [](Api api, Type) {
             api.AboutBox(nullptr);
             return Outcome::nothing();
         },
         "Enter...", noArguments},
        {"AboutBoxByWId", all, K::About, "",
         [](Api api, Type) {
             api.AboutBoxByWId(0x7ffffff0);
             return Outcome::nothing();
         },
         "Enter...", noArguments},
        {"GetAboutInfo", all, K::About, "",
         [](Api api, Type type) {
             api.GetAboutInfo(type, textBuffer);
             return Outcome::nothing();
         },
         "Enter...", noArguments},
    };
}

} // namespace

std::string ExportedOperation::entryText(int deviceType) const
{
    if (kind == ResultKind::About)
        return entryBegin;
    return entryBegin + ", nDeviceType=" + std::to_string(deviceType) + arguments();
}

bool ExportedOperation::hasDeviceType() const
{
    return name != "AboutBox" && name != "AboutBoxByWId";
}

bool ExportedOperation::usesObject() const
{
    return kind != ResultKind::Initial && kind != ResultKind::UnInitial && kind != ResultKind::About;
}

std::string ExportedOperation::wrongTypeText(const PadModel& model) const
{
    const std::string reason = std::string("(nDeviceType != ") + model.deviceName + ")";
    switch (kind) {
    case ResultKind::Initial:
        return "leave with false due to " + reason + " !";
    case ResultKind::Truth:
        return "leave false due to " + reason + " || (pfnRealTimeSignDataCallback == nullptr) !";
    case ResultKind::Pointer:
        return "leave with nullptr due to " + reason + " !";
    case ResultKind::Nothing:
    case ResultKind::About:
        return "leave due to " + reason + " !";
    default:
        // The decoder's wording is a pointer operation's, its result is not.
        return name == "Base64Decode" ? "leave with nullptr due to " + reason + " !"
                                      : "leave with ARI_INVALID_PARAMETERS due to " + reason + " !";
    }
}

std::string ExportedOperation::wrongTypeResult() const
{
    switch (kind) {
    case ResultKind::Initial:
    case ResultKind::Truth:
        return "false";
    case ResultKind::Pointer:
        return "null";
    case ResultKind::Nothing:
    case ResultKind::About:
        return "nothing";
    default:
        return "-2";
    }
}

std::string ExportedOperation::missingObjectResult() const
{
    switch (kind) {
    case ResultKind::InkCount:
    case ResultKind::DecodedCount:
        return "-8";
    case ResultKind::Pointer:
        return "null";
    case ResultKind::Truth:
        return "false";
    case ResultKind::Nothing:
        return "nothing";
    default:
        return "-1";
    }
}

std::string ExportedOperation::missingObjectText() const
{
    switch (kind) {
    case ResultKind::InkCount:
        return "leave with nInkCount=-8 !";
    case ResultKind::DecodedCount:
        return "leave with nDecodedInkCount=-8 !";
    case ResultKind::Packets:
        return "leave with nPACKETS=-1 !";
    case ResultKind::KeyStatus:
        return "leave with nKeyStatus=-1 !";
    case ResultKind::Pointer:
        return "leave with " + pointerName + "=0 !";
    case ResultKind::Truth:
        return "leave with bRet = 0...";
    case ResultKind::Nothing:
        return "leave !";
    default:
        return "leave with nResult=-1 !";
    }
}

std::string ExportedOperation::leaveText(const Outcome& outcome) const
{
    switch (kind) {
    case ResultKind::InkCount:
        return "leave with nInkCount=" + outcome.text + " !";
    case ResultKind::DecodedCount:
        return "leave with nDecodedInkCount=" + outcome.text + " !";
    case ResultKind::Packets:
        return "leave with nPACKETS=" + outcome.text + " !";
    case ResultKind::KeyStatus:
        return "leave with nKeyStatus=" + outcome.text + " !";
    case ResultKind::Pointer:
        return "leave with " + pointerName + "=" + (outcome.text == "null" ? "0" : outcome.text) + " !";
    case ResultKind::Truth:
        return std::string("leave with bRet = ") + (outcome.text == "true" ? "1" : "0") + "...";
    case ResultKind::Initial:
        return std::string("leave with bRet=") + (outcome.text == "true" ? "1" : "0") + " !";
    case ResultKind::UnInitial:
        return "leave with ARI_SUCCESS...";
    case ResultKind::Nothing:
    case ResultKind::About:
        return "leave !";
    case ResultKind::Code:
        break;
    }
    return "leave with nResult=" + outcome.text + " !";
}

std::vector<ExportedOperation> exportedOperations(const PadModel& model)
{
    std::vector<ExportedOperation> operations;
    for (ExportedOperation& operation : everyOperation()) {
        if (belongsTo(operation.families, model))
            operations.push_back(std::move(operation));
    }
    return operations;
}

std::vector<BadArguments> badArguments(const PadModel& model)
{
    const std::string invalid = "leave with ARI_INVALID_PARAMETERS due to ";
    const std::string imageType =
        "(nImageTypeID < EBITI_BITMAP) || ((nImageTypeID > EBITI_PNG) && (nImageTypeID != EBITI_INK)) !";
    std::vector<BadArguments> calls;

    for (const int id : {INT_MIN, -1, 0, 4, 5, 6, 9, INT_MAX}) {
        calls.push_back(
            {"SaveDrawingImage type " + std::to_string(id), "SaveDrawingImage",
             [id](Api api, Type type) { return Outcome(api.SaveDrawingImage(type, id, imagePath, 1)); }, "-2",
             invalid + "nImageTypeID out of range !"});
    }
    using Margins = std::pair<int, int>;
    for (const Margins& margins :
         {Margins(-1, 0), Margins(0, -1), Margins(-1, -1), Margins(INT_MIN, 5), Margins(5, INT_MIN)}) {
        calls.push_back({"margins " + std::to_string(margins.first) + ", " + std::to_string(margins.second),
                         "SetSaveCenterImageClip",
                         [margins](Api api, Type type) {
                             return Outcome(
                                 api.SetSaveCenterImageClip(type, true, margins.first, margins.second));
                         },
                         "-2", invalid + "(nClipMarginX < 0) || (nClipMarginY < 0) !"});
    }
    const std::string information =
        invalid + "(nIndex < DIID_GET_STATUS) || (nIndex > DIID_GET_DRV_VER) || (pOutput == nullptr) !";
    for (const int index : {INT_MIN, -1, 0, 8, INT_MAX}) {
        calls.push_back(
            {"getDeviceInfo index " + std::to_string(index), "getDeviceInfo",
             [index](Api api, Type type) { return Outcome(api.getDeviceInfo(type, index, numberBuffer)); },
             "-2", information});
    }
    calls.push_back({"getDeviceInfo without output", "getDeviceInfo",
                     [](Api api, Type type) { return Outcome(api.getDeviceInfo(type, 1, nullptr)); }, "-2",
                     information});
    for (const int id : {INT_MIN, -1, 0, 4, INT_MAX}) {
        calls.push_back({"decoded value " + std::to_string(id), "GetDecodePacketsData",
                         [id](Api api, Type type) { return Outcome(api.GetDecodePacketsData(type, 0, id)); },
                         "-2", invalid + "(nTypeID < INKDATATYPE_X) || (nTypeID > INKDATATYPE_STROKEEND) !"});
    }
    for (const int id : {INT_MIN, -1, 0, 4, 5, 7, 8, INT_MAX}) {
        const std::string text = std::to_string(id);
        calls.push_back({"PacketsBase64Encode type " + text, "PacketsBase64Encode",
                         [id](Api api, Type type) { return Outcome(api.PacketsBase64Encode(type, id)); },
                         "null", "leave with nullptr due to " + imageType});
        calls.push_back(
            {"PacketsBase64EncodeEx type " + text, "PacketsBase64EncodeEx",
             [id](Api api, Type type) { return Outcome(api.PacketsBase64EncodeEx(type, id, false)); }, "null",
             "leave with nullptr due to " + imageType});
        calls.push_back(
            {"Base64Decode type " + text, "Base64Decode",
             [id](Api api, Type type) { return Outcome(api.Base64Decode(type, id, encoded, imagePath)); },
             "-2", invalid + imageType});
        calls.push_back(
            {"Base64Decode type " + text + " of nothing: the type is looked at first", "Base64Decode",
             [id](Api api, Type type) { return Outcome(api.Base64Decode(type, id, nullptr, imagePath)); },
             "-2", invalid + imageType});
    }
    for (const int id : {1, 2, 3, 6}) {
        for (const char* data : {static_cast<const char*>(nullptr), ""}) {
            calls.push_back(
                {"Base64Decode type " + std::to_string(id) + (data ? " of an empty text" : " of null"),
                 "Base64Decode",
                 [id, data](Api api, Type type) {
                     return Outcome(api.Base64Decode(type, id, data, imagePath));
                 },
                 "-2", "leave with nullptr due to (pEncodedData : null or empty) !"});
        }
    }
    calls.push_back(
        {"RealTimeSignatureDataCallback without callback", "RealTimeSignatureDataCallback",
         [](Api api, Type type) { return Outcome(api.RealTimeSignatureDataCallback(type, nullptr)); },
         "false",
         std::string("leave false due to (nDeviceType != ") + model.deviceName +
             ") || (pfnRealTimeSignDataCallback == nullptr) !"});
    if (model.hasFingerprint) {
        for (const int id : {INT_MIN, -1, 0, 4, 6, 7, INT_MAX}) {
            calls.push_back(
                {"GetFPImageBase64Data type " + std::to_string(id), "GetFPImageBase64Data",
                 [id](Api api, Type type) { return Outcome(api.GetFPImageBase64Data(type, id, true)); },
                 "null",
                 "leave with nullptr due to (nImageTypeID < EBITI_BITMAP) || (nImageTypeID > EBITI_PNG) !"});
        }
    }
    return calls;
}

} // namespace scribera::test
